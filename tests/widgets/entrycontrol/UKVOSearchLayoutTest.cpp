#include "EntryControlFixture.h"

#include "searchdata/CFilterColumns.h"

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStatusBar>
#include <QTest>
#include <cmath>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class UKVOSearchLayoutTest : public EntryControlTest {
protected:
    QFrame* view() const { return child<QFrame>("picView"); }
    QWidget* sheet() const { return child<QWidget>("picFields"); }
    QScrollBar* bar() const { return child<QScrollBar>("vsbFields"); }
    float spacing() const { return float(child<QLabel>("lblField_0")->height()) / 2; }
    bool scrolling() const { return bar()->isVisible(); }
    /// The height at which the rows just fit, from what the control shows.
    int fittingHeight() const
    {
        float needed = float(view()->y() + sheet()->height()) + spacing() + float(child<QStatusBar>("sbrStatus")->height());
        if (const auto* status = child<QFrame>("picStatus"); status->isVisible())
            needed += float(status->height());
        return int(std::ceil(needed));
    }
};

TEST_P(UKVOSearchLayoutTest, RowsFitOrScrollAndTheBarKeepsItsPlaceWhileTheyScroll)
{
    openControl(QSize(640, 1000));
    display(2);
    EXPECT_FALSE(scrolling());
    EXPECT_EQ(view()->frameShape(), QFrame::NoFrame);
    EXPECT_EQ(sheet()->y(), qRound(spacing()));
    EXPECT_GE(view()->height(), sheet()->y() + sheet()->height()) << "the whole sheet shows";

    control->resize(640, 300);
    ASSERT_TRUE(scrolling());
    EXPECT_NE(view()->frameShape(), QFrame::NoFrame);
    EXPECT_EQ(bar()->value(), 0);
    EXPECT_EQ(sheet()->y(), 0);
    bar()->setValue(100);
    EXPECT_EQ(sheet()->y() + sheet()->height(), view()->contentsRect().height()) << "100 shows the bottom of the sheet";
    bar()->setValue(50);
    control->resize(600, 320);
    EXPECT_EQ(bar()->value(), 50) << "a resize while scrolling keeps the position";

    // Too small to hold anything: the state stays as it was.
    control->resize(600, 20);
    EXPECT_TRUE(scrolling());
    EXPECT_EQ(bar()->value(), 50);

    control->resize(640, 1000);
    EXPECT_FALSE(scrolling());
    EXPECT_EQ(view()->frameShape(), QFrame::NoFrame);
    EXPECT_EQ(sheet()->y(), qRound(spacing()));
    control->resize(640, 300);
    EXPECT_EQ(bar()->value(), 0) << "scrolling starts again at the top";
}

TEST_P(UKVOSearchLayoutTest, AStatusTextCanTurnFittingRowsIntoScrollingOnes)
{
    openControl(QSize(640, 1000));
    acceptEditing();
    display(2);
    startEditing();
    control->resize(640, fittingHeight());
    ASSERT_FALSE(scrolling());

    auto* qty = child<QLineEdit>("txtTextField_2");
    type(qty, "x");
    EXPECT_FALSE(child<QLineEdit>("txtStatus")->text().isEmpty());
    EXPECT_TRUE(child<QFrame>("picStatus")->isVisible());
    EXPECT_TRUE(scrolling());

    QTest::keyClick(qty, Qt::Key_Backspace);
    EXPECT_TRUE(child<QLineEdit>("txtStatus")->text().isEmpty());
    EXPECT_FALSE(scrolling());
}

TEST_P(UKVOSearchLayoutTest, WithoutOkApplyTakesItsPlace)
{
    for (bool showOk : {true, false}) {
        SCOPED_TRACE(showOk);
        openControl();
        control->SetShowOKButton(showOk);
        acceptEditing();
        display(2);
        startEditing();
        const QPushButton* ok = button("cmdOk");
        const QPushButton* apply = button("cmdApply");
        EXPECT_EQ(ok->isVisible(), showOk);
        EXPECT_EQ(apply->x(), ok->x());
        if (showOk)
            EXPECT_GT(apply->y(), ok->y() + ok->height());
        else
            EXPECT_EQ(apply->pos(), ok->pos());
    }
}

