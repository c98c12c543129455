#include "Output.h"

#include "CommandLine.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/LockedMessage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
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

void Output::notice(const QString& text)
{
    m_out.flush();
    m_err << "searchdata: " << text << '\n';
    m_err.flush();
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
        Output::instance().notice(message.Message() + QStringLiteral(" (waiting for another user)"));
    HeadlessUiServices::ShowLockedMessage(message);
}

void clearLibraryReports()
{
    Diagnostics::instance().clearReports();
}

namespace {

/// Marks of the driver texts that the program can say in words, first match wins. SQLite's texts
/// and PostgreSQL's are both here; the statement after the text is never looked at.
struct DatabaseTextWords {
    const char* pattern;
    const char* words;
};

constexpr DatabaseTextWords kDatabaseTexts[] = {
    {"gave up waiting for a lock", "another user kept the data locked for longer than the program waits (see --lock-wait); nothing was changed"},
    {"readonly database|read-only transaction|read only", "the database is open for reading only"},
    {"database is locked|table is locked|lock timeout|could not obtain lock|deadlock detected", "another user holds a lock on the data"},
    {"not a database", "the file is not a database"},
    {"disk image is malformed", "the database file is damaged"},
    {"unable to open database file", "the file cannot be opened"},
    {"disk i/o error|database or disk is full|no space left", "the database could not be written to disk"},
    {"password authentication failed|authentication failed|no pg_hba.conf entry", "the server refused the user or the password"},
    {"database \".*\" does not exist", "the server has no database of that name"},
    {"role \".*\" does not exist", "the server has no user of that name"},
    {"could not connect|connection refused|could not translate host name|timeout expired|connection to server at|network is unreachable|no route to host",
     "the database server cannot be reached"},
    {"server closed the connection|terminating connection|no connection to the server|connection not open", "the connection to the database server was lost"},
    {"no such table|relation \".*\" does not exist", "a table of the search data is missing (\"check\" names what differs)"},
    {"no such column|column .* does not exist|has no column named",
     "a field is missing from its table, perhaps because another user changed the columns (\"check\" names what differs)"},
    {"unique constraint|duplicate key", "a value that must be unique is there already"},
    {"foreign key", "a value refers to a record or picklist entry that is not there"},
    {"not null constraint|violates not-null", "a required value is missing"},
    {"value too long|string data, right truncated", "a value is longer than its field"},
};

/// The database's text of a report of the database layer, without the statement that follows it.
QString databaseText(const ErrorReport& report)
{
    const qsizetype statement = report.text.indexOf(QStringLiteral(" ["));
    return statement >= 0 ? report.text.left(statement) : report.text;
}

bool isDatabaseReport(const ErrorReport& report)
{
    return report.module == QLatin1String("DatabaseHandler");
}

} // namespace

QString databaseTextInWords(const QString& driverText)
{
    for (const DatabaseTextWords& t : kDatabaseTexts) {
        const QRegularExpression pattern(QLatin1String(t.pattern), QRegularExpression::CaseInsensitiveOption);
        if (pattern.match(driverText).hasMatch())
            return QLatin1String(t.words);
    }
    return QStringLiteral("the database refused the work (--verbose shows its own message)");
}

QString libraryReason()
{
    const QList<ErrorReport> reports = Diagnostics::instance().reports();
    if (reports.isEmpty())
        return {};
    const ErrorReport& last = reports.last();
    // A library report that passes on the database's text is said like the database's own report.
    for (auto it = reports.crbegin(); it != reports.crend(); ++it) {
        if (!isDatabaseReport(*it))
            continue;
        const QString text = databaseText(*it);
        if (&*it == &last || (!text.isEmpty() && last.text.contains(text)))
            return databaseTextInWords(text);
        break;
    }
    // The drivers end each of their messages with a text of their own, which gives away a database's
    // text that a report passes on from elsewhere.
    static const QRegularExpression driverText(QStringLiteral("Unable to |QPSQL: |QSQLITE: "));
    if (driverText.match(last.text).hasMatch())
        return databaseTextInWords(last.text);
    return last.text;
}

void failWithReason(const QString& what)
{
    const QString reason = libraryReason();
    fail(reason.isEmpty() ? what : what + QStringLiteral(": ") + reason);
}

} // namespace searchdata::cli
