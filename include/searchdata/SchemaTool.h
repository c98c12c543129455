#pragma once

#include "searchdata/Catalog.h"
#include "searchdata/TableStructure.h"

#include <QList>
#include <QString>
#include <optional>

namespace searchdata {

class IProgress;

/// What `TableMatches` compares, as bits of its `checks` argument. The table itself is always
/// looked for; its columns when any of the first three bits is set, and a missing column counts
/// only with `smcColumns`.
enum SchemaMatchChecks : int {
    smcColumns = 1,          ///< every column of the structure is there
    smcColumnTypes = 2,      ///< ... with its type and defined size
    smcColumnNullability = 4,///< ... and its nullability
    smcIndexes = 8,          ///< every index, by name
    smcKeys = 16,            ///< every primary, unique and foreign key, by name
    smcEverything = 31,
};

/// One way in which a table differs from its structure.
struct SchemaDifference {
    enum Kind {
        MissingTable,
        MissingColumn,
        OtherType,
        OtherSize,
        OtherNullability,
        MissingIndex,
        MissingKey,
    };
    Kind kind = MissingTable;
    QString table;
    QString item;     ///< the column, index or key; blank for the table
    QString expected; ///< for the column kinds: what the structure wants
    QString found;    ///< ... and what the table has
    /// One line for a log: "table Files: column Name has size 40, wanted 255".
    QString describe() const;
};

/// Creates, compares and changes tables from structures, on the connection of a catalog.
///
/// Every change runs in a transaction, or in a savepoint of the caller's, so that a failure leaves
/// the tables and their rows as they were; a failure is reported to diagnostics and gives false.
/// After a change the catalog is read again; a caller that rolls back its own larger transaction
/// afterwards refreshes the catalog itself. On SQLite, changes that ALTER TABLE cannot make (keys,
/// a column's type, size or nullability, dropping a column of a key or index) rebuild the table
/// with its rows, keys, indexes and triggers. Outside any transaction a rebuild turns foreign key
/// enforcement off for its length and checks the affected keys at the end; inside one it refuses to
/// rebuild a table that other tables refer to with an ON DELETE action, since dropping the table
/// would carry that action out.
///
/// Names of tables, keys and indexes share one name space per database (per schema on PostgreSQL),
/// and PostgreSQL refuses here a name longer than 63 bytes rather than shortening it.
class SchemaTool {
public:
    virtual ~SchemaTool() = default;

    /// Whether the catalog has the structure's table.
    virtual bool TableExists(const Catalog& catalog, const TableStructure& structure) const;
    /// Whether the table has everything that `checks` (bits of `SchemaMatchChecks`) asks for.
    virtual bool TableMatches(int checks, const Catalog& catalog, const TableStructure& structure) const;
    /// Every difference that `checks` asks about; empty when the table matches.
    virtual QList<SchemaDifference> TableDifferences(int checks, const Catalog& catalog, const TableStructure& structure) const;
    /// How a column of the table (nothing when missing) differs from what the structure wants: type and
    /// size as the database would make them, and nullability. The default is not compared.
    virtual QList<SchemaDifference> ColumnDifferences(const Catalog& catalog, const QString& table,
                                                      const std::optional<CatalogColumn>& actual, const StructureColumn& wanted,
                                                      int checks = smcColumns | smcColumnTypes | smcColumnNullability) const;
    /// Whether `ColumnDifferences` finds nothing.
    bool ColumnMatches(const Catalog& catalog, const std::optional<CatalogColumn>& actual, const StructureColumn& wanted) const;

    /// Makes the table with its columns, keys and indexes, and carries out its fill. Fails when the
    /// table exists, or a foreign key's related table or columns (which must be a key) are missing.
    virtual bool CreateTable(IProgress* progress, Catalog& catalog, const TableStructure& structure);
    /// Adds what the table lacks of the structure: columns, keys, indexes (by name). Makes the table,
    /// with its fill, when it is missing. Changes nothing that is there.
    virtual bool ApplyStructure(IProgress* progress, Catalog& catalog, const TableStructure& structure);
    /// Makes a column agree with its structure: adds it when missing; when its type, size or
    /// nullability differ, gives it all that the structure says, default included, keeping its values (a
    /// value that cannot take the new type fails the repair). Nulls take the default when the column
    /// becomes required. True at once when the column matches.
    virtual bool RepairColumn(IProgress* progress, Catalog& catalog, const QString& table, const StructureColumn& column);
    /// Adds an index; true at once when the table has one of that name.
    virtual bool CreateIndex(IProgress* progress, Catalog& catalog, const QString& table, const StructureIndex& index);
    /// Whether the present rows allow the key: for a foreign key, every row whose key columns are all
    /// set finds its related row; for a unique key, no two rows share their set values; for a primary
    /// key, also no nulls. False (not reported) when a table is missing.
    virtual bool ForeignKeyHolds(const Catalog& catalog, const QString& table, const StructureKey& key) const;
    /// Adds a key of any kind (foreign, unique or primary); true at once when one of that name exists.
    virtual bool CreateForeignKey(IProgress* progress, Catalog& catalog, const QString& table, const StructureKey& key);
    /// Drops a column with the indexes and keys that use it. Fails when another table refers to it.
    /// True when the column is not there.
    virtual bool DropColumn(IProgress* progress, Catalog& catalog, const QString& table, const QString& column);
    /// Removes the foreign keys that tie the table to others: its own and those of the tables that
    /// refer to it. True when the table is not there.
    virtual bool DropTableKeys(IProgress* progress, Catalog& catalog, const QString& table);
    /// Drops the table. Fails while another table refers to it (drop those keys first), so that no
    /// cascade ever empties another table. True when the table is not there.
    virtual bool DropTable(IProgress* progress, Catalog& catalog, const QString& table);
};

} // namespace searchdata
