#include "searchdata/SchemaTool.h"

#include "platform/Names_p.h"

#include "platform/Guard_p.h"
#include "platform/SchemaChange_p.h"
#include "platform/SchemaSql_p.h"
#include "platform/SqliteRebuild_p.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Progress.h"

#include <algorithm>

namespace searchdata {

using detail::findNamed;
using detail::sameNames;

using detail::execSchemaSql;
using detail::fail;
using detail::SchemaChange;
using detail::SchemaSql;
using detail::SqliteRebuild;
using detail::SqliteTableChange;

namespace {

constexpr const char* kModule = "SchemaTool";

DatabaseHandler& handlerOf(const Catalog& catalog)
{
    if (!catalog.handler())
        fail(QStringLiteral("the catalog has no connection"));
    return *catalog.handler();
}

bool isSqlite(const DatabaseHandler& db)
{
    return db.DatabaseKind() == dbkSQLite;
}

void checkCancelled(IProgress* progress)
{
    if (progress && progress->Cancelled())
        fail(QStringLiteral("cancelled"));
}

CatalogTablePtr requireTable(const Catalog& catalog, const QString& name)
{
    CatalogTablePtr table = GetCatalogTable(catalog, name);
    if (!table)
        fail(QStringLiteral("there is no table %1").arg(name));
    return table;
}

bool isSizedType(int code)
{
    return code == adVarWChar || code == adChar || code == adNumeric || code == adDecimal;
}

QString shape(int type, int size)
{
    return size > 0 ? QStringLiteral("%1(%2)").arg(type).arg(size) : QString::number(type);
}


// Names as the database spells them: PostgreSQL compares quoted names exactly, while structures
// name tables and columns ignoring case.
QString spelled(const CatalogTable* table, const QString& column)
{
    if (table)
        if (const auto found = GetTableColumn(*table, column))
            return found->name;
    return column;
}

StructureKey spelledKey(const Catalog& catalog, const CatalogTable* own, StructureKey key)
{
    for (QString& c : key.columns)
        c = spelled(own, c);
    if (key.kind == kkForeign) {
        if (const CatalogTablePtr related = GetCatalogTable(catalog, key.relatedTable)) {
            key.relatedTable = related->name;
            for (QString& c : key.relatedColumns)
                c = spelled(related.get(), c);
        }
    }
    return key;
}

StructureIndex spelledIndex(const CatalogTable* own, StructureIndex index)
{
    for (QString& c : index.columns)
        c = spelled(own, c);
    return index;
}

// SQLite adds a column in place only when every existing row can take its default.
bool sqliteCanAddInPlace(const SchemaSql& sql, const StructureColumn& column)
{
    const QString def = sql.defaultOf(column);
    const QString upper = def.toUpper();
    const bool constant = !def.startsWith(QLatin1Char('(')) && !upper.startsWith(QLatin1String("CURRENT_"));
    return constant && (column.nullable || !def.isEmpty());
}

// A foreign key needs its related table and a primary or unique key over the related columns; SQLite
// would only find that out at the first write.
void checkForeignKeyTarget(const Catalog& catalog, const QString& table, const StructureKey& key, const TableStructure* own)
{
    if (key.kind != kkForeign)
        return;
    QList<QStringList> keys;
    QStringList columns;
    if (own && key.relatedTable.compare(table, Qt::CaseInsensitive) == 0) {
        for (const StructureColumn& c : own->StructureColumns())
            columns.append(c.name);
        for (const StructureKey& k : own->StructureKeys())
            if (k.kind != kkForeign)
                keys.append(k.columns);
    } else {
        const CatalogTablePtr related = GetCatalogTable(catalog, key.relatedTable);
        if (!related)
            fail(QStringLiteral("foreign key %1 of %2 refers to the missing table %3").arg(key.name, table, key.relatedTable));
        for (const CatalogColumn& c : related->columns)
            columns.append(c.name);
        for (const CatalogKey& k : related->keys)
            if (k.kind != kkForeign)
                keys.append(k.columns);
        for (const CatalogIndex& i : related->indexes)
            if (i.unique)
                keys.append(i.columns);
    }
    for (const QString& c : key.relatedColumns)
        if (!columns.contains(c, Qt::CaseInsensitive))
            fail(QStringLiteral("foreign key %1 of %2 refers to the missing column %3.%4").arg(key.name, table, key.relatedTable, c));
    QStringList wanted = key.relatedColumns;
    std::sort(wanted.begin(), wanted.end(), [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    for (QStringList k : keys) {
        std::sort(k.begin(), k.end(), [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
        if (sameNames(k, wanted))
            return;
    }
    fail(QStringLiteral("foreign key %1 of %2 refers to columns of %3 that are no key").arg(key.name, table, key.relatedTable));
}

void checkColumnsExist(const CatalogTable& table, const QString& what, const QStringList& columns)
{
    if (columns.isEmpty())
        fail(QStringLiteral("%1 of %2 has no columns").arg(what, table.name));
    for (const QString& c : columns)
        if (!GetTableColumn(table, c))
            fail(QStringLiteral("%1 of %2 names the missing column %3").arg(what, table.name, c));
}

// The USING expression that converts a PostgreSQL column's values to a new type; blank when the
// database's own assignment rules do (a size change).
QString pgConversion(const Dialect& d, const CatalogColumn& actual, int newType, const QString& declared)
{
    const QString column = d.BracketName(actual.name);
    if (actual.type == newType)
        return {};
    const bool fromText = actual.type == adVarWChar || actual.type == adChar;
    if (newType == adVarWChar || newType == adChar)
        return QStringLiteral("CAST(%1 AS text)").arg(column); // too long a value fails, rather than being cut
    if (newType == adBoolean && !fromText)
        return QStringLiteral("CAST(CAST(%1 AS integer) AS boolean)").arg(column);
    if (actual.type == adBoolean)
        return QStringLiteral("CAST(CAST(%1 AS integer) AS %2)").arg(column, declared);
    return QStringLiteral("CAST(%1 AS %2)").arg(column, declared);
}

// Keys, and columns that cannot be added in place, need a rebuild on SQLite.
bool needsSqliteRebuild(const DatabaseHandler& db, const SchemaSql& sql, const QList<StructureColumn>& columns, const QList<StructureKey>& keys)
{
    if (!isSqlite(db))
        return false;
    return !keys.isEmpty() || std::any_of(columns.cbegin(), columns.cend(), [&](const StructureColumn& c) { return !sqliteCanAddInPlace(sql, c); });
}

// Adds columns and keys to an existing table, in place where the database can.
void addColumnsAndKeys(DatabaseHandler& db, Catalog& catalog, const SchemaSql& sql, const QString& table, const QList<StructureColumn>& columns,
                       const QList<StructureKey>& keys, bool foreignKeysOff)
{
    const QString quoted = db.BracketName(table);
    if (!isSqlite(db)) {
        for (const StructureColumn& c : columns)
            execSchemaSql(db, QStringLiteral("ALTER TABLE %1 ADD COLUMN %2").arg(quoted, sql.column(c)));
        for (const StructureKey& k : keys)
            if (k.kind != kkForeign)
                execSchemaSql(db, QStringLiteral("ALTER TABLE %1 ADD %2").arg(quoted, sql.constraint(k)));
        for (const StructureKey& k : keys)
            if (k.kind == kkForeign)
                execSchemaSql(db, QStringLiteral("ALTER TABLE %1 ADD %2").arg(quoted, sql.constraint(k)));
        return;
    }
    if (!needsSqliteRebuild(db, sql, columns, keys)) {
        for (const StructureColumn& c : columns)
            execSchemaSql(db, QStringLiteral("ALTER TABLE %1 ADD COLUMN %2").arg(quoted, sql.column(c)));
        return;
    }
    SqliteTableChange change;
    change.addColumns = columns;
    change.addKeys = keys;
    SqliteRebuild(db, catalog, sql, foreignKeysOff).run(table, change);
}

} // namespace

QString SchemaDifference::describe() const
{
    switch (kind) {
    case MissingTable:
        return QStringLiteral("table %1 is missing").arg(table);
    case MissingColumn:
        return QStringLiteral("table %1: column %2 is missing").arg(table, item);
    case OtherType:
        return QStringLiteral("table %1: column %2 has type %3, wanted %4").arg(table, item, found, expected);
    case OtherSize:
        return QStringLiteral("table %1: column %2 has size %3, wanted %4").arg(table, item, found, expected);
    case OtherNullability:
        return QStringLiteral("table %1: column %2 is %3, wanted %4").arg(table, item, found, expected);
    case MissingIndex:
        return QStringLiteral("table %1: index %2 is missing").arg(table, item);
    case MissingKey:
        return QStringLiteral("table %1: key %2 is missing").arg(table, item);
    }
    return {};
}

bool SchemaTool::TableExists(const Catalog& catalog, const TableStructure& structure) const
{
    return GetCatalogTable(catalog, structure.name()) != nullptr;
}

bool SchemaTool::TableMatches(int checks, const Catalog& catalog, const TableStructure& structure) const
{
    return TableDifferences(checks, catalog, structure).isEmpty();
}

QList<SchemaDifference> SchemaTool::TableDifferences(int checks, const Catalog& catalog, const TableStructure& structure) const
{
    const CatalogTablePtr table = GetCatalogTable(catalog, structure.name());
    if (!table)
        return {SchemaDifference{SchemaDifference::MissingTable, structure.name(), {}, {}, {}}};
    QList<SchemaDifference> differences;
    if (checks & (smcColumns | smcColumnTypes | smcColumnNullability))
        for (const StructureColumn& c : structure.StructureColumns())
            differences += ColumnDifferences(catalog, table->name, GetTableColumn(*table, c.name), c, checks);
    if (checks & smcIndexes)
        for (const StructureIndex& i : structure.StructureIndexes())
            if (!GetTableIndex(*table, i.name))
                differences.append({SchemaDifference::MissingIndex, table->name, i.name, {}, {}});
    if (checks & smcKeys)
        for (const StructureKey& k : structure.StructureKeys())
            if (!GetTableKey(*table, k.name))
                differences.append({SchemaDifference::MissingKey, table->name, k.name, {}, {}});
    return differences;
}

QList<SchemaDifference> SchemaTool::ColumnDifferences(const Catalog& catalog, const QString& table, const std::optional<CatalogColumn>& actual,
                                                      const StructureColumn& wanted, int checks) const
{
    // Without the columns bit a check looks only at the columns that are there: a table of an
    // earlier version, which lacks later columns, still passes on what it has.
    if (!actual)
        return (checks & smcColumns) ? QList<SchemaDifference>{SchemaDifference{SchemaDifference::MissingColumn, table, wanted.name, {}, {}}}
                                     : QList<SchemaDifference>{};
    QList<SchemaDifference> differences;
    if ((checks & smcColumnTypes) && catalog.handler()) {
        const auto [type, size] = SchemaSql(catalog.handler()->dialect()).createdShape(wanted);
        if (actual->type != type)
            differences.append({SchemaDifference::OtherType, table, wanted.name, shape(type, size), shape(actual->type, actual->definedSize)});
        else if (isSizedType(type) && actual->definedSize != size)
            differences.append({SchemaDifference::OtherSize, table, wanted.name, QString::number(size), QString::number(actual->definedSize)});
    }
    if ((checks & smcColumnNullability) && actual->nullable != wanted.nullable) {
        auto word = [](bool nullable) { return nullable ? QStringLiteral("nullable") : QStringLiteral("required"); };
        differences.append({SchemaDifference::OtherNullability, table, wanted.name, word(wanted.nullable), word(actual->nullable)});
    }
    return differences;
}

bool SchemaTool::ColumnMatches(const Catalog& catalog, const std::optional<CatalogColumn>& actual, const StructureColumn& wanted) const
{
    return ColumnDifferences(catalog, {}, actual, wanted).isEmpty();
}

bool SchemaTool::CreateTable(IProgress* progress, Catalog& catalog, const TableStructure& structure)
{
    SD_PROC("CreateTable");
    const bool ok = SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const SchemaSql sql(db.dialect());
        sql.checkNames(structure);
        if (structure.StructureColumns().isEmpty())
            fail(QStringLiteral("table %1 has no columns").arg(structure.name()));
        if (GetCatalogTable(catalog, structure.name()))
            fail(QStringLiteral("table %1 exists already").arg(structure.name()));
        for (const StructureKey& key : structure.StructureKeys())
            checkForeignKeyTarget(catalog, structure.name(), key, &structure);
        if (structure.fill() && structure.fill()->population)
            for (const StructureColumn& c : structure.fill()->population->StructureColumns())
                if (!structure.ColumnNamed(c.name))
                    fail(QStringLiteral("the fill of %1 writes the unknown column %2").arg(structure.name(), c.name));
        checkCancelled(progress);

        QList<StructureKey> keys;
        for (const StructureKey& key : structure.StructureKeys())
            keys.append(spelledKey(catalog, nullptr, key));
        // A table filled at once has its foreign keys checked after its rows, in one pass, where
        // every row would run its own check: SQLite's enforcement is off for the change, and on
        // PostgreSQL the table takes its keys after its rows (a sort for each unique key too).
        const bool foreignKeys = std::any_of(keys.cbegin(), keys.cend(), [](const StructureKey& k) { return k.kind == kkForeign; });
        SchemaChange change(db, structure.fill() && foreignKeys);
        const bool keysAfterFill = structure.fill() && db.DatabaseKind() == dbkPostgreSQL;
        const QList<StructureKey> noKeys;
        execSchemaSql(db, sql.createTable(structure, keysAfterFill ? &noKeys : &keys));
        if (structure.fill()) {
            checkCancelled(progress);
            execSchemaSql(db, sql.fill(structure));
        }
        if (change.suspendsForeignKeys()
            && detail::schemaScalar(db, QStringLiteral("SELECT COUNT(*) FROM pragma_foreign_key_check(") + db.SqlQuote(structure.name())
                                    + QStringLiteral(")"))
                       .toLongLong()
                   > 0)
            fail(QStringLiteral("the fill of %1 gives keys that its related tables do not hold").arg(structure.name()));
        if (keysAfterFill)
            // Primary and unique keys first: a foreign key of the table may refer to its own key.
            for (const bool foreign : {false, true})
                for (const StructureKey& key : keys)
                    if ((key.kind == kkForeign) == foreign)
                        execSchemaSql(db, QStringLiteral("ALTER TABLE ") + db.BracketName(structure.name()) + QStringLiteral(" ADD ")
                                              + sql.constraint(key));
        // Indexes after the rows: one sort beats keeping them in order row by row.
        for (const StructureIndex& index : structure.StructureIndexes())
            execSchemaSql(db, sql.createIndex(structure.name(), index));
        change.commit();
    }));
    catalog.Refresh();
    return ok;
}

bool SchemaTool::ApplyStructure(IProgress* progress, Catalog& catalog, const TableStructure& structure)
{
    if (!GetCatalogTable(catalog, structure.name()))
        return CreateTable(progress, catalog, structure);
    SD_PROC("ApplyStructure");
    bool changed = false;
    const bool ok = SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const SchemaSql sql(db.dialect());
        const CatalogTablePtr table = requireTable(catalog, structure.name());
        QList<StructureColumn> columns;
        QList<StructureKey> keys;
        QList<StructureIndex> indexes;
        for (const StructureColumn& c : structure.StructureColumns())
            if (!GetTableColumn(*table, c.name))
                columns.append(c);
        for (const StructureKey& k : structure.StructureKeys())
            if (!GetTableKey(*table, k.name))
                keys.append(spelledKey(catalog, table.get(), k));
        for (const StructureIndex& i : structure.StructureIndexes())
            if (!GetTableIndex(*table, i.name))
                indexes.append(spelledIndex(table.get(), i));
        if (columns.isEmpty() && keys.isEmpty() && indexes.isEmpty())
            return;
        for (const StructureColumn& c : columns)
            sql.checkName(c.name);
        for (const StructureKey& k : keys) {
            sql.checkName(k.name);
            if (k.kind == kkPrimary)
                for (const CatalogKey& existing : table->keys)
                    if (existing.kind == kkPrimary)
                        fail(QStringLiteral("%1 has the primary key %2 already, and cannot take %3").arg(table->name, existing.name, k.name));
            checkForeignKeyTarget(catalog, table->name, k, &structure);
        }
        for (const StructureIndex& i : indexes)
            sql.checkName(i.name);
        checkCancelled(progress);

        changed = true;
        SchemaChange change(db, needsSqliteRebuild(db, sql, columns, keys));
        if (!columns.isEmpty() || !keys.isEmpty())
            addColumnsAndKeys(db, catalog, sql, table->name, columns, keys, change.foreignKeysOff());
        for (const StructureIndex& index : indexes)
            execSchemaSql(db, sql.createIndex(table->name, index));
        change.commit();
    }));
    if (changed)
        catalog.Refresh();
    return ok;
}

