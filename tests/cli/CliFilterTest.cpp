#include "cli/CliTestSupport.h"

#include <QJsonArray>

using namespace searchdata::test;

namespace {

class CliFilter : public CliTest {
protected:
    void SetUp() override
    {
        CliTest::SetUp();
        if (HasFatalFailure())
            return;
        ASSERT_EQ(run({"columns", "add", "Tags", "--type", "keyword"}).exitCode, 0);
        ASSERT_EQ(run({"columns", "add", "Qty", "--type", "int32"}).exitCode, 0);
        // Records 2, 3 and 4 are told apart from the rest, which keep their demo values.
        ASSERT_EQ(run({"values", "set", "--record", "2", "Customer=Zero", "Qty=5"}).exitCode, 1); // not in the picklist
        ASSERT_EQ(run({"values", "set", "--record", "2", "PartNo=X-2", "Customer=Acme Machine", "Qty=5"}).exitCode, 0);
        ASSERT_EQ(run({"values", "set", "--record", "3", "PartNo=X-3", "Customer=Acme Machine", "Qty=50"}).exitCode, 0);
        ASSERT_EQ(run({"values", "set", "--record", "4", "PartNo=X-4", "Customer=Phillips Mfg", "Qty=500"}).exitCode, 0);
        ASSERT_EQ(run({"keywords", "add", "--record", "3", "Tags", "red"}).exitCode, 0);
        ASSERT_EQ(run({"keywords", "add", "--record", "4", "Tags", "red", "blue"}).exitCode, 0);
    }

    QList<int> idsOf(const CliRun& result) const
    {
        EXPECT_EQ(result.exitCode, 0) << result;
        QList<int> ids;
        for (const auto& r : result.json()["records"].toArray())
            ids << r.toObject()["Id"].toInt();
        return ids;
    }
};

TEST_F(CliFilter, TermsAreJoinedInTheOrderGiven)
{
    EXPECT_EQ(idsOf(run({"--json", "filter", "--where", "Part Number like X-%", "--and", "Customer = Acme Machine"})), (QList<int>{2, 3}));
    EXPECT_EQ(idsOf(run({"--json", "filter", "--where", "PartNo like X-%", "--and", "Tags includes red"})), (QList<int>{3, 4}));
    EXPECT_EQ(idsOf(run({"--json", "filter", "--where", "Qty >= 50", "--or", "Tags includes blue"})), (QList<int>{3, 4}));
    EXPECT_EQ(idsOf(run({"--json", "filter", "--where", "PartNo like X-%", "--and", "Tags excludes red"})), (QList<int>{2}));
    // A field of the base table, and a quoted value.
    EXPECT_EQ(idsOf(run({"--json", "filter", "--where", "Files.Id < 3", "--and", "\"Part Number\" = 'X-2'"})), (QList<int>{2}));
}

TEST_F(CliFilter, PrintsBothFormsOfThePredicate)
{
    const CliRun result = run({"filter", "--where", "Customer = O'Neil", "--sql", "--params"});
    ASSERT_EQ(result.exitCode, 0) << result;
    EXPECT_TRUE(result.out.contains("SQL: [Files].[Id] IN (SELECT")) << result;
    EXPECT_TRUE(result.out.contains("[FilesSearchData].[Customer] = 'O''Neil'")) << result;
    EXPECT_TRUE(result.out.contains("[FilesSearchData].[Customer] = ?")) << result;
    EXPECT_TRUE(result.out.contains("parameters: 'O'Neil'")) << result;
    EXPECT_TRUE(result.out.contains("0 records match")) << result;

    const QJsonObject json = run({"--json", "filter", "--where", "Qty > 5"}).json();
    EXPECT_EQ(json["parameterized"].toObject()["values"].toArray(), (QJsonArray{5}));
    EXPECT_EQ(json["count"].toInt(), 2);
}

TEST_F(CliFilter, TermsThatCannotBeReadAreRefused)
{
    SD_EXPECT_FAILS(run({"filter", "--where", "Customer"}), 2, "malformed term \"Customer\": no operator");
    SD_EXPECT_FAILS(run({"filter", "--where", "Customer Acme"}), 2, "\"Acme\" is no operator");
    SD_EXPECT_FAILS(run({"filter", "--where", "Qty >"}), 2, "no value follows \">\"");
    SD_EXPECT_FAILS(run({"filter", "--where", "\"Part Number = X"}), 2, "not closed");
    SD_EXPECT_FAILS(run({"filter", "--and", "Qty > 1"}), 2, "the first term is given with --where");
    SD_EXPECT_FAILS(run({"filter"}), 2, "give a filter");
    SD_EXPECT_FAILS(run({"filter", "--where", "Qty like 5"}), 2, "\"like\" does not apply to Qty");
    SD_EXPECT_FAILS(run({"filter", "--where", "Tags = red"}), 2, "use includes, excludes");
    SD_EXPECT_FAILS(run({"filter", "--where", "Colour = red"}), 1, "unknown field \"Colour\"");
    SD_EXPECT_FAILS(run({"filter", "--where", "Qty > many"}), 1, "\"many\" in term \"Qty > many\" is not a number");
}

TEST_F(CliFilter, ASavedFilterComesBackFromTheProfile)
{
    SD_EXPECT_FAILS(run({"filter", "load"}), 1, "no saved filter of Files");
    ASSERT_EQ(run({"filter", "save", "--where", "Tags includes red", "--or", "Qty = 5"}).exitCode, 0);
    const CliRun loaded = run({"--json", "filter", "load"});
    EXPECT_EQ(idsOf(loaded), (QList<int>{2, 3, 4}));
    EXPECT_EQ(loaded.json()["terms"].toArray().size(), 2);
    // The archive mode keeps a filter of its own.
    SD_EXPECT_FAILS(run({"filter", "load", "--archive"}), 1, "no saved filter");
}

} // namespace
