#include "data/EntryForm.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/UiServices.h"
#include "support/SearchFixture.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

class EntryValuesTest : public SearchTest {
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
        cols->Add("Due", "", "", fcDateTime, 0, false, false);
        cols->Add("Done", "", "", fcBoolean, 0, false, false);
        cols->Add("Tags", "", "", fcKeyword, 30, false, false);
        cols->Add("Remarks", "", "", fcNote, 255, false, true, "none");
        cols->Add("Colors", "", "", fcKeyword, 30, false, false);
        ASSERT_TRUE(cols->ColumnsSave(nullptr));
        search = columns();
        ASSERT_NE(search, nullptr);
    }
    QVariant stored(const QString& column, int id)
    {
        return testDb().scalar(QStringLiteral("SELECT %1 FROM %2 WHERE %3 = %4").arg(q(column), q("FilesSearchData"), q("FileId")).arg(id));
    }
    std::shared_ptr<CFilterColumns> search;
};

TEST_P(EntryValuesTest, ARecordWithoutARowReadsDefaultsAndGetsItsRowAtTheFirstSave)
{
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = 5");
    Entry e(5);
    search->GetData(&e);
    EXPECT_EQ(search->Item("Customer")->SavedValue(), Value(QString()));
    EXPECT_EQ(search->Item("Qty")->SavedValue(), Value(qint16(0)));
    EXPECT_EQ(search->Item("Done")->SavedValue(), Value(false));
    EXPECT_EQ(search->Item("Due")->SavedValue(), Value(qint16(0)));

    Form form(*search);
    form.boxes["Customer"]->text = "Acme";
    form.boxes["Qty"]->text = "12";
    form.boxes["Ratio"]->text = "2.5";
    form.boxes["Due"]->text = "2003-07-04 13:05:09";
    form.checks["Done"]->value = 1;
    form.combos["Tags"]->items = {"zeta", "alpha", "mid"};
    ASSERT_TRUE(search->SaveDataFromEditControl(&e));

    EXPECT_EQ(rows("FilesSearchData", q("FileId") + " = 5"), 1);
    search->GetData(&e);
    EXPECT_EQ(search->Item("Customer")->SavedValue(), Value("Acme"));
    EXPECT_EQ(search->Item("Qty")->SavedValue(), Value(qint16(12)));
    EXPECT_EQ(search->Item("Ratio")->SavedValue(), Value(2.5));
    EXPECT_EQ(search->Item("Due")->SavedValue(), Value(QDateTime(QDate(2003, 7, 4), QTime(13, 5, 9))));
    EXPECT_EQ(search->Item("Done")->SavedValue(), Value(true));
    EXPECT_EQ(search->Item("Remarks")->SavedValue(), Value(QString()));
    EXPECT_EQ(search->Item("Tags")->SavedKeys(), QStringList({"zeta", "alpha", "mid"}));
    EXPECT_TRUE(search->Item("Colors")->SavedKeys().isEmpty());
}

TEST_P(EntryValuesTest, AnInvalidFieldIsLeftOutWhileTheOthersAreSaved)
{
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Qty") + " = 3");
    Form form(*search);
    Entry e(2);
    form.boxes["Customer"]->text = "Jones";
    form.boxes["Qty"]->text = "not a number";
    search->Item("Qty")->Validate();
    EXPECT_FALSE(search->Item("Qty")->IsValid());
    form.boxes["Due"]->text = "";
    ASSERT_TRUE(search->SaveDataFromEditControl(&e));
    EXPECT_EQ(stored("Customer", 2).toString(), "Jones");
    EXPECT_EQ(stored("Qty", 2).toInt(), 3);
}