bool SchemaTool::RepairColumn(IProgress* progress, Catalog& catalog, const QString& tableName, const StructureColumn& column)
{
    SD_PROC("RepairColumn");
    bool changed = false;
    const bool ok = SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const Dialect& d = db.dialect();
        const SchemaSql sql(d);
        const CatalogTablePtr table = requireTable(catalog, tableName);
        const std::optional<CatalogColumn> actual = GetTableColumn(*table, column.name);
        sql.checkName(column.name);
        checkCancelled(progress);
        if (!actual) {
            changed = true;
            SchemaChange change(db, needsSqliteRebuild(db, sql, {column}, {}));
            addColumnsAndKeys(db, catalog, sql, table->name, {column}, {}, change.foreignKeysOff());
            change.commit();
            return;
        }
        if (ColumnMatches(catalog, actual, column))
            return;
        const QString declared = sql.typeOf(column);
        if (declared.isEmpty())
            fail(QStringLiteral("this database cannot make column %1 of type %2").arg(column.name, QString::number(column.type)));

        changed = true;
        SchemaChange change(db, isSqlite(db));
        const QString quotedTable = d.BracketName(table->name);
        const QString quotedColumn = d.BracketName(actual->name);
        const QString def = sql.defaultOf(column);
        if (!column.nullable && actual->nullable && !def.isEmpty())
            execSchemaSql(db, QStringLiteral("UPDATE %1 SET %2 = %3 WHERE %2 IS NULL").arg(quotedTable, quotedColumn, def));
        if (isSqlite(db)) {
            SqliteTableChange rebuild;
            rebuild.replaceColumns = {column};
            rebuild.replaceColumns.first().name = actual->name;
            SqliteRebuild(db, catalog, sql, change.foreignKeysOff()).run(table->name, rebuild);
        } else {
            const QString alter = QStringLiteral("ALTER TABLE %1 ALTER COLUMN %2 ").arg(quotedTable, quotedColumn);
            const auto [type, size] = sql.createdShape(column);
            if (actual->type != type || actual->definedSize != size) {
                // The old default may not convert; the described one is set below.
                execSchemaSql(db, alter + QStringLiteral("DROP DEFAULT"));
                const QString conversion = pgConversion(d, *actual, type, declared);
                execSchemaSql(db, alter + QStringLiteral("TYPE ") + declared + (conversion.isEmpty() ? QString() : QStringLiteral(" USING ") + conversion));
            }
            execSchemaSql(db, alter + (column.nullable ? QStringLiteral("DROP NOT NULL") : QStringLiteral("SET NOT NULL")));
            execSchemaSql(db, alter + (def.isEmpty() ? QStringLiteral("DROP DEFAULT") : QStringLiteral("SET DEFAULT ") + def));
        }
        change.commit();
    }));
    if (changed)
        catalog.Refresh();
    return ok;
}

