#include "picklist/frmPicklistSelect.h"

#include "host/FormPlacement.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/CFormInfo.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace searchdata {

frmPicklistSelect::frmPicklistSelect(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmPicklistSelect"));
    lblPrompt = new QLabel(this);
    lblPrompt->setObjectName(QStringLiteral("lblPrompt"));
    lblPrompt->setWordWrap(true);
    lstColumns = new QListWidget(this);
    lstColumns->setObjectName(QStringLiteral("lstColumns"));
    cmdEdit = new QPushButton(this);
    cmdEdit->setObjectName(QStringLiteral("cmdEdit"));
    cmdCancel = new QPushButton(this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));

    connect(lstColumns, &QListWidget::itemSelectionChanged, this, [this] { cmdEdit->setEnabled(!lstColumns->selectedItems().isEmpty()); });
    connect(cmdEdit, &QPushButton::clicked, this, &frmPicklistSelect::cmdEdit_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QWidget::hide);

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(cmdEdit);
    buttons->addWidget(cmdCancel);
    buttons->addStretch(1);
    auto* body = new QHBoxLayout;
    body->addWidget(lstColumns, 1);
    body->addLayout(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblPrompt);
    layout->addLayout(body, 1);

    RegisterLibraryForm(this);
    FormToJapanese(this);
}

void frmPicklistSelect::Prepare(CFilterColumns& columns, const IFormInfo* oFI)
{
    m_columns = &columns;
    setWindowTitle(GetResourceText(8256));
    lblPrompt->setText(GetResourceText(8257));
    cmdEdit->setText(GetResourceText(8077));
    cmdCancel->setText(GetResourceText(8073));
    cmdEdit->setDefault(true);
    InitializeColumnList();
    adjustSize();
    PositionForm(*this, columns, oFI);
}

void frmPicklistSelect::SelectAndEdit(CFilterColumns& columns, const IFormInfo* oFI)
{
    Prepare(columns, oFI);
    exec();
}

void frmPicklistSelect::InitializeColumnList()
{
    lstColumns->clear();
    for (const CFilterColumns::ColumnPtr& column : *m_columns)
        if (column->IsPicklist())
            lstColumns->addItem(column->Name());
    cmdEdit->setEnabled(!lstColumns->selectedItems().isEmpty());
}

void frmPicklistSelect::cmdEdit_Click()
{
    const QList<QListWidgetItem*> chosen = lstColumns->selectedItems();
    if (!m_columns || chosen.isEmpty())
        return;
    if (const CFilterColumns::ColumnPtr column = m_columns->Item(chosen.first()->text())) {
        if (const std::shared_ptr<CScPicklist> picklist = m_columns->PicklistOf(*column)) {
            const QPointer<frmPicklistSelect> self(this);
            picklist->Edit(MakeFormInfo(this).get());
            if (!self)
                return; // gone with the library's other windows while the picklist was edited
        }
    }
    hide();
}

} // namespace searchdata
