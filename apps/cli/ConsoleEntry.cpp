#include "ConsoleEntry.h"

#include "CommandLine.h"
#include "Output.h"
#include "searchdata/Validation.h"
#include "searchdata/Value.h"

namespace searchdata::cli {

void ConsoleComboBox::SetText(const QString& text)
{
    m_text = text;
    m_index = -1;
}

void ConsoleComboBox::SetListIndex(int index)
{
    m_index = index >= 0 && index < m_items.size() ? index : -1;
    if (m_index >= 0)
        m_text = m_items[m_index];
}

void ConsoleComboBox::Clear()
{
    m_items.clear();
    m_text.clear();
    m_index = -1;
    m_newIndex = -1;
}

void ConsoleComboBox::AddItem(const QString& text)
{
    m_items.append(text);
    m_newIndex = static_cast<int>(m_items.size()) - 1;
}

void ConsoleComboBox::RemoveItem(int index)
{
    if (index < 0 || index >= m_items.size())
        return;
    m_items.removeAt(index);
    if (m_index == index)
        m_index = -1;
    else if (m_index > index)
        --m_index;
}

namespace {

QString listText(const QStringList& entries)
{
    QStringList shown;
    for (const QString& e : entries)
        shown << (e.isEmpty() ? QStringLiteral("(blank)") : e);
    return shown.join(QStringLiteral(", "));
}

bool takesSize(const CFilterColumn& column)
{
    return column.ColumnType() == fcKeyword || column.ColumnType() == fcText || column.ColumnType() == fcNote;
}

} // namespace

ConsoleEntry::ConsoleEntry(std::shared_ptr<CFilterColumns> columns) : m_columns(std::move(columns))
{
    for (const auto& column : *m_columns) {
        std::unique_ptr<IControl> control;
        if (column->ColumnType() == fcKeyword || column->IsPicklist()) {
            control = std::make_unique<ConsoleComboBox>();
        } else if (column->ColumnType() == fcBoolean) {
            control = std::make_unique<ConsoleCheckBox>();
        } else {
            auto box = std::make_unique<ConsoleTextBox>();
            box->SetMaxLength(takesSize(*column) ? column->TextLengthInUI() : 0);
            control = std::move(box);
        }
        column->setMyControl(control.get());
        m_controls.push_back(std::move(control));
    }
}

ConsoleEntry::~ConsoleEntry()
{
    for (const auto& column : *m_columns)
        column->unbindControls();
}

void ConsoleEntry::edit(const ISearchBaseEntry& entry)
{
    // Read inside the transaction that writes: the changes are made to the record as it is then.
    clearLibraryReports();
    m_transaction = std::make_unique<TableTransaction>(*m_columns->Handler());
    if (!m_transaction->begun())
        failWithReason(QStringLiteral("cannot save the values of record %1 of %2").arg(entry.Id()).arg(m_columns->BaseTableName()));
    load(entry);
}

void ConsoleEntry::load(const ISearchBaseEntry& entry)
{
    clearLibraryReports();
    m_columns->GetData(&entry);
    for (const auto& column : *m_columns)
        column->ResetData();
}

void typeInto(const CFilterColumn& column, IControl* control, const QString& text, int maxLength)
{
    // Character by character, through the same key test as the entry control's fields.
    const QList<uint> characters = text.toUcs4();
    QString typed;
    if (auto* box = dynamic_cast<ITextBoxControl*>(control))
        box->SetText(typed);
    else if (auto* combo = dynamic_cast<IComboBoxControl*>(control))
        combo->SetText(typed);
    for (const uint c : characters) {
        if (!ValidKeyPress(control, static_cast<int>(c), maxLength)) {
            QString reason;
            if (c == '\'' || c == '"')
                reason = QStringLiteral("quotes cannot be entered");
            else if (maxLength >= 1 && typed.size() >= maxLength)
                reason = QStringLiteral("it takes at most %1 characters").arg(maxLength);
            else
                reason = QStringLiteral("a value cannot hold two blanks in a row");
            fail(QStringLiteral("\"%1\" does not fit the column %2: %3").arg(text, column.Name(), reason));
        }
        const char32_t character = c;
        typed += QString::fromUcs4(&character, 1);
        if (auto* box = dynamic_cast<ITextBoxControl*>(control))
            box->SetText(typed);
        else if (auto* combo = dynamic_cast<IComboBoxControl*>(control))
            combo->SetText(typed);
    }
}

void ConsoleEntry::setValue(CFilterColumn& column, const QString& text)
{
    if (column.ColumnType() == fcKeyword)
        fail(QStringLiteral("%1 is a keyword column: its values are set with \"keywords add\" and \"keywords remove\"").arg(column.Name()));
    if (IComboBoxControl* combo = column.MyComboBox()) {
        const QString wanted = text.trimmed();
        for (int i = 0; i < combo->ListCount(); ++i) {
            if (TextEquals(combo->List(i), wanted, 1)) {
                combo->SetListIndex(i);
                return;
            }
        }
        QStringList offered;
        for (int i = 0; i < combo->ListCount(); ++i)
            offered << combo->List(i);
        fail(QStringLiteral("\"%1\" is not in the picklist of %2, which offers: %3").arg(text, column.Name(), listText(offered)));
    }
    if (ICheckBoxControl* check = column.MyCheckBox()) {
        const Result<bool> b = Value(text.trimmed()).toBoolean();
        if (!b)
            fail(QStringLiteral("\"%1\" does not fit the column %2: %3 (True or False)").arg(text, column.Name(), column.ValidationPrompt()));
        check->SetValue(b.value() ? 1 : 0);
        return;
    }
    ITextBoxControl* box = column.MyTextBox();
    if (!box)
        fail(QStringLiteral("the column %1 cannot take a value").arg(column.Name()));
    typeInto(column, box, text, box->MaxLength());
    column.Validate();
    if (!column.IsValid())
        fail(QStringLiteral("\"%1\" does not fit the column %2 (%3): %4").arg(text, column.Name(), column.ColumnTypeName(), column.ValidationPrompt()));
}

QStringList ConsoleEntry::addKeywords(CFilterColumn& column, const QStringList& words)
{
    IComboBoxControl* combo = column.MyComboBox();
    if (column.ColumnType() != fcKeyword || !combo)
        fail(QStringLiteral("%1 is not a keyword column: its value is set with \"values set\"").arg(column.Name()));
    QStringList present;
    for (const QString& word : words) {
        if (word.trimmed().isEmpty())
            fail(QStringLiteral("a blank keyword cannot be added to %1").arg(column.Name()));
        typeInto(column, combo, word, column.TextLengthInUI());
        if (!column.AddComboText())
            present << word.trimmed();
    }
    return present;
}

void ConsoleEntry::removeKeywords(CFilterColumn& column, const QStringList& words)
{
    IComboBoxControl* combo = column.MyComboBox();
    if (column.ColumnType() != fcKeyword || !combo)
        fail(QStringLiteral("%1 is not a keyword column").arg(column.Name()));
    for (const QString& word : words) {
        // The list keeps keywords as typed; other capitals find one only when no exact one is there.
        int found = -1;
        for (int ignoreCase : {0, 1})
            for (int i = 0; i < combo->ListCount() && found < 0; ++i)
                if (TextEquals(combo->List(i), word.trimmed(), ignoreCase))
                    found = i;
        if (found < 0)
            fail(QStringLiteral("%1 holds no keyword \"%2\" (it holds: %3)")
                     .arg(column.Name(), word, combo->ListCount() ? listText(shownList(column)) : QStringLiteral("none")));
        combo->SetListIndex(found);
        column.RemoveComboEntry();
    }
}

void ConsoleEntry::save(const ISearchBaseEntry& entry)
{
    for (const auto& column : *m_columns) {
        column->Validate();
        if (!column->IsValid())
            fail(QStringLiteral("\"%1\" does not fit the column %2: %3").arg(shownText(*column), column->Name(), column->ValidationPrompt()));
    }
    clearLibraryReports();
    if (!m_columns->SaveDataFromEditControl(&entry) || (m_transaction && !m_transaction->commit()))
        failWithReason(QStringLiteral("cannot save the values of record %1 of %2").arg(entry.Id()).arg(m_columns->BaseTableName()));
    m_transaction.reset();
}

QString ConsoleEntry::shownText(const CFilterColumn& column) const
{
    if (const ITextBoxControl* box = column.MyTextBox())
        return box->Text();
    if (const ICheckBoxControl* check = column.MyCheckBox())
        return Value(check->Value() == 1).text();
    if (const IComboBoxControl* combo = column.MyComboBox())
        return column.ColumnType() == fcKeyword ? shownList(column).join(QStringLiteral(", ")) : combo->Text();
    return {};
}

QStringList ConsoleEntry::shownList(const CFilterColumn& column) const
{
    QStringList entries;
    if (const IComboBoxControl* combo = column.MyComboBox())
        for (int i = 0; i < combo->ListCount(); ++i)
            entries << combo->List(i);
    return entries;
}

} // namespace searchdata::cli
