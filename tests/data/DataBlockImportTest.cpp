// Importing data blocks into a record, and the error log of the lines that fail.

#include "data/DataBlock_p.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CMergeBaseEntry.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Diagnostics.h"
#include "support/SearchFixture.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <sys/stat.h>

using namespace searchdata;
using namespace searchdata::test;

namespace {

const QDateTime kStamp(QDate(2024, 3, 9), QTime(7, 5, 2));

class DataBlockImportTest : public SearchTest {
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        if (HasFatalFailure())
            return;
        auto cols = columns();
        cols->Add("Customer", "Client", "", fcText, 40, false, false);
        cols->Add("Qty", "", "", fcInteger16, 0, false, false);
        cols->Add("Ratio", "", "", fcDouble, 0, false, false);
        cols->Add("Due", "", "", fcDateTime, 0, false, false);
        cols->Add("Done", "", "", fcBoolean, 0, false, false);
        cols->Add("Tags", "", "", fcKeyword, 30, false, false);
        cols->Add("Remarks", "", "", fcNote, 255, false, false);
        ASSERT_TRUE(cols->ColumnsSave(nullptr));
        filter = open();
        ASSERT_TRUE(filter->Exists());
        ASSERT_TRUE(sourceDir.isValid() && logDir.isValid());
        Diagnostics::instance().clearReports();
    }

    /// Imports `block` into record `id` as if it came from the file "part 7.nc" of `sourceDir`.
    DataBlockImport import(const QByteArray& block, qint32 id = 5)
    {
        const QString source = sourceDir.filePath("part 7.nc");
        QFile file(source);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("header of the program\r\n" + block);
        file.close();
        const CMergeBaseEntry entry(id);
        return filter->AnalyzeDataBlock(kStamp, source, &entry, block, logDir.path());
    }
    QVariant stored(const QString& column, int id = 5)
    {
        return testDb().scalar(QStringLiteral("SELECT %1 FROM %2 WHERE %3 = %4").arg(q(column), q("FilesSearchData"), q("FileId")).arg(id));
    }
    QStringList tags(int id = 5)
    {
        auto cols = filter->FilterColumns();
        const CMergeBaseEntry entry(id);
        cols->GetData(&entry);
        return cols->Item("Tags")->SavedKeys();
    }
    QString logPath() const { return logDir.filePath("ImportSearchDataErrors/20240309_070502/part 7.nc.ImportErrors.log"); }
    QByteArray logText() const
    {
        QFile f(logPath());
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<no log>");
    }
    bool anyLog() const { return QDir(logDir.filePath("ImportSearchDataErrors")).exists(); }

    std::shared_ptr<CSearchFilter> filter;
    QTemporaryDir sourceDir;
    QTemporaryDir logDir;
};

TEST_P(DataBlockImportTest, ABlockGivesEveryKindOfColumnItsValue)
{
    const DataBlockImport r = import("(Begin Search Data)\r\n"
                                     "(client: O'Neil \"Big\" Ltd)\r\n" // by caption, any case
                                     "(QTY: 12)\r\n"
                                     "Ratio: -2.5e-1\r\n"
                                     "(Due: 2003-07-04 13:05:09)\r\n"
                                     "(Done: yes)\r\n"
                                     "(Tags: zeta,alpha,zeta)\r\n"
                                     "(Remarks:)\r\n"
                                     "(Start Note)\r\n"
                                     "(Line:)\r\n"
                                     "(line: first)\r\n"
                                     "(Line: second: with colon)\r\n"
                                     "(End Note)\r\n"
                                     "(End Search Data)\r\n");
    EXPECT_TRUE(r.imported);
    EXPECT_TRUE(r.written);
    EXPECT_EQ(r.errors, 0);
    EXPECT_TRUE(r.logFile.isEmpty());
    EXPECT_FALSE(anyLog());
    EXPECT_EQ(stored("Customer").toString(), "O'Neil \"Big\" Ltd");
    EXPECT_EQ(stored("Qty").toInt(), 12);
    EXPECT_DOUBLE_EQ(stored("Ratio").toDouble(), -0.25);
    EXPECT_EQ(Value::fromVariant(stored("Due")).toDateTime().value(), QDateTime(QDate(2003, 7, 4), QTime(13, 5, 9)));
    EXPECT_TRUE(Value::fromVariant(stored("Done")).toBoolean().value());
    EXPECT_EQ(tags(), QStringList({"zeta", "alpha"})) << "a repeated keyword is stored once";
    EXPECT_EQ(stored("Remarks").toString(), "first\r\nsecond: with colon") << "an empty first note line leaves no blank line";
    EXPECT_EQ(rows("FilesSearchData", q("Customer") + " <> ''"), 1) << "other records are untouched";
}

