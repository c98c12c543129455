// The filter dialog driven by keys and clicks: rows that open and close, validation with its colours,
// the key filter, restoring a saved filter, and the terms that OK gives, down to the records they select.

#include "filter/FilterDialogFixture.h"

#include "searchdata/CFilterColumns.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "searchdata/Value.h"
#include "searchdata/widgets/CFormInfo.h"
#include "searchdata/widgets/WidgetUiServices.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QScreen>
#include <QTest>

using namespace searchdata;
using namespace searchdata::test;

namespace {

QColor background(const QWidget* w) { return w->palette().color(QPalette::Base); }
QColor foreground(const QWidget* w) { return w->palette().color(QPalette::Text); }

QStringList keysOf(const QComboBox* combo)
{
    QStringList keys;
    for (int i = 0; i < combo->count(); ++i)
        keys << combo->itemData(i, frmFilter::KeyRole).toString();
    return keys;
}

QList<int> itemData(const QComboBox* combo)
{
    QList<int> data;
    for (int i = 0; i < combo->count(); ++i)
        data << combo->itemData(i).toInt();
    return data;
}

} // namespace

TEST_P(FilterDialogTest, ListsColumnsThenUsableBaseFieldsUnderTheirDisplayNames)
{
    auto owner = openDialog();
    EXPECT_EQ(dialog->windowTitle(), "Find parts");
    EXPECT_FALSE(conjunction(0)->isVisible()) << "the first row joins nothing";
    QStringList expected = {frmFilter::noneKey(), "Maker", "Price", "Delivered", "Checked", "Tag"};
    for (const char* name : {"PartId", "Name", "Qty"})
        expected << baseKey(name);
    EXPECT_EQ(keysOf(field(0)), expected) << "Internal is not to be filtered, Picture cannot be";
    EXPECT_EQ(field(0)->itemText(0), GetResourceText(7587));
    EXPECT_EQ(field(0)->itemText(1), "Made by");
    EXPECT_EQ(field(0)->itemText(2), "Price");
    EXPECT_EQ(field(0)->itemText(expected.indexOf(baseKey("Qty"))), "Quantity");
    EXPECT_TRUE(field(0)->itemIcon(0).isNull());
    EXPECT_FALSE(field(0)->itemIcon(1).isNull());
    EXPECT_FALSE(field(0)->itemIcon(expected.size() - 1).isNull());
    for (int row = 1; row < frmFilter::kRows; ++row)
        EXPECT_FALSE(field(row)->isEnabled()) << row;
}

