#pragma once

#include "searchdata/widgets/ICleanupFormManager.h"

#include <QString>

namespace searchdata {

/// Destroys the library's windows when the host shuts down. One for the process; a host receives it
/// when it creates a `CCommon` (see `WidgetUiServices::setCleanupService`).
class CCleanupFormManager : public ICleanupFormManager {
public:
    static CCleanupFormManager& instance();

    /// Destroys the library's windows from the last opened to the first, except `keep`. A call made
    /// while one is under way (a window's destruction can lead to one) returns at once.
    void CleanupForms(QWidget* keep = nullptr) override;
    /// The program's file path, read once.
    QString Key() const override;

    /// Runs `CleanupForms` when the application is about to quit; once, however often it is asked.
    void cleanUpWhenQuitting();

private:
    CCleanupFormManager() = default;
    bool m_busy = false;
    bool m_connected = false;
    mutable QString m_key;
};

} // namespace searchdata
