// The population check on a large base table whose search table lacks a tenth of its rows and holds
// as many rows of records that are gone, interleaved as deleted records leave them:
//   - the set-based check, and the walking check, each beside the baseline: the same repair by hand in
//     two set statements, an INSERT ... SELECT of the missing rows and a DELETE of the orphans.
//
//   bench_population [rows=1000000] [rounds=3] [database] (see BenchRun.h)
//
// Each check reports its progress to standard error as it runs; standard output gets the time of each
// round, the best of each over the rounds, and their ratios.

#include "BenchRun.h"
#include "searchdata/CCheckPopulationArgs.h"
#include "searchdata/CCheckPopulationResult.h"
#include "searchdata/CCommon.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/Profile.h"
#include "searchdata/Progress.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/TableStructure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <limits>
#include <sys/resource.h>

using namespace searchdata;
using namespace searchdata::bench;

namespace {

/// Shows what a check reports, as a progress window would.
class PrintedProgress : public IProgress {
public:
    void SetStatus(const QString& text) override { QTextStream(stderr) << "  status: " << text << "\n"; }
    void SetProgress(const QString& text) override { QTextStream(stderr) << "  progress: " << text << "\n"; }
};

long maxResidentMb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

bool exec(DatabaseHandler& db, const QString& sql)
{
    QSqlQuery q(db.database());
    if (q.exec(sql))
        return true;
    QTextStream(stderr) << "failed: " << sql << "\n";
    return false;
}

/// Keys 1 to rows * 1.1 but every eleventh: the records that are gone leave their search rows behind.
QString keys(qint64 rows, const QString& condition)
{
    return QStringLiteral("SELECT i FROM ") + CountingSql(rows + rows / 10) + QStringLiteral(" AS k WHERE ") + condition;
}

/// A tenth of the records lose their search rows; the rows of the records that are gone come back.
bool makeDrift(DatabaseHandler& db, qint64 rows)
{
    const QString data = db.BracketName(QStringLiteral("FilesSearchData"));
    const QString id = db.BracketName(QStringLiteral("FileId"));
    return exec(db, QStringLiteral("DELETE FROM %1 WHERE %2 % 10 = 1").arg(data, id))
           && exec(db, QStringLiteral("INSERT INTO %1 (%2) %3").arg(data, id, keys(rows, QStringLiteral("i % 11 = 5"))));
}

/// The two statements of the set-based check, written by hand.
bool repairByHand(DatabaseHandler& db)
{
    const QString data = db.BracketName(QStringLiteral("FilesSearchData"));
    const QString files = db.BracketName(QStringLiteral("Files"));
    const QString id = db.BracketName(QStringLiteral("FileId"));
    const QString fields = id + QStringLiteral(", ") + db.BracketName(QStringLiteral("Customer")) + QStringLiteral(", ")
                           + db.BracketName(QStringLiteral("Qty"));
    return exec(db, QStringLiteral("INSERT INTO %1 (%2) SELECT f.%3, '', 0 FROM %4 AS f WHERE NOT EXISTS (SELECT 1 FROM %1 AS t WHERE t.%3 = f.%3)")
                        .arg(data, fields, id, files))
           && exec(db, QStringLiteral("DELETE FROM %1 WHERE NOT EXISTS (SELECT 1 FROM %2 AS f WHERE f.%3 = %1.%3)").arg(data, files, id));
}

qint64 count(DatabaseHandler& db, const QString& table)
{
    QSqlQuery q(db.database());
    return q.exec(QStringLiteral("SELECT COUNT(*) FROM ") + db.BracketName(table)) && q.next() ? q.value(0).toLongLong() : -1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const BenchOptions options = ParseBenchOptions(app.arguments(), 1000000, 3);
    const qint64 rows = options.size;
    const int rounds = options.rounds;
    QTemporaryDir dir;
    QTextStream out(stdout);
    auto db = OpenBenchDatabase(options, dir);
    if (!db)
        return 1;
    const QString files = db->BracketName(QStringLiteral("Files"));
    QElapsedTimer setup;
    setup.start();
    if (!exec(*db, QStringLiteral("CREATE TABLE %1 (%2 INTEGER PRIMARY KEY, %3 VARCHAR(100))")
                       .arg(files, db->BracketName(QStringLiteral("FileId")), db->BracketName(QStringLiteral("Name"))))
        || !exec(*db, QStringLiteral("INSERT INTO %1 SELECT i, 'file' FROM (%2) AS k").arg(files, keys(rows, QStringLiteral("i % 11 <> 5"))))) {
        out << "cannot make the base table\n";
        return 1;
    }

    // The search table as the library makes it, filled at creation; then without its foreign key,
    // as a search table that other programs have drifted from the records.
    auto catalog = std::make_shared<Catalog>(db);
    auto structure = TableStructure::NewStructure(QStringLiteral("Files"));
    if (!structure->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false)
        || !structure->AddPrimaryKey(QStringLiteral("PK_Files"), {QStringLiteral("FileId")})) {
        out << "cannot describe the base table\n";
        return 1;
    }
    auto profile = std::make_shared<IniProfile>(dir.filePath(QStringLiteral("profile.ini")));
    auto base = std::make_shared<NamedBaseTable>(QStringLiteral("Files"));
    auto open = [&] { return CreateSearchFilterObject(db, base, catalog, profile, 0, structure)->FilterColumns(); };
    {
        auto cols = open();
        cols->Add(QStringLiteral("Customer"), {}, {}, fcText, 40, false, false);
        cols->Add(QStringLiteral("Qty"), {}, {}, fcInteger32, 0, false, false);
        if (!cols->ColumnsSave(nullptr) || !SchemaTool().DropTableKeys(nullptr, *catalog, QStringLiteral("FilesSearchData"))) {
            out << "cannot make the search table\n";
            return 1;
        }
    }
    const auto cols = open();
    out << QStringLiteral("set up %1 base records in %2 s, resident %3 MB\n").arg(count(*db, QStringLiteral("Files")))
               .arg(setup.elapsed() / 1000.0, 0, 'f', 1).arg(maxResidentMb());

