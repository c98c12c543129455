#include "picklist/frmPicklistEdit.h"

#include "host/FormPlacement.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "picklist/frmPicklistKept.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/PicklistEntries.h"
#include "searchdata/Resources.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace searchdata {

namespace {

enum Role { KeyRole = Qt::UserRole, SortRole, StoredRole };

bool isNumericType(FilterColumnTypeConstants type)
{
    return type == fcInteger16 || type == fcInteger32 || type == fcSingle || type == fcDouble;
}

/// A node that sorts by the value of its entry: numbers by size, dates by time, texts ignoring case.
class EntryNode : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    bool operator<(const QTreeWidgetItem& other) const override
    {
        const QVariant mine = data(0, SortRole);
        const QVariant theirs = other.data(0, SortRole);
        if (mine.typeId() == theirs.typeId() && mine.typeId() == QMetaType::Double)
            return mine.toDouble() < theirs.toDouble();
        if (mine.typeId() == theirs.typeId() && mine.typeId() == QMetaType::QDateTime)
            return mine.toDateTime() < theirs.toDateTime();
        return text(0).compare(other.text(0), Qt::CaseInsensitive) < 0;
    }
};

} // namespace

frmPicklistEdit::frmPicklistEdit(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmPicklistEdit"));
    lblPrompt = new QLabel(this);
    lblPrompt->setObjectName(QStringLiteral("lblPrompt"));
    lblPrompt->setWordWrap(true);

    fraOld = new QFrame(this);
    fraOld->setObjectName(QStringLiteral("fraOld"));
    tabEdit = new QTabWidget(fraOld);
    tabEdit->setObjectName(QStringLiteral("tabEdit"));
    tabEdit->addTab(makeTab(tvwNew, txtNew, {&cmdAdd, &cmdRemove, &cmdSave}, "tvwNew", "txtNew", {"cmdAdd", "cmdRemove", "cmdSave"}),
                    GetResourceText(8353));
    tabEdit->addTab(makeTab(tvwOld, txtOld, {&cmdHide, &cmdRemoveOld}, "tvwOld", "txtOld", {"cmdHide", "cmdRemoveOld"}),
                    GetResourceText(8354));
    tabEdit->addTab(makeTab(tvwHidden, txtHidden, {&cmdShow, &cmdRemoveHidden}, "tvwHidden", "txtHidden", {"cmdShow", "cmdRemoveHidden"}),
                    GetResourceText(8356));
    auto* frame = new QVBoxLayout(fraOld);
    frame->setContentsMargins(0, 0, 0, 0);
    frame->addWidget(tabEdit);

    cmdCancel = new QPushButton(this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    tmrFixDefault = new QTimer(this);
    tmrFixDefault->setObjectName(QStringLiteral("tmrFixDefault"));
    tmrFixDefault->setInterval(10);
    tmrFixDefault->setSingleShot(true);

    cmdAdd->setText(GetResourceText(9370));
    cmdRemove->setText(GetResourceText(9371));
    cmdSave->setText(GetResourceText(9372));
    cmdHide->setText(GetResourceText(9373));
    cmdRemoveOld->setText(GetResourceText(9371));
    cmdShow->setText(GetResourceText(9374));
    cmdRemoveHidden->setText(GetResourceText(9371));

    connect(cmdAdd, &QPushButton::clicked, this, [this] {
        AddNewEntry();
        UpdateNewListButtons();
    });
    connect(cmdRemove, &QPushButton::clicked, this, [this] {
        RemoveNewItems();
        UpdateNewListButtons();
    });
    connect(cmdSave, &QPushButton::clicked, this, &frmPicklistEdit::SaveAdditions);
    connect(cmdHide, &QPushButton::clicked, this, [this] { HideShowChecked(tvwOld, 1); });
    connect(cmdShow, &QPushButton::clicked, this, [this] { HideShowChecked(tvwHidden, 2); });
    connect(cmdRemoveOld, &QPushButton::clicked, this, [this] { RemoveChecked(tvwOld); });
    connect(cmdRemoveHidden, &QPushButton::clicked, this, [this] { RemoveChecked(tvwHidden); });
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(txtNew, &QLineEdit::textChanged, this, &frmPicklistEdit::UpdateNewListButtons);
    connect(txtOld, &QLineEdit::textChanged, this, [this](const QString& text) { LocateEntry(tvwOld, text); });
    connect(txtHidden, &QLineEdit::textChanged, this, [this](const QString& text) { LocateEntry(tvwHidden, text); });
    for (QTreeWidget* tree : {tvwNew, tvwOld, tvwHidden})
        connect(tree, &QTreeWidget::itemChanged, this, [this, tree](QTreeWidgetItem* item) { itemChanged(tree, item); });
    // A node's check cannot be taken back inside the event that set it.
    connect(tmrFixDefault, &QTimer::timeout, this, &frmPicklistEdit::FixDefault);

    auto* bottom = new QHBoxLayout;
    bottom->addStretch(1);
    bottom->addWidget(cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblPrompt);
    layout->addWidget(fraOld, 1);
    layout->addLayout(bottom);
    FormToJapanese(this);
    lblPrompt->setMinimumWidth(lblPrompt->fontMetrics().averageCharWidth() * 60);

    RegisterLibraryForm(this);
}

QWidget* frmPicklistEdit::makeTab(QTreeWidget*& tree, QLineEdit*& text, std::initializer_list<QPushButton**> buttons,
                                  const char* treeName, const char* textName, std::initializer_list<const char*> buttonNames)
{
    auto* page = new QWidget;
    text = new QLineEdit(page);
    text->setObjectName(QLatin1String(textName));
    tree = new QTreeWidget(page);
    tree->setObjectName(QLatin1String(treeName));
    tree->setHeaderHidden(true);
    tree->setRootIsDecorated(false);
    tree->setColumnCount(1);
    tree->setSortingEnabled(true);
    tree->sortByColumn(0, Qt::AscendingOrder);

    auto* column = new QVBoxLayout;
    const char* const* name = buttonNames.begin();
    for (QPushButton** button : buttons) {
        *button = new QPushButton(page);
        (*button)->setObjectName(QLatin1String(*name++));
        column->addWidget(*button);
    }
    column->addStretch(1);
    auto* entries = new QVBoxLayout;
    entries->addWidget(text);
    entries->addWidget(tree, 1);
    auto* layout = new QHBoxLayout(page);
    layout->addLayout(entries, 1);
    layout->addLayout(column);
    return page;
}

void frmPicklistEdit::Prepare(const IFormInfo* oFI, CScPicklist& picklist)
{
    m_picklist = &picklist;
    m_column = picklist.column();
    if (!m_column)
        return;
    const int length = m_column->TextLengthInUI();
    for (QLineEdit* box : {txtNew, txtOld, txtHidden})
        box->setMaxLength(length > 0 ? length : 32767);

    const QString baseTable = picklist.baseTable() ? picklist.baseTable()->name : m_column->BaseTableName();
    setWindowTitle(GetResourceText(8352, {baseTable, m_column->Name()}));
    const QString defaultEntry = m_column->PicklistDefault().trimmed();
    lblPrompt->setText(defaultEntry.isEmpty() ? GetResourceText(8355, {m_column->Name()})
                                              : GetResourceText(8357, {m_column->Name(), entryText(defaultEntry)}));
    InitializeLists();
    UpdateButtons();
    tabEdit->setCurrentWidget(tvwOld->parentWidget());
    adjustSize();
    CentreForm(*this, oFI);
}

void frmPicklistEdit::Edit(const IFormInfo* oFI, CScPicklist& picklist)
{
    Prepare(oFI, picklist);
    if (m_column)
        exec();
}

Value frmPicklistEdit::EvaluateEntry(const QString& text) const
{
    const QString trimmed = text.trimmed();
    if (!m_column || trimmed.isEmpty())
        return {};
    const FilterColumnTypeConstants type = m_column->ColumnType();
    if (type == fcText)
        return Value(trimmed);
    const Value typed(trimmed);
    if (isNumericType(type)) {
        if (!typed.isNumeric())
            return {};
        // A number too large for the column is no entry of it: it could not be stored.
        const Result<Value> number = typed.convertTo(type == fcInteger16   ? Value::Type::Int16
                                                     : type == fcInteger32 ? Value::Type::Int32
                                                     : type == fcSingle    ? Value::Type::Single
                                                                           : Value::Type::Double);
        return number ? number.value() : Value();
    }
    if (type == fcDateTime) {
        const Result<QDateTime> date = typed.toDateTime();
        return date ? Value(date.value()) : Value();
    }
    return {};
}

QString frmPicklistEdit::entryText(const QString& text) const
{
    const Value value = EvaluateEntry(text);
    return value.isEmpty() ? text.trimmed() : value.text();
}

bool frmPicklistEdit::EntryUsed(const QTreeWidget* tree, const QString& text) const
{
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        if (TextEquals(text, tree->topLevelItem(i)->text(0), 1))
            return true;
    return false;
}

bool frmPicklistEdit::ValidateEntry(const QString& text) const
{
    const Value value = EvaluateEntry(text);
    if (value.isEmpty())
        return false;
    // A new entry may not repeat a hidden one either: showing that one is the way.
    const QString entry = value.text();
    return !EntryUsed(tvwNew, entry) && !EntryUsed(tvwOld, entry) && !EntryUsed(tvwHidden, entry);
}

QTreeWidgetItem* frmPicklistEdit::addNode(QTreeWidget* tree, const QString& text, const QString& stored, bool bold)
{
    const FilterColumnTypeConstants type = m_column->ColumnType();
    const QString prefix = type == fcText ? QStringLiteral("S:") : type == fcDateTime ? QStringLiteral("D:") : QStringLiteral("N:");
    const Value value = EvaluateEntry(text);
    auto* node = new EntryNode;
    node->setText(0, text);
    node->setData(0, KeyRole, prefix + text);
    node->setData(0, StoredRole, stored);
    if (value.type() == Value::Type::DateTime)
        node->setData(0, SortRole, value.toDateTime().valueOr(QDateTime()));
    else if (isNumericType(type) && !value.isEmpty())
        node->setData(0, SortRole, value.toDouble().valueOr(0));
    node->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    node->setCheckState(0, Qt::Unchecked);
    if (bold) {
        QFont font = tree->font();
        font.setBold(true);
        node->setFont(0, font);
    }
    tree->addTopLevelItem(node);
    return node;
}

void frmPicklistEdit::InitializeLists()
{
    tmrFixDefault->stop();
    m_fixNode = nullptr;
    tvwOld->clear();
    tvwHidden->clear();
    if (!m_picklist || !m_column)
        return;
    const QString defaultEntry = entryText(m_column->PicklistDefault());
    for (const PicklistEntry& entry : ReadPicklistEntries(*m_picklist->handler(), *m_column).valueOr({})) {
        // The blank entry follows the column's setting; it is not edited here.
        if (entry.text.isEmpty())
            continue;
        const QString text = entryText(entry.text);
        if (entry.hidden)
            addNode(tvwHidden, text, entry.text, false);
        else
            addNode(tvwOld, text, entry.text, !defaultEntry.isEmpty() && TextEquals(text, defaultEntry, 1));
    }
}

QStringList frmPicklistEdit::checkedEntries(const QTreeWidget* tree)
{
    QStringList entries;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* node = tree->topLevelItem(i);
        if (node->checkState(0) == Qt::Checked && !node->font(0).bold())
            entries << node->data(0, StoredRole).toString();
    }
    return entries;
}

