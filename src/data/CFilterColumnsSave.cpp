// Writing one entry's search values: its row of the search table and its keyword rows.

#include "searchdata/CFilterColumns.h"

#include "data/CopyValues_p.h"
#include "platform/Guard_p.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/Resources.h"

#include <QScopeGuard>

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

QStringList listedKeys(const IComboBoxControl& combo)
{
    QStringList keys;
    for (int i = 0; i < combo.ListCount(); ++i)
        keys << combo.List(i);
    return keys;
}

/// Writes what changed in a keyword column's list: deletes the keywords that left it and inserts
/// those that came, for the rows that `seek` selects (blank: the entry's own). The caller holds the
/// transaction, and forgets what was loaded once it ends; a list without changes writes nothing.
bool writeKeywordChanges(CFilterColumns& columns, const ISearchBaseEntry& entry, const CFilterColumn& column, const QString& seek)
{
    // Keywords reach the table only from an entry control's list.
    const IComboBoxControl* combo = column.MyComboBox();
    if (!combo)
        return true;
    const QVariant key = detail::entryKey(columns, entry);
    // The list is compared with what it held when it was loaded, else with what is stored now.
    const CFilterColumn::Loaded* loaded = seek.isEmpty() ? column.LoadedFor(key) : nullptr;
    const QStringList before = loaded ? loaded->keys : seek.isEmpty() ? detail::storedKeys(columns, column, key)
                                                                      : detail::storedKeys(columns, column, seek, {});
    const detail::KeyChanges changes = detail::keyChanges(before, listedKeys(*combo));
    if (changes.removed.isEmpty() && changes.added.isEmpty())
        return true;
    const QString title = GetResourceText(8477);
    return detail::writeKeyChanges(columns, column, key, seek, changes, MakeLockedMessage(GetResourceText(8478), title),
                                   MakeLockedMessage(GetResourceText(8479), title));
}

} // namespace

bool CFilterColumns::saveEntry(const ISearchBaseEntry* entry, const std::function<bool(const CFilterColumn&, Value&)>& valueOf,
                               bool changesOnly, int titleText, int insertText, int updateText)
{
    if (!entry || !m_handler)
        return false;
    SD_PROC("saveEntry");
    bool saved = false;
    SD_GUARDED([&] {
        DatabaseHandler& db = *m_handler;
        const QString tableName = SearchKeyword(nullptr);
        const QVariant key = keyValue(*entry);
        // What each field is to take, and what it held when it was loaded; a column whose record was
        // not loaded here compares with what the row holds now.
        struct Field {
            ColumnPtr column;
            Value value;
            Value before;
        };
        QList<Field> given;
        QList<ColumnPtr> unknown;
        for (const ColumnPtr& column : m_columns) {
            if (column->ColumnType() == fcKeyword)
                continue;
            Value v;
            if (!valueOf(*column, v))
                continue;
            const CFilterColumn::Loaded* loaded = column->LoadedFor(key);
            given.append({column, v, loaded ? loaded->value : Value()});
            if (changesOnly && !loaded)
                unknown << column;
        }
        QList<const Field*> changed;
        QStringList rowFields;
        bool rowFailed = false;
        // Until the save stands, a keyword list compares with what is stored.
        auto forgetKeywords = qScopeGuard([&] {
            for (const ColumnPtr& column : m_columns)
                if (column->ColumnType() == fcKeyword)
                    column->forgetLoaded();
        });
        // One entry is saved whole or not at all.
        const bool written = db.RunTransaction([&] {
            rowFailed = false;
            if (!unknown.isEmpty()) {
                std::unique_ptr<Recordset> row = readSearchRow(*entry, unknown);
                if (!row)
                    return false;
                for (Field& f : given)
                    if (unknown.contains(f.column))
                        f.before = f.column->StoredForm(row->EndOfFile() ? Value::null() : row->field(f.column->Name()));
            }
            changed.clear();
            for (const Field& f : given)
                if (!changesOnly || f.column->StoredForm(f.value) != f.before)
                    changed << &f;

            for (const ColumnPtr& column : m_columns)
                if (column->ColumnType() == fcKeyword && !writeKeywordChanges(*this, *entry, *column, {}))
                    return false;
            if (changed.isEmpty())
                return true;
            QList<detail::BoundField> all, changedFields;
            rowFields.clear();
            for (const Field& f : given) {
                all.append({f.column->Name(), detail::boundColumnValue(*f.column, f.value)});
                if (changed.contains(&f))
                    changedFields << all.back();
                rowFields << f.column->Name();
            }
            rowFailed = !detail::writeSearchRow(*this, key, changedFields, all,
                                                MakeLockedMessage(GetResourceText(insertText), GetResourceText(titleText)),
                                                MakeLockedMessage(GetResourceText(updateText), GetResourceText(titleText)));
            return !rowFailed;
        });
        if (!written) {
            if (rowFailed)
                detail::failOnGoneFields(*this, tableName, rowFields);
            return;
        }
        forgetKeywords.dismiss();
        saved = true;
        // What the record holds now is what the next save compares with.
        for (const Field& f : given)
            f.column->setLoaded(key, f.column->StoredForm(changed.contains(&f) ? f.value : f.before), {});
        for (const ColumnPtr& column : m_columns)
            if (const IComboBoxControl* combo = column->MyComboBox(); combo && column->ColumnType() == fcKeyword)
                column->setLoaded(key, Value(), detail::distinctKeys(listedKeys(*combo)));
    });
    return saved;
}

