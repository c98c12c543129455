#include "searchdata/Catalog.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/SchemaTool.h"
#include "support/TestDatabase.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

class SchemaToolTest : public DatabaseTest {
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (HasFatalFailure())
            return;
        catalog = std::make_unique<Catalog>(testDb().handler());
    }

    bool pg() const { return GetParam() == DbKind::PostgreSQL; }
    QString q(const QString& name) { return db().BracketName(name); }
    qint64 count(const QString& table, const QString& where = "1 = 1")
    {
        return testDb().scalar("SELECT COUNT(*) FROM " + q(table) + " WHERE " + where).toLongLong();
    }
    bool existsInDatabase(const QString& table) { return db().tableExists(table); }

    // The host's base table: FileId 1..rows, every third one archived.
    void makeFiles(int rows)
    {
        execAll({"CREATE TABLE " + q("Files") + " (" + q("FileId") + " INTEGER PRIMARY KEY, " + q("Name") + " VARCHAR(100), " +
                     q("Archived") + " INTEGER NOT NULL)",
                 "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + QString::number(rows) + ") INSERT INTO " +
                     q("Files") + " (" + q("FileId") + ", " + q("Name") + ", " + q("Archived") +
                     ") SELECT i, 'file ' || i, CASE WHEN i % 3 = 0 THEN 1 ELSE 0 END FROM n"});
        ASSERT_TRUE(catalog->Refresh());
    }

    // A search table of Files as the columns' structures describe it.
    std::shared_ptr<TableStructure> searchStructure(const QString& selection = {}, bool withCount = true)
    {
        auto population = TableStructure::NewStructure("FilesSearchData");
        EXPECT_TRUE(population->AddColumn("FileId", adInteger));
        auto s = TableStructure::NewStructure("FilesSearchData", true, "Files", q("FileId"), population, selection);
        EXPECT_NE(s, nullptr);
        EXPECT_TRUE(s->AddColumn("FileId", adInteger, 0, 0, false));
        EXPECT_TRUE(s->AddColumn("Customer", adVarWChar, 255, 0, true, true, "'none'"));
        if (withCount) {
            EXPECT_TRUE(s->AddColumn("Count", adInteger, 0, 0, true, true, "0"));
        }
        EXPECT_TRUE(s->AddColumn("Checked", adBoolean, 0, 0, true, true, "0"));
        EXPECT_TRUE(s->AddUniqueKey("UK_FilesSearchData", {"FileId"}));
        EXPECT_TRUE(s->AddForeignKey("", {"FileId"}, "Files", {"FileId"}, true));
        return s;
    }

    std::shared_ptr<TableStructure> definitionStructure()
    {
        auto s = TableStructure::NewStructure("SearchColumnConfiguration");
        const bool built = s->AddColumn("BaseTable", adVarWChar, 0, 0, false) && s->AddColumn("Position", adInteger, 0, 0, false)
                           && s->AddColumn("Name", adVarWChar, 0, 0, false) && s->AddColumn("Type", adInteger)
                           && s->AddColumn("Size", adSmallInt) && s->AddColumn("Caption", adVarWChar)
                           && s->AddColumn("Description", adVarWChar) && s->AddColumn("IsPicklist", adBoolean)
                           && s->AddColumn("PicklistAllowBlanks", adBoolean) && s->AddColumn("PicklistDefault", adVarWChar)
                           && s->AddColumn("DateTimeDefaultMode", adInteger, 0, 0, true, true, "0")
                           && s->AddColumn("DateTimeDefaultValue", adDate)
                           && s->AddColumn("DisableEditDateTime", adBoolean, 0, 0, true, true, "0")
                           && s->AddIndex("BaseTableIndex", {"BaseTable"}) && s->AddIndex("ColumnNameField", {"Name"})
                           && s->AddPrimaryKey("PK_SearchColumnConfiguration", {"BaseTable", "Position"})
                           && s->AddUniqueKey("UK_SearchColumnConfiguration", {"BaseTable", "Name"});
        EXPECT_TRUE(built);
        return s;
    }

    QString customerOf(int fileId)
    {
        return testDb().scalar("SELECT " + q("Customer") + " FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = " +
                               QString::number(fileId)).toString();
    }

    std::unique_ptr<Catalog> catalog;
    SchemaTool tool;
};

