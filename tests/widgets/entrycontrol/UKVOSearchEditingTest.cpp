#include "EntryControlFixture.h"

#include "entrycontrol/LinePanel.h"
#include "searchdata/Resources.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QComboBox>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// A user whose clipboard is the system's.
class ClipboardUiServices : public ScriptedUiServices {
public:
    QString ClipboardText() const override { return QGuiApplication::clipboard()->text(); }
};

class UKVOSearchEditingTest : public EntryControlTest {
protected:
    void SetUp() override
    {
        EntryControlTest::SetUp();
        if (HasFatalFailure())
            return;
        servicesGuard.reset();
        ui = std::make_shared<ClipboardUiServices>();
        servicesGuard = std::make_unique<ServicesGuard>(ui);
        openControl();
        acceptEditing();
        display(2);
        startEditing();
    }
    qsizetype beeps() const { return ui->requests().count("beep"); }
    static QString text(const QWidget* field)
    {
        if (const auto* line = qobject_cast<const QLineEdit*>(field))
            return line->text();
        if (const auto* note = qobject_cast<const QPlainTextEdit*>(field))
            return note->toPlainText();
        return qobject_cast<const QComboBox*>(field)->currentText();
    }
    static void setText(QWidget* field, const QString& text)
    {
        if (auto* line = qobject_cast<QLineEdit*>(field))
            line->setText(text);
        else if (auto* note = qobject_cast<QPlainTextEdit*>(field))
            note->setPlainText(text);
        else
            qobject_cast<QComboBox*>(field)->setEditText(text);
    }
    QString status() const { return child<QLineEdit>("txtStatus")->text(); }
};

TEST_P(UKVOSearchEditingTest, ABurstOfKeysUpdatesTheButtonsOnceAfterTheLastKey)
{
    auto* timer = control->findChild<QTimer*>("tmrUpdate");
    QSignalSpy updates(timer, &QTimer::timeout);
    auto* customer = child<QLineEdit>("txtTextField_1");
    focus(customer);
    for (QChar c : QStringLiteral("burs")) {
        QTest::keyClick(customer, c.toLatin1(), Qt::NoModifier, 20);
        EXPECT_FALSE(button("cmdApply")->isEnabled()) << "no update while keys come";
    }
    QElapsedTimer sinceLastKey;
    sinceLastKey.start();
    QTest::keyClick(customer, 't');
    ASSERT_TRUE(waitFor([&] { return button("cmdApply")->isEnabled(); }));
    EXPECT_GE(sinceLastKey.elapsed(), 200);
    EXPECT_EQ(updates.count(), 1);
}

TEST_P(UKVOSearchEditingTest, TypingAKeywordIsNoChangeButAddingAndRemovingOneIs)
{
    auto* tags = child<QComboBox>("cboField_0");
    auto* add = button("cmdAdd_0");
    auto* remove = button("cmdRemove_0");
    EXPECT_FALSE(add->isEnabled());
    type(tags, "red");
    settle();
    EXPECT_FALSE(control->IsDirty());
    EXPECT_FALSE(button("cmdApply")->isEnabled());
    EXPECT_TRUE(add->isEnabled());
    EXPECT_FALSE(remove->isEnabled());

    click(add);
    settle();
    EXPECT_EQ(tags->count(), 1);
    EXPECT_EQ(tags->currentText(), "red");
    EXPECT_TRUE(control->IsDirty());
    EXPECT_TRUE(button("cmdApply")->isEnabled());
    EXPECT_TRUE(remove->isEnabled());
    EXPECT_FALSE(add->isEnabled());

    click(button("cmdReset"));
    settle();
    EXPECT_FALSE(control->IsDirty());
    EXPECT_EQ(tags->count(), 0);
    type(tags, "blue");
    click(add);
    click(remove);
    EXPECT_EQ(tags->count(), 0);
    EXPECT_TRUE(control->IsDirty());
}

TEST_P(UKVOSearchEditingTest, RefusedKeysBeepAndChangeNothing)
{
    struct Case {
        const char* field;
        QString typed;
        QString expected;
        int beeps;
    };
    const Case cases[] = {
        {"txtTextField_1", "a\"b'c", "abc", 2},
        {"txtTextField_1", "x  y", "x y", 1},
        {"txtNoteField_8", "it's", "its", 1},
        {"cboField_0", "a'b", "ab", 1},
        {"cboField_0", QString(22, QLatin1Char('k')), QString(20, QLatin1Char('k')), 2},
        // Numbers have no key test: their text is checked as a whole.
        {"txtTextField_2", "1'", "1'", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(qPrintable(QString::fromLatin1(c.field) + ": " + c.typed));
        auto* field = child<QWidget>(c.field);
        setText(field, {});
        const qsizetype before = beeps();
        type(field, c.typed);
        EXPECT_EQ(text(field), c.expected);
        EXPECT_EQ(beeps() - before, c.beeps);
    }

    // A paste is judged as a whole on the clipboard's text: for its blanks and its length, while a
    // quote in it passes, as the filter's quoting allows for.
    struct Paste {
        const char* field;
        QString clipboard;
        QString expected;
        int beeps;
    };
    const Paste pastes[] = {
        {"txtTextField_1", "ends  ", "", 1},
        {"cboField_0", QString(21, QLatin1Char('p')), "", 1},
        {"txtTextField_1", "O'Neil", "O'Neil", 0},
    };
    for (const Paste& p : pastes) {
        SCOPED_TRACE(qPrintable(p.clipboard));
        auto* field = child<QWidget>(p.field);
        setText(field, {});
        focus(field);
        QGuiApplication::clipboard()->setText(p.clipboard);
        const qsizetype before = beeps();
        QTest::keyClick(field, Qt::Key_V, Qt::ControlModifier);
        EXPECT_EQ(text(field), p.expected);
        EXPECT_EQ(beeps() - before, p.beeps);
    }

    // The paste of the context menu is judged the same way.
    auto* customer = child<QLineEdit>("txtTextField_1");
    setText(customer, {});
    QGuiApplication::clipboard()->setText("ends  ");
    QTimer::singleShot(0, [] {
        QWidget* menu = nullptr;
        ASSERT_TRUE(waitFor([&] { return (menu = QApplication::activePopupWidget()) != nullptr; }));
        QAction* paste = nullptr;
        for (QAction* action : menu->actions())
            if (action->text().startsWith(QLineEdit::tr("&Paste")))
                paste = action;
        if (paste)
            paste->trigger();
        menu->close();
        ASSERT_NE(paste, nullptr);
    });
    const qsizetype before = beeps();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(4, 4), customer->mapToGlobal(QPoint(4, 4)));
    QApplication::sendEvent(customer, &event);
    EXPECT_TRUE(customer->text().isEmpty());
    EXPECT_EQ(beeps() - before, 1);
}

