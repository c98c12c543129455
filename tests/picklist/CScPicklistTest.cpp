// The picklist object on its own: set-up, entries, keys, the schema check, the dialogs.

#include "picklist/PicklistFixture.h"
#include "searchdata/Resources.h"
#include "searchdata/SchemaTool.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

class CScPicklistTest : public PicklistTest {
protected:
    /// Colour as a picklist with the default "green" and no blanks: entries blue, green, red.
    std::shared_ptr<CFilterColumns> colourPicklist()
    {
        defineColourAndQty();
        auto cols = makeColourPicklist(false, "green");
        EXPECT_NE(cols, nullptr) << qPrintable(lastError());
        return cols;
    }
    const QString list = "PicklistFilesColour";
};

TEST_P(CScPicklistTest, WithoutItsSetupItWarnsWithTheTraceAndChangesNothing)
{
    CScPicklist bare;
    EXPECT_FALSE(bare.ValidateSetup());
    ASSERT_EQ(ui->requests().size(), 1);
    EXPECT_TRUE(ui->requests().first().startsWith("message warning: " + Diagnostics::instance().caption() + ": " +
                                                  GetResourceText(9201) + "\n\n"));

    // A column and a connection, but no base table.
    ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
    auto cols = columns();
    auto colour = cols->Item("Colour");
    colour->setIsPicklist(true);
    colour->setPicklistDefault("green");
    CScPicklist partial;
    partial.Init(testDb().handler(), nullptr, colour);
    ui->clearRequests();
    EXPECT_FALSE(partial.CreatePicklist());
    ASSERT_EQ(ui->requests().size(), 1);
    EXPECT_TRUE(ui->requests().first().contains("CScPicklist.CreatePicklist")) << qPrintable(ui->requests().first());
    EXPECT_FALSE(partial.ForceNullsAndBlanksToDefault());
    EXPECT_FALSE(partial.SaveAdditions({"green"}));
    partial.Edit(nullptr);
    for (const QString& request : ui->requests())
        EXPECT_TRUE(request.startsWith("message warning")) << qPrintable(request);
    EXPECT_FALSE(hasTable(list));
    EXPECT_EQ(counts("FilesSearchData", "Colour"), QStringList({" x5", "<null> x10", "blue x5", "red x10"}));

    // The column owns its picklist, which does not keep the column alive.
    std::shared_ptr<CScPicklist> orphan = colour->PickList();
    ASSERT_NE(orphan, nullptr);
    EXPECT_EQ(orphan, colour->PickList());
    EXPECT_EQ(orphan->column(), colour);
    const std::weak_ptr<CFilterColumn> watch = colour;
    colour.reset();
    cols.reset();
    EXPECT_TRUE(watch.expired());
    ui->clearRequests();
    EXPECT_FALSE(orphan->ValidateSetup());
    EXPECT_EQ(ui->requests().size(), 1);
}

TEST_P(CScPicklistTest, SaveAdditionsAddsVisibleEntriesAndLeavesThoseThatAreThere)
{
    auto cols = colourPicklist();
    ASSERT_NE(cols, nullptr);
    SD_ASSERT_SQL(testDb(), "UPDATE " + q(list) + " SET " + q("HideEntry") + " = " + db().SqlBoolean(true) + " WHERE " + q("Colour") + " = 'blue'");
    const auto picklist = cols->Item("Colour")->PickList();
    EXPECT_TRUE(picklist->SaveAdditions({" yellow ", "blue", "yellow", "red"})) << qPrintable(lastError());
    EXPECT_EQ(values(list, "Colour"), QStringList({"blue", "green", "red", "yellow"}));
    EXPECT_EQ(hiddenEntries(list, "Colour"), QStringList({"blue"}));

    // A numeric list takes numbers only, and one number once however it is written.
    cols->Item("Qty")->setIsPicklist(true);
    cols->Item("Qty")->setPicklistDefault("3");
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    EXPECT_TRUE(cols->Item("Qty")->PickList()->SaveAdditions({"abc", "8", "8.0", ""}));
    EXPECT_EQ(values("PicklistFilesQty", "Qty"), QStringList({"3", "7", "8"}));
}