TEST_P(SchemaToolTest, DefinitionTableIsCreatedAndMatchesItself)
{
    const auto s = definitionStructure();
    ASSERT_FALSE(tool.TableExists(*catalog, *s));
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *s));
    EXPECT_TRUE(tool.TableExists(*catalog, *s));
    EXPECT_TRUE(tool.TableMatches(smcEverything, *catalog, *s));
    for (const SchemaDifference& d : tool.TableDifferences(smcEverything, *catalog, *s))
        ADD_FAILURE() << qPrintable(d.describe());

    const CatalogTablePtr table = GetCatalogTable(*catalog, "SearchColumnConfiguration");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(GetTableKey(table, "PK_SearchColumnConfiguration")->columns, QStringList({"BaseTable", "Position"}));
    EXPECT_EQ(GetTableKey(table, "UK_SearchColumnConfiguration")->columns, QStringList({"BaseTable", "Name"}));
    EXPECT_EQ(GetTableIndex(table, "ColumnNameField")->columns, QStringList{"Name"});

    // Defaults apply, with the boolean one written as each database wants it.
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("SearchColumnConfiguration") + " (" + q("BaseTable") + ", " + q("Position") + ", " +
                                q("Name") + ") VALUES ('Files', 1, 'Customer')");
    auto rs = db().OpenSqlRecordset("SELECT * FROM " + q("SearchColumnConfiguration"));
    ASSERT_NE(rs, nullptr);
    EXPECT_EQ(rs->field("DateTimeDefaultMode").toInt32().valueOr(-1), 0);
    EXPECT_EQ(rs->rawField("DisableEditDateTime").toBool(), false);
    EXPECT_TRUE(rs->rawField("DisableEditDateTime").isValid() && !rs->rawField("DisableEditDateTime").isNull());
    // The key keeps a second row of the same position out.
    EXPECT_FALSE(db().ExecuteSql("INSERT INTO " + q("SearchColumnConfiguration") + " (" + q("BaseTable") + ", " + q("Position") + ", " +
                                 q("Name") + ") VALUES ('Files', 1, 'Other')"));
}

TEST_P(SchemaToolTest, CreatedTypeCodesReadBackAsCreated)
{
    TableStructure s("Types");
    for (const auto& [name, type, size] : QList<std::tuple<QString, int, int>>{
             {"I16", 2, 0}, {"I32", 3, 0}, {"F32", 4, 0}, {"F64", 5, 0}, {"When", 7, 0}, {"Yes", 11, 0}, {"Short", 202, 40}, {"Long", 202, 0}})
        ASSERT_TRUE(s.AddColumn(name, type, size));
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, s));
    const CatalogTablePtr table = GetCatalogTable(*catalog, "Types");
    ASSERT_NE(table, nullptr);
    for (const StructureColumn& c : s.StructureColumns()) {
        const auto read = GetTableColumn(table, c.name);
        ASSERT_TRUE(read.has_value()) << qPrintable(c.name);
        EXPECT_EQ(read->type, c.type) << qPrintable(c.name + " " + read->declaredType);
        EXPECT_EQ(read->definedSize, c.size) << qPrintable(c.name);
    }
    EXPECT_TRUE(tool.TableMatches(smcEverything, *catalog, s));
}

