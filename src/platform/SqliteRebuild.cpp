#include "platform/SqliteRebuild_p.h"

#include "platform/Guard_p.h"
#include "platform/SchemaChange_p.h"
#include "platform/SchemaSql_p.h"
#include "platform/SqliteTableSql_p.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"

#include <QSet>
#include <algorithm>

namespace searchdata::detail {

namespace {

const QString kCopy = QStringLiteral("sd_rebuild_copy");

bool intersects(const QStringList& a, const QStringList& b)
{
    for (const QString& name : a)
        if (b.contains(name, Qt::CaseInsensitive))
            return true;
    return false;
}

// Turns on deferred foreign key checks for the length of a rebuild and puts the setting back.
class DeferredForeignKeys {
public:
    explicit DeferredForeignKeys(DatabaseHandler& db) : m_db(db)
    {
        if (schemaScalar(db, QStringLiteral("PRAGMA defer_foreign_keys")).toInt() == 0) {
            execSchemaSql(db, QStringLiteral("PRAGMA defer_foreign_keys = ON"));
            m_restore = true;
        }
    }
    ~DeferredForeignKeys()
    {
        if (m_restore)
            m_db.ExecuteSql(QStringLiteral("PRAGMA defer_foreign_keys = OFF"));
    }
    DeferredForeignKeys(const DeferredForeignKeys&) = delete;
    DeferredForeignKeys& operator=(const DeferredForeignKeys&) = delete;

private:
    DatabaseHandler& m_db;
    bool m_restore = false;
};

} // namespace

void SqliteRebuild::run(const QString& tableName, const SqliteTableChange& change)
{
    const Dialect& d = m_sql.dialect();
    // Read afresh: the rebuild copies what the table holds now, whatever the catalog last saw.
    if (!m_catalog.Refresh())
        fail(QStringLiteral("cannot read the catalog before rebuilding %1").arg(tableName));
    const CatalogTablePtr table = GetCatalogTable(m_catalog, tableName);
    if (!table)
        fail(QStringLiteral("there is no table %1 to rebuild").arg(tableName));
    const QString name = table->name;
    const QString quotedName = d.BracketName(name);

    const QString createSql = schemaScalar(m_db, QStringLiteral("SELECT sql FROM sqlite_master WHERE type = 'table' AND name = ")
                                                     + d.SqlQuote(name)).toString();
    std::optional<SqliteTableSql> definition = SqliteTableSql::parse(createSql);
    if (!definition)
        fail(QStringLiteral("cannot read the definition of %1 to rebuild it").arg(name));
    const QStringList oldColumns = definition->columnNames();

    for (const StructureColumn& c : change.replaceColumns) {
        const QString type = m_sql.typeOf(c);
        if (type.isEmpty() || !definition->replaceColumn(c.name, type, !c.nullable, m_sql.defaultOf(c)))
            fail(QStringLiteral("cannot give column %1 of %2 its new type").arg(c.name, name));
    }
    for (const QString& column : change.dropColumns)
        if (!definition->dropColumn(column))
            fail(QStringLiteral("%1 has no column %2 to drop").arg(name, column));
    for (const StructureColumn& c : change.addColumns)
        definition->addColumn(m_sql.column(c));
    if (change.dropForeignKeysTo)
        definition->dropForeignKeys(change.dropForeignKeysTo);
    for (const StructureKey& key : change.addKeys)
        definition->addConstraint(m_sql.constraint(key));

    // The tables that refer to this one, and what dropping it would do to them.
    QSet<QString> children;
    QStringList referencedColumns;
    for (const auto& [child, key] : m_catalog.ReferencesTo(name)) {
        if (child->name == name)
            continue;
        for (const QString& column : change.dropColumns)
            if (key.relatedColumns.contains(column, Qt::CaseInsensitive))
                fail(QStringLiteral("column %1 of %2 cannot go: %3 refers to it").arg(column, name, child->name));
        if (!m_foreignKeysOff && key.deleteRule != u"NO ACTION")
            fail(QStringLiteral("%1 cannot be rebuilt inside a transaction: %2 refers to it with ON DELETE %3, which "
                                "dropping it would carry out")
                     .arg(name, child->name, key.deleteRule));
        children.insert(child->name);
        referencedColumns += key.relatedColumns;
    }
    // With enforcement on, rows that refer to this table stay orphans from the drop until the copy
    // comes back; deferring the checks lets SQLite count them out again as their rows return.
    std::optional<DeferredForeignKeys> deferred;
    if (!m_foreignKeysOff && !children.isEmpty())
        deferred.emplace(m_db);

    QStringList kept;
    for (const QString& column : oldColumns)
        if (!change.dropColumns.contains(column, Qt::CaseInsensitive))
            kept.append(column);
    const CatalogKey* primary = nullptr;
    for (const CatalogKey& key : table->keys)
        if (key.kind == kkPrimary)
            primary = &key;
    bool rowidAlias = false;
    if (primary && primary->columns.size() == 1)
        if (const auto pk = GetTableColumn(*table, primary->columns.first()))
            rowidAlias = pk->declaredType.trimmed().compare(QLatin1String("INTEGER"), Qt::CaseInsensitive) == 0;
    const bool rowidShadowed = oldColumns.contains(QStringLiteral("rowid"), Qt::CaseInsensitive);
    const bool copyRowid = !definition->withoutRowid() && !rowidAlias && !rowidShadowed;

    QStringList objects; // indexes and triggers, as written
    {
        std::unique_ptr<Recordset> rs = m_db.OpenSqlRecordset(
            QStringLiteral("SELECT type, name, sql FROM sqlite_master WHERE tbl_name = %1 AND type IN ('index', 'trigger') "
                           "AND sql IS NOT NULL ORDER BY type, name").arg(d.SqlQuote(name)));
        if (!rs)
            fail(QStringLiteral("cannot read the indexes of %1").arg(name));
        for (; !rs->EndOfFile(); rs->MoveNext()) {
            if (rs->rawField(QStringLiteral("type")).toString() == u"index") {
                const auto index = GetTableIndex(*table, rs->rawField(QStringLiteral("name")).toString());
                if (index && intersects(index->columns, change.dropColumns))
                    continue; // goes with its column, as on PostgreSQL
            }
            objects.append(rs->rawField(QStringLiteral("sql")).toString());
        }
    }
    const bool hasSequence = schemaScalar(m_db, QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE name = 'sqlite_sequence'")).toInt() > 0;
    const QVariant sequence = hasSequence ? schemaScalar(m_db, QStringLiteral("SELECT seq FROM sqlite_sequence WHERE name = ") + d.SqlQuote(name))
                                          : QVariant();

    QStringList copyColumns;
    QStringList keptQuoted;
    for (qsizetype i = 0; i < kept.size(); ++i) {
        copyColumns.append(d.BracketName(QStringLiteral("c%1").arg(i)));
        keptQuoted.append(d.BracketName(kept[i]));
    }
    const QString copy = d.BracketName(QStringLiteral("temp")) + QLatin1Char('.') + d.BracketName(kCopy);
    const QString rowidColumn = d.BracketName(QStringLiteral("r"));
    // Columns without a type: the copy keeps each value exactly as it was stored.
    execSchemaSql(m_db, QStringLiteral("DROP TABLE IF EXISTS ") + copy);
    execSchemaSql(m_db, QStringLiteral("CREATE TEMP TABLE %1 (%2)").arg(d.BracketName(kCopy), (QStringList{rowidColumn} + copyColumns).join(QLatin1String(", "))));
    execSchemaSql(m_db, QStringLiteral("INSERT INTO %1 SELECT %2 FROM %3")
                            .arg(copy, (QStringList{copyRowid ? QStringLiteral("rowid") : QStringLiteral("NULL")} + keptQuoted).join(QLatin1String(", ")), quotedName));
    execSchemaSql(m_db, QStringLiteral("DROP TABLE ") + quotedName);
    execSchemaSql(m_db, definition->statement(quotedName));
    QStringList targets = keptQuoted;
    QStringList sources = copyColumns;
    if (copyRowid) {
        targets.prepend(QStringLiteral("rowid"));
        sources.prepend(rowidColumn);
    }
    execSchemaSql(m_db, QStringLiteral("INSERT INTO %1 (%2) SELECT %3 FROM %4")
                            .arg(quotedName, targets.join(QLatin1String(", ")), sources.join(QLatin1String(", ")), copy));
    execSchemaSql(m_db, QStringLiteral("DROP TABLE ") + copy);
    for (const QString& sql : std::as_const(objects))
        execSchemaSql(m_db, sql);
    if (!sequence.isNull())
        execSchemaSql(m_db, QStringLiteral("UPDATE sqlite_sequence SET seq = MAX(seq, ") + QString::number(sequence.toLongLong())
                                + QStringLiteral(") WHERE name = ") + d.SqlQuote(name));

    // Without immediate checks, make sure that the rows still satisfy every foreign key that the
    // change could have touched: the table's own, when keys were added or key columns retyped, and
    // those of the tables that refer to it, when the columns they refer to were retyped.
    if (m_foreignKeysOff || deferred) {
        QStringList replaced;
        for (const StructureColumn& c : change.replaceColumns)
            replaced.append(c.name);
        bool checkOwn = std::any_of(change.addKeys.cbegin(), change.addKeys.cend(), [](const StructureKey& k) { return k.kind == kkForeign; });
        for (const CatalogKey& key : table->keys)
            if (key.kind == kkForeign && intersects(key.columns, replaced))
                checkOwn = true;
        if (checkOwn && schemaScalar(m_db, QStringLiteral("SELECT COUNT(*) FROM pragma_foreign_key_check(%1)").arg(d.SqlQuote(name))).toLongLong() > 0)
            fail(QStringLiteral("the rows of %1 do not satisfy its foreign keys").arg(name));
        if (intersects(referencedColumns, replaced)) {
            for (const QString& child : std::as_const(children)) {
                const qint64 broken = schemaScalar(m_db, QStringLiteral("SELECT COUNT(*) FROM pragma_foreign_key_check(%1) WHERE parent = %2 COLLATE NOCASE")
                                                             .arg(d.SqlQuote(child), d.SqlQuote(name))).toLongLong();
                if (broken > 0)
                    fail(QStringLiteral("%1 rows of %2 would no longer find their row in %3").arg(broken).arg(child, name));
            }
        }
    }
    m_catalog.Refresh();
}

} // namespace searchdata::detail
