// The picklist dialog driven by keys and clicks, and what it leaves in the database.

#include "picklist/PicklistFixture.h"
#include "picklist/frmPicklistEdit.h"
#include "searchdata/PicklistEntries.h"
#include "searchdata/Resources.h"
#include "support/WidgetTestSupport.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStyleOptionViewItem>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// The texts of a tree's nodes in the order shown.
QStringList nodes(const QTreeWidget* tree)
{
    QStringList texts;
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        texts << tree->topLevelItem(i)->text(0);
    return texts;
}

class PicklistEditTest : public PicklistTest {
protected:
    /// Colour allows blanks and defaults to "red": its list is "", blue, red. Qty defaults to 7, the
    /// date column Made to 2024-03-14.
    void SetUp() override
    {
        PicklistTest::SetUp();
        if (HasFatalFailure())
            return;
        ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
        cols = columns();
        ASSERT_NE(cols->Add("Made", "", "", fcDateTime, 0, true, true, "2024-03-14"), nullptr);
        for (const auto& [name, defaultText] : {std::pair{"Colour", "red"}, std::pair{"Qty", "7"}}) {
            auto column = cols->Item(name);
            column->setIsPicklist(true);
            column->setPicklistAllowBlanks(true);
            column->setPicklistDefault(defaultText);
        }
        ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
        cols = columns();
    }
    void TearDown() override
    {
        form.reset();
        cols.reset();
        PicklistTest::TearDown();
    }

    /// The dialog on a column's picklist, shown on its entries tab.
    frmPicklistEdit* open(const QString& column)
    {
        form = std::make_unique<frmPicklistEdit>();
        form->Prepare(nullptr, *cols->PicklistOf(*cols->Item(column)));
        form->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(form.get()));
        return form.get();
    }
    template <typename T>
    T* control(const char* name)
    {
        T* found = named<T>(form.get(), QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    void showTab(int index)
    {
        QTabBar* bar = control<QTabWidget>("tabEdit")->tabBar();
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(index).center());
        ASSERT_EQ(control<QTabWidget>("tabEdit")->currentIndex(), index);
    }
    /// Clicks the check box of the node `text`, as a user would.
    void clickCheck(const char* tree, const QString& text)
    {
        QTreeWidget* view = control<QTreeWidget>(tree);
        const QList<QTreeWidgetItem*> found = view->findItems(text, Qt::MatchExactly);
        ASSERT_EQ(found.size(), 1) << qPrintable(text);
        view->scrollToItem(found.first());
        QStyleOptionViewItem option;
        option.initFrom(view->viewport());
        option.rect = view->visualItemRect(found.first());
        option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
        const QRect box = view->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, view);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, box.center());
    }
    void click(const char* button)
    {
        QPushButton* b = control<QPushButton>(button);
        ASSERT_TRUE(b->isEnabled()) << button;
        QTest::mouseClick(b, Qt::LeftButton);
    }
    void typeNew(const QString& text)
    {
        QLineEdit* box = control<QLineEdit>("txtNew");
        box->clear();
        QTest::keyClicks(box, text);
    }
    QStringList visible(const QString& column)
    {
        return values("Picklist" + QStringLiteral("Files") + column, column, q("HideEntry") + " = " + db().SqlBoolean(false));
    }

    std::shared_ptr<CFilterColumns> cols;
    std::unique_ptr<frmPicklistEdit> form;
};