bool SchemaTool::CreateIndex(IProgress* progress, Catalog& catalog, const QString& tableName, const StructureIndex& index)
{
    SD_PROC("CreateIndex");
    bool changed = false;
    const bool ok = SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const SchemaSql sql(db.dialect());
        const CatalogTablePtr table = requireTable(catalog, tableName);
        if (GetTableIndex(*table, index.name))
            return;
        sql.checkName(index.name);
        checkColumnsExist(*table, index.name, index.columns);
        checkCancelled(progress);
        changed = true;
        SchemaChange change(db, false);
        execSchemaSql(db, sql.createIndex(table->name, spelledIndex(table.get(), index)));
        change.commit();
    }));
    if (changed)
        catalog.Refresh();
    return ok;
}

bool SchemaTool::ForeignKeyHolds(const Catalog& catalog, const QString& tableName, const StructureKey& wanted) const
{
    SD_PROC("ForeignKeyHolds");
    bool holds = false;
    SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const Dialect& d = db.dialect();
        const CatalogTablePtr table = GetCatalogTable(catalog, tableName);
        if (!table || wanted.columns.isEmpty())
            return;
        const StructureKey key = spelledKey(catalog, table.get(), wanted);
        checkColumnsExist(*table, key.name, key.columns);
        const QString child = QStringLiteral("c");
        QStringList allSet;
        for (const QString& c : key.columns)
            allSet.append(d.QualifiedName(child, c) + QStringLiteral(" IS NOT NULL"));
        QString probe;
        if (key.kind == kkForeign) {
            const CatalogTablePtr related = GetCatalogTable(catalog, key.relatedTable);
            if (!related || key.relatedColumns.size() != key.columns.size())
                return;
            checkColumnsExist(*related, key.name, key.relatedColumns);
            const QString parent = QStringLiteral("p");
            QStringList match;
            for (qsizetype i = 0; i < key.columns.size(); ++i)
                match.append(d.QualifiedName(parent, key.relatedColumns[i]) + QStringLiteral(" = ") + d.QualifiedName(child, key.columns[i]));
            probe = QStringLiteral("SELECT 1 FROM %1 AS %2 WHERE %3 AND NOT EXISTS (SELECT 1 FROM %4 AS %5 WHERE %6) LIMIT 1")
                        .arg(d.BracketName(table->name), d.BracketName(child), allSet.join(QStringLiteral(" AND ")),
                             d.BracketName(related->name), d.BracketName(parent), match.join(QStringLiteral(" AND ")));
        } else {
            QStringList columns;
            QStringList anyNull;
            for (const QString& c : key.columns) {
                columns.append(d.QualifiedName(child, c));
                anyNull.append(d.QualifiedName(child, c) + QStringLiteral(" IS NULL"));
            }
            probe = QStringLiteral("SELECT 1 FROM %1 AS %2 WHERE %3 GROUP BY %4 HAVING COUNT(*) > 1")
                        .arg(d.BracketName(table->name), d.BracketName(child), allSet.join(QStringLiteral(" AND ")), columns.join(QStringLiteral(", ")));
            if (key.kind == kkPrimary)
                probe = QStringLiteral("SELECT 1 FROM %1 AS %2 WHERE %3 UNION ALL ")
                            .arg(d.BracketName(table->name), d.BracketName(child), anyNull.join(QStringLiteral(" OR "))) + probe;
        }
        std::unique_ptr<Recordset> rs = db.OpenSqlRecordset(probe);
        if (!rs)
            fail(QStringLiteral("cannot test key %1 of %2: %3").arg(key.name, table->name, db.lastError()));
        holds = rs->EndOfFile();
    }));
    return holds;
}

