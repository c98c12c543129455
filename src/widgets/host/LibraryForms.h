#pragma once

#include <QList>

class QWidget;

namespace searchdata {

/// Makes `form` one of the library's windows: the clean-up manager destroys it and
/// `CloseGrupruForms` hides it, the newest first, and the object monitor counts it by its class.
/// A form calls this once, in its constructor.
void RegisterLibraryForm(QWidget* form);

/// The library's windows that still exist, in the order they were made.
QList<QWidget*> LibraryForms();

/// Hides the library's shown windows, the last opened first, letting each hide take effect before
/// the next, so that dialogs go before the windows that opened them. A call made while one is under
/// way returns at once.
void CloseGrupruForms();

/// Holds a flag for one scope so that a routine can refuse to run inside itself.
class ReentryGuard {
public:
    explicit ReentryGuard(bool& busy) : m_busy(busy), m_entered(!busy) { m_busy = true; }
    ~ReentryGuard()
    {
        if (m_entered)
            m_busy = false;
    }
    ReentryGuard(const ReentryGuard&) = delete;
    ReentryGuard& operator=(const ReentryGuard&) = delete;
    /// False when the routine was already running.
    explicit operator bool() const { return m_entered; }

private:
    bool& m_busy;
    bool m_entered;
};

} // namespace searchdata
