// The pieces of data block reading that need no database: lines, markers, name:value pairs, values.

#include "data/DataBlock_p.h"
#include "searchdata/CFilterColumn.h"

#include <QBuffer>
#include <gtest/gtest.h>

using namespace searchdata;
using namespace searchdata::detail;

namespace {

std::shared_ptr<CFilterColumn> columnOf(FilterColumnTypeConstants type)
{
    auto c = std::make_shared<CFilterColumn>();
    c->setName(QStringLiteral("C"));
    c->setColumnType(type);
    return c;
}

/// The value that `text` reads as in a column of `type`, or nothing when it does not read.
std::optional<Value> parsed(FilterColumnTypeConstants type, const QString& text)
{
    ParsedValue v;
    if (!ParseValue(*columnOf(type), text, v))
        return std::nullopt;
    return v.value;
}

} // namespace

TEST(DataBlockLines, RunsOfLineEndsMakeNoEmptyLinesAndAnUnendedLastLineIsDropped)
{
    EXPECT_EQ(DataBlockToStringCollection("\r\n\r\na\r\n\n\rb\rc\nd"), QStringList({"a", "b", "c"}));
    EXPECT_EQ(DataBlockToStringCollection("  x  \n"), QStringList({"  x  "}));
    EXPECT_TRUE(DataBlockToStringCollection("no line end").isEmpty());
    EXPECT_TRUE(DataBlockToStringCollection("\r\n\r\n").isEmpty());
    EXPECT_TRUE(DataBlockToStringCollection(QByteArray()).isEmpty());
}

TEST(DataBlockLines, ValidUtf8IsReadAsUtf8AndAnythingElseAsLatin1)
{
    EXPECT_EQ(DataBlockToStringCollection(QStringLiteral("Grüße 東京\n").toUtf8()), QStringList({QStringLiteral("Grüße 東京")}));
    // One byte that is no UTF-8 makes the whole block Latin-1, the valid sequence in it too.
    EXPECT_EQ(DataBlockToStringCollection("Gr\xfc\xdf" "e\r\n\xc3\xa9\r\n"),
              QStringList({QStringLiteral("Grüße"), QStringLiteral("Ã©")}));
    EXPECT_EQ(DataBlockToStringCollection(QByteArray("a\0b\0\n", 5)), QStringList({"ab"})) << "no text holds a NUL";
    EXPECT_EQ(DataBlockToStringCollection("\xef\xbb\xbf" "a: \xef\xbb\xbf" "b\n"), QStringList({"a: b"})) << "nor a byte order mark";
}

TEST(DataBlockLines, AreReadInPiecesAndALineTooLongEndsTheReading)
{
    constexpr qsizetype most = DataBlockLines::kMaxLineBytes;
    const struct {
        const char* what;
        QByteArray data;
        QList<qsizetype> sizes; // of the lines read
        int stoppedAt;          // the line too long, or 0
    } cases[] = {
        {"lines across the pieces the device is read in", QByteArray(most - 3, 'a') + "\r\n" + QByteArray(most, 'b') + "\r\nc\n", {most - 3, most, 1}, 0},
        {"the longest line", QByteArray(most, 'a') + "\n", {most}, 0},
        {"one byte more", QByteArray(most + 1, 'a') + "\n", {}, 1},
        {"one byte more, without a line end", QByteArray(most + 1, 'a'), {}, 1},
        {"after lines ended by either byte or both", "a\r\n\r\nb\rc\n" + QByteArray(3 * most, 'x'), {1, 1, 1}, 5},
        {"a long text after the last line end is no line", "a\n" + QByteArray(most, 'z'), {1}, 0},
    };
    for (const auto& c : cases) {
        QBuffer device;
        device.setData(c.data);
        ASSERT_TRUE(device.open(QIODevice::ReadOnly));
        DataBlockLines lines(device);
        QList<qsizetype> sizes;
        QByteArray line;
        while (lines.next(line))
            sizes << line.size();
        EXPECT_EQ(sizes, c.sizes) << c.what;
        EXPECT_EQ(lines.tooLong(), c.stoppedAt > 0) << c.what;
        if (c.stoppedAt > 0) {
            EXPECT_EQ(lines.lineNumber(), c.stoppedAt) << c.what;
        }
    }
}

