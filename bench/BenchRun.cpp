#include "BenchRun.h"

#include <QTextStream>
#include <algorithm>
#include <cstdio>
#include <limits>

namespace searchdata::bench {

BenchOptions ParseBenchOptions(const QStringList& arguments, qint64 defaultSize, int defaultRounds)
{
    BenchOptions options;
    options.size = arguments.size() > 1 ? arguments[1].toLongLong() : defaultSize;
    options.rounds = arguments.size() > 2 ? std::max(1, arguments[2].toInt()) : defaultRounds;
    if (arguments.size() > 3 && arguments[3] != QLatin1String("-"))
        options.location = arguments[3];
    options.more = arguments.mid(4);
    return options;
}

std::shared_ptr<DatabaseHandler> OpenBenchDatabase(const BenchOptions& options, const QTemporaryDir& dir)
{
    QTextStream err(stderr);
    if (options.size <= 0) {
        err << "no size asked for\n";
        return nullptr;
    }
    const QString location = options.location.isEmpty() ? dir.filePath(QStringLiteral("bench.sqlite")) : options.location;
    auto opened = DatabaseHandler::open(location);
    if (!opened) {
        err << "cannot open " << location << ": " << opened.error() << "\n";
        return nullptr;
    }
    auto db = opened.value();
    if (db->DatabaseKind() == dbkSQLite && !db->ExecuteSql(QStringLiteral("PRAGMA synchronous = OFF"))) {
        err << "cannot turn off synchronous writes: " << db->lastError() << "\n";
        return nullptr;
    }
    return db;
}

QString CountingSql(qint64 count)
{
    return QStringLiteral("(WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ") + QString::number(count)
           + QStringLiteral(") SELECT i FROM n)");
}

bool CreateBaseTable(DatabaseHandler& db, const QString& table, const QString& key, qint64 count)
{
    TableTransaction tx(db);
    return db.ExecuteSql(QStringLiteral("CREATE TABLE ") + db.BracketName(table) + QStringLiteral(" (") + db.BracketName(key)
                         + QStringLiteral(" INTEGER PRIMARY KEY, ") + db.BracketName(QStringLiteral("Name")) + QStringLiteral(" VARCHAR(100))"))
           && db.ExecuteSql(QStringLiteral("INSERT INTO ") + db.BracketName(table) + QStringLiteral(" SELECT i, 'record ' || i FROM ")
                            + CountingSql(count) + QStringLiteral(" AS k"))
           && tx.commit();
}

std::optional<BestTimes> TakeTurns(int rounds, const std::function<double()>& library, const std::function<double()>& baseline)
{
    BestTimes best{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    for (int round = 0; round < rounds; ++round) {
        const bool libraryFirst = round % 2 == 0;
        const double first = libraryFirst ? library() : baseline();
        const double second = first < 0 ? -1 : libraryFirst ? baseline() : library();
        if (second < 0)
            return std::nullopt;
        const double libraryMs = libraryFirst ? first : second, baselineMs = libraryFirst ? second : first;
        std::printf("round %d: library %.1f ms, baseline %.1f ms\n", round + 1, libraryMs, baselineMs);
        best.library = std::min(best.library, libraryMs);
        best.baseline = std::min(best.baseline, baselineMs);
    }
    return best;
}

QString DatabaseName(const DatabaseHandler& db)
{
    return db.DatabaseKind() == dbkSQLite ? QStringLiteral("SQLite") : QStringLiteral("PostgreSQL");
}

void PrintBenchResult(const QString& hotPath, const QString& database, qint64 size, double libraryMs, double baselineMs)
{
    std::printf("BENCH %s %s size=%lld library_ms=%.3f baseline_ms=%.3f\n", qPrintable(hotPath), qPrintable(database), size, libraryMs,
                baselineMs);
    std::fflush(stdout);
}

} // namespace searchdata::bench
