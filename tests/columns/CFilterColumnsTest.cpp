#include "searchdata/CFilterColumns.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/Resources.h"
#include "support/FakeControls.h"
#include "support/SearchFixture.h"

#include <QProcess>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class CFilterColumnsTest : public SearchTest {
protected:
    /// Defines a text, an integer, a date and a keyword column on Files and saves them.
    std::shared_ptr<CFilterColumns> defineStandardSet()
    {
        auto cols = columns();
        if (!cols)
            return nullptr;
        cols->Add("Customer", "Customer name", "Who ordered it", fcText, 40, false, false);
        cols->Add("Qty", "", "", fcInteger32, 0, false, false);
        cols->Add("Due", "", "", fcDateTime, 0, false, false);
        cols->Add("Tags", "", "", fcKeyword, 30, false, false);
        EXPECT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(Diagnostics::instance().lastError().value_or(ErrorReport{}).text);
        return cols;
    }
    QStringList definedNames(const QString& table = "Files")
    {
        QStringList names;
        const auto cols = columns(table);
        for (const auto& c : *cols)
            names << c->Name();
        return names;
    }
};

TEST_P(CFilterColumnsTest, EachFailingOpenHasItsStatusInTheOrderOfTheTests)
{
    const auto structure = baseStructureOf("Files", {"FileId"});
    auto status = [&](std::shared_ptr<DatabaseHandler> h, std::shared_ptr<ISearchBaseTable> t, std::shared_ptr<Catalog> c,
                      std::shared_ptr<TableStructure> s) {
        CFilterColumns cols;
        cols.Setup(h, t, c, profile, 0, s);
        return cols.Status();
    };
    auto handler = testDb().handler();
    EXPECT_EQ(status(nullptr, files, catalog, structure), kvoFCSMissingDatabaseHandler);
    EXPECT_EQ(status(nullptr, nullptr, catalog, structure), kvoFCSMissingDatabaseHandler);
    EXPECT_EQ(status(handler, files, nullptr, structure), kvoFCSMissingDatabase);
    EXPECT_EQ(status(handler, nullptr, catalog, structure), kvoFCSMissingBaseTable);
    EXPECT_EQ(status(handler, files, catalog, nullptr), kvoFCSMissingBaseTable);
    EXPECT_EQ(status(handler, std::make_shared<TestBaseTable>("Nowhere"), catalog, structure), kvoFCSBaseTableNotDefined);
    EXPECT_EQ(status(handler, files, catalog, TableStructure::NewStructure("Files")), kvoFCSBaseTableMissingPrimaryIndex);
    EXPECT_EQ(status(handler, files, catalog, baseStructureOf("Files", {"FileId", "Name"})), kvoFSCBaseTablePrimaryIndexSegmented);
    EXPECT_EQ(status(handler, files, catalog, structure), kvoFCSNoColumnsDefined);

    auto filter = CCommon().CreateSearchFilterObject(handler, files, nullptr, profile, 0, structure);
    ASSERT_NE(filter, nullptr);
    EXPECT_EQ(filter->FilterColumns(), nullptr);
    EXPECT_FALSE(filter->Exists());
    filter->Configure(nullptr); // nothing to configure, and no failure either
}

TEST_P(CFilterColumnsTest, ABaseTableWithoutColumnsOpensEmptyAndGetsItsFirstColumns)
{
    auto filter = open();
    ASSERT_NE(filter->FilterColumns(), nullptr);
    EXPECT_EQ(filter->FilterColumns()->Count(), 0);
    EXPECT_FALSE(filter->Exists());

    ASSERT_NE(defineStandardSet(), nullptr);
    auto reopened = open();
    ASSERT_TRUE(reopened->Exists());
    EXPECT_EQ(reopened->FilterColumns()->Status(), kvoFCSSuccess);
    EXPECT_EQ(definedNames(), QStringList({"Customer", "Qty", "Due", "Tags"}));
    const auto customer = reopened->FilterColumns()->Item("Customer");
    EXPECT_EQ(customer->Caption(), "Customer name");
    EXPECT_EQ(customer->Description(), "Who ordered it");
    EXPECT_EQ(customer->TextLengthInUI(), 40);
    EXPECT_EQ(customer->Index(), 1);
    EXPECT_EQ(reopened->FilterColumns()->Item("Tags")->KeywordTable(), "FilesSearchKeywordTags");
}

