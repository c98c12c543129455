#include "ConfigTestSupport.h"

#include <QCheckBox>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QSqlRecord>
#include <QTreeWidget>

namespace searchdata::test {

void ConfigDialogTest::SetUp()
{
    SearchTest::SetUp();
    ui = std::make_shared<ScriptedUiServices>(std::chrono::milliseconds(2000));
    UiServices::install(ui);
}

void ConfigDialogTest::TearDown()
{
    UiServices::install(nullptr);
    SearchTest::TearDown();
}

CFilterColumns::ColumnPtr addColumn(CFilterColumns& columns, const ColumnSpec& spec)
{
    const qint16 size = spec.type == fcNote ? 255 : static_cast<qint16>(spec.size);
    QString picklistDefault = spec.type == fcNote ? spec.defaultText : QString();
    Value date = Value::null();
    if (spec.picklist)
        picklistDefault = spec.type == fcDateTime ? ParseDateText(spec.defaultText).value().toString("yyyy-MM-dd HH:mm:ss") : spec.defaultText;
    else if (spec.type == fcDateTime && !spec.now && !spec.defaultText.isEmpty())
        date = Value(ParseDateText(spec.defaultText).value());
    auto column = columns.Add(spec.name, spec.caption, spec.description, spec.type, size, spec.picklist, spec.picklist && spec.blanks,
                              picklistDefault, spec.now ? fcDTDM_Now : fcDTDM_Configure, date, spec.now && spec.disableEdit);
    if (column)
        column->setIsNew(true);
    return column;
}

std::shared_ptr<CFilterColumns> ConfigDialogTest::storedColumns(const QList<ColumnSpec>& specs, const QString& table)
{
    auto columns = this->columns(table, QStringLiteral("FileId"));
    if (!columns)
        return nullptr;
    for (const ColumnSpec& spec : specs)
        EXPECT_NE(addColumn(*columns, spec), nullptr) << qPrintable(spec.name);
    EXPECT_TRUE(columns->ColumnsSave(nullptr));
    return this->columns(table, QStringLiteral("FileId"));
}

QStringList ConfigDialogTest::definitions(const QString& table)
{
    QStringList lines;
    std::unique_ptr<Recordset> rs = db().OpenSqlRecordset(
        "SELECT * FROM " + q("SearchColumnConfiguration") + " WHERE " + q("BaseTable") + " = " + db().SqlQuote(table) + " ORDER BY " + q("Position"));
    EXPECT_NE(rs, nullptr);
    for (; rs && !rs->EndOfFile(); rs->MoveNext()) {
        QStringList fields;
        for (const char* field : {"Position", "Name", "Type", "Size", "Caption", "Description", "IsPicklist", "PicklistAllowBlanks",
                                     "PicklistDefault", "DateTimeDefaultMode", "DateTimeDefaultValue", "DisableEditDateTime"}) {
            const Value v = rs->field(field);
            fields << (v.isBlank() ? QStringLiteral("-") : v.text());
        }
        lines << fields.join(QLatin1Char('|'));
    }
    return lines;
}

void showActive(QWidget* window)
{
    window->show();
    window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
}

void click(QWidget* window, const QString& name)
{
    auto* button = named<QAbstractButton>(window, name);
    ASSERT_NE(button, nullptr) << qPrintable(name);
    ASSERT_TRUE(button->isEnabled()) << qPrintable(name) << " is disabled";
    QTest::mouseClick(button, Qt::LeftButton);
}

void press(QAbstractButton* button)
{
    ASSERT_NE(button, nullptr);
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);
}

void typeInto(QLineEdit* box, const QString& text)
{
    ASSERT_NE(box, nullptr);
    box->setFocus();
    box->selectAll();
    QTest::keyClick(box, Qt::Key_Delete);
    typeText(box, text);
}