TEST_P(EntryValuesTest, ClientUpdatesLeaveEmptyValuesAloneAndWriteNulls)
{
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'kept', " + q("Qty") + " = 4");
    Entry e(3);
    search->Item("Qty")->setUpdatedValue(Value::null());
    search->Item("Ratio")->setUpdatedValue(Value("1.25"));
    search->Item("Tags")->setUpdatedValue(Value("ignored")); // keywords come only from a list
    ASSERT_TRUE(search->SaveDataFromClientUpdates(&e));
    EXPECT_EQ(stored("Customer", 3).toString(), "kept");
    EXPECT_TRUE(stored("Qty", 3).isNull());
    EXPECT_DOUBLE_EQ(stored("Ratio", 3).toDouble(), 1.25);
    EXPECT_EQ(rows("FilesSearchKeywordTags"), 0);

    search->Item("Qty")->setUpdatedValue(Value("twelve"));
    EXPECT_FALSE(search->SaveDataFromClientUpdates(&e));
    EXPECT_DOUBLE_EQ(stored("Ratio", 3).toDouble(), 1.25);
}

TEST_P(EntryValuesTest, ABlankDateIsStoredAsNullAndReadsBlank)
{
    const QString due = q("Due"), data = q("FilesSearchData");
    SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + due + " = NULL");
    SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + due + " = " + db().SqlDate(QDateTime(QDate(2003, 7, 4), QTime(9, 0))) + " WHERE "
                                + q("FileId") + " = 2");
    Form form(*search);
    // A record without a date, saved with another change.
    Entry without(1);
    Form::show(*search, without);
    EXPECT_EQ(form.boxes["Due"]->text, "");
    form.boxes["Customer"]->text = "changed";
    ASSERT_TRUE(search->SaveDataFromEditControl(&without));
    // A record whose date the user clears.
    Entry cleared(2);
    Form::show(*search, cleared);
    EXPECT_FALSE(form.boxes["Due"]->text.isEmpty());
    form.boxes["Due"]->text = "";
    ASSERT_TRUE(search->SaveDataFromEditControl(&cleared));

    EXPECT_EQ(stored("Customer", 1).toString(), "changed");
    EXPECT_EQ(rows("FilesSearchData", due + " IS NULL"), rowCount);
    EXPECT_EQ(rows("FilesSearchData", due + " < " + db().SqlDate(QDateTime(QDate(2000, 1, 1), QTime(0, 0)))), 0);
}

TEST_P(EntryValuesTest, TextsComeBackExactlyAsWritten)
{
    const QStringList texts = {"O'Neil \"Big\" \\ back\\slash", "Grüße aus Köln, 東京", "100% _x_ ' \" \\\\"};
    Form form(*search);
    Entry e(4);
    form.boxes["Customer"]->text = texts[0];
    form.boxes["Remarks"]->text = texts[1];
    form.combos["Tags"]->items = texts;
    ASSERT_TRUE(search->SaveDataFromEditControl(&e));
    search->GetData(&e);
    EXPECT_EQ(search->Item("Customer")->SavedValue().text(), texts[0]);
    EXPECT_EQ(search->Item("Remarks")->SavedValue().text(), texts[1]);
    EXPECT_EQ(search->Item("Tags")->SavedKeys(), texts);
}

TEST_P(EntryValuesTest, AnEmptiedKeywordListRemovesAllItsRows)
{
    Form form(*search);
    Entry e(6), other(7);
    form.combos["Tags"]->items = {"a", "b"};
    ASSERT_TRUE(search->SaveDataFromEditControl(&e));
    ASSERT_TRUE(search->SaveDataFromEditControl(&other));
    form.combos["Tags"]->items.clear();
    ASSERT_TRUE(search->SaveDataFromEditControl(&e));
    EXPECT_EQ(rows("FilesSearchKeywordTags", q("FileId") + " = 6"), 0);
    EXPECT_EQ(rows("FilesSearchKeywordTags", q("FileId") + " = 7"), 2);
}

