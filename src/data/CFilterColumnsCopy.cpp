// Copying one entry's search data to another entry, and merging the search data of another
// database's record into a record here.

#include "searchdata/CFilterColumns.h"

#include "data/CopyValues_p.h"
#include "data/RecordStatements_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/Resources.h"
#include "searchdata/SchemaTool.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

const QString kMergeName = QStringLiteral("MergeName");

/// Whether a copy leaves the target's field alone: a False boolean, a blank text, a date that holds
/// none.
bool nothingToCopy(const CFilterColumn& column, const Value& v)
{
    switch (column.ColumnType()) {
    case fcBoolean:
        return !v.toBoolean().valueOr(false);
    case fcDateTime:
        return CFilterColumn::HoldsNoDate(v);
    default:
        return v.text().trimmed().isEmpty();
    }
}

/// Makes sure that a picklist column's list holds `entries`, so that its key accepts them.
void admitToPicklist(const CFilterColumns& columns, const CFilterColumn& column, const QStringList& entries)
{
    if (!column.IsPicklist() || entries.isEmpty())
        return;
    const std::shared_ptr<CScPicklist> picklist = columns.PicklistOf(column);
    if (!picklist || !picklist->SaveAdditions(entries))
        detail::fail(QStringLiteral("the picklist of %1 could not take the copied values").arg(column.Name()));
}

/// The column of `columns` named `name`; captions don't count here.
CFilterColumns::ColumnPtr columnNamed(const CFilterColumns& columns, const QString& name)
{
    for (const CFilterColumns::ColumnPtr& c : columns)
        if (TextEquals(c->Name(), name, 1))
            return c;
    return nullptr;
}

} // namespace

// ---- shared helpers --------------------------------------------------------------------------------

QVariant detail::boundColumnValue(const CFilterColumn& column, const Value& v)
{
    // A date that holds none is no date at all, never day zero.
    if (v.isNull() || (column.ColumnType() == fcDateTime && CFilterColumn::HoldsNoDate(v)))
        return QVariant();
    // Keyword, text and note columns, and types not known here, bind a text.
    if (column.ColumnType() < fcInteger16 || column.ColumnType() > fcBoolean)
        return boundText(v.text());
    const Result<Value> typed = column.InColumnType(v);
    if (!typed)
        fail(QStringLiteral("the value \"%1\" does not fit the column %2: %3").arg(v.text(), column.Name(), typed.error()));
    return typed.value().toVariant();
}

QVariant detail::entryKey(const CFilterColumns& columns, const ISearchBaseEntry& entry)
{
    const std::optional<CatalogColumn>& key = columns.BaseKeyColumn();
    if (key && key->type == adVarWChar)
        return QString::number(entry.Id());
    return entry.Id();
}

QStringList detail::distinctKeys(const QStringList& keys)
{
    // A record holds a handful of keywords: looking through them beats hashing.
    constexpr qsizetype kFew = 32;
    QStringList result;
    result.reserve(keys.size());
    QSet<QString> seen;
    for (const QString& k : keys) {
        const bool repeated = keys.size() <= kFew ? result.contains(k) : seen.contains(k);
        if (repeated)
            continue;
        if (keys.size() > kFew)
            seen.insert(k);
        result.append(k);
    }
    return result;
}

namespace {

QStringList keysOf(const CFilterColumns& columns, const CFilterColumn& column, const QString& sql, const QVariantList& values)
{
    DatabaseHandler& db = *columns.Handler();
    std::unique_ptr<Recordset> rs = values.isEmpty() ? db.OpenSqlRecordset(sql) : db.OpenSqlRecordset(sql, values);
    const QString table = columns.SearchKeyword(&column);
    if (!rs) {
        detail::failOnGoneFields(columns, table, {column.Name()});
        detail::fail(QStringLiteral("the keywords of %1 could not be read").arg(table));
    }
    QStringList keys;
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        const QVariant v = rs->rawFieldAt(0);
        if (!v.isNull())
            keys.append(Value::fromVariant(v).text());
    }
    return keys;
}

} // namespace

