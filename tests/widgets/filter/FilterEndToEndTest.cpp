// CSearchFilter::Filter through the widgets' services: the last filter comes back into the dialog,
// and what the user accepts is kept in the profile and handed to the host.

#include "filter/FilterDialogFixture.h"

#include "host/LibraryForms.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/widgets/CCleanupFormManager.h"

#include <QApplication>
#include <QTest>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// Once the filter dialog is up and active, hands it to `act`.
void whenDialogAppears(std::function<void(frmFilter*)> act)
{
    whenModalAppears([act = std::move(act)](QWidget* modal) {
        auto* shown = qobject_cast<frmFilter*>(modal);
        ASSERT_TRUE(shown);
        ASSERT_TRUE(QTest::qWaitForWindowActive(shown));
        act(shown);
    });
}

} // namespace

TEST_P(FilterDialogTest, TheSearchBringsBackTheLastFilterAndKeepsTheAcceptedOne)
{
    auto last = std::make_shared<CFilterTerms>(columns);
    last->Add(kvoCJ_None, "PartsSearchData", "Maker", kvoCC_Text, kvoOP_Equals, "Acme");
    last->Add(kvoCJ_OR, "Parts", "Qty", kvoCC_Numeric, kvoOP_Greater, "100");
    CSearchFilter::SaveFilter(last.get(), *columns, profile.get(), "7", fltrDBMode_Normal);

    QStringList restored;
    whenDialogAppears([&](frmFilter* shown) {
        dialog = shown;
        restored << field(0)->currentData(frmFilter::KeyRole).toString() << compareTo(0)->text() << conjunction(1)->currentText()
                 << field(1)->currentText() << compareTo(1)->text();
        typeCompareTo(1, "150");
        QTest::mouseClick(button("cmdOK"), Qt::LeftButton);
    });
    const auto accepted = search->Filter(nullptr, "someone", nullptr, fltrDBMode_Normal);
    EXPECT_EQ(restored, (QStringList{"Maker", "Acme", "Or", "Quantity", "100"}));
    ASSERT_TRUE(accepted);
    ASSERT_EQ(accepted->Count(), 2);
    EXPECT_EQ(accepted->Item(2)->CompareTo(), "150");
    EXPECT_EQ(partsWhere(accepted->SQLString()), (QList<qint64>{1, 2, 3}));
    const auto stored = CSearchFilter::GetFilter(columns, profile.get(), "7", fltrDBMode_Normal);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->SQLString(), accepted->SQLString());

    // Cancel hands nothing back and leaves the kept filter alone.
    whenDialogAppears([](frmFilter* shown) { QTest::keyClick(shown, Qt::Key_Escape); });
    EXPECT_EQ(search->Filter(nullptr, "someone", nullptr, fltrDBMode_Normal), nullptr);
    EXPECT_EQ(CSearchFilter::GetFilter(columns, profile.get(), "7", fltrDBMode_Normal)->SQLString(), accepted->SQLString());
}

TEST_P(FilterDialogTest, TheCleanUpOfTheLibrarysWindowsEndsARunningFilterWithNothingAccepted)
{
    whenDialogAppears([](frmFilter* shown) {
        QTest::mouseClick(named<QPushButton>(shown, "cmdHelp"), Qt::LeftButton);
    });
    // Once the help stands over the dialog, the host closes down.
    whenModalAppears([](QWidget*) { CCleanupFormManager::instance().CleanupForms(); }, "frmFilterHelp");
    EXPECT_EQ(search->Filter(nullptr, "someone", nullptr, fltrDBMode_Normal), nullptr);
    EXPECT_TRUE(LibraryForms().isEmpty());
}
