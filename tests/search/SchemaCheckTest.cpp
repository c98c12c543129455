#include "searchdata/CFilterColumns.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/SchemaTool.h"
#include "search/CheckTestSupport.h"
#include "support/SearchFixture.h"

#include <QFile>
#include <QSqlQuery>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// A schema tool whose column repairs fail for one column.
class FailingRepairs : public SchemaTool {
public:
    explicit FailingRepairs(QString column) : m_column(std::move(column)) {}
    bool RepairColumn(IProgress* progress, Catalog& catalog, const QString& table, const StructureColumn& column) override
    {
        if (column.name == m_column)
            return false;
        return SchemaTool::RepairColumn(progress, catalog, table, column);
    }

private:
    QString m_column;
};

/// A schema tool that cannot convert the definition table.
class FailingConversion : public SchemaTool {
public:
    bool ApplyStructure(IProgress* progress, Catalog& catalog, const TableStructure& structure) override
    {
        if (structure.name() == CFilterColumns::definitionTableName())
            return false;
        return SchemaTool::ApplyStructure(progress, catalog, structure);
    }
};

/// A nullable text field of `size` without default.
StructureColumn text(const QString& name, int size)
{
    StructureColumn c;
    c.name = name;
    c.type = adVarWChar;
    c.size = size;
    return c;
}

/// Files with Customer (text), Qty (integer) and the keyword column Tags, saved; a host that
/// answers the questions of the check as scripted.
class SchemaCheckTest : public SearchTest {
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        if (HasFatalFailure())
            return;
        auto cols = columns();
        cols->Add("Customer", "", "", fcText, 40, false, false);
        cols->Add("Qty", "", "", fcInteger32, 0, false, false);
        cols->Add("Tags", "", "", fcKeyword, 30, false, false);
        ASSERT_TRUE(cols->ColumnsSave(nullptr));
        SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Qty") + " = 7");
        host.attach(db());
        Diagnostics::instance().setConversionFailed(false);
    }
    void TearDown() override
    {
        Diagnostics::instance().setConversionFailed(false);
        Diagnostics::instance().setLogFile({});
        SearchTest::TearDown();
    }

    /// Opens the search as a host would and checks it.
    int check(int mode, int answer = 0, std::shared_ptr<SchemaTool> tool = nullptr)
    {
        host.questions.clear();
        host.answer = answer;
        auto filter = open();
        if (tool)
            filter->FilterColumns()->setSchemaTool(tool);
        return filter->CheckTable(&progress, mode, true);
    }

    /// The tables of the database with their fields, keys, indexes and rows, as text.
    QString snapshot()
    {
        catalog->Refresh();
        QStringList out;
        for (const CatalogTablePtr& t : catalog->Tables()) {
            out << t->name + ": " + QString::number(rows(t->name));
            for (const CatalogColumn& c : t->columns)
                out << QString("  %1 %2(%3) %4").arg(c.name).arg(c.type).arg(c.definedSize).arg(c.nullable);
            for (const CatalogKey& k : t->keys)
                out << "  key " + k.name + " " + k.columns.join(',');
            for (const CatalogIndex& i : t->indexes)
                out << "  index " + i.name;
        }
        QSqlQuery keys(db().database());
        keys.exec("SELECT " + q("FileId") + " FROM " + q("FilesSearchData") + " ORDER BY 1");
        while (keys.next())
            out << keys.value(0).toString();
        return out.join('\n');
    }

    /// Mode 0 asks once and, answered with an end, changes nothing; `repairMode` answered with 0
    /// repairs, and a second check finds nothing to ask about.
    void expectAskedOnceThenRepaired(int repairMode, const std::function<void()>& expectRepaired)
    {
        const QString before = snapshot();
        EXPECT_EQ(check(0, 3), 3);
        EXPECT_EQ(host.questions.size(), 1);
        EXPECT_EQ(snapshot(), before);

        EXPECT_EQ(check(repairMode, 0), 0);
        if (repairMode == 0) {
            EXPECT_EQ(host.questions.size(), 1) << "an answer that goes on stands for the rest of the check";
        }
        EXPECT_FALSE(Diagnostics::instance().ConversionFailed())
            << qPrintable(Diagnostics::instance().lastError().value_or(ErrorReport{}).text);
        catalog->Refresh();
        expectRepaired();

        EXPECT_EQ(check(0, 3), 0);
        EXPECT_TRUE(host.questions.isEmpty()) << "a second check finds nothing";
    }

    SchemaTool tool;
    ScriptedHost host;
    RecordingProgress progress;
};

