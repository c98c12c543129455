// Cost of a statement through DatabaseHandler::ExecuteSql beside a bare prepared QSqlQuery, on SQLite.

#include "searchdata/DatabaseHandler.h"

#include <QCoreApplication>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace searchdata;

namespace {

std::shared_ptr<DatabaseHandler> openBenchDatabase(QTemporaryDir& dir)
{
    auto db = DatabaseHandler::open(dir.filePath(QStringLiteral("bench.sqlite"))).value();
    db->ExecuteSql(QStringLiteral("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(255))"));
    return db;
}

void BM_HandlerExecuteSql(benchmark::State& state)
{
    QTemporaryDir dir;
    auto db = openBenchDatabase(dir);
    TransactionState tx;
    db->BeginTableTransaction(tx);
    qint64 i = 0;
    for (auto _ : state)
        db->ExecuteSql(QStringLiteral("INSERT INTO t (id, v) VALUES (%1, %2)").arg(++i).arg(db->SqlQuote(QStringLiteral("value"))));
    db->CommitTableTransaction(tx);
    db->EndTableTransaction(tx);
}
BENCHMARK(BM_HandlerExecuteSql);

void BM_BarePreparedQuery(benchmark::State& state)
{
    QTemporaryDir dir;
    auto db = openBenchDatabase(dir);
    TransactionState tx;
    db->BeginTableTransaction(tx);
    QSqlQuery q(db->database());
    q.prepare(QStringLiteral("INSERT INTO t (id, v) VALUES (?, ?)"));
    qint64 i = 0;
    for (auto _ : state) {
        q.addBindValue(++i);
        q.addBindValue(QStringLiteral("value"));
        q.exec();
    }
    db->CommitTableTransaction(tx);
    db->EndTableTransaction(tx);
}
BENCHMARK(BM_BarePreparedQuery);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