QStringList frmPicklistEdit::shownTexts(const QTreeWidget* tree, const QStringList& stored)
{
    QStringList shown;
    for (const QString& entry : stored) {
        QString text = entry;
        for (int i = 0; i < tree->topLevelItemCount(); ++i)
            if (tree->topLevelItem(i)->data(0, StoredRole).toString() == entry)
                text = tree->topLevelItem(i)->text(0);
        shown << text;
    }
    return shown;
}

bool frmPicklistEdit::LocateEntry(QTreeWidget* tree, const QString& text)
{
    const QString wanted = text.trimmed();
    if (wanted.isEmpty())
        return false;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        QTreeWidgetItem* node = tree->topLevelItem(i);
        if (node->text(0).startsWith(wanted, Qt::CaseInsensitive)) {
            tree->clearSelection();
            tree->setCurrentItem(node);
            tree->scrollToItem(node);
            return true;
        }
    }
    return false;
}

void frmPicklistEdit::UpdateNewListButtons()
{
    const QString text = txtNew->text();
    if (!LocateEntry(tvwNew, text))
        LocateEntry(tvwOld, text);
    UpdateButtons();
}

void frmPicklistEdit::UpdateButtons()
{
    const bool oldChecked = !checkedEntries(tvwOld).isEmpty();
    const bool hiddenChecked = !checkedEntries(tvwHidden).isEmpty();
    const bool addable = ValidateEntry(txtNew->text());
    const bool hasNew = tvwNew->topLevelItemCount() > 0;
    cmdAdd->setEnabled(addable);
    cmdRemove->setEnabled(!checkedEntries(tvwNew).isEmpty());
    cmdSave->setEnabled(hasNew);
    cmdRemoveOld->setEnabled(oldChecked);
    cmdHide->setEnabled(oldChecked);
    cmdRemoveHidden->setEnabled(hiddenChecked);
    cmdShow->setEnabled(hiddenChecked);
    // With work pending, Enter adds and the button offers to give it up; without, it just closes.
    const bool pending = oldChecked || hiddenChecked || hasNew || addable;
    cmdCancel->setText(GetResourceText(pending ? 8073 : 8065));
    cmdCancel->setDefault(!pending);
    cmdAdd->setDefault(pending);
}

