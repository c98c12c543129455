#pragma once

#include <QString>
#include <any>

namespace searchdata {

/// What a long operation reports to: a status line, a progress line, and a way to be cancelled.
class IProgress {
public:
    virtual ~IProgress() = default;
    virtual void SetStatus(const QString& text) { Q_UNUSED(text); }
    virtual void SetProgress(const QString& text) { Q_UNUSED(text); }
    /// True once the user asked to stop; long loops test it between steps.
    virtual bool Cancelled() const { return false; }
};

/// Something that a progress runner can drive: it carries out one request while reporting.
class IProgressHandler {
public:
    virtual ~IProgressHandler() = default;
    /// Carries out `request` with its own argument object, and gives back its result object.
    virtual std::any IProgressHandler_ProcessRequest(int request, IProgress& progress, const std::any& arguments) = 0;
};

} // namespace searchdata