TEST_P(PicklistEditTest, ListsVisibleAndHiddenEntriesWithoutTheBlankAndTheDefaultInBold)
{
    ASSERT_TRUE(HideShowCollection(*cols->PicklistOf(*cols->Item("Colour")), {"blue"}, 1));
    ASSERT_TRUE(cols->PicklistOf(*cols->Item("Colour"))->SaveAdditions({"Amber", "white"}));
    open("Colour");

    EXPECT_EQ(form->windowTitle(), GetResourceText(8352, {"Files", "Colour"}));
    EXPECT_EQ(control<QLabel>("lblPrompt")->text(), GetResourceText(8357, {"Colour", "red"}));
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwOld")), QStringList({"Amber", "red", "white"}));
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwHidden")), QStringList({"blue"}));
    EXPECT_EQ(control<QTreeWidget>("tvwNew")->topLevelItemCount(), 0);
    const QTreeWidget* old = control<QTreeWidget>("tvwOld");
    for (int i = 0; i < old->topLevelItemCount(); ++i)
        EXPECT_EQ(old->topLevelItem(i)->font(0).bold(), old->topLevelItem(i)->text(0) == "red") << i;
    EXPECT_EQ(control<QLineEdit>("txtNew")->maxLength(), 20);

    // Numbers sort by their value, not their text.
    ASSERT_TRUE(cols->PicklistOf(*cols->Item("Qty"))->SaveAdditions({"12", "100", "9"}));
    open("Qty");
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwOld")), QStringList({"7", "9", "12", "100"}));
    EXPECT_EQ(control<QTreeWidget>("tvwOld")->topLevelItem(0)->data(0, Qt::UserRole).toString(), "N:7");

    // Dates show in the user's form, whatever form the database keeps them in, and sort by time.
    ASSERT_TRUE(cols->PicklistOf(*cols->Item("Made"))->SaveAdditions({"2023-12-31", "2024-02-01"}));
    open("Made");
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwOld")), QStringList({"12/31/2023", "2/1/2024", "3/14/2024"}));
    EXPECT_TRUE(control<QTreeWidget>("tvwOld")->topLevelItem(2)->font(0).bold());
    EXPECT_EQ(control<QTreeWidget>("tvwOld")->topLevelItem(2)->data(0, Qt::UserRole).toString(), "D:3/14/2024");
}

TEST_P(PicklistEditTest, TheDefaultsCheckIsTakenBackAndDoesNotCount)
{
    open("Colour");
    QTreeWidget* old = control<QTreeWidget>("tvwOld");
    QTreeWidgetItem* red = old->findItems("red", Qt::MatchExactly).value(0);
    ASSERT_NE(red, nullptr);

    clickCheck("tvwOld", "red");
    EXPECT_FALSE(control<QPushButton>("cmdHide")->isEnabled());
    EXPECT_TRUE(waitFor([&] { return red->checkState(0) == Qt::Unchecked; }, 1000));
    EXPECT_EQ(control<QPushButton>("cmdCancel")->text(), GetResourceText(8065));

    // Another entry takes its check and keeps it.
    clickCheck("tvwOld", "blue");
    EXPECT_FALSE(control<QTimer>("tmrFixDefault")->isActive());
    EXPECT_EQ(old->findItems("blue", Qt::MatchExactly).value(0)->checkState(0), Qt::Checked);
    EXPECT_TRUE(control<QPushButton>("cmdHide")->isEnabled());
    EXPECT_TRUE(control<QPushButton>("cmdRemoveOld")->isEnabled());
    EXPECT_EQ(control<QPushButton>("cmdCancel")->text(), GetResourceText(8073));
}

TEST_P(PicklistEditTest, WhatCanBeAddedDependsOnTheTypeAndTheEntriesOfEveryTab)
{
    ASSERT_TRUE(HideShowCollection(*cols->PicklistOf(*cols->Item("Colour")), {"blue"}, 1));
    struct Case {
        const char* column;
        const char* typed;
        bool addable;
    };
    const Case cases[] = {
        {"Colour", "green", true},
        {"Colour", "RED", false},   // an entry already, whatever its capitals
        {"Colour", " blue ", false}, // a hidden entry: showing it is the way
        {"Colour", "   ", false},
        {"Qty", "12", true},
        {"Qty", "twelve", false},
        {"Qty", "007", false}, // the number 7, the default
        {"Qty", "7.0", false},
        {"Qty", "99999999999", false}, // too large for the column
        {"Made", "3/14/2024", false},   // the default, as the list shows it
        {"Made", "2024-03-14", false},
        {"Made", "2024-03-15", true},
        {"Made", "2024-02-30", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.column) + " <" + c.typed + ">");
        if (!form || form->windowTitle() != GetResourceText(8352, {"Files", c.column}))
            open(c.column);
        showTab(0);
        typeNew(c.typed);
        EXPECT_EQ(control<QPushButton>("cmdAdd")->isEnabled(), c.addable);
        EXPECT_EQ(control<QPushButton>("cmdAdd")->isDefault(), c.addable);
    }
}