void frmPicklistEdit::AddNewEntry()
{
    const Value value = EvaluateEntry(txtNew->text());
    if (value.isEmpty())
        return;
    QTreeWidgetItem* node = addNode(tvwNew, value.text(), value.text(), false);
    txtNew->clear();
    tvwNew->clearSelection();
    tvwNew->setCurrentItem(node);
    node->setSelected(true);
}

void frmPicklistEdit::RemoveNewItems()
{
    for (int i = tvwNew->topLevelItemCount() - 1; i >= 0; --i)
        if (tvwNew->topLevelItem(i)->checkState(0) == Qt::Checked)
            delete tvwNew->takeTopLevelItem(i);
}

void frmPicklistEdit::SaveAdditions()
{
    QStringList entries;
    for (int i = 0; i < tvwNew->topLevelItemCount(); ++i)
        entries << tvwNew->topLevelItem(i)->text(0);
    // Entries that could not be saved stay on their tab, to be tried again or given up.
    if (!entries.isEmpty() && m_picklist->SaveAdditions(entries))
        tvwNew->clear();
    InitializeLists();
    UpdateButtons();
}

void frmPicklistEdit::HideShowChecked(QTreeWidget* tree, int mode)
{
    HideShowCollection(*m_picklist, checkedEntries(tree), mode);
    InitializeLists();
    UpdateButtons();
}

