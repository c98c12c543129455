#include "searchdata/UiServices.h"

#include "platform/Logging_p.h"
#include "searchdata/LockedMessage.h"
#include "searchdata/Resources.h"

namespace searchdata {

namespace {

struct ThreadServices {
    std::shared_ptr<UiServices> installed;
    std::shared_ptr<HeadlessUiServices> headless;
};

ThreadServices& threadServices()
{
    thread_local ThreadServices services;
    return services;
}

/// Progress that writes its lines to the log, for runs without a window and without a host progress.
class LoggingProgress : public IProgress {
public:
    void SetStatus(const QString& text) override { qCInfo(lcDiagnostics).noquote() << text; }
    void SetProgress(const QString& text) override { qCInfo(lcDiagnostics).noquote() << text; }
};

} // namespace

UiServices& UiServices::current()
{
    ThreadServices& s = threadServices();
    if (s.installed)
        return *s.installed;
    if (!s.headless)
        s.headless = std::make_shared<HeadlessUiServices>();
    return *s.headless;
}

void UiServices::install(std::shared_ptr<UiServices> services)
{
    threadServices().installed = std::move(services);
}

HeadlessUiServices::HeadlessUiServices(std::chrono::milliseconds lockTimeout) : m_lockTimeout(lockTimeout) {}

void HeadlessUiServices::OpenConfigureDialog(CFilterColumns&, const IFormInfo*)
{
    m_requests << QStringLiteral("configure");
}

void HeadlessUiServices::OpenExamineWindow(CFilterColumns&, ISearchBaseEntry*, Recordset*, const IFormInfo*)
{
    m_requests << QStringLiteral("examine");
}

std::shared_ptr<CFilterTerms> HeadlessUiServices::OpenFilterDialog(CFilterColumns&, std::shared_ptr<CFilterTerms> terms, const IFormInfo*)
{
    m_requests << QStringLiteral("filter");
    return terms;
}

void HeadlessUiServices::OpenPicklistDialog(CScPicklist&, const IFormInfo*)
{
    m_requests << QStringLiteral("picklist");
}

void HeadlessUiServices::OpenPicklistChoiceDialog(CFilterColumns&, const IFormInfo*)
{
    m_requests << QStringLiteral("picklist choice");
}

void HeadlessUiServices::ShowMessage(MessageKind kind, const QString& title, const QString& text)
{
    static const char* const names[] = {"information", "warning", "critical"};
    m_requests << QStringLiteral("message %1: %2: %3").arg(QLatin1String(names[static_cast<int>(kind)]), title, text);
}

Answer HeadlessUiServices::AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer)
{
    m_requests << QStringLiteral("question: %1: %2").arg(title, text);
    return defaultAnswer;
}

Answer HeadlessUiServices::AskOkCancel(const QString& title, const QString& text, Answer defaultAnswer)
{
    m_requests << QStringLiteral("question: %1: %2").arg(title, text);
    return defaultAnswer;
}

void HeadlessUiServices::ShowLockedMessage(const IDebugLockedMessage& message)
{
    m_requests << QStringLiteral("locked: %1: %2").arg(message.Title(), message.Message());
    m_lockedShown = true;
}

void HeadlessUiServices::ClearLockedMessage()
{
    if (m_lockedShown)
        m_requests << QStringLiteral("locked cleared");
    m_lockedShown = false;
}

bool HeadlessUiServices::KeepWaitingForLock(std::chrono::milliseconds waited)
{
    // Nobody is there to cancel, so the wait is bounded instead.
    return waited < m_lockTimeout;
}

std::any HeadlessUiServices::RunProgress(IProgressHandler& handler, int request, const std::any& arguments, const IFormInfo*)
{
    m_requests << QStringLiteral("progress %1").arg(request);
    if (m_progress)
        return handler.IProgressHandler_ProcessRequest(request, *m_progress, arguments);
    LoggingProgress progress;
    return handler.IProgressHandler_ProcessRequest(request, progress, arguments);
}

void HeadlessUiServices::CloseForms()
{
    m_requests << QStringLiteral("close forms");
}

void HeadlessUiServices::Beep()
{
    m_requests << QStringLiteral("beep");
}

void HeadlessUiServices::NotImplementedNotice()
{
    m_requests << QStringLiteral("message information: ") + GetResourceText(9200);
}

} // namespace searchdata
