#pragma once

// The uniform error rule: internal code may throw `detail::Failure`; each procedure that owns a
// failure rule runs its body through `guarded`, which reports to diagnostics and lets the procedure
// return its result as it then stands. Nothing throws across the public API.

#include "searchdata/Diagnostics.h"

#include <QString>
#include <exception>
#include <source_location>

namespace searchdata::detail {

struct Failure : std::exception {
    Failure(int number, QString text, int line) : number(number), text(std::move(text)), line(line) {}
    const char* what() const noexcept override { return "searchdata failure"; }
    int number;
    QString text;
    int line;
};

/// Throws a failure that the nearest `guarded` reports.
[[noreturn]] inline void fail(const QString& text, int number = 0,
                              std::source_location where = std::source_location::current())
{
    throw Failure(number, text, static_cast<int>(where.line()));
}

/// Records entry and exit of a procedure in the call trace, and names it for error reports.
class ProcScope {
public:
    ProcScope(const char* procedure, const char* module) noexcept : procedure(procedure), module(module)
    {
        Diagnostics::instance().enter(procedure, module);
    }
    ~ProcScope() { Diagnostics::instance().leave(procedure, module); }
    ProcScope(const ProcScope&) = delete;
    ProcScope& operator=(const ProcScope&) = delete;
    const char* const procedure;
    const char* const module;
};

void reportFailure(const ProcScope& scope, int number, const QString& text, int line) noexcept;

/// Runs `body`; a failure inside is reported under `scope` and swallowed.
/// Returns false when the body failed.
template <typename Body>
bool guarded(const ProcScope& scope, Body&& body) noexcept
{
    try {
        body();
        return true;
    } catch (const Failure& f) {
        reportFailure(scope, f.number, f.text, f.line);
    } catch (const std::exception& e) {
        reportFailure(scope, 0, QString::fromUtf8(e.what()), 0);
    } catch (...) {
        reportFailure(scope, 0, QStringLiteral("unknown failure"), 0);
    }
    return false;
}

} // namespace searchdata::detail

/// Opens a procedure: `SD_PROC("Name");` in a file that defines `kModule`.
#define SD_PROC(name) const ::searchdata::detail::ProcScope sd_proc_scope(name, kModule)
/// Runs the rest of a procedure under the uniform error rule: `SD_GUARDED([&] { ... });`
#define SD_GUARDED(...) ::searchdata::detail::guarded(sd_proc_scope, __VA_ARGS__)