TEST_P(SchemaToolTest, EachKindOfDifferenceIsToldApart)
{
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("T") + " (" + q("Id") + " INTEGER NOT NULL, " + q("Name") + " VARCHAR(40), " + q("Amount") +
                                " VARCHAR(10), " + q("Flag") + " INTEGER NOT NULL)");
    ASSERT_TRUE(catalog->Refresh());
    TableStructure s("T");
    ASSERT_TRUE(s.AddColumn("Id", adInteger, 0, 0, false));
    ASSERT_TRUE(s.AddColumn("Name", adVarWChar, 255));       // other size
    ASSERT_TRUE(s.AddColumn("Amount", adDouble));            // other type
    ASSERT_TRUE(s.AddColumn("Flag", adInteger, 0, 0, true)); // other nullability
    ASSERT_TRUE(s.AddColumn("Extra", adInteger));            // missing column
    ASSERT_TRUE(s.AddIndex("IX_T_Name", {"Name"}));          // missing index
    ASSERT_TRUE(s.AddUniqueKey("UK_T", {"Id"}));             // missing key

    const auto differences = tool.TableDifferences(smcEverything, *catalog, s);
    QList<std::pair<SchemaDifference::Kind, QString>> found;
    for (const SchemaDifference& d : differences)
        found.append({d.kind, d.item});
    const QList<std::pair<SchemaDifference::Kind, QString>> expected = {
        {SchemaDifference::OtherSize, "Name"},          {SchemaDifference::OtherType, "Amount"},
        {SchemaDifference::OtherNullability, "Flag"},   {SchemaDifference::MissingColumn, "Extra"},
        {SchemaDifference::MissingIndex, "IX_T_Name"},  {SchemaDifference::MissingKey, "UK_T"}};
    EXPECT_EQ(found, expected);
    EXPECT_FALSE(tool.TableMatches(6, *catalog, s));

    // The checks value chooses what is compared.
    EXPECT_EQ(tool.TableDifferences(smcColumns, *catalog, s).size(), 1);
    EXPECT_EQ(tool.TableDifferences(smcColumnNullability, *catalog, s).size(), 1);
    EXPECT_EQ(tool.TableDifferences(smcIndexes | smcKeys, *catalog, s).size(), 2);
    // Without smcColumns a table that lacks later columns passes on those it has.
    TableStructure later("T");
    ASSERT_TRUE(later.AddColumn("Id", adInteger, 0, 0, false));
    ASSERT_TRUE(later.AddColumn("Extra", adInteger));
    EXPECT_TRUE(tool.TableMatches(smcColumnTypes | smcColumnNullability, *catalog, later));
    EXPECT_FALSE(tool.TableMatches(smcColumns | smcColumnTypes | smcColumnNullability, *catalog, later));

    const auto missing = tool.TableDifferences(smcEverything, *catalog, TableStructure("Nowhere"));
    ASSERT_EQ(missing.size(), 1);
    EXPECT_EQ(missing.first().kind, SchemaDifference::MissingTable);
    EXPECT_FALSE(tool.ColumnMatches(*catalog, std::nullopt, *s.ColumnNamed("Id")));
    EXPECT_TRUE(tool.ColumnMatches(*catalog, GetTableColumn(GetCatalogTable(*catalog, "T"), "id"), *s.ColumnNamed("Id")));
}

TEST_P(SchemaToolTest, FillPutsOneRowPerSelectedBaseRecordWithDefaults)
{
    makeFiles(30);
    const QString selection = "SELECT " + q("FileId") + " FROM " + q("Files") + " WHERE " + q("Archived") + " = 0";
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *searchStructure(selection)));
    EXPECT_EQ(count("FilesSearchData"), 20);
    EXPECT_EQ(count("FilesSearchData", q("FileId") + " IN (SELECT " + q("FileId") + " FROM " + q("Files") + " WHERE " + q("Archived") + " = 1)"), 0);
    EXPECT_EQ(count("FilesSearchData", q("Customer") + " = 'none' AND " + q("Count") + " = 0 AND " + q("Checked") + " = " + db().SqlBoolean(false)), 20);

    // Without a selection every base record gets its row.
    ASSERT_TRUE(tool.DropTable(nullptr, *catalog, "FilesSearchData"));
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *searchStructure()));
    EXPECT_EQ(count("FilesSearchData"), 30);
    EXPECT_TRUE(tool.TableMatches(smcEverything, *catalog, *searchStructure()));
}

TEST_P(SchemaToolTest, CascadeFollowsTheBaseRecord)
{
    makeFiles(10);
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *searchStructure()));
    const auto fk = GetTableKey(GetCatalogTable(*catalog, "FilesSearchData"), "FK_FilesSearchData_Files");
    ASSERT_TRUE(fk.has_value());
    EXPECT_TRUE(fk->cascade);

    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("Files") + " WHERE " + q("FileId") + " = 5");
    EXPECT_EQ(count("FilesSearchData"), 9);
    EXPECT_EQ(count("FilesSearchData", q("FileId") + " = 5"), 0);
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("Files") + " SET " + q("FileId") + " = 1000 WHERE " + q("FileId") + " = 6");
    EXPECT_EQ(count("FilesSearchData", q("FileId") + " = 1000"), 1);
    // A row without its base record is refused.
    EXPECT_FALSE(db().ExecuteSql("INSERT INTO " + q("FilesSearchData") + " (" + q("FileId") + ") VALUES (5)"));
}