// The fields of the search tables are reported in mode 0, whatever the answer, and repaired in mode 1;
// everything else is repaired after an answer that goes on.

TEST_P(SchemaCheckTest, AStrayFieldIsAskedAboutOrDroppedWithTheLog)
{
    const QString logFile = testDb().tempDir().filePath("schema.log");
    Diagnostics::instance().setLogFile(logFile);
    SD_ASSERT_SQL(testDb(), "ALTER TABLE " + q("FilesSearchData") + " ADD COLUMN " + q("Extra") + " INTEGER");
    if (GetParam() == DbKind::SQLite) // the key field is no stray, whatever its case
        SD_ASSERT_SQL(testDb(), "ALTER TABLE " + q("FilesSearchData") + " RENAME COLUMN " + q("FileId") + " TO " + q("FILEID"));

    expectAskedOnceThenRepaired(1, [&] { EXPECT_FALSE(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Extra")); });
    QFile log(logFile);
    ASSERT_TRUE(log.open(QIODevice::ReadOnly | QIODevice::Text));
    const QStringList lines = QString::fromUtf8(log.readAll()).split('\n', Qt::SkipEmptyParts);
    const QStringList once{"defined field count = 3", "FilesSearchData: database column Extra missing from SearchColumnConfiguration"};
    EXPECT_EQ(lines, once + once + QStringList{"FilesSearchData: deleted column Extra from FilesSearchData"});
    EXPECT_EQ(rows("FilesSearchData", q("Qty") + " = 7"), rowCount);
}

TEST_P(SchemaCheckTest, AFieldThatAColumnOfAnyKindOrTypeNamesIsNoStray)
{
    // A field named like the keyword column, and the fields of columns whose stored type this version
    // does not know: the undefined type, and one of another version.
    const QString data = q("FilesSearchData");
    for (const char* field : {"Tags", "Legacy", "Future"}) {
        SD_ASSERT_SQL(testDb(), "ALTER TABLE " + data + " ADD COLUMN " + q(field) + " INTEGER");
        SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + q(field) + " = 5");
    }
    auto cols = columns();
    cols->Add("Legacy", "", "", fcInteger32, 0, false, false);
    cols->Add("Future", "", "", fcInteger32, 0, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    const QString definitions = q(CFilterColumns::definitionTableName());
    SD_ASSERT_SQL(testDb(), "UPDATE " + definitions + " SET " + q("Type") + " = -1 WHERE " + q("Name") + " = 'Legacy'");
    SD_ASSERT_SQL(testDb(), "UPDATE " + definitions + " SET " + q("Type") + " = 42 WHERE " + q("Name") + " = 'Future'");

    EXPECT_EQ(check(1), 0);
    EXPECT_FALSE(Diagnostics::instance().ConversionFailed());
    for (const char* field : {"Tags", "Legacy", "Future"})
        EXPECT_EQ(rows("FilesSearchData", q(field) + " = 5"), rowCount) << field;
}

TEST_P(SchemaCheckTest, AMissingFieldIsAskedAboutOnceOrAdded)
{
    ASSERT_TRUE(tool.DropColumn(nullptr, *catalog, "FilesSearchData", "Qty"));
    expectAskedOnceThenRepaired(1, [&] {
        const auto qty = GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Qty");
        ASSERT_TRUE(qty.has_value());
        EXPECT_EQ(qty->type, adInteger);
    });
}

TEST_P(SchemaCheckTest, AKeywordTableWithoutItsOrderGetsItWhereTheDatabaseNeedsOne)
{
    const auto orderOf = [&] { return GetTableColumn(GetCatalogTable(*catalog, "FilesSearchKeywordTags"), CFilterColumns::KeywordOrder()); };
    if (GetParam() == DbKind::SQLite) {
        EXPECT_FALSE(orderOf()) << "SQLite keeps the order of rows by itself";
        return;
    }
    ASSERT_TRUE(orderOf());
    EXPECT_EQ(orderOf()->type, adBigInt);
    // A table of an earlier version, whose keywords are still read before a check repairs it.
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " (" + q("FileId") + ", " + q("Tags") + ") VALUES (2, 'z'), (2, 'y')");
    ASSERT_TRUE(tool.DropColumn(nullptr, *catalog, "FilesSearchKeywordTags", CFilterColumns::KeywordOrder()));
    struct Entry : ISearchBaseEntry {
        qint32 Id() const override { return 2; }
    } entry;
    auto cols = columns();
    cols->GetData(&entry);
    EXPECT_EQ(cols->Item("Tags")->SavedKeys(), QStringList({"z", "y"}));

    expectAskedOnceThenRepaired(1, [&] { EXPECT_TRUE(orderOf()); });
    cols = columns();
    cols->GetData(&entry);
    EXPECT_EQ(cols->Item("Tags")->SavedKeys(), QStringList({"z", "y"}));
}

TEST_P(SchemaCheckTest, FieldsOfTheWrongTypeOrSizeAreAskedAboutOrRepairedWithTheirValues)
{
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "FilesSearchData", text("Customer", 10)));
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "FilesSearchData", text("Qty", 20)));
    expectAskedOnceThenRepaired(1, [&] {
        const CatalogTablePtr table = GetCatalogTable(*catalog, "FilesSearchData");
        EXPECT_EQ(GetTableColumn(table, "Customer")->definedSize, 255);
        EXPECT_EQ(GetTableColumn(table, "Qty")->type, adInteger);
        EXPECT_EQ(rows("FilesSearchData", q("Qty") + " = 7"), rowCount);
    });
}