TEST_P(FilterDialogTest, RowsStandThreeMarginsApartWithTheButtonsBelowTheLast)
{
    auto owner = openDialog();
    const int margin = conjunction(0)->x();
    for (int row = 1; row < frmFilter::kRows; ++row) {
        EXPECT_EQ(conjunction(row)->y() - conjunction(row - 1)->y(), 3 * margin) << row;
        EXPECT_EQ(compareTo(row)->y() - compareTo(row - 1)->y(), 3 * margin) << row;
        EXPECT_EQ(field(row)->x(), field(0)->x());
    }
    const QRect last = compareTo(frmFilter::kRows - 1)->geometry();
    EXPECT_EQ(button("cmdOK")->y(), last.y() + last.height() + button("cmdOK")->height() / 2);
    for (const char* name : {"cmdHelp", "cmdCancel", "cmdClear"})
        EXPECT_EQ(button(name)->y(), button("cmdOK")->y()) << name;
    for (QWidget* w : dialog->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        EXPECT_TRUE(w->isHidden() || dialog->rect().contains(w->geometry())) << qPrintable(w->objectName());
}

TEST_P(FilterDialogTest, EachClassOffersItsComparisons)
{
    struct Case {
        const char* key;
        QList<int> operations;
        bool compareTo;
    };
    const QList<int> relational = {kvoOP_Equals, kvoOP_NotEquals, kvoOP_Greater, kvoOP_Less, kvoOP_GreatorOrEqual, kvoOP_LessOrEqual};
    const Case cases[] = {
        {"Maker", relational + QList<int>{kvoOP_IsLike, kvoOP_IsNotLike}, true},
        {"Price", relational, true},
        {"Delivered", relational, true},
        {"Checked", {kvoOP_IsFalse, kvoOP_IsTrue}, false},
        {"Tag", {kvoOP_Includes, kvoOP_Excludes}, true},
    };
    auto owner = openDialog();
    for (const Case& c : cases) {
        chooseField(0, c.key);
        EXPECT_EQ(itemData(comparison(0)), c.operations) << c.key;
        EXPECT_EQ(comparison(0)->currentIndex(), 0) << c.key;
        EXPECT_EQ(comparison(0)->itemText(0), GetResourceText(7488 + c.operations.first())) << c.key;
        EXPECT_EQ(compareTo(0)->isEnabled(), c.compareTo) << c.key;
        EXPECT_EQ(button("cmdOK")->isEnabled(), !c.compareTo) << c.key << ": only a boolean row needs no compare text";
        EXPECT_TRUE(field(1)->isEnabled()) << "choosing a field opens the next row";
        EXPECT_EQ(itemData(conjunction(1)), (QList<int>{kvoCJ_And, kvoCJ_OR}));
    }
}

TEST_P(FilterDialogTest, NoneClosesTheRowsBelowAndTheLastRowOpensNoFurtherRow)
{
    auto owner = openDialog();
    fillRows({{"Maker", kvoOP_Equals, "Acme"},
              {"Tag", kvoOP_Includes, "red"},
              {"Checked", kvoOP_IsTrue, ""},
              {"Price", kvoOP_Less, "3"},
              {baseKey("Qty"), kvoOP_Greater, "5"}});
    ASSERT_TRUE(field(5)->isEnabled());

    chooseField(3, frmFilter::noneKey());
    EXPECT_FALSE(comparison(3)->isEnabled());
    EXPECT_EQ(comparison(3)->count(), 0);
    EXPECT_TRUE(compareTo(3)->text().isEmpty());
    EXPECT_FALSE(compareTo(3)->isEnabled());
    EXPECT_TRUE(field(3)->isEnabled()) << "the row itself stays open for another choice";
    for (int row = 4; row < frmFilter::kRows; ++row) {
        EXPECT_FALSE(field(row)->isEnabled()) << row;
        EXPECT_EQ(field(row)->count(), 0) << row;
        EXPECT_EQ(field(row)->currentText(), "") << row;
        EXPECT_FALSE(conjunction(row)->isEnabled()) << row;
        EXPECT_TRUE(compareTo(row)->text().isEmpty()) << row;
    }
    EXPECT_EQ(compareTo(1)->text(), "red") << "the rows above keep their values";

    // All ten rows filled: the last one opens nothing more, and every row becomes a term.
    QList<Row> ten;
    for (int row = 0; row < frmFilter::kRows; ++row)
        ten.append({"Price", kvoOP_Greater, QString::number(row)});
    fillRows(ten);
    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);
    ASSERT_TRUE(dialog->Result());
    EXPECT_EQ(dialog->Result()->Count(), frmFilter::kRows);
}

TEST_P(FilterDialogTest, OkWithoutFieldGivesAnEmptyFilterAndCancelGivesNone)
{
    {
        auto owner = openDialog();
        EXPECT_TRUE(button("cmdOK")->isEnabled());
        QTest::mouseClick(button("cmdOK"), Qt::LeftButton);
        ASSERT_TRUE(dialog->Result());
        EXPECT_FALSE(dialog->Result()->HasTerms());
        EXPECT_FALSE(dialog->isVisible());
    }
    for (bool byEscape : {false, true}) {
        auto owner = openDialog();
        fillRows({{"Maker", kvoOP_Equals, "Acme"}});
        if (byEscape)
            QTest::keyClick(dialog, Qt::Key_Escape);
        else
            QTest::mouseClick(button("cmdCancel"), Qt::LeftButton);
        EXPECT_EQ(dialog->Result(), nullptr) << "escape " << byEscape;
        EXPECT_FALSE(dialog->isVisible());
    }
}

