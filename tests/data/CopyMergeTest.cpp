// Copying search data between records and tables, and merging another database's search data.

#include "searchdata/CFilterColumns.h"
#include "searchdata/CMergeBaseEntry.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Diagnostics.h"
#include "support/SearchFixture.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// Files with Customer, Qty, Due, Done, the keyword column Tags and the picklist column Colour,
/// on the test's database and, for the tests that need one, on a second database of the same kind.
class CopyTestBase : public SearchTest {
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        if (HasFatalFailure())
            return;
        Diagnostics::instance().clearReports();
    }

    static void define(CFilterColumns& cols)
    {
        cols.Add("Customer", "", "", fcText, 40, false, false);
        cols.Add("Qty", "", "", fcInteger32, 0, false, false);
        cols.Add("Due", "", "", fcDateTime, 0, false, false);
        cols.Add("Done", "", "", fcBoolean, 0, false, false);
        cols.Add("Tags", "", "", fcKeyword, 30, false, false);
        cols.Add("Colour", "", "", fcText, 20, true, true);
    }

    /// A second database with its own Files table of 30 records, and a search on it.
    std::shared_ptr<CSearchFilter> openOther()
    {
        if (!other) {
            other = std::make_unique<TestDatabase>(GetParam());
            if (!other->ok())
                return nullptr;
            DatabaseHandler& h = *other->handler();
            h.ExecuteSql(QStringLiteral("CREATE TABLE %1 (%2 INTEGER PRIMARY KEY, %3 VARCHAR(255))")
                             .arg(h.BracketName("Files"), h.BracketName("FileId"), h.BracketName("Name")));
            for (int i = 1; i <= 30; ++i)
                h.ExecuteSql(QStringLiteral("INSERT INTO %1 VALUES (%2, 'f')").arg(h.BracketName("Files")).arg(i));
            otherCatalog = std::make_shared<Catalog>(other->handler());
        }
        otherCatalog->Refresh();
        return CCommon().CreateSearchFilterObject(other->handler(), files, otherCatalog, profile, 0, baseStructureOf("Files", {"FileId"}));
    }
    QString onOther(const QString& sql) { return other->exec(sql); }
    QVariant otherScalar(const QString& sql) { return other->scalar(sql); }

    QVariant stored(const QString& column, int id, TestDatabase* where = nullptr)
    {
        TestDatabase& d = where ? *where : testDb();
        const DatabaseHandler& h = *d.handler();
        return d.scalar(QStringLiteral("SELECT %1 FROM %2 WHERE %3 = %4")
                            .arg(h.BracketName(column), h.BracketName("FilesSearchData"), h.BracketName("FileId"))
                            .arg(id));
    }
    /// The keywords of a record, in stored order.
    static QStringList keywords(CFilterColumns& cols, int id, const QString& column = "Tags")
    {
        const CMergeBaseEntry e(id);
        cols.GetData(&e);
        return cols.Item(column)->SavedKeys();
    }
    static QString set(DatabaseHandler& h, int id, const QString& assignments)
    {
        return QStringLiteral("UPDATE %1 SET %2 WHERE %3 = %4").arg(h.BracketName("FilesSearchData"), assignments, h.BracketName("FileId")).arg(id);
    }
    static QString addKey(DatabaseHandler& h, int id, const QString& key, const QString& column = "Tags")
    {
        return QStringLiteral("INSERT INTO %1 VALUES (%2, %3)").arg(h.BracketName("FilesSearchKeyword" + column)).arg(id).arg(h.SqlQuote(key));
    }

    std::unique_ptr<TestDatabase> other;
    std::shared_ptr<Catalog> otherCatalog;
};

class CopyTest : public CopyTestBase {
protected:
    void SetUp() override
    {
        CopyTestBase::SetUp();
        if (HasFatalFailure())
            return;
        auto cols = columns();
        define(*cols);
        ASSERT_TRUE(cols->ColumnsSave(nullptr));
        filter = open();
        ASSERT_TRUE(filter->Exists());
    }
    std::shared_ptr<CSearchFilter> filter;
};