QStringList detail::storedKeys(const CFilterColumns& columns, const CFilterColumn& column, const QString& where, const QVariantList& values)
{
    DatabaseHandler& db = *columns.Handler();
    return keysOf(columns, column,
                  QStringLiteral("SELECT ") + db.BracketName(column.Name()) + QStringLiteral(" FROM ") + db.BracketName(columns.SearchKeyword(&column))
                      + QStringLiteral(" WHERE ") + where + QStringLiteral(" ORDER BY ") + columns.KeywordStorageOrder(column),
                  values);
}

QStringList detail::storedKeys(const CFilterColumns& columns, const CFilterColumn& column, const QVariant& key)
{
    return keysOf(columns, column, RecordStatements::of(columns).selectKeywords(column), QVariantList{key});
}

void detail::insertKeys(const CFilterColumns& columns, const CFilterColumn& column, const QVariant& key, const QStringList& keys,
                        const CDebugLockedMessage& locked)
{
    DatabaseHandler& db = *columns.Handler();
    const QString& insert = RecordStatements::of(columns).insertKeyword(column);
    for (const QString& k : keys)
        if (!db.ExecuteSql(insert, QVariantList{key, boundText(k)}, &locked))
            fail(QStringLiteral("the keyword \"%1\" of %2 could not be written").arg(k, column.Name()));
}

detail::KeyChanges detail::keyChanges(const QStringList& before, const QStringList& wanted)
{
    KeyChanges changes;
    for (const QString& k : before)
        if (!wanted.contains(k) && !changes.removed.contains(k))
            changes.removed << k;
    for (const QString& k : distinctKeys(wanted))
        if (!before.contains(k))
            changes.added << k;
    return changes;
}

bool detail::writeKeyChanges(const CFilterColumns& columns, const CFilterColumn& column, const QVariant& key, const QString& seek,
                             const KeyChanges& changes, const CDebugLockedMessage& deleting, const CDebugLockedMessage& inserting)
{
    DatabaseHandler& db = *columns.Handler();
    const QString sql = seek.isEmpty() ? RecordStatements::of(columns).removeKeyword(column)
                                       : QStringLiteral("DELETE FROM ") + db.BracketName(columns.SearchKeyword(&column)) + QStringLiteral(" WHERE ")
                                             + seek + QStringLiteral(" AND ") + db.BracketName(column.Name()) + QStringLiteral(" = ?");
    for (const QString& k : changes.removed)
        if (!db.ExecuteSql(sql, seek.isEmpty() ? QVariantList{key, boundText(k)} : QVariantList{boundText(k)}, &deleting))
            return false;
    insertKeys(columns, column, key, changes.added, inserting);
    return true;
}

void detail::forgetLoaded(const CFilterColumns& columns, const QVariant& key)
{
    for (const CFilterColumns::ColumnPtr& column : columns)
        if (column->LoadedFor(key))
            column->forgetLoaded();
}

void detail::failOnGoneFields(const CFilterColumns& columns, const QString& table, const QStringList& fields)
{
    // The catalog reads the table as it is now, so that what follows does not name those fields again.
    if (!columns.Catalog() || !columns.Catalog()->Refresh())
        return;
    const CatalogTablePtr present = GetCatalogTable(*columns.Catalog(), table);
    if (!present)
        return; // the table itself is gone: the caller's failure says enough
    QStringList gone;
    for (const QString& field : fields)
        if (!GetTableColumn(present, field))
            gone << field;
    if (!gone.isEmpty())
        fail(QStringLiteral("the table %1 has no field %2 any more: another user changed the search columns of %3 meanwhile; "
                            "open the search again")
                 .arg(table, gone.join(QStringLiteral(", ")), columns.BaseTableName()));
}

bool detail::writeSearchRow(const CFilterColumns& columns, const QVariant& key, const QList<BoundField>& changed, const QList<BoundField>& all,
                            const CDebugLockedMessage& inserting, const CDebugLockedMessage& updating)
{
    DatabaseHandler& db = *columns.Handler();
    const QString table = db.BracketName(columns.SearchKeyword(nullptr));
    const auto update = [&](int& rows) {
        QString assignments;
        QVariantList values;
        for (const BoundField& f : changed) {
            db.AddSetPair(assignments, f.name, QStringLiteral("?"));
            values << f.value;
        }
        values << key;
        return db.ExecuteSql(QStringLiteral("UPDATE ") + table + QStringLiteral(" SET ") + assignments + QStringLiteral(" WHERE ")
                                 + columns.BracketedKeyColumnName() + QStringLiteral(" = ?"),
                             values, &updating, &rows);
    };
    int rows = 0;
    if (!update(rows))
        return false;
    if (rows > 0)
        return true;
    QString fields, marks;
    QVariantList values;
    db.AddInsertPair(fields, marks, columns.KeyColumnName(), QStringLiteral("?"));
    values << key;
    for (const BoundField& f : all) {
        db.AddInsertPair(fields, marks, f.name, QStringLiteral("?"));
        values << f.value;
    }
    if (!db.ExecuteSql(QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") + fields + QStringLiteral(") VALUES (") + marks
                           + QStringLiteral(") ON CONFLICT DO NOTHING"),
                       values, &inserting, &rows))
        return false;
    return rows > 0 || update(rows);
}

