#include "cli/CliTestSupport.h"

#include <QJsonArray>

using namespace searchdata::test;

namespace {

using CliPicklist = CliTest;

/// Entry texts of a picklist with their marks: "text" or "text (hidden)".
QStringList entriesOf(const CliRun& listed)
{
    EXPECT_EQ(listed.exitCode, 0) << listed;
    QStringList entries;
    for (const auto& e : listed.json()["entries"].toArray()) {
        const QJsonObject o = e.toObject();
        if (!o["entry"].toString().isEmpty())
            entries << o["entry"].toString() + (o["hidden"].toBool() ? " (hidden)" : "");
    }
    return entries;
}

TEST_F(CliPicklist, ListsTheDemoEntriesInTheirOrder)
{
    EXPECT_EQ(entriesOf(runOn("Packets", {"--json", "picklist", "list", "OpType"})), (QStringList{"Drill", "Finish Cut", "Mill", "Rough Cut"}));
}

TEST_F(CliPicklist, HiddenEntriesStayWithTheirRecordsButAreNoLongerOffered)
{
    ASSERT_EQ(run({"values", "set", "--record", "1", "Customer=Phillips Mfg"}).exitCode, 0);
    ASSERT_EQ(run({"picklist", "add", "Customer", "Zenith Tools", "acme machine"}).exitCode, 0);
    ASSERT_EQ(run({"picklist", "hide", "Customer", "phillips mfg"}).exitCode, 0);
    EXPECT_EQ(entriesOf(run({"--json", "picklist", "list", "Customer"})),
              (QStringList{"Acme Machine", "General Parts", "Johnson Auto Supply", "Jones Gear and Axle", "Phillips Mfg (hidden)", "Zenith Tools"}));

    // The record that holds the hidden entry still shows it; another record cannot take it.
    EXPECT_EQ(run({"--json", "values", "show", "--record", "1"}).json()["values"].toArray()[2].toObject()["value"].toString(), "Phillips Mfg");
    ASSERT_NE(scalar("SELECT Customer FROM FilesSearchData WHERE Id = 3").toString(), "Phillips Mfg");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "3", "Customer=Phillips Mfg"}), 1, "is not in the picklist of Customer");
    ASSERT_EQ(run({"values", "set", "--record", "3", "Customer=Zenith Tools"}).exitCode, 0);

    ASSERT_EQ(run({"picklist", "show", "Customer", "Phillips Mfg"}).exitCode, 0);
    ASSERT_EQ(run({"values", "set", "--record", "3", "Customer=Phillips Mfg"}).exitCode, 0);
}

TEST_F(CliPicklist, RemovalKeepsTheEntriesThatRecordsUseAndSaysSo)
{
    ASSERT_EQ(run({"picklist", "add", "Customer", "Unused Ltd"}).exitCode, 0);
    const int users = scalar("SELECT COUNT(*) FROM FilesSearchData WHERE Customer = 'General Parts'").toInt();
    ASSERT_GT(users, 0);

    const CliRun removed = run({"picklist", "remove", "Customer", "Unused Ltd", "General Parts"});
    EXPECT_EQ(removed.exitCode, 0) << removed;
    EXPECT_TRUE(removed.err.contains("kept because records use it: General Parts")) << removed;
    QStringList entries = entriesOf(run({"--json", "picklist", "list", "Customer"}));
    EXPECT_FALSE(entries.contains("Unused Ltd"));
    EXPECT_TRUE(entries.contains("General Parts"));

    ASSERT_EQ(run({"picklist", "remove", "Customer", "General Parts", "--hide-kept"}).exitCode, 0);
    EXPECT_TRUE(entriesOf(run({"--json", "picklist", "list", "Customer"})).contains("General Parts (hidden)"));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM FilesSearchData WHERE Customer = 'General Parts'").toInt(), users);
}

TEST_F(CliPicklist, EntriesThatAreNoneOrDoNotFitChangeNothing)
{
    ASSERT_EQ(run({"columns", "add", "Grade", "--type", "int16", "--picklist", "--default", "1"}).exitCode, 0);
    const QString before = snapshot();
    SD_EXPECT_FAILS(run({"picklist", "add", "Grade", "2", "high"}), 1, "\"high\" does not fit the column Grade");
    SD_EXPECT_FAILS(run({"picklist", "add", "Customer", "A customer with a long name"}), 1, "at most 20 characters");
    SD_EXPECT_FAILS(run({"picklist", "hide", "Customer", "Nobody"}), 1, "has no entry \"Nobody\"");
    SD_EXPECT_FAILS(run({"picklist", "remove", "Grade", "1"}), 1, "\"1\" is the default of Grade");
    SD_EXPECT_FAILS(run({"picklist", "list", "PartNo"}), 1, "PartNo has no picklist");
    EXPECT_EQ(snapshot(), before);
}

} // namespace