TEST_P(DataBlockImportTest, OnlyWhatStandsBetweenTheMarkersAndEndsWithALineEndCounts)
{
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'kept', " + q("Qty") + " = 3");

    // No begin marker: nothing changes, no log, although the lines hold errors.
    DataBlockImport r = import("(Customer: lost)\r\n(Qty: lots)\r\n (Begin Search Data)\r\n(Qty: 9)\r\n(End Search Data)\r\n");
    EXPECT_FALSE(r.imported);
    EXPECT_EQ(r.errors, 0);
    EXPECT_FALSE(anyLog());
    EXPECT_EQ(stored("Customer").toString(), "kept");
    EXPECT_EQ(stored("Qty").toInt(), 3);

    // After the end marker nothing counts; a last line without its line end is no line.
    r = import("noise\r\nBEGIN SEARCH DATA\r\n(Qty: 4)\r\n(End Search Data)\r\n(Customer: after the end)\r\n(Unknown: x)\r\n");
    EXPECT_EQ(r.errors, 0);
    EXPECT_EQ(stored("Qty").toInt(), 4);
    EXPECT_EQ(stored("Customer").toString(), "kept");
    r = import("(Begin Search Data)\n(Qty: 5)\n(Customer: never ended)");
    EXPECT_TRUE(r.written) << "a block without its end marker is still written";
    EXPECT_EQ(stored("Qty").toInt(), 5);
    EXPECT_EQ(stored("Customer").toString(), "kept");
}

TEST_P(DataBlockImportTest, ANamedValueReplacesTheStoredOneEvenWhenBlankOrFalse)
{
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'old', " + q("Done") + " = " +
                                db().SqlBoolean(true) + ", " + q("Qty") + " = 8 WHERE " + q("FileId") + " = 5");
    ASSERT_TRUE(import("(Begin Search Data)\r\n(Tags: keep,me)\r\n(End Search Data)\r\n").written);

    // A name without a colon is an empty value; a second line for a keyword column replaces the first.
    const DataBlockImport r = import("(Begin Search Data)\r\n(Customer)\r\n(Done: NO)\r\n(Tags: a)\r\n(Tags: , b)\r\n(End Search Data)\r\n");
    EXPECT_TRUE(r.written);
    EXPECT_EQ(stored("Customer").toString(), "");
    EXPECT_FALSE(stored("Customer").isNull()) << "an empty text, not nothing";
    EXPECT_FALSE(Value::fromVariant(stored("Done")).toBoolean().value());
    EXPECT_EQ(stored("Qty").toInt(), 8) << "a column the block does not name keeps its value";
    EXPECT_EQ(tags(), QStringList({"", " b"}));

    ASSERT_TRUE(import("(Begin Search Data)\r\n(Done: 2)\r\n(End Search Data)\r\n").written);
    EXPECT_TRUE(Value::fromVariant(stored("Done")).toBoolean().value());
    ASSERT_TRUE(import("(Begin Search Data)\r\n(Done: 0)\r\n(End Search Data)\r\n").written);
    EXPECT_FALSE(Value::fromVariant(stored("Done")).toBoolean().value());
}

