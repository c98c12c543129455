#include "searchdata/Catalog.h"
#include "searchdata/Diagnostics.h"
#include "support/TestDatabase.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

class CatalogTest : public DatabaseTest {
protected:
    bool pg() const { return GetParam() == DbKind::PostgreSQL; }
    QString q(const QString& name) { return db().BracketName(name); }
};

TEST_P(CatalogTest, HostColumnsReadWithTheirTypeCodesSizesAndDefaults)
{
    const QString blob = pg() ? "bytea" : "BLOB";
    const QString extra = pg() ? ", " + q("Guid") + " uuid" : QString();
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("Host") + " (" + q("Id") + " BIGINT NOT NULL, " + q("Note") + " TEXT, " +
                                q("Amount") + " NUMERIC(10,2) DEFAULT 1.5, " + q("Born") + " DATE, " + q("Seen") + " TIMESTAMP, " +
                                q("Code") + " CHAR(5) NOT NULL DEFAULT 'ab''c', " + q("Data") + " " + blob + ", " + q("Title") +
                                " VARCHAR(40) DEFAULT NULL, " + q("Small") + " SMALLINT DEFAULT -3, " + q("Ratio") +
                                " DOUBLE PRECISION, " + q("Flag") + " BOOLEAN" + extra + ")");
    Catalog catalog(testDb().handler());
    const CatalogTablePtr table = GetCatalogTable(catalog, "Host");
    ASSERT_NE(table, nullptr);

    struct Expected {
        const char* name;
        int type;
        int size;
        bool nullable;
    };
    QList<Expected> expected = {{"Id", 20, 0, false},  {"Note", 202, 0, true},   {"Amount", 131, 10, true}, {"Born", 7, 0, true},
                                {"Seen", 7, 0, true},  {"Code", 129, 5, false},  {"Data", 205, 0, true},   {"Title", 202, 40, true},
                                {"Small", 2, 0, true}, {"Ratio", 5, 0, true},    {"Flag", 11, 0, true}};
    if (pg())
        expected.append({"Guid", 72, 0, true});
    ASSERT_EQ(table->columns.size(), expected.size());
    for (qsizetype i = 0; i < expected.size(); ++i) {
        const CatalogColumn& c = table->columns[i];
        EXPECT_EQ(c.name, expected[i].name) << i;
        EXPECT_EQ(c.type, expected[i].type) << expected[i].name << " declared " << qPrintable(c.declaredType);
        EXPECT_EQ(c.definedSize, expected[i].size) << expected[i].name;
        EXPECT_EQ(c.nullable, expected[i].nullable) << expected[i].name;
    }
    // Defaults read back as written, without the casts PostgreSQL adds; DEFAULT NULL is none.
    EXPECT_EQ(GetTableColumn(table, "Code")->defaultText, "'ab''c'");
    EXPECT_EQ(GetTableColumn(table, "Small")->defaultText, "-3");
    EXPECT_EQ(GetTableColumn(table, "Amount")->defaultText, "1.5");
    EXPECT_FALSE(GetTableColumn(table, "Title")->hasDefault);
    EXPECT_FALSE(GetTableColumn(table, "Note")->hasDefault);
}

