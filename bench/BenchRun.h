#pragma once

// What every benchmark of this folder shares: its options and the one line of its result that
// bench/run-all reads.
//
//   bench_<name> [size] [rounds] [database] [more...]
//
// `database` is a SQLite file or "postgresql://user@host:port/db" (an empty database: the benchmark
// makes its own tables); left out, or "-", a new SQLite file in a temporary folder.

#include "searchdata/DatabaseHandler.h"

#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <optional>

namespace searchdata::bench {

struct BenchOptions {
    qint64 size = 0;
    int rounds = 0;
    QString location; // blank: a new SQLite file
    QStringList more; // what follows the database
};

/// Reads the options after the program name, with these defaults for those left out.
BenchOptions ParseBenchOptions(const QStringList& arguments, qint64 defaultSize, int defaultRounds);

/// Opens the database of `options` (a new SQLite file in `dir` when none is named), or null after
/// saying why on standard error. SQLite runs without waiting for the disk, as the throwaway
/// PostgreSQL cluster does, so that both sides measure the engine and not the disk.
std::shared_ptr<DatabaseHandler> OpenBenchDatabase(const BenchOptions& options, const QTemporaryDir& dir);

/// A subquery, to be given a name, of one column `i` that counts from 1 to `count`.
QString CountingSql(qint64 count);

/// Makes the base table `table`: the INTEGER primary key `key` from 1 to `count`, and a name.
bool CreateBaseTable(DatabaseHandler& db, const QString& table, const QString& key, qint64 count);

/// The best time of each side over `rounds`, the sides taking turns at going first so that neither
/// always meets a warm cache. Each run gives its milliseconds, or a negative number when it failed;
/// then this gives nothing.
struct BestTimes {
    double library = 0;
    double baseline = 0;
};
std::optional<BestTimes> TakeTurns(int rounds, const std::function<double()>& library, const std::function<double()>& baseline);

/// "SQLite" or "PostgreSQL".
QString DatabaseName(const DatabaseHandler& db);

/// Prints the line that bench/run-all reads:
///   BENCH <hot path> <database> size=<n> library_ms=<t> baseline_ms=<t>
void PrintBenchResult(const QString& hotPath, const QString& database, qint64 size, double libraryMs, double baselineMs);

} // namespace searchdata::bench