TEST_P(PicklistEditTest, NewEntriesAreSavedTogetherAndArriveOnTheEntriesTab)
{
    open("Colour");
    showTab(0);
    typeNew("green");
    QTest::keyClick(control<QLineEdit>("txtNew"), Qt::Key_Return); // Enter adds while there is work
    typeNew("yellow");
    click("cmdAdd");
    typeNew("mauve");
    click("cmdAdd");
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwNew")), QStringList({"green", "mauve", "yellow"}));
    EXPECT_TRUE(control<QLineEdit>("txtNew")->text().isEmpty());

    // A new entry that is checked can be taken back before it is saved.
    clickCheck("tvwNew", "mauve");
    click("cmdRemove");
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwNew")), QStringList({"green", "yellow"}));
    typeNew("Green");
    EXPECT_FALSE(control<QPushButton>("cmdAdd")->isEnabled());

    click("cmdSave");
    EXPECT_EQ(visible("Colour"), QStringList({"", "blue", "green", "red", "yellow"}));
    EXPECT_EQ(control<QTreeWidget>("tvwNew")->topLevelItemCount(), 0);
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwOld")), QStringList({"blue", "green", "red", "yellow"}));
    EXPECT_FALSE(control<QPushButton>("cmdSave")->isEnabled());
}

TEST_P(PicklistEditTest, CancelDropsUnsavedEntriesWithoutAQuestion)
{
    open("Colour");
    showTab(0);
    typeNew("green");
    click("cmdAdd");
    EXPECT_EQ(control<QPushButton>("cmdCancel")->text(), GetResourceText(8073));
    ui->clearRequests();
    QSignalSpy rejected(form.get(), &QDialog::rejected);
    click("cmdCancel");
    EXPECT_EQ(rejected.size(), 1);
    EXPECT_FALSE(form->isVisible());
    EXPECT_TRUE(ui->requests().isEmpty()) << qPrintable(ui->requests().join('\n'));
    EXPECT_EQ(visible("Colour"), QStringList({"", "blue", "red"}));
}

TEST_P(PicklistEditTest, HiddenEntriesLeaveTheChoiceAndComeBack)
{
    ASSERT_TRUE(cols->PicklistOf(*cols->Item("Colour"))->SaveAdditions({"green"}));
    open("Colour");
    clickCheck("tvwOld", "blue");
    clickCheck("tvwOld", "green");
    click("cmdHide");
    EXPECT_EQ(hiddenEntries("PicklistFilesColour", "Colour"), QStringList({"blue", "green"}));
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwOld")), QStringList({"red"}));
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwHidden")), QStringList({"blue", "green"}));

    showTab(2);
    QTest::keyClicks(control<QLineEdit>("txtHidden"), "gr");
    EXPECT_EQ(control<QTreeWidget>("tvwHidden")->currentItem()->text(0), "green");
    clickCheck("tvwHidden", "green");
    click("cmdShow");
    EXPECT_EQ(hiddenEntries("PicklistFilesColour", "Colour"), QStringList({"blue"}));
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwOld")), QStringList({"green", "red"}));
}

