#pragma once

// What the scenarios of the reliability suite share: their size, the table of their figures, the
// databases they make and copy, and a look at a database from outside the program under test.

#include "cli/CliTestSupport.h"
#include "searchdata/DatabaseHandler.h"
#include "support/TestDatabase.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace searchdata::test {

/// Whether the scenarios run at full size (SEARCHDATA_RELIABILITY=long), not with the few trials of
/// the test command.
bool longRun();
/// `few` trials in the test command, `full` in a long run.
int trials(int few, int full);
/// The random numbers of a scenario: the same on every run, unless SEARCHDATA_RELIABILITY_SEED says otherwise.
std::mt19937 scenarioRandom(const QString& scenario);

/// One row of the table of figures that the suite prints at its end.
struct Figures {
    QString scenario;
    QString database;
    int trials = 0;
    int passed = 0;
    int lost = 0;    ///< updates lost, or work left half done
    int crashed = 0; ///< runs ended by a signal or a sanitizer's report
};
void recordFigures(const Figures& figures);

/// How a run of the program ended, as the figures count it.
enum class Ending {
    Done,    ///< exit code 0
    Refused, ///< another exit code, with a message in words
    RawText, ///< a message that shows the database's own text or a statement
    Crashed,
};
Ending endingOf(const CliRun& run);

/// The databases of one test, each new or a copy of another: SQLite files in a folder, or databases
/// on the PostgreSQL test cluster, dropped again at the end.
class Databases {
public:
    Databases(DbKind kind, QString folder);
    ~Databases();
    Databases(const Databases&) = delete;
    Databases& operator=(const Databases&) = delete;

    bool ok() const { return m_error.isEmpty(); }
    const QString& error() const { return m_error; }
    /// A new, empty database; blank when it cannot be made (the test has failed then).
    QString create();
    /// A copy of a database to which nobody is connected.
    QString copy(const QString& location);
    /// Removes a database made here.
    void drop(const QString& location);

private:
    QString pgName(const QString& location) const;
    bool adminExec(const QString& sql);

    DbKind m_kind;
    QString m_folder;
    QString m_server;
    std::shared_ptr<DatabaseHandler> m_admin;
    QStringList m_made;
    int m_count = 0;
    QString m_error;
};

/// A connection of the test's own to a database, closed at the end of the scope.
class Look {
public:
    explicit Look(const QString& location);
    bool ok() const { return m_db != nullptr; }
    DatabaseHandler& db() { return *m_db; }
    /// Runs a statement outside the library; the database's message when it fails.
    QString exec(const QString& sql);
    QVariant scalar(const QString& sql);
    /// Every table with its fields and rows, in an order that does not depend on storage.
    QString snapshot();

private:
    std::shared_ptr<DatabaseHandler> m_db;
};

/// The suite's scenarios on one kind of database, with the program under test run on the
/// databases that they make.
class ReliabilityTest : public ::testing::TestWithParam<DbKind> {
protected:
    void SetUp() override;

    QString databaseName() const;
    /// A demo database of `records` files, with a keyword column Tags beside the demo's columns.
    QString demo(int records = 20);
    /// The arguments that run a command on the table Files of `location`, without progress lines.
    QStringList on(const QString& location, const QStringList& args) const;
    CliRun sd(const QString& location, const QStringList& args) const { return program->run(on(location, args)); }
    std::unique_ptr<QProcess> startSd(const QString& location, const QStringList& args) const { return program->start(on(location, args)); }
    /// The text of a field of the search row of record `id`.
    QString searchField(const QString& location, const QString& field, int id);
    void record(Figures figures) const;

    QTemporaryDir dir;
    std::unique_ptr<Databases> databases;
    std::unique_ptr<CliProgram> program;
};

/// Whether a process that was started has ended, waiting at most `ms` for it.
bool ended(QProcess& process, int ms);

} // namespace searchdata::test
