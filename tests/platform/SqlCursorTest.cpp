#include "searchdata/DatabaseHandler.h"
#include "searchdata/Diagnostics.h"
#include "support/TestDatabase.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

class SqlCursorTest : public DatabaseTest {
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (HasFatalFailure())
            return;
        execAll({"CREATE TABLE n (k INTEGER PRIMARY KEY, t VARCHAR(10))", "CREATE TABLE log (k INTEGER)"});
        TransactionState tx;
        ASSERT_TRUE(db().BeginTableTransaction(tx));
        for (int i = 1; i <= 300; ++i)
            ASSERT_TRUE(db().ExecuteSql(QString("INSERT INTO n VALUES (%1, 't%1')").arg(i)));
        ASSERT_TRUE(db().CommitTableTransaction(tx));
        db().EndTableTransaction(tx);
    }
};

TEST_P(SqlCursorTest, TwoCursorsReadInStepWhileOtherStatementsRun)
{
    for (bool inTransaction : {false, true}) {
        SCOPED_TRACE(inTransaction ? "in a transaction" : "outside one");
        TransactionState tx;
        if (inTransaction) {
            ASSERT_TRUE(db().BeginTableTransaction(tx));
        }
        auto up = db().OpenSqlCursor("SELECT k, t FROM n ORDER BY k");
        auto down = db().OpenSqlCursor("SELECT k FROM n ORDER BY k DESC");
        ASSERT_TRUE(up && down);
        EXPECT_TRUE(up->hasField("T"));
        EXPECT_EQ(up->fieldIndex("k"), 0);
        EXPECT_FALSE(up->hasField("nothing"));
        int expected = 1;
        for (; !up->EndOfFile(); up->MoveNext(), down->MoveNext(), ++expected) {
            ASSERT_FALSE(down->EndOfFile());
            EXPECT_EQ(up->value(0).toInt(), expected);
            EXPECT_EQ(up->field("t").text(), QString("t%1").arg(expected));
            EXPECT_EQ(down->value(0).toInt(), 301 - expected);
            // Other work on the connection between rows loses no row of either cursor.
            ASSERT_TRUE(db().ExecuteSql(QString("INSERT INTO log VALUES (%1)").arg(expected)));
            ASSERT_NE(db().OpenSqlRecordset("SELECT COUNT(*) FROM log"), nullptr);
        }
        EXPECT_EQ(expected, 301);
        EXPECT_TRUE(down->EndOfFile());
        EXPECT_FALSE(up->failed());
        EXPECT_TRUE(up->field("k").isEmpty());
        up.reset();
        down.reset();
        if (inTransaction) {
            ASSERT_TRUE(db().CommitTableTransaction(tx));
            db().EndTableTransaction(tx);
        }
    }
    EXPECT_EQ(testDb().scalar("SELECT COUNT(*) FROM log").toInt(), 600);
}

TEST_P(SqlCursorTest, AFailingSelectGivesNoCursorAndIsReported)
{
    EXPECT_EQ(db().OpenSqlCursor("SELECT nothing FROM nowhere"), nullptr);
    EXPECT_GE(Diagnostics::instance().reportCount(), 1);
    auto empty = db().OpenSqlCursor("SELECT k FROM n WHERE k < 0");
    ASSERT_NE(empty, nullptr);
    EXPECT_TRUE(empty->EndOfFile());
    EXPECT_FALSE(empty->failed());
}

SD_INSTANTIATE_DATABASE_SUITE(SqlCursorTest);

} // namespace