TEST_P(CatalogTest, KeysAndIndexesReadBackByName)
{
    execAll({"CREATE TABLE " + q("Parent") + " (" + q("Id") + " INTEGER NOT NULL, " + q("Code") + " VARCHAR(10) NOT NULL, CONSTRAINT " +
                 q("PK_Parent") + " PRIMARY KEY (" + q("Id") + "), CONSTRAINT " + q("UK_ParentCode") + " UNIQUE (" + q("Code") + "))",
             "CREATE TABLE " + q("Child") + " (" + q("ParentId") + " INTEGER, " + q("Code") + " VARCHAR(10), " + q("Seq") +
                 " INTEGER, CONSTRAINT " + q("FK_Child_Owner") + " FOREIGN KEY (" + q("ParentId") + ") REFERENCES " + q("Parent") +
                 " (" + q("Id") + ") ON DELETE CASCADE, CONSTRAINT " + q("FK_Child_Code") + " FOREIGN KEY (" + q("Code") +
                 ") REFERENCES " + q("Parent") + " (" + q("Code") + "))",
             "CREATE INDEX " + q("IX_ChildSeq") + " ON " + q("Child") + " (" + q("Seq") + ", " + q("Code") + ")",
             "CREATE UNIQUE INDEX " + q("IX_ChildUnique") + " ON " + q("Child") + " (" + q("ParentId") + ", " + q("Seq") + ")"});
    Catalog catalog(testDb().handler());
    const CatalogTablePtr parent = GetCatalogTable(catalog, "Parent");
    const CatalogTablePtr child = GetCatalogTable(catalog, "Child");
    ASSERT_NE(parent, nullptr);
    ASSERT_NE(child, nullptr);

    const auto pk = GetTableKey(parent, "PK_Parent");
    ASSERT_TRUE(pk.has_value());
    EXPECT_EQ(pk->kind, kkPrimary);
    EXPECT_EQ(pk->columns, QStringList{"Id"});
    const auto uk = GetTableKey(parent, "uk_parentcode");
    ASSERT_TRUE(uk.has_value());
    EXPECT_EQ(uk->kind, kkUnique);
    EXPECT_EQ(uk->columns, QStringList{"Code"});
    EXPECT_TRUE(parent->indexes.isEmpty()) << "indexes behind keys are not listed as indexes";

    const auto owner = GetTableKey(child, "FK_Child_Owner");
    ASSERT_TRUE(owner.has_value());
    EXPECT_EQ(owner->kind, kkForeign);
    EXPECT_EQ(owner->relatedTable, "Parent");
    EXPECT_EQ(owner->relatedColumns, QStringList{"Id"});
    EXPECT_TRUE(owner->cascade);
    EXPECT_EQ(owner->deleteRule, "CASCADE");
    const auto code = GetTableKey(child, "FK_Child_Code");
    ASSERT_TRUE(code.has_value());
    EXPECT_FALSE(code->cascade);
    EXPECT_EQ(code->deleteRule, "NO ACTION");
    EXPECT_EQ(code->relatedColumns, QStringList{"Code"});

    const auto seq = GetTableIndex(child, "IX_ChildSeq");
    ASSERT_TRUE(seq.has_value());
    EXPECT_EQ(seq->columns, QStringList({"Seq", "Code"}));
    EXPECT_FALSE(seq->unique);
    const auto unique = GetTableIndex(child, "IX_ChildUnique");
    ASSERT_TRUE(unique.has_value());
    EXPECT_TRUE(unique->unique);

    const auto refs = catalog.ReferencesTo("parent");
    ASSERT_EQ(refs.size(), 2);
    EXPECT_EQ(refs[0].first->name, "Child");
}

TEST_P(CatalogTest, LookupsGiveNothingForWhatIsMissingAndIgnoreCase)
{
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("Files") + " (" + q("FileId") + " INTEGER PRIMARY KEY)");
    Catalog catalog(testDb().handler());
    Diagnostics::instance().clearReports();

    const CatalogTablePtr files = GetCatalogTable(catalog, "FILES");
    ASSERT_NE(files, nullptr);
    EXPECT_EQ(files->name, "Files");
    EXPECT_TRUE(GetTableColumn(files, "fileid").has_value());
    EXPECT_EQ(GetCatalogTable(catalog, "Nowhere"), nullptr);
    EXPECT_FALSE(GetTableColumn(files, "Nothing").has_value());
    EXPECT_FALSE(GetTableIndex(files, "Nothing").has_value());
    EXPECT_FALSE(GetTableKey(files, "Nothing").has_value());
    EXPECT_FALSE(GetTableColumn(CatalogTablePtr(), "FileId").has_value());
    EXPECT_FALSE(GetTableKey(CatalogTablePtr(), "FileId").has_value());
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);
}

