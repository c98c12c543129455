// A filter of one text, one numeric and one keyword term over a large base table on SQLite: the
// predicate of SQLString beside the best of a few hand-written queries for the same rows.
//
//   bench_filter [records=1000000] [rounds=7] [analyze]
//
// The search tables are made by the library from its column definitions (with their unique keys and
// the keyword value index), then filled by SQL: one search row per record and on average three
// keywords. Prints the median time of each query, the rows they give, and the ratio.

#include "searchdata/CFilterTerms.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
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

namespace {

QTextStream out(stdout);

class PartsTable : public ISearchBaseTable {
public:
    QString TableName() const override { return QStringLiteral("Parts"); }
};

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
    QSqlQuery q(db.database());
    if (!q.exec(QStringLiteral("EXPLAIN QUERY PLAN ") + sql))
        return;
    while (q.next())
        out << "    " << q.value(3).toString() << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int records = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 1000000;
    const int rounds = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 7;
    // Without statistics the planner works from the indexes alone, as on a database nobody analysed.
    const bool analyze = argc > 3 && QByteArray(argv[3]) == "analyze";

    QTemporaryDir dir;
    auto opened = DatabaseHandler::open(dir.filePath(QStringLiteral("bench.sqlite")));
    if (!opened) {
        out << "cannot open the database: " << opened.error() << Qt::endl;
        return 1;
    }
    DatabaseHandler& db = *opened.value();
    if (!exec(db, QStringLiteral("CREATE TABLE [Parts] ([PartId] INTEGER NOT NULL PRIMARY KEY, [Name] VARCHAR(255))")))
        return 1;

    // The search, its three columns, and their tables as the library makes them.
    auto structure = TableStructure::NewStructure(QStringLiteral("Parts"));
    if (!structure->AddColumn(QStringLiteral("PartId"), adInteger, 0, 0, false) || !structure->AddColumn(QStringLiteral("Name"), adVarWChar, 255)
        || !structure->AddPrimaryKey(QStringLiteral("PK_Parts"), {QStringLiteral("PartId")}))
        return 1;
    auto catalog = std::make_shared<Catalog>(opened.value());
    CSearchFilter search;
    search.OpenSearch(opened.value(), std::make_shared<PartsTable>(), catalog, nullptr, 0, structure);
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
    QElapsedTimer filling;
    filling.start();
    const QString n = QString::number(records);
    if (!exec(db, QStringLiteral("BEGIN"))
        || !exec(db, "INSERT INTO [Parts] WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + n
                         + ") SELECT i, 'Part ' || i FROM n")
        || !exec(db, QStringLiteral("INSERT INTO [PartsSearchData] ([PartId], [Maker], [Price]) SELECT [PartId], "
                                    "'Maker ' || (([PartId] * 2654435761 + 1) % 1000003 % 1000), "
                                    "(([PartId] * 2246822519 + 7) % 1000003 % 100000) / 100.0 FROM [Parts]")))
        return 1;
    for (int k = 0; k < 6; ++k) {
        // Each of six candidate keywords is kept for half the records: three on average.
        const QString sql = QStringLiteral("INSERT OR IGNORE INTO [PartsSearchKeywordTag] ([PartId], [Tag]) SELECT [PartId], "
                                           "'tag ' || (([PartId] * 668265263 + %1) % 1000003 % 300) FROM [Parts] "
                                           "WHERE ([PartId] * 3266489917 + %2) % 1000003 % 2 = 0")
                                .arg(k * 7919)
                                .arg(k * 97);
        if (!exec(db, sql))
            return 1;
    }
    if (!exec(db, QStringLiteral("COMMIT")) || (analyze && !exec(db, QStringLiteral("ANALYZE"))))
        return 1;
    out << "filled " << records << " records in " << filling.elapsed() << " ms" << Qt::endl;
    {
        QSqlQuery q(db.database());
        q.exec(QStringLiteral("SELECT COUNT(*) FROM [PartsSearchKeywordTag]"));
        q.next();
        out << "keywords: " << q.value(0).toLongLong() << Qt::endl;
    }

    CFilterTerms terms(columns);
    terms.Add(kvoCJ_None, QStringLiteral("PartsSearchData"), QStringLiteral("Maker"), kvoCC_Text, kvoOP_Equals, QStringLiteral("Maker 17"));
    terms.Add(kvoCJ_And, QStringLiteral("PartsSearchData"), QStringLiteral("Price"), kvoCC_Numeric, kvoOP_Greater, QStringLiteral("500"));
    terms.Add(kvoCJ_And, QStringLiteral("PartsSearchKeywordTag"), QStringLiteral("Tag"), kvoCC_Keyword, kvoOP_Includes, QStringLiteral("tag 42"));
    const QString filtered = QStringLiteral("SELECT [Parts].[PartId] FROM [Parts] WHERE ") + terms.SQLString();

    const QStringList handWritten = {
        QStringLiteral("SELECT s.[PartId] FROM [PartsSearchKeywordTag] k JOIN [PartsSearchData] s ON s.[PartId] = k.[PartId] "
                       "WHERE k.[Tag] = 'tag 42' AND s.[Maker] = 'Maker 17' AND s.[Price] > 500"),
        QStringLiteral("SELECT p.[PartId] FROM [Parts] p JOIN [PartsSearchData] s ON s.[PartId] = p.[PartId] WHERE s.[Maker] = 'Maker 17' "
                       "AND s.[Price] > 500 AND EXISTS (SELECT 1 FROM [PartsSearchKeywordTag] k WHERE k.[PartId] = p.[PartId] AND k.[Tag] = 'tag 42')"),
        QStringLiteral("SELECT p.[PartId] FROM [Parts] p WHERE p.[PartId] IN (SELECT k.[PartId] FROM [PartsSearchKeywordTag] k "
                       "JOIN [PartsSearchData] s ON s.[PartId] = k.[PartId] WHERE k.[Tag] = 'tag 42' AND s.[Maker] = 'Maker 17' AND s.[Price] > 500)"),
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
    return 0;
}