TEST_P(SchemaCheckTest, DefinitionsAreSavedOverASearchTableThatDiffersAndTheCheckRepairsIt)
{
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "FilesSearchData", text("Customer", 10)));
    auto cols = columns();
    cols->Item("Customer")->setCaption("Customer name");
    cols->Add("Note", "", "", fcText, 30, false, false)->setIsNew(true);
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(Diagnostics::instance().lastError().value_or(ErrorReport{}).text);
    EXPECT_EQ(columns()->Item("Customer")->Caption(), "Customer name");
    EXPECT_TRUE(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Note"));

    expectAskedOnceThenRepaired(1, [&] { EXPECT_EQ(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Customer")->definedSize, 255); });
    EXPECT_EQ(rows("FilesSearchData", q("Qty") + " = 7"), rowCount);
}

TEST_P(SchemaCheckTest, AMissingUniqueKeyIsAskedAboutOrMade)
{
    // The search table again, as it was but for its unique key.
    const QDateTime now = QDateTime::currentDateTime();
    auto cols = columns();
    const auto customer = cols->MyStructureDefault(*cols->Item("Customer"), now);
    const auto qty = cols->MyStructureDefault(*cols->Item("Qty"), now)->ColumnNamed("Qty");
    auto without = TableStructure::NewStructure("FilesSearchData");
    for (const StructureColumn& c : customer->StructureColumns() + QList<StructureColumn>{*qty})
        ASSERT_TRUE(without->AddColumn(c.name, c.type, c.size, c.scale, c.nullable, c.hasDefault, c.defaultText));
    for (const StructureKey& k : customer->StructureKeys())
        if (k.kind == kkForeign) {
            ASSERT_TRUE(without->AddForeignKey(k.name, k.columns, k.relatedTable, k.relatedColumns, k.cascade));
        }
    ASSERT_TRUE(tool.DropTable(nullptr, *catalog, "FilesSearchData"));
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *without));
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchData") + " (" + q("FileId") + ") SELECT " + q("FileId") + " FROM " + q("Files"));

    expectAskedOnceThenRepaired(0, [&] { EXPECT_TRUE(GetTableKey(GetCatalogTable(*catalog, "FilesSearchData"), "UK_FilesSearchData")); });
}

TEST_P(SchemaCheckTest, AMissingForeignKeyIsMadeOnceTheRowsThatWouldBreakItAreGone)
{
    ASSERT_TRUE(tool.DropTableKeys(nullptr, *catalog, "FilesSearchData"));
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchData") + " (" + q("FileId") + ") VALUES (999)");
    expectAskedOnceThenRepaired(0, [&] {
        EXPECT_EQ(rows("FilesSearchData", q("FileId") + " = 999"), 0);
        SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("Files") + " WHERE " + q("FileId") + " = 1");
        EXPECT_EQ(rows("FilesSearchData"), rowCount - 1) << "the key cascades again";
    });
}