TEST_P(SchemaToolTest, AlterationsKeepEveryRow)
{
    const int rows = 3000;
    makeFiles(rows);
    // Start with less than the search table will need.
    auto first = TableStructure::NewStructure("FilesSearchData", true, "Files", q("FileId"));
    ASSERT_TRUE(first->AddColumn("FileId", adInteger, 0, 0, false));
    ASSERT_TRUE(first->AddColumn("Customer", adVarWChar, 255, 0, true, true, "'none'"));
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *first));
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'c' || " + q("FileId"));
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = NULL WHERE " + q("FileId") + " % 100 = 0");

    // Columns, a unique key, a cascading foreign key (a rebuild on SQLite) and an index come in.
    auto full = searchStructure();
    ASSERT_TRUE(full->AddIndex("IX_FilesSearchData_Count", {"Count"}));
    ASSERT_TRUE(tool.ApplyStructure(nullptr, *catalog, *full));
    EXPECT_TRUE(tool.TableMatches(smcEverything, *catalog, *full));
    EXPECT_EQ(count("FilesSearchData"), rows);
    EXPECT_EQ(customerOf(1234), "c1234");
    EXPECT_EQ(count("FilesSearchData", q("Count") + " = 0"), rows) << "added columns take their defaults";

    // A column becomes required and shorter, another one changes type; the values come along.
    StructureColumn customer = *full->ColumnNamed("Customer");
    customer.size = 40;
    customer.nullable = false;
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "FilesSearchData", customer));
    StructureColumn countColumn = *full->ColumnNamed("Count");
    countColumn.type = adDouble;
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Count") + " = " + q("FileId"));
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "FilesSearchData", countColumn));
    const CatalogTablePtr table = GetCatalogTable(*catalog, "FilesSearchData");
    EXPECT_TRUE(tool.ColumnMatches(*catalog, GetTableColumn(table, "Customer"), customer));
    EXPECT_TRUE(tool.ColumnMatches(*catalog, GetTableColumn(table, "Count"), countColumn));
    EXPECT_EQ(count("FilesSearchData"), rows);
    EXPECT_EQ(customerOf(1234), "c1234");
    EXPECT_EQ(customerOf(1200), "none") << "nulls took the default";
    EXPECT_EQ(count("FilesSearchData", q("Count") + " = " + q("FileId")), rows);

    // Dropping a column of an index takes the index along; keys, names and the cascade stay.
    ASSERT_TRUE(tool.DropColumn(nullptr, *catalog, "FilesSearchData", "Count"));
    ASSERT_TRUE(tool.DropColumn(nullptr, *catalog, "FilesSearchData", "Checked"));
    const CatalogTablePtr after = GetCatalogTable(*catalog, "FilesSearchData");
    EXPECT_FALSE(GetTableColumn(after, "Count").has_value());
    EXPECT_FALSE(GetTableIndex(after, "IX_FilesSearchData_Count").has_value());
    EXPECT_TRUE(GetTableKey(after, "UK_FilesSearchData").has_value());
    EXPECT_TRUE(GetTableKey(after, "FK_FilesSearchData_Files").has_value());
    EXPECT_EQ(count("FilesSearchData"), rows);
    EXPECT_EQ(customerOf(2999), "c2999");
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("Files") + " WHERE " + q("FileId") + " <= 10");
    EXPECT_EQ(count("FilesSearchData"), rows - 10);

    // A missing column comes in through its repair, in place, with its default in every row.
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "FilesSearchData", StructureColumn{"Note", adVarWChar, 80, 0, true, true, "'-'"}));
    EXPECT_EQ(count("FilesSearchData", q("Note") + " = '-'"), rows - 10);
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);
}