TEST_P(UKVOSearchEditingTest, LeavingAValidFieldWritesItsValueAsItsTypeDoes)
{
    struct Case {
        const char* field;
        QString typed;
        QString left;
    };
    const Case cases[] = {
        {"txtTextField_2", "007", "7"},
        {"txtTextField_5", "1.50", "1.5"},
        {"txtTextField_1", "  spaced  ", "spaced"},
        {"txtTextField_6", "2024-03-05", "3/5/2024"},
        // Not valid: left as typed.
        {"txtTextField_3", "12x", "12x"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.field);
        auto* field = child<QLineEdit>(c.field);
        type(field, c.typed);
        focus(child<QWidget>("txtTextField_4"));
        EXPECT_EQ(field->text(), c.left);
    }
}

TEST_P(UKVOSearchEditingTest, InvalidValuesBlockSavingAndTheStatusCountsThem)
{
    struct Case {
        QStringList invalid; // fields given a text that is no number, in this order
        const char* focusLast;
        int text;
        QStringList args;
    };
    const Case cases[] = {
        {{"txtTextField_2"}, nullptr, 7682, {}},
        {{"txtTextField_2"}, "txtTextField_3", 7683, {}},
        {{"txtTextField_2", "txtTextField_3"}, nullptr, 7684, {}},
        {{"txtTextField_2", "txtTextField_3", "txtTextField_4"}, nullptr, 7685, {"2"}},
        {{"txtTextField_2", "txtTextField_3"}, "txtTextField_1", 7686, {"2"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        for (const QString& name : c.invalid)
            type(child<QWidget>(name), "x");
        if (c.focusLast)
            focus(child<QWidget>(c.focusLast));
        settle();
        EXPECT_EQ(status(), GetResourceText(c.text, c.args));
        for (const char* name : {"cmdApply", "cmdOk", "cmdTemplateCopy"})
            EXPECT_FALSE(button(name)->isEnabled()) << name;
        EXPECT_TRUE(button("cmdReset")->isEnabled());
        const auto* caption = child<QLabel>("lblField_2");
        EXPECT_TRUE(caption->font().italic() && caption->font().underline());

        // The message of the whole entry is drawn once, and kept out of sight.
        const auto* panel = child<detail::LinePanel>("picLine_2");
        EXPECT_FALSE(panel->isVisible());
        EXPECT_EQ(panel->text(), GetResourceText(7681, {"Files"}));

        click(button("cmdReset"));
        settle();
        focus(child<QWidget>("txtTextField_1"));
        EXPECT_TRUE(status().isEmpty());
        EXPECT_FALSE(caption->font().italic());
    }
}

TEST_P(UKVOSearchEditingTest, EscapeResetsWhileThereAreChangesAndCancelsAfter)
{
    recordEvents();
    auto* customer = child<QLineEdit>("txtTextField_1");
    type(customer, "typed");
    settle();
    QTest::keyClick(customer, Qt::Key_Escape);
    settle();
    EXPECT_TRUE(customer->text().isEmpty());
    EXPECT_TRUE(control->IsEditing());
    QTest::keyClick(customer, Qt::Key_Escape);
    EXPECT_FALSE(control->IsEditing());
    EXPECT_EQ(events, QStringList({"Cancel", "Complete", "Changed"}));
}

TEST_P(UKVOSearchEditingTest, ClearEmptiesTheFieldsAndPutsAPicklistBackToItsDefault)
{
    auto* grade = child<QComboBox>("cboFieldView_10");
    grade->setCurrentIndex(grade->findText("C"));
    type(child<QWidget>("txtTextField_1"), "something");
    click(button("cmdClear"));
    settle();
    EXPECT_TRUE(child<QLineEdit>("txtTextField_1")->text().isEmpty());
    EXPECT_EQ(grade->currentText(), "B");
    EXPECT_TRUE(control->IsDirty());
    // A picklist always holds its entries, so there is always something to clear.
    EXPECT_TRUE(button("cmdClear")->isEnabled());
}

SD_INSTANTIATE_SQLITE_SUITE(UKVOSearchEditingTest);

} // namespace
