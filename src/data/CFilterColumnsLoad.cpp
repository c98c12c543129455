// Loading one entry's search values into the columns, and giving a new record its row.

#include "searchdata/CFilterColumns.h"

#include "platform/Guard_p.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/PicklistEntries.h"
#include "searchdata/Resources.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

/// What a field holds when it holds nothing.
Value emptyValueOf(FilterColumnTypeConstants type)
{
    switch (type) {
    case fcText:
    case fcNote:
        return Value(QString());
    case fcBoolean:
        return Value(false);
    default:
        return Value(qint16(0));
    }
}

/// A stored value in the column's own type: drivers give dates as text and booleans as numbers.
Value typedValueOf(const CFilterColumn& column, const Value& stored)
{
    return column.InColumnType(stored).valueOr(stored);
}

} // namespace

QString CFilterColumns::SearchTableSeekCriteria(const ISearchBaseEntry* entry) const
{
    if (!entry || !m_baseKeyColumn || !m_handler)
        return {};
    const QString id = QString::number(entry->Id());
    return BracketedKeyColumnName() + QStringLiteral(" = ")
         + (m_baseKeyColumn->type == adVarWChar ? m_handler->SqlQuote(id) : id);
}

QVariant CFilterColumns::keyValue(const ISearchBaseEntry& entry) const
{
    if (m_baseKeyColumn && m_baseKeyColumn->type == adVarWChar)
        return QString::number(entry.Id());
    return entry.Id();
}

void CFilterColumns::GetData(const ISearchBaseEntry* roSource)
{
    SD_PROC("GetData");
    SD_GUARDED([&] {
        const QString seek = SearchTableSeekCriteria(roSource);
        if (seek.isEmpty())
            return;
        std::unique_ptr<Recordset> row;
        for (const ColumnPtr& column : m_columns) {
            if (column->HasSavedValue())
                continue;
            if (column->ColumnType() == fcKeyword) {
                GetDataKeyword(roSource, *column, seek);
                continue;
            }
            if (!row) {
                row = m_handler->OpenSqlRecordset(QStringLiteral("SELECT * FROM %1 WHERE %2 = ?")
                                                      .arg(m_handler->BracketName(SearchKeyword(nullptr)), BracketedKeyColumnName()),
                                                  QVariantList{keyValue(*roSource)});
                if (!row)
                    return; // this column and the later ones keep what they held
            }
            if (row->EndOfFile()) {
                if (column->IsPicklist())
                    GetDataPicklist(*column, Value::null());
                column->setSavedValue(emptyValueOf(column->ColumnType()));
                continue;
            }
            // A picklist column's choices are refreshed even where its field cannot be taken.
            const bool taken = row->hasField(column->Name());
            const Value stored = taken ? row->field(column->Name()) : Value::null();
            if (column->IsPicklist())
                GetDataPicklist(*column, stored);
            if (!taken)
                continue;
            column->setSavedValue(stored.isNull() ? emptyValueOf(column->ColumnType()) : typedValueOf(*column, stored));
        }
    });
}

void CFilterColumns::GetDataKeyword(const ISearchBaseEntry* roEntry, CFilterColumn& rfc, const QString& strSeek)
{
    SD_PROC("GetDataKeyword");
    SD_GUARDED([&] {
        rfc.ClearSavedKeys();
        if (!roEntry || !m_handler)
            return;
        // In the order they were stored: the list is the user's, not sorted.
        const QString select = QStringLiteral("SELECT ") + m_handler->BracketName(rfc.Name()) + QStringLiteral(" FROM ")
                             + m_handler->BracketName(SearchKeyword(&rfc)) + QStringLiteral(" WHERE ");
        const QString order = QStringLiteral(" ORDER BY ") + KeywordStorageOrder(rfc);
        // The entry's own criteria go as a prepared statement with the key bound.
        std::unique_ptr<Recordset> rs =
            strSeek == SearchTableSeekCriteria(roEntry)
                ? m_handler->OpenSqlRecordset(select + BracketedKeyColumnName() + QStringLiteral(" = ?") + order, QVariantList{keyValue(*roEntry)})
                : m_handler->OpenSqlRecordset(select + strSeek + order);
        if (!rs)
            return;
        for (; !rs->EndOfFile(); rs->MoveNext()) {
            const Value v = rs->field(rfc.Name());
            if (!v.isNull())
                rfc.SavedKeys().append(v.text());
        }
    });
}

void CFilterColumns::GetDataPicklist(CFilterColumn& column, const Value& entryValue)
{
    SD_PROC("GetDataPicklist");
    SD_GUARDED([&] {
        column.ClearSavedKeys();
        if (!m_handler)
            return;
        const bool entryHasValue = !entryValue.isBlank();
        const QString held = typedValueOf(column, entryValue).text();
        for (const PicklistEntry& entry : ReadPicklistEntries(*m_handler, column).valueOr({})) {
            // A hidden entry stays in the list of a record that already holds it.
            if (!entry.hidden || (entryHasValue && TextEquals(entry.text, held, 1)))
                column.SavedKeys().append(entry.text);
        }
    });
}

bool CFilterColumns::InitializeSearchData(const ISearchBaseEntry* roEntry)
{
    if (!roEntry)
        return false;
    SD_PROC("InitializeSearchData");
    bool done = false;
    SD_GUARDED([&] {
        const QDateTime now = QDateTime::currentDateTime();
        for (const ColumnPtr& column : m_columns) {
            switch (column->ColumnType()) {
            case fcKeyword:
            case fcUndefined:
                break;
            case fcNote:
                column->setUpdatedValue(Value(column->PicklistDefault()));
                break;
            default:
                column->setUpdatedValue(column->DefaultValue(now));
                break;
            }
        }
        done = SaveDataFromClientUpdates(roEntry);
    });
    return done;
}

void CFilterColumns::InitializeFieldValues(const CFilterColumn& column, const QString& table, const QString& field, const QDateTime& now)
{
    if (!m_handler || table.isEmpty() || field.isEmpty())
        return;
    SD_PROC("InitializeFieldValues");
    SD_GUARDED([&] {
        const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8468, {column.Name()}), GetResourceText(8467));
        m_handler->ExecuteSql(QStringLiteral("UPDATE %1 SET %2 = %3")
                                  .arg(m_handler->BracketName(table), m_handler->BracketName(field), column.SQLDefaultValue(now)),
                              &locked);
    });
}

} // namespace searchdata