TEST_P(SchemaCheckTest, MissingRowsAndOrphansAreAskedAboutOrRepaired)
{
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " IN (4, 8)");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " VALUES (2, 'kept')");
    withoutForeignKeys(testDb(), [&] {
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchData") + " (" + q("FileId") + ") VALUES (500)");
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " VALUES (501, 'gone')");
    });
    expectAskedOnceThenRepaired(0, [&] {
        EXPECT_EQ(rows("FilesSearchData"), rowCount);
        EXPECT_EQ(rows("FilesSearchData", q("FileId") + " = 500"), 0);
        EXPECT_EQ(rows("FilesSearchKeywordTags"), 1);
        EXPECT_EQ(rows("FilesSearchKeywordTags", q("FileId") + " = 2"), 1);
    });
}

TEST_P(SchemaCheckTest, APicklistTableWithoutHideEntryOrMissingIsAskedAboutOrMade)
{
    auto cols = columns();
    cols->Add("Colour", "", "", fcText, 20, true, true, "red");
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    const QString list = cols->Item("Colour")->PicklistTableName();
    ASSERT_TRUE(GetCatalogTable(*catalog, list));

    ASSERT_TRUE(tool.DropColumn(nullptr, *catalog, list, CScPicklist::HideEntry()));
    expectAskedOnceThenRepaired(0, [&] { EXPECT_TRUE(GetTableColumn(GetCatalogTable(*catalog, list), CScPicklist::HideEntry())); });

    ASSERT_TRUE(tool.DropTableKeys(nullptr, *catalog, list));
    ASSERT_TRUE(tool.DropTable(nullptr, *catalog, list));
    expectAskedOnceThenRepaired(0, [&] { EXPECT_TRUE(GetCatalogTable(*catalog, list)); });
}

TEST_P(SchemaCheckTest, ADefinitionTableOfAnEarlierVersionIsAskedAboutOrConverted)
{
    for (const char* field : {"DateTimeDefaultMode", "DateTimeDefaultValue", "DisableEditDateTime"})
        ASSERT_TRUE(tool.DropColumn(nullptr, *catalog, CFilterColumns::definitionTableName(), field));
    ASSERT_TRUE(open()->FilterColumns()->ConvertRequired());

    const QString before = snapshot();
    EXPECT_EQ(check(2), 0);
    EXPECT_TRUE(host.questions.isEmpty()) << "mode 2 does nothing";
    EXPECT_EQ(snapshot(), before);

    expectAskedOnceThenRepaired(0, [&] {
        EXPECT_FALSE(open()->FilterColumns()->ConvertRequired());
        EXPECT_EQ(open()->FilterColumns()->Count(), 3);
    });
}

TEST_P(SchemaCheckTest, EachAnswerFromOneToFiveEndsTheCheckWithIt)
{
    SD_ASSERT_SQL(testDb(), "ALTER TABLE " + q("FilesSearchData") + " ADD COLUMN " + q("Extra") + " INTEGER");
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = 4");
    const QString before = snapshot();
    for (int answer = 1; answer <= 5; ++answer) {
        EXPECT_EQ(check(0, answer), answer);
        EXPECT_EQ(host.questions.size(), 1);
        EXPECT_EQ(snapshot(), before);
    }
}

