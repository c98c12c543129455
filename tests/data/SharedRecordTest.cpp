// Two users of one record, each on a connection of their own: what one changes survives what the
// other saves, and a table whose fields one changes never breaks the other's reading.

#include "data/EntryForm.h"
#include "searchdata/CCommon.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/UiServices.h"
#include "support/SearchFixture.h"

#include <QDeadlineTimer>
#include <QThread>
#include <atomic>
#include <functional>
#include <thread>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// One user: a connection, the search of Files opened on it, and an entry row bound to its columns.
struct User {
    explicit User(std::shared_ptr<DatabaseHandler> connection)
        : handler(std::move(connection)), catalog(std::make_shared<Catalog>(handler)),
          filter(CCommon().CreateSearchFilterObject(handler, std::make_shared<TestBaseTable>("Files"), catalog, nullptr, 0,
                                                    baseStructureOf("Files", {"FileId"}))),
          columns(*filter->FilterColumns()), form(columns)
    {
    }
    std::shared_ptr<DatabaseHandler> handler;
    std::shared_ptr<Catalog> catalog;
    std::shared_ptr<CSearchFilter> filter;
    CFilterColumns& columns;
    Form form;
};

QString lastReport()
{
    const auto last = Diagnostics::instance().lastError();
    return last ? last->text : QStringLiteral("(nothing reported)");
}

/// Headless services that tell another thread when a statement starts to wait for a lock.
class SignallingUiServices : public HeadlessUiServices {
public:
    explicit SignallingUiServices(std::atomic<bool>& waiting) : m_waiting(waiting) {}
    void ShowLockedMessage(const IDebugLockedMessage& message) override
    {
        HeadlessUiServices::ShowLockedMessage(message);
        m_waiting = true;
    }

private:
    std::atomic<bool>& m_waiting;
};

class SharedRecordTest : public SearchTest {
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        if (HasFatalFailure())
            return;
        auto cols = columns();
        cols->Add("Customer", "", "", fcText, 40, false, false);
        cols->Add("Qty", "", "", fcInteger16, 0, false, false);
        cols->Add("Ratio", "", "", fcDouble, 0, false, false);
        cols->Add("Tags", "", "", fcKeyword, 30, false, false);
        ASSERT_TRUE(cols->ColumnsSave(nullptr));
        SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'old', " + q("Qty") + " = 1, " + q("Ratio")
                                    + " = 2.5");
        storeTags({"x", "y"});
    }
    void storeTags(const QStringList& tags)
    {
        for (const QString& tag : tags)
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " (" + q("FileId") + ", " + q("Tags") + ") VALUES (4, "
                                        + db().SqlQuote(tag) + ")");
    }
    QVariant stored(const QString& field)
    {
        return testDb().scalar("SELECT " + q(field) + " FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = 4");
    }
    QStringList storedTags(int id = 4)
    {
        auto rs = db().OpenSqlRecordset("SELECT " + q("Tags") + " FROM " + q("FilesSearchKeywordTags") + " WHERE " + q("FileId") + " = "
                                        + QString::number(id) + " ORDER BY "
                                        + columns()->KeywordStorageOrder(*columns()->Item("Tags")));
        QStringList tags;
        for (; rs && !rs->EndOfFile(); rs->MoveNext())
            tags << rs->field("Tags").text();
        return tags;
    }
};