void typeText(QWidget* widget, const QString& text)
{
    for (const QChar c : text) {
        if (c.unicode() < 128)
            QTest::keyClick(widget, c.toLatin1());
        else // beyond the keys that the test library knows: the key event carries the text alone
            QTest::sendKeyEvent(QTest::Click, widget, Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
}

void clickRow(QWidget* list, const QString& text)
{
    ASSERT_NE(list, nullptr);
    if (auto* tree = qobject_cast<QTreeWidget*>(list)) {
        const QList<QTreeWidgetItem*> rows = tree->findItems(text, Qt::MatchExactly, 0);
        ASSERT_EQ(rows.size(), 1) << qPrintable(text);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(rows.first()).center());
        return;
    }
    auto* widget = qobject_cast<QListWidget*>(list);
    ASSERT_NE(widget, nullptr);
    const QList<QListWidgetItem*> rows = widget->findItems(text, Qt::MatchExactly);
    ASSERT_EQ(rows.size(), 1) << qPrintable(text);
    QTest::mouseClick(widget->viewport(), Qt::LeftButton, {}, widget->visualItemRect(rows.first()).center());
}

void fillColumnEdit(QWidget* dialog, const ColumnSpec& spec)
{
    if (!spec.name.isEmpty())
        typeInto(named<QLineEdit>(dialog, "txtName"), spec.name);
    CFilterColumn probe;
    probe.setColumnType(spec.type);
    clickRow(named<QListWidget>(dialog, "lstType"), probe.ColumnTypeName());
    if (spec.type == fcKeyword || spec.type == fcText) {
        auto* size = named<QSpinBox>(dialog, "txtSize");
        ASSERT_NE(size, nullptr);
        size->setFocus();
        size->selectAll();
        QTest::keyClicks(size, QString::number(spec.size));
    }
    typeInto(named<QLineEdit>(dialog, "txtCaption"), spec.caption);
    typeInto(named<QLineEdit>(dialog, "txtDescription"), spec.description);
    auto* picklist = named<QCheckBox>(dialog, "chkIsPicklist");
    ASSERT_NE(picklist, nullptr);
    if (picklist->isVisibleTo(dialog) && picklist->isChecked() != spec.picklist)
        press(picklist);
    auto* blanks = named<QCheckBox>(dialog, "chkPicklistBlank");
    if (blanks->isVisibleTo(dialog) && blanks->isChecked() != spec.blanks)
        press(blanks);
    if (spec.type == fcDateTime && !spec.picklist) {
        press(named<QRadioButton>(dialog, spec.now ? "kvooptDateDefault_1" : "kvooptDateDefault_0"));
        auto* disable = named<QCheckBox>(dialog, "chkDisableEditTime");
        if (disable->isVisibleTo(dialog) && disable->isChecked() != spec.disableEdit)
            press(disable);
    }
    if (spec.type == fcNote) {
        auto* note = named<QPlainTextEdit>(dialog, "txtNoteDefault");
        note->setFocus();
        QTest::keyClicks(note, spec.defaultText);
    } else if (auto* box = named<QLineEdit>(dialog, "txtDefault"); box->isVisibleTo(dialog)) {
        typeInto(box, spec.defaultText);
    }
}

} // namespace searchdata::test

namespace searchdata::test {

void newColumnThroughTheDialogs(QWidget* configureDialog, const ColumnSpec& spec)
{
    bool filled = false;
    whenModalAppears([&](QWidget* edit) {
        fillColumnEdit(edit, spec);
        click(edit, "cmdOk");
        filled = true;
        if (edit->isVisible()) // a step that failed above must not leave the test waiting
            edit->hide();
    }, QStringLiteral("frmColumnEdit"));
    click(configureDialog, "cmdNew");
    EXPECT_TRUE(filled) << qPrintable(spec.name);
}

QStringList listed(QWidget* configureDialog)
{
    QStringList names;
    const auto* view = named<QTreeWidget>(configureDialog, "lvwSearch");
    for (int row = 0; view && row < view->topLevelItemCount(); ++row)
        names << view->topLevelItem(row)->text(0);
    return names;
}

} // namespace searchdata::test