TEST_P(SchemaCheckTest, AnswerTwoAddsAMissingIndexButEndsAFieldCheck)
{
    ASSERT_TRUE(tool.DropTable(nullptr, *catalog, "FilesSearchKeywordTags"));
    auto tags = columns()->MyStructureDefault(*columns()->Item("Tags"), QDateTime::currentDateTime());
    auto withoutIndex = TableStructure::NewStructure("FilesSearchKeywordTags");
    for (const StructureColumn& c : tags->StructureColumns())
        ASSERT_TRUE(withoutIndex->AddColumn(c.name, c.type, c.size, c.scale, c.nullable, c.hasDefault, c.defaultText));
    for (const StructureKey& k : tags->StructureKeys())
        ASSERT_TRUE(k.kind == kkForeign ? withoutIndex->AddForeignKey(k.name, k.columns, k.relatedTable, k.relatedColumns, k.cascade)
                                        : withoutIndex->AddUniqueKey(k.name, k.columns));
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *withoutIndex));

    EXPECT_EQ(check(0, 2), 0);
    EXPECT_TRUE(GetTableIndex(GetCatalogTable(*catalog, "FilesSearchKeywordTags"), "IX_FilesSearchKeywordTags"));

    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "FilesSearchData", text("Customer", 10)));
    const QString before = snapshot();
    EXPECT_EQ(check(0, 2), 2);
    EXPECT_EQ(snapshot(), before);
}

TEST_P(SchemaCheckTest, ARepairIsWholeOrNothingAndTheNextCheckReportsWhatIsLeft)
{
    SD_ASSERT_SQL(testDb(), "ALTER TABLE " + q("FilesSearchData") + " ADD COLUMN " + q("Extra") + " INTEGER");
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "FilesSearchData", text("Qty", 20)));
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = 4");
    const QString before = snapshot();

    EXPECT_EQ(check(1, 0, std::make_shared<FailingRepairs>("Qty")), 0);
    EXPECT_TRUE(Diagnostics::instance().ConversionFailed());
    EXPECT_EQ(snapshot(), before) << "the stray dropped before the repair that failed is there again";

    // The flag stays as the check found it; the next check still runs, and reports what is left.
    EXPECT_EQ(check(0, 3), 3);
    EXPECT_EQ(host.questions.size(), 1);
    EXPECT_TRUE(Diagnostics::instance().ConversionFailed());
    Diagnostics::instance().setConversionFailed(false);
    EXPECT_EQ(check(1), 0);
    EXPECT_FALSE(Diagnostics::instance().ConversionFailed());
    catalog->Refresh();
    EXPECT_FALSE(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Extra"));
    EXPECT_EQ(rows("FilesSearchData", q("Qty") + " = 7"), rowCount - 1);
    EXPECT_EQ(rows("FilesSearchData"), rowCount);
    EXPECT_EQ(check(0), 0);
    EXPECT_TRUE(host.questions.isEmpty());
}