TEST_P(EntryValuesTest, KeywordsReadBackInTheOrderTheyWereSavedWhateverBecameOfTheTable)
{
    // Many keywords, every other one deleted, and the space given back for new rows.
    const QString tags = q("FilesSearchKeywordTags"), tag = q("Tags"), id = q("FileId");
    for (int file = 1; file <= 30; ++file) {
        QStringList rows;
        for (int n = 0; n < 200; ++n)
            rows << "(" + QString::number(file) + ", 'k" + QString::number(file * 1000 + n) + "')";
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + tags + " (" + id + ", " + tag + ") VALUES " + rows.join(", "));
    }
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + tags + " WHERE CAST(SUBSTR(" + tag + ", 2) AS INTEGER) % 2 = 1");
    SD_ASSERT_SQL(testDb(), "VACUUM");

    Form form(*search);
    form.combos["Tags"]->items = {"c", "a", "b"};
    Entry e(3);
    ASSERT_TRUE(search->SaveDataFromEditControl(&e));
    // A table with free space is compacted now and then; PostgreSQL's CLUSTER puts the rows in the
    // order of an index.
    if (GetParam() == DbKind::PostgreSQL)
        SD_ASSERT_SQL(testDb(), "CLUSTER " + tags + " USING " + q("UK_FilesSearchKeywordTags"));
    search->GetData(&e);
    EXPECT_EQ(search->Item("Tags")->SavedKeys(), QStringList({"c", "a", "b"}));
}

TEST_P(EntryValuesTest, EachKeywordListLoadsWholeAndApartEvenWhereAnotherCannotBeRead)
{
    Form form(*search);
    Entry e(4), bare(5);
    form.boxes["Customer"]->text = "Acme";
    form.combos["Tags"]->items = {"zeta", "alpha", "shared"};
    form.combos["Colors"]->items = {"shared", "red"};
    ASSERT_TRUE(search->SaveDataFromEditControl(&e));
    form.combos["Tags"]->items.clear();
    form.combos["Colors"]->items = {"blue"};
    ASSERT_TRUE(search->SaveDataFromEditControl(&bare));

    search->GetData(&e);
    EXPECT_EQ(search->Item("Tags")->SavedKeys(), QStringList({"zeta", "alpha", "shared"}));
    EXPECT_EQ(search->Item("Colors")->SavedKeys(), QStringList({"shared", "red"}));
    search->GetData(&bare);
    EXPECT_TRUE(search->Item("Tags")->SavedKeys().isEmpty());
    EXPECT_EQ(search->Item("Colors")->SavedKeys(), QStringList({"blue"}));

    // Another user drops one keyword table: the rest of the record loads, and what failed is said of
    // that list alone, as its own statement met it.
    SD_ASSERT_SQL(testDb(), "DROP TABLE " + q("FilesSearchKeywordTags"));
    Diagnostics::instance().clearReports();
    search->GetData(&e);
    EXPECT_EQ(search->Item("Customer")->SavedValue(), Value("Acme"));
    EXPECT_EQ(search->Item("Colors")->SavedKeys(), QStringList({"shared", "red"}));
    const QList<ErrorReport> reports = Diagnostics::instance().reports();
    ASSERT_FALSE(reports.isEmpty());
    EXPECT_TRUE(reports.last().text.contains("FilesSearchKeywordTags")) << qPrintable(reports.last().text);
    for (const ErrorReport& r : reports)
        EXPECT_FALSE(r.text.contains("UNION") || r.text.contains(q("Colors"))) << qPrintable(r.text);
}

TEST_P(EntryValuesTest, AColumnAddedAfterRecordsWereLoadedIsReadAndWrittenWithTheOthers)
{
    Entry e(4);
    {
        Form form(*search);
        form.boxes["Customer"]->text = "Acme";
        form.combos["Tags"]->items = {"one"};
        ASSERT_TRUE(search->SaveDataFromEditControl(&e));
        Form::show(*search, e);
    }
    search->Add("Extra", "", "", fcText, 20, false, false);
    search->Add("Labels", "", "", fcKeyword, 20, false, false);
    ASSERT_TRUE(search->ColumnsSave(nullptr));
    Form form(*search);
    Form::show(*search, e);
    EXPECT_EQ(search->Item("Customer")->SavedValue(), Value("Acme"));
    form.boxes["Extra"]->text = "added";
    form.combos["Labels"]->items = {"new", "label"};
    form.combos["Tags"]->items = {"one", "two"};
    ASSERT_TRUE(search->SaveDataFromEditControl(&e));
    EXPECT_EQ(stored("Extra", 4).toString(), "added");
    search->GetData(&e);
    EXPECT_EQ(search->Item("Extra")->SavedValue(), Value("added"));
    EXPECT_EQ(search->Item("Labels")->SavedKeys(), QStringList({"new", "label"}));
    EXPECT_EQ(search->Item("Tags")->SavedKeys(), QStringList({"one", "two"}));
}

