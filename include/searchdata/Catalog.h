#pragma once

#include "searchdata/AdoTypes.h"
#include "searchdata/KeyKind.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <utility>

namespace searchdata {

class TableStructure;

class DatabaseHandler;

/// A column as the database has it.
struct CatalogColumn {
    QString name;
    int type = adVarWChar;  ///< ADO type code of the declared type
    int definedSize = 0;    ///< length of a text, or precision of a numeric; 0 when none is declared
    bool nullable = true;
    bool hasDefault = false;
    QString defaultText;    ///< the default as SQL, without the casts that PostgreSQL adds to literals
    QString declaredType;   ///< the declared type as the database spells it
};

/// A primary, unique or foreign key as the database has it.
struct CatalogKey {
    QString name;
    KeyKind kind = kkUnique;
    QStringList columns;
    QString relatedTable;
    QStringList relatedColumns;
    bool cascade = false;   ///< ON DELETE CASCADE
    QString deleteRule;     ///< "CASCADE", "SET NULL", "SET DEFAULT", "RESTRICT" or "NO ACTION"
};

/// An index made on its own (not the one behind a primary or unique key).
struct CatalogIndex {
    QString name;
    QStringList columns;    ///< blank for an expression
    bool unique = false;
};

/// One table as the database had it at the last refresh.
struct CatalogTable {
    QString name;
    QList<CatalogColumn> columns;
    QList<CatalogKey> keys;
    QList<CatalogIndex> indexes;
};

/// A table of the catalog. A refresh makes new tables and never changes one that was given out, so a
/// caller may keep this across a refresh safely: it stays valid and shows the table as it was read.
using CatalogTablePtr = std::shared_ptr<const CatalogTable>;

/// The tables of one database, read from the database itself (SQLite: sqlite_master and the table
/// pragmas; PostgreSQL: pg_catalog, current schema), and the connection they were read on.
///
/// Key names survive on both databases. Keys that were made without a name get a fixed one: "PK_" +
/// table for a primary key, SQLite's own index name for a unique key, "FK_" + table + "_" + related
/// table for a foreign key (the rule that `TableStructure::AddForeignKey` uses).
class Catalog {
public:
    /// Reads the tables at once; a failure is reported and leaves the catalog empty.
    explicit Catalog(std::shared_ptr<DatabaseHandler> handler);

    /// The connection that the catalog reads; also what schema changes run on.
    const std::shared_ptr<DatabaseHandler>& handler() const { return m_handler; }

    /// Reads every table again. On failure (reported) the catalog keeps what it had and gives false.
    bool Refresh();

    /// The tables, ordered by name.
    const QList<CatalogTablePtr>& Tables() const { return m_tables; }
    /// Counts the refreshes that read the tables: what was made from an older count may be stale.
    quint64 generation() const { return m_generation; }

    /// The foreign keys of every table (itself included) that refer to `table`, with their tables.
    QList<std::pair<CatalogTablePtr, CatalogKey>> ReferencesTo(const QString& table) const;

private:
    std::shared_ptr<DatabaseHandler> m_handler;
    QList<CatalogTablePtr> m_tables;
    quint64 m_generation = 0;
};

/// The table named `name` (ignoring case, an exact spelling first), or null. Not an error when missing.
CatalogTablePtr GetCatalogTable(const Catalog& catalog, const QString& name);

/// A host's description of its base table as the catalog has it: every field, and `key` as its
/// primary key. A field of a type that structures do not know is left out (it cannot be filtered).
/// Null when `key` names no field.
std::shared_ptr<TableStructure> DescribeBaseTable(const CatalogTable& table, const QString& key);

/// The column named `name` of a table, ignoring case, or nothing. A null table gives nothing.
std::optional<CatalogColumn> GetTableColumn(const CatalogTable& table, const QString& name);
std::optional<CatalogColumn> GetTableColumn(const CatalogTablePtr& table, const QString& name);

/// The index named `name` of a table, ignoring case, or nothing.
std::optional<CatalogIndex> GetTableIndex(const CatalogTable& table, const QString& name);
std::optional<CatalogIndex> GetTableIndex(const CatalogTablePtr& table, const QString& name);

/// The key named `name` of a table, ignoring case, or nothing.
std::optional<CatalogKey> GetTableKey(const CatalogTable& table, const QString& name);
std::optional<CatalogKey> GetTableKey(const CatalogTablePtr& table, const QString& name);

} // namespace searchdata
