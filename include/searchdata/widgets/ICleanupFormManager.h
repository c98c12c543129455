#pragma once

#include <QString>

class QWidget;

namespace searchdata {

/// What a host's clean-up service keeps of a library with windows: the way to destroy them all, and
/// a key that tells one library from another.
class ICleanupFormManager {
public:
    virtual ~ICleanupFormManager() = default;
    /// Destroys the library's windows, the last opened first, except `keep`.
    virtual void CleanupForms(QWidget* keep = nullptr) = 0;
    /// The program that loaded the library: its folder and file name.
    virtual QString Key() const = 0;
};

} // namespace searchdata