TEST_P(CFilterColumnsTest, SavingMakesTheSearchTablesUnderTheirNameRules)
{
    ASSERT_NE(defineStandardSet(), nullptr);
    catalog->Refresh();
    const auto data = GetCatalogTable(*catalog, "FilesSearchData");
    ASSERT_NE(data, nullptr);
    QStringList names;
    for (const auto& c : data->columns)
        names << c.name;
    EXPECT_EQ(names, QStringList({"FileId", "Customer", "Qty", "Due"}));
    EXPECT_TRUE(GetTableKey(data, "UK_FilesSearchData").has_value());
    const auto keywords = GetCatalogTable(*catalog, "FilesSearchKeywordTags");
    ASSERT_NE(keywords, nullptr);
    EXPECT_EQ(GetTableKey(keywords, "UK_FilesSearchKeywordTags")->columns, QStringList({"FileId", "Tags"}));
    EXPECT_TRUE(GetTableIndex(keywords, "IX_FilesSearchKeywordTags").has_value());
    EXPECT_EQ(GetTableColumn(keywords, "Tags")->definedSize, 255);
    EXPECT_FALSE(GetTableColumn(keywords, "Tags")->nullable);

    // Filled at creation: one row per base record; keyword tables start empty.
    EXPECT_EQ(rows("FilesSearchData"), rowCount);
    EXPECT_EQ(rows("FilesSearchKeywordTags"), 0);
    // Deleting a base record takes its search rows with it.
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " VALUES (1, 'red')");
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("Files") + " WHERE " + q("FileId") + " = 1");
    EXPECT_EQ(rows("FilesSearchData"), rowCount - 1);
    EXPECT_EQ(rows("FilesSearchKeywordTags"), 0);
}