bool SchemaTool::CreateForeignKey(IProgress* progress, Catalog& catalog, const QString& tableName, const StructureKey& wanted)
{
    SD_PROC("CreateForeignKey");
    bool changed = false;
    const bool ok = SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const SchemaSql sql(db.dialect());
        const CatalogTablePtr table = requireTable(catalog, tableName);
        const StructureKey key = spelledKey(catalog, table.get(), wanted);
        if (GetTableKey(*table, key.name))
            return;
        sql.checkName(key.name);
        checkColumnsExist(*table, key.name, key.columns);
        if (key.kind == kkPrimary)
            for (const CatalogKey& existing : table->keys)
                if (existing.kind == kkPrimary)
                    fail(QStringLiteral("%1 has the primary key %2 already, and cannot take %3").arg(table->name, existing.name, key.name));
        if (key.kind == kkForeign && key.relatedColumns.size() != key.columns.size())
            fail(QStringLiteral("foreign key %1 of %2 relates %3 columns to %4").arg(key.name, table->name, QString::number(key.columns.size()), QString::number(key.relatedColumns.size())));
        checkForeignKeyTarget(catalog, table->name, key, nullptr);
        checkCancelled(progress);
        changed = true;
        SchemaChange change(db, isSqlite(db));
        addColumnsAndKeys(db, catalog, sql, table->name, {}, {key}, change.foreignKeysOff());
        change.commit();
    }));
    if (changed)
        catalog.Refresh();
    return ok;
}