void frmPicklistEdit::RemoveChecked(QTreeWidget* tree)
{
    const bool hiddenEntries = tree == tvwHidden;
    const QStringList marked = checkedEntries(tree);
    const QStringList kept = marked.isEmpty() ? QStringList() : RemovePicklistEntries(*m_picklist, marked, hiddenEntries);
    if (!kept.isEmpty()) {
        const QPointer<frmPicklistEdit> self(this);
        const QStringList shown = shownTexts(tree, kept);
        if (hiddenEntries) {
            frmPicklistKept::Display(this, shown);
        } else if (frmPicklistKept::QueryHide(this, shown)) {
            // What records use can still leave the choice.
            if (self)
                HideShowCollection(*m_picklist, kept, 1);
        }
        if (!self)
            return; // gone with the library's other windows meanwhile
    }
    InitializeLists();
    UpdateButtons();
}

void frmPicklistEdit::itemChanged(QTreeWidget* tree, QTreeWidgetItem* item)
{
    if (tree == tvwOld && item->font(0).bold() && item->checkState(0) == Qt::Checked) {
        m_fixNode = item;
        tmrFixDefault->start();
    }
    UpdateButtons();
}

void frmPicklistEdit::FixDefault()
{
    if (m_fixNode)
        m_fixNode->setCheckState(0, Qt::Unchecked);
    m_fixNode = nullptr;
}

} // namespace searchdata