TEST_P(CFilterColumnsTest, TheFillTakesOnlyTheRecordsTheHostSelects)
{
    files->criteria = "SELECT " + q("FileId") + " FROM " + q("Files") + " WHERE " + q("Archived") + " = " + db().SqlBoolean(false);
    auto cols = columns();
    cols->Add("Customer", "", "", fcText, 20, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    EXPECT_EQ(rows("FilesSearchData"), rowCount - rowCount / 3);
    EXPECT_EQ(rows("FilesSearchData", q("FileId") + " = 3"), 0);
}

TEST_P(CFilterColumnsTest, TwoBaseTablesKeepTheirSameNamedColumnsApart)
{
    makeBaseTable("Packets", "PacketId", 5);
    auto fileCols = columns();
    fileCols->Add("Customer", "For files", "", fcText, 20, false, false);
    ASSERT_TRUE(fileCols->ColumnsSave(nullptr));
    auto packetCols = columns("Packets", "PacketId");
    packetCols->Add("Customer", "For packets", "", fcInteger16, 0, false, false);
    packetCols->Add("OpNo", "", "", fcText, 10, false, false);
    ASSERT_TRUE(packetCols->ColumnsSave(nullptr));

    EXPECT_EQ(columns()->Item("Customer")->Caption(), "For files");
    EXPECT_EQ(columns()->Count(), 1);
    const auto again = columns("Packets", "PacketId");
    EXPECT_EQ(again->Item("Customer")->ColumnType(), fcInteger16);
    EXPECT_EQ(again->Count(), 2);
    EXPECT_EQ(rows("PacketsSearchData"), 5);
}

TEST_P(CFilterColumnsTest, ItemFindsByPositionNameAndCaption)
{
    auto cols = defineStandardSet();
    ASSERT_NE(cols, nullptr);
    EXPECT_EQ(cols->Item(2)->Name(), "Qty");
    EXPECT_EQ(cols->Item(Value(2.0))->Name(), "Qty");
    EXPECT_EQ(cols->Item("qty")->Name(), "Qty");
    EXPECT_EQ(cols->Item("CUSTOMER NAME")->Name(), "Customer");
    EXPECT_EQ(cols->Item(""), nullptr);
    EXPECT_EQ(cols->Item(0), nullptr);
    EXPECT_EQ(cols->Item(5), nullptr);
    EXPECT_EQ(cols->Item(Value::null()), nullptr);
    // A name wins over a caption.
    cols->Add("Other", "Qty", "", fcText, 5, false, false);
    EXPECT_EQ(cols->Item("Qty")->Name(), "Qty");
    EXPECT_EQ(cols->Add("customer", "", "", fcText, 5, false, false), nullptr);
}

TEST_P(CFilterColumnsTest, MovesStopAtTheEndsAndReachTheTableAtTheSave)
{
    auto cols = defineStandardSet();
    ASSERT_NE(cols, nullptr);
    EXPECT_FALSE(cols->MoveColumnUp(cols->Item(1)));
    EXPECT_FALSE(cols->MoveColumnDown(cols->Item(4)));
    EXPECT_TRUE(cols->MoveColumnDown(cols->Item("Customer")));
    EXPECT_TRUE(cols->MoveColumnUp(cols->Item("Tags")));
    EXPECT_EQ(cols->Item(1)->Name(), "Qty");
    EXPECT_EQ(cols->Item("Customer")->Index(), 2);
    EXPECT_EQ(cols->Item("Tags")->Index(), 3);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    EXPECT_EQ(definedNames(), QStringList({"Qty", "Customer", "Tags", "Due"}));
}

TEST_P(CFilterColumnsTest, AChangedTypeDestroysValuesAndACaptionChangeKeepsThem)
{
    ASSERT_NE(defineStandardSet(), nullptr);
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'Acme', " + q("Qty") + " = 7");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " VALUES (2, 'red')");

    auto cols = columns();
    cols->Item("Customer")->setCaption("Client");
    cols->Item("Tags")->setDescription("colours");
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    EXPECT_EQ(rows("FilesSearchData", q("Customer") + " = 'Acme'"), rowCount);
    EXPECT_EQ(rows("FilesSearchKeywordTags"), 1);
    EXPECT_EQ(columns()->Item("Customer")->Caption(), "Client");

    cols = columns();
    cols->Item("Qty")->setColumnType(fcDouble);
    cols->Item("Tags")->setTextLengthInUI(50);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    EXPECT_EQ(rows("FilesSearchData", q("Qty") + " = 7"), 0);
    EXPECT_EQ(rows("FilesSearchData", q("Customer") + " = 'Acme'"), rowCount);
    EXPECT_EQ(rows("FilesSearchKeywordTags"), 0);
    EXPECT_EQ(columns()->Item("Qty")->ColumnType(), fcDouble);
}

TEST_P(CFilterColumnsTest, RemovingAColumnDropsItsDataAndKeywordsOnlyDropTheSearchTable)
{
    ASSERT_NE(defineStandardSet(), nullptr);
    auto cols = columns();
    cols->RemoveColumn("Qty");
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    catalog->Refresh();
    EXPECT_FALSE(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Qty").has_value());
    EXPECT_EQ(definedNames(), QStringList({"Customer", "Due", "Tags"}));

    cols = columns();
    cols->RemoveColumn("Customer");
    cols->RemoveColumn("Due");
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    catalog->Refresh();
    EXPECT_EQ(GetCatalogTable(*catalog, "FilesSearchData"), nullptr);
    EXPECT_NE(GetCatalogTable(*catalog, "FilesSearchKeywordTags"), nullptr);
    auto left = open();
    EXPECT_EQ(left->FilterColumns()->Count(), 1);
    EXPECT_EQ(left->FilterColumns()->Item(1)->Index(), 1);
}

TEST_P(CFilterColumnsTest, ANewNoteColumnWithADefaultFillsExistingRows)
{
    ASSERT_NE(defineStandardSet(), nullptr);
    auto cols = columns();
    auto note = cols->Add("Remarks", "", "", fcNote, 255, false, true, "O'Neil's note");
    note->setIsNew(true);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    EXPECT_EQ(rows("FilesSearchData", q("Remarks") + " = " + db().SqlQuote("O'Neil's note")), rowCount);
}

TEST_P(CFilterColumnsTest, DefinitionsOfAnEarlierVersionStillLoad)
{
    // The definition table as an earlier version made it: no date fields, no size, no merge name.
    const QString text = db().dialect().declaredType(adVarWChar, 0);
    const QString flag = db().dialect().declaredType(adBoolean, 0);
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("SearchColumnConfiguration") + " (" + q("BaseTable") + " " + text + " NOT NULL, " +
                                q("Position") + " INTEGER NOT NULL, " + q("Name") + " " + text + " NOT NULL, " + q("Type") +
                                " INTEGER, " + q("Caption") + " " + text + ", " + q("Description") + " " + text + ", " + q("IsPicklist") +
                                " " + flag + ", " + q("PicklistAllowBlanks") + " " + flag + ", " + q("PicklistDefault") + " " + text + ")");
    const QString f = db().SqlBoolean(false);
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("SearchColumnConfiguration") + " VALUES ('Files', 1, 'Customer', 1, NULL, NULL, " + f +
                                ", " + f + ", NULL)");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("SearchColumnConfiguration") + " VALUES ('FILES', 2, 'Due', 6, 'Due date', '', " + f +
                                ", " + f + ", 'not a date')");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("SearchColumnConfiguration") + " VALUES ('Other', 1, 'Elsewhere', 1, NULL, NULL, " + f +
                                ", " + f + ", NULL)");
    auto filter = open();
    ASSERT_NE(filter->FilterColumns(), nullptr);
    const auto cols = filter->FilterColumns();
    EXPECT_TRUE(cols->ConvertRequired());
    ASSERT_EQ(cols->Count(), 2);
    EXPECT_EQ(cols->Item(1)->TextLengthInUI(), 0);
    EXPECT_EQ(cols->Item(1)->Caption(), "");
    EXPECT_EQ(cols->Item("Due")->PicklistDefault(), "");
    EXPECT_FALSE(cols->Item(1)->IsMergeColumn());
}