TEST_P(SchemaToolTest, FailedChangesLeaveTablesAsTheyWereAndReport)
{
    makeFiles(50);
    // The fill selects a column that is not there: no half-made table stays behind.
    auto broken = searchStructure("SELECT " + q("NoSuchColumn") + " FROM " + q("Files"));
    EXPECT_FALSE(tool.CreateTable(nullptr, *catalog, *broken));
    EXPECT_FALSE(existsInDatabase("FilesSearchData"));
    EXPECT_EQ(GetCatalogTable(*catalog, "FilesSearchData"), nullptr);
    EXPECT_GT(Diagnostics::instance().reportCount(), 0);
    ASSERT_TRUE(Diagnostics::instance().lastError().has_value());
    EXPECT_EQ(Diagnostics::instance().lastError()->procedure, "CreateTable");

    // A unique key that the data break, with a new column in the same change: neither comes in.
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *searchStructure()));
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'same'");
    auto more = searchStructure();
    ASSERT_TRUE(more->AddColumn("Extra", adInteger));
    ASSERT_TRUE(more->AddUniqueKey("UK_FilesSearchData_Customer", {"Customer"}));
    Diagnostics::instance().clearReports();
    EXPECT_FALSE(tool.ApplyStructure(nullptr, *catalog, *more));
    EXPECT_GT(Diagnostics::instance().reportCount(), 0);
    const CatalogTablePtr table = GetCatalogTable(*catalog, "FilesSearchData");
    EXPECT_FALSE(GetTableColumn(table, "Extra").has_value());
    EXPECT_FALSE(GetTableKey(table, "UK_FilesSearchData_Customer").has_value());
    EXPECT_TRUE(tool.TableMatches(smcEverything, *catalog, *searchStructure()));
    EXPECT_EQ(count("FilesSearchData"), 50);

    // Creating a table that exists, or whose foreign key has nothing to refer to, fails up front.
    EXPECT_FALSE(tool.CreateTable(nullptr, *catalog, *searchStructure()));
    TableStructure orphan("Orphan");
    ASSERT_TRUE(orphan.AddColumn("Ref", adInteger));
    ASSERT_TRUE(orphan.AddForeignKey("", {"Ref"}, "Nowhere", {"Id"}, false));
    EXPECT_FALSE(tool.CreateTable(nullptr, *catalog, orphan));
    EXPECT_FALSE(existsInDatabase("Orphan"));
    // PostgreSQL would cut a long name silently; it is refused instead.
    TableStructure longName(QString(70, 'x'));
    ASSERT_TRUE(longName.AddColumn("A", adInteger));
    EXPECT_EQ(tool.CreateTable(nullptr, *catalog, longName), !pg());
}

TEST_P(SchemaToolTest, AFillThatBreaksAKeyOfTheTableIsRefusedWhole)
{
    // A filled table has its keys checked after its rows; what they refuse must still be refused.
    makeFiles(10);
    const QString id = q("FileId"), files = q("Files");
    const struct {
        const char* what;
        QString selection;
    } fills[] = {{"a key the base table lacks", "SELECT " + id + " + 5 FROM " + files},
                 {"a key twice", "SELECT " + id + " FROM " + files + " UNION ALL SELECT 1"}};
    for (const auto& fill : fills) {
        SCOPED_TRACE(fill.what);
        Diagnostics::instance().clearReports();
        EXPECT_FALSE(tool.CreateTable(nullptr, *catalog, *searchStructure(fill.selection)));
        EXPECT_FALSE(existsInDatabase("FilesSearchData"));
        EXPECT_GT(Diagnostics::instance().reportCount(), 0);
    }
    ASSERT_TRUE(tool.CreateTable(nullptr, *catalog, *searchStructure()));
    EXPECT_TRUE(tool.TableMatches(smcEverything, *catalog, *searchStructure()));
    // The keys hold for what comes later, on this connection too.
    EXPECT_FALSE(db().ExecuteSql("INSERT INTO " + q("FilesSearchData") + " (" + id + ") VALUES (99)"));
    EXPECT_FALSE(db().ExecuteSql("INSERT INTO " + q("FilesSearchData") + " (" + id + ") VALUES (1)"));
    EXPECT_EQ(count("FilesSearchData"), 10);
}