TEST_P(FilterDialogTest, AnInvalidCompareTextKeepsOkDisabledAndShowsRedOnLeaving)
{
    struct Case {
        const char* key;
        const char* invalid;
        const char* valid;
    };
    const Case cases[] = {
        {"Price", "12x", "12.5"},
        {"Delivered", "2024-02-30", "2024-02-28"},
        {"Delivered", "soon", "2/28/2024"},
        {"Maker", "   ", "Acme"},
    };
    auto owner = openDialog();
    for (const Case& c : cases) {
        chooseField(0, c.key);
        typeCompareTo(0, c.invalid);
        EXPECT_FALSE(button("cmdOK")->isEnabled()) << c.key << " " << c.invalid;
        EXPECT_EQ(compareTo(0)->property("tag").toString(), "False");
        EXPECT_EQ(background(compareTo(0)), QColor(255, 0, 0)) << c.invalid;
        EXPECT_EQ(foreground(compareTo(0)), QColor(Qt::white)) << c.invalid;
        typeCompareTo(0, c.valid);
        EXPECT_TRUE(button("cmdOK")->isEnabled()) << c.key << " " << c.valid;
        EXPECT_EQ(background(compareTo(0)), QColor(Qt::white)) << c.valid;
        EXPECT_EQ(foreground(compareTo(0)), QColor(Qt::black)) << c.valid;
    }
    // An invalid row below a valid one holds OK back too.
    chooseField(0, "Maker");
    typeCompareTo(0, "Acme");
    chooseField(1, "Price");
    typeCompareTo(1, "many");
    EXPECT_FALSE(button("cmdOK")->isEnabled());
}

TEST_P(FilterDialogTest, LeavingABoxShowsTheValueAsItWasRead)
{
    struct Case {
        const char* key;
        const char* typed;
        QString shown;
    };
    const Case cases[] = {
        {"Maker", "  Acme ", "Acme"},
        {"Tag", " red", "red"},
        {"Price", " 12.50 ", " 12.50 "},
        {"Delivered", "2024-02-15", DateToText(QDateTime({2024, 2, 15}, {}))},
        {"Delivered", "2024-02-15 10:30", DateToText(QDateTime({2024, 2, 15}, {10, 30}))},
    };
    auto owner = openDialog();
    for (const Case& c : cases) {
        chooseField(0, c.key);
        typeCompareTo(0, c.typed);
        EXPECT_EQ(compareTo(0)->text(), c.shown) << c.key << " '" << c.typed << "'";
    }
}

TEST_P(FilterDialogTest, TextRowsRefuseQuotesAndADoubleBlankKeyByKeyButTakeAPaste)
{
    // A refused key beeps through the services, as every window of the library does.
    struct CountedBeeps : WidgetUiServices {
        void Beep() override { ++beeps; }
        int beeps = 0;
    };
    auto beeping = std::make_shared<CountedBeeps>();
    services.reset();
    services = std::make_unique<ServicesGuard>(beeping);
    auto owner = openDialog();
    chooseField(0, "Maker");
    QLineEdit* box = compareTo(0);
    QTest::mouseClick(box, Qt::LeftButton);
    QTest::keyClicks(box, "O'Ne\"il  x");
    EXPECT_EQ(box->text(), "ONeil x") << "quotes and a second trailing blank are dropped";
    EXPECT_EQ(beeping->beeps, 3);

    box->clear();
    QGuiApplication::clipboard()->setText("O'Neil");
    QTest::keySequence(box, QKeySequence::Paste);
    EXPECT_EQ(box->text(), "O'Neil") << "a paste is judged as a whole, not for its quotes";

    // Numbers are judged as a whole when the box is left, not key by key.
    chooseField(0, "Price");
    QTest::mouseClick(compareTo(0), Qt::LeftButton);
    QTest::keyClicks(compareTo(0), "1'");
    EXPECT_EQ(compareTo(0)->text(), "1'");
}