bool detail::writeEntryValues(CFilterColumns& columns, const ISearchBaseEntry& entry, const QSet<const CFilterColumn*>* only)
{
    if (!columns.Handler())
        return false;
    DatabaseHandler& db = *columns.Handler();
    const QString seek = columns.SearchTableSeekCriteria(&entry);
    if (seek.isEmpty())
        return false;
    const QVariant key = entryKey(columns, entry);
    const QString title = GetResourceText(8459);

    // The keywords the entry held when it was loaded, read just before an import, spare reading them again.
    QHash<const CFilterColumn*, QStringList> loadedKeys;
    for (const CFilterColumns::ColumnPtr& column : columns)
        if (const CFilterColumn::Loaded* loaded = column->LoadedFor(key); loaded && column->ColumnType() == fcKeyword)
            loadedKeys.insert(column.get(), loaded->keys);
    forgetLoaded(columns, key);
    // The entry's copy is whole or not at all.
    return db.RunTransaction([&] {
        QList<BoundField> fields;
        for (const CFilterColumns::ColumnPtr& column : columns) {
            if (only && !only->contains(column.get()))
                continue;
            if (column->ColumnType() == fcKeyword) {
                // Only the keywords that differ from what the entry holds are written.
                QStringList wanted;
                for (const QString& k : column->SavedKeys())
                    wanted << listForm(*column, k);
                const auto loaded = loadedKeys.constFind(column.get());
                const KeyChanges changes = keyChanges(loaded != loadedKeys.cend() ? *loaded : storedKeys(columns, *column, key), wanted);
                admitToPicklist(columns, *column, changes.added);
                if (!writeKeyChanges(columns, *column, key, {}, changes, MakeLockedMessage(GetResourceText(8462), GetResourceText(8463)),
                                     MakeLockedMessage(GetResourceText(8464), GetResourceText(8463))))
                    return false;
                continue;
            }
            Value v = detail::listForm(*column, column->SavedValue());
            if (!only && nothingToCopy(*column, v))
                continue;
            // A blank is no entry of a picklist that forbids blanks; nothing at all passes its key.
            if (column->IsPicklist() && !v.isBlank() && v.text().isEmpty())
                v = Value::null();
            const QVariant bound = boundColumnValue(*column, v);
            if (column->IsPicklist() && !v.isBlank() && !columns.CopyDataInsertIntoPicklist(*column))
                return false;
            fields.append({column->Name(), bound});
        }
        return fields.isEmpty()
            || writeSearchRow(columns, key, fields, fields, MakeLockedMessage(GetResourceText(8460), title), MakeLockedMessage(GetResourceText(8461), title));
    });
}

// ---- copy ------------------------------------------------------------------------------------------

bool CFilterColumns::Copy(const ISearchBaseEntry* source, const ISearchBaseEntry* target)
{
    if (!source || !target)
        return false;
    GetData(source);
    return CopyData(target);
}

bool CFilterColumns::CopyData(const ISearchBaseEntry* entry)
{
    if (!entry)
        return false;
    SD_PROC("CopyData");
    bool done = false;
    SD_GUARDED([&] { done = detail::writeEntryValues(*this, *entry, nullptr); });
    return done;
}