    PrintedProgress progress;
    const CCheckPopulationArgs repair(false, 1, QDateTime::currentDateTime());
    auto timed = [&](const char* what, const std::function<bool()>& run) {
        if (!makeDrift(*db, rows))
            return -1.0;
        const qint64 drifted = count(*db, QStringLiteral("FilesSearchData"));
        QElapsedTimer timer;
        timer.start();
        const bool ok = run();
        const double ms = timer.nsecsElapsed() / 1e6;
        const qint64 after = count(*db, QStringLiteral("FilesSearchData"));
        if (!ok || after != count(*db, QStringLiteral("Files"))) {
            out << what << " failed: " << drifted << " rows before, " << after << " after\n";
            return -1.0;
        }
        out << QStringLiteral("  %1: %2 ms (%3 search rows before, %4 after)\n").arg(what).arg(ms, 0, 'f', 1).arg(drifted).arg(after);
        out.flush();
        return ms;
    };
    auto sets = [&] { return cols->CheckPopulationProgressSQL(progress, repair)->ResultCode() == 0; };
    auto walk = [&] {
        const auto result = cols->CheckPopulationProgressADO(progress, repair);
        return result->ResultCode() == 0 && !result->Cancelled();
    };
    auto hand = [&] { return repairByHand(*db); };

    double bestSets = std::numeric_limits<double>::max(), bestHand = bestSets, bestWalk = bestSets;
    for (int round = 0; round < rounds; ++round) {
        out << "round " << round + 1 << "\n";
        // Alternate the order so that no side always meets a warm cache first.
        const double h = round % 2 ? timed("by hand", hand) : 0;
        const double s = timed("set-based check", sets);
        const double w = timed("walking check", walk);
        const double h2 = round % 2 ? h : timed("by hand", hand);
        if (s < 0 || w < 0 || h2 < 0)
            return 1;
        bestSets = std::min(bestSets, s);
        bestHand = std::min(bestHand, h2);
        bestWalk = std::min(bestWalk, w);
    }
    out << QStringLiteral("%1, %2 base records, best of %3: set-based check %4 ms, by hand %5 ms, ratio %6; "
                          "walking check %7 ms, walking / set-based %8; resident at most %9 MB\n")
               .arg(DatabaseName(*db))
               .arg(rows).arg(rounds)
               .arg(bestSets, 0, 'f', 1).arg(bestHand, 0, 'f', 1).arg(bestSets / bestHand, 0, 'f', 3)
               .arg(bestWalk, 0, 'f', 1).arg(bestWalk / bestSets, 0, 'f', 3).arg(maxResidentMb());
    out.flush();
    PrintBenchResult(QStringLiteral("population-sets"), DatabaseName(*db), rows, bestSets, bestHand);
    PrintBenchResult(QStringLiteral("population-walk"), DatabaseName(*db), rows, bestWalk, bestHand);
    if (db->DatabaseKind() != dbkSQLite)
        exec(*db, QStringLiteral("DROP TABLE %1, %2").arg(db->BracketName(QStringLiteral("FilesSearchData")), files));
    return 0;
}
