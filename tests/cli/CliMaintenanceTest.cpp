#include "cli/CliTestSupport.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>

using namespace searchdata::test;

namespace {

using CliMaintenance = CliTest;

TEST_F(CliMaintenance, CheckNamesEachDifferenceWithoutChangingAndRepairsOnRequest)
{
    ASSERT_EQ(run({"columns", "add", "Tags", "--type", "keyword"}).exitCode, 0);
    const CliRun inOrder = run({"check"});
    EXPECT_EQ(inOrder.exitCode, 0) << inOrder;
    EXPECT_TRUE(inOrder.out.contains("agree with their definitions")) << inOrder;

    exec("ALTER TABLE FilesSearchData DROP COLUMN PartNo");
    exec("ALTER TABLE FilesSearchData ADD COLUMN Extra INTEGER");
    exec("DROP TABLE FilesSearchKeywordTags");
    const QString damaged = snapshot();
    const CliRun found = run({"check"});
    EXPECT_EQ(found.exitCode, 1) << found;
    for (const char* line : {"  table FilesSearchData: column PartNo is missing\n", "  table FilesSearchData: field Extra belongs to no column\n",
                             "  table FilesSearchKeywordTags is missing\n"})
        EXPECT_TRUE(found.out.contains(line)) << line << '\n' << found;
    EXPECT_FALSE(found.out.contains("question")) << found;

    const QJsonArray differences = run({"--json", "check"}).json()["differences"].toArray();
    QStringList kinds;
    for (const auto& d : differences)
        kinds << d.toObject()["kind"].toString() + ' ' + d.toObject()["table"].toString() + ' ' + d.toObject()["item"].toString();
    EXPECT_TRUE(kinds.contains("missing column FilesSearchData PartNo")) << qPrintable(kinds.join(", "));
    EXPECT_TRUE(kinds.contains("field without column FilesSearchData Extra")) << qPrintable(kinds.join(", "));
    EXPECT_TRUE(kinds.contains("missing table FilesSearchKeywordTags ")) << qPrintable(kinds.join(", "));
    EXPECT_EQ(snapshot(), damaged);

    // The schema log keeps the blanks between its words.
    const QString log = dir.filePath("schema.log");
    run({"check", "--repair", "--log", log});
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM pragma_table_info('FilesSearchData') WHERE name = 'PartNo'").toInt(), 1);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM pragma_table_info('FilesSearchData') WHERE name = 'Extra'").toInt(), 0);
    QFile logFile(log);
    ASSERT_TRUE(logFile.open(QIODevice::ReadOnly | QIODevice::Text));
    const QString logText = QString::fromUtf8(logFile.readAll());
    EXPECT_TRUE(logText.contains("FilesSearchData: database column Extra missing from SearchColumnConfiguration\n")) << qPrintable(logText);
    EXPECT_TRUE(logText.contains("FilesSearchData: deleted column Extra from FilesSearchData\n")) << qPrintable(logText);
}

TEST_F(CliMaintenance, PopulateGivesNewRecordsTheirRowsAndDropsOrphans)
{
    exec("INSERT INTO Files (Id, Name) VALUES (500, 'new.nc')");
    exec("DELETE FROM Files WHERE Id = 7"); // this connection does not enforce the cascade
    const QString before = snapshot();
    const CliRun asked = run({"populate", "--check"});
    EXPECT_EQ(asked.exitCode, 1) << asked;
    EXPECT_EQ(snapshot(), before);

    ASSERT_EQ(run({"populate"}).exitCode, 0);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM FilesSearchData WHERE Id = 500").toInt(), 1);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM FilesSearchData WHERE Id = 7").toInt(), 0);
    EXPECT_EQ(run({"populate", "--check"}).exitCode, 0);
}

