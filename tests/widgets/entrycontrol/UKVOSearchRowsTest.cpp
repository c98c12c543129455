#include "EntryControlFixture.h"

#include "entrycontrol/RowControl.h"
#include "searchdata/CSearchFilter.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class UKVOSearchRowsTest : public EntryControlTest {
protected:
    /// The widget that shows the value of column `name`, as the column sees it.
    QWidget* valueWidget(const char* name) const
    {
        QWidget* w = detail::widgetOf(control->MyFilter()->FilterColumns()->Item(name)->MyControl());
        EXPECT_TRUE(w && w->isVisible()) << name;
        return w;
    }
    bool readOnly(const QWidget* w) const { return w->property("readOnly").toBool(); }
};

TEST_P(UKVOSearchRowsTest, EveryColumnTypeHasItsControlInViewAndInEdit)
{
    struct Case {
        const char* column;
        const char* view;
        const char* edit;
        QStringList editButtons;
    };
    const Case cases[] = {
        {"Tags", "cboFieldView_0", "cboField_0", {"cmdAdd_0", "cmdRemove_0"}},
        {"Customer", "txtTextField_1", "txtTextField_1", {}},
        {"Qty", "txtTextField_2", "txtTextField_2", {}},
        {"Count", "txtTextField_3", "txtTextField_3", {}},
        {"Weight", "txtTextField_4", "txtTextField_4", {}},
        {"Price", "txtTextField_5", "txtTextField_5", {}},
        {"Due", "txtTextField_6", "txtTextField_6", {"cmdNow_6"}},
        {"Done", "lblField_7", "chkField_7", {}},
        {"Notes", "txtNoteField_8", "txtNoteField_8", {}},
        {"Stamp", "txtTextField_9", "txtTextField_9", {}},
        {"Grade", "txtTextField_10", "cboFieldView_10", {}},
    };
    openControl();
    acceptEditing();
    display(2);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.column);
        QWidget* w = valueWidget(c.column);
        ASSERT_NE(w, nullptr);
        EXPECT_EQ(w->objectName(), c.view);
        if (!qobject_cast<QLabel*>(w) && !qobject_cast<QComboBox*>(w)) {
            EXPECT_TRUE(readOnly(w));
        }
    }
    EXPECT_TRUE(child<QComboBox>("cboFieldView_0")->isVisible());
    EXPECT_EQ(child<QLabel>("lblField_7")->text(), "Done = False");

    startEditing();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.column);
        QWidget* w = valueWidget(c.column);
        ASSERT_NE(w, nullptr);
        EXPECT_EQ(w->objectName(), c.edit);
        // A date that may not be edited stays locked, and gets no button for the present time.
        EXPECT_EQ(readOnly(w), QString(c.column) == "Stamp");
        for (const QString& b : c.editButtons)
            EXPECT_TRUE(child<QPushButton>(b)->isVisible()) << qPrintable(b);
    }
    // Nothing of the view is left behind: the first members are kept hidden, later ones go.
    EXPECT_FALSE(child<QComboBox>("cboFieldView_0")->isVisible());
    EXPECT_EQ(named<QLabel>(control.get(), "lblField_7"), nullptr);
    EXPECT_EQ(named<QPushButton>(control.get(), "cmdNow_9"), nullptr);
    EXPECT_EQ(child<QCheckBox>("chkField_7")->text(), "Done");
    const auto* grade = child<QComboBox>("cboFieldView_10");
    QStringList choices;
    for (int i = 0; i < grade->count(); ++i)
        choices << grade->itemText(i);
    EXPECT_TRUE(choices.contains("A") && choices.contains("B") && choices.contains("C")) << qPrintable(choices.join(','));

    // And back: the session's controls go.
    click(button("cmdCancel"));
    settle();
    EXPECT_EQ(valueWidget("Tags")->objectName(), "cboFieldView_0");
    EXPECT_FALSE(child<QPushButton>("cmdAdd_0")->isVisible());
    EXPECT_EQ(named<QPushButton>(control.get(), "cmdNow_6"), nullptr);
    EXPECT_EQ(valueWidget("Grade")->objectName(), "txtTextField_10");
}

TEST_P(UKVOSearchRowsTest, TextLimitsFollowTheColumnAndHoldInANoteToo)
{
    openControl();
    acceptEditing();
    display(2);
    startEditing();
    const auto cols = control->MyFilter()->FilterColumns();
    EXPECT_EQ(cols->Item("Customer")->MyTextBox()->MaxLength(), 20);
    EXPECT_EQ(cols->Item("Qty")->MyTextBox()->MaxLength(), 255);
    EXPECT_EQ(cols->Item("Notes")->MyTextBox()->MaxLength(), 100);

    // A plain text edit has no limit of its own: a paste beyond it is cut.
    auto* notes = child<QPlainTextEdit>("txtNoteField_8");
    focus(notes);
    notes->insertPlainText(QString(300, QLatin1Char('n')));
    EXPECT_EQ(notes->toPlainText().size(), 100);
}

TEST_P(UKVOSearchRowsTest, RowsStackAndTheirValuesStandInOneColumn)
{
    openControl();
    display(2);
    // Each row starts below the one before it, and every value starts where the caption column ends.
    int lastBottom = -1;
    int valueLeft = -1;
    for (const char* name : {"txtTextField_1", "txtTextField_2", "txtTextField_5", "txtTextField_6", "lblField_7", "txtNoteField_8"}) {
        SCOPED_TRACE(name);
        const QWidget* w = child<QWidget>(name);
        EXPECT_GT(w->y(), lastBottom);
        lastBottom = w->y() + w->height();
        if (valueLeft < 0)
            valueLeft = w->x();
        EXPECT_EQ(w->x(), valueLeft);
    }
    // Captions share the width of the widest one, and a wrapped caption keeps its words whole.
    const int captionWidth = child<QLabel>("lblField_1")->width();
    for (int i : {0, 2, 6, 8}) {
        const auto* label = child<QLabel>(QStringLiteral("lblField_%1").arg(i));
        EXPECT_EQ(label->width(), captionWidth);
        EXPECT_EQ(label->x() + label->width(), valueLeft);
        for (const QString& word : label->text().split(' ', Qt::SkipEmptyParts))
            EXPECT_LE(label->fontMetrics().horizontalAdvance(word), label->width()) << qPrintable(word);
    }
}

SD_INSTANTIATE_SQLITE_SUITE(UKVOSearchRowsTest);

} // namespace
