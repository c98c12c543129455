#include "cli/CliTestSupport.h"
#include "support/TestDatabase.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <unistd.h>

using namespace searchdata::test;

namespace {

using CliErrors = CliTest;

TEST_F(CliErrors, ADatabaseThatCannotBeOpenedIsNamed)
{
    const QString missing = dir.filePath("missing.sqlite");
    SD_EXPECT_FAILS(runRaw({"--db", missing, "--table", "Files", "columns", "list"}), 1, "cannot open " + missing + ": no such file");
    EXPECT_FALSE(QFile::exists(missing)); // not made on the way
    SD_EXPECT_FAILS(runRaw({"--db", dir.path(), "--table", "Files", "columns", "list"}), 1, "cannot open " + dir.path());
    SD_EXPECT_FAILS(runRaw({"--db", "postgresql://nobody@127.0.0.1:1/none", "--table", "Files", "columns", "list"}), 1,
                    "cannot open postgresql://nobody@127.0.0.1:1/none");
}

TEST_F(CliErrors, AReadOnlyDatabaseRefusesChangesAndStaysAsItWas)
{
    const QString before = snapshot();
    const QStringList readOnly = {"--db", database, "--table", "Files", "--quiet", "--read-only"};
    // Reading works.
    EXPECT_EQ(runRaw(readOnly + QStringList{"values", "show", "--record", "1"}).exitCode, 0);
    SD_EXPECT_FAILS(runRaw(readOnly + QStringList{"values", "set", "--record", "1", "PartNo=P-9"}), 1,
                    "cannot save the values of record 1 of Files: attempt to write a readonly database");
    SD_EXPECT_FAILS(runRaw(readOnly + QStringList{"columns", "add", "Qty", "--type", "int32"}), 1, "cannot save the columns of Files");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(CliErrors, AFileWithoutWritePermissionRefusesChanges)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "file permissions do not bind the superuser; --read-only stands in for them";
    const QString before = snapshot();
    ASSERT_TRUE(QFile::setPermissions(database, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    SD_EXPECT_FAILS(run({"values", "set", "--record", "1", "PartNo=P-9"}), 1, "readonly database");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(CliErrors, BadUsageGivesExitCodeTwoAndSaysWhatIsWrong)
{
    SD_EXPECT_FAILS(runRaw({"--table", "Files", "columns", "list"}), 2, "--db is required");
    SD_EXPECT_FAILS(runRaw({"--db", database, "columns", "list"}), 2, "--table is required (tables with search columns: Files, Packets)");
    SD_EXPECT_FAILS(run({"frobnicate"}), 2, "unknown command \"frobnicate\"");
    SD_EXPECT_FAILS(run({"columns"}), 2, "\"columns\" needs one of: list, add, edit, move, delete");
    SD_EXPECT_FAILS(run({"columns", "list", "--colour"}), 2, "unknown option --colour");
    SD_EXPECT_FAILS(run({"columns", "list", "--record", "1"}), 2, "--record does not apply to \"columns list\"");
    SD_EXPECT_FAILS(run({"columns", "add"}), 2, "\"columns add\" needs NAME");
    SD_EXPECT_FAILS(run({"filter", "--limit", "-1", "--where", "Size > 1"}), 2, "--limit takes a whole number");
    SD_EXPECT_FAILS(run({"values", "show", "--record"}), 2, "--record needs a value");
}

TEST_F(CliErrors, ErrorsAreJsonWithJson)
{
    const CliRun failed = run({"--json", "values", "show", "--record", "9999"});
    EXPECT_EQ(failed.exitCode, 1);
    const QJsonObject error = QJsonDocument::fromJson(failed.err.toUtf8()).object();
    EXPECT_EQ(error["exitCode"].toInt(), 1) << failed;
    EXPECT_TRUE(error["error"].toString().contains("no record with Id 9999")) << failed;
}

// The same program on a server database: made, changed, read back and filtered.
class CliPostgres : public CliTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        ASSERT_TRUE(server.ok()) << qPrintable(server.error());
    }
    CliRun runOnServer(const QStringList& args) const
    {
        return runRaw(QStringList{"--db", server.location(), "--profile", dir.filePath("p.ini"), "--quiet", "--table", "Files"} + args);
    }
    TestDatabase server{DbKind::PostgreSQL};
};

TEST_F(CliPostgres, RunsOnAServerDatabase)
{
    const CliRun made = runRaw({"--db", server.location(), "--quiet", "demo", "init", "--records", "12"});
    ASSERT_EQ(made.exitCode, 0) << made;
    ASSERT_EQ(runOnServer({"columns", "add", "Tags", "--type", "keyword"}).exitCode, 0);
    SD_EXPECT_FAILS(runOnServer({"values", "set", "--record", "5", "Customer=Nobody"}), 1, "not in the picklist of Customer");
    ASSERT_EQ(runOnServer({"values", "set", "--record", "5", "PartNo=P-55", "Customer=Phillips Mfg"}).exitCode, 0);
    ASSERT_EQ(runOnServer({"keywords", "add", "--record", "5", "Tags", "red"}).exitCode, 0);
    const CliRun filtered = runOnServer({"--json", "filter", "--where", "Customer = Phillips Mfg", "--and", "Tags includes red"});
    ASSERT_EQ(filtered.exitCode, 0) << filtered;
    EXPECT_TRUE(filtered.json()["sql"].toString().contains("\"FilesSearchData\".\"Customer\" = 'Phillips Mfg'")) << filtered;
    const QJsonArray records = filtered.json()["records"].toArray();
    ASSERT_EQ(records.size(), 1) << filtered;
    EXPECT_EQ(records[0].toObject()["Id"].toInt(), 5);
    EXPECT_EQ(records[0].toObject()["Part Number"].toString(), "P-55");
    EXPECT_EQ(runOnServer({"check"}).exitCode, 0);
    SD_EXPECT_FAILS(runOnServer({"--read-only", "values", "set", "--record", "5", "PartNo=P-6"}), 1, "read-only transaction");
}

} // namespace
