// Writing one entry's search values: its row of the search table and its keyword rows.

#include "searchdata/CFilterColumns.h"

#include "data/CopyValues_p.h"
#include "platform/Guard_p.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/Resources.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

} // namespace

bool CFilterColumns::saveEntry(const ISearchBaseEntry* entry, const std::function<bool(const CFilterColumn&, Value&)>& valueOf,
                               int titleText, int insertText, int updateText)
{
    if (!entry || !m_handler)
        return false;
    SD_PROC("saveEntry");
    bool saved = false;
    SD_GUARDED([&] {
        DatabaseHandler& db = *m_handler;
        const QString seek = SearchTableSeekCriteria(entry);
        const QString table = db.BracketName(SearchKeyword(nullptr));
        const QString keyTest = BracketedKeyColumnName() + QStringLiteral(" = ?");
        // One entry is saved whole or not at all.
        TableTransaction tx(db);
        if (!tx.begun())
            return;
        bool checked = false;
        bool missing = false;
        QStringList fields, assignments;
        QVariantList values;
        bool ok = true;
        for (const ColumnPtr& column : m_columns) {
            if (column->ColumnType() == fcKeyword) {
                ok = SaveDataKeyword(entry, *column, seek);
                if (!ok)
                    break;
                continue;
            }
            if (!checked) {
                checked = true;
                std::unique_ptr<Recordset> row = db.OpenSqlRecordset(QStringLiteral("SELECT 1 FROM %1 WHERE %2").arg(table, keyTest),
                                                                     QVariantList{keyValue(*entry)});
                if (!row) {
                    ok = false;
                    break;
                }
                missing = row->EndOfFile();
                if (missing) {
                    fields << BracketedKeyColumnName();
                    values << keyValue(*entry);
                }
            }
            Value v;
            if (!valueOf(*column, v))
                continue;
            values << detail::boundColumnValue(*column, v);
            if (missing)
                fields << db.BracketName(column->Name());
            else
                assignments << db.BracketName(column->Name()) + QStringLiteral(" = ?");
        }
        if (ok && checked && (missing || !assignments.isEmpty())) {
            QString sql;
            int operation;
            if (missing) {
                QStringList marks;
                for (qsizetype i = 0; i < fields.size(); ++i)
                    marks << QStringLiteral("?");
                sql = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(table, fields.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
                operation = insertText;
            } else {
                sql = QStringLiteral("UPDATE %1 SET %2 WHERE %3").arg(table, assignments.join(QStringLiteral(", ")), keyTest);
                values << keyValue(*entry);
                operation = updateText;
            }
            const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(operation), GetResourceText(titleText));
            ok = db.ExecuteSql(sql, values, &locked);
        }
        saved = ok && tx.commit();
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
        8474, 8475, 8476);
}

bool CFilterColumns::SaveDataFromClientUpdates(const ISearchBaseEntry* roEntry)
{
    return saveEntry(
        roEntry,
        [](const CFilterColumn& column, Value& v) {
            v = column.UpdatedValue();
            return !v.isEmpty();
        },
        8471, 8472, 8473);
}

bool CFilterColumns::SaveDataKeyword(const ISearchBaseEntry* entry, const CFilterColumn& column, const QString& seek)
{
    // Keywords reach the table only from an entry control's list.
    const IComboBoxControl* combo = column.MyComboBox();
    if (!entry || !combo || !m_handler)
        return true;
    SD_PROC("SaveDataKeyword");
    bool saved = false;
    SD_GUARDED([&] {
        DatabaseHandler& db = *m_handler;
        const QString table = db.BracketName(SearchKeyword(&column));
        const QString title = GetResourceText(8477);
        const CDebugLockedMessage deleting = MakeLockedMessage(GetResourceText(8478), title);
        const bool ownCriteria = seek == SearchTableSeekCriteria(entry);
        const bool deleted = ownCriteria ? db.ExecuteSql(QStringLiteral("DELETE FROM %1 WHERE %2 = ?").arg(table, BracketedKeyColumnName()),
                                                         QVariantList{keyValue(*entry)}, &deleting)
                                         : db.ExecuteSql(QStringLiteral("DELETE FROM %1 WHERE %2").arg(table, seek), &deleting);
        if (!deleted)
            return;
        const CDebugLockedMessage inserting = MakeLockedMessage(GetResourceText(8479), title);
        const QString insert = QStringLiteral("INSERT INTO %1 (%2, %3) VALUES (?, ?)").arg(table, BracketedKeyColumnName(), db.BracketName(column.Name()));
        for (int i = 0; i < combo->ListCount(); ++i)
            if (!db.ExecuteSql(insert, QVariantList{keyValue(*entry), combo->List(i)}, &inserting))
                return;
        saved = true;
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
