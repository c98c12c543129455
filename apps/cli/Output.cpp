#include "Output.h"

#include "CommandLine.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/LockedMessage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

namespace searchdata::cli {

Output& Output::instance()
{
    static Output output;
    return output;
}

Output::Output() : m_out(stdout), m_err(stderr) {}

void Output::configure(bool json, bool quiet)
{
    m_json = json;
    m_quiet = quiet;
}

void Output::printJson(const QJsonValue& value)
{
    const QJsonDocument doc = value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    m_out << doc.toJson(QJsonDocument::Indented);
    m_out.flush();
}

void Output::note(const QString& text)
{
    if (m_quiet)
        return;
    m_out.flush();
    m_err << "searchdata: " << text << '\n';
    m_err.flush();
}

void Output::warning(const QString& text)
{
    m_out.flush();
    m_err << "searchdata: warning: " << text << '\n';
    m_err.flush();
}

void Output::progress(const QString& text)
{
    note(text);
}

void Output::error(int exitCode, const QString& text)
{
    m_out.flush();
    if (m_json)
        m_err << QJsonDocument(QJsonObject{{QStringLiteral("error"), text}, {QStringLiteral("exitCode"), exitCode}}).toJson(QJsonDocument::Compact)
              << '\n';
    else
        m_err << "searchdata: error: " << text << '\n';
    m_err.flush();
}

void StderrProgress::SetStatus(const QString& text)
{
    if (!text.isEmpty() && text != m_last)
        Output::instance().progress(text);
    m_last = text;
}

void StderrProgress::SetProgress(const QString& text)
{
    SetStatus(text);
}

void ConsoleUiServices::ShowMessage(MessageKind kind, const QString& title, const QString& text)
{
    HeadlessUiServices::ShowMessage(kind, title, text);
    const QString line = (title.isEmpty() ? QString() : title + QStringLiteral(": ")) + text;
    if (kind == MessageKind::Information)
        Output::instance().note(line);
    else
        Output::instance().warning(line);
}

Answer ConsoleUiServices::AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer)
{
    static const char* const names[] = {"yes", "no", "cancel"};
    Output::instance().note(QStringLiteral("%1 (answered \"%2\")").arg(text, QLatin1String(names[static_cast<int>(defaultAnswer)])));
    return HeadlessUiServices::AskYesNoCancel(title, text, defaultAnswer);
}

void ConsoleUiServices::ShowLockedMessage(const IDebugLockedMessage& message)
{
    if (!lockedMessageShown())
        Output::instance().note(message.Message() + QStringLiteral(" (waiting for another user)"));
    HeadlessUiServices::ShowLockedMessage(message);
}

void clearLibraryReports()
{
    Diagnostics::instance().clearReports();
}

QString libraryReason()
{
    const auto last = Diagnostics::instance().lastError();
    return last ? last->text : QString();
}

void failWithReason(const QString& what)
{
    const QString reason = libraryReason();
    fail(reason.isEmpty() ? what : what + QStringLiteral(": ") + reason);
}

} // namespace searchdata::cli
