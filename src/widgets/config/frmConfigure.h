#pragma once

#include "searchdata/CFilterColumns.h"

#include <QDialog>
#include <memory>

class QTreeWidgetItem;

namespace Ui {
class frmConfigure;
}

namespace searchdata {

/// The administrator's dialog for the search columns of one base table: the list of columns, and
/// buttons to add, edit, delete and reorder them and to reach a column's picklist. Changes stay in
/// the collection until Apply saves them.
class frmConfigure : public QDialog, private IProgressHandler {
    Q_OBJECT
public:
    using ColumnPtr = CFilterColumns::ColumnPtr;

    explicit frmConfigure(QWidget* parent = nullptr);
    ~frmConfigure() override;

    /// Shows the columns of `columns` and runs modally until the dialog is closed.
    void Configure(CFilterColumns& columns);
    /// What `Configure` does before it runs modally, for driving the dialog without a nested event
    /// loop: the labels, the list as stored, and the place over the owner.
    void Setup(CFilterColumns& columns);

    /// The list holds changes that are not saved.
    bool IsDirty() const { return m_isDirty; }
    void setIsDirty(bool dirty);
    /// A stored column was deleted since the last save.
    bool DeletePending() const { return m_deletePending; }

    /// Fills the list in the columns' order and selects the row of `selection`, or the first row.
    void RefreshList(const ColumnPtr& selection = nullptr);
    /// Saves the columns, then shows them as stored.
    void SaveChanges(IProgress& progress);
    /// Reads the columns as stored again, dropping what is not saved.
    void SetupFields();
    /// Enables the buttons for the selected row.
    void ControlsUpdate();

    /// The name shown for a field type of the base table, by its type code.
    static QString FieldTypeName(int adoType);

protected:
    /// The window's close button: asks about unsaved changes and hides the dialog.
    void closeEvent(QCloseEvent* event) override;
    /// Escape, as the Cancel button.
    void reject() override;

private:
    std::any IProgressHandler_ProcessRequest(int request, IProgress& progress, const std::any& arguments) override;
    /// Saves under a progress dialog.
    void saveWithProgress();
    ColumnPtr selectedColumn() const;
    void UpdateSearchCriteriaProperties(const CFilterColumn& column);
    void UpdateSearchCriteriaProperty(int position, const CFilterColumn& column, QTreeWidgetItem& row);
    void resetColumnWidths();

    /// Edits `column`, or makes a new one without; shows it in the list when the dialog took it.
    void runColumnEdit(ColumnPtr column);
    void cmdNew_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();
    void cmdMove_Click(bool up);
    void cmdPicklist_Click();
    void cmdApply_Click();
    void cmdCancel_Click();

    std::unique_ptr<Ui::frmConfigure> ui;
    CFilterColumns* m_columns = nullptr;
    bool m_isDirty = false;
    bool m_deletePending = false;
};

} // namespace searchdata
