#pragma once

#include "searchdata/TableStructure.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

namespace searchdata {
class Catalog;
class DatabaseHandler;
}

namespace searchdata::detail {

class SchemaSql;

/// What a rebuild changes in one table.
struct SqliteTableChange {
    QList<StructureColumn> addColumns;
    QList<StructureColumn> replaceColumns;
    QStringList dropColumns;
    QList<StructureKey> addKeys;
    /// Foreign keys to drop, by related table; empty drops none.
    std::function<bool(const QString& relatedTable)> dropForeignKeysTo;
};

/// Makes the changes that SQLite's ALTER TABLE cannot make by writing the table anew: its rows go to a
/// temporary copy, the table is dropped and made again from its edited CREATE TABLE text, and the rows,
/// indexes, triggers and AUTOINCREMENT counter come back. Rows keep their rowids.
///
/// Copying out and back under the table's own name (rather than renaming a new table over it) keeps
/// the references of other tables pointing at it. Run inside a `SchemaChange`.
class SqliteRebuild {
public:
    SqliteRebuild(DatabaseHandler& db, Catalog& catalog, const SchemaSql& sql, bool foreignKeysOff)
        : m_db(db), m_catalog(catalog), m_sql(sql), m_foreignKeysOff(foreignKeysOff) {}

    /// Rebuilds `table` with `change`; throws when it cannot, leaving the undoing to the bracket.
    /// With enforcement on, a table that others refer to with an ON DELETE action is refused, since
    /// dropping it would carry the action out on their rows.
    void run(const QString& table, const SqliteTableChange& change);

private:
    DatabaseHandler& m_db;
    Catalog& m_catalog;
    const SchemaSql& m_sql;
    bool m_foreignKeysOff;
};

} // namespace searchdata::detail
