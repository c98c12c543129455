// Making a search table filled from a large base table through the schema tool, beside the baseline:
// the same table by hand, CREATE TABLE with its keys and INSERT ... SELECT of every key, in one
// transaction.
//
//   bench_create_filled_table [rows=1000000] [rounds=3] [database] (see BenchRun.h)
//
// Prints the best time of each over the rounds and their ratio.

#include "BenchRun.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/TableStructure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>

using namespace searchdata;
using namespace searchdata::bench;

namespace {

std::shared_ptr<TableStructure> searchStructure(const DatabaseHandler& db, const QString& name)
{
    auto population = TableStructure::NewStructure(name);
    auto s = TableStructure::NewStructure(name, true, QStringLiteral("Files"), db.BracketName(QStringLiteral("FileId")), population);
    const bool built = population->AddColumn(QStringLiteral("FileId"), adInteger)
                       && s->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false)
                       && s->AddColumn(QStringLiteral("Customer"), adVarWChar, 255, 0, true, true, QStringLiteral("'none'"))
                       && s->AddUniqueKey(QStringLiteral("UK_") + name, {QStringLiteral("FileId")})
                       && s->AddForeignKey({}, {QStringLiteral("FileId")}, QStringLiteral("Files"), {QStringLiteral("FileId")}, true);
    return built ? s : nullptr;
}

double timeTool(DatabaseHandler& db, Catalog& catalog)
{
    SchemaTool tool;
    const auto s = searchStructure(db, QStringLiteral("FilesSearchData"));
    QElapsedTimer timer;
    timer.start();
    const bool ok = s && tool.CreateTable(nullptr, catalog, *s);
    const double ms = timer.nsecsElapsed() / 1e6;
    if (!ok || !tool.DropTable(nullptr, catalog, QStringLiteral("FilesSearchData")))
        return -1;
    return ms;
}

double timeByHand(DatabaseHandler& db)
{
    const QString hand = db.BracketName(QStringLiteral("HandSearchData"));
    const QString id = db.BracketName(QStringLiteral("FileId"));
    const QString files = db.BracketName(QStringLiteral("Files"));
    QSqlQuery q(db.database());
    QElapsedTimer timer;
    timer.start();
    const bool ok = q.exec(QStringLiteral("BEGIN"))
                    && q.exec(QStringLiteral("CREATE TABLE ") + hand + QStringLiteral(" (") + id + QStringLiteral(" INTEGER NOT NULL, ")
                              + db.BracketName(QStringLiteral("Customer")) + QStringLiteral(" VARCHAR(255) DEFAULT 'none', CONSTRAINT ")
                              + db.BracketName(QStringLiteral("UK_HandSearchData")) + QStringLiteral(" UNIQUE (") + id
                              + QStringLiteral("), CONSTRAINT ") + db.BracketName(QStringLiteral("FK_HandSearchData_Files"))
                              + QStringLiteral(" FOREIGN KEY (") + id + QStringLiteral(") REFERENCES ") + files + QStringLiteral(" (") + id
                              + QStringLiteral(") ON DELETE CASCADE ON UPDATE CASCADE)"))
                    && q.exec(QStringLiteral("INSERT INTO ") + hand + QStringLiteral(" (") + id + QStringLiteral(") SELECT ") + id
                              + QStringLiteral(" FROM ") + files)
                    && q.exec(QStringLiteral("COMMIT"));
    const double ms = timer.nsecsElapsed() / 1e6;
    if (!ok || !q.exec(QStringLiteral("DROP TABLE ") + hand))
        return -1;
    return ms;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const BenchOptions options = ParseBenchOptions(app.arguments(), 1000000, 3);
    const qint64 rows = options.size;
    const int rounds = options.rounds;
    QTextStream out(stdout);

    QTemporaryDir dir;
    auto db = OpenBenchDatabase(options, dir);
    if (!db)
        return 1;
    const QString files = db->BracketName(QStringLiteral("Files"));
    TransactionState tx;
    const bool filled = db->BeginTableTransaction(tx)
                        && db->ExecuteSql(QStringLiteral("CREATE TABLE ") + files + QStringLiteral(" (") + db->BracketName(QStringLiteral("FileId"))
                                          + QStringLiteral(" INTEGER PRIMARY KEY, ") + db->BracketName(QStringLiteral("Name"))
                                          + QStringLiteral(" VARCHAR(100), ") + db->BracketName(QStringLiteral("Archived")) + QStringLiteral(" INTEGER)"))
                        && db->ExecuteSql(QStringLiteral("INSERT INTO ") + files
                                          + QStringLiteral(" SELECT i, 'file ' || i, i % 3 FROM ") + CountingSql(rows) + QStringLiteral(" AS k"))
                        && db->CommitTableTransaction(tx);
    db->EndTableTransaction(tx);
    if (!filled) {
        out << "cannot fill the base table: " << db->lastError() << "\n";
        return 1;
    }
    Catalog catalog(db);

    const auto best = TakeTurns(rounds, [&] { return timeTool(*db, catalog); }, [&] { return timeByHand(*db); });
    if (!best) {
        out << "a round failed: " << db->lastError() << "\n";
        return 1;
    }
    const double bestTool = best->library, bestHand = best->baseline;
    out << QStringLiteral("rows %1, best of %2: schema tool CreateTable with fill %3 ms, CREATE TABLE + INSERT ... SELECT %4 ms, ratio %5\n")
               .arg(rows).arg(rounds).arg(bestTool, 0, 'f', 1).arg(bestHand, 0, 'f', 1).arg(bestTool / bestHand, 0, 'f', 3);
    out.flush();
    PrintBenchResult(QStringLiteral("create-fill"), DatabaseName(*db), rows, bestTool, bestHand);
    if (db->DatabaseKind() != dbkSQLite)
        db->ExecuteSql(QStringLiteral("DROP TABLE ") + files);
    return 0;
}
