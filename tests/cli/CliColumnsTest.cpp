#include "cli/CliTestSupport.h"

#include <QJsonArray>

using namespace searchdata::test;

namespace {

using CliColumns = CliTest;

QJsonObject columnNamed(const QJsonObject& list, const QString& name)
{
    for (const auto& c : list["columns"].toArray())
        if (c.toObject()["name"].toString() == name)
            return c.toObject();
    ADD_FAILURE() << "no column " << qPrintable(name);
    return {};
}

TEST_F(CliColumns, AddEditMoveAndDeleteReachTheDefinitionTable)
{
    ASSERT_EQ(run({"columns", "add", "Qty", "--type", "int32", "--caption", "Quantity", "--description", "Pieces"}).exitCode, 0);
    ASSERT_EQ(run({"columns", "add", "Due", "--type", "datetime", "--date-default", "now", "--disable-edit-time"}).exitCode, 0);
    ASSERT_EQ(run({"columns", "add", "Grade", "--type", "int16", "--picklist", "--default", "2"}).exitCode, 0);

    QJsonObject list = run({"--json", "columns", "list"}).json();
    EXPECT_EQ(columnNamed(list, "Qty")["caption"].toString(), "Quantity");
    EXPECT_EQ(columnNamed(list, "Qty")["position"].toInt(), 4);
    EXPECT_EQ(columnNamed(list, "Due")["dateTimeDefaultMode"].toString(), "now");
    EXPECT_TRUE(columnNamed(list, "Due")["disableEditDateTime"].toBool());
    EXPECT_EQ(columnNamed(list, "Grade")["picklistDefault"].toString(), "2");
    // A new picklist column starts with its default as an entry.
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM PicklistFilesGrade WHERE Grade = 2").toInt(), 1);

    ASSERT_EQ(run({"columns", "edit", "Qty", "--caption", "Pieces", "--description", ""}).exitCode, 0);
    ASSERT_EQ(run({"columns", "move", "Qty", "--to", "1"}).exitCode, 0);
    list = run({"--json", "columns", "list"}).json();
    EXPECT_EQ(columnNamed(list, "Qty")["caption"].toString(), "Pieces");
    EXPECT_EQ(columnNamed(list, "Qty")["description"].toString(), "");
    EXPECT_EQ(columnNamed(list, "Qty")["position"].toInt(), 1);
    EXPECT_EQ(columnNamed(list, "DrawingNo")["position"].toInt(), 2);

    ASSERT_EQ(run({"columns", "delete", "Grade", "--yes"}).exitCode, 0);
    EXPECT_EQ(run({"--json", "columns", "list"}).json()["columns"].toArray().size(), 5);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM sqlite_master WHERE name = 'PicklistFilesGrade'").toInt(), 0);
}

TEST_F(CliColumns, DefinitionsThatCannotBeTakenChangeNothing)
{
    const QString before = snapshot();
    SD_EXPECT_FAILS(run({"columns", "add", "Name", "--type", "text"}), 1, "\"Name\" of Name is a field of the table Files");
    SD_EXPECT_FAILS(run({"columns", "add", "partno", "--type", "text"}), 1, "has a column partno already");
    SD_EXPECT_FAILS(run({"columns", "add", "Notes", "--type", "memo"}), 2, "unknown type \"memo\"");
    SD_EXPECT_FAILS(run({"columns", "add", "Two words", "--type", "text"}), 2, "letters, digits and _ only");
    SD_EXPECT_FAILS(run({"columns", "add", "Flag", "--type", "boolean", "--picklist"}), 2, "a boolean column cannot have a picklist");
    SD_EXPECT_FAILS(run({"columns", "add", "Rate", "--type", "double", "--picklist", "--default", "fast"}), 2, "\"fast\" does not fit");
    SD_EXPECT_FAILS(run({"columns", "add", "Code", "--type", "text", "--size", "300"}), 2, "--size takes a whole number from 1 to 255");
    SD_EXPECT_FAILS(run({"columns", "edit", "PartNo", "--type", "int32"}), 2, "--type does not apply to \"columns edit\"");
    SD_EXPECT_FAILS(run({"columns", "edit", "PartNo", "--size", "40"}), 1, "add --drop-values");
    SD_EXPECT_FAILS(run({"columns", "edit", "DrawingNo", "--caption", "Part Number"}), 1, "taken by the column PartNo");
    SD_EXPECT_FAILS(run({"columns", "edit", "Nope", "--caption", "x"}), 1, "no column \"Nope\" in Files");
    SD_EXPECT_FAILS(run({"columns", "move", "DrawingNo", "--up"}), 1, "DrawingNo is the first column already");
    SD_EXPECT_FAILS(run({"columns", "delete", "PartNo"}), 2, "add --yes");
    // A default is refused like a value that does not fit its field, never cut.
    SD_EXPECT_FAILS(run({"columns", "add", "Remarks", "--type", "note", "--default", QString(300, 'x')}), 1,
                    "does not fit the column Remarks: it takes at most 255 characters");
    SD_EXPECT_FAILS(run({"columns", "add", "Grade", "--type", "text", "--size", "3", "--picklist", "--default", "high"}), 1,
                    "\"high\" does not fit the column Grade: it takes at most 3 characters");
    SD_EXPECT_FAILS(run({"columns", "add", "Remarks", "--type", "note", "--default", "O'Neil"}), 1, "quotes cannot be entered");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(CliColumns, ANewSizeDropsTheValuesOnlyWhenAllowed)
{
    ASSERT_EQ(run({"columns", "edit", "PartNo", "--size", "40", "--drop-values"}).exitCode, 0);
    EXPECT_EQ(columnNamed(run({"--json", "columns", "list"}).json(), "PartNo")["size"].toInt(), 40);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM FilesSearchData WHERE PartNo LIKE 'P-%'").toInt(), 0);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM FilesSearchData WHERE DrawingNo LIKE 'D-%'").toInt(), records);
}

} // namespace
