#include "searchdata/widgets/WidgetUiServices.h"

#include "searchdata/LockedMessage.h"

#include <QApplication>
#include <QMessageBox>
#include <QProgressDialog>
#include <QScreen>
#include "searchdata/Resources.h"

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

// The dialogs themselves arrive with their own windows; until then these requests change nothing.
void WidgetUiServices::OpenConfigureDialog(CFilterColumns&, const IFormInfo*) {}
void WidgetUiServices::OpenExamineWindow(CFilterColumns&, ISearchBaseEntry*, Recordset*, const IFormInfo*) {}
std::shared_ptr<CFilterTerms> WidgetUiServices::OpenFilterDialog(CFilterColumns&, std::shared_ptr<CFilterTerms> terms, const IFormInfo*)
{
    return terms;
}
void WidgetUiServices::OpenPicklistDialog(CScPicklist&, const IFormInfo*) {}
void WidgetUiServices::OpenPicklistChoiceDialog(CFilterColumns&, const IFormInfo*) {}

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

void WidgetUiServices::ShowLockedMessage(const IDebugLockedMessage& message)
{
    // A fresh dialog for each wait, so that a Cancel of an earlier wait does not end this one.
    delete m_locked;
    m_locked = new QProgressDialog(m_parent);
    m_locked->setRange(0, 0);
    m_locked->setMinimumDuration(0);
    m_locked->setWindowModality(Qt::ApplicationModal);
    m_locked->setWindowTitle(message.Title());
    m_locked->setLabelText(message.Message());
    m_locked->show();
    QApplication::processEvents();
}

void WidgetUiServices::ClearLockedMessage()
{
    if (m_locked)
        m_locked->hide();
}

bool WidgetUiServices::KeepWaitingForLock(std::chrono::milliseconds)
{
    QApplication::processEvents();
    return !(m_locked && m_locked->wasCanceled());
}

std::any WidgetUiServices::RunProgress(IProgressHandler& handler, int request, const std::any& arguments, const IFormInfo*)
{
    DialogProgress progress(m_parent);
    return handler.IProgressHandler_ProcessRequest(request, progress, arguments);
}

void WidgetUiServices::CloseForms()
{
    // Hide the library's top-level windows, newest first.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (auto it = windows.crbegin(); it != windows.crend(); ++it) {
        if ((*it)->isVisible() && (*it)->property("searchdataForm").toBool())
            (*it)->hide();
    }
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

} // namespace searchdata
