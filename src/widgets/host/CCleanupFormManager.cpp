#include "searchdata/widgets/CCleanupFormManager.h"

#include "host/LibraryForms.h"

#include <QCoreApplication>
#include <QPointer>
#include <QWidget>

namespace searchdata {

CCleanupFormManager& CCleanupFormManager::instance()
{
    static CCleanupFormManager manager;
    return manager;
}

void CCleanupFormManager::CleanupForms(QWidget* keep)
{
    const ReentryGuard guard(m_busy);
    if (!guard)
        return;
    QList<QPointer<QWidget>> forms;
    for (QWidget* form : LibraryForms())
        forms.append(form);
    while (!forms.isEmpty()) {
        // Out of the list before it goes: its destruction may take others with it.
        const QPointer<QWidget> form = forms.takeLast();
        if (form && form != keep)
            delete form.data();
    }
}

QString CCleanupFormManager::Key() const
{
    if (m_key.isEmpty())
        m_key = QCoreApplication::applicationFilePath();
    return m_key;
}

void CCleanupFormManager::cleanUpWhenQuitting()
{
    if (m_connected || !QCoreApplication::instance())
        return;
    m_connected = true;
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, [this] { CleanupForms(); });
}

} // namespace searchdata