TEST_P(SchemaToolTest, ForeignKeyHoldsOnlyWhenTheDataAllowIt)
{
    makeFiles(20);
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("Notes") + " (" + q("FileId") + " INTEGER, " + q("Text") + " VARCHAR(20))");
    execAll({"INSERT INTO " + q("Notes") + " VALUES (1, 'a')", "INSERT INTO " + q("Notes") + " VALUES (99, 'b')",
             "INSERT INTO " + q("Notes") + " VALUES (NULL, 'b')"});
    ASSERT_TRUE(catalog->Refresh());
    // Names in other capitals find the table's own, which PostgreSQL needs for quoted names.
    const StructureKey fk{"FK_Notes_Files", kkForeign, {"fileid"}, "FILES", {"FILEID"}, true};
    const StructureKey unique{"UK_Notes_Text", kkUnique, {"Text"}, {}, {}, false};

    EXPECT_FALSE(tool.ForeignKeyHolds(*catalog, "Notes", fk));
    EXPECT_FALSE(tool.ForeignKeyHolds(*catalog, "Notes", unique));
    EXPECT_FALSE(tool.CreateForeignKey(nullptr, *catalog, "Notes", fk));
    EXPECT_FALSE(GetTableKey(GetCatalogTable(*catalog, "Notes"), fk.name).has_value());
    EXPECT_EQ(count("Notes"), 3);

    // Rows with a null key need no related row.
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("Notes") + " WHERE " + q("FileId") + " = 99");
    EXPECT_TRUE(tool.ForeignKeyHolds(*catalog, "Notes", fk));
    EXPECT_TRUE(tool.ForeignKeyHolds(*catalog, "Notes", unique));
    EXPECT_FALSE(tool.ForeignKeyHolds(*catalog, "Notes", StructureKey{"PK_Notes", kkPrimary, {"FileId"}, {}, {}, false})) << "a null";
    ASSERT_TRUE(tool.CreateForeignKey(nullptr, *catalog, "Notes", fk));
    ASSERT_TRUE(tool.CreateForeignKey(nullptr, *catalog, "Notes", unique));
    const CatalogTablePtr notes = GetCatalogTable(*catalog, "Notes");
    EXPECT_TRUE(GetTableKey(notes, "fk_notes_files")->cascade);
    EXPECT_EQ(GetTableKey(notes, "UK_Notes_Text")->kind, kkUnique);
    EXPECT_EQ(count("Notes"), 2);
    EXPECT_FALSE(tool.ForeignKeyHolds(*catalog, "Nowhere", fk));
}

TEST_P(SchemaToolTest, CreateIndexAddsOneIndexByName)
{
    makeFiles(5);
    const StructureIndex index{"IX_Files_Name", {"name", "ARCHIVED"}, false};
    ASSERT_TRUE(tool.CreateIndex(nullptr, *catalog, "Files", index));
    ASSERT_TRUE(tool.CreateIndex(nullptr, *catalog, "Files", index)) << "there already";
    const auto read = GetTableIndex(GetCatalogTable(*catalog, "Files"), "IX_Files_Name");
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->columns, QStringList({"Name", "Archived"}));
    EXPECT_FALSE(tool.CreateIndex(nullptr, *catalog, "Files", StructureIndex{"IX_Bad", {"Nothing"}, false}));
    EXPECT_FALSE(tool.CreateIndex(nullptr, *catalog, "Nowhere", index));
}

// A picklist-like table that others refer to: changing it must not cost them a row.
class SchemaToolParentTest : public SchemaToolTest {
protected:
    void makePicklistAndKeywords(int rows, bool cascade)
    {
        makeFiles(rows);
        execAll({"CREATE TABLE " + q("PicklistFilesTags") + " (" + q("Tags") + " VARCHAR(255) NOT NULL, " + q("HideEntry") +
                     " INTEGER DEFAULT 0, CONSTRAINT " + q("UK_PicklistFilesTags") + " UNIQUE (" + q("Tags") + "))",
                 "INSERT INTO " + q("PicklistFilesTags") + " (" + q("Tags") + ") VALUES ('red'), ('green'), ('blue')",
                 "CREATE TABLE " + q("FilesSearchKeywordTags") + " (" + q("FileId") + " INTEGER NOT NULL, " + q("Tags") +
                     " VARCHAR(255) NOT NULL, CONSTRAINT " + q("FK_Keyword_Files") + " FOREIGN KEY (" + q("FileId") + ") REFERENCES " +
                     q("Files") + " (" + q("FileId") + ") ON DELETE CASCADE, CONSTRAINT " + q("FK_PicklistFilesTags") +
                     " FOREIGN KEY (" + q("Tags") + ") REFERENCES " + q("PicklistFilesTags") + " (" + q("Tags") + ")" +
                     (cascade ? " ON DELETE CASCADE" : "") + ")",
                 "INSERT INTO " + q("FilesSearchKeywordTags") + " SELECT " + q("FileId") + ", CASE WHEN " + q("FileId") +
                     " % 2 = 0 THEN 'red' ELSE 'blue' END FROM " + q("Files")});
        ASSERT_TRUE(catalog->Refresh());
    }
    // Changes the picklist in a way that rebuilds it on SQLite.
    bool changePicklist()
    {
        StructureColumn hide{"HideEntry", adBoolean, 0, 0, true, true, "0"};
        return tool.RepairColumn(nullptr, *catalog, "PicklistFilesTags", hide);
    }
};

