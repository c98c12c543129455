// Reading a picklist's entries, and hiding and showing marked ones.

#include "picklist/PicklistFixture.h"
#include "searchdata/PicklistEntries.h"
#include "support/LocaleScope.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

using PicklistEntriesTest = PicklistTest;

TEST_P(PicklistEntriesTest, DateEntriesAreReadHiddenAndShownWhateverTheLocaleAndTheServersDateStyle)
{
    // Day before month for the user; month before day for the server.
    const LocaleScope british(QLocale(QLocale::English, QLocale::UnitedKingdom));
    if (GetParam() == DbKind::PostgreSQL)
        SD_ASSERT_SQL(testDb(), "SET DateStyle = 'ISO, MDY'");
    auto cols = columns();
    cols->Add("Shipped", "", "", fcDateTime, 0, true, false, "2003-07-04");
    ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
    const auto shipped = cols->Item("Shipped");
    const auto picklist = shipped->PickList();
    ASSERT_TRUE(picklist->SaveAdditions({"2003-07-05", "2003-12-24"}));

    auto entries = [&] {
        QStringList texts;
        const Result<QList<PicklistEntry>> read = ReadPicklistEntries(db(), *shipped);
        EXPECT_TRUE(read.ok());
        for (const PicklistEntry& e : read.valueOr({}))
            texts << e.text + (e.hidden ? " (hidden)" : "");
        texts.sort();
        return texts;
    };
    EXPECT_EQ(entries(), QStringList({"04/07/2003", "05/07/2003", "24/12/2003"}));
    ASSERT_TRUE(HideShowCollection(*picklist, {"05/07/2003"}, 1));
    EXPECT_EQ(entries(), QStringList({"04/07/2003", "05/07/2003 (hidden)", "24/12/2003"}));
    ASSERT_TRUE(HideShowCollection(*picklist, {"05/07/2003"}, 2));
    EXPECT_EQ(entries(), QStringList({"04/07/2003", "05/07/2003", "24/12/2003"}));
}

SD_INSTANTIATE_DATABASE_SUITE(PicklistEntriesTest);

} // namespace