TEST_P(EntryValuesTest, AHiddenPicklistValueIsOfferedOnlyToTheRecordThatHoldsIt)
{
    auto cols = columns();
    cols->Item("Customer")->setIsPicklist(true);
    // The picklist table as the picklist object makes it.
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("PicklistFilesCustomer") + " (" + q("Customer") + " VARCHAR(255), " + q("HideEntry") + " " +
                                db().dialect().declaredType(adBoolean, 0) + ")");
    const QString t = db().SqlBoolean(true), f = db().SqlBoolean(false);
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("PicklistFilesCustomer") + " VALUES ('Acme', " + f + ")");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("PicklistFilesCustomer") + " VALUES ('Old Co', " + t + ")");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("PicklistFilesCustomer") + " VALUES ('Jones', NULL)");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("PicklistFilesCustomer") + " VALUES (NULL, " + f + ")");
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'old co' WHERE " + q("FileId") + " = 1");
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'Acme' WHERE " + q("FileId") + " = 2");

    Entry holder(1), other(2);
    cols->GetData(&holder);
    EXPECT_EQ(cols->Item("Customer")->SavedKeys(), QStringList({"Acme", "Old Co", "Jones"}));
    cols->GetData(&other);
    EXPECT_EQ(cols->Item("Customer")->SavedKeys(), QStringList({"Acme", "Jones"}));
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = 2");
    cols->GetData(&other);
    EXPECT_EQ(cols->Item("Customer")->SavedKeys(), QStringList({"Acme", "Jones"}));
}

TEST_P(EntryValuesTest, APicklistColumnGetsItsChoicesEvenWhereItsFieldCannotBeTaken)
{
    // A picklist column whose field the search table lacks, as another program may have left it.
    auto colour = search->Add("Colour", "", "", fcText, 20, true, false, "red");
    ASSERT_NE(colour, nullptr);
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("PicklistFilesColour") + " (" + q("Colour") + " VARCHAR(255), " + q("HideEntry") + " " +
                                db().dialect().declaredType(adBoolean, 0) + ")");
    const QString t = db().SqlBoolean(true), f = db().SqlBoolean(false);
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("PicklistFilesColour") + " VALUES ('red', " + f + "), ('blue', " + f + "), ('grey', " + t + ")");
    colour->SavedKeys() = {"stale"};
    Entry e(1);
    search->GetData(&e);
    EXPECT_EQ(colour->SavedKeys(), QStringList({"red", "blue"}));
}

TEST_P(EntryValuesTest, ANewRecordGetsItsRowWithDefaultsAndNoKeywords)
{
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("Files") + " VALUES (100, 'new', " + db().SqlBoolean(false) + ")");
    Entry e(100);
    EXPECT_FALSE(search->InitializeSearchData(nullptr));
    ASSERT_TRUE(search->InitializeSearchData(&e));
    EXPECT_EQ(stored("Remarks", 100).toString(), "none");
    EXPECT_EQ(stored("Qty", 100).toInt(), 0);
    EXPECT_EQ(stored("Customer", 100).toString(), "");
    EXPECT_EQ(rows("FilesSearchKeywordTags", q("FileId") + " = 100"), 0);

    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("Files") + " VALUES (101, 'newer', " + db().SqlBoolean(false) + ")");
    Entry e2(101);
    EXPECT_TRUE(CCommon().InitializeSearchData(&e2, testDb().handler(), files, catalog, profile, baseStructureOf("Files", {"FileId"})));
    EXPECT_EQ(rows("FilesSearchData", q("FileId") + " = 101"), 1);
}