TEST_P(SharedRecordTest, WhatEachOfTwoUsersChangedInOneRecordStays)
{
    using Edit = std::function<void(Form&)>;
    const Edit nothing = [](Form&) {};
    auto type = [](const char* field, const char* text) { return [=](Form& f) { f.boxes[field]->text = text; }; };
    auto add = [](const char* keyword) { return [=](Form& f) { f.combos["Tags"]->items << keyword; }; };
    auto remove = [](const char* keyword) { return [=](Form& f) { f.combos["Tags"]->items.removeAll(keyword); }; };
    struct Case {
        const char* what;
        Edit first, second; // loaded first, then second; saved in the same order
        QString customer;
        int qty;
        QStringList tags;
    };
    const Case cases[] = {
        {"different fields", type("Customer", "first's"), type("Qty", "7"), "first's", 7, {"x", "y"}},
        {"a change, then a save of the unchanged record", type("Customer", "first's"), nothing, "first's", 1, {"x", "y"}},
        {"different keywords added", add("a"), add("b"), "old", 1, {"x", "y", "a", "b"}},
        {"a keyword removed, another added", remove("x"), add("z"), "old", 1, {"y", "z"}},
        {"the same keyword added by both", add("w"), add("w"), "old", 1, {"x", "y", "w"}},
        {"the same field, the later save wins", type("Qty", "8"), type("Qty", "9"), "old", 9, {"x", "y"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'old', " + q("Qty") + " = 1");
        SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchKeywordTags"));
        storeTags({"x", "y"});
        User first(testDb().handler()), second(testDb().openAnotherConnection());
        const Entry e(4);
        Form::show(first.columns, e);
        Form::show(second.columns, e);
        c.first(first.form);
        c.second(second.form);
        ASSERT_TRUE(first.columns.SaveDataFromEditControl(&e)) << qPrintable(lastReport());
        ASSERT_TRUE(second.columns.SaveDataFromEditControl(&e)) << qPrintable(lastReport());
        EXPECT_EQ(stored("Customer").toString(), c.customer);
        EXPECT_EQ(stored("Qty").toInt(), c.qty);
        EXPECT_DOUBLE_EQ(stored("Ratio").toDouble(), 2.5);
        EXPECT_EQ(storedTags(), c.tags);
    }
}

TEST_P(SharedRecordTest, AFieldChangedOnlyBackAndForthSinceTheLoadIsNotWritten)
{
    User first(testDb().handler()), second(testDb().openAnotherConnection());
    const Entry e(4);
    Form::show(first.columns, e);
    // Typed over with what it held, in another spelling: no change.
    first.form.boxes["Qty"]->text = " 1 ";
    first.form.boxes["Ratio"]->text = "2.50";
    first.form.boxes["Customer"]->text = "old ";
    Form::show(second.columns, e);
    second.form.boxes["Qty"]->text = "5";
    second.form.boxes["Ratio"]->text = "6";
    second.form.boxes["Customer"]->text = "second's";
    ASSERT_TRUE(second.columns.SaveDataFromEditControl(&e));
    ASSERT_TRUE(first.columns.SaveDataFromEditControl(&e));
    EXPECT_EQ(stored("Qty").toInt(), 5);
    EXPECT_DOUBLE_EQ(stored("Ratio").toDouble(), 6);
    EXPECT_EQ(stored("Customer").toString(), "second's");
    // A save compares with what the previous save wrote: a keyword added and then removed goes again.
    first.form.combos["Tags"]->items << "brief";
    ASSERT_TRUE(first.columns.SaveDataFromEditControl(&e));
    EXPECT_EQ(storedTags(), QStringList({"x", "y", "brief"}));
    first.form.combos["Tags"]->items.removeAll("brief");
    ASSERT_TRUE(first.columns.SaveDataFromEditControl(&e));
    EXPECT_EQ(storedTags(), QStringList({"x", "y"}));
}

TEST_P(SharedRecordTest, AKeywordThatTwoUsersAddAtTheSameMomentIsStoredOnce)
{
    User first(testDb().handler());
    const Entry e(5); // without keywords: both saves insert, neither has a row to delete
    Form::show(first.columns, e);
    first.form.combos["Tags"]->items << "same";
    // The first user's save stands in a transaction not yet committed when the second one saves.
    auto held = std::make_unique<TableTransaction>(*first.handler);
    ASSERT_TRUE(held->begun());
    ASSERT_TRUE(first.columns.SaveDataFromEditControl(&e));

    std::atomic<bool> waiting{false};
    bool saved = false;
    QString failure;
    std::thread other([&] {
        UiServices::install(std::make_shared<SignallingUiServices>(waiting));
        if (Result<std::shared_ptr<DatabaseHandler>> connection = DatabaseHandler::open(testDb().location())) {
            User second(connection.value());
            Form::show(second.columns, e);
            second.form.combos["Tags"]->items << "same";
            saved = second.columns.SaveDataFromEditControl(&e);
            failure = lastReport();
        } else {
            failure = connection.error();
            waiting = true;
        }
        UiServices::install(nullptr);
    });
    const QDeadlineTimer deadline(20000);
    while (!waiting && !deadline.hasExpired())
        QThread::msleep(10);
    EXPECT_TRUE(waiting) << "the second save never waited for the first";
    EXPECT_TRUE(held->commit());
    held.reset();
    other.join();
    EXPECT_TRUE(saved) << qPrintable(failure);
    EXPECT_EQ(storedTags(5), QStringList({"same"}));
}

TEST_P(SharedRecordTest, ARecordReadsOnWhileAnotherUserChangesTheFieldsOfTheSearchTable)
{
    User first(testDb().handler()), second(testDb().openAnotherConnection());
    const Entry e(4);
    // The statement that reads the row is prepared here and kept.
    Form::show(first.columns, e);
    // Another user adds a field...
    ASSERT_TRUE(second.handler->ExecuteSql("ALTER TABLE " + q("FilesSearchData") + " ADD COLUMN " + q("Extra") + " INTEGER DEFAULT 7"));
    first.form.boxes["Customer"]->text.clear();
    Form::show(first.columns, e);
    EXPECT_EQ(first.form.boxes["Customer"]->text, "old");
    EXPECT_EQ(first.form.boxes["Ratio"]->text, "2.5");
    // ...and drops one that the first user's search still has.
    ASSERT_TRUE(second.handler->ExecuteSql("ALTER TABLE " + q("FilesSearchData") + " DROP COLUMN " + q("Ratio")));
    Diagnostics::instance().clearReports();
    Form::show(first.columns, e);
    const QString said = lastReport();
    EXPECT_TRUE(said.contains("Ratio") && said.contains("another user")) << qPrintable(said);

    first.form.boxes["Ratio"]->text = "3";
    first.form.boxes["Customer"]->text = "new";
    Diagnostics::instance().clearReports();
    EXPECT_FALSE(first.columns.SaveDataFromEditControl(&e));
    EXPECT_TRUE(lastReport().contains("Ratio")) << qPrintable(lastReport());
    EXPECT_EQ(stored("Customer").toString(), "old");
}

TEST_P(SharedRecordTest, ReadingARecordKeepsNoLockFromTheOtherUser)
{
    User first(testDb().handler()), second(testDb().openAnotherConnection());
    const Entry e(4);
    Form::show(first.columns, e);
    EXPECT_EQ(first.handler->transactionLevel(), 0);
    Form::show(second.columns, e);
    second.form.boxes["Customer"]->text = "second's";
    second.form.combos["Tags"]->items << "z";
    ASSERT_TRUE(second.columns.SaveDataFromEditControl(&e)) << qPrintable(lastReport());
    // Within the caller's own transaction the read belongs to it and leaves it open.
    TableTransaction held(*first.handler);
    ASSERT_TRUE(held.begun());
    Form::show(first.columns, e);
    EXPECT_EQ(first.handler->transactionLevel(), 1);
    EXPECT_EQ(first.form.boxes["Customer"]->text, "second's");
    EXPECT_EQ(first.form.combos["Tags"]->items, QStringList({"x", "y", "z"}));
    EXPECT_TRUE(held.commit());
}

SD_INSTANTIATE_DATABASE_SUITE(SharedRecordTest);

} // namespace