TEST_P(CatalogTest, RefreshSeesChangesWhileKeptTablesStayAsRead)
{
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("T") + " (" + q("A") + " INTEGER)");
    Catalog catalog(testDb().handler());
    const CatalogTablePtr before = GetCatalogTable(catalog, "T");
    ASSERT_NE(before, nullptr);
    EXPECT_EQ(catalog.handler(), testDb().handler());

    execAll({"ALTER TABLE " + q("T") + " ADD COLUMN " + q("B") + " VARCHAR(5)", "CREATE TABLE " + q("U") + " (" + q("X") + " INTEGER)"});
    EXPECT_FALSE(GetTableColumn(GetCatalogTable(catalog, "T"), "B").has_value()) << "not read again yet";
    ASSERT_TRUE(catalog.Refresh());
    EXPECT_TRUE(GetTableColumn(GetCatalogTable(catalog, "T"), "B").has_value());
    EXPECT_NE(GetCatalogTable(catalog, "U"), nullptr);
    EXPECT_EQ(before->columns.size(), 1) << "a table given out earlier is a snapshot";
    EXPECT_EQ(catalog.Tables().size(), 2);
}

SD_INSTANTIATE_DATABASE_SUITE(CatalogTest);

// SQLite keeps no constraint names in its pragmas: they come from the CREATE TABLE text, however
// it is written.
class SqliteCatalogTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(database.ok()) << qPrintable(database.error()); }
    TestDatabase database{DbKind::SQLite};
};

TEST_F(SqliteCatalogTest, NamesComeFromTheTableTextHoweverWritten)
{
    SD_ASSERT_SQL(database, R"(CREATE TABLE "Odd Parent" ("the id" INTEGER, [k] TEXT UNIQUE, PRIMARY KEY ("the id")))");
    SD_ASSERT_SQL(database, R"(
        CREATE TABLE [Kid] ( -- a comment, with a comma
            `pid` INTEGER CONSTRAINT "FK kid, parent" REFERENCES "Odd Parent" ON DELETE SET NULL DEFERRABLE INITIALLY DEFERRED,
            code TEXT COLLATE NOCASE CONSTRAINT UK_KidCode UNIQUE NOT NULL DEFAULT 'a,b',
            amount REAL CHECK (amount > 0 AND amount < 10) DEFAULT -1.5,
            /* a block comment ( with a parenthesis */
            other INTEGER REFERENCES [Kid] (pid),
            CONSTRAINT [pk kid] PRIMARY KEY (code, pid)
        ))");
    Catalog catalog(database.handler());
    const CatalogTablePtr parent = GetCatalogTable(catalog, "Odd Parent");
    const CatalogTablePtr kid = GetCatalogTable(catalog, "kid");
    ASSERT_NE(parent, nullptr);
    ASSERT_NE(kid, nullptr);

    ASSERT_TRUE(GetTableKey(parent, "PK_Odd Parent").has_value()) << "an unnamed primary key";
    EXPECT_FALSE(GetTableColumn(parent, "the id")->nullable) << "an INTEGER PRIMARY KEY is the rowid";
    ASSERT_EQ(parent->keys.size(), 2);
    EXPECT_TRUE(parent->keys[1].name.startsWith("sqlite_autoindex_")) << qPrintable(parent->keys[1].name);

    const auto fk = GetTableKey(kid, "FK kid, parent");
    ASSERT_TRUE(fk.has_value());
    EXPECT_EQ(fk->relatedTable, "Odd Parent");
    EXPECT_EQ(fk->relatedColumns, QStringList{"the id"}) << "the related primary key when no columns are written";
    EXPECT_EQ(fk->deleteRule, "SET NULL");
    EXPECT_FALSE(fk->cascade);
    const auto pk = GetTableKey(kid, "pk kid");
    ASSERT_TRUE(pk.has_value());
    EXPECT_EQ(pk->columns, QStringList({"code", "pid"}));
    ASSERT_TRUE(GetTableKey(kid, "UK_KidCode").has_value());
    const auto self = GetTableKey(kid, "FK_Kid_Kid");
    ASSERT_TRUE(self.has_value()) << "an unnamed foreign key";
    EXPECT_EQ(self->columns, QStringList{"other"});
    EXPECT_EQ(GetTableColumn(kid, "amount")->defaultText, "-1.5");
    EXPECT_EQ(GetTableColumn(kid, "code")->defaultText, "'a,b'");
}

} // namespace
