#include "ConfigTestSupport.h"
#include "config/frmConfigure.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/WidgetUiServices.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSqlRecord>
#include <QTreeWidget>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class ConfigureDialogTest : public ConfigDialogTest {
protected:
    std::unique_ptr<frmConfigure> openDialog(CFilterColumns& collection)
    {
        auto dialog = std::make_unique<frmConfigure>();
        dialog->Setup(collection);
        showActive(dialog.get());
        return dialog;
    }
    static QTreeWidget* list(QWidget* dialog) { return named<QTreeWidget>(dialog, "lvwSearch"); }
    static bool enabled(QWidget* dialog, const char* button) { return named<QPushButton>(dialog, button)->isEnabled(); }
    /// Names of the stored definitions of Files in position order.
    QStringList storedNames()
    {
        QStringList names;
        for (const QString& line : definitions())
            names << line.section('|', 0, 1);
        return names;
    }
};

const ColumnSpec kA{"Alpha", fcText, 20};
const ColumnSpec kB{"Beta", fcInteger32};
const ColumnSpec kC{"Gamma", fcDouble};

TEST_P(ConfigureDialogTest, AnEmptyCollectionShowsTheBaseTableAndLeavesOnlyNewToPress)
{
    auto collection = columns();
    auto dialog = openDialog(*collection);
    QWidget* d = dialog.get();
    EXPECT_EQ(named<QLabel>(d, "lblTableName")->text(), "Files");
    EXPECT_EQ(named<QLabel>(d, "lblKeyName")->text(), "FileId");
    EXPECT_EQ(named<QLabel>(d, "lblDBName")->text(), db().database().databaseName());
    EXPECT_EQ(named<QLabel>(d, "lblSearchFields")->text(), GetResourceText(7106, {"Files"}));
    EXPECT_EQ(list(d)->topLevelItemCount(), 0);
    for (const char* button : {"cmdDelete", "cmdEdit", "cmdUp", "cmdDown", "cmdPicklist", "cmdApply"})
        EXPECT_FALSE(enabled(d, button)) << button;
    EXPECT_TRUE(enabled(d, "cmdNew"));
    EXPECT_EQ(named<QPushButton>(d, "cmdCancel")->text(), GetResourceText(8065));

    newColumnThroughTheDialogs(d, {"Customer", fcText, 30});
    EXPECT_EQ(listed(d), QStringList{"Customer"});
    EXPECT_TRUE(dialog->IsDirty());
    EXPECT_TRUE(enabled(d, "cmdApply"));
    EXPECT_EQ(named<QPushButton>(d, "cmdCancel")->text(), GetResourceText(8073));
    click(d, "cmdApply");
    EXPECT_FALSE(dialog->IsDirty());
    EXPECT_EQ(storedNames(), QStringList{"1|Customer"});
}

