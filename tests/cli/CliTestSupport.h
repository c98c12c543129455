#pragma once

#include <QJsonObject>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>
#include <gtest/gtest.h>
#include <memory>

class QProcess;

namespace searchdata::test {

/// What one run of the program gave.
struct CliRun {
    int exitCode = -1;
    QString out;
    QString err;
    /// Standard output read as one JSON object; the test fails when it is none.
    QJsonObject json() const;
};

std::ostream& operator<<(std::ostream& os, const CliRun& run);

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