bool CFilterColumns::SaveDataFromEditControl(const ISearchBaseEntry* entry)
{
    return saveEntry(
        entry,
        [](const CFilterColumn& column, Value& v) {
            if (!column.IsValid())
                return false;
            v = column.value();
            return true;
        },
        true, 8474, 8475, 8476);
}

bool CFilterColumns::SaveDataFromClientUpdates(const ISearchBaseEntry* roEntry)
{
    return saveEntry(
        roEntry,
        [](const CFilterColumn& column, Value& v) {
            v = column.UpdatedValue();
            return !v.isEmpty();
        },
        false, 8471, 8472, 8473);
}

bool CFilterColumns::SaveDataKeyword(const ISearchBaseEntry* entry, CFilterColumn& column, const QString& seek)
{
    if (!entry || !column.MyComboBox() || !m_handler)
        return true;
    SD_PROC("SaveDataKeyword");
    bool saved = false;
    SD_GUARDED([&] {
        const QString rows = seek == SearchTableSeekCriteria(entry) ? QString() : seek;
        saved = m_handler->RunTransaction([&] { return writeKeywordChanges(*this, *entry, column, rows); });
        column.forgetLoaded();
    });
    return saved;
}

bool CFilterColumns::PicklistChanged(const CFilterColumn* first, const CFilterColumn* second)
{
    if (!first)
        return false;
    if (!second)
        return true;
    if (first->IsPicklist() != second->IsPicklist())
        return true;
    if (!first->IsPicklist())
        return false;
    if (first->PicklistAllowBlanks() != second->PicklistAllowBlanks() || first->ColumnType() != second->ColumnType())
        return true;
    const Value a(first->PicklistDefault());
    const Value b(second->PicklistDefault());
    switch (first->ColumnType()) {
    case fcKeyword:
    case fcText:
    case fcNote:
        return !TextEquals(a.text(), b.text(), 1);
    case fcDateTime:
        return a.toDateTime().ok() != b.toDateTime().ok() || (a.toDateTime().ok() && a.toDateTime().value() != b.toDateTime().value());
    case fcBoolean:
        return a.toBoolean().valueOr(false) != b.toBoolean().valueOr(false);
    default:
        return NumericPrefix(a.text()) != NumericPrefix(b.text());
    }
}

} // namespace searchdata