TEST_P(CopyTest, WithinATableTheTargetGetsTheValuesAndTheKeywordsOfTheSource)
{
    DatabaseHandler& h = db();
    SD_ASSERT_SQL(testDb(), set(h, 1, q("Customer") + " = 'O''Neil \"Big\"', " + q("Qty") + " = 12, " + q("Due") + " = " +
                                          h.SqlDate(QDateTime(QDate(2003, 7, 4), QTime(13, 5))) + ", " + q("Done") + " = " + h.SqlBoolean(true)));
    SD_ASSERT_SQL(testDb(), addKey(h, 1, "zeta"));
    SD_ASSERT_SQL(testDb(), addKey(h, 1, "alpha"));
    SD_ASSERT_SQL(testDb(), addKey(h, 2, "old"));
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = 2");

    const CMergeBaseEntry source(1), target(2);
    ASSERT_TRUE(filter->CopyValuesWithinTable(&source, &target));
    EXPECT_EQ(stored("Customer", 2).toString(), "O'Neil \"Big\"");
    EXPECT_EQ(stored("Qty", 2).toInt(), 12);
    EXPECT_EQ(Value::fromVariant(stored("Due", 2)).toDateTime().value(), QDateTime(QDate(2003, 7, 4), QTime(13, 5)));
    EXPECT_TRUE(Value::fromVariant(stored("Done", 2)).toBoolean().value());
    EXPECT_EQ(keywords(*filter->FilterColumns(), 2), QStringList({"zeta", "alpha"}));
    EXPECT_EQ(keywords(*filter->FilterColumns(), 1), QStringList({"zeta", "alpha"}));
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);
}

TEST_P(CopyTest, AnExistingTargetKeepsItsValuesWhereTheSourceHoldsNothing)
{
    DatabaseHandler& h = db();
    const QString due = h.SqlDate(QDateTime(QDate(2020, 1, 2), QTime(0, 0)));
    SD_ASSERT_SQL(testDb(), set(h, 4, q("Customer") + " = 'mine', " + q("Qty") + " = 1, " + q("Due") + " = " + due + ", " + q("Done") + " = " +
                                          h.SqlBoolean(true)));
    SD_ASSERT_SQL(testDb(), set(h, 3, q("Customer") + " = '  ', " + q("Qty") + " = 5, " + q("Due") + " = NULL, " + q("Done") + " = " +
                                          h.SqlBoolean(false)));
    const CMergeBaseEntry source(3), target(4);
    ASSERT_TRUE(filter->CopyValuesWithinTable(&source, &target));
    EXPECT_EQ(stored("Customer", 4).toString(), "mine");
    EXPECT_EQ(stored("Qty", 4).toInt(), 5);
    EXPECT_EQ(Value::fromVariant(stored("Due", 4)).toDateTime().value(), QDateTime(QDate(2020, 1, 2), QTime(0, 0)))
        << "a record without a date does not hand on day 0";
    EXPECT_TRUE(Value::fromVariant(stored("Done", 4)).toBoolean().value());
}

TEST_P(CopyTest, BlankTextsFalseBooleansAndNoDatesMakeNoRow)
{
    makeBaseTable("Docs", "DocId", 5);
    auto docs = columns("Docs", "DocId");
    docs->Add("Title", "", "", fcText, 40, false, false);
    docs->Add("Flag", "", "", fcBoolean, 0, false, false);
    docs->Add("Seen", "", "", fcDateTime, 0, false, false);
    docs->Add("Body", "", "", fcNote, 255, false, false);
    ASSERT_TRUE(docs->ColumnsSave(nullptr));
    auto search = open("Docs", "DocId");
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("DocsSearchData") + " WHERE " + q("DocId") + " = 2");
    const CMergeBaseEntry source(1), target(2);
    ASSERT_TRUE(search->CopyValuesWithinTable(&source, &target));
    EXPECT_EQ(rows("DocsSearchData", q("DocId") + " = 2"), 0);
    EXPECT_FALSE(search->CopyValuesWithinTable(&source, nullptr));
}