bool SchemaTool::DropColumn(IProgress* progress, Catalog& catalog, const QString& tableName, const QString& column)
{
    SD_PROC("DropColumn");
    bool changed = false;
    const bool ok = SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const Dialect& d = db.dialect();
        const SchemaSql sql(d);
        const CatalogTablePtr table = requireTable(catalog, tableName);
        const std::optional<CatalogColumn> actual = GetTableColumn(*table, column);
        if (!actual)
            return;
        for (const auto& [child, key] : catalog.ReferencesTo(table->name))
            if (key.relatedColumns.contains(actual->name, Qt::CaseInsensitive))
                fail(QStringLiteral("column %1 of %2 cannot go: %3 refers to it").arg(actual->name, table->name, child->name));
        checkCancelled(progress);
        bool inKeyOrIndex = false;
        for (const CatalogKey& k : table->keys)
            inKeyOrIndex = inKeyOrIndex || k.columns.contains(actual->name, Qt::CaseInsensitive);
        for (const CatalogIndex& i : table->indexes)
            inKeyOrIndex = inKeyOrIndex || i.columns.contains(actual->name, Qt::CaseInsensitive);
        const bool rebuild = isSqlite(db) && inKeyOrIndex;
        changed = true;
        SchemaChange change(db, rebuild);
        if (rebuild) {
            SqliteTableChange drop;
            drop.dropColumns = {actual->name};
            SqliteRebuild(db, catalog, sql, change.foreignKeysOff()).run(table->name, drop);
        } else {
            execSchemaSql(db, QStringLiteral("ALTER TABLE %1 DROP COLUMN %2").arg(d.BracketName(table->name), d.BracketName(actual->name)));
        }
        change.commit();
    }));
    if (changed)
        catalog.Refresh();
    return ok;
}

