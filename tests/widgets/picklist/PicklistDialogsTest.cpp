// The kept-entries dialog, the choice of picklist, and the ways into the picklist dialogs.

#include "picklist/PicklistFixture.h"
#include "picklist/frmPicklistKept.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/CFormInfo.h"
#include "searchdata/widgets/WidgetUiServices.h"
#include "support/WidgetTestSupport.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

using namespace searchdata;
using namespace searchdata::test;

namespace {

QStringList entries(int count)
{
    QStringList list;
    for (int i = 1; i <= count; ++i)
        list << QStringLiteral("entry %1").arg(i);
    return list;
}

TEST(PicklistKept, ManyEntriesAreCountedOneIsNamedAndTheRestAreListed)
{
    struct Case {
        int count;
        bool listed;
    };
    for (const bool query : {false, true}) {
        for (const Case& c : {Case{1, false}, Case{2, true}, Case{199, true}, Case{200, false}, Case{1000, false}}) {
            SCOPED_TRACE(QStringLiteral("%1 entries, %2").arg(c.count).arg(query ? "QueryHide" : "Display").toStdString());
            frmPicklistKept form;
            ASSERT_TRUE(form.Prepare(nullptr, entries(c.count), query));
            form.show();
            const auto* list = named<QListWidget>(&form, "lstKept");
            EXPECT_EQ(list->isVisible(), c.listed);
            EXPECT_EQ(list->count(), c.listed ? c.count : 0);
            const QString prompt = named<QLabel>(&form, "lblPrompt")->text();
            if (c.count == 1)
                EXPECT_EQ(prompt, GetResourceText(query ? 8549 : 8545, {"entry 1"}));
            else if (c.listed)
                EXPECT_EQ(prompt, GetResourceText(query ? 8550 : 8546));
            else
                EXPECT_EQ(prompt, GetResourceText(query ? 8551 : 8547, {QString::number(c.count)}));
            EXPECT_EQ(form.windowTitle(), GetResourceText(query ? 8548 : 8544));
            const auto* ok = named<QPushButton>(&form, "cmdOk");
            const auto* close = named<QPushButton>(&form, "cmdClose");
            EXPECT_EQ(ok->isVisible(), query);
            EXPECT_EQ(close->text(), GetResourceText(query ? 8073 : 8065));
            EXPECT_EQ(query ? ok->isDefault() : close->isDefault(), true);
        }
    }
    frmPicklistKept empty;
    EXPECT_FALSE(empty.Prepare(nullptr, {}, true));
    EXPECT_FALSE(frmPicklistKept::QueryHide(nullptr, {}));
}

TEST(PicklistKept, QueryHideIsTrueOnlyForTheConfirmingButton)
{
    struct Case {
        const char* how;
        std::function<void(QWidget*)> act;
        bool expected;
    };
    const Case cases[] = {
        {"cmdOk", [](QWidget* w) { QTest::mouseClick(named<QPushButton>(w, "cmdOk"), Qt::LeftButton); }, true},
        {"cmdClose", [](QWidget* w) { QTest::mouseClick(named<QPushButton>(w, "cmdClose"), Qt::LeftButton); }, false},
        {"Escape", [](QWidget* w) { QTest::keyClick(w, Qt::Key_Escape); }, false},
        {"the window's close", [](QWidget* w) { w->close(); }, false},
        {"Enter", [](QWidget* w) { QTest::keyClick(w, Qt::Key_Return); }, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.how);
        whenModalAppears(c.act, "frmPicklistKept");
        EXPECT_EQ(frmPicklistKept::QueryHide(nullptr, entries(3)), c.expected);
    }
}

TEST(PicklistKept, StandsInTheMiddleOfItsOwnerOrOfTheScreen)
{
    QWidget owner;
    owner.setGeometry(100, 120, 600, 400);
    owner.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&owner));
    frmPicklistKept over;
    ASSERT_TRUE(over.Prepare(&owner, entries(5), false));
    EXPECT_LE((over.frameGeometry().center() - owner.frameGeometry().center()).manhattanLength(), 2);

    frmPicklistKept alone;
    ASSERT_TRUE(alone.Prepare(nullptr, entries(5), false));
    const QRect screen = alone.screen()->availableGeometry();
    EXPECT_LE((alone.frameGeometry().center() - screen.center()).manhattanLength(), 2);
}

/// The ways into the picklist dialogs, with the real windows.
class PicklistEntryPointsTest : public PicklistTest {
protected:
    void SetUp() override
    {
        PicklistTest::SetUp();
        if (HasFatalFailure())
            return;
        UiServices::install(std::make_shared<WidgetUiServices>());
        ASSERT_NO_FATAL_FAILURE(defineColourAndQty());
    }
    /// Makes the named columns picklists; the collection as it then stands.
    std::shared_ptr<CFilterColumns> picklists(const QStringList& names)
    {
        auto cols = columns();
        for (const QString& name : names) {
            cols->Item(name)->setIsPicklist(true);
            cols->Item(name)->setPicklistAllowBlanks(true);
        }
        EXPECT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
        return columns();
    }
};

TEST_P(PicklistEntryPointsTest, OnePicklistOpensItsDialogAtOnce)
{
    EXPECT_FALSE(picklists({})->HasPicklists());
    auto cols = picklists({"Qty"});
    EXPECT_TRUE(cols->HasPicklists());
    QString title;
    whenModalAppears([&](QWidget* w) {
        title = w->windowTitle();
        QTest::keyClick(w, Qt::Key_Escape);
    }, "frmPicklistEdit");
    cols->EditPicklists(nullptr);
    EXPECT_EQ(title, GetResourceText(8352, {"Files", "Qty"}));
}

TEST_P(PicklistEntryPointsTest, WithSeveralTheUserChoosesWhichToEdit)
{
    auto cols = picklists({"Colour", "Qty"});
    QWidget host;
    host.setObjectName("frmHost");
    host.setGeometry(50, 60, 700, 500);
    host.show();
    const std::unique_ptr<CFormInfo> owner = MakeFormInfo(&host);

    QStringList listed;
    bool editAtFirst = true;
    QString edited;
    bool selectGone = false;
    whenModalAppears([&](QWidget* select) {
        EXPECT_EQ(select->windowTitle(), GetResourceText(8256));
        EXPECT_EQ(select->pos(), host.frameGeometry().topLeft() + QPoint(20, 20)) << "off the owner's corner by the dialog offset";
        auto* list = named<QListWidget>(select, "lstColumns");
        for (int i = 0; i < list->count(); ++i)
            listed << list->item(i)->text();
        auto* edit = named<QPushButton>(select, "cmdEdit");
        editAtFirst = edit->isEnabled();
        const QRect qty = list->visualItemRect(list->item(1));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, qty.center());
        whenModalAppears([&](QWidget* w) {
            edited = w->windowTitle();
            QTest::mouseClick(named<QPushButton>(w, "cmdCancel"), Qt::LeftButton);
        }, "frmPicklistEdit");
        QTest::mouseClick(edit, Qt::LeftButton);
        selectGone = !select->isVisible();
    }, "frmPicklistSelect");
    cols->EditPicklists(owner.get());
    EXPECT_EQ(listed, QStringList({"Colour", "Qty"}));
    EXPECT_FALSE(editAtFirst);
    EXPECT_EQ(edited, GetResourceText(8352, {"Files", "Qty"}));
    EXPECT_TRUE(selectGone);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

SD_INSTANTIATE_DATABASE_SUITE(PicklistEntryPointsTest);

} // namespace