TEST_P(EntryValuesTest, FaultsAreReportedAndLoseNothing)
{
    Form form(*search);
    Entry gone(8);
    search->GetData(&gone);
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("Files") + " WHERE " + q("FileId") + " = 8");
    form.boxes["Customer"]->text = "late";
    form.combos["Tags"]->items = {"x"};
    Diagnostics::instance().clearReports();
    EXPECT_FALSE(search->SaveDataFromEditControl(&gone));
    EXPECT_GT(Diagnostics::instance().reportCount(), 0);
    EXPECT_EQ(rows("FilesSearchData", q("FileId") + " = 8"), 0);
    EXPECT_EQ(rows("FilesSearchKeywordTags", q("FileId") + " = 8"), 0);

    // Another user holds the search table: the save gives up after the wait, the stored row stays.
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'stored' WHERE " + q("FileId") + " = 9");
    auto ui = std::make_shared<HeadlessUiServices>(std::chrono::milliseconds(300));
    UiServices::install(ui);
    auto other = testDb().openAnotherConnection();
    TransactionState tx;
    ASSERT_TRUE(other->BeginTableTransaction(tx));
    ASSERT_TRUE(other->ExecuteSql("UPDATE " + q("FilesSearchData") + " SET " + q("Qty") + " = 1 WHERE " + q("FileId") + " = 9"));
    Entry locked(9);
    form.combos["Tags"]->items.clear();
    EXPECT_FALSE(search->SaveDataFromEditControl(&locked));
    other->EndTableTransaction(tx);
    UiServices::install(nullptr);
    EXPECT_TRUE(ui->requests().join('\n').contains("locked:"));
    EXPECT_EQ(stored("Customer", 9).toString(), "stored");

    // The search table dropped under the open collection.
    SD_ASSERT_SQL(testDb(), "DROP TABLE " + q("FilesSearchData"));
    Diagnostics::instance().clearReports();
    Entry e(10);
    search->GetData(&e);
    EXPECT_FALSE(search->SaveDataFromEditControl(&e));
    EXPECT_GT(Diagnostics::instance().reportCount(), 0);
}

TEST_P(EntryValuesTest, ATextKeyIsQuotedInTheCriteria)
{
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("Docs") + " (" + q("Code") + " VARCHAR(20) PRIMARY KEY)");
    catalog->Refresh();
    auto base = std::make_shared<TestBaseTable>("Docs");
    auto filter = CCommon().CreateSearchFilterObject(testDb().handler(), base, catalog, profile, 0, [] {
        auto s = TableStructure::NewStructure("Docs");
        (void)s->AddColumn("Code", adVarWChar, 20, 0, false);
        (void)s->AddPrimaryKey("PK_Docs", {"Code"});
        return s;
    }());
    ASSERT_NE(filter->FilterColumns(), nullptr);
    Entry e(42);
    EXPECT_EQ(filter->FilterColumns()->SearchTableSeekCriteria(&e), q("Code") + " = '42'");
    EXPECT_EQ(search->SearchTableSeekCriteria(&e), q("FileId") + " = 42");
    EXPECT_TRUE(search->SearchTableSeekCriteria(nullptr).isEmpty());
}

SD_INSTANTIATE_DATABASE_SUITE(EntryValuesTest);

TEST(PicklistChanged, ComparesOnlyWhatMattersForAPicklist)
{
    CFilterColumn a, b;
    a.setColumnType(fcInteger32);
    b.setColumnType(fcInteger32);
    a.setPicklistDefault("1");
    b.setPicklistDefault("2");
    EXPECT_FALSE(CFilterColumns::PicklistChanged(nullptr, &b));
    EXPECT_TRUE(CFilterColumns::PicklistChanged(&a, nullptr));
    EXPECT_FALSE(CFilterColumns::PicklistChanged(&a, &b)); // neither is a picklist
    a.setIsPicklist(true);
    EXPECT_TRUE(CFilterColumns::PicklistChanged(&a, &b));
    b.setIsPicklist(true);
    EXPECT_TRUE(CFilterColumns::PicklistChanged(&a, &b));
    b.setPicklistDefault("1.0");
    EXPECT_FALSE(CFilterColumns::PicklistChanged(&a, &b));
    b.setPicklistAllowBlanks(true);
    EXPECT_TRUE(CFilterColumns::PicklistChanged(&a, &b));
    a.setPicklistAllowBlanks(true);
    a.setColumnType(fcText);
    b.setColumnType(fcText);
    a.setPicklistDefault("Acme");
    b.setPicklistDefault("ACME");
    EXPECT_FALSE(CFilterColumns::PicklistChanged(&a, &b));
}

} // namespace
