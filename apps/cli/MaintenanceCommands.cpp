// check [--repair] and populate: the schema check and the population check of a base table's search data.

#include "Commands.h"
#include "Output.h"
#include "Session.h"
#include "searchdata/Diagnostics.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

/// The host's side of the questions a check puts: each question is noted, and answered with `answer`.
class QuestionLog {
public:
    QuestionLog(DatabaseHandler& db, int answer) : m_db(db)
    {
        db.setQueryConversion([this, answer](const QString&, const QString& table, int flag) {
            m_questions << QStringLiteral("%1 (question %2)").arg(table, QString::number(flag));
            return answer;
        });
    }
    ~QuestionLog() { m_db.setQueryConversion(nullptr); }
    const QStringList& questions() const { return m_questions; }

private:
    DatabaseHandler& m_db;
    QStringList m_questions;
};

/// The host's answer that ends a check at its first question, before anything changes.
constexpr int kEndCheck = 1;

/// Mode 0 of the schema check, asking before every change and answered with the end of the check:
/// whether the search tables differ from the definitions. Changes nothing.
QStringList differences(Session& session, IProgress& progress, bool keys)
{
    QuestionLog log(session.db(), kEndCheck);
    session.search()->CheckTable(&progress, 0, keys);
    return log.questions();
}

int checkTables(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const bool keys = !inv.has(QStringLiteral("no-keys"));
    if (inv.has(QStringLiteral("log")))
        Diagnostics::instance().setLogFile(inv.value(QStringLiteral("log")));
    StderrProgress progress;
    clearLibraryReports();
    const QStringList found = differences(session, progress, keys);
    bool repaired = false;
    QStringList left = found;
    if (!found.isEmpty() && inv.has(QStringLiteral("repair"))) {
        Diagnostics::instance().setConversionFailed(false);
        clearLibraryReports();
        int result = 0;
        {
            QuestionLog log(session.db(), 0);
            result = session.search()->CheckTable(&progress, 1, keys);
        }
        if (Diagnostics::instance().ConversionFailed() || result != 0)
            failWithReason(QStringLiteral("the repair of the search tables of %1 failed").arg(session.tableName()));
        repaired = true;
        // A second look shows whether the repair left anything.
        session.openSearch();
        left = differences(session, progress, keys);
    }

    Output& output = Output::instance();
    if (output.json()) {
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("differences"), QJsonArray::fromStringList(found)},
                                     {QStringLiteral("repaired"), repaired},
                                     {QStringLiteral("inOrder"), left.isEmpty()}});
    } else {
        QTextStream& out = output.out();
        if (found.isEmpty())
            out << "the search tables of " << session.tableName() << " agree with their definitions\n";
        else if (!repaired)
            out << "the search tables of " << session.tableName() << " differ from their definitions; \"check --repair\" repairs them\n";
        else if (left.isEmpty())
            out << "the search tables of " << session.tableName() << " were repaired and agree with their definitions now\n";
        else
            out << "the search tables of " << session.tableName() << " still differ from their definitions after the repair\n";
        out.flush();
    }
    // For scripts: differences that stay are a failure.
    return left.isEmpty() ? ExitSuccess : ExitFailure;
}

int populate(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    if (!session.search()->Exists())
        fail(QStringLiteral("%1 has no search columns").arg(session.tableName()));
    const bool checkOnly = inv.has(QStringLiteral("check"));
    // Asked before the first change, answering "stop" keeps the check from changing anything.
    QuestionLog log(session.db(), checkOnly ? kEndCheck : 0);
    clearLibraryReports();
    const int result = session.columns().StartProcessDataReportProgress(nullptr, checkOnly, checkOnly ? 0 : 1, QDateTime::currentDateTime());
    if (!checkOnly && result != 0)
        failWithReason(QStringLiteral("the population check of %1 ended early").arg(session.tableName()));
    if (!checkOnly && !libraryReason().isEmpty())
        failWithReason(QStringLiteral("the population check of %1 failed").arg(session.tableName()));
    const bool needed = !log.questions().isEmpty();

    Output& output = Output::instance();
    if (output.json()) {
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("checkOnly"), checkOnly},
                                     {QStringLiteral("repairNeeded"), needed}});
    } else if (checkOnly) {
        output.out() << (needed ? QStringLiteral("records of %1 lack search rows, or search rows lack their records; \"populate\" repairs them\n")
                                : QStringLiteral("every record of %1 has its search row, and no row is left over\n"))
                            .arg(session.tableName());
    } else {
        output.out() << QStringLiteral("every record of %1 has its search row now, and no row is left over\n").arg(session.tableName());
    }
    output.out().flush();
    return checkOnly && needed ? ExitFailure : ExitSuccess;
}

} // namespace

QList<CommandSpec> maintenanceCommands()
{
    return {
        {{QStringLiteral("check")}, {},
         QStringLiteral("Checks the search tables of the base table against the column definitions."),
         QStringLiteral("Without --repair nothing changes; the exit code is 1 when the tables differ."),
         {{QStringLiteral("repair"), {}, QStringLiteral("repairs what differs")},
          {QStringLiteral("no-keys"), {}, QStringLiteral("leaves indexes and keys out of the check")},
          {QStringLiteral("log"), QStringLiteral("FILE"), QStringLiteral("appends the schema changes to this file")}},
         0, 0, true, checkTables},
        {{QStringLiteral("populate")}, {},
         QStringLiteral("Gives every record its search row and deletes rows whose record is gone."),
         QStringLiteral("With --check nothing changes; the exit code is 1 when a repair is needed."),
         {{QStringLiteral("check"), {}, QStringLiteral("only tells whether a repair is needed")}}, 0, 0, true, populate},
    };
}

} // namespace searchdata::cli