TEST(DataBlockLines, TheEncodingIsToldByTheLinesUpToTheEndMarker)
{
    const QByteArray latin1Tail = "\xfc\n";
    const QByteArray block = "(Begin Search Data)\n(A: \xc3\xa9)\n(End Search Data)\n";
    const struct {
        QByteArray data;
        bool toEndMarker;
        std::optional<bool> utf8;
    } cases[] = {
        {block + latin1Tail, true, true},     // what follows the block does not count
        {block + latin1Tail, false, false},
        {latin1Tail + block, true, false},    // what comes before it does
        {"(End Search Data)\n" + block + latin1Tail, true, true},
        {block + QByteArray(DataBlockLines::kMaxLineBytes + 1, 'x') + "\n", true, true},
        {block + QByteArray(DataBlockLines::kMaxLineBytes + 1, 'x') + "\n", false, std::nullopt},
    };
    for (const auto& c : cases) {
        // Read from where the device stands: a byte before that is no UTF-8 does not count.
        QBuffer device;
        device.setData("\xff" + c.data);
        ASSERT_TRUE(device.open(QIODevice::ReadOnly));
        ASSERT_TRUE(device.seek(1));
        QString refused;
        EXPECT_EQ(DataBlockIsUtf8(device, c.toEndMarker, "block.nc", refused), c.utf8) << c.data.left(60).constData();
        if (c.utf8) {
            EXPECT_EQ(device.pos(), 1) << "the device stands where it stood";
        }
        EXPECT_EQ(refused.contains("block.nc"), !c.utf8);
    }
}

TEST(DataBlockLines, MarkersMatchBareOrInParenthesesIgnoringCaseButUntrimmed)
{
    EXPECT_TRUE(TestTextIsMatch("Begin Search Data", "Begin Search Data"));
    EXPECT_TRUE(TestTextIsMatch("(begin SEARCH data)", "Begin Search Data"));
    EXPECT_FALSE(TestTextIsMatch(" (Begin Search Data)", "Begin Search Data"));
    EXPECT_FALSE(TestTextIsMatch("(Begin Search Data", "Begin Search Data"));
    EXPECT_FALSE(TestTextIsMatch("((Begin Search Data))", "Begin Search Data"));
    EXPECT_FALSE(TestTextIsMatch("Begin Search Data ", "Begin Search Data"));
}

TEST(DataBlockLines, ParseLineSplitsAtTheFirstColonInsideAnyParentheses)
{
    struct Case {
        const char* line;
        const char* name;
        const char* value;
    };
    const Case cases[] = {
        {"(Customer: Acme)", "Customer", "Acme"},
        {"  ((Nested :  two ) )  ", "Nested", "two"},
        {"(Unclosed: y", "Unclosed", "y"},
        {"Time: 12:30", "Time", "12:30"},
        {"(Remarks:)", "Remarks", ""},
        {"Name only", "Name only", ""},
        {"(: lone value )", "", "lone value"},
        {"(a) (b): c", "a) (b)", "c"},
    };
    for (const Case& c : cases) {
        QString name = "stale", value = "stale";
        ASSERT_TRUE(ParseLine(c.line, name, value)) << c.line;
        EXPECT_EQ(name, c.name) << c.line;
        EXPECT_EQ(value, c.value) << c.line;
    }
    for (const char* line : {"   ", "()", "( ( ) )", "((("}) {
        QString name, value;
        EXPECT_FALSE(ParseLine(line, name, value)) << line;
    }
}

