#pragma once

#include "searchdata/DatabaseHandler.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace searchdata::test {

enum class DbKind { SQLite, PostgreSQL };

std::string dbKindName(const ::testing::TestParamInfo<DbKind>& info);

/// A fresh, empty database of one kind for one test: a file in a temporary directory, or a new
/// database on the throwaway PostgreSQL cluster that CTest started. Dropped at the end.
class TestDatabase {
public:
    explicit TestDatabase(DbKind kind);
    ~TestDatabase();

    DbKind kind() const { return m_kind; }
    bool ok() const { return m_handler != nullptr; }
    const QString& error() const { return m_error; }
    std::shared_ptr<DatabaseHandler> handler() const { return m_handler; }
    /// Where the database is, in the form `DatabaseHandler::open` takes.
    QString location() const { return m_location; }
    /// Opens another connection to the same database, as another user would.
    std::shared_ptr<DatabaseHandler> openAnotherConnection() const;
    /// Runs a statement on the test's connection; the error text on failure.
    QString exec(const QString& sql) const;
    /// The first column of the first row of a query, or an invalid QVariant.
    QVariant scalar(const QString& sql) const;
    QTemporaryDir& tempDir() { return m_dir; }

private:
    DbKind m_kind;
    QTemporaryDir m_dir;
    QString m_location;
    QString m_pgDatabase;
    QString m_pgAdmin;
    QString m_error;
    std::shared_ptr<DatabaseHandler> m_handler;
};

/// Base of the suites that run on both databases.
class DatabaseTest : public ::testing::TestWithParam<DbKind> {
protected:
    void SetUp() override;
    void TearDown() override;
    DatabaseHandler& db() { return *m_db->handler(); }
    TestDatabase& testDb() { return *m_db; }
    /// Runs statements that must succeed.
    void execAll(std::initializer_list<QString> statements);
    std::unique_ptr<TestDatabase> m_db;
};

/// Connection data of the PostgreSQL test cluster: "postgresql://user@host:port/".
QString postgresServerUrl(QString* error);

} // namespace searchdata::test

#define SD_INSTANTIATE_DATABASE_SUITE(Suite) \
    INSTANTIATE_TEST_SUITE_P(Db, Suite, ::testing::Values(::searchdata::test::DbKind::SQLite, ::searchdata::test::DbKind::PostgreSQL), \
                             ::searchdata::test::dbKindName)

/// Asserts that a statement ran, printing the database's own message when it did not.
#define SD_ASSERT_SQL(testDb, sql)                                            \
    do {                                                                      \
        const QString sd_error_ = (testDb).exec(sql);                         \
        ASSERT_TRUE(sd_error_.isEmpty()) << qPrintable(sd_error_) << "\n  in: " << qPrintable(QString(sql)); \
    } while (0)