TEST_P(SchemaToolParentTest, ParentChangesKeepTheRowsThatReferToIt)
{
    makePicklistAndKeywords(2000, false);
    ASSERT_TRUE(changePicklist());
    EXPECT_EQ(GetTableColumn(GetCatalogTable(*catalog, "PicklistFilesTags"), "HideEntry")->type, adBoolean);
    EXPECT_EQ(count("FilesSearchKeywordTags"), 2000);
    EXPECT_EQ(count("PicklistFilesTags"), 3);

    // Inside a caller's transaction as well; the caller's rollback then undoes the change.
    TransactionState outer;
    ASSERT_TRUE(db().BeginTableTransaction(outer));
    ASSERT_TRUE(tool.CreateIndex(nullptr, *catalog, "PicklistFilesTags", StructureIndex{"IX_Picklist_Hide", {"HideEntry"}, false}));
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "PicklistFilesTags", StructureColumn{"HideEntry", adSmallInt, 0, 0, true, true, "0"}));
    EXPECT_EQ(count("FilesSearchKeywordTags"), 2000);
    EXPECT_TRUE(GetTableIndex(GetCatalogTable(*catalog, "PicklistFilesTags"), "IX_Picklist_Hide").has_value());
    db().EndTableTransaction(outer);
    ASSERT_TRUE(catalog->Refresh());
    EXPECT_EQ(GetTableColumn(GetCatalogTable(*catalog, "PicklistFilesTags"), "HideEntry")->type, adBoolean);
    EXPECT_FALSE(GetTableIndex(GetCatalogTable(*catalog, "PicklistFilesTags"), "IX_Picklist_Hide").has_value());

    // When the caller commits, the checks that the rebuild deferred find every row its entry.
    TransactionState committed;
    ASSERT_TRUE(db().BeginTableTransaction(committed));
    ASSERT_TRUE(tool.RepairColumn(nullptr, *catalog, "PicklistFilesTags", StructureColumn{"HideEntry", adSmallInt, 0, 0, true, true, "0"}));
    ASSERT_TRUE(db().CommitTableTransaction(committed));
    db().EndTableTransaction(committed);
    ASSERT_TRUE(catalog->Refresh());
    EXPECT_EQ(GetTableColumn(GetCatalogTable(*catalog, "PicklistFilesTags"), "HideEntry")->type, adSmallInt);
    EXPECT_EQ(count("FilesSearchKeywordTags"), 2000);

    // The relation still guards the picklist.
    EXPECT_FALSE(db().ExecuteSql("DELETE FROM " + q("PicklistFilesTags") + " WHERE " + q("Tags") + " = 'red'"));
    EXPECT_EQ(count("FilesSearchKeywordTags"), 2000);
}

TEST_P(SchemaToolParentTest, ACascadingChildIsNeverEmptiedByARebuild)
{
    makePicklistAndKeywords(500, true);
    ASSERT_TRUE(changePicklist());
    EXPECT_EQ(count("FilesSearchKeywordTags"), 500);

    TransactionState outer;
    ASSERT_TRUE(db().BeginTableTransaction(outer));
    Diagnostics::instance().clearReports();
    const bool changed = tool.RepairColumn(nullptr, *catalog, "PicklistFilesTags", StructureColumn{"HideEntry", adInteger, 0, 0, true, true, "0"});
    // Inside a transaction SQLite cannot rebuild a table whose drop would cascade, and says so.
    EXPECT_EQ(changed, pg());
    EXPECT_EQ(Diagnostics::instance().reportCount() > 0, !pg());
    EXPECT_EQ(count("FilesSearchKeywordTags"), 500);
    ASSERT_TRUE(db().CommitTableTransaction(outer));
    db().EndTableTransaction(outer);
    EXPECT_EQ(count("FilesSearchKeywordTags"), 500);
}

