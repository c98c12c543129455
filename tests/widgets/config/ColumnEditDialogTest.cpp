#include "ConfigTestSupport.h"
#include "config/frmColumnEdit.h"
#include "searchdata/Resources.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class ColumnEditDialogTest : public ConfigDialogTest {
protected:
    /// A shown dialog for a new column of `collection`.
    std::unique_ptr<frmColumnEdit> newColumnDialog(CFilterColumns& collection)
    {
        auto dialog = std::make_unique<frmColumnEdit>();
        dialog->SetupNew(collection, QPoint(100, 100));
        showActive(dialog.get());
        return dialog;
    }
    std::unique_ptr<frmColumnEdit> editDialog(const CFilterColumns::ColumnPtr& column, CFilterColumns& collection)
    {
        auto dialog = std::make_unique<frmColumnEdit>();
        dialog->SetupEdit(column, collection, QPoint(100, 100));
        showActive(dialog.get());
        return dialog;
    }
    static bool okEnabled(const QWidget* dialog) { return named<QPushButton>(dialog, "cmdOk")->isEnabled(); }
};

TEST_P(ColumnEditDialogTest, ANewColumnIsOfferedTheFirstFreeName)
{
    struct Case {
        QStringList taken;
        QString offered;
    };
    for (const Case& c : {Case{{}, "Column1"}, Case{{"Column1", "Column2"}, "Column3"}, Case{{"column1"}, "Column2"},
                          Case{{"Column2"}, "Column1"}}) {
        auto collection = columns();
        for (const QString& name : c.taken)
            ASSERT_NE(collection->Add(name, {}, {}, fcText, 10, false, false), nullptr);
        auto dialog = newColumnDialog(*collection);
        EXPECT_EQ(named<QLineEdit>(dialog.get(), "txtName")->text(), c.offered) << qPrintable(c.taken.join(','));
        EXPECT_EQ(dialog->windowTitle(), GetResourceText(7297));
        EXPECT_TRUE(okEnabled(dialog.get()));
    }
}

TEST_P(ColumnEditDialogTest, ANameOrCaptionThatClashesShowsItsWarningAboveItsFieldAndDisablesOk)
{
    auto collection = columns();
    ASSERT_NE(collection->Add("Customer", "Client", {}, fcText, 10, false, false), nullptr);
    struct Case {
        QString name;
        QString caption;
        int warning;
    };
    const Case cases[] = {
        {"name", "", 1},          // a field of the base table, in other capitals
        {"Code", "ARCHIVED", 2},  // the caption is a field of the base table
        {"customer", "", 3},      // another column's name
        {"Code", "Customer", 4},  // the caption is another column's name
        {"client", "", 5},        // the name is another column's caption
        {"Code", "CLIENT", 6},    // another column's caption
        {"keywordOrder", "", 7},  // the field that numbers a keyword table's rows
        {"Code", "Code of part", 0},
        {"", "", 0},              // blank: no warning, and no OK either
    };
    auto dialog = newColumnDialog(*collection);
    auto* warning = named<QLabel>(dialog.get(), "lblWarning");
    for (const Case& c : cases) {
        typeInto(named<QLineEdit>(dialog.get(), "txtName"), c.name);
        typeInto(named<QLineEdit>(dialog.get(), "txtCaption"), c.caption);
        SCOPED_TRACE(qPrintable(c.name + " / " + c.caption));
        EXPECT_EQ(dialog->Warning(), c.warning);
        EXPECT_EQ(okEnabled(dialog.get()), c.warning == 0 && !c.name.isEmpty());
        EXPECT_EQ(warning->isVisible(), c.warning != 0);
        if (c.warning == 0)
            continue;
        EXPECT_EQ(warning->text(), GetResourceText(8161 + c.warning, {"Files"}));
        const QWidget* field = named<QLineEdit>(dialog.get(), c.warning % 2 ? "txtName" : "txtCaption");
        EXPECT_EQ(warning->geometry().bottom() + 1, field->y());
        EXPECT_EQ(warning->x(), field->x());
    }
}

