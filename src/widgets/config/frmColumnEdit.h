#pragma once

#include "searchdata/CFilterColumns.h"

#include <QDialog>
#include <memory>

namespace Ui {
class frmColumnEdit;
}

namespace searchdata {

/// The dialog that defines one search column: a new one, or one of the collection. It checks the
/// name, caption, size and default as they are typed and takes them into the column on OK; nothing
/// reaches the database until the column list saves.
class frmColumnEdit : public QDialog {
    Q_OBJECT
public:
    using ColumnPtr = CFilterColumns::ColumnPtr;

    explicit frmColumnEdit(QWidget* parent = nullptr);
    ~frmColumnEdit() override;

    /// Asks for a new column of `columns`, standing off the owner's corner `ownerTopLeft`; modal. The
    /// column made, added to `columns` and marked new, or null.
    ColumnPtr MakeNew(CFilterColumns& columns, QPoint ownerTopLeft);
    /// Lets the user change `column`; modal. True when the values were taken.
    bool Edit(const ColumnPtr& column, CFilterColumns& columns, QPoint ownerTopLeft);
    /// What `MakeNew` and `Edit` do before they run modally, for driving the dialog without a nested
    /// event loop: afterwards show it, act, and read `Changed` and `column`.
    void SetupNew(CFilterColumns& columns, QPoint ownerTopLeft);
    void SetupEdit(const ColumnPtr& column, CFilterColumns& columns, QPoint ownerTopLeft);
    /// Whether OK took the values.
    bool Changed() const { return m_changed; }
    /// The column being edited, or the one that OK made; null before that.
    const ColumnPtr& column() const { return m_column; }

    /// The first free name "Column1", "Column2"... of the collection.
    QString Column() const;
    /// Shows the controls that the chosen type and picklist setting use, and enables OK.
    void ControlsUpdate();
    /// Whether the name can be taken: not blank, neither name nor caption the same as a field of the
    /// base table or a name or caption of another column, and a new column's name no name that the
    /// search tables keep for themselves. Shows the warning of the first clash.
    bool ValidateName();
    /// Shows warning 1 to 7 above the field it speaks of (odd: the name, even: the caption); 0 hides it.
    void ValidateNameWarning(int warning);
    /// The warning shown, 0 for none.
    int Warning() const { return m_warning; }
    /// For a stored column whose picklist setting changes: tells that a list will be made, or asks
    /// whether its list may go. False when the user cancels.
    bool ValidatePicklistSetting();

    /// The stored form of a default typed for `column`: a text cut to the column's length, a number
    /// in the column's type, a date in ISO form; blank when it does not fit the type.
    static QString FormatPicklistValue(const QString& text, const CFilterColumn& column);
    /// Whether `text` is the same default as the column's: numbers by value, dates as dates, a blank
    /// text the same as no default.
    static bool ValueEqualsPicklistDefault(const QString& text, const CFilterColumn& column);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void clearForm();
    void setNameAndTypeOpen(bool open);
    void placeAt(QPoint ownerTopLeft);
    FilterColumnTypeConstants selectedType() const;
    void selectType(FilterColumnTypeConstants type);
    /// The picklist box as it counts: checked, for a type that takes a picklist.
    bool picklistChosen() const;
    bool defaultShown() const;
    bool defaultValid() const;
    bool somethingChanged() const;
    void placeWarning();
    void cmdOk_Click();

    std::unique_ptr<Ui::frmColumnEdit> ui;
    CFilterColumns* m_columns = nullptr;
    ColumnPtr m_column;
    bool m_changed = false;
    int m_warning = 0;
};

} // namespace searchdata
