#include "searchdata/CCheckPopulationArgs.h"
#include "searchdata/CCheckPopulationResult.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "search/CheckTestSupport.h"
#include "support/SearchFixture.h"

#include <QSqlQuery>

using namespace searchdata;
using namespace searchdata::test;

namespace {

enum class Variant { Sets, Walk };

const QDateTime kDefaultDate(QDate(2001, 2, 3), QTime(10, 20, 30));

/// Files with Customer (text), Qty, Due (a date whose default is the moment of the check), Seen (a
/// date without default) and the keyword column Tags.
class PopulationTest : public SearchTest {
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        if (HasFatalFailure())
            return;
        auto cols = columns();
        cols->Add("Customer", "", "", fcText, 40, false, false);
        cols->Add("Qty", "", "", fcInteger32, 0, false, false);
        cols->Add("Due", "", "", fcDateTime, 0, false, false, {}, fcDTDM_Now);
        cols->Add("Seen", "", "", fcDateTime, 0, false, false);
        cols->Add("Tags", "", "", fcKeyword, 30, false, false);
        ASSERT_TRUE(cols->ColumnsSave(nullptr));
        host.attach(db());
    }

    std::shared_ptr<CCheckPopulationResult> run(Variant variant, int mode, bool askFirst = false)
    {
        auto cols = columns();
        const CCheckPopulationArgs args(askFirst, mode, kDefaultDate);
        return variant == Variant::Sets ? cols->CheckPopulationProgressSQL(progress, args) : cols->CheckPopulationProgressADO(progress, args);
    }

    /// Records 2, 5, 9 and 30 lose their search rows; rows of the records 101 and 102, which do not
    /// exist, appear; the keyword table has a row of record 1 and two of the missing record 103.
    void makeDrift()
    {
        const QString data = q("FilesSearchData"), tags = q("FilesSearchKeywordTags"), id = q("FileId");
        SD_ASSERT_SQL(testDb(), "DELETE FROM " + tags);
        SD_ASSERT_SQL(testDb(), "DELETE FROM " + data + " WHERE " + id + " IN (2, 5, 9, 30) OR " + id + " > 100");
        SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + q("Customer") + " = 'Acme', " + q("Qty") + " = 7 WHERE " + id + " = 1");
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + tags + " VALUES (1, 'red')");
        withoutForeignKeys(testDb(), [&] {
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + data + " (" + id + ") VALUES (101)");
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + data + " (" + id + ") VALUES (102)");
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + tags + " VALUES (103, 'a')");
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + tags + " VALUES (103, 'b')");
        });
    }

    /// The first column of a query's rows, as text.
    QStringList strings(const QString& sql)
    {
        QSqlQuery query(db().database());
        EXPECT_TRUE(query.exec(sql)) << qPrintable(sql);
        QStringList out;
        while (query.next())
            out << query.value(0).toString();
        return out;
    }
    QStringList keysOf(const QString& table, const QString& where = "1 = 1")
    {
        return strings("SELECT " + q("FileId") + " FROM " + q(table) + " WHERE " + where + " ORDER BY " + q("FileId"));
    }
    static QStringList range(int from, int to, const QList<int>& except = {})
    {
        QStringList out;
        for (int i = from; i <= to; ++i)
            if (!except.contains(i))
                out << QString::number(i);
        return out;
    }
    static const char* nameOf(Variant v) { return v == Variant::Sets ? "set statements" : "walk"; }

    ScriptedHost host;
    RecordingProgress progress;
};

TEST_P(PopulationTest, BothVariantsAddRowsWithTheDefaultsAndRemoveOrphans)
{
    for (Variant variant : {Variant::Sets, Variant::Walk}) {
        SCOPED_TRACE(nameOf(variant));
        makeDrift();
        const auto result = run(variant, 1);
        EXPECT_EQ(result->ResultCode(), 0);
        EXPECT_FALSE(result->Cancelled());
        EXPECT_TRUE(host.questions.isEmpty()) << "mode 1 repairs without asking";

        EXPECT_EQ(keysOf("FilesSearchData"), range(1, 30));
        const QString added = q("FileId") + " IN (2, 5, 9, 30)";
        EXPECT_EQ(rows("FilesSearchData", added + " AND " + q("Customer") + " = '' AND " + q("Qty") + " = 0"), 4);
        EXPECT_EQ(rows("FilesSearchData", added + " AND " + q("Due") + " = " + db().SqlDate(kDefaultDate)), 4);
        EXPECT_EQ(rows("FilesSearchData", added + " AND " + q("Seen") + " IS NULL"), 4);
        // Rows that were there keep their values.
        EXPECT_EQ(rows("FilesSearchData", q("Customer") + " = 'Acme' AND " + q("Qty") + " = 7"), 1);
        // A keyword table is never filled, only cleaned.
        EXPECT_EQ(keysOf("FilesSearchKeywordTags"), QStringList({"1"}));
        EXPECT_EQ(progress.statuses.last(), GetResourceText(8455, {"Files"}));
        EXPECT_FALSE(Diagnostics::instance().ConversionFailed());
    }
}

