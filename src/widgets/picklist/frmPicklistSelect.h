#pragma once

#include <QDialog>

class QLabel;
class QListWidget;
class QPushButton;

namespace searchdata {

class CFilterColumns;
class IFormInfo;

/// Lets the user choose which picklist of a table to edit, when it has more than one.
class frmPicklistSelect : public QDialog {
    Q_OBJECT
public:
    explicit frmPicklistSelect(QWidget* parent = nullptr);

    /// Lists the picklist columns of `columns` over `oFI` and runs modally; the chosen picklist's
    /// dialog opens from here.
    void SelectAndEdit(CFilterColumns& columns, const IFormInfo* oFI);
    /// Everything of `SelectAndEdit` short of running modally.
    void Prepare(CFilterColumns& columns, const IFormInfo* oFI);

private:
    void InitializeColumnList();
    void cmdEdit_Click();

    QLabel* lblPrompt;
    QListWidget* lstColumns;
    QPushButton* cmdEdit;
    QPushButton* cmdCancel;
    CFilterColumns* m_columns = nullptr;
};

} // namespace searchdata
