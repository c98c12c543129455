#pragma once

#include "searchdata/KeyKind.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace searchdata::detail {

/// The CREATE TABLE text that SQLite keeps in sqlite_master, split into column definitions and table
/// constraints. SQLite's pragmas do not give constraint names, so the catalog reads them from here;
/// a table rebuild edits this text, which keeps everything that is not edited (CHECK, COLLATE,
/// AUTOINCREMENT, conflict clauses) as the table's author wrote it.
class SqliteTableSql {
public:
    /// A primary, unique or foreign key as written, at column or table level; `name` blank when unnamed.
    struct Key {
        KeyKind kind = kkUnique;
        QString name;
        QStringList columns;
        QString relatedTable;
        QStringList relatedColumns;
    };

    /// Splits `sql`; nothing when it is no CREATE TABLE with a column list.
    static std::optional<SqliteTableSql> parse(const QString& sql);

    /// Every key, column-level ones first in column order, then table constraints in order.
    QList<Key> keys() const;
    bool withoutRowid() const;
    QStringList columnNames() const;

    /// Appends a column definition after the last column.
    void addColumn(const QString& definition);
    /// Gives a column a new type, nullability and default; keeps its other clauses. False when absent.
    bool replaceColumn(const QString& name, const QString& typeText, bool notNull, const QString& defaultSql);
    /// Removes a column with the table constraints that name it. False when absent.
    bool dropColumn(const QString& name);
    /// Removes the foreign keys whose related table `which` accepts; gives how many went.
    int dropForeignKeys(const std::function<bool(const QString& relatedTable)>& which);
    /// Appends a table constraint.
    void addConstraint(const QString& text);
    /// The CREATE TABLE statement for the table under `quotedName`.
    QString statement(const QString& quotedName) const;

private:
    enum class ClauseKind { PrimaryKey, NotNull, Null, Unique, Check, Default, Collate, References, Generated, Other };
    struct Clause {
        ClauseKind kind = ClauseKind::Other;
        QString name;
        QString text;
        QString relatedTable;
        QStringList relatedColumns;
    };
    struct Element {
        bool isColumn = true;
        QString text;               // the element as written, or as edited
        // a column
        QString columnName;
        QString nameText;
        QString typeText;
        QList<Clause> clauses;
        // a table constraint
        std::optional<Key> key;     // for PRIMARY KEY, UNIQUE, FOREIGN KEY
        QStringList identifiers;    // every name the constraint mentions (for CHECK)
    };
    static QString columnText(const Element& column);

    QList<Element> m_elements;
    QString m_options; // what follows the column list: WITHOUT ROWID, STRICT
};

} // namespace searchdata::detail