TEST_P(CFilterColumnsTest, ADefinitionTableMissingOneDateFieldKeepsTheOthers)
{
    auto cols = columns();
    cols->Add("Due", "", "", fcDateTime, 0, false, false, {}, fcDTDM_Now);
    cols->Add("Seen", "", "", fcDateTime, 0, false, false, {}, fcDTDM_Configure, Value(QDateTime(QDate(2003, 7, 4), QTime(0, 0))));
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    ASSERT_TRUE(SchemaTool().DropColumn(nullptr, *catalog, CFilterColumns::definitionTableName(), "DisableEditDateTime"));

    cols = open()->FilterColumns();
    ASSERT_NE(cols, nullptr);
    EXPECT_TRUE(cols->ConvertRequired());
    EXPECT_EQ(cols->Item("Due")->DateTimeDefaultMode(), fcDTDM_Now);
    EXPECT_FALSE(cols->Item("Due")->DisableEditDateTime());
    EXPECT_EQ(cols->Item("Seen")->DateTimeDefaultMode(), fcDTDM_Configure);
    EXPECT_EQ(cols->Item("Seen")->DateTimeDefaultValue(), Value(QDateTime(QDate(2003, 7, 4), QTime(0, 0))));
}

TEST_P(CFilterColumnsTest, ADateDefaultIsKeptAndNormalised)
{
    auto cols = columns();
    cols->Add("Due", "", "", fcDateTime, 0, true, false, "2003-07-04", fcDTDM_Configure,
              Value(QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6))), true);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    const auto due = columns()->Item("Due");
    EXPECT_EQ(due->PicklistDefault(), DateToText(QDateTime(QDate(2003, 7, 4), QTime(0, 0))));
    EXPECT_EQ(due->DateTimeDefaultValue(), Value(QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6))));
    EXPECT_TRUE(due->DisableEditDateTime());
    EXPECT_FALSE(columns()->ConvertRequired());
}