TEST_P(PopulationTest, OnlyRecordsTheHostSelectsGetRowsButOrphansAreJudgedByTheWholeTable)
{
    files->criteria = "SELECT " + q("FileId") + " FROM " + q("Files") + " WHERE " + q("Archived") + " = " + db().SqlBoolean(false);
    for (Variant variant : {Variant::Sets, Variant::Walk}) {
        SCOPED_TRACE(nameOf(variant));
        makeDrift();
        EXPECT_EQ(run(variant, 1)->ResultCode(), 0);
        // 9 and 30 are archived: no rows for them; the rows of other archived records stay.
        EXPECT_EQ(keysOf("FilesSearchData"), range(1, 30, {9, 30}));
        EXPECT_EQ(keysOf("FilesSearchKeywordTags"), QStringList({"1"}));
    }
}

TEST_P(PopulationTest, OtherModesAskFirstAndRepairUnlessTheAnswerEndsTheCheck)
{
    for (Variant variant : {Variant::Sets, Variant::Walk}) {
        SCOPED_TRACE(nameOf(variant));
        auto state = [&] { return keysOf("FilesSearchData") + QStringList{"|"} + keysOf("FilesSearchKeywordTags"); };
        const QStringList repaired = range(1, 30) + QStringList{"|", "1"};

        // An answer from 1 to 5 ends the check with it, before the first change.
        makeDrift();
        const QStringList before = state();
        host.questions.clear();
        host.answer = 4;
        EXPECT_EQ(run(variant, 0, true)->ResultCode(), 4);
        ASSERT_EQ(host.questions.size(), 1);
        EXPECT_EQ(host.questions[0].table, "Files");
        EXPECT_EQ(host.questions[0].flag, 0);
        EXPECT_EQ(state(), before);

        // Any other answer repairs. The set statements ask for each table, the walk once.
        for (int answer : {0, 7}) {
            makeDrift();
            host.questions.clear();
            host.answer = answer;
            EXPECT_EQ(run(variant, 2, true)->ResultCode(), 0);
            EXPECT_EQ(host.questions.size(), variant == Variant::Sets ? 2 : 1);
            EXPECT_EQ(state(), repaired);
        }

        // Without asking first, it repairs in any mode.
        makeDrift();
        host.questions.clear();
        EXPECT_EQ(run(variant, 0, false)->ResultCode(), 0);
        EXPECT_TRUE(host.questions.isEmpty());
        EXPECT_EQ(state(), repaired);
        host.answer = 0;
    }
    // Tables in order ask nothing.
    host.questions.clear();
    for (Variant variant : {Variant::Sets, Variant::Walk})
        EXPECT_EQ(run(variant, 0, true)->ResultCode(), 0);
    EXPECT_TRUE(host.questions.isEmpty());
}

TEST_P(PopulationTest, KeywordColumnsAloneHaveNoSearchTableToFill)
{
    auto cols = columns();
    for (const QString name : {"Customer", "Qty", "Due", "Seen"})
        cols->RemoveColumn(name);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    const QString tags = q("FilesSearchKeywordTags");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + tags + " VALUES (3, 'x')");
    for (Variant variant : {Variant::Sets, Variant::Walk}) {
        SCOPED_TRACE(nameOf(variant));
        withoutForeignKeys(testDb(), [&] { SD_ASSERT_SQL(testDb(), "INSERT INTO " + tags + " VALUES (77, 'y')"); });
        EXPECT_EQ(run(variant, 1)->ResultCode(), 0);
        EXPECT_EQ(keysOf("FilesSearchKeywordTags"), QStringList({"3"}));
    }
}

TEST_P(PopulationTest, TheWalkWritesATableInASavepointOfTheCallersTransaction)
{
    makeDrift();
    TransactionState outer;
    ASSERT_TRUE(db().BeginTableTransaction(outer));
    EXPECT_EQ(run(Variant::Walk, 1)->ResultCode(), 0);
    EXPECT_EQ(db().transactionLevel(), 1);
    EXPECT_EQ(keysOf("FilesSearchData"), range(1, 30));
    db().EndTableTransaction(outer);
    // Rolled back with the caller's transaction.
    EXPECT_EQ(keysOf("FilesSearchData"), range(1, 29, {2, 5, 9}) + QStringList({"101", "102"}));
}

TEST_P(PopulationTest, CancellingTheWalkLeavesTheTableInHandAsItWas)
{
    makeDrift();
    const QStringList data = keysOf("FilesSearchData");
    const QStringList tags = keysOf("FilesSearchKeywordTags");
    // The rows are added by then, in the same transaction as the deletes.
    progress.cancelAtStatus = GetResourceText(8454);
    const auto result = run(Variant::Walk, 1);
    EXPECT_TRUE(result->Cancelled());
    EXPECT_EQ(keysOf("FilesSearchData"), data);
    EXPECT_EQ(keysOf("FilesSearchKeywordTags"), tags) << "the check ends with the table in hand";
    EXPECT_NE(progress.statuses.last(), GetResourceText(8455, {"Files"}));
    EXPECT_EQ(db().transactionLevel(), 0);
}

