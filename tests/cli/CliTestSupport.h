#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>
#include <gtest/gtest.h>
#include <memory>

namespace searchdata::test {

/// What one run of the program gave.
struct CliRun {
    int exitCode = -1;
    /// Ended by a signal, or by a sanitizer's report.
    bool crashed = false;
    QString out;
    QString err;
    /// Standard output read as one JSON object; the test fails when it is none.
    QJsonObject json() const;
};

std::ostream& operator<<(std::ostream& os, const CliRun& run);

/// The first piece of a database driver's own text (or of a statement) in a program's messages, or
/// blank: the program says what failed in words, and leaves the database's text to --verbose.
QString rawDatabaseText(const QString& messages);

/// The built program, run as a user runs it: in a folder of the caller's, with a pinned locale and a
/// configuration folder there.
class CliProgram {
public:
    /// `environment` adds to the program's environment ("NAME=value" each).
    explicit CliProgram(QString folder, QStringList environment = {}) : m_folder(std::move(folder)), m_environment(std::move(environment)) {}
    /// Starts a run and returns at once. `wrapper` is a command that runs the program, such as one
    /// that runs it as another user.
    std::unique_ptr<QProcess> start(const QStringList& args, const QStringList& wrapper = {}) const;
    /// Waits for a started run to end.
    static CliRun finish(QProcess& process);
    CliRun run(const QStringList& args, const QStringList& wrapper = {}) const { return finish(*start(args, wrapper)); }

private:
    QString m_folder;
    QStringList m_environment;
};

/// Runs the built program as a user would, on a demo database of its own made by "demo init".
class CliTest : public ::testing::Test {
protected:
    void SetUp() override;

    /// Runs the program with `args` alone.
    CliRun runRaw(const QStringList& args) const;
    /// Runs the program on the test's database, profile and --table Files, without progress lines.
    CliRun run(const QStringList& args) const;
    /// The same on another base table.
    CliRun runOn(const QString& table, const QStringList& args) const;
    /// Starts the program on the test's database, profile and --table Files, with its progress and
    /// notes, and returns at once. `environment` adds to the program's environment.
    std::unique_ptr<QProcess> start(const QStringList& args, const QStringList& environment = {}) const;

    /// Every table's definition and rows, in an order that does not depend on storage.
    QString snapshot(const QString& path = {}) const;
    /// Runs a statement on a connection of its own (foreign keys not enforced).
    void exec(const QString& sql, const QString& path = {}) const;
    QVariant scalar(const QString& sql, const QString& path = {}) const;

    QTemporaryDir dir;
    QString database;
    QString profile;
    int records = 20;
};

/// A run that failed with `exitCode`, saying `message` on standard error and nothing on standard output.
#define SD_EXPECT_FAILS(invocation, expectedCode, expectedMessage)                                       \
    do {                                                                                                \
        const ::searchdata::test::CliRun sd_run_ = (invocation);                                        \
        EXPECT_EQ(sd_run_.exitCode, expectedCode) << sd_run_;                                           \
        EXPECT_TRUE(sd_run_.err.contains(expectedMessage, Qt::CaseInsensitive))                         \
            << "expected: " << qPrintable(QString(expectedMessage)) << '\n' << sd_run_;                 \
        EXPECT_TRUE(sd_run_.out.isEmpty()) << sd_run_;                                                  \
    } while (0)

} // namespace searchdata::test