TEST_P(DataBlockImportTest, ANoteIsSavedOnlyWhenItsTextIsComplete)
{
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Remarks") + " = 'before'");
    // Named last before the end marker, the note is lost.
    DataBlockImport r = import("(Begin Search Data)\r\n(Qty: 1)\r\n(Remarks: dropped)\r\n(End Search Data)\r\n");
    EXPECT_EQ(stored("Remarks").toString(), "before");
    EXPECT_EQ(stored("Qty").toInt(), 1);
    // Ended by a note start that never ends: lost as well.
    r = import("(Begin Search Data)\r\n(Remarks:)\r\n(Start Note)\r\n(Line: unfinished)\r\n(End Search Data)\r\n");
    EXPECT_FALSE(r.imported);
    EXPECT_EQ(stored("Remarks").toString(), "before");
    // Followed by a data line, it keeps the value of its own line, and that line counts too.
    r = import("(Begin Search Data)\r\n(Remarks: one line)\r\n(Qty: 2)\r\n(End Search Data)\r\n");
    EXPECT_EQ(r.errors, 0);
    EXPECT_EQ(stored("Remarks").toString(), "one line");
    EXPECT_EQ(stored("Qty").toInt(), 2);
}

TEST_P(DataBlockImportTest, FailedLinesGoToOneLogWhileTheOthersAreImported)
{
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = 'kept', " + q("Qty") + " = 3");
    const QByteArray block = "(Begin Search Data)\r\n"
                             "(Done: maybe)\r\n"
                             "(Size: 4)\r\n"
                             "(Ratio: 0.5)\r\n"
                             "()\r\n"
                             "(Remarks:)\r\n"
                             "(Start Note)\r\n"
                             "(Line: kept)\r\n"
                             "(Qty: 7)\r\n"
                             "( ( ) )\r\n"
                             "(End Note)\r\n"
                             "(Qty: 70000)\r\n"
                             "(End Search Data)\r\n";
    const DataBlockImport r = import(block);
    EXPECT_EQ(r.errors, 6);
    EXPECT_TRUE(r.written);
    EXPECT_EQ(QDir::cleanPath(r.logFile), QDir::cleanPath(logPath()));
    EXPECT_DOUBLE_EQ(stored("Ratio").toDouble(), 0.5);
    EXPECT_EQ(stored("Remarks").toString(), "kept");
    EXPECT_EQ(stored("Customer").toString(), "kept");
    EXPECT_EQ(stored("Qty").toInt(), 3);

    const QByteArray expected =
        "----------\r\n"
        "Error processing line: (Done: maybe)\r\n"
        "Cannot convert specified value to the data type of the specified field\r\n"
        "Field name: Done\r\n"
        "Field type: " + filter->FilterColumns()->Item("Done")->ColumnTypeName().toUtf8() + "\r\n"
        "Specified value: maybe\r\n"
        "\r\n"
        "----------\r\n"
        "Error processing line: (Size: 4)\r\n"
        "Specified name does not match a defined Search Criteria field\r\n"
        "Specified name: Size\r\n"
        "Specified value: 4\r\n"
        "\r\n"
        "----------\r\n"
        "Error processing line: ()\r\n"
        "Cannot split this line into a name:value pair.\r\n"
        "\r\n"
        "----------\r\n"
        "Error processing line: (Qty: 7)\r\n"
        "This line is not the next line of the multiple-line Note field 'Remarks'\r\n"
        "Specified name: Qty\r\n"
        "Expected name: Line\r\n"
        "\r\n"
        "----------\r\n"
        "Error processing line: ( ( ) )\r\n"
        "Cannot split this line into a name:value pair.\r\n"
        "Failed to extract next line in note for field 'Remarks'\r\n"
        "----------\r\n"
        "Error processing line: (Qty: 70000)\r\n"
        "Cannot convert specified value to the data type of the specified field\r\n"
        "Field name: Qty\r\n"
        "Field type: " + filter->FilterColumns()->Item("Qty")->ColumnTypeName().toUtf8() + "\r\n"
        "Specified value: 70000\r\n"
        "\r\n";
    EXPECT_EQ(logText(), expected);

    // The erroneous input is kept beside its log, and nothing else is made.
    QFile copy(logDir.filePath("ImportSearchDataErrors/20240309_070502/part 7.nc"));
    ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
    EXPECT_EQ(copy.readAll(), "header of the program\r\n" + block);
    QStringList made;
    for (QDirIterator it(logDir.path(), QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories); it.hasNext();)
        made << QDir(logDir.path()).relativeFilePath(it.next());
    made.sort();
    EXPECT_EQ(made, QStringList({"ImportSearchDataErrors", "ImportSearchDataErrors/20240309_070502",
                                 "ImportSearchDataErrors/20240309_070502/part 7.nc",
                                 "ImportSearchDataErrors/20240309_070502/part 7.nc.ImportErrors.log"}));
}

