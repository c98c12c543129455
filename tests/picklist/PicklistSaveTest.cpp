// What saving column definitions does to picklists: the tables, the keys and the stored values.

#include "picklist/PicklistFixture.h"
#include "searchdata/SchemaTool.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

class PicklistSaveTest : public PicklistTest {};

const QString kColourList = "PicklistFilesColour";
const QString kColourKey = "FK_PicklistFilesColour";

TEST_P(PicklistSaveTest, AColumnWithValuesBecomesAPicklistOfThoseValuesAndItsDefault)
{
    ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
    ASSERT_NE(makeColourPicklist(false, "green"), nullptr) << qPrintable(lastError());

    // Blanks and nulls took the default; every stored value is an entry, visible.
    EXPECT_EQ(counts("FilesSearchData", "Colour"), QStringList({"blue x5", "green x15", "red x10"}));
    EXPECT_EQ(values(kColourList, "Colour"), QStringList({"blue", "green", "red"}));
    EXPECT_TRUE(hiddenEntries(kColourList, "Colour").isEmpty());
    EXPECT_TRUE(hasKey(kColourList, "UK_PicklistFilesColour"));
    ASSERT_TRUE(hasKey("FilesSearchData", kColourKey));

    // The database itself keeps the values in the list; a null passes.
    EXPECT_FALSE(testDb().exec("UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = 'purple' WHERE " + q("FileId") + " = 1").isEmpty());
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = NULL WHERE " + q("FileId") + " = 1");
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = 'blue' WHERE " + q("FileId") + " = 2");

    // A numeric picklist: nulls take the default, which joins the stored number.
    auto cols = columns();
    cols->Item("Qty")->setIsPicklist(true);
    cols->Item("Qty")->setPicklistDefault("3");
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    EXPECT_EQ(counts("FilesSearchData", "Qty"), QStringList({"3 x20", "7 x10"}));
    EXPECT_EQ(values("PicklistFilesQty", "Qty"), QStringList({"3", "7"}));
    EXPECT_TRUE(hasKey("FilesSearchData", "FK_PicklistFilesQty"));
    // Making the second key rebuilt the search table on SQLite; the first key stays.
    EXPECT_TRUE(hasKey("FilesSearchData", kColourKey));
}

TEST_P(PicklistSaveTest, BlanksThatAreAllowedStayAndGetTheirEntry)
{
    ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
    ASSERT_NE(makeColourPicklist(true, ""), nullptr) << qPrintable(lastError());
    // An empty default that blanks allow needs no entry of its own: nulls became blanks.
    EXPECT_EQ(counts("FilesSearchData", "Colour"), QStringList({" x15", "blue x5", "red x10"}));
    EXPECT_EQ(values(kColourList, "Colour"), QStringList({"", "blue", "red"}));
}

TEST_P(PicklistSaveTest, AChangeBringsDataThatBreaksTheKeyIntoTheList)
{
    ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
    ASSERT_NE(makeColourPicklist(true, ""), nullptr) << qPrintable(lastError());
    // Values that the key would refuse: written while the key was away, as by an earlier version.
    ASSERT_TRUE(SchemaTool().DropTableKeys(nullptr, *catalog, kColourList));
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = 'orange' WHERE " + q("FileId") + " = 30");
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = NULL WHERE " + q("FileId") + " = 29");
    // A used entry that is hidden stays hidden, and in its records.
    SD_ASSERT_SQL(testDb(), "UPDATE " + q(kColourList) + " SET " + q("HideEntry") + " = " + db().SqlBoolean(true) + " WHERE " + q("Colour") + " = 'blue'");

    // Blanks are no longer allowed, and the default is new.
    ASSERT_NE(makeColourPicklist(false, "grey"), nullptr) << qPrintable(lastError());
    EXPECT_EQ(counts("FilesSearchData", "Colour"), QStringList({"blue x5", "grey x14", "orange x1", "red x10"}));
    EXPECT_EQ(values(kColourList, "Colour"), QStringList({"blue", "grey", "orange", "red"}));
    EXPECT_EQ(hiddenEntries(kColourList, "Colour"), QStringList({"blue"}));
    ASSERT_TRUE(hasKey("FilesSearchData", kColourKey));
    EXPECT_FALSE(testDb().exec("UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = '' WHERE " + q("FileId") + " = 1").isEmpty());

    // Blanks allowed again: the blank entry comes back.
    ASSERT_NE(makeColourPicklist(true, "grey"), nullptr) << qPrintable(lastError());
    EXPECT_EQ(values(kColourList, "Colour"), QStringList({"", "blue", "grey", "orange", "red"}));
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = '' WHERE " + q("FileId") + " = 1");
}