TEST_P(PicklistEditTest, ADateEntryWithATimeHidesAndComesBackByItsValue)
{
    // The entry is found again by what the dialog lists, whatever form the database keeps it in.
    ASSERT_TRUE(cols->PicklistOf(*cols->Item("Made"))->SaveAdditions({"2024-05-01 08:15:30"}));
    open("Made");
    const QStringList listed = nodes(control<QTreeWidget>("tvwOld"));
    ASSERT_EQ(listed.size(), 2);
    const QString later = listed[1];
    const QString hidden = q("HideEntry") + " = " + db().SqlBoolean(true);
    clickCheck("tvwOld", later);
    click("cmdHide");
    EXPECT_EQ(rows("PicklistFilesMade", hidden), 1);
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwHidden")), QStringList({later}));

    showTab(2);
    clickCheck("tvwHidden", later);
    click("cmdShow");
    EXPECT_EQ(rows("PicklistFilesMade", hidden), 0);
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwOld")), listed);
}

TEST_P(PicklistEditTest, RemovingEntriesThatRecordsUseKeepsThemAndOffersToHideThem)
{
    struct Case {
        const char* press;
        QStringList hiddenAfter;
    };
    for (const Case& c : {Case{"cmdOk", {"blue"}}, Case{"cmdClose", {}}}) {
        SCOPED_TRACE(c.press);
        ASSERT_TRUE(cols->PicklistOf(*cols->Item("Colour"))->SaveAdditions({"green"}));
        ASSERT_TRUE(HideShowCollection(*cols->PicklistOf(*cols->Item("Colour")), {"blue"}, 2));
        const QStringList stored = counts("FilesSearchData", "Colour");
        open("Colour");
        clickCheck("tvwOld", "blue"); // rows 11 to 15 hold it
        clickCheck("tvwOld", "green");
        QString prompt;
        bool listShown = true;
        whenModalAppears([&](QWidget* modal) {
            prompt = named<QLabel>(modal, "lblPrompt")->text();
            listShown = named<QWidget>(modal, "lstKept")->isVisible();
            QTest::mouseClick(named<QPushButton>(modal, c.press), Qt::LeftButton);
        });
        click("cmdRemoveOld");
        EXPECT_EQ(prompt, GetResourceText(8549, {"blue"}));
        EXPECT_FALSE(listShown);
        EXPECT_EQ(values("PicklistFilesColour", "Colour"), QStringList({"", "blue", "red"}));
        EXPECT_EQ(hiddenEntries("PicklistFilesColour", "Colour"), c.hiddenAfter);
        EXPECT_EQ(counts("FilesSearchData", "Colour"), stored);
    }
}

TEST_P(PicklistEditTest, RemovingHiddenEntriesDeletesWhatNobodyUsesAndTellsWhatStays)
{
    // Qty 7 is the default and in use; 8 and 9 are not used and go without a word.
    auto qty = cols->PicklistOf(*cols->Item("Qty"));
    ASSERT_TRUE(qty->SaveAdditions({"8", "9"}));
    ASSERT_TRUE(HideShowCollection(*qty, {"7", "8", "9"}, 1));
    open("Qty");
    showTab(2);
    for (const char* entry : {"7", "8", "9"})
        clickCheck("tvwHidden", entry);
    QString prompt, caption;
    whenModalAppears([&](QWidget* modal) {
        caption = modal->windowTitle();
        prompt = named<QLabel>(modal, "lblPrompt")->text();
        EXPECT_FALSE(named<QWidget>(modal, "cmdOk")->isVisible());
        QTest::keyClick(modal, Qt::Key_Escape);
    });
    click("cmdRemoveHidden");
    EXPECT_EQ(caption, GetResourceText(8544));
    EXPECT_EQ(prompt, GetResourceText(8545, {"7"}));
    EXPECT_EQ(values("PicklistFilesQty", "Qty"), QStringList({"7"}));
    EXPECT_EQ(nodes(control<QTreeWidget>("tvwHidden")), QStringList({"7"}));
}

SD_INSTANTIATE_DATABASE_SUITE(PicklistEditTest);

} // namespace