TEST(DataBlockValues, KeywordsSplitAtEveryCommaAndKeepTheirBlanks)
{
    ParsedValue v;
    ASSERT_TRUE(ParseValue(*columnOf(fcKeyword), ", b", v));
    EXPECT_EQ(v.keys, QStringList({"", " b"}));
    ASSERT_TRUE(ParseValue(*columnOf(fcKeyword), "one,two , three", v));
    EXPECT_EQ(v.keys, QStringList({"one", "two ", " three"}));
    EXPECT_FALSE(ParseValue(*columnOf(fcKeyword), "ok," + QString(256, 'k'), v)) << "longer than the field";
}

TEST(DataBlockValues, TextsAreTrimmedAndMustFitTheField)
{
    EXPECT_EQ(parsed(fcText, "  O'Neil \"x\"  "), Value("O'Neil \"x\""));
    EXPECT_EQ(parsed(fcNote, ""), Value(""));
    EXPECT_EQ(parsed(fcText, QString(255, 'x')), Value(QString(255, 'x')));
    EXPECT_FALSE(parsed(fcText, QString(256, 'x')));
}

TEST(DataBlockValues, NumbersMustReadAndFitTheirType)
{
    EXPECT_EQ(parsed(fcInteger16, "-32768"), Value(qint16(-32768)));
    EXPECT_FALSE(parsed(fcInteger16, "32768"));
    EXPECT_EQ(parsed(fcInteger16, "2.5"), Value(qint16(2))) << "integers round half to even";
    EXPECT_EQ(parsed(fcInteger32, "70000"), Value(qint32(70000)));
    EXPECT_FALSE(parsed(fcInteger32, "3000000000"));
    EXPECT_EQ(parsed(fcSingle, "1.5"), Value(1.5f));
    EXPECT_FALSE(parsed(fcSingle, "1e39"));
    EXPECT_EQ(parsed(fcDouble, "-2.25e3"), Value(-2250.0));
    for (const char* bad : {"1e400", "nan", "inf", "12abc", "", "twelve"})
        EXPECT_FALSE(parsed(fcDouble, bad)) << bad;
}

TEST(DataBlockValues, DatesBooleansAndUndefinedColumns)
{
    EXPECT_EQ(parsed(fcDateTime, "2003-07-04 13:05"), Value(QDateTime(QDate(2003, 7, 4), QTime(13, 5))));
    EXPECT_FALSE(parsed(fcDateTime, "2003-02-30"));
    EXPECT_FALSE(parsed(fcDateTime, "tomorrow"));

    EXPECT_EQ(parsed(fcBoolean, "yes"), Value(true));
    EXPECT_EQ(parsed(fcBoolean, "NO"), Value(false));
    EXPECT_EQ(parsed(fcBoolean, "tRUE"), Value(true));
    EXPECT_EQ(parsed(fcBoolean, "False"), Value(false));
    EXPECT_EQ(parsed(fcBoolean, "2"), Value(true));
    EXPECT_EQ(parsed(fcBoolean, "-0.0"), Value(false));
    EXPECT_FALSE(parsed(fcBoolean, "maybe"));
    EXPECT_FALSE(parsed(fcBoolean, "1e400"));

    EXPECT_FALSE(parsed(fcUndefined, "anything"));
}

TEST(DataBlockValues, SaveFieldReplacesKeywordsAndSetsOtherValues)
{
    auto tags = columnOf(fcKeyword);
    tags->SavedKeys() = {"old"};
    EXPECT_TRUE(SaveField(tags.get(), ParsedValue{Value(), {"a", "b"}}));
    EXPECT_EQ(tags->SavedKeys(), QStringList({"a", "b"}));
    auto qty = columnOf(fcInteger32);
    EXPECT_TRUE(SaveField(qty.get(), ParsedValue{Value(qint32(4)), {}}));
    EXPECT_EQ(qty->SavedValue(), Value(qint32(4)));
    EXPECT_FALSE(SaveField(nullptr, ParsedValue{}));
}