bool CFilterColumns::CopyDataKeyword(const ISearchBaseEntry* entry, const CFilterColumn& column, const QString& seek)
{
    if (!entry || !m_handler || column.ColumnType() != fcKeyword)
        return false;
    SD_PROC("CopyDataKeyword");
    bool done = false;
    SD_GUARDED([&] {
        DatabaseHandler& db = *m_handler;
        const QString table = db.BracketName(SearchKeyword(&column));
        const CDebugLockedMessage deleting = MakeLockedMessage(GetResourceText(8462), GetResourceText(8463));
        // The keyword table's unique key takes each keyword of an entry once.
        QStringList keys;
        for (const QString& k : column.SavedKeys())
            keys.append(detail::listForm(column, k));
        keys = detail::distinctKeys(keys);
        TableTransaction tx(db, &deleting);
        if (!tx.begun())
            return;
        const bool deleted = seek == SearchTableSeekCriteria(entry)
                                 ? db.ExecuteSql(QStringLiteral("DELETE FROM %1 WHERE %2 = ?").arg(table, BracketedKeyColumnName()),
                                                 QVariantList{detail::entryKey(*this, *entry)}, &deleting)
                                 : db.ExecuteSql(QStringLiteral("DELETE FROM %1 WHERE %2").arg(table, seek), &deleting);
        if (!deleted)
            return;
        admitToPicklist(*this, column, keys);
        detail::insertKeys(*this, column, detail::entryKey(*this, *entry), keys,
                           MakeLockedMessage(GetResourceText(8464), GetResourceText(8463)));
        done = tx.commit();
    });
    return done;
}

bool CFilterColumns::CopyDataInsertIntoPicklist(const CFilterColumn& column)
{
    SD_PROC("CopyDataInsertIntoPicklist");
    bool done = false;
    SD_GUARDED([&] {
        admitToPicklist(*this, column, QStringList{column.SavedValue().text()});
        done = true;
    });
    return done;
}

// ---- merge -----------------------------------------------------------------------------------------

bool CFilterColumns::MakeMergeColumn()
{
    if (!m_handler || !m_catalog)
        return false;
    SD_PROC("MakeMergeColumn");
    bool done = false;
    SD_GUARDED([&] {
        if (!GetCatalogTable(*m_catalog, definitionTableName())) {
            std::unique_ptr<Recordset> created = OpenDefinitionTable();
            DatabaseHandler::CloseRecordset(created);
            m_catalog->Refresh();
        }
        const std::optional<StructureColumn> link = MakeLinkColumn();
        if (!link)
            return;
        done = schemaTool().RepairColumn(nullptr, *m_catalog, definitionTableName(), *link);
    });
    return done;
}

bool CFilterColumns::MergeCleanup()
{
    if (!m_catalog)
        return false;
    SD_PROC("MergeCleanup");
    bool done = false;
    SD_GUARDED([&] {
        if (!schemaTool().DropColumn(nullptr, *m_catalog, definitionTableName(), kMergeName))
            return;
        // Without the field a later save could not write their merge names.
        for (const ColumnPtr& c : m_columns) {
            c->setIsMergeColumn(false);
            c->setMergeName(QString());
        }
        done = true;
    });
    return done;
}

bool CFilterColumns::MergeData(const ISearchBaseEntry* target, const CSearchFilter* sourceFilter, const ISearchBaseEntry* source)
{
    if (!target || !sourceFilter || !source || !sourceFilter->FilterColumns() || !m_handler)
        return false;
    SD_PROC("MergeData");
    bool done = false;
    SD_GUARDED([&] {
        detail::forgetLoaded(*this, detail::entryKey(*this, *target));
        TableTransaction tx(*m_handler);
        if (!tx.begun())
            return;
        if (HasKeywordColumns() && !MergeDataKeywordColumns(target, sourceFilter, source))
            return;
        if (HasStandardColumns() && !MergeDataStandardColumns(target, sourceFilter, source))
            return;
        done = tx.commit();
    });
    return done;
}