TEST_P(SchemaToolParentTest, KeysAreDroppedBeforeTheTable)
{
    makePicklistAndKeywords(100, false);
    EXPECT_FALSE(tool.DropColumn(nullptr, *catalog, "PicklistFilesTags", "Tags")) << "referred to";
    EXPECT_FALSE(tool.DropTable(nullptr, *catalog, "PicklistFilesTags")) << "still referred to";
    EXPECT_TRUE(existsInDatabase("PicklistFilesTags"));

    ASSERT_TRUE(tool.DropTableKeys(nullptr, *catalog, "PicklistFilesTags"));
    const CatalogTablePtr keywords = GetCatalogTable(*catalog, "FilesSearchKeywordTags");
    EXPECT_FALSE(GetTableKey(keywords, "FK_PicklistFilesTags").has_value());
    EXPECT_TRUE(GetTableKey(keywords, "FK_Keyword_Files").has_value()) << "a key to another table stays";
    EXPECT_TRUE(GetTableKey(GetCatalogTable(*catalog, "PicklistFilesTags"), "UK_PicklistFilesTags").has_value());
    ASSERT_TRUE(tool.DropTable(nullptr, *catalog, "PicklistFilesTags"));
    EXPECT_FALSE(existsInDatabase("PicklistFilesTags"));
    EXPECT_EQ(count("FilesSearchKeywordTags"), 100);

    ASSERT_TRUE(tool.DropTableKeys(nullptr, *catalog, "FilesSearchKeywordTags"));
    EXPECT_TRUE(GetCatalogTable(*catalog, "FilesSearchKeywordTags")->keys.isEmpty());
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("Files"));
    EXPECT_EQ(count("FilesSearchKeywordTags"), 100) << "no cascade is left";
    EXPECT_TRUE(tool.DropTable(nullptr, *catalog, "Nowhere"));
}

SD_INSTANTIATE_DATABASE_SUITE(SchemaToolTest);
SD_INSTANTIATE_DATABASE_SUITE(SchemaToolParentTest);

// A rebuild keeps what SQLite's own words for the table say beyond columns and keys.
TEST(SqliteRebuildTest, KeepsChecksCollationsRowidsAndTheAutoincrementCounter)
{
    TestDatabase database(DbKind::SQLite);
    ASSERT_TRUE(database.ok()) << qPrintable(database.error());
    SD_ASSERT_SQL(database, "CREATE TABLE t (id INTEGER PRIMARY KEY AUTOINCREMENT, code TEXT COLLATE NOCASE CHECK (length(code) < 5), n INTEGER)");
    SD_ASSERT_SQL(database, "CREATE TABLE u (x TEXT, y INTEGER)");
    SD_ASSERT_SQL(database, "CREATE TRIGGER t_count AFTER INSERT ON t BEGIN INSERT INTO u VALUES ('t', NEW.id); END");
    for (int i = 1; i <= 5; ++i)
        SD_ASSERT_SQL(database, QStringLiteral("INSERT INTO t (code, n) VALUES ('c%1', %1)").arg(i));
    SD_ASSERT_SQL(database, "DELETE FROM t WHERE id = 5");
    SD_ASSERT_SQL(database, "INSERT INTO u VALUES ('a', 1), ('b', 2)");
    SD_ASSERT_SQL(database, "DELETE FROM u WHERE x = 'a'");
    const qint64 rowidOfB = database.scalar("SELECT rowid FROM u WHERE x = 'b'").toLongLong();

    Catalog catalog(database.handler());
    SchemaTool tool;
    ASSERT_TRUE(tool.RepairColumn(nullptr, catalog, "t", StructureColumn{"n", adDouble, 0, 0, true, false, {}}));
    ASSERT_TRUE(tool.CreateForeignKey(nullptr, catalog, "u", StructureKey{"FK_u_t", kkForeign, {"y"}, "t", {"id"}, false}) == false)
        << "u holds a row without its t";
    ASSERT_TRUE(tool.CreateForeignKey(nullptr, catalog, "u", StructureKey{"UK_u", kkUnique, {"x", "y"}, {}, {}, false}));

    EXPECT_EQ(GetTableColumn(GetCatalogTable(catalog, "t"), "n")->type, adDouble);
    EXPECT_EQ(database.scalar("SELECT COUNT(*) FROM t WHERE code = 'C3'").toInt(), 1) << "the collation stays";
    EXPECT_FALSE(database.exec("INSERT INTO t (code) VALUES ('toolong')").isEmpty()) << "the check stays";
    SD_ASSERT_SQL(database, "INSERT INTO t (code) VALUES ('new')");
    EXPECT_EQ(database.scalar("SELECT MAX(id) FROM t").toInt(), 6) << "the counter stays";
    EXPECT_EQ(database.scalar("SELECT COUNT(*) FROM u WHERE x = 't'").toInt(), 6) << "the trigger stays";
    EXPECT_EQ(database.scalar("SELECT rowid FROM u WHERE x = 'b'").toLongLong(), rowidOfB) << "rowids stay";
}

} // namespace