TEST_P(UKVOSearchLayoutTest, AFocusedFieldScrollsIntoViewAndResizingMakesNoControl)
{
    openControl(QSize(640, 300));
    acceptEditing();
    display(2);
    startEditing();
    ASSERT_TRUE(scrolling());
    auto* notes = child<QPlainTextEdit>("txtNoteField_8");
    const auto shown = [&](const QWidget* w) {
        const int top = sheet()->y() + w->y();
        return top >= 0 && top + w->height() <= view()->contentsRect().height();
    };
    ASSERT_FALSE(shown(notes));
    focus(notes);
    EXPECT_TRUE(shown(notes));
    const auto* customer = child<QLineEdit>("txtTextField_1");
    focus(child<QWidget>("txtTextField_1"));
    EXPECT_TRUE(shown(customer));

    const int widgets = int(control->findChildren<QWidget*>().size());
    for (int height : {260, 700, 320, 1000, 280})
        control->resize(600, height);
    EXPECT_EQ(control->findChildren<QWidget*>().size(), widgets);
}

TEST_P(UKVOSearchLayoutTest, NoRowStandsUnderTheBarWhileTheRowsScroll)
{
    // Narrow enough that the rows are cut to the width they may use, the keyword row with its two
    // buttons the widest of them.
    openControl(QSize(420, 300));
    acceptEditing();
    display(2);
    startEditing();
    ASSERT_TRUE(scrolling());
    const QWidget* rows = sheet()->findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_NE(rows, nullptr);
    int checked = 0;
    for (const QWidget* w : rows->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!w->isVisibleTo(rows))
            continue;
        const int right = w->mapTo(bar()->parentWidget(), QPoint(w->width(), 0)).x();
        EXPECT_LE(right, bar()->x()) << w->objectName().toStdString();
        ++checked;
    }
    EXPECT_TRUE(child<QPushButton>("cmdRemove_0")->isVisibleTo(rows));
    EXPECT_GT(checked, 10);
}

TEST_P(UKVOSearchLayoutTest, GapsFollowTheFontAndTheHostLearnsTheMinimum)
{
    openControl();
    display(2);
    const float small = spacing();
    const QRect small0 = child<QWidget>("txtTextField_1")->geometry();

    control = std::make_unique<UKVOSearch>();
    QFont large = control->font();
    large.setPointSizeF(2 * large.pointSizeF());
    control->setFont(large);
    auto host = std::make_shared<UKVOSearchContainer>(control.get());
    control->resize(900, 1200);
    control->show();
    ASSERT_TRUE(control->OpenSearch(host, testDb().handler(), files, catalog, profile, 0, baseStructureOf("Files", {"FileId"})));
    display(2);
    EXPECT_GT(spacing(), 1.5f * small);
    EXPECT_GT(child<QWidget>("txtTextField_1")->y(), small0.y());

    // A host in a layout gets the suggested minimum as the control's minimum size.
    EXPECT_GT(control->HeightMin(), float(child<QPushButton>("cmdTemplatePaste")->geometry().bottom()) - 1);
    EXPECT_EQ(control->minimumSize(), QSize(int(std::ceil(control->WidthMin())), int(std::ceil(control->HeightMin()))));
}

/// Forty rows: a sheet much taller than any window.
class UKVOSearchTallSheetTest : public UKVOSearchLayoutTest {
protected:
    void defineColumns(CFilterColumns& cols) override
    {
        for (int i = 1; i <= 40; ++i)
            cols.Add(QStringLiteral("Field%1").arg(i), "", "", fcText, 10, false, false);
    }
};

TEST_P(UKVOSearchTallSheetTest, ThePageOfTheBarIsTheShareOfTheSheetThatShows)
{
    openControl(QSize(640, 3000));
    acceptEditing();
    display(2);
    startEditing();
    ASSERT_FALSE(scrolling());
    // A window a pixel short of the sheet shows nearly all of it.
    control->resize(640, fittingHeight() - 1);
    ASSERT_TRUE(scrolling());
    EXPECT_EQ(bar()->pageStep(), 100);
    EXPECT_EQ(bar()->singleStep(), 20);

    int lastPage = 100;
    for (int height : {1200, 600, 300}) {
        control->resize(640, height);
        const int page = bar()->pageStep();
        EXPECT_EQ(page, qRound(100.0 * view()->contentsRect().height() / sheet()->height()));
        EXPECT_LT(page, lastPage);
        EXPECT_EQ(bar()->singleStep(), std::max(1, qRound(page / 5.0)));
        lastPage = page;
    }
}

SD_INSTANTIATE_SQLITE_SUITE(UKVOSearchLayoutTest);
SD_INSTANTIATE_SQLITE_SUITE(UKVOSearchTallSheetTest);

} // namespace