bool CFilterColumns::MergeDataKeywordColumns(const ISearchBaseEntry* target, const CSearchFilter* sourceFilter,
                                             const ISearchBaseEntry* source)
{
    if (!target || !sourceFilter || !source || !sourceFilter->FilterColumns() || !m_handler)
        return false;
    SD_PROC("MergeDataKeywordColumns");
    bool done = false;
    SD_GUARDED([&] {
        const CFilterColumns& from = *sourceFilter->FilterColumns();
        if (!from.Handler())
            return;
        DatabaseHandler& db = *m_handler;
        TableTransaction tx(db);
        if (!tx.begun())
            return;
        for (const ColumnPtr& column : m_columns) {
            if (column->ColumnType() != fcKeyword || !column->IsMergeColumn() || column->MergeName().isEmpty())
                continue;
            const ColumnPtr origin = columnNamed(from, column->MergeName());
            if (!origin || origin->ColumnType() != fcKeyword)
                continue;
            const QStringList incoming = detail::storedKeys(from, *origin, detail::entryKey(from, *source));
            if (incoming.isEmpty())
                continue;
            const QStringList present = detail::storedKeys(*this, *column, detail::entryKey(*this, *target));
            QStringList added;
            for (const QString& k : incoming)
                if (const QString key = detail::listForm(*column, k); !present.contains(key) && !added.contains(key))
                    added.append(key);
            admitToPicklist(*this, *column, added);
            detail::insertKeys(*this, *column, detail::entryKey(*this, *target), added,
                               MakeLockedMessage(GetResourceText(8464), GetResourceText(8463)));
        }
        done = tx.commit();
    });
    return done;
}

bool CFilterColumns::MergeDataStandardColumns(const ISearchBaseEntry* target, const CSearchFilter* sourceFilter,
                                              const ISearchBaseEntry* source)
{
    if (!target || !sourceFilter || !source || !sourceFilter->FilterColumns() || !m_handler)
        return false;
    SD_PROC("MergeDataStandardColumns");
    bool done = false;
    SD_GUARDED([&] {
        const CFilterColumns& from = *sourceFilter->FilterColumns();
        if (!from.Handler())
            return;
        DatabaseHandler& sourceDb = *from.Handler();
        DatabaseHandler& db = *m_handler;
        const QString sourceTable = from.SearchKeyword(nullptr);
        if (!sourceDb.tableExists(sourceTable)) {
            done = true; // only keyword columns there: nothing to merge here
            return;
        }
        // Source and target share the field names: the target's columns remember theirs as merge names.
        // The fields are named, so that a source table that changes meanwhile cannot give a row of
        // another shape.
        const CatalogTablePtr sourceFields = from.Catalog() ? GetCatalogTable(*from.Catalog(), sourceTable) : nullptr;
        QStringList fields;
        QString select;
        if (sourceFields)
            for (const CatalogColumn& field : sourceFields->columns)
                if (const ColumnPtr column = FindByMergeName(field.name); column && column->ColumnType() != fcKeyword) {
                    fields << field.name;
                    select += (select.isEmpty() ? QString() : QStringLiteral(", ")) + sourceDb.BracketName(field.name);
                }
        if (fields.isEmpty()) {
            done = true;
            return;
        }
        std::unique_ptr<Recordset> row = sourceDb.OpenSqlRecordset(QStringLiteral("SELECT ") + select + QStringLiteral(" FROM ")
                                                                       + sourceDb.BracketName(sourceTable) + QStringLiteral(" WHERE ")
                                                                       + from.BracketedKeyColumnName() + QStringLiteral(" = ?"),
                                                                   QVariantList{detail::entryKey(from, *source)});
        if (!row) {
            detail::failOnGoneFields(from, sourceTable, fields);
            return;
        }
        if (row->EndOfFile()) {
            done = true;
            return;
        }
        QString assignments;
        QVariantList values;
        TableTransaction tx(db);
        if (!tx.begun())
            return;
        for (const QString& field : fields) {
            const Value v = row->field(field);
            if (v.isNull())
                continue;
            const ColumnPtr column = FindByMergeName(field);
            const QVariant bound = detail::boundColumnValue(*column, detail::listForm(*column, v));
            if (column->IsPicklist())
                admitToPicklist(*this, *column, QStringList{Value::fromVariant(bound).text()});
            db.AddSetPair(assignments, column->Name(), QStringLiteral("?"));
            values << bound;
        }
        if (!assignments.isEmpty()) {
            // The source wins on every field it holds; a target without its row stays without.
            values << detail::entryKey(*this, *target);
            const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8476), GetResourceText(8474));
            if (!db.ExecuteSql(QStringLiteral("UPDATE %1 SET %2 WHERE %3 = ?")
                                   .arg(db.BracketName(SearchKeyword(nullptr)), assignments, BracketedKeyColumnName()),
                               values, &locked))
                return;
        }
        done = tx.commit();
    });
    return done;
}

} // namespace searchdata
