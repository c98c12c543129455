#pragma once

#include "searchdata/AdoTypes.h"
#include "searchdata/KeyKind.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace searchdata {

class TableStructure;

/// One column as a structure wants it.
struct StructureColumn {
    QString name;
    int type = adVarWChar;   ///< ADO type code
    int size = 0;            ///< defined size; 0 leaves it to the type (unbounded text)
    int scale = 0;           ///< decimal places of an exact numeric; other types ignore it
    bool nullable = true;
    bool hasDefault = false;
    QString defaultText;     ///< SQL literal or expression as written: "'abc'", "0", "NULL"
    bool identity = false;   ///< numbered by the database, in the order the rows are added
    /// For a field of a host's base table: whether users may filter on it. A field of a type that
    /// no comparison suits cannot be filtered whatever this says.
    bool usable = true;
    /// For a field of a host's base table: the name users see in the filter; blank shows `name`.
    QString displayName = {};

    QString displayNameOrName() const { return displayName.isEmpty() ? name : displayName; }
};

/// One index as a structure wants it.
struct StructureIndex {
    QString name;
    QStringList columns;
    bool unique = false;
};

/// One key (primary, unique or foreign) as a structure wants it.
struct StructureKey {
    QString name;
    KeyKind kind = kkUnique;
    QStringList columns;
    QString relatedTable;       ///< foreign keys only
    QStringList relatedColumns; ///< foreign keys only, one per column
    bool cascade = false;       ///< foreign keys only: deleting (or re-keying) a related row does the same here
};

/// How a new table gets its rows at creation: one row per selected record of a base table, with only
/// the key given; the other columns take their declared defaults.
struct StructureFill {
    QString baseTableName;
    /// The key column, already quoted for SQL; the source of the rows when there is no selection.
    QString bracketedKey;
    /// The columns that the fill writes; when it has none, the key column alone.
    std::shared_ptr<const TableStructure> population;
    /// Blank, or a whole SELECT of the key up to and including its WHERE condition.
    QString selectionText;
};

/// What a table should be: name, columns, indexes, keys, and an optional fill at creation. The
/// schema tool creates, compares and changes tables from it. Each step that cannot be taken reports to
/// diagnostics, leaves the structure as it was and gives false, so that callers end their build.
class TableStructure {
public:
    /// An empty structure for the table `name`.
    explicit TableStructure(QString name);

    /// A new structure, or null (reported) when the name is blank or a fill lacks what it needs: a
    /// source (selection text, or base table and key) and a target (population columns or key).
    static std::shared_ptr<TableStructure> NewStructure(const QString& name, bool fill = false, const QString& baseTableName = {},
                                                        const QString& bracketedKey = {},
                                                        std::shared_ptr<const TableStructure> population = nullptr,
                                                        const QString& selectionText = {});

    const QString& name() const { return m_name; }
    /// The fill at creation, if the table is to be filled.
    const std::optional<StructureFill>& fill() const { return m_fill; }

    /// Adds a column. Fails on a blank or repeated name (ignoring case), a negative size, or an
    /// unknown type code.
    [[nodiscard]] bool AddColumn(const QString& name, int adoType, int size = 0, int scale = 0, bool nullable = true,
                                 bool hasDefault = false, const QString& defaultText = {});
    /// Adds a required 64-bit column that the database numbers in the order rows are added, where the
    /// database has such columns (`Dialect::identityClause`).
    [[nodiscard]] bool AddIdentityColumn(const QString& name);
    /// Marks how users may filter on the column `name` of a host's base table: whether at all, and
    /// under which name (blank for its own). Fails when the structure has no such column.
    [[nodiscard]] bool MarkFilterField(const QString& name, bool usable, const QString& displayName = {});
    /// Adds an index over columns of this structure.
    [[nodiscard]] bool AddIndex(const QString& name, const QStringList& columns, bool unique = false);
    /// Adds the primary key; a structure has at most one.
    [[nodiscard]] bool AddPrimaryKey(const QString& name, const QStringList& columns);
    [[nodiscard]] bool AddUniqueKey(const QString& name, const QStringList& columns);
    /// Adds a foreign key. A blank name gets "FK_" + table + "_" + related table (with "_2", "_3"
    /// when that is taken), so that the key can be found again by name.
    [[nodiscard]] bool AddForeignKey(const QString& name, const QStringList& columns, const QString& relatedTable,
                                     const QStringList& relatedColumns, bool cascade);

    const QList<StructureColumn>& StructureColumns() const { return m_columns; }
    /// Keys in the order they were added.
    const QList<StructureKey>& StructureKeys() const { return m_keys; }
    const QList<StructureIndex>& StructureIndexes() const { return m_indexes; }

    /// Look-ups by name, ignoring case; nothing when absent.
    std::optional<StructureColumn> ColumnNamed(const QString& name) const;
    std::optional<StructureKey> KeyNamed(const QString& name) const;
    std::optional<StructureIndex> IndexNamed(const QString& name) const;
    std::optional<StructureKey> PrimaryKey() const;

private:
    bool hasColumn(const QString& name) const;
    bool nameTaken(const QString& name) const;
    void checkKeyColumns(const QString& name, const QStringList& columns) const;
    bool addKey(const char* procedure, StructureKey key);

    QString m_name;
    std::optional<StructureFill> m_fill;
    QList<StructureColumn> m_columns;
    QList<StructureIndex> m_indexes;
    QList<StructureKey> m_keys;
};

} // namespace searchdata