bool SchemaTool::DropTableKeys(IProgress* progress, Catalog& catalog, const QString& tableName)
{
    SD_PROC("DropTableKeys");
    bool changed = false;
    const bool ok = SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const Dialect& d = db.dialect();
        const SchemaSql sql(d);
        const CatalogTablePtr table = GetCatalogTable(catalog, tableName);
        if (!table)
            return;
        QList<std::pair<QString, QString>> keys; // table, key
        for (const CatalogKey& k : table->keys)
            if (k.kind == kkForeign)
                keys.append({table->name, k.name});
        for (const auto& [child, key] : catalog.ReferencesTo(table->name))
            if (child->name != table->name)
                keys.append({child->name, key.name});
        if (keys.isEmpty())
            return;
        checkCancelled(progress);
        changed = true;
        SchemaChange change(db, isSqlite(db));
        if (!isSqlite(db)) {
            for (const auto& [owner, key] : keys)
                execSchemaSql(db, QStringLiteral("ALTER TABLE %1 DROP CONSTRAINT %2").arg(d.BracketName(owner), d.BracketName(key)));
        } else {
            // The tables that refer to this one first: once they no longer do, it can be rebuilt
            // even inside a caller's transaction.
            const QString name = table->name;
            QStringList children;
            for (const auto& [owner, key] : keys)
                if (owner != name && !children.contains(owner))
                    children.append(owner);
            SqliteRebuild rebuild(db, catalog, sql, change.foreignKeysOff());
            for (const QString& child : std::as_const(children)) {
                SqliteTableChange drop;
                drop.dropForeignKeysTo = [name](const QString& related) { return related.compare(name, Qt::CaseInsensitive) == 0; };
                rebuild.run(child, drop);
            }
            if (std::any_of(table->keys.cbegin(), table->keys.cend(), [](const CatalogKey& k) { return k.kind == kkForeign; })) {
                SqliteTableChange drop;
                drop.dropForeignKeysTo = [](const QString&) { return true; };
                rebuild.run(name, drop);
            }
        }
        change.commit();
    }));
    if (changed)
        catalog.Refresh();
    return ok;
}

bool SchemaTool::DropTable(IProgress* progress, Catalog& catalog, const QString& tableName)
{
    SD_PROC("DropTable");
    bool changed = false;
    const bool ok = SD_GUARDED(([&] {
        DatabaseHandler& db = handlerOf(catalog);
        const CatalogTablePtr table = GetCatalogTable(catalog, tableName);
        if (!table)
            return;
        for (const auto& [child, key] : catalog.ReferencesTo(table->name))
            if (child->name != table->name)
                fail(QStringLiteral("%1 cannot be dropped while %2 refers to it through %3").arg(table->name, child->name, key.name));
        checkCancelled(progress);
        changed = true;
        SchemaChange change(db, false);
        execSchemaSql(db, QStringLiteral("DROP TABLE ") + db.BracketName(table->name));
        change.commit();
    }));
    if (changed)
        catalog.Refresh();
    return ok;
}

} // namespace searchdata