TEST_P(CopyTest, BetweenTablesTheTargetGetsValuesAndKeywordsAndLeavesOtherColumnsAlone)
{
    auto source = openOther();
    ASSERT_NE(source, nullptr) << qPrintable(other->error());
    auto sourceCols = source->FilterColumns();
    define(*sourceCols);
    ASSERT_TRUE(sourceCols->ColumnsSave(nullptr));
    source = openOther();
    DatabaseHandler& s = *other->handler();
    ASSERT_EQ(onOther(set(s, 3, s.BracketName("Customer") + " = 'Acme', " + s.BracketName("Qty") + " = 7, " + s.BracketName("Colour") +
                                   " = NULL")),
              "");
    ASSERT_EQ(onOther(addKey(s, 3, "b")), "");
    ASSERT_EQ(onOther(addKey(s, 3, "a")), "");

    // The target has a column of its own, and a host value waiting in it.
    auto cols = columns();
    cols->Add("Extra", "", "", fcText, 10, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    filter = open();
    SD_ASSERT_SQL(testDb(), set(db(), 4, q("Extra") + " = 'own', " + q("Done") + " = " + db().SqlBoolean(true)));
    SD_ASSERT_SQL(testDb(), addKey(db(), 4, "gone"));
    filter->FilterColumns()->Item("Extra")->setUpdatedValue(Value("pending"));

    const CMergeBaseEntry from(3), to(4);
    ASSERT_TRUE(filter->CopyValuesBetweenTables(source.get(), &from, &to));
    EXPECT_EQ(stored("Customer", 4).toString(), "Acme");
    EXPECT_EQ(stored("Qty", 4).toInt(), 7);
    EXPECT_FALSE(Value::fromVariant(stored("Done", 4)).toBoolean().value()) << "between tables the source's False is written";
    EXPECT_EQ(stored("Extra", 4).toString(), "own");
    EXPECT_EQ(keywords(*filter->FilterColumns(), 4), QStringList({"b", "a"}));
    EXPECT_EQ(filter->FilterColumns()->Item("Extra")->UpdatedValue(), Value("pending"));

    // A source column without its counterpart here stops the copy before anything is written.
    sourceCols = source->FilterColumns();
    sourceCols->Add("Missing", "", "", fcText, 10, false, false);
    ASSERT_TRUE(sourceCols->ColumnsSave(nullptr));
    source = openOther();
    ASSERT_EQ(onOther(set(s, 3, s.BracketName("Customer") + " = 'Changed'")), "");
    const CMergeBaseEntry to5(5);
    EXPECT_FALSE(filter->CopyValuesBetweenTables(source.get(), &from, &to5));
    EXPECT_EQ(stored("Customer", 5).toString(), "");
    EXPECT_TRUE(keywords(*filter->FilterColumns(), 5).isEmpty());

    // Only a base table of the same name is a counterpart.
    makeBaseTable("Docs", "FileId", 5);
    auto docs = columns("Docs", "FileId");
    define(*docs);
    ASSERT_TRUE(docs->ColumnsSave(nullptr));
    EXPECT_FALSE(open("Docs", "FileId")->CopyValuesBetweenTables(filter.get(), &to, &from));
}

TEST_P(CopyTest, ACopiedValueThatThePicklistLacksJoinsTheList)
{
    auto source = openOther();
    ASSERT_NE(source, nullptr) << qPrintable(other->error());
    define(*source->FilterColumns());
    ASSERT_TRUE(source->FilterColumns()->ColumnsSave(nullptr));
    source = openOther();
    auto sourceColour = source->FilterColumns()->Item("Colour");
    ASSERT_TRUE(source->FilterColumns()->PicklistOf(*sourceColour)->SaveAdditions({"mauve"}));
    DatabaseHandler& s = *other->handler();
    ASSERT_EQ(onOther(set(s, 6, s.BracketName("Colour") + " = 'mauve'")), "");

    const CMergeBaseEntry from(6), to(6);
    ASSERT_TRUE(filter->CopyValuesBetweenTables(source.get(), &from, &to));
    EXPECT_EQ(stored("Colour", 6).toString(), "mauve");
    EXPECT_EQ(rows("PicklistFilesColour", q("Colour") + " = 'mauve'"), 1);

    // Within the table the value is in the list already and stays there once.
    const CMergeBaseEntry seven(7);
    ASSERT_TRUE(filter->CopyValuesWithinTable(&to, &seven));
    EXPECT_EQ(stored("Colour", 7).toString(), "mauve");
    EXPECT_EQ(rows("PicklistFilesColour", q("Colour") + " = 'mauve'"), 1);
}

class MergeTest : public CopyTestBase {};

TEST_P(MergeTest, ConfigurationComesOverOnceWithClashingNamesNumbered)
{
    auto source = openOther();
    ASSERT_NE(source, nullptr) << qPrintable(other->error());
    auto sourceCols = source->FilterColumns();
    sourceCols->Add("Size", "Length", "how long", fcDouble, 0, false, false);
    sourceCols->Add("Length", "", "", fcText, 20, false, false);
    sourceCols->Add("Tags", "", "", fcKeyword, 30, false, false);
    sourceCols->Add("Colour", "Hue", "", fcText, 20, true, false, "red");
    ASSERT_TRUE(sourceCols->ColumnsSave(nullptr));
    source = openOther();

    auto target = open();
    ASSERT_EQ(target->CopyConfiguration(nullptr, source.get()), fltrCCR_Success);
    target = open();
    auto cols = target->FilterColumns();
    ASSERT_EQ(cols->Count(), 4);
    QStringList names, mergeNames;
    for (const auto& c : *cols) {
        names << c->Name();
        mergeNames << (c->IsMergeColumn() ? c->MergeName() : "-");
    }
    // "Length" meets the caption of "Size" here, as it did in the source.
    EXPECT_EQ(names, QStringList({"Size", "Length_1", "Tags", "Colour"}));
    EXPECT_EQ(mergeNames, QStringList({"Size", "Length", "Tags", "Colour"}));
    EXPECT_EQ(cols->Item("Size")->Description(), "how long");
    EXPECT_EQ(cols->Item("Colour")->Caption(), "Hue");
    EXPECT_TRUE(cols->Item("Colour")->IsPicklist());
    EXPECT_EQ(cols->Item("Colour")->PicklistDefault(), "red");
    EXPECT_EQ(rows("PicklistFilesColour", q("Colour") + " = 'red'"), 1);

    // A configured table keeps its configuration and answers success.
    ASSERT_EQ(target->CopyConfiguration(nullptr, source.get()), fltrCCR_Success);
    EXPECT_EQ(open()->FilterColumns()->Count(), 4);

    ASSERT_TRUE(target->CopyCleanup());
    catalog->Refresh();
    EXPECT_FALSE(GetTableColumn(GetCatalogTable(*catalog, CFilterColumns::definitionTableName()), "MergeName"));
    target = open();
    EXPECT_FALSE(target->FilterColumns()->Item("Length_1")->IsMergeColumn());
    // Without the merge field the definitions still save.
    target->FilterColumns()->Item("Size")->setCaption("Size");
    EXPECT_TRUE(target->FilterColumns()->ColumnsSave(nullptr));
}

TEST_P(MergeTest, RecordsMergeTheirValuesAndKeywordsWhileTheSourceWins)
{
    auto source = openOther();
    ASSERT_NE(source, nullptr) << qPrintable(other->error());
    define(*source->FilterColumns());
    ASSERT_TRUE(source->FilterColumns()->ColumnsSave(nullptr));
    source = openOther();
    ASSERT_TRUE(source->FilterColumns()->PicklistOf(*source->FilterColumns()->Item("Colour"))->SaveAdditions({"teal"}));
    DatabaseHandler& s = *other->handler();
    const QDateTime due(QDate(1999, 12, 31), QTime(23, 59, 58));
    ASSERT_EQ(onOther(set(s, 2, s.BracketName("Customer") + " = 'It''s new', " + s.BracketName("Qty") + " = NULL, " + s.BracketName("Due") +
                                   " = " + s.SqlDate(due) + ", " + s.BracketName("Done") + " = " + s.SqlBoolean(false) + ", " +
                                   s.BracketName("Colour") + " = 'teal'")),
              "");
    ASSERT_EQ(onOther(addKey(s, 2, "shared")), "");
    ASSERT_EQ(onOther(addKey(s, 2, "theirs")), "");
    ASSERT_EQ(onOther("DELETE FROM " + s.BracketName("FilesSearchData") + " WHERE " + s.BracketName("FileId") + " = 3"), "");
    ASSERT_EQ(onOther(addKey(s, 3, "orphan")), "");

    auto target = open();
    ASSERT_EQ(target->CopyConfiguration(nullptr, source.get()), fltrCCR_Success);
    target = open();
    DatabaseHandler& h = db();
    SD_ASSERT_SQL(testDb(), set(h, 2, q("Customer") + " = 'old', " + q("Qty") + " = 9, " + q("Done") + " = " + h.SqlBoolean(true)));
    SD_ASSERT_SQL(testDb(), set(h, 3, q("Customer") + " = 'three'"));
    SD_ASSERT_SQL(testDb(), addKey(h, 2, "mine"));
    SD_ASSERT_SQL(testDb(), addKey(h, 2, "shared"));

    for (int id : {2, 3}) {
        const auto to = target->MakeMergeBaseEntry(id);
        const auto from = target->MakeMergeBaseEntry(id);
        ASSERT_EQ(to->Id(), id);
        ASSERT_TRUE(target->MergeSearchData(to.get(), source.get(), from.get())) << id;
    }
    EXPECT_EQ(stored("Customer", 2).toString(), "It's new");
    EXPECT_EQ(stored("Qty", 2).toInt(), 9) << "a null in the source leaves the target's value";
    EXPECT_EQ(Value::fromVariant(stored("Due", 2)).toDateTime().value(), due);
    EXPECT_FALSE(Value::fromVariant(stored("Done", 2)).toBoolean().value());
    EXPECT_EQ(stored("Colour", 2).toString(), "teal");
    EXPECT_EQ(keywords(*target->FilterColumns(), 2), QStringList({"mine", "shared", "theirs"}));
    EXPECT_EQ(stored("Customer", 3).toString(), "three") << "no source row, nothing written";
    EXPECT_EQ(keywords(*target->FilterColumns(), 3), QStringList({"orphan"}));

    // Merging the same record again adds nothing.
    const CMergeBaseEntry two(2);
    ASSERT_TRUE(target->MergeSearchData(&two, source.get(), &two));
    EXPECT_EQ(keywords(*target->FilterColumns(), 2), QStringList({"mine", "shared", "theirs"}));
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);
    EXPECT_FALSE(target->MergeSearchData(&two, nullptr, &two));
}

TEST_P(MergeTest, OnlyMergeColumnsTakePart)
{
    auto source = openOther();
    ASSERT_NE(source, nullptr) << qPrintable(other->error());
    define(*source->FilterColumns());
    ASSERT_TRUE(source->FilterColumns()->ColumnsSave(nullptr));
    source = openOther();
    DatabaseHandler& s = *other->handler();
    ASSERT_EQ(onOther(set(s, 2, s.BracketName("Customer") + " = 'theirs'")), "");
    ASSERT_EQ(onOther(addKey(s, 2, "theirs")), "");

    // The target was configured on its own: nothing matches by merge name.
    auto cols = columns();
    define(*cols);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    auto target = open();
    ASSERT_EQ(target->CopyConfiguration(nullptr, source.get()), fltrCCR_Success);
    const CMergeBaseEntry two(2);
    ASSERT_TRUE(target->MergeSearchData(&two, source.get(), &two));
    EXPECT_EQ(stored("Customer", 2).toString(), "");
    EXPECT_TRUE(keywords(*target->FilterColumns(), 2).isEmpty());
}

} // namespace

SD_INSTANTIATE_DATABASE_SUITE(CopyTest);
SD_INSTANTIATE_DATABASE_SUITE(MergeTest);