TEST_P(CScPicklistTest, SaveAdditionsAddsAllOrNothing)
{
    auto cols = colourPicklist();
    ASSERT_NE(cols, nullptr);
    if (GetParam() == DbKind::SQLite) {
        SD_ASSERT_SQL(testDb(), "CREATE TRIGGER refuse_bad BEFORE INSERT ON " + q(list) + " WHEN NEW." + q("Colour") +
                                    " = 'bad' BEGIN SELECT RAISE(ABORT, 'refused'); END");
    } else {
        SD_ASSERT_SQL(testDb(), "CREATE FUNCTION refuse_bad() RETURNS trigger AS $$ BEGIN IF NEW." + q("Colour") +
                                    " = 'bad' THEN RAISE EXCEPTION 'refused'; END IF; RETURN NEW; END $$ LANGUAGE plpgsql");
        SD_ASSERT_SQL(testDb(), "CREATE TRIGGER refuse_bad BEFORE INSERT ON " + q(list) + " FOR EACH ROW EXECUTE FUNCTION refuse_bad()");
    }
    const auto picklist = cols->Item("Colour")->PickList();
    EXPECT_FALSE(picklist->SaveAdditions({"new1", "bad", "new2"}));
    EXPECT_EQ(values(list, "Colour"), QStringList({"blue", "green", "red"}));
    EXPECT_EQ(db().transactionLevel(), 0);
    EXPECT_TRUE(picklist->SaveAdditions({"new1", "new2"}));
    EXPECT_EQ(values(list, "Colour"), QStringList({"blue", "green", "new1", "new2", "red"}));
}

TEST_P(CScPicklistTest, AnEntryThatCannotBeLookedForIsLeftOutAndTheOthersAreAdded)
{
    auto cols = colourPicklist();
    ASSERT_NE(cols, nullptr);
    const auto picklist = cols->Item("Colour")->PickList();
    Diagnostics::instance().clearReports();
    // Neither database takes a text with a null character in a statement.
    EXPECT_TRUE(picklist->SaveAdditions({"teal", QString("bad") + QChar(0) + "x", "plum"})) << qPrintable(lastError());
    EXPECT_EQ(values(list, "Colour"), QStringList({"blue", "green", "plum", "red", "teal"}));
    EXPECT_GE(Diagnostics::instance().reportCount(), 1);
    EXPECT_EQ(db().transactionLevel(), 0);
}

TEST_P(CScPicklistTest, TheDefaultEntryIsMadeOnlyWhenTheSettingsNeedOne)
{
    auto cols = colourPicklist();
    ASSERT_NE(cols, nullptr);
    auto colour = cols->Item("Colour");
    const auto picklist = colour->PickList();
    EXPECT_TRUE(picklist->GuaranteeDefaultEntryExists());
    EXPECT_EQ(values(list, "Colour"), QStringList({"blue", "green", "red"}));

    colour->setPicklistDefault(" white ");
    EXPECT_TRUE(picklist->GuaranteeDefaultEntryExists());
    EXPECT_EQ(values(list, "Colour"), QStringList({"blue", "green", "red", "white"}));

    // An empty default needs an entry only where blanks are not allowed; then it is the blank.
    colour->setPicklistDefault("");
    colour->setPicklistAllowBlanks(true);
    EXPECT_TRUE(picklist->GuaranteeDefaultEntryExists());
    EXPECT_EQ(values(list, "Colour").size(), 4);
    colour->setPicklistAllowBlanks(false);
    EXPECT_TRUE(picklist->GuaranteeDefaultEntryExists());
    EXPECT_EQ(values(list, "Colour"), QStringList({"", "blue", "green", "red", "white"}));

    // Not stored, not allowed: the blank entry goes again.
    EXPECT_TRUE(picklist->CheckAllowBlanks());
    EXPECT_EQ(values(list, "Colour"), QStringList({"blue", "green", "red", "white"}));
}

TEST_P(CScPicklistTest, CheckForeignKeysRunsOnceInTheLifeOfAnObject)
{
    auto cols = colourPicklist();
    ASSERT_NE(cols, nullptr);
    const auto first = cols->Item("Colour")->PickList();
    ASSERT_TRUE(hasKey("FilesSearchData", "FK_PicklistFilesColour"));
    ASSERT_TRUE(first->CheckForeignKeys());
    ASSERT_TRUE(first->KeysChecked());

    // The key goes behind the object's back: the object has checked, and does not look again.
    ASSERT_TRUE(SchemaTool().DropTableKeys(nullptr, *catalog, list));
    EXPECT_TRUE(first->CheckForeignKeys());
    EXPECT_FALSE(hasKey("FilesSearchData", "FK_PicklistFilesColour"));

    // Another object looks once. (Its column must live: the picklist refers to it weakly.)
    const auto again = columns();
    const auto second = again->Item("Colour")->PickList();
    EXPECT_FALSE(second->KeysChecked());
    EXPECT_TRUE(second->CheckForeignKeys());
    EXPECT_TRUE(hasKey("FilesSearchData", "FK_PicklistFilesColour"));
    ASSERT_TRUE(SchemaTool().DropTableKeys(nullptr, *catalog, list));
    EXPECT_TRUE(second->CheckForeignKeys());
    EXPECT_FALSE(hasKey("FilesSearchData", "FK_PicklistFilesColour"));
}