TEST_P(DataBlockImportTest, TheLogLiesBesideTheSourceFileUnlessAFolderIsGiven)
{
    const QString source = sourceDir.filePath("old.nc");
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    const CMergeBaseEntry entry(5);
    const DataBlockImport r = filter->AnalyzeDataBlock(kStamp, source, &entry, "(Begin Search Data)\r\n(Nope: 1)\r\n");
    EXPECT_EQ(QDir::cleanPath(r.logFile), QDir::cleanPath(sourceDir.filePath("ImportSearchDataErrors/20240309_070502/old.nc.ImportErrors.log")));
    EXPECT_TRUE(QFile::exists(r.logFile));

    // A bare file name gives no folder: the import goes on without a log, and says so.
    Diagnostics::instance().clearReports();
    const DataBlockImport bare = filter->AnalyzeDataBlock(kStamp, "bare.nc", &entry, "(Begin Search Data)\r\n(Nope: 1)\r\n(Qty: 6)\r\n");
    EXPECT_EQ(bare.errors, 1);
    EXPECT_TRUE(bare.logFile.isEmpty());
    EXPECT_TRUE(bare.written);
    EXPECT_GT(Diagnostics::instance().reportCount(), 0);
    EXPECT_FALSE(QDir("ImportSearchDataErrors").exists());
}

TEST_P(DataBlockImportTest, AKeywordLineLeavesTheRecordExactlyItsKeywordsAndTouchesNoOtherRecord)
{
    const QString keywords = q("FilesSearchKeywordTags");
    // A keyword kept from before keeps its place; those that came follow in the block's order.
    const struct {
        const char* what;
        QStringList before;
        QByteArray line;
        QStringList after;
    } cases[] = {
        {"one kept, one gone, one new", {"a", "b"}, "b,c", {"b", "c"}},
        {"the same keywords in another order", {"a", "b"}, "b,a", {"a", "b"}},
        {"a repeated new keyword", {"a"}, "c,c,a", {"a", "c"}},
        {"none kept", {"a", "b"}, "x,y", {"x", "y"}},
        {"an empty keyword", {"a", "b"}, "", {""}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SD_ASSERT_SQL(testDb(), "DELETE FROM " + keywords);
        // What another user wrote since the last import counts as much as what an import wrote.
        for (const QString& k : c.before)
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + keywords + " (" + q("FileId") + ", " + q("Tags") + ") VALUES (5, '" + k + "')");
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + keywords + " (" + q("FileId") + ", " + q("Tags") + ") VALUES (6, 'a')");
        ASSERT_TRUE(import("(Begin Search Data)\r\n(Tags: " + c.line + ")\r\n(End Search Data)\r\n").written);
        EXPECT_EQ(tags(), c.after);
        EXPECT_EQ(tags(6), QStringList({"a"}));
    }
}

TEST_P(DataBlockImportTest, PicklistColumnsStoreTheirValuesAsTheirListsHoldThem)
{
    auto cols = filter->FilterColumns();
    cols->Add("Codes", "", "", fcKeyword, 30, true, true);
    cols->Add("Colour", "", "", fcText, 20, true, false, "red");
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    filter = open();
    // A list holds its entries trimmed; a byte order mark is no part of a value.
    const DataBlockImport r = import("(Begin Search Data)\r\n(Codes: A1, B2,A1 ,  )\r\n(Colour: \xef\xbb\xbf" "teal)\r\n(End Search Data)\r\n");
    ASSERT_TRUE(r.written);
    const CMergeBaseEntry entry(5);
    filter->FilterColumns()->GetData(&entry);
    EXPECT_EQ(filter->FilterColumns()->Item("Codes")->SavedKeys(), QStringList({"A1", "B2", ""}));
    EXPECT_EQ(rows("PicklistFilesCodes", q("Codes") + " IN ('A1', 'B2')"), 2);
    EXPECT_EQ(stored("Colour").toString(), "teal");
    EXPECT_EQ(rows("PicklistFilesColour", q("Colour") + " = 'teal'"), 1);
}

