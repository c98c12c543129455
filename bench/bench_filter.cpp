// A filter of one text, one numeric and one keyword term over a large base table: the predicate of
// SQLString beside the baseline, the fastest of three hand-written queries for the same rows (a join
// from the keyword, an EXISTS, an IN).
//
//   bench_filter [records=1000000] [rounds=7] [database] [analyze] (see BenchRun.h)
//
// The search tables are made by the library from its column definitions (with their unique keys and
// the keyword value index) and its search rows; SQL then gives the rows values and on average three
// keywords. Prints the median time of each query, the rows they give, and the ratio. On SQLite the
// planner works without statistics unless asked to analyze; PostgreSQL gathers them after a load of
// its own accord, so there they are always gathered first.

#include "BenchRun.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/TableStructure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>

using namespace searchdata;
using namespace searchdata::bench;

namespace {

QTextStream out(stdout);

bool exec(DatabaseHandler& db, const QString& sql)
{
    QSqlQuery q(db.database());
    if (q.exec(sql))
        return true;
    out << "failed: " << q.lastError().text() << "\n  in: " << sql << Qt::endl;
    return false;
}

/// The keys that `sql` selects, in order.
QList<qint64> keysOf(DatabaseHandler& db, const QString& sql)
{
    QSqlQuery q(db.database());
    q.setForwardOnly(true);
    QList<qint64> keys;
    if (!q.exec(sql)) {
        out << "failed: " << q.lastError().text() << "\n  in: " << sql << Qt::endl;
        return keys;
    }
    while (q.next())
        keys << q.value(0).toLongLong();
    std::sort(keys.begin(), keys.end());
    return keys;
}

/// Median milliseconds of `rounds` runs, after one to warm the cache.
double medianMs(DatabaseHandler& db, const QString& sql, int rounds)
{
    keysOf(db, sql);
    QList<double> times;
    for (int i = 0; i < rounds; ++i) {
        QElapsedTimer timer;
        timer.start();
        keysOf(db, sql);
        times << timer.nsecsElapsed() / 1e6;
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void printPlan(DatabaseHandler& db, const QString& sql)
{
    const bool sqlite = db.DatabaseKind() == dbkSQLite;
    QSqlQuery q(db.database());
    if (!q.exec((sqlite ? QStringLiteral("EXPLAIN QUERY PLAN ") : QStringLiteral("EXPLAIN ")) + sql))
        return;
    while (q.next())
        out << "    " << q.value(sqlite ? 3 : 0).toString() << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const BenchOptions options = ParseBenchOptions(app.arguments(), 1000000, 7);
    const qint64 records = options.size;
    const int rounds = options.rounds;
    QTemporaryDir dir;
    const auto handler = OpenBenchDatabase(options, dir);
    if (!handler)
        return 1;
    DatabaseHandler& db = *handler;
    const bool analyze = db.DatabaseKind() != dbkSQLite || options.more.contains(QStringLiteral("analyze"));
    const auto n = [&](const char* name) { return db.BracketName(QString::fromLatin1(name)); };
    QElapsedTimer filling;
    filling.start();
    if (!CreateBaseTable(db, QStringLiteral("Parts"), QStringLiteral("PartId"), records))
        return 1;

    // The search, its three columns, and their tables as the library makes them.
    auto structure = TableStructure::NewStructure(QStringLiteral("Parts"));
    if (!structure->AddColumn(QStringLiteral("PartId"), adInteger, 0, 0, false) || !structure->AddColumn(QStringLiteral("Name"), adVarWChar, 255)
        || !structure->AddPrimaryKey(QStringLiteral("PK_Parts"), {QStringLiteral("PartId")}))
        return 1;
    auto catalog = std::make_shared<Catalog>(handler);
    CSearchFilter search;
    search.OpenSearch(handler, std::make_shared<NamedBaseTable>(QStringLiteral("Parts")), catalog, nullptr, 0, structure);
    const auto columns = search.FilterColumns();
    if (!columns) {
        out << "the search did not open" << Qt::endl;
        return 1;
    }
    const QDateTime now = QDateTime::currentDateTime();
    for (const auto& column : {columns->Add(QStringLiteral("Maker"), {}, {}, fcText, 50, false, false),
                               columns->Add(QStringLiteral("Price"), {}, {}, fcDouble, 0, false, false),
                               columns->Add(QStringLiteral("Tag"), {}, {}, fcKeyword, 20, false, false)}) {
        const auto table = column ? columns->MyStructureDefault(*column, now) : nullptr;
        if (!table || !columns->schemaTool().ApplyStructure(nullptr, *catalog, *table)) {
            out << "cannot make the table of a column" << Qt::endl;
            return 1;
        }
    }

    // Pseudo-random but repeatable values: multiplicative hashes of the key.
    const QString partId = n("PartId");
    // The hashes overflow a 32-bit key on PostgreSQL.
    const QString wideKey = QStringLiteral("CAST(") + partId + QStringLiteral(" AS BIGINT)");
    if (!exec(db, QStringLiteral("BEGIN"))
        || !exec(db, QStringLiteral("UPDATE ") + n("PartsSearchData") + QStringLiteral(" SET ") + n("Maker") + QStringLiteral(" = 'Maker ' || ((")
                         + wideKey + QStringLiteral(" * 2654435761 + 1) % 1000003 % 1000), ") + n("Price") + QStringLiteral(" = ((") + wideKey
                         + QStringLiteral(" * 2246822519 + 7) % 1000003 % 100000) / 100.0")))
        return 1;
    for (int k = 0; k < 6; ++k) {
        // Each of six candidate keywords is kept for half the records: three on average.
        const QString sql = QStringLiteral("INSERT INTO ") + n("PartsSearchKeywordTag") + QStringLiteral(" (") + partId + QStringLiteral(", ") + n("Tag")
                            + QStringLiteral(") SELECT ") + partId + QStringLiteral(", 'tag ' || ((") + wideKey + QStringLiteral(" * 668265263 + ")
                            + QString::number(k * 7919) + QStringLiteral(") % 1000003 % 300) FROM ") + n("Parts") + QStringLiteral(" WHERE (")
                            + wideKey + QStringLiteral(" * 3266489917 + ") + QString::number(k * 97)
                            + QStringLiteral(") % 1000003 % 2 = 0 ON CONFLICT DO NOTHING");
        if (!exec(db, sql))
            return 1;
    }
    if (!exec(db, QStringLiteral("COMMIT")) || (analyze && !exec(db, QStringLiteral("ANALYZE"))))
        return 1;
    out << "filled " << records << " records in " << filling.elapsed() << " ms" << Qt::endl;
    {
        QSqlQuery q(db.database());
        q.exec(QStringLiteral("SELECT COUNT(*) FROM ") + n("PartsSearchKeywordTag"));
        q.next();
        out << "keywords: " << q.value(0).toLongLong() << Qt::endl;
    }

    CFilterTerms terms(columns);
    terms.Add(kvoCJ_None, QStringLiteral("PartsSearchData"), QStringLiteral("Maker"), kvoCC_Text, kvoOP_Equals, QStringLiteral("Maker 17"));
    terms.Add(kvoCJ_And, QStringLiteral("PartsSearchData"), QStringLiteral("Price"), kvoCC_Numeric, kvoOP_Greater, QStringLiteral("500"));
    terms.Add(kvoCJ_And, QStringLiteral("PartsSearchKeywordTag"), QStringLiteral("Tag"), kvoCC_Keyword, kvoOP_Includes, QStringLiteral("tag 42"));
    const QString filtered = QStringLiteral("SELECT ") + db.QualifiedName(QStringLiteral("Parts"), QStringLiteral("PartId")) + QStringLiteral(" FROM ")
                             + n("Parts") + QStringLiteral(" WHERE ") + terms.SQLString();

    const QString tag = n("Tag"), maker = n("Maker"), price = n("Price"), keywords = n("PartsSearchKeywordTag"), data = n("PartsSearchData");
    const QString matches = QStringLiteral(" = 'tag 42' AND s.") + maker + QStringLiteral(" = 'Maker 17' AND s.") + price + QStringLiteral(" > 500");
    const QStringList handWritten = {
        QStringLiteral("SELECT s.") + partId + QStringLiteral(" FROM ") + keywords + QStringLiteral(" k JOIN ") + data + QStringLiteral(" s ON s.")
            + partId + QStringLiteral(" = k.") + partId + QStringLiteral(" WHERE k.") + tag + matches,
        QStringLiteral("SELECT p.") + partId + QStringLiteral(" FROM ") + n("Parts") + QStringLiteral(" p JOIN ") + data + QStringLiteral(" s ON s.")
            + partId + QStringLiteral(" = p.") + partId + QStringLiteral(" WHERE s.") + maker + QStringLiteral(" = 'Maker 17' AND s.") + price
            + QStringLiteral(" > 500 AND EXISTS (SELECT 1 FROM ") + keywords + QStringLiteral(" k WHERE k.") + partId + QStringLiteral(" = p.")
            + partId + QStringLiteral(" AND k.") + tag + QStringLiteral(" = 'tag 42')"),
        QStringLiteral("SELECT p.") + partId + QStringLiteral(" FROM ") + n("Parts") + QStringLiteral(" p WHERE p.") + partId
            + QStringLiteral(" IN (SELECT k.") + partId + QStringLiteral(" FROM ") + keywords + QStringLiteral(" k JOIN ") + data
            + QStringLiteral(" s ON s.") + partId + QStringLiteral(" = k.") + partId + QStringLiteral(" WHERE k.") + tag + matches + QStringLiteral(")"),
    };

    const QList<qint64> expected = keysOf(db, filtered);
    out << "\nfilter: " << filtered << "\n  rows: " << expected.size() << "\n  plan:\n";
    printPlan(db, filtered);
    const double filterMs = medianMs(db, filtered, rounds);
    out << "  median " << filterMs << " ms over " << rounds << " rounds" << Qt::endl;

    double bestMs = -1;
    for (const QString& sql : handWritten) {
        const QList<qint64> rows = keysOf(db, sql);
        out << "\nhand-written: " << sql << "\n  rows: " << rows.size() << (rows == expected ? " (the same)" : " (DIFFERENT)") << "\n  plan:\n";
        printPlan(db, sql);
        if (rows != expected)
            return 1;
        const double ms = medianMs(db, sql, rounds);
        out << "  median " << ms << " ms" << Qt::endl;
        if (bestMs < 0 || ms < bestMs)
            bestMs = ms;
    }
    out << "\nSQLString " << filterMs << " ms, best hand-written " << bestMs << " ms, ratio " << filterMs / bestMs << Qt::endl;
    PrintBenchResult(QStringLiteral("filter"), DatabaseName(db), records, filterMs, bestMs);
    return 0;
}