TEST(ColumnEditKeys, TheNameTakesNoBlankAndTheCaptionDoesAndAPasteIsJudgedWhole)
{
    frmColumnEdit dialog;
    showActive(&dialog);
    auto* name = named<QLineEdit>(&dialog, "txtName");
    auto* caption = named<QLineEdit>(&dialog, "txtCaption");
    typeInto(name, QStringLiteral("My Col-1_é;日本"));
    typeInto(caption, QStringLiteral("My Col-1_é;日本"));
    EXPECT_EQ(name->text(), QStringLiteral("MyCol1_é日本"));
    EXPECT_EQ(caption->text(), QStringLiteral("My Col1_é日本"));

    QGuiApplication::clipboard()->setText(QStringLiteral("Part No"));
    name->setFocus();
    QTest::keyClick(name, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(name->text(), QStringLiteral("MyCol1_é日本"));
    caption->setFocus();
    caption->selectAll();
    QTest::keyClick(caption, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(caption->text(), QStringLiteral("Part No"));
}

TEST_P(ColumnEditDialogTest, TheControlsShownFollowTheTypeAndThePicklistSetting)
{
    struct Case {
        FilterColumnTypeConstants type;
        bool picklist;
        bool now;
        bool size, picklistBox, dateOptions, disableEdit, blanks, defaultBox, noteBox;
        int defaultLabel; // 0: no label
    };
    const Case cases[] = {
        {fcKeyword, false, false, true, false, false, false, false, false, false, 0},
        {fcText, false, false, true, true, false, false, false, false, false, 0},
        {fcText, true, false, true, true, false, false, true, true, false, 7305},
        {fcInteger16, false, false, false, true, false, false, false, false, false, 0},
        {fcInteger32, true, false, false, true, false, false, false, true, false, 7305},
        {fcDouble, true, false, false, true, false, false, false, true, false, 7305},
        {fcDateTime, false, false, false, true, true, false, false, true, false, 7310},
        {fcDateTime, false, true, false, true, true, true, false, false, false, 0},
        {fcDateTime, true, false, false, true, false, false, false, true, false, 7305},
        {fcBoolean, false, false, false, false, false, false, false, false, false, 0},
        {fcNote, false, false, false, false, false, false, false, false, true, 7311},
    };
    auto collection = columns();
    for (const Case& c : cases) {
        auto dialog = newColumnDialog(*collection);
        QWidget* d = dialog.get();
        fillColumnEdit(d, ColumnSpec{.name = {}, .type = c.type, .size = 20, .picklist = c.picklist, .now = c.now});
        CFilterColumn probe;
        probe.setColumnType(c.type);
        SCOPED_TRACE(qPrintable(probe.ColumnTypeName() + (c.picklist ? " picklist" : "") + (c.now ? " now" : "")));
        const auto shown = [d](const char* name) { return d->findChild<QWidget*>(name)->isVisibleTo(d); };
        EXPECT_EQ(shown("txtSize"), c.size);
        EXPECT_EQ(shown("lblSize"), c.size);
        EXPECT_EQ(shown("chkIsPicklist"), c.picklistBox);
        EXPECT_EQ(shown("kvooptDateDefault"), c.dateOptions);
        EXPECT_EQ(shown("chkDisableEditTime"), c.disableEdit);
        EXPECT_EQ(shown("chkPicklistBlank"), c.blanks);
        EXPECT_EQ(shown("txtDefault"), c.defaultBox);
        EXPECT_EQ(shown("txtNoteDefault"), c.noteBox);
        EXPECT_EQ(shown("lblDefault"), c.defaultLabel != 0);
        if (c.defaultLabel) {
            EXPECT_EQ(named<QLabel>(d, "lblDefault")->text(), GetResourceText(c.defaultLabel));
        }
        // The note's box stands where the default's box stands.
        for (const char* box : {"txtDefault", "txtNoteDefault"}) {
            if (shown(box)) {
                EXPECT_EQ(named<QWidget>(d, box)->x(), named<QWidget>(d, "txtName")->x()) << box;
            }
        }
    }
}

TEST_P(ColumnEditDialogTest, OkWaitsForADefaultThatSuitsTheType)
{
    struct Case {
        FilterColumnTypeConstants type;
        bool picklist;
        bool blanks;
        QString text;
        bool ok;
    };
    const Case cases[] = {
        {fcText, true, false, "", false},        {fcText, true, true, "", true},          {fcText, true, false, " x ", true},
        {fcInteger16, true, false, "70000", false}, {fcInteger16, true, false, "12", true}, {fcInteger16, true, false, "12a", false},
        {fcInteger32, true, false, "70000", true}, {fcSingle, true, false, "1.5", true},  {fcDouble, true, false, "x", false},
        {fcDateTime, true, false, "", false},    {fcDateTime, true, false, "2024-02-30", false},
        {fcDateTime, true, false, "3/1/2024", true}, {fcDateTime, false, false, "", true}, {fcDateTime, false, false, "soon", false},
    };
    auto collection = columns();
    for (const Case& c : cases) {
        auto dialog = newColumnDialog(*collection);
        fillColumnEdit(dialog.get(), ColumnSpec{.name = {}, .type = c.type, .size = 20, .picklist = c.picklist, .blanks = c.blanks,
                                                .defaultText = c.text});
        EXPECT_EQ(okEnabled(dialog.get()), c.ok) << c.type << " " << c.picklist << " '" << qPrintable(c.text) << "'";
    }
}

TEST_P(ColumnEditDialogTest, AStoredColumnKeepsItsNameAndTypeAndOkWaitsForAChange)
{
    auto collection = storedColumns({{"Customer", fcText, 30, "Client"},
                                     {"Due", fcDateTime, 0, "", "", false, false, "2024-03-01"}});
    ASSERT_NE(collection, nullptr);
    auto dialog = editDialog(collection->Item("Customer"), *collection);
    EXPECT_EQ(dialog->windowTitle(), GetResourceText(7296, {"Customer"}));
    EXPECT_FALSE(named<QLineEdit>(dialog.get(), "txtName")->isEnabled());
    EXPECT_FALSE(named<QListWidget>(dialog.get(), "lstType")->isEnabled());
    EXPECT_EQ(named<QLineEdit>(dialog.get(), "txtCaption")->text(), "Client");
    EXPECT_EQ(named<QSpinBox>(dialog.get(), "txtSize")->value(), 30);
    EXPECT_FALSE(okEnabled(dialog.get()));
    typeInto(named<QLineEdit>(dialog.get(), "txtCaption"), "Customer name");
    EXPECT_TRUE(okEnabled(dialog.get()));
    typeInto(named<QLineEdit>(dialog.get(), "txtCaption"), "Client ");
    EXPECT_FALSE(okEnabled(dialog.get()));

    // A date column: its default shown in the local form, and a change of the mode alone counts.
    auto date = editDialog(collection->Item("Due"), *collection);
    EXPECT_EQ(named<QLineEdit>(date.get(), "txtDefault")->text(), "3/1/2024");
    EXPECT_FALSE(okEnabled(date.get()));
    press(named<QRadioButton>(date.get(), "kvooptDateDefault_1"));
    EXPECT_TRUE(okEnabled(date.get()));
    click(date.get(), "cmdOk");
    const auto due = collection->Item("Due");
    EXPECT_EQ(due->DateTimeDefaultMode(), fcDTDM_Now);
    EXPECT_TRUE(due->DateTimeDefaultValue().isNull());
}

TEST_P(ColumnEditDialogTest, TurningAPicklistOffAsksAndCancelChangesNothingWhileTurningItOnOnlyTells)
{
    auto collection = storedColumns({{"Grade", fcInteger16, 0, "", "", true, false, "5"}, {"Qty", fcInteger32}});
    ASSERT_NE(collection, nullptr);
    auto dialog = editDialog(collection->Item("Grade"), *collection);
    EXPECT_EQ(named<QLineEdit>(dialog.get(), "txtDefault")->text(), "5");
    press(named<QCheckBox>(dialog.get(), "chkIsPicklist"));
    ui->queueAnswer(Answer::Cancel);
    click(dialog.get(), "cmdOk");
    EXPECT_EQ(ui->questions(), QStringList{GetResourceText(8160, {"Files", "Grade"})});
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_FALSE(dialog->Changed());
    EXPECT_TRUE(collection->Item("Grade")->IsPicklist());
    ui->queueAnswer(Answer::Ok);
    click(dialog.get(), "cmdOk");
    EXPECT_TRUE(dialog->Changed());
    EXPECT_FALSE(collection->Item("Grade")->IsPicklist());
    EXPECT_TRUE(collection->Item("Grade")->PicklistDefault().isEmpty());

    auto on = editDialog(collection->Item("Qty"), *collection);
    press(named<QCheckBox>(on.get(), "chkIsPicklist"));
    typeInto(named<QLineEdit>(on.get(), "txtDefault"), "1");
    click(on.get(), "cmdOk");
    EXPECT_TRUE(on->Changed());
    EXPECT_EQ(ui->questions().size(), 2);
    EXPECT_TRUE(ui->requests().contains("message information: searchdata: " + GetResourceText(8161, {"Files", "Qty"})));
    EXPECT_TRUE(collection->Item("Qty")->IsPicklist());
}

SD_INSTANTIATE_DATABASE_SUITE(ColumnEditDialogTest);

TEST(ColumnEditValues, ADefaultIsStoredAndComparedByItsType)
{
    struct Case {
        FilterColumnTypeConstants type;
        QString typed;
        QString stored;       // what the typed text is stored as
        QString sameAs;       // a stored default that the typed text equals
        QString differentTo;  // and one it does not
    };
    const Case cases[] = {
        {fcText, "  abcdefg", "abc", "  abcdefg", "ABCDEFG"},
        {fcInteger16, "2.5", "2", "2.50", "3"},
        {fcInteger32, "abc", "", "abc", "0"},
        {fcSingle, "0.10", "0.1", "0.1", "0.2"},
        {fcDateTime, "3/1/2024", "2024-03-01 00:00:00", "2024-03-01 00:00:00", "2024-03-02 00:00:00"},
        {fcDateTime, "x", "", "x", "2024-03-01"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(qPrintable(QString::number(c.type) + " " + c.typed));
        CFilterColumn column;
        column.setColumnType(c.type);
        column.setTextLengthInUI(5);
        EXPECT_EQ(frmColumnEdit::FormatPicklistValue(c.typed, column), c.stored);
        column.setPicklistDefault(c.sameAs);
        EXPECT_TRUE(frmColumnEdit::ValueEqualsPicklistDefault(c.typed, column));
        column.setPicklistDefault(c.differentTo);
        EXPECT_FALSE(frmColumnEdit::ValueEqualsPicklistDefault(c.typed, column));
    }
    CFilterColumn none; // no default is the same as a blank one
    none.setColumnType(fcText);
    EXPECT_TRUE(frmColumnEdit::ValueEqualsPicklistDefault("", none));
    EXPECT_FALSE(frmColumnEdit::ValueEqualsPicklistDefault("x", none));
}

} // namespace