TEST_P(CScPicklistTest, TheSchemaCheckAsksOrRepairsByMode)
{
    auto cols = colourPicklist();
    ASSERT_NE(cols, nullptr);
    int answer = 0;
    QStringList asked;
    testDb().handler()->setQueryConversion([&](const QString&, const QString& table, int) {
        asked << table;
        return answer;
    });
    // A table of an earlier version, without the hide field.
    ASSERT_TRUE(SchemaTool().DropColumn(nullptr, *catalog, list, "HideEntry"));
    const auto fresh = columns();
    const auto picklist = fresh->Item("Colour")->PickList();

    // Mode 0 asks: answers 1, 3, 4 and 5 leave the table alone; 2 and answers outside 1 to 5 go on.
    // Other modes add the field without asking.
    struct Case {
        int mode;
        int answer;
        int result;
        bool added;
    };
    for (const Case& c : {Case{0, 3, 3, false}, Case{0, 6, 0, true}, Case{0, 2, 0, true}, Case{2, 3, 0, true}}) {
        SCOPED_TRACE(QString("mode %1, answer %2").arg(c.mode).arg(c.answer).toStdString());
        answer = c.answer;
        asked.clear();
        EXPECT_EQ(picklist->CreateHideEntryField(nullptr, c.mode), c.result);
        EXPECT_EQ(asked.size(), c.mode == 0 ? 1 : 0);
        EXPECT_EQ(GetTableColumn(GetCatalogTable(*catalog, list), "HideEntry").has_value(), c.added);
        if (c.added) {
            EXPECT_EQ(values(list, "Colour", q("HideEntry") + " = " + db().SqlBoolean(false)).size(), 3);
            ASSERT_TRUE(SchemaTool().DropColumn(nullptr, *catalog, list, "HideEntry"));
        }
    }

    // A missing table: mode 0 asks, an answer of 1 to 5 ends the check, another one makes the table;
    // mode 1 makes it without asking, and other modes leave it missing.
    ASSERT_TRUE(picklist->DestroyPicklist());
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Colour") + " = 'mauve' WHERE " + q("FileId") + " = 1");
    answer = 2;
    asked.clear();
    EXPECT_EQ(picklist->CheckTable(nullptr, 0), 2);
    EXPECT_EQ(asked.size(), 1);
    EXPECT_FALSE(hasTable(list));
    EXPECT_EQ(picklist->CheckTable(nullptr, 2), 0);
    EXPECT_FALSE(hasTable(list));
    for (int mode : {0, 1}) {
        answer = 6;
        asked.clear();
        EXPECT_EQ(picklist->CheckTable(nullptr, mode), 0);
        EXPECT_EQ(asked.size(), mode == 0 ? 1 : 0);
        EXPECT_EQ(values(list, "Colour"), QStringList({"blue", "green", "mauve", "red"}));
        EXPECT_TRUE(hasKey("FilesSearchData", "FK_PicklistFilesColour"));
        ASSERT_TRUE(picklist->DestroyPicklist());
    }
    EXPECT_FALSE(Diagnostics::instance().ConversionFailed());
}

/// Headless services that also say which picklist a dialog was opened for.
class NamingUi : public HeadlessUiServices {
public:
    void OpenPicklistDialog(CScPicklist& picklist, const IFormInfo* owner) override
    {
        HeadlessUiServices::OpenPicklistDialog(picklist, owner);
        opened << picklist.Picklist();
    }
    QStringList opened;
};

TEST_P(CScPicklistTest, EditPicklistsOpensTheDialogThatFitsTheCount)
{
    auto naming = std::make_shared<NamingUi>();
    UiServices::install(naming);
    auto cols = columns();
    cols->Add("Plain", "", "", fcText, 10, false, false);
    EXPECT_FALSE(cols->HasPicklists());
    cols->EditPicklists(nullptr);
    EXPECT_TRUE(naming->requests().isEmpty());

    cols->Add("Size", "", "", fcInteger16, 0, true, false, "1");
    EXPECT_TRUE(cols->HasPicklists());
    cols->EditPicklists(nullptr);
    EXPECT_EQ(naming->requests(), QStringList({"picklist"}));
    EXPECT_EQ(naming->opened, QStringList({"PicklistFilesSize"}));

    cols->Add("Shade", "", "", fcText, 10, true, true);
    naming->clearRequests();
    cols->EditPicklists(nullptr);
    EXPECT_EQ(naming->requests(), QStringList({"picklist choice"}));
}

SD_INSTANTIATE_DATABASE_SUITE(CScPicklistTest);

} // namespace
