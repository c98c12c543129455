#include "searchdata/widgets/WidgetUiServices.h"

#include "config/frmConfigure.h"
#include "filter/frmFilter.h"
#include "host/FormPlacement.h"
#include "host/LibraryForms.h"
#include "host/frmLockedMessage.h"
#include "picklist/frmPicklistEdit.h"
#include "picklist/frmPicklistSelect.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/CCleanupFormManager.h"
#include "searchdata/widgets/CFormInfo.h"
#include "searchdata/widgets/ObjectMonitor.h"
#include "searchdata/widgets/frmExamine.h"

#include <QApplication>
#include <QClipboard>
#include <QMessageBox>
#include <QProgressDialog>
#include <QScreen>

namespace searchdata {

namespace {

/// Progress shown in a dialog; its Cancel button is the cancel test.
class DialogProgress : public IProgress {
public:
    explicit DialogProgress(QWidget* parent) : m_dialog(parent)
    {
        m_dialog.setRange(0, 0);
        m_dialog.setMinimumDuration(500);
        m_dialog.setWindowModality(Qt::WindowModal);
    }
    void SetStatus(const QString& text) override
    {
        m_dialog.setWindowTitle(text);
        QApplication::processEvents();
    }
    void SetProgress(const QString& text) override
    {
        m_dialog.setLabelText(text);
        QApplication::processEvents();
    }
    bool Cancelled() const override { return m_dialog.wasCanceled(); }

private:
    QProgressDialog m_dialog;
};

} // namespace

WidgetUiServices::WidgetUiServices(QWidget* parent) : m_parent(parent) {}

WidgetUiServices::~WidgetUiServices()
{
    delete m_locked;
}

QWidget* WidgetUiServices::dialogParent(const IFormInfo* owner) const
{
    if (const auto* info = dynamic_cast<const CFormInfo*>(owner); info && info->form())
        return info->form()->window();
    return m_parent;
}

// A dialog may be destroyed while it runs, by the clean-up of the library's windows.
void WidgetUiServices::OpenExamineWindow(CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source, const IFormInfo* owner)
{
    const QPointer<frmExamine> form = new frmExamine(dialogParent(owner));
    form->View(columns, entry, source, owner);
    delete form.data();
}

void WidgetUiServices::OpenConfigureDialog(CFilterColumns& columns, const IFormInfo* owner)
{
    const QPointer<frmConfigure> form = new frmConfigure(dialogParent(owner));
    form->Configure(columns);
    delete form.data();
}

std::shared_ptr<CFilterTerms> WidgetUiServices::OpenFilterDialog(CFilterColumns& columns, std::shared_ptr<CFilterTerms> terms,
                                                                 const IFormInfo* owner)
{
    const QPointer<frmFilter> form = new frmFilter(dialogParent(owner));
    std::shared_ptr<CFilterTerms> accepted = form->Filter(columns.shared_from_this(), std::move(terms), owner);
    delete form.data();
    return accepted;
}

void WidgetUiServices::OpenPicklistDialog(CScPicklist& picklist, const IFormInfo* owner)
{
    const QPointer<frmPicklistEdit> form = new frmPicklistEdit(dialogParent(owner));
    form->Edit(owner, picklist);
    delete form.data();
}

void WidgetUiServices::OpenPicklistChoiceDialog(CFilterColumns& columns, const IFormInfo* owner)
{
    const QPointer<frmPicklistSelect> form = new frmPicklistSelect(dialogParent(owner));
    form->SelectAndEdit(columns, owner);
    delete form.data();
}

void WidgetUiServices::ShowMessage(MessageKind kind, const QString& title, const QString& text)
{
    switch (kind) {
    case MessageKind::Information:
        QMessageBox::information(m_parent, title, text);
        break;
    case MessageKind::Warning:
        QMessageBox::warning(m_parent, title, text);
        break;
    case MessageKind::Critical:
        QMessageBox::critical(m_parent, title, text);
        break;
    }
}

Answer WidgetUiServices::AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer)
{
    const auto buttonOf = [](Answer a) {
        return a == Answer::Yes ? QMessageBox::Yes : a == Answer::No ? QMessageBox::No : QMessageBox::Cancel;
    };
    const int pressed = QMessageBox::question(m_parent, title, text, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                                              buttonOf(defaultAnswer));
    return pressed == QMessageBox::Yes ? Answer::Yes : pressed == QMessageBox::No ? Answer::No : Answer::Cancel;
}

Answer WidgetUiServices::AskOkCancel(const QString& title, const QString& text, Answer defaultAnswer)
{
    const int pressed = QMessageBox::question(m_parent, title, text, QMessageBox::Ok | QMessageBox::Cancel,
                                              defaultAnswer == Answer::Ok ? QMessageBox::Ok : QMessageBox::Cancel);
    return pressed == QMessageBox::Ok ? Answer::Ok : Answer::Cancel;
}

void WidgetUiServices::ShowLockedMessage(const IDebugLockedMessage& message)
{
    // A fresh window for each wait, so that a Cancel of an earlier wait does not end this one.
    delete m_locked;
    m_locked = new frmLockedMessage(message, m_parent);
    // Over the window whose work waits, as far as one is active.
    QWidget* over = QApplication::activeWindow() ? QApplication::activeWindow() : m_parent.data();
    CentreForm(*m_locked, MakeFormInfo(over).get());
    m_locked->show();
    QApplication::processEvents();
}

void WidgetUiServices::ClearLockedMessage()
{
    delete m_locked;
}

bool WidgetUiServices::KeepWaitingForLock(std::chrono::milliseconds)
{
    QApplication::processEvents();
    return !(m_locked && m_locked->cancelled());
}

std::any WidgetUiServices::RunProgress(IProgressHandler& handler, int request, const std::any& arguments, const IFormInfo*)
{
    DialogProgress progress(m_parent);
    return handler.IProgressHandler_ProcessRequest(request, progress, arguments);
}

void WidgetUiServices::CloseForms()
{
    CloseGrupruForms();
}

QSizeF WidgetUiServices::UsableScreenSize() const
{
    const QScreen* screen = m_parent ? m_parent->screen() : QGuiApplication::primaryScreen();
    return screen ? QSizeF(screen->availableGeometry().size()) : QSizeF(1280, 800);
}

float WidgetUiServices::DialogOffset() const
{
    return 20;
}

void WidgetUiServices::NotImplementedNotice()
{
    QMessageBox::information(m_parent, QGuiApplication::applicationDisplayName(), GetResourceText(9200));
}

void WidgetUiServices::ObjectCreated(const QString& typeName, const void* object)
{
    ObjectMonitor::instance().Created(typeName, object);
}

void WidgetUiServices::ObjectDestroyed(const QString& typeName, const void* object)
{
    ObjectMonitor::instance().Destroyed(typeName, object);
}

void WidgetUiServices::RegisterCleanup()
{
    CCleanupFormManager& manager = CCleanupFormManager::instance();
    if (m_cleanupService)
        m_cleanupService(manager);
    else
        manager.cleanUpWhenQuitting();
}

QString WidgetUiServices::ClipboardText() const
{
    const QClipboard* clipboard = QGuiApplication::clipboard();
    return clipboard ? clipboard->text() : QString();
}

void WidgetUiServices::Beep()
{
    QApplication::beep();
}

} // namespace searchdata
