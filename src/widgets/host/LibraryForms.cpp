#include "host/LibraryForms.h"

#include "searchdata/widgets/ObjectMonitor.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QPointer>
#include <QWidget>

Q_LOGGING_CATEGORY(lcForms, "searchdata.ui", QtWarningMsg)

namespace searchdata {

namespace {

/// The order of opening, which Qt's list of top-level widgets does not keep.
QList<QPointer<QWidget>>& registered()
{
    static QList<QPointer<QWidget>> forms;
    return forms;
}

} // namespace

void RegisterLibraryForm(QWidget* form)
{
    if (!form)
        return;
    QList<QPointer<QWidget>>& forms = registered();
    forms.removeAll(QPointer<QWidget>());
    forms.append(form);
    const QString type = QString::fromLatin1(form->metaObject()->className());
    ObjectMonitor::instance().Created(type, form);
    QObject::connect(form, &QObject::destroyed, [type, form] { ObjectMonitor::instance().Destroyed(type, form); });
}

QList<QWidget*> LibraryForms()
{
    QList<QWidget*> forms;
    for (const QPointer<QWidget>& form : registered())
        if (form)
            forms.append(form);
    return forms;
}

void CloseGrupruForms()
{
    static bool busy = false;
    const ReentryGuard guard(busy);
    if (!guard)
        return;
    // A snapshot: hiding lets events run, and they may open or destroy windows.
    QList<QPointer<QWidget>> forms(registered());
    while (!forms.isEmpty()) {
        const QPointer<QWidget> form = forms.takeLast();
        if (!form)
            continue;
        qCDebug(lcForms).noquote() << "closing" << form->objectName() << form->windowTitle();
        if (form->isVisible())
            form->hide();
        QCoreApplication::processEvents();
    }
}

} // namespace searchdata