TEST_P(DataBlockImportTest, Latin1AndUtf8BlocksBothImport)
{
    ASSERT_TRUE(import("(Begin Search Data)\r\n(Customer: Gr\xfc\xdf" "e)\r\n(End Search Data)\r\n").written);
    EXPECT_EQ(stored("Customer").toString(), QStringLiteral("Grüße"));
    ASSERT_TRUE(import("(Begin Search Data)\r\n(Customer: " + QStringLiteral("Köln 東京").toUtf8() + ")\r\n(End Search Data)\r\n").written);
    EXPECT_EQ(stored("Customer").toString(), QStringLiteral("Köln 東京"));
}

TEST_P(DataBlockImportTest, AFileIsReadUpToItsEndMarkerAndWhatCannotBeABlockIsRefused)
{
    const QByteArray good = "(Begin Search Data)\r\n(Qty: 12)\r\n";
    const QByteArray tooLong(detail::DataBlockLines::kMaxLineBytes + 1, 'x');
    const QString fifo = sourceDir.filePath("pipe.nc");
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    const struct {
        const char* what;
        QString path;
        QByteArray content; // written to the file first, when not blank
        const char* refusal;
    } cases[] = {
        {"a block with a line that ends it early", sourceDir.filePath("a.nc"), good + "(End Search Data)\r\n" + tooLong + "\r\n", nullptr},
        {"a line too long before the block", sourceDir.filePath("b.nc"), tooLong + "\r\n" + good + "(End Search Data)\r\n", "Line 1 of"},
        {"a line too long inside it", sourceDir.filePath("c.nc"), good + tooLong + "\r\n(End Search Data)\r\n", "Line 3 of"},
        {"one long line and no line end", sourceDir.filePath("d.nc"), tooLong + tooLong, "Line 1 of"},
        {"a pipe", fifo, {}, "not a regular file"},
        {"a device", "/dev/zero", {}, "not a regular file"},
        {"a folder", sourceDir.path(), {}, "not a regular file"},
        {"no file at all", sourceDir.filePath("missing.nc"), {}, "Cannot read"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Qty") + " = 1");
        if (!c.content.isEmpty()) {
            QFile file(c.path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(c.content);
        }
        Diagnostics::instance().clearReports();
        const CMergeBaseEntry entry(5);
        const DataBlockImport r = filter->ImportDataBlockFile(c.path, &entry, logDir.path());
        if (!c.refusal) {
            EXPECT_TRUE(r.refused.isEmpty()) << qPrintable(r.refused);
            EXPECT_TRUE(r.written);
            EXPECT_EQ(stored("Qty").toInt(), 12);
            continue;
        }
        EXPECT_TRUE(r.refused.contains(c.refusal) && r.refused.contains(c.path)) << qPrintable(r.refused);
        EXPECT_FALSE(r.written);
        EXPECT_EQ(stored("Qty").toInt(), 1);
        ASSERT_TRUE(Diagnostics::instance().lastError());
        EXPECT_EQ(Diagnostics::instance().lastError()->text, r.refused);
    }
}

TEST_P(DataBlockImportTest, AFilterWithoutColumnsImportsNothingAndARecordWithoutARowGetsOne)
{
    makeBaseTable("Files2", "Id", 3);
    auto empty = open("Files2", "Id");
    ASSERT_NE(empty->FilterColumns(), nullptr);
    ASSERT_FALSE(empty->Exists());
    const CMergeBaseEntry entry(2);
    const DataBlockImport r = empty->AnalyzeDataBlock(kStamp, sourceDir.filePath("x.nc"), &entry, "(Begin Search Data)\r\n(Bad)\r\n");
    EXPECT_FALSE(r.imported);
    EXPECT_EQ(r.errors, 0);
    EXPECT_FALSE(anyLog());

    // A record that has no search row gets one.
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = 5");
    ASSERT_TRUE(import("(Begin Search Data)\r\n(Qty: 11)\r\n(End Search Data)\r\n").written);
    EXPECT_EQ(stored("Qty").toInt(), 11);
    EXPECT_EQ(rows("FilesSearchData"), rowCount);
}

} // namespace

SD_INSTANTIATE_DATABASE_SUITE(DataBlockImportTest);