TEST_F(CliMaintenance, ADataBlockGoesIntoItsRecordAndBadLinesIntoALog)
{
    const QString program = dir.filePath("flange.nc");
    QFile file(program);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("%\nO1234 (FLANGE)\n(Begin Search Data)\n(Drawing Number: D-77)\n(PartNo: P-77)\n(Colour: red)\n(End Search Data)\nM30\n");
    file.close();

    const CliRun imported = run({"import", "block", program, "--record", "6", "--log-folder", dir.filePath("logs")});
    EXPECT_EQ(imported.exitCode, 3) << imported; // one line could not be imported, the others were saved
    EXPECT_TRUE(imported.err.contains("1 lines of")) << imported;
    EXPECT_EQ(scalar("SELECT DrawingNo || '/' || PartNo FROM FilesSearchData WHERE Id = 6").toString(), "D-77/P-77");
    EXPECT_TRUE(QDir(dir.filePath("logs/ImportSearchDataErrors")).exists());

    // When no line goes in, the record is unchanged, which exit code 1 says.
    const QString before = snapshot();
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("(Begin Search Data)\n(Colour: red)\n(Shape: round)\n(End Search Data)\n");
    file.close();
    const CliRun nothing = run({"import", "block", program, "--record", "7", "--log-folder", dir.filePath("logs2")});
    EXPECT_EQ(nothing.exitCode, 1) << nothing;
    EXPECT_TRUE(nothing.err.contains("2 lines of")) << nothing;
    EXPECT_EQ(snapshot(), before);

    SD_EXPECT_FAILS(run({"import", "block", dir.filePath("missing.nc"), "--record", "6"}), 1, "cannot read");
    const QString empty = dir.filePath("empty.nc");
    QFile(empty).open(QIODevice::WriteOnly);
    SD_EXPECT_FAILS(run({"import", "block", empty, "--record", "6"}), 1, "holds no search data block");
}

TEST_F(CliMaintenance, CopyTakesTheValuesOfAnotherRecord)
{
    ASSERT_EQ(run({"values", "set", "--record", "1", "PartNo=P-1", "Customer=Jones Gear and Axle"}).exitCode, 0);
    ASSERT_EQ(run({"copy", "--from", "1", "--to", "2"}).exitCode, 0);
    EXPECT_EQ(scalar("SELECT PartNo || '/' || Customer FROM FilesSearchData WHERE Id = 2").toString(), "P-1/Jones Gear and Axle");
    const QString before = snapshot();
    SD_EXPECT_FAILS(run({"copy", "--from", "1", "--to", "999"}), 1, "no record with Id 999");
    SD_EXPECT_FAILS(run({"copy", "--from", "1", "--to", "1"}), 2, "the same record");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(CliMaintenance, MergeBringsColumnsAndValuesIntoATableWithout)
{
    const QString target = dir.filePath("target.sqlite");
    exec("CREATE TABLE Files (Id INTEGER NOT NULL PRIMARY KEY, Name VARCHAR(255))", target);
    for (int id : {3, 4, 99})
        exec(QStringLiteral("INSERT INTO Files VALUES (%1, 'f%1')").arg(id), target);

    const CliRun merged = runRaw({"--db", target, "--table", "Files", "--quiet", "--json", "merge", "--from", database});
    ASSERT_EQ(merged.exitCode, 0) << merged;
    EXPECT_EQ(merged.json()["merged"].toInt(), 2);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM SearchColumnConfiguration WHERE BaseTable = 'Files'", target).toInt(), 3);
    EXPECT_EQ(scalar("SELECT DrawingNo FROM FilesSearchData WHERE Id = 4", target).toString(), "D-10004");

    // A table with columns of its own is no target of a merge.
    const QString before = snapshot();
    SD_EXPECT_FAILS(runRaw({"--db", database, "--table", "Files", "merge", "--from", target}), 1, "has search columns of its own");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(CliMaintenance, AMergeThatFailsAtARecordLeavesTheTargetAsItWasAndCanBeRunAgain)
{
    const QString target = dir.filePath("target.sqlite");
    exec("CREATE TABLE Files (Id INTEGER NOT NULL PRIMARY KEY, Name VARCHAR(255))", target);
    for (int id : {3, 4, 99})
        exec(QStringLiteral("INSERT INTO Files VALUES (%1, 'f%1')").arg(id), target);
    ASSERT_EQ(runRaw({"--db", target, "--table", "Files", "columns", "list"}).exitCode, 0); // makes the definition table
    const QString before = snapshot(target);

    // The source's keyword table is gone: the columns come over, the first record's keywords cannot.
    ASSERT_EQ(run({"columns", "add", "Tags", "--type", "keyword"}).exitCode, 0);
    const QString intact = dir.filePath("intact.sqlite");
    ASSERT_TRUE(QFile::copy(database, intact));
    exec("DROP TABLE FilesSearchKeywordTags");
    SD_EXPECT_FAILS(runRaw({"--db", target, "--table", "Files", "--quiet", "merge", "--from", database}), 1, "nothing was merged");
    EXPECT_EQ(snapshot(target), before);

    const CliRun merged = runRaw({"--db", target, "--table", "Files", "--quiet", "--json", "merge", "--from", intact});
    ASSERT_EQ(merged.exitCode, 0) << merged;
    EXPECT_EQ(merged.json()["merged"].toInt(), 2);
    EXPECT_EQ(runRaw({"--db", target, "--table", "Files", "check"}).exitCode, 0);
}

} // namespace
