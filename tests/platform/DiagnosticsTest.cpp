#include "platform/Guard_p.h"
#include "searchdata/Diagnostics.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <thread>

using namespace searchdata;

namespace {

constexpr char kModule[] = "DiagnosticsTest";

int failingProcedure(bool fail)
{
    SD_PROC("failingProcedure");
    int result = 1;
    SD_GUARDED([&] {
        result = 2;
        if (fail)
            detail::fail(QStringLiteral("it broke"), 42);
        result = 3;
    });
    return result;
}

class DiagnosticsTest : public ::testing::Test {
protected:
    void SetUp() override { Diagnostics::instance().clearReports(); }
};

TEST_F(DiagnosticsTest, HeldReportsAreReportedInTheirOrderOrForgotten)
{
    Diagnostics& diagnostics = Diagnostics::instance();
    const auto second = [&diagnostics] { diagnostics.report({7, QStringLiteral("second"), {}, {}, 0, {}}); };
    for (const bool keep : {true, false}) {
        SCOPED_TRACE(keep ? "kept" : "forgotten");
        diagnostics.clearReports();
        const qsizetype mark = diagnostics.holdReports();
        EXPECT_EQ(failingProcedure(true), 2);
        second();
        EXPECT_EQ(diagnostics.reportCount(), 0);
        EXPECT_FALSE(diagnostics.lastError().has_value());
        diagnostics.releaseHeld(mark, keep);
        ASSERT_EQ(diagnostics.reportCount(), keep ? 2 : 0);
        if (keep) {
            EXPECT_EQ(diagnostics.reports().at(0).number, 42);
            EXPECT_EQ(diagnostics.reports().at(1).text, QStringLiteral("second"));
        }
        // Reports go straight on again afterwards.
        EXPECT_EQ(failingProcedure(true), 2);
        EXPECT_EQ(diagnostics.reportCount(), keep ? 3 : 1);
    }

    // An inner hold forgets only its own; the outer one decides for the rest.
    diagnostics.clearReports();
    const qsizetype outer = diagnostics.holdReports();
    EXPECT_EQ(failingProcedure(true), 2);
    const qsizetype inner = diagnostics.holdReports();
    second();
    diagnostics.releaseHeld(inner, false);
    EXPECT_EQ(diagnostics.reportCount(), 0);
    diagnostics.releaseHeld(outer, true);
    ASSERT_EQ(diagnostics.reportCount(), 1);
    EXPECT_EQ(diagnostics.lastError()->number, 42);
}

TEST_F(DiagnosticsTest, GuardedProcedureReportsAndKeepsItsResultAsItStands)
{
    EXPECT_EQ(failingProcedure(false), 3);
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);

    EXPECT_EQ(failingProcedure(true), 2);
    const auto last = Diagnostics::instance().lastError();
    ASSERT_TRUE(last.has_value());
    EXPECT_EQ(last->number, 42);
    EXPECT_EQ(last->text, "it broke");
    EXPECT_EQ(last->procedure, "failingProcedure");
    EXPECT_EQ(last->module, "DiagnosticsTest");
    EXPECT_GT(last->line, 0);
}

TEST_F(DiagnosticsTest, StandardExceptionsAreReportedToo)
{
    SD_PROC("throwsStd");
    const bool ok = SD_GUARDED([] { throw std::runtime_error("bad thing"); });
    EXPECT_FALSE(ok);
    ASSERT_TRUE(Diagnostics::instance().lastError().has_value());
    EXPECT_EQ(Diagnostics::instance().lastError()->text, "bad thing");
}

TEST_F(DiagnosticsTest, KeepsABoundedNumberOfReportsButCountsAll)
{
    for (int i = 0; i < Diagnostics::maxKeptReports + 50; ++i)
        Diagnostics::instance().report({i, QStringLiteral("r%1").arg(i), "p", "m", 1, {}});
    EXPECT_EQ(Diagnostics::instance().reports().size(), Diagnostics::maxKeptReports);
    EXPECT_EQ(Diagnostics::instance().reportCount(), Diagnostics::maxKeptReports + 50);
    EXPECT_EQ(Diagnostics::instance().reports().first().number, 50);
    EXPECT_EQ(Diagnostics::instance().lastError()->number, Diagnostics::maxKeptReports + 49);
}

TEST_F(DiagnosticsTest, CallTraceShowsNestingAndStaysBounded)
{
    {
        SD_PROC("outer");
        failingProcedure(false);
        const QString trace = Diagnostics::instance().callTrace();
        EXPECT_TRUE(trace.contains("> DiagnosticsTest.outer\n  > DiagnosticsTest.failingProcedure\n  < DiagnosticsTest.failingProcedure\n"))
            << qPrintable(trace);
    }
    for (int i = 0; i < Diagnostics::traceCapacity * 3; ++i)
        failingProcedure(false);
    EXPECT_EQ(Diagnostics::instance().callTrace().count(QLatin1Char('\n')), Diagnostics::traceCapacity);
}

TEST_F(DiagnosticsTest, EachThreadHasItsOwnObject)
{
    Diagnostics::instance().report({1, "main", "p", "m", 1, {}});
    qint64 otherCount = -1;
    std::thread([&] {
        otherCount = Diagnostics::instance().reportCount();
        Diagnostics::instance().report({2, "other", "p", "m", 1, {}});
    }).join();
    EXPECT_EQ(otherCount, 0);
    EXPECT_EQ(Diagnostics::instance().reportCount(), 1);
}

TEST_F(DiagnosticsTest, SchemaLogWritesLinesOnlyWhenEnabled)
{
    QTemporaryDir dir;
    Diagnostics& d = Diagnostics::instance();
    d.setLogFile({});
    EXPECT_FALSE(d.LogEnabled());
    d.LogLine("not written");

    const QString path = dir.filePath("schema.log");
    d.setLogFile(path);
    EXPECT_TRUE(d.LogEnabled());
    d.LogLine("defined field count = 3");
    d.LogLine("FilesSearchDatadatabase column Extra missing from FilesSearchData");
    d.setLogFile({});

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll()),
              "defined field count = 3\nFilesSearchDatadatabase column Extra missing from FilesSearchData\n");
}

} // namespace
