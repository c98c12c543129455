#pragma once

#include "searchdata/Dialect.h"
#include "searchdata/TableStructure.h"

#include <QString>
#include <utility>

namespace searchdata::detail {

/// The statements that make tables, columns, keys and indexes from structures, in the
/// words of one database.
class SchemaSql {
public:
    explicit SchemaSql(const Dialect& dialect) : m_dialect(dialect) {}

    const Dialect& dialect() const { return m_dialect; }
    /// Declared type of a column; blank when this database cannot make the type.
    QString typeOf(const StructureColumn& column) const;
    /// The DEFAULT expression, blank for none. Boolean defaults written as numbers become the
    /// database's boolean literals, which PostgreSQL needs.
    QString defaultOf(const StructureColumn& column) const;
    /// "name type [NOT NULL] [DEFAULT x]"; throws when the type cannot be made here.
    QString column(const StructureColumn& column) const;
    /// "(a, b)" with every name quoted.
    QString names(const QStringList& names) const;
    /// "CONSTRAINT name PRIMARY KEY (...)", "... UNIQUE (...)" or "... FOREIGN KEY (...) REFERENCES ...".
    QString constraint(const StructureKey& key) const;
    /// CREATE TABLE of a structure; `keys` stand in for the structure's own when given.
    QString createTable(const TableStructure& structure, const QList<StructureKey>* keys = nullptr) const;
    QString createIndex(const QString& table, const StructureIndex& index) const;
    /// The INSERT ... SELECT of a structure's fill at creation.
    QString fill(const TableStructure& structure) const;
    /// The type code and size that a column made from `column` reads back with.
    std::pair<int, int> createdShape(const StructureColumn& column) const;
    /// Throws when a name is too long for this database (PostgreSQL cuts names silently).
    void checkName(const QString& name) const;
    void checkNames(const TableStructure& structure) const;

private:
    const Dialect& m_dialect;
};

} // namespace searchdata::detail
