#include "config/frmConfigure.h"

#include "config/frmColumnEdit.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "searchdata/widgets/CFormInfo.h"
#include "ui_frmConfigure.h"

#include <QCloseEvent>
#include <QHeaderView>

namespace searchdata {

namespace {

enum ListPosition { posName, posType, posLength, posPicklist, posBlanks, posDefault, posCount };

/// What a column is wider than its widest text (300 twips).
constexpr int kColumnPadding = 20;

Qt::Alignment alignmentOf(int position)
{
    switch (position) {
    case posLength:
        return Qt::AlignRight | Qt::AlignVCenter;
    case posPicklist:
    case posBlanks:
        return Qt::AlignCenter;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

/// The default that the list shows for a column.
QString defaultText(const CFilterColumn& column)
{
    switch (column.ColumnType()) {
    case fcKeyword:
    case fcBoolean:
        return {};
    case fcDateTime: {
        const Value date = column.IsPicklist() ? Value(column.PicklistDefault()) : column.DateTimeDefaultValue();
        const Result<QDateTime> when = date.toDateTime();
        return !date.isBlank() && date.isDate() && when ? DateToText(when.value()) : QString();
    }
    default:
        return column.PicklistDefault();
    }
}

} // namespace

frmConfigure::frmConfigure(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::frmConfigure>())
{
    ui->setupUi(this);
    RegisterLibraryForm(this);
    FormToJapanese(this);
    ui->cmdApply->setText(GetResourceText(7104));
    ui->cmdNew->setText(GetResourceText(8068));
    ui->cmdDelete->setText(GetResourceText(8069));
    ui->cmdEdit->setText(GetResourceText(8070));
    ui->cmdUp->setText(GetResourceText(8071));
    ui->cmdDown->setText(GetResourceText(8072));
    ui->cmdPicklist->setText(GetResourceText(8077));
    ui->lblDBLabel->setText(GetResourceText(7111));
    ui->lblTableLabel->setText(GetResourceText(7112));
    ui->lblKeyLabel->setText(GetResourceText(7113));

    static const int headings[posCount] = {7107, 7108, 7109, 7120, 7121, 7122};
    QTreeWidgetItem* header = ui->lvwSearch->headerItem();
    for (int position = 0; position < posCount; ++position) {
        header->setText(position, GetResourceText(headings[position]));
        header->setTextAlignment(position, alignmentOf(position));
    }
    ui->lvwSearch->header()->setSectionsMovable(false);

    connect(ui->lvwSearch, &QTreeWidget::itemSelectionChanged, this, &frmConfigure::ControlsUpdate);
    connect(ui->cmdNew, &QPushButton::clicked, this, &frmConfigure::cmdNew_Click);
    connect(ui->cmdEdit, &QPushButton::clicked, this, &frmConfigure::cmdEdit_Click);
    connect(ui->cmdDelete, &QPushButton::clicked, this, &frmConfigure::cmdDelete_Click);
    connect(ui->cmdUp, &QPushButton::clicked, this, [this] { cmdMove_Click(true); });
    connect(ui->cmdDown, &QPushButton::clicked, this, [this] { cmdMove_Click(false); });
    connect(ui->cmdPicklist, &QPushButton::clicked, this, &frmConfigure::cmdPicklist_Click);
    connect(ui->cmdApply, &QPushButton::clicked, this, &frmConfigure::cmdApply_Click);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmConfigure::cmdCancel_Click);
    resetColumnWidths();
    ControlsUpdate();
}

frmConfigure::~frmConfigure() = default;

void frmConfigure::Configure(CFilterColumns& columns)
{
    Setup(columns);
    exec();
}

void frmConfigure::Setup(CFilterColumns& columns)
{
    m_columns = &columns;
    const QString table = columns.BaseTableName();
    setWindowTitle(GetResourceText(9340, {table}));
    ui->lblDBName->setText(columns.Handler() ? columns.Handler()->database().databaseName() : QString());
    ui->lblTableName->setText(table);
    ui->lblKeyName->setText(columns.KeyColumnName());
    ui->lblSearchFields->setText(GetResourceText(7106, {table}));
    SetupFields();
    const UiServices& services = UiServices::current();
    move(columns.FormPosition(size(), services.UsableScreenSize(), services.DialogOffset()).toPoint());
}

void frmConfigure::setIsDirty(bool dirty)
{
    m_isDirty = dirty;
    ControlsUpdate();
}

void frmConfigure::SetupFields()
{
    if (!m_columns)
        return;
    m_columns->ColumnsFetch();
    m_deletePending = false;
    RefreshList();
    setIsDirty(false);
}

void frmConfigure::RefreshList(const ColumnPtr& selection)
{
    ui->lvwSearch->clear();
    resetColumnWidths();
    if (m_columns)
        for (const ColumnPtr& column : *m_columns) // the collection keeps the order of Index
            UpdateSearchCriteriaProperties(*column);
    QTreeWidgetItem* selected = ui->lvwSearch->topLevelItem(0);
    for (int row = 0; selection && row < ui->lvwSearch->topLevelItemCount(); ++row)
        if (ui->lvwSearch->topLevelItem(row)->data(posName, Qt::UserRole).toString() == selection->Name())
            selected = ui->lvwSearch->topLevelItem(row);
    if (selected)
        ui->lvwSearch->setCurrentItem(selected);
    ControlsUpdate();
}

void frmConfigure::resetColumnWidths()
{
    const QFontMetrics metrics = ui->lvwSearch->header()->fontMetrics();
    for (int position = 0; position < posCount; ++position)
        ui->lvwSearch->setColumnWidth(position,
                                      metrics.horizontalAdvance(ui->lvwSearch->headerItem()->text(position)) + kColumnPadding);
}

void frmConfigure::UpdateSearchCriteriaProperties(const CFilterColumn& column)
{
    auto* row = new QTreeWidgetItem(ui->lvwSearch);
    row->setData(posName, Qt::UserRole, column.Name());
    for (int position = 0; position < posCount; ++position)
        UpdateSearchCriteriaProperty(position, column, *row);
}

void frmConfigure::UpdateSearchCriteriaProperty(int position, const CFilterColumn& column, QTreeWidgetItem& row)
{
    const FilterColumnTypeConstants type = column.ColumnType();
    const bool hasSettings = type != fcKeyword && type != fcBoolean;
    QString text;
    switch (position) {
    case posName:
        text = column.Name();
        break;
    case posType:
        text = column.ColumnTypeName();
        break;
    case posLength:
        if (type == fcKeyword || type == fcText)
            text = QString::number(column.TextLengthInUI());
        break;
    case posPicklist:
        if (hasSettings)
            text = GetResourceText(column.IsPicklist() ? 7124 : 7125);
        break;
    case posBlanks:
        if (hasSettings)
            text = GetResourceText(column.PicklistAllowBlanks() ? 7126 : 7127);
        break;
    case posDefault:
        text = defaultText(column);
        break;
    default:
        return;
    }
    row.setText(position, text);
    row.setTextAlignment(position, alignmentOf(position));
    // A column grows to its widest text and never shrinks while the list fills.
    const int wanted = ui->lvwSearch->fontMetrics().horizontalAdvance(text) + kColumnPadding;
    if (wanted > ui->lvwSearch->columnWidth(position))
        ui->lvwSearch->setColumnWidth(position, wanted);
}

frmConfigure::ColumnPtr frmConfigure::selectedColumn() const
{
    const QTreeWidgetItem* row = ui->lvwSearch->currentItem();
    if (!row || !row->isSelected() || !m_columns)
        return nullptr;
    return m_columns->Item(row->data(posName, Qt::UserRole).toString());
}

void frmConfigure::ControlsUpdate()
{
    const ColumnPtr column = selectedColumn();
    const int position = column ? ui->lvwSearch->indexOfTopLevelItem(ui->lvwSearch->currentItem()) + 1 : 0;
    ui->cmdDelete->setEnabled(column != nullptr);
    ui->cmdEdit->setEnabled(column != nullptr);
    ui->cmdApply->setEnabled(m_isDirty);
    ui->cmdUp->setEnabled(column && position >= 2);
    ui->cmdDown->setEnabled(column && position < ui->lvwSearch->topLevelItemCount());
    ui->cmdPicklist->setEnabled(column && column->IsPicklist() && !column->IsPicklistTableMissing());
    ui->cmdCancel->setText(GetResourceText(m_isDirty ? 8073 : 8065));
}

void frmConfigure::cmdNew_Click()
{
    if (m_columns)
        runColumnEdit(nullptr);
}

void frmConfigure::cmdEdit_Click()
{
    if (const ColumnPtr column = selectedColumn())
        runColumnEdit(column);
}

void frmConfigure::runColumnEdit(ColumnPtr column)
{
    // The clean-up of the library's windows may destroy either dialog while the edit runs.
    const QPointer<frmConfigure> alive(this);
    const QPointer<frmColumnEdit> edit = new frmColumnEdit(this);
    const bool changed = column ? edit->Edit(column, *m_columns, pos()) : (column = edit->MakeNew(*m_columns, pos())) != nullptr;
    delete edit.data();
    if (alive && changed) {
        RefreshList(column);
        setIsDirty(true);
    }
}

void frmConfigure::cmdDelete_Click()
{
    const ColumnPtr column = selectedColumn();
    if (!column)
        return;
    if (!column->IsNew()) {
        if (UiServices::current().AskOkCancel(GetResourceText(7118), GetResourceText(7117, {column->Name()}), Answer::Cancel) != Answer::Ok)
            return;
        m_deletePending = true;
    }
    ColumnPtr next = m_columns->Item(column->Index() + 1);
    if (!next)
        next = m_columns->Item(column->Index() - 1);
    // Removing renumbers the columns that follow.
    m_columns->RemoveColumn(column->Name());
    RefreshList(next);
    setIsDirty(true);
}

void frmConfigure::cmdMove_Click(bool up)
{
    const ColumnPtr column = selectedColumn();
    if (!column)
        return;
    if (up ? m_columns->MoveColumnUp(column) : m_columns->MoveColumnDown(column)) {
        RefreshList(column);
        setIsDirty(true);
    }
}

void frmConfigure::cmdPicklist_Click()
{
    const ColumnPtr column = selectedColumn();
    if (!column)
        return;
    if (const std::shared_ptr<CScPicklist> picklist = m_columns->PicklistOf(*column))
        picklist->Edit(MakeFormInfo(this).get());
}

void frmConfigure::cmdApply_Click()
{
    if (!m_columns)
        return;
    if (m_deletePending) {
        const QString question = GetResourceText(7115, {m_columns->BaseTableName()});
        if (UiServices::current().AskOkCancel(GetResourceText(7116), question, Answer::Cancel) != Answer::Ok) {
            // Everything pending goes, not only the deletions.
            SetupFields();
            return;
        }
        m_deletePending = false;
    }
    saveWithProgress();
}

void frmConfigure::saveWithProgress()
{
    UiServices::current().RunProgress(*this, 1, {}, nullptr);
}

std::any frmConfigure::IProgressHandler_ProcessRequest(int, IProgress& progress, const std::any&)
{
    progress.SetStatus(Diagnostics::instance().caption());
    progress.SetProgress(GetResourceText(9343, {m_columns ? m_columns->BaseTableName() : QString()}));
    SaveChanges(progress);
    return {};
}

void frmConfigure::SaveChanges(IProgress& progress)
{
    if (!m_columns)
        return;
    // A failed save reports itself and changes nothing; the list then shows what is stored.
    m_columns->ColumnsSave(&progress);
    SetupFields();
}

void frmConfigure::cmdCancel_Click()
{
    if (m_isDirty)
        SetupFields();
    else
        hide();
}

void frmConfigure::reject()
{
    cmdCancel_Click();
}

void frmConfigure::closeEvent(QCloseEvent* event)
{
    event->ignore();
    if (!m_isDirty) {
        hide();
        return;
    }
    UiServices::current().Beep();
    switch (UiServices::current().AskYesNoCancel(windowTitle(), GetResourceText(7119), Answer::Cancel)) {
    case Answer::Yes:
        saveWithProgress();
        hide();
        break;
    case Answer::No:
        hide();
        break;
    default:
        break;
    }
}

QString frmConfigure::FieldTypeName(int adoType)
{
    static constexpr std::pair<int, int> names[] = {{2, 7211},   {3, 7212},   {4, 7216},   {5, 7208},   {6, 7205},
                                                    {7, 7206},   {11, 7202},  {14, 7207},  {16, 7203},  {17, 7203},
                                                    {20, 7200},  {72, 7210},  {128, 7201}, {129, 7204}, {131, 7215},
                                                    {134, 7218}, {135, 7219}, {202, 7217}, {203, 7214}, {204, 7220},
                                                    {205, 7213}};
    for (const auto& [type, text] : names)
        if (type == adoType)
            return GetResourceText(text);
    return GetResourceText(7221, {QString::number(adoType)});
}

} // namespace searchdata