/// A schema tool that refuses to add to the table of one column.
class FailingSchemaTool : public SchemaTool {
public:
    explicit FailingSchemaTool(QString failOn) : m_failOn(std::move(failOn)) {}
    bool ApplyStructure(IProgress* progress, Catalog& catalog, const TableStructure& structure) override
    {
        if (structure.name() == m_failOn)
            return false;
        return SchemaTool::ApplyStructure(progress, catalog, structure);
    }

private:
    QString m_failOn;
};

TEST_P(CFilterColumnsTest, AFailedSaveLeavesDefinitionsTablesAndDataAsBefore)
{
    ASSERT_NE(defineStandardSet(), nullptr);
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Qty") + " = 7");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " VALUES (2, 'red')");

    auto cols = columns();
    cols->Item("Qty")->setColumnType(fcText);   // destroys Qty's values if it went through
    cols->RemoveColumn("Due");
    cols->Add("Colour", "", "", fcKeyword, 20, false, false);
    cols->setSchemaTool(std::make_shared<FailingSchemaTool>("FilesSearchKeywordColour"));
    EXPECT_FALSE(cols->ColumnsSave(nullptr));

    EXPECT_EQ(definedNames(), QStringList({"Customer", "Qty", "Due", "Tags"}));
    EXPECT_EQ(columns()->Item("Qty")->ColumnType(), fcInteger32);
    EXPECT_EQ(rows("FilesSearchData", q("Qty") + " = 7"), rowCount);
    EXPECT_EQ(rows("FilesSearchKeywordTags"), 1);
    catalog->Refresh();
    EXPECT_EQ(GetCatalogTable(*catalog, "FilesSearchKeywordColour"), nullptr);
    EXPECT_TRUE(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Due").has_value());
    EXPECT_EQ(db().transactionLevel(), 0);

    // The same collection saves once the tool works again.
    cols->setSchemaTool(nullptr);
    EXPECT_TRUE(cols->ColumnsSave(nullptr));
    EXPECT_EQ(definedNames(), QStringList({"Customer", "Qty", "Tags", "Colour"}));
}

TEST_P(CFilterColumnsTest, StructureOfAColumnFollowsItsType)
{
    auto cols = columns();
    auto note = cols->Add("Remarks", "", "", fcNote, 500, false, true, "none");
    auto tags = cols->Add("Tags", "", "", fcKeyword, 20, false, false);
    auto flag = cols->Add("Done", "", "", fcBoolean, 0, false, false);
    const QDateTime ts(QDate(2026, 1, 2), QTime(3, 4, 5));

    const auto s = cols->MyStructureDefault(*note, ts);
    ASSERT_NE(s, nullptr);
    ASSERT_TRUE(s->fill().has_value());
    const auto remarks = s->ColumnNamed("Remarks");
    EXPECT_EQ(remarks->size, 255);
    EXPECT_TRUE(remarks->nullable);
    EXPECT_EQ(remarks->defaultText, "'none'");
    EXPECT_FALSE(s->ColumnNamed("FileId")->nullable);

    const auto k = cols->MyStructureDefault(*tags, ts);
    EXPECT_FALSE(k->fill().has_value());
    EXPECT_FALSE(k->ColumnNamed("Tags")->nullable);
    EXPECT_FALSE(k->ColumnNamed("Tags")->hasDefault);
    EXPECT_EQ(k->KeyNamed("UK_FilesSearchKeywordTags")->columns, QStringList({"FileId", "Tags"}));

    const auto b = cols->MyStructureDefault(*flag, ts);
    EXPECT_EQ(b->ColumnNamed("Done")->defaultText, db().SqlBoolean(false));
    const auto fk = std::find_if(b->StructureKeys().begin(), b->StructureKeys().end(), [](const StructureKey& key) { return key.kind == kkForeign; });
    ASSERT_NE(fk, b->StructureKeys().end());
    EXPECT_EQ(fk->relatedTable, "Files");
    EXPECT_TRUE(fk->cascade);

    EXPECT_EQ(cols->SearchKeyword(nullptr), cols->SearchKeyword(note.get()));
    EXPECT_EQ(cols->Unknown_(tags.get(), 3), "Tags_3");
    EXPECT_EQ(cols->Unknown_(nullptr, 3), "Unknown_3");
    EXPECT_EQ(cols->MakeLinkColumn()->name, "MergeName");
}

TEST_P(CFilterColumnsTest, OpenSearchTableReadsOrMakesTheRowOfAnEntry)
{
    auto cols = columns();
    cols->Add("Customer", "", "", fcText, 20, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData"));

    struct Entry : ISearchBaseEntry {
        qint32 Id() const override { return 4; }
    } entry;
    const QString seek = q("FileId") + " = 4";
    int mode = 0;
    auto rs = cols->OpenSearchTable(&entry, "FilesSearchData", seek, mode, false);
    ASSERT_NE(rs, nullptr);
    EXPECT_TRUE(rs->EndOfFile());
    mode = 1;
    EXPECT_EQ(cols->OpenSearchTable(&entry, "FilesSearchData", seek, mode, false), nullptr);
    rs = cols->OpenSearchTable(&entry, "FilesSearchData", seek, mode, true);
    ASSERT_NE(rs, nullptr);
    EXPECT_EQ(rs->field("FileId").toInt32().value(), 4);
    EXPECT_EQ(rows("FilesSearchData"), 1);
    mode = 2;
    EXPECT_EQ(cols->OpenSearchTable(&entry, "FilesSearchData", seek, mode, true), nullptr);
}

TEST_P(CFilterColumnsTest, ASingleDefaultIsOneValueWhereverItIsWritten)
{
    auto cols = columns();
    cols->Add("Grade", "", "", fcSingle, 0, true, false, "1.1");
    ASSERT_TRUE(cols->ColumnsSave(nullptr)); // a new search table, filled at creation

    // A record that came later gets its row from the population check, another one from its host.
    const QString base = q("Files");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + base + " (" + q("FileId") + ") VALUES (31)");
    cols = columns();
    EXPECT_EQ(cols->StartProcessDataReportProgress(nullptr, false, 1, QDateTime::currentDateTime()), 0);
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + base + " (" + q("FileId") + ") VALUES (32)");
    struct Entry : ISearchBaseEntry {
        qint32 Id() const override { return 32; }
    } entry;
    EXPECT_TRUE(cols->InitializeSearchData(&entry));

    EXPECT_EQ(testDb().scalar("SELECT COUNT(DISTINCT " + q("Grade") + ") FROM " + q("FilesSearchData")).toInt(), 1);
    EXPECT_EQ(rows("PicklistFilesGrade"), 1);
    CFilterTerms terms(cols);
    terms.Add(kvoCJ_None, "FilesSearchData", "Grade", kvoCC_Numeric, kvoOP_Equals, "1.1");
    EXPECT_EQ(rows("Files", terms.SQLString()), rowCount + 2);
}