TEST_P(PopulationTest, TheWalkReportsItsProgressAtMostOnceASecond)
{
    makeBaseTable("Big", "BigId", 5000);
    auto cols = columns("Big", "BigId");
    cols->Add("Customer", "", "", fcText, 40, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("BigSearchData") + " WHERE " + q("BigId") + " > 4500");
    // Each cancel test takes 50 ms, so the walk of 9500 rows takes about two seconds.
    progress.slowCancelTestMs = 50;
    const auto result = columns("Big", "BigId")->CheckPopulationProgressADO(progress, CCheckPopulationArgs(false, 1, kDefaultDate));
    EXPECT_EQ(result->ResultCode(), 0);
    EXPECT_EQ(rows("BigSearchData"), 5000);

    ASSERT_GE(progress.lines.size(), 2) << "at least one report while walking, and one at the end";
    for (qsizetype i = 1; i + 1 < progress.times.size(); ++i)
        EXPECT_GE(progress.times[i] - progress.times[i - 1], 1000) << "report " << i;
    EXPECT_LE(progress.lines.size(), progress.times.last() / 1000 + 2);
    const QLocale locale;
    EXPECT_EQ(progress.lines.last(), GetResourceText(8450, {"BigSearchData", locale.toString(100.0, 'f', 2) + "%",
                                                            locale.toString(9500), locale.toString(9500)}));
}

TEST_P(PopulationTest, TextKeysAreComparedInTheOrderTheDatabaseGivesThem)
{
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("Docs") + " (" + q("DocId") + " VARCHAR(20) PRIMARY KEY, " + q("Title") + " VARCHAR(20))");
    const QStringList ids{"a", "B", "b", "Z", "10", "9", QString::fromUtf8("\xc3\xa9"), "b c"};
    for (const QString& id : ids)
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("Docs") + " VALUES (" + db().SqlQuote(id) + ", 't')");
    auto cols = columns("Docs", "DocId");
    cols->Add("Customer", "", "", fcText, 40, false, false);
    cols->Add("Tags", "", "", fcKeyword, 30, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    const QString data = q("DocsSearchData"), tags = q("DocsSearchKeywordTags"), id = q("DocId");
    auto allKeys = [&](const QString& table) {
        QStringList keys = strings("SELECT " + id + " FROM " + table);
        keys.sort();
        return keys;
    };
    QStringList expected = ids;
    expected.sort();

    for (Variant variant : {Variant::Sets, Variant::Walk}) {
        SCOPED_TRACE(nameOf(variant));
        SD_ASSERT_SQL(testDb(), "DELETE FROM " + data + " WHERE " + id + " IN ('b', 'Z', " + db().SqlQuote(ids[6]) + ")");
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + tags + " VALUES ('a', 'x')");
        withoutForeignKeys(testDb(), [&] {
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + data + " (" + id + ") VALUES ('A')");
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + tags + " VALUES ('zz', 'y')");
        });
        auto docs = columns("Docs", "DocId");
        const CCheckPopulationArgs args(false, 1, kDefaultDate);
        const auto result = variant == Variant::Sets ? docs->CheckPopulationProgressSQL(progress, args) : docs->CheckPopulationProgressADO(progress, args);
        EXPECT_EQ(result->ResultCode(), 0);
        EXPECT_EQ(allKeys(data), expected);
        EXPECT_EQ(allKeys(tags), QStringList({"a"}));
        SD_ASSERT_SQL(testDb(), "DELETE FROM " + tags);
    }
    EXPECT_FALSE(Diagnostics::instance().lastError().has_value()) << qPrintable(Diagnostics::instance().lastError()->text);
}

TEST_P(PopulationTest, TheEntryPointRunsTheCheckUnderTheProgressRunner)
{
    auto ui = std::make_shared<HeadlessUiServices>();
    auto shown = std::make_shared<RecordingProgress>();
    ui->setProgress(shown);
    UiServices::install(ui);
    makeDrift();
    host.answer = 3;
    auto cols = columns();
    EXPECT_EQ(cols->StartProcessDataReportProgress(nullptr, true, 0, kDefaultDate), 3);
    EXPECT_EQ(ui->requests(), QStringList({"progress 1"}));
    EXPECT_EQ(cols->StartProcessDataReportProgress(nullptr, true, 1, kDefaultDate), 0);
    EXPECT_EQ(keysOf("FilesSearchData"), range(1, 30));
    EXPECT_FALSE(shown->statuses.isEmpty());
    EXPECT_FALSE(cols->IProgressHandler_ProcessRequest(2, *shown, CCheckPopulationArgs(false, 1, kDefaultDate)).has_value());
    EXPECT_FALSE(cols->IProgressHandler_ProcessRequest(1, *shown, QString("no arguments")).has_value());
    UiServices::install(nullptr);
}

SD_INSTANTIATE_DATABASE_SUITE(PopulationTest);

} // namespace