TEST_P(PicklistSaveTest, SwitchingOffOrDeletingTheColumnDropsListAndKeyAndKeepsTheData)
{
    ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
    ASSERT_NE(makeColourPicklist(false, "green"), nullptr) << qPrintable(lastError());
    auto cols = columns();
    cols->Item("Colour")->setIsPicklist(false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    EXPECT_FALSE(hasTable(kColourList));
    EXPECT_FALSE(hasKey("FilesSearchData", kColourKey));
    EXPECT_EQ(counts("FilesSearchData", "Colour"), QStringList({"blue x5", "green x15", "red x10"}));
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = 'purple' WHERE " + q("FileId") + " = 1");

    // A deleted picklist column, keyword or not, takes its list along; the search table goes when
    // only keywords are left, though a list referred to it.
    cols = columns();
    cols->Item("Qty")->setIsPicklist(true);
    cols->Item("Qty")->setPicklistDefault("7");
    cols->Add("Tags", "", "", fcKeyword, 20, true, false, "none");
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    ASSERT_TRUE(hasKey("FilesSearchKeywordTags", "FK_PicklistFilesTags"));
    EXPECT_EQ(values("PicklistFilesTags", "Tags"), QStringList({"none"}));
    EXPECT_FALSE(testDb().exec("INSERT INTO " + q("FilesSearchKeywordTags") + " VALUES (1, 'other')").isEmpty());
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " VALUES (1, 'none')");

    cols = columns();
    cols->RemoveColumn("Colour");
    cols->RemoveColumn("Qty");
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    EXPECT_FALSE(hasTable("PicklistFilesQty"));
    EXPECT_FALSE(hasTable("FilesSearchData"));
    EXPECT_TRUE(hasTable("PicklistFilesTags"));

    cols = columns();
    cols->RemoveColumn("Tags");
    cols->Add("Other", "", "", fcText, 5, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    EXPECT_FALSE(hasTable("PicklistFilesTags"));
    EXPECT_FALSE(hasTable("FilesSearchKeywordTags"));
}

TEST_P(PicklistSaveTest, ANewSizeRemakesTheListForTheNewColumn)
{
    ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
    ASSERT_NE(makeColourPicklist(false, "green"), nullptr) << qPrintable(lastError());
    // A picklist object that has checked its keys once already makes the new list with its keys.
    auto cols = columns();
    const auto picklist = cols->Item("Colour")->PickList();
    ASSERT_TRUE(picklist->CheckForeignKeys());
    ASSERT_TRUE(picklist->KeysChecked());
    cols->Item("Colour")->setTextLengthInUI(30); // a new size drops the values with the old list
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    EXPECT_EQ(counts("FilesSearchData", "Colour"), QStringList({"green x30"}));
    EXPECT_EQ(values(kColourList, "Colour"), QStringList({"green"}));
    EXPECT_TRUE(hasKey("FilesSearchData", kColourKey));
}

/// A schema tool that refuses to tie data to a picklist.
class NoPicklistKeys : public SchemaTool {
public:
    bool CreateForeignKey(IProgress* progress, Catalog& catalog, const QString& table, const StructureKey& key) override
    {
        if (key.name.startsWith("FK_Picklist"))
            return false;
        return SchemaTool::CreateForeignKey(progress, catalog, table, key);
    }
};

TEST_P(PicklistSaveTest, ASaveThatFailsInTheMiddleOfAPicklistLeavesEverythingAsBefore)
{
    ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
    const QStringList colourBefore = counts("FilesSearchData", "Colour");

    // Making a list: it fails at the last step, after the values have taken the default.
    auto cols = columns();
    cols->Item("Colour")->setIsPicklist(true);
    cols->Item("Colour")->setPicklistDefault("green");
    cols->setSchemaTool(std::make_shared<NoPicklistKeys>());
    EXPECT_FALSE(cols->ColumnsSave(nullptr));
    EXPECT_EQ(counts("FilesSearchData", "Colour"), colourBefore);
    EXPECT_FALSE(hasTable(kColourList));
    EXPECT_FALSE(columns()->Item("Colour")->IsPicklist());
    EXPECT_EQ(db().transactionLevel(), 0);

    // The same collection saves once the tool works again.
    cols->setSchemaTool(nullptr);
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    ASSERT_TRUE(hasKey("FilesSearchData", kColourKey));

    // Changing a list: the keys are gone and the data changed by the time it fails.
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = NULL WHERE " + q("FileId") + " = 1");
    const QStringList dataBefore = counts("FilesSearchData", "Colour");
    const QStringList entriesBefore = values(kColourList, "Colour");
    cols = columns();
    cols->Item("Colour")->setPicklistDefault("yellow");
    cols->setSchemaTool(std::make_shared<NoPicklistKeys>());
    EXPECT_FALSE(cols->ColumnsSave(nullptr));
    EXPECT_EQ(counts("FilesSearchData", "Colour"), dataBefore);
    EXPECT_EQ(values(kColourList, "Colour"), entriesBefore);
    EXPECT_TRUE(hasKey("FilesSearchData", kColourKey));
    EXPECT_EQ(columns()->Item("Colour")->PicklistDefault(), "green");
    EXPECT_EQ(db().transactionLevel(), 0);
}

SD_INSTANTIATE_DATABASE_SUITE(PicklistSaveTest);

} // namespace