TEST_P(CFilterColumnsTest, NewColumnNamesTakeLettersDigitsAndUnderscoreOnlyAndNotTheKeywordTablesOwn)
{
    const std::pair<const char*, int> refused[] = {{"Two words", 9202}, {"Cust%1", 9202}, {"KeywordOrder", 9204}, {"keywordORDER", 9204}};
    for (const auto& [name, text] : refused) {
        SCOPED_TRACE(name);
        auto cols = columns();
        EXPECT_EQ(cols->Add(name, "", "", fcKeyword, 20, false, false), nullptr);
        EXPECT_EQ(Diagnostics::instance().lastError().value_or(ErrorReport{}).text, GetResourceText(text, {name}));
        EXPECT_EQ(cols->Count(), 0);

        // Renamed after it was added, before its first save.
        auto column = cols->Add("Customer", "", "", fcKeyword, 20, false, false);
        ASSERT_NE(column, nullptr);
        column->setName(name);
        EXPECT_FALSE(cols->ColumnsSave(nullptr));
        EXPECT_EQ(Diagnostics::instance().lastError().value_or(ErrorReport{}).text, GetResourceText(text, {name}));
        EXPECT_TRUE(definedNames().isEmpty());
    }
}

TEST_P(CFilterColumnsTest, OddNamesAlreadyStoredStillLoadFilterAndSave)
{
    // Stored by an earlier version, which let these names through.
    ASSERT_EQ(columns()->Count(), 0); // makes the definition table
    const QString definitions = "INSERT INTO " + q(CFilterColumns::definitionTableName()) + " (" + q("BaseTable") + ", " + q("Position")
                                + ", " + q("Name") + ", " + q("Type") + ", " + q("Size") + ") VALUES ";
    SD_ASSERT_SQL(testDb(), definitions + "('Files', 1, 'Tag%1', 0, 30)");
    SD_ASSERT_SQL(testDb(), definitions + "('Files', 2, 'Size %2', 1, 20)");
    auto cols = columns();
    ASSERT_EQ(cols->Count(), 2);
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(Diagnostics::instance().lastError().value_or(ErrorReport{}).text);

    struct Entry : ISearchBaseEntry {
        qint32 Id() const override { return 3; }
    } entry;
    FakeComboBox tags;
    tags.items = {"c", "a", "b"};
    FakeTextBox size;
    size.text = "XL";
    cols->Item("Tag%1")->setMyControl(&tags);
    cols->Item("Size %2")->setMyControl(&size);
    for (const auto& c : *cols)
        c->setIsValid(true);
    ASSERT_TRUE(cols->SaveDataFromEditControl(&entry));

    auto expectLoaded = [&] {
        auto loaded = columns();
        loaded->GetData(&entry);
        EXPECT_EQ(loaded->Item("Tag%1")->SavedKeys(), QStringList({"c", "a", "b"}));
        EXPECT_EQ(loaded->Item("Size %2")->SavedValue(), Value("XL"));
        CFilterTerms terms(loaded);
        terms.Add(kvoCJ_None, "FilesSearchKeywordTag%1", "Tag%1", kvoCC_Keyword, kvoOP_Includes, "a");
        terms.Add(kvoCJ_And, "FilesSearchData", "Size %2", kvoCC_Text, kvoOP_Equals, "XL");
        EXPECT_EQ(rows("Files", terms.SQLString()), 1);
    };
    expectLoaded();

    // A save of the definitions keeps the columns, their tables and their values.
    cols = columns();
    cols->Item("Size %2")->setCaption("Size");
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(Diagnostics::instance().lastError().value_or(ErrorReport{}).text);
    expectLoaded();
}