TEST_P(FilterDialogTest, ClearTakesTheFirstRowBackToNone)
{
    auto owner = openDialog();
    fillRows({{"Maker", kvoOP_Equals, "Acme"}, {"Tag", kvoOP_Includes, "red"}});
    QTest::mouseClick(button("cmdClear"), Qt::LeftButton);
    EXPECT_EQ(field(0)->currentData(frmFilter::KeyRole).toString(), frmFilter::noneKey());
    EXPECT_TRUE(field(0)->hasFocus());
    EXPECT_FALSE(field(1)->isEnabled());
    EXPECT_FALSE(comparison(0)->isEnabled());
    EXPECT_EQ(dialog->Result(), nullptr) << "only OK changes the filter";
}

TEST_P(FilterDialogTest, ASavedFilterRestoresIntoTheRowsUpToATermThatNoLongerFits)
{
    auto saved = std::make_shared<CFilterTerms>(columns);
    saved->Add(kvoCJ_None, "PartsSearchData", "Maker", kvoCC_Text, kvoOP_IsLike, "A%");
    saved->Add(kvoCJ_OR, "Parts", "Qty", kvoCC_Numeric, kvoOP_GreatorOrEqual, "100");
    saved->Add(kvoCJ_And, "PartsSearchData", "Delivered", kvoCC_Date, kvoOP_Less, "2024-02-31");
    saved->Add(kvoCJ_And, "PartsSearchKeywordTag", "Tag", kvoCC_Keyword, kvoOP_Excludes, "blue");
    {
        auto owner = openDialog(saved);
        EXPECT_EQ(field(0)->currentData(frmFilter::KeyRole).toString(), "Maker");
        EXPECT_EQ(comparison(0)->currentData().toInt(), kvoOP_IsLike);
        EXPECT_EQ(compareTo(0)->text(), "A%");
        EXPECT_EQ(conjunction(1)->currentData().toInt(), kvoCJ_OR);
        EXPECT_EQ(field(1)->currentText(), "Quantity");
        EXPECT_EQ(comparison(1)->currentData().toInt(), kvoOP_GreatorOrEqual);
        EXPECT_EQ(compareTo(2)->text(), "2024-02-31");
        EXPECT_EQ(background(compareTo(2)), QColor(255, 0, 0)) << "a restored date that does not read shows red";
        EXPECT_FALSE(button("cmdOK")->isEnabled());
        EXPECT_EQ(comparison(3)->currentData().toInt(), kvoOP_Excludes);
        EXPECT_EQ(field(4)->currentData(frmFilter::KeyRole).toString(), frmFilter::noneKey());
    }

    // Stored and read back after Delivered was deleted: the rows before it stand, the rest is not restored.
    CSearchFilter::SaveFilter(saved.get(), *columns, profile.get(), "7", fltrDBMode_Normal);
    columns->RemoveColumn("Delivered");
    auto owner = openDialog(CSearchFilter::GetFilter(columns, profile.get(), "7", fltrDBMode_Normal));
    EXPECT_EQ(field(0)->currentData(frmFilter::KeyRole).toString(), "Maker");
    EXPECT_EQ(field(1)->currentData(frmFilter::KeyRole).toString(), baseKey("Qty"));
    EXPECT_EQ(field(2)->currentData(frmFilter::KeyRole).toString(), frmFilter::noneKey());
    EXPECT_FALSE(field(3)->isEnabled());
    EXPECT_TRUE(button("cmdOK")->isEnabled());
}

TEST_P(FilterDialogTest, StandsByTheOwnerWindowAndOpensItsHelp)
{
    {
        auto alone = openDialog();
        const QRect screen = dialog->screen()->availableGeometry();
        EXPECT_LE((dialog->frameGeometry().center() - screen.center()).manhattanLength(), 8) << "without an owner, in the middle";
    }
    QWidget window;
    window.setGeometry(40, 50, 600, 400);
    window.show();
    const auto info = MakeFormInfo(&window);
    auto owned = openDialog(nullptr, info.get());
    const UiServices& ui = UiServices::current();
    ASSERT_LE(info->Left() + ui.DialogOffset() + dialog->width(), ui.UsableScreenSize().width());
    EXPECT_EQ(dialog->pos(), QPoint(info->Left() + ui.DialogOffset(), info->Top() + ui.DialogOffset()));

    QString helpTitle;
    whenModalAppears([&](QWidget* help) {
        helpTitle = help->windowTitle();
        QTest::mouseClick(named<QPushButton>(help, "cmdOk"), Qt::LeftButton);
    });
    QTest::mouseClick(button("cmdHelp"), Qt::LeftButton);
    EXPECT_EQ(helpTitle, "Finding parts");
    EXPECT_TRUE(dialog->isVisible()) << "the filter dialog stays open behind its help";
}

