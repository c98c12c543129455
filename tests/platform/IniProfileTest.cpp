#include "searchdata/Profile.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace searchdata;

namespace {

class IniProfileTest : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString path() const { return dir.filePath("profile.ini"); }
};

TEST_F(IniProfileTest, ValuesSurviveAReopen)
{
    {
        IniProfile p(path());
        p.WriteText("Files_Template", "Customer", "O'Neil, \"Acme\" # 1; ä");
        p.WriteLong("Files_Template", "Count", -42);
        p.WriteDouble("Files_Template", "Ratio", 0.1);
        p.WriteBoolean("Files_Template", "Done", true);
        p.WriteProfileNumber("Files_1_Last_Filter", "Operation1", 7);
    }
    IniProfile p(path());
    EXPECT_EQ(p.ReadText("Files_Template", "Customer", ""), "O'Neil, \"Acme\" # 1; ä");
    EXPECT_EQ(p.ReadText("Files_Template", "Count", ""), "-42");
    EXPECT_EQ(p.ReadText("Files_Template", "Ratio", ""), "0.1");
    EXPECT_EQ(p.ReadText("Files_Template", "Done", ""), "True");
    EXPECT_EQ(p.ReadProfileNumber("Files_1_Last_Filter", "Operation1", 0), 7);
}

TEST_F(IniProfileTest, MissingKeysGiveTheDefault)
{
    IniProfile p(path());
    EXPECT_EQ(p.ReadText("S", "K", "fallback"), "fallback");
    EXPECT_EQ(p.ReadProfileText("S", "K", ""), "");
    EXPECT_EQ(p.ReadProfileNumber("S", "K", 5), 5);
    p.WriteText("S", "Text", "abc");
    EXPECT_EQ(p.ReadProfileNumber("S", "Text", 9), 9);
}

TEST_F(IniProfileTest, DatesUseTheMonthDayYearForm)
{
    IniProfile p(path());
    p.WriteProfileDate("S", "CompareTo1", QDateTime(QDate(2003, 7, 4), QTime(0, 0)));
    p.WriteDate("S", "CompareTo2", QDateTime(QDate(2003, 12, 25), QTime(13, 5, 9)));
    EXPECT_EQ(p.ReadProfileText("S", "CompareTo1", ""), "#7-4-2003#");
    EXPECT_EQ(p.ReadProfileText("S", "CompareTo2", ""), "#12-25-2003 13:5:9#");
    EXPECT_EQ(IniProfile::parseDateText("#7-4-2003#").value(), QDateTime(QDate(2003, 7, 4), QTime(0, 0)));
    EXPECT_EQ(IniProfile::parseDateText("#12-25-2003 13:5:9#").value(), QDateTime(QDate(2003, 12, 25), QTime(13, 5, 9)));
    EXPECT_EQ(IniProfile::parseDateText("2003-07-04").value(), QDateTime(QDate(2003, 7, 4), QTime(0, 0)));
    EXPECT_FALSE(IniProfile::parseDateText("#2-30-2003#").ok());
    EXPECT_FALSE(IniProfile::parseDateText("#7-4#").ok());
}

TEST_F(IniProfileTest, TimestampsKeepMilliseconds)
{
    IniProfile p(path());
    const QDateTime a(QDate(2026, 1, 2), QTime(3, 4, 5, 6));
    const QDateTime b = a.addMSecs(1);
    p.WriteTimestamp("T", "TimeStamp", a);
    const QString first = p.ReadTimestampText("T", "TimeStamp", "");
    p.WriteTimestamp("T", "TimeStamp", b);
    EXPECT_NE(first, p.ReadTimestampText("T", "TimeStamp", ""));
}

TEST_F(IniProfileTest, DeletingASectionLeavesTheOthers)
{
    IniProfile p(path());
    p.WriteText("Files_Template", "A", "1");
    p.WriteText("Files_Template", "B", "2");
    p.WriteText("Packets_Template", "A", "3");
    p.ClearProfileSection("Files_Template");
    EXPECT_EQ(p.ReadText("Files_Template", "A", "gone"), "gone");
    EXPECT_TRUE(p.keys("Files_Template").isEmpty());
    EXPECT_EQ(p.ReadText("Packets_Template", "A", ""), "3");
    p.DeleteSection("Packets_Template");
    EXPECT_FALSE(p.sections().contains("Packets_Template"));
}

} // namespace
