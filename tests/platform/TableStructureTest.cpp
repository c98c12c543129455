#include "searchdata/Diagnostics.h"
#include "searchdata/TableStructure.h"

#include <gtest/gtest.h>

using namespace searchdata;

namespace {

class TableStructureTest : public ::testing::Test {
protected:
    void SetUp() override { Diagnostics::instance().clearReports(); }
};

TEST_F(TableStructureTest, DefinitionTableBuildsWithItsKeysInOrder)
{
    auto s = TableStructure::NewStructure("SearchColumnConfiguration");
    ASSERT_NE(s, nullptr);
    ASSERT_TRUE(s->AddColumn("BaseTable", adVarWChar, 0, 0, false));
    ASSERT_TRUE(s->AddColumn("Position", adInteger, 0, 0, false));
    ASSERT_TRUE(s->AddColumn("Name", adVarWChar, 0, 0, false));
    ASSERT_TRUE(s->AddColumn("DateTimeDefaultMode", adInteger, 0, 0, true, true, "0"));
    ASSERT_TRUE(s->AddIndex("BaseTableIndex", {"BaseTable"}));
    ASSERT_TRUE(s->AddPrimaryKey("PK_SearchColumnConfiguration", {"BaseTable", "Position"}));
    ASSERT_TRUE(s->AddUniqueKey("UK_SearchColumnConfiguration", {"BaseTable", "Name"}));

    QStringList names;
    for (const StructureColumn& c : s->StructureColumns())
        names << c.name;
    EXPECT_EQ(names, QStringList({"BaseTable", "Position", "Name", "DateTimeDefaultMode"}));
    ASSERT_EQ(s->StructureKeys().size(), 2);
    // The opening of a search takes the first key of kind 2 as the primary key.
    EXPECT_EQ(int(s->StructureKeys()[0].kind), 2);
    EXPECT_EQ(s->StructureKeys()[0].columns, QStringList({"BaseTable", "Position"}));
    EXPECT_NE(int(s->StructureKeys()[1].kind), 2);
    ASSERT_TRUE(s->PrimaryKey().has_value());
    EXPECT_EQ(s->PrimaryKey()->name, "PK_SearchColumnConfiguration");

    const auto mode = s->ColumnNamed("datetimedefaultmode");
    ASSERT_TRUE(mode.has_value());
    EXPECT_TRUE(mode->hasDefault);
    EXPECT_EQ(mode->defaultText, "0");
    EXPECT_FALSE(s->ColumnNamed("MergeName").has_value());
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);
}

TEST_F(TableStructureTest, StepsThatCannotBeTakenFailReportAndChangeNothing)
{
    TableStructure s("T");
    ASSERT_TRUE(s.AddColumn("A", adInteger));
    ASSERT_TRUE(s.AddColumn("B", adVarWChar, 40));
    ASSERT_TRUE(s.AddUniqueKey("UK_T", {"A"}));

    EXPECT_FALSE(s.AddColumn("a", adInteger)) << "a name differing only in case";
    EXPECT_FALSE(s.AddColumn("", adInteger));
    EXPECT_FALSE(s.AddColumn("C", 9999)) << "unknown type code";
    EXPECT_FALSE(s.AddColumn("C", adVarWChar, -1));
    EXPECT_FALSE(s.AddIndex("IX", {"Missing"}));
    EXPECT_FALSE(s.AddIndex("uk_t", {"B"})) << "name taken by a key";
    EXPECT_FALSE(s.AddIndex("IX", {}));
    EXPECT_FALSE(s.AddIndex("IX", {"A", "a"}));
    EXPECT_FALSE(s.AddUniqueKey("", {"A"}));
    ASSERT_TRUE(s.AddPrimaryKey("PK_T", {"B"}));
    EXPECT_FALSE(s.AddPrimaryKey("PK2", {"A"})) << "a second primary key";
    EXPECT_FALSE(s.AddForeignKey("FK", {"A"}, "R", {"X", "Y"}, false)) << "column counts differ";
    EXPECT_FALSE(s.AddForeignKey("FK", {"A"}, "", {"X"}, false));

    EXPECT_EQ(s.StructureColumns().size(), 2);
    EXPECT_EQ(s.StructureKeys().size(), 2);
    EXPECT_TRUE(s.StructureIndexes().isEmpty());
    EXPECT_EQ(Diagnostics::instance().reportCount(), 12);
    const auto last = Diagnostics::instance().lastError();
    ASSERT_TRUE(last.has_value());
    EXPECT_EQ(last->procedure, "AddForeignKey");
}

TEST_F(TableStructureTest, UnnamedForeignKeysGetNamesThatCanBeFoundAgain)
{
    TableStructure s("FilesSearchData");
    ASSERT_TRUE(s.AddColumn("FileId", adInteger, 0, 0, false));
    ASSERT_TRUE(s.AddColumn("OwnerId", adInteger));
    ASSERT_TRUE(s.AddForeignKey("", {"FileId"}, "Files", {"FileId"}, true));
    ASSERT_TRUE(s.AddForeignKey("", {"OwnerId"}, "Files", {"FileId"}, false));
    ASSERT_EQ(s.StructureKeys().size(), 2);
    EXPECT_EQ(s.StructureKeys()[0].name, "FK_FilesSearchData_Files");
    EXPECT_EQ(s.StructureKeys()[1].name, "FK_FilesSearchData_Files_2");
    EXPECT_TRUE(s.StructureKeys()[0].cascade);
    EXPECT_EQ(int(s.StructureKeys()[0].kind), int(kkForeign));
    ASSERT_TRUE(s.KeyNamed("fk_filessearchdata_files").has_value());
}

TEST_F(TableStructureTest, FillNeedsASourceAndATarget)
{
    auto population = TableStructure::NewStructure("FilesSearchData");
    ASSERT_NE(population, nullptr);
    ASSERT_TRUE(population->AddColumn("FileId", adInteger));

    auto filled = TableStructure::NewStructure("FilesSearchData", true, "Files", "[FileId]", population, "");
    ASSERT_NE(filled, nullptr);
    ASSERT_TRUE(filled->fill().has_value());
    EXPECT_EQ(filled->fill()->baseTableName, "Files");
    EXPECT_EQ(filled->fill()->population, population);

    EXPECT_NE(TableStructure::NewStructure("T", true, "", "", population, "SELECT [FileId] FROM [Files] WHERE 1 = 1"), nullptr);
    EXPECT_FALSE(TableStructure::NewStructure("T", false)->fill().has_value());
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);

    EXPECT_EQ(TableStructure::NewStructure(" "), nullptr);
    EXPECT_EQ(TableStructure::NewStructure("T", true, "Files", "", nullptr, ""), nullptr) << "no key to select or write";
    EXPECT_EQ(TableStructure::NewStructure("T", true, "", "[FileId]", nullptr, ""), nullptr) << "no base table to select from";
    EXPECT_EQ(Diagnostics::instance().reportCount(), 3);
}

} // namespace