// ---- the terms that OK gives ------------------------------------------------------------------------

TEST_P(FilterDialogTest, OkGivesTheSqlOfTheSameTermsBuiltByHandAndSelectsTheirRecords)
{
    struct HandTerm {
        EConjunctions conjunction;
        QString table;
        QString field;
        FilterComparisonClasses comparisonClass;
    };
    struct Case {
        const char* name;
        QList<Row> rows;
        QList<HandTerm> hand; // table, field and class of each row; operation and text as in the row
        QList<qint64> selected;
    };
    const QString data = "PartsSearchData";
    const QString tags = "PartsSearchKeywordTag";
    const QList<Case> cases = {
        {"text", {{"Maker", kvoOP_Equals, "Acme"}}, {{kvoCJ_None, data, "Maker", kvoCC_Text}}, {1, 3}},
        {"keyword and number",
         {{"Tag", kvoOP_Includes, "red"}, {"Price", kvoOP_Greater, "1"}},
         {{kvoCJ_None, tags, "Tag", kvoCC_Keyword}, {kvoCJ_And, data, "Price", kvoCC_Numeric}},
         {1, 4, 5}},
        {"base field or boolean",
         {{baseKey("Name"), kvoOP_IsLike, "b%"}, {"Checked", kvoOP_IsTrue, "", kvoCJ_OR}},
         {{kvoCJ_None, "Parts", "Name", kvoCC_Text}, {kvoCJ_OR, data, "Checked", kvoCC_Boolean}},
         {1, 4, 6}},
        {"base field and excluded keyword",
         {{baseKey("Qty"), kvoOP_GreatorOrEqual, "100"}, {"Tag", kvoOP_Excludes, "blue"}},
         {{kvoCJ_None, "Parts", "Qty", kvoCC_Numeric}, {kvoCJ_And, tags, "Tag", kvoCC_Keyword}},
         {5}},
        {"date", {{"Delivered", kvoOP_GreatorOrEqual, "2024-02-15"}}, {{kvoCJ_None, data, "Delivered", kvoCC_Date}}, {2, 4, 5}},
        {"boolean and not like",
         {{"Checked", kvoOP_IsFalse, ""}, {"Maker", kvoOP_IsNotLike, "A%"}},
         {{kvoCJ_None, data, "Checked", kvoCC_Boolean}, {kvoCJ_And, data, "Maker", kvoCC_Text}},
         {2, 5, 6}},
        {"base fields only",
         {{baseKey("Qty"), kvoOP_Less, "10"}, {baseKey("PartId"), kvoOP_NotEquals, "6", kvoCJ_And}},
         {{kvoCJ_None, "Parts", "Qty", kvoCC_Numeric}, {kvoCJ_And, "Parts", "PartId", kvoCC_Numeric}},
         {4}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto owner = openDialog();
        fillRows(c.rows);
        QTest::mouseClick(button("cmdOK"), Qt::LeftButton);
        ASSERT_TRUE(dialog->Result());

        CFilterTerms hand(columns);
        for (int i = 0; i < c.rows.size(); ++i)
            hand.Add(c.hand[i].conjunction, c.hand[i].table, c.hand[i].field, c.hand[i].comparisonClass, c.rows[i].operation,
                     c.rows[i].compareTo);
        const QString sql = dialog->Result()->SQLString();
        ASSERT_FALSE(sql.isEmpty());
        EXPECT_EQ(sql, hand.SQLString());
        EXPECT_EQ(partsWhere(sql), c.selected) << qPrintable(sql);
    }
}

SD_INSTANTIATE_DATABASE_SUITE(FilterDialogTest);
