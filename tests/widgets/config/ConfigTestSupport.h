#pragma once

#include "searchdata/CFilterColumns.h"
#include "support/SearchFixture.h"
#include "support/WidgetTestSupport.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QTest>

namespace searchdata::test {

/// One column as an administrator defines it in the column edit dialog.
struct ColumnSpec {
    QString name = {};
    FilterColumnTypeConstants type = fcText;
    int size = 0; ///< keyword and text columns only
    QString caption = {};
    QString description = {};
    bool picklist = false;
    bool blanks = false;
    QString defaultText = {}; ///< the default field, or the note's default
    bool now = false;    ///< a date column that defaults to the current date
    bool disableEdit = false;
};

/// The column dialogs on a database with the base table Files, with a scripted user answering the
/// questions.
class ConfigDialogTest : public SearchTest {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Defines columns of Files through the core and saves them; the collection as stored.
    std::shared_ptr<CFilterColumns> storedColumns(const QList<ColumnSpec>& specs, const QString& table = QStringLiteral("Files"));
    /// The definition rows of a base table, one line per column in position order, without the
    /// base table's name.
    QStringList definitions(const QString& table = QStringLiteral("Files"));

    std::shared_ptr<ScriptedUiServices> ui;
};

/// Adds a column to a collection as the core's caller would, with its default in stored form.
CFilterColumns::ColumnPtr addColumn(CFilterColumns& columns, const ColumnSpec& spec);

/// Shows a window and makes it the active one, so that focus moves as it does for a user.
void showActive(QWidget* window);
/// Clicks a named button of a window; fails the test when it is missing or disabled.
void click(QWidget* window, const QString& name);
/// Presses a check box or option with the space bar, as a user who tabbed to it.
void press(QAbstractButton* button);
/// Replaces the text of a line edit as a user does: select everything, type.
void typeInto(QLineEdit* box, const QString& text);
/// Types `text` key by key, letters of any script included.
void typeText(QWidget* widget, const QString& text);
/// Fills a shown column edit dialog from `spec`, leaving the name alone when `spec` has none.
void fillColumnEdit(QWidget* dialog, const ColumnSpec& spec);
/// Makes a new column through the column edit dialog that `cmdNew` of a shown column list opens.
void newColumnThroughTheDialogs(QWidget* configureDialog, const ColumnSpec& spec);
/// The names in a shown column list, top to bottom.
QStringList listed(QWidget* configureDialog);
/// Clicks the row of a list view or list widget that shows `text` in its first column.
void clickRow(QWidget* list, const QString& text);

} // namespace searchdata::test
