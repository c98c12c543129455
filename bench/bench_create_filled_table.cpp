// Making a search table filled from a large base table through the schema tool, beside the same
// table made by hand with CREATE TABLE and INSERT ... SELECT, on SQLite.
//
//   bench_create_filled_table [rows=1000000] [rounds=3]
//
// Prints the best time of each over the rounds and their ratio.

#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/TableStructure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <limits>

using namespace searchdata;

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
    QSqlQuery q(db.database());
    QElapsedTimer timer;
    timer.start();
    const bool ok = q.exec(QStringLiteral("BEGIN"))
                    && q.exec(QStringLiteral("CREATE TABLE [HandSearchData] ([FileId] INTEGER NOT NULL, "
                                             "[Customer] VARCHAR(255) DEFAULT 'none', "
                                             "CONSTRAINT [UK_HandSearchData] UNIQUE ([FileId]), "
                                             "CONSTRAINT [FK_HandSearchData_Files] FOREIGN KEY ([FileId]) REFERENCES [Files] ([FileId]) "
                                             "ON DELETE CASCADE ON UPDATE CASCADE)"))
                    && q.exec(QStringLiteral("INSERT INTO [HandSearchData] ([FileId]) SELECT [FileId] FROM [Files]"))
                    && q.exec(QStringLiteral("COMMIT"));
    const double ms = timer.nsecsElapsed() / 1e6;
    if (!ok || !q.exec(QStringLiteral("DROP TABLE [HandSearchData]")))
        return -1;
    return ms;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const qint64 rows = args.size() > 1 ? args[1].toLongLong() : 1000000;
    const int rounds = args.size() > 2 ? std::max(1, args[2].toInt()) : 3;
    QTextStream out(stdout);

    QTemporaryDir dir;
    auto opened = DatabaseHandler::open(dir.filePath(QStringLiteral("bench.sqlite")));
    if (!opened || rows <= 0) {
        out << "cannot open the database, or no rows asked for\n";
        return 1;
    }
    auto db = opened.value();
    TransactionState tx;
    const bool filled = db->BeginTableTransaction(tx)
                        && db->ExecuteSql(QStringLiteral("CREATE TABLE [Files] ([FileId] INTEGER PRIMARY KEY, [Name] VARCHAR(100), [Archived] INTEGER)"))
                        && db->ExecuteSql(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                                                         "INSERT INTO [Files] SELECT i, 'file ' || i, i % 3 = 0 FROM n").arg(rows))
                        && db->CommitTableTransaction(tx);
    db->EndTableTransaction(tx);
    if (!filled) {
        out << "cannot fill the base table: " << db->lastError() << "\n";
        return 1;
    }
    Catalog catalog(db);

    double bestTool = std::numeric_limits<double>::max();
    double bestHand = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        // Alternate the order so that neither side always meets a warm cache first.
        const double a = round % 2 == 0 ? timeTool(*db, catalog) : timeByHand(*db);
        const double b = round % 2 == 0 ? timeByHand(*db) : timeTool(*db, catalog);
        const double toolMs = round % 2 == 0 ? a : b;
        const double handMs = round % 2 == 0 ? b : a;
        if (toolMs < 0 || handMs < 0) {
            out << "a round failed: " << db->lastError() << "\n";
            return 1;
        }
        out << QStringLiteral("round %1: schema tool %2 ms, by hand %3 ms\n").arg(round + 1).arg(toolMs, 0, 'f', 1).arg(handMs, 0, 'f', 1);
        bestTool = std::min(bestTool, toolMs);
        bestHand = std::min(bestHand, handMs);
    }
    out << QStringLiteral("rows %1, best of %2: schema tool CreateTable with fill %3 ms, CREATE TABLE + INSERT ... SELECT %4 ms, ratio %5\n")
               .arg(rows).arg(rounds).arg(bestTool, 0, 'f', 1).arg(bestHand, 0, 'f', 1).arg(bestTool / bestHand, 0, 'f', 3);
    return 0;
}
