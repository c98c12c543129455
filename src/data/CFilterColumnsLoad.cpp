// Loading one entry's search values into the columns, and giving a new record its row.

#include "searchdata/CFilterColumns.h"

#include "data/CopyValues_p.h"
#include "data/RecordStatements_p.h"
#include "platform/Guard_p.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/PicklistEntries.h"
#include "searchdata/Resources.h"

#include <algorithm>
#include <optional>
#include <vector>

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
    return detail::entryKey(*this, entry);
}

std::unique_ptr<Recordset> CFilterColumns::readSearchRow(const ISearchBaseEntry& entry, const QList<ColumnPtr>& columns)
{
    // The fields are named, never "*": a statement kept prepared must not meet a table whose fields
    // another user changed meanwhile and hand back a row of another shape.
    QStringList fields;
    const QString& sql = detail::RecordStatements::of(*this).searchRow(columns, fields);
    std::unique_ptr<Recordset> row = m_handler->OpenSqlRecordset(sql, QVariantList{keyValue(entry)});
    if (!row)
        detail::failOnGoneFields(*this, SearchKeyword(nullptr), fields);
    return row;
}

std::optional<QList<QStringList>> CFilterColumns::readKeywordLists(const ISearchBaseEntry& entry, const QList<ColumnPtr>& keywords)
{
    const QString& sql = detail::RecordStatements::of(*this).keywordLists(keywords);
    if (sql.isEmpty())
        return std::nullopt;
    // A failure here is said again, in its own words, by the list read on its own.
    const qsizetype held = Diagnostics::instance().holdReports();
    std::unique_ptr<Recordset> rs = m_handler->OpenSqlRecordset(sql, QVariantList(keywords.size(), keyValue(entry)));
    Diagnostics::instance().releaseHeld(held, rs != nullptr);
    if (!rs)
        return std::nullopt;
    // Put in order here: a handful of rows, where the database would set up a sort.
    struct Row {
        qint64 list, place;
        QString keyword;
    };
    std::vector<Row> rows;
    rows.reserve(rs->RecordCount());
    for (; !rs->EndOfFile(); rs->MoveNext())
        if (const QVariant keyword = rs->rawFieldAt(2); !keyword.isNull())
            rows.push_back({rs->rawFieldAt(0).toLongLong(), rs->rawFieldAt(1).toLongLong(), Value::fromVariant(keyword).text()});
    std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.list != b.list ? a.list < b.list : a.place < b.place; });
    QList<QStringList> lists(keywords.size());
    for (Row& row : rows)
        if (row.list >= 0 && row.list < lists.size())
            lists[row.list] << std::move(row.keyword);
    return lists;
}

void CFilterColumns::GetData(const ISearchBaseEntry* roSource)
{
    SD_PROC("GetData");
    SD_GUARDED([&] {
        const QString seek = SearchTableSeekCriteria(roSource);
        if (seek.isEmpty())
            return;
        const QVariant key = keyValue(*roSource);
        // What was loaded for an earlier read stands no longer, whatever becomes of this one.
        QList<ColumnPtr> standard, keywords;
        for (const ColumnPtr& column : m_columns) {
            if (column->HasSavedValue())
                continue;
            column->forgetLoaded();
            (column->ColumnType() == fcKeyword ? keywords : standard) << column;
        }
        // Outside a transaction SQLite takes and frees its file lock, and checks its cache, for every
        // statement; one read transaction does that once for the row and all its keyword lists.
        std::optional<TableTransaction> reading;
        if (m_handler->DatabaseKind() == dbkSQLite && m_handler->transactionLevel() == 0)
            reading.emplace(*m_handler);
        // One statement reads every keyword list. Should it fail (a table or a field gone), each list
        // is read on its own, and what fails is said.
        const std::optional<QList<QStringList>> lists = keywords.isEmpty() ? std::nullopt : readKeywordLists(*roSource, keywords);
        std::unique_ptr<Recordset> row;
        for (const ColumnPtr& column : m_columns) {
            if (column->HasSavedValue())
                continue;
            if (column->ColumnType() == fcKeyword) {
                if (lists) {
                    column->ClearSavedKeys();
                    column->SavedKeys() = lists->at(keywords.indexOf(column));
                    column->setLoaded(key, Value(), column->SavedKeys());
                } else {
                    GetDataKeyword(roSource, *column, seek);
                }
                continue;
            }
            if (!row) {
                row = readSearchRow(*roSource, standard);
                if (!row)
                    return; // this column and the later ones keep what they held
            }
            if (row->EndOfFile()) {
                if (column->IsPicklist())
                    GetDataPicklist(*column, Value::null());
                column->setSavedValue(emptyValueOf(column->ColumnType()));
                column->setLoaded(key, column->StoredForm(Value::null()), {});
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
            column->setLoaded(key, column->StoredForm(stored), {});
        }
        if (reading)
            reading->commit();
    });
}

void CFilterColumns::GetDataKeyword(const ISearchBaseEntry* roEntry, CFilterColumn& rfc, const QString& strSeek)
{
    SD_PROC("GetDataKeyword");
    SD_GUARDED([&] {
        rfc.ClearSavedKeys();
        rfc.forgetLoaded();
        if (!roEntry || !m_handler)
            return;
        // The entry's own criteria go as a prepared statement with the key bound.
        if (strSeek == SearchTableSeekCriteria(roEntry)) {
            const QVariant key = keyValue(*roEntry);
            rfc.SavedKeys() = detail::storedKeys(*this, rfc, key);
            rfc.setLoaded(key, Value(), rfc.SavedKeys());
        } else {
            rfc.SavedKeys() = detail::storedKeys(*this, rfc, strSeek, {});
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