TEST_P(ConfigureDialogTest, EachRowShowsItsColumnsSettingsInAlignedColumnsWideEnoughForThem)
{
    auto collection = storedColumns({
        {"Tags", fcKeyword, 40},
        {"Customer", fcText, 30, "", "", true, true, "ACME Industrial Holdings"},
        {"Qty", fcInteger32, 0, "", "", true, false, "7"},
        {"Due", fcDateTime, 0, "", "", false, false, "2024-03-01"},
        {"Done", fcBoolean},
        {"Remarks", fcNote, 0, "", "", false, false, "none"},
    });
    ASSERT_NE(collection, nullptr);
    auto dialog = openDialog(*collection);
    QTreeWidget* view = list(dialog.get());
    const QString yes = GetResourceText(7124), no = GetResourceText(7125), allowed = GetResourceText(7126),
                  refused = GetResourceText(7127);
    const QList<QStringList> expected = {
        {"Tags", GetResourceText(7012), "40", "", "", ""},
        {"Customer", GetResourceText(7015), "30", yes, allowed, "ACME Industrial Holdings"},
        {"Qty", GetResourceText(7013), "", yes, refused, "7"},
        {"Due", GetResourceText(7009), "", no, refused, "3/1/2024"},
        {"Done", GetResourceText(7008), "", "", "", ""},
        {"Remarks", GetResourceText(7017), "", no, refused, "none"},
    };
    ASSERT_EQ(view->topLevelItemCount(), expected.size());
    for (int row = 0; row < expected.size(); ++row)
        for (int position = 0; position < 6; ++position)
            EXPECT_EQ(view->topLevelItem(row)->text(position), expected[row][position]) << row << "," << position;
    EXPECT_TRUE(view->topLevelItem(0)->isSelected());

    EXPECT_EQ(view->topLevelItem(0)->textAlignment(2) & Qt::AlignHorizontal_Mask, Qt::AlignRight);
    EXPECT_EQ(view->topLevelItem(0)->textAlignment(3) & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
    EXPECT_EQ(view->topLevelItem(0)->textAlignment(4) & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
    const QFontMetrics metrics = view->fontMetrics();
    for (int position = 0; position < 6; ++position) {
        int widest = view->header()->fontMetrics().horizontalAdvance(view->headerItem()->text(position));
        for (const QStringList& row : expected)
            widest = std::max(widest, metrics.horizontalAdvance(row[position]));
        EXPECT_EQ(view->columnWidth(position), widest + 20) << position;
    }
}

TEST_P(ConfigureDialogTest, UpAndDownFollowTheSelectedRowAndAMoveReachesTheTableOnApply)
{
    auto collection = storedColumns({kA, kB, kC});
    ASSERT_NE(collection, nullptr);
    auto dialog = openDialog(*collection);
    QWidget* d = dialog.get();
    struct Case {
        QString row;
        bool up, down;
    };
    for (const Case& c : {Case{"Alpha", false, true}, Case{"Beta", true, true}, Case{"Gamma", true, false}}) {
        clickRow(list(d), c.row);
        EXPECT_EQ(enabled(d, "cmdUp"), c.up) << qPrintable(c.row);
        EXPECT_EQ(enabled(d, "cmdDown"), c.down) << qPrintable(c.row);
    }
    click(d, "cmdUp");
    EXPECT_EQ(listed(d), QStringList({"Alpha", "Gamma", "Beta"}));
    EXPECT_EQ(list(d)->currentItem()->text(0), "Gamma");
    click(d, "cmdApply");
    EXPECT_EQ(storedNames(), QStringList({"1|Alpha", "2|Gamma", "3|Beta"}));
    EXPECT_TRUE(ui->questions().isEmpty());
}

TEST_P(ConfigureDialogTest, DeletingTheMiddleOfThreeStoredColumnsStoresPositionsOneAndTwoAndLaterMovesStillWork)
{
    auto collection = storedColumns({kA, kB, kC});
    ASSERT_NE(collection, nullptr);
    auto dialog = openDialog(*collection);
    QWidget* d = dialog.get();
    clickRow(list(d), "Beta");
    ui->queueAnswer(Answer::Ok);
    click(d, "cmdDelete");
    EXPECT_EQ(ui->questions().value(0), GetResourceText(7117, {"Beta"}));
    EXPECT_TRUE(dialog->DeletePending());
    EXPECT_EQ(listed(d), QStringList({"Alpha", "Gamma"}));
    EXPECT_EQ(list(d)->currentItem()->text(0), "Gamma");
    EXPECT_EQ(collection->Item("Gamma")->Index(), 2);

    ui->queueAnswer(Answer::Ok);
    click(d, "cmdApply");
    EXPECT_EQ(ui->questions().value(1), GetResourceText(7115, {"Files"}));
    EXPECT_FALSE(dialog->DeletePending());
    EXPECT_EQ(storedNames(), QStringList({"1|Alpha", "2|Gamma"}));
    catalog->Refresh();
    EXPECT_FALSE(GetTableColumn(GetCatalogTable(*catalog, "FilesSearchData"), "Beta"));

    clickRow(list(d), "Gamma");
    click(d, "cmdUp");
    EXPECT_FALSE(enabled(d, "cmdUp"));
    click(d, "cmdApply");
    EXPECT_EQ(storedNames(), QStringList({"1|Gamma", "2|Alpha"}));
}

TEST_P(ConfigureDialogTest, DeletingAColumnMadeInTheDialogAsksNothingAndAStoredOneAsksFirst)
{
    auto collection = storedColumns({kA});
    ASSERT_NE(collection, nullptr);
    auto dialog = openDialog(*collection);
    QWidget* d = dialog.get();
    newColumnThroughTheDialogs(d, {"Fresh", fcInteger16});
    clickRow(list(d), "Fresh");
    click(d, "cmdDelete");
    EXPECT_TRUE(ui->questions().isEmpty());
    EXPECT_FALSE(dialog->DeletePending());
    EXPECT_EQ(listed(d), QStringList{"Alpha"});

    // Cancel at the question keeps the stored column.
    ui->queueAnswer(Answer::Cancel);
    click(d, "cmdDelete");
    EXPECT_EQ(ui->questions().size(), 1);
    EXPECT_FALSE(dialog->DeletePending());
    EXPECT_EQ(listed(d), QStringList{"Alpha"});
}

TEST_P(ConfigureDialogTest, CancelAtTheApplyQuestionDropsEveryPendingChange)
{
    auto collection = storedColumns({kA, kB});
    ASSERT_NE(collection, nullptr);
    auto dialog = openDialog(*collection);
    QWidget* d = dialog.get();
    newColumnThroughTheDialogs(d, {"Fresh", fcInteger16});
    clickRow(list(d), "Alpha");
    ui->queueAnswer(Answer::Ok);
    click(d, "cmdDelete");
    EXPECT_EQ(listed(d), QStringList({"Beta", "Fresh"}));

    ui->queueAnswer(Answer::Cancel);
    click(d, "cmdApply");
    EXPECT_EQ(listed(d), QStringList({"Alpha", "Beta"}));
    EXPECT_FALSE(dialog->IsDirty());
    EXPECT_FALSE(dialog->DeletePending());
    EXPECT_EQ(storedNames(), QStringList({"1|Alpha", "2|Beta"}));
}

TEST_P(ConfigureDialogTest, CancelWithChangesDropsThemAndKeepsTheDialogOpenThenCloses)
{
    auto collection = storedColumns({kA, kB});
    ASSERT_NE(collection, nullptr);
    auto dialog = openDialog(*collection);
    QWidget* d = dialog.get();
    click(d, "cmdDown");
    EXPECT_EQ(listed(d), QStringList({"Beta", "Alpha"}));
    click(d, "cmdCancel");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(listed(d), QStringList({"Alpha", "Beta"}));
    EXPECT_EQ(named<QPushButton>(d, "cmdCancel")->text(), GetResourceText(8065));
    QTest::keyClick(d, Qt::Key_Escape);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(storedNames(), QStringList({"1|Alpha", "2|Beta"}));
}

TEST_P(ConfigureDialogTest, TheCloseButtonAsksAboutUnsavedChanges)
{
    ASSERT_NE(storedColumns({kA, kB}), nullptr);
    struct Case {
        Answer answer;
        bool stillOpen;
        QStringList stored;
    };
    for (const Case& c : {Case{Answer::Yes, false, {"1|Beta", "2|Alpha"}}, Case{Answer::No, false, {"1|Alpha", "2|Beta"}},
                          Case{Answer::Cancel, true, {"1|Alpha", "2|Beta"}}}) {
        SCOPED_TRACE(static_cast<int>(c.answer));
        auto collection = columns();
        auto dialog = openDialog(*collection);
        click(dialog.get(), "cmdDown");
        ui->queueAnswer(c.answer);
        ui->clearRequests();
        dialog->close();
        EXPECT_EQ(ui->questions().last(), GetResourceText(7119));
        ASSERT_FALSE(ui->requests().isEmpty());
        EXPECT_EQ(ui->requests().first(), "beep") << "the question comes with a beep";
        EXPECT_EQ(dialog->isVisible(), c.stillOpen);
        EXPECT_EQ(storedNames(), c.stored);
        // Put the stored order back for the next case.
        auto again = columns();
        if (again->Item("Alpha")->Index() != 1) {
            again->MoveColumnUp(again->Item("Alpha"));
            ASSERT_TRUE(again->ColumnsSave(nullptr));
        }
    }
    // Without changes it closes without a question.
    auto dialog = openDialog(*columns());
    const qsizetype asked = ui->questions().size();
    dialog->close();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(ui->questions().size(), asked);
}

TEST_P(ConfigureDialogTest, ThePicklistButtonOpensTheListOfAStoredPicklistColumn)
{
    auto collection = storedColumns({kA, {"Grade", fcInteger16, 0, "", "", true, false, "5"}});
    ASSERT_NE(collection, nullptr);
    auto dialog = openDialog(*collection);
    QWidget* d = dialog.get();
    EXPECT_FALSE(enabled(d, "cmdPicklist"));
    clickRow(list(d), "Grade");
    ASSERT_TRUE(enabled(d, "cmdPicklist"));
    ui->clearRequests();
    click(d, "cmdPicklist");
    EXPECT_EQ(ui->requests(), QStringList{"picklist"});

    // A picklist column not yet saved has no list to edit.
    newColumnThroughTheDialogs(d, {"Level", fcInteger32, 0, "", "", true, false, "1"});
    EXPECT_FALSE(enabled(d, "cmdPicklist"));
    click(d, "cmdApply");
    clickRow(list(d), "Level");
    EXPECT_TRUE(enabled(d, "cmdPicklist"));
}

TEST_P(ConfigureDialogTest, ConfigureOpensTheDialogOverTheCollectionThroughTheWidgetServices)
{
    storedColumns({kA});
    UiServices::install(std::make_shared<WidgetUiServices>());
    auto filter = open();
    QStringList seen;
    whenModalAppears([&](QWidget* modal) {
        seen << modal->objectName() << listed(modal);
        QTest::keyClick(modal, Qt::Key_Escape);
        if (modal->isVisible())
            modal->hide();
    });
    filter->Configure(nullptr);
    EXPECT_EQ(seen, QStringList({"frmConfigure", "Alpha"}));
}

SD_INSTANTIATE_DATABASE_SUITE(ConfigureDialogTest);

TEST(ConfigureFieldTypes, FieldTypesThatShareANameAndAnUnknownOneNamedByItsNumber)
{
    EXPECT_EQ(frmConfigure::FieldTypeName(16), frmConfigure::FieldTypeName(17));
    EXPECT_NE(frmConfigure::FieldTypeName(2), frmConfigure::FieldTypeName(3));
    EXPECT_EQ(frmConfigure::FieldTypeName(202), GetResourceText(7217));
    EXPECT_EQ(frmConfigure::FieldTypeName(999), GetResourceText(7221, {"999"}));
}

} // namespace
