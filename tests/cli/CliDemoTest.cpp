#include "cli/CliTestSupport.h"

#include <QJsonArray>

using namespace searchdata::test;

namespace {

using CliDemo = CliTest;

QStringList namesOf(const QJsonArray& columns)
{
    QStringList names;
    for (const auto& c : columns)
        names << c.toObject()["name"].toString();
    return names;
}

TEST_F(CliDemo, MakesBothTablesWithTheirSetsAndValues)
{
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Files").toInt(), records);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM Packets").toInt(), records / 10);

    const QJsonArray files = run({"--json", "columns", "list"}).json()["columns"].toArray();
    EXPECT_EQ(namesOf(files), (QStringList{"DrawingNo", "PartNo", "Customer"}));
    EXPECT_EQ(files[0].toObject()["caption"].toString(), "Drawing Number");
    EXPECT_EQ(files[2].toObject()["isPicklist"].toBool(), true);
    const QJsonArray packets = runOn("Packets", {"--json", "columns", "list"}).json()["columns"].toArray();
    EXPECT_EQ(namesOf(packets), (QStringList{"OpNo", "OpType", "Description"}));
    EXPECT_EQ(packets[2].toObject()["type"].toString(), "note");

    // Every record has its values, and every customer comes from the picklist.
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM FilesSearchData WHERE DrawingNo LIKE 'D-%' AND Customer IN "
                     "(SELECT Customer FROM PicklistFilesCustomer WHERE Customer <> '')").toInt(),
              records);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM PacketsSearchData WHERE OpType IN ('Drill', 'Finish Cut', 'Mill', 'Rough Cut')").toInt(),
              records / 10);

    const QJsonObject record = run({"--json", "values", "show", "--record", "5"}).json();
    EXPECT_EQ(record["values"].toArray()[0].toObject()["value"].toString(), "D-10005");
}

TEST_F(CliDemo, RefusesADatabaseThatHasItsTables)
{
    const QString before = snapshot();
    SD_EXPECT_FAILS(runRaw({"--db", database, "demo", "init"}), 1, "has a table Files already");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(CliDemo, HelpNamesEveryCommandAndTheOptionsOfOne)
{
    const CliRun help = runRaw({"--help"});
    EXPECT_EQ(help.exitCode, 0) << help;
    for (const char* command : {"demo init", "columns add", "values set", "keywords add", "picklist remove", "filter save", "template paste",
                                "check", "populate", "import block", "copy", "merge"})
        EXPECT_TRUE(help.out.contains(command)) << command;
    const CliRun columnsAdd = runRaw({"columns", "add", "--help"});
    EXPECT_EQ(columnsAdd.exitCode, 0);
    EXPECT_TRUE(columnsAdd.out.contains("--type TYPE")) << columnsAdd;
}

} // namespace