TEST_P(CFilterColumnsTest, AProcessKilledInTheMiddleOfASaveChangesNothing)
{
    ASSERT_NE(defineStandardSet(), nullptr);
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Qty") + " = 7");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " VALUES (2, 'red')");

    QProcess child;
    child.start(SEARCHDATA_SAVE_CHILD, {testDb().location(), "12"});
    ASSERT_TRUE(child.waitForStarted());
    QByteArray said;
    while (!said.contains("in the middle") && child.waitForReadyRead(20000))
        said += child.readAllStandardOutput();
    ASSERT_TRUE(said.contains("in the middle")) << said.constData() << child.readAllStandardError().constData();
    child.kill();
    ASSERT_TRUE(child.waitForFinished());

    EXPECT_EQ(definedNames(), QStringList({"Customer", "Qty", "Due", "Tags"}));
    EXPECT_EQ(rows("FilesSearchData", q("Qty") + " = 7"), rowCount);
    EXPECT_EQ(rows("FilesSearchKeywordTags"), 1);
    catalog->Refresh();
    EXPECT_EQ(GetCatalogTable(*catalog, "FilesSearchKeywordExtra2"), nullptr);
    EXPECT_FALSE(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Extra1").has_value());
}

SD_INSTANTIATE_DATABASE_SUITE(CFilterColumnsTest);

} // namespace