TEST_P(SchemaCheckTest, EveryMissingTableIsReportedAndMade)
{
    auto cols = columns();
    cols->Add("Colour", "", "", fcText, 20, true, true, "red");
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    const QString logFile = testDb().tempDir().filePath("schema.log");
    const struct {
        QStringList dropped;
    } cases[] = {
        {{"FilesSearchKeywordTags"}},
        {{"PicklistFilesColour"}},
        {{"FilesSearchData"}},
        {{"FilesSearchData", "FilesSearchKeywordTags", "PicklistFilesColour"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(qPrintable(c.dropped.join(", ")));
        QFile::remove(logFile);
        Diagnostics::instance().setLogFile(logFile);
        // The data tables first: they refer to the picklist.
        for (const QString table : {"FilesSearchData", "FilesSearchKeywordTags", "PicklistFilesColour"})
            if (c.dropped.contains(table)) {
                ASSERT_TRUE(tool.DropTableKeys(nullptr, *catalog, table) && tool.DropTable(nullptr, *catalog, table));
            }
        expectAskedOnceThenRepaired(1, [&] {
            for (const QString& table : c.dropped)
                EXPECT_TRUE(GetCatalogTable(*catalog, table)) << qPrintable(table);
            EXPECT_TRUE(GetTableIndex(GetCatalogTable(*catalog, "FilesSearchKeywordTags"), "IX_FilesSearchKeywordTags"));
            EXPECT_TRUE(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Qty"));
            EXPECT_EQ(rows("FilesSearchData"), rowCount);
        });
        QFile log(logFile);
        ASSERT_TRUE(log.open(QIODevice::ReadOnly | QIODevice::Text));
        const QString said = QString::fromUtf8(log.readAll());
        for (const QString& table : c.dropped)
            EXPECT_TRUE(said.contains("table " + table + " missing")) << qPrintable(said);
    }
    // The keyword table takes keywords again.
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("FilesSearchKeywordTags") + " (" + q("FileId") + ", " + q("Tags") + ") VALUES (2, 'back')");
}

TEST_P(SchemaCheckTest, AFailedRepairOfTheDefinitionTableIsPutToTheHost)
{
    ASSERT_TRUE(tool.DropColumn(nullptr, *catalog, CFilterColumns::definitionTableName(), "Description"));
    EXPECT_EQ(check(1, 3, std::make_shared<FailingConversion>()), 3);
    ASSERT_EQ(host.questions.size(), 1);
    EXPECT_EQ(host.questions[0].flag, 1);
    EXPECT_TRUE(Diagnostics::instance().ConversionFailed());
}

TEST_P(SchemaCheckTest, IndexesAndForeignKeysAreAddedAfterTheAnswerInAnyMode)
{
    for (int mode : {0, 2}) {
        SCOPED_TRACE(mode);
        ASSERT_TRUE(tool.DropTableKeys(nullptr, *catalog, "FilesSearchData"));
        SD_ASSERT_SQL(testDb(), "DROP INDEX " + q("IX_FilesSearchKeywordTags"));
        catalog->Refresh();
        EXPECT_EQ(check(mode, 0), 0);
        EXPECT_EQ(host.questions.size(), 1);
        EXPECT_FALSE(Diagnostics::instance().ConversionFailed());
        catalog->Refresh();
        EXPECT_TRUE(GetTableIndex(GetCatalogTable(*catalog, "FilesSearchKeywordTags"), "IX_FilesSearchKeywordTags"));
        EXPECT_TRUE(GetTableKey(GetCatalogTable(*catalog, "FilesSearchData"), "FK_FilesSearchData_Files"));
    }
}

TEST_P(SchemaCheckTest, WithoutColumnsTheCheckStopsAtTheDefinitionTable)
{
    makeBaseTable("Packets", "PacketId", 3);
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("PacketsSearchData") + " (" + q("PacketId") + " INTEGER, " + q("Junk") + " INTEGER)");
    auto packets = open("Packets", "PacketId");
    ASSERT_FALSE(packets->Exists());
    host.questions.clear();
    EXPECT_EQ(packets->CheckTable(&progress, 0, true), 0);
    EXPECT_TRUE(host.questions.isEmpty());
}

TEST_P(SchemaCheckTest, MakingATableRepairsTheOtherTablesToo)
{
    auto cols = columns();
    cols->Add("Colour", "", "", fcText, 20, true, true, "red");
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    const QString list = cols->Item("Colour")->PicklistTableName();
    ASSERT_TRUE(tool.DropColumn(nullptr, *catalog, list, CScPicklist::HideEntry()));
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " IN (4, 5)");

    cols = columns();
    cols->Add("Labels", "", "", fcKeyword, 20, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr)); // makes the keyword table of Labels
    catalog->Refresh();
    EXPECT_TRUE(GetTableColumn(GetCatalogTable(*catalog, list), CScPicklist::HideEntry()));
    EXPECT_EQ(rows("FilesSearchData"), rowCount);
}

SD_INSTANTIATE_DATABASE_SUITE(SchemaCheckTest);

} // namespace
