#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

class QSqlError;

namespace searchdata {

/// `DatabaseKind` values.
enum DatabaseKinds : int {
    dbkSQLite = 1,
    dbkPostgreSQL = 2,
};

/// Everything that differs between the databases: quoting, literals, type names, lock errors.
/// Nothing outside this class asks which database it is on, except through `kind()`.
class Dialect {
public:
    /// The dialect of a `DatabaseKind`; an unknown kind gives SQLite's.
    static const Dialect& forKind(int kind);

    int kind() const { return m_kind; }

    /// A name quoted for SQL: `[name]` on SQLite, `"name"` on PostgreSQL.
    QString BracketName(const QString& name) const;
    /// `table.column`, both quoted.
    QString QualifiedName(const QString& table, const QString& column) const;
    /// The name that `BracketName` quoted at the start of `text` (the first name of a
    /// `QualifiedName`), unquoted; nothing when `text` does not begin with this database's quote.
    /// Without its closing quote the name runs to the end of the text.
    std::optional<QString> LeadingName(const QString& text) const;
    /// A text literal with its inner quotes doubled.
    QString SqlQuote(const QString& text) const;
    /// A date-time literal.
    QString SqlDate(const QDateTime& value) const;
    /// A boolean literal.
    QString SqlBoolean(bool value) const;
    /// A number in SQL's form (C locale, no grouping), whatever the process locale.
    static QString sqlNumber(double value);
    static QString sqlNumber(qint64 value);

    /// Declared type of a created column of ADO type `adoType` with defined size `size`.
    /// Blank for a code the database cannot create.
    QString declaredType(int adoType, int size) const;
    /// ADO type code of a declared type as read back from the database; `size` receives the
    /// defined size (0 when none). Unknown declared types read as text (202).
    int adoTypeOfDeclared(const QString& declaredType, int* size = nullptr) const;

    /// Wraps a numeric literal in the server's explicit conversion to the type of a column
    /// (`CAST(7 AS INTEGER)` on PostgreSQL); the literal itself where none is needed.
    QString numericConversion(int adoType, const QString& literal) const;

    /// " ESCAPE '\'", which every LIKE term carries: a backslash makes the next `%`, `_` or backslash
    /// stand for itself.
    QString likeEscapeClause() const;

    /// An ORDER BY expression for the order in which rows lie in a table.
    QString storageOrder() const;
    /// Whether `storageOrder` keeps the order in which rows were added: SQLite's rowid does, while
    /// PostgreSQL puts a new row into the space of deleted ones, so that a table needs a counter of
    /// its own there (an identity column).
    bool storageOrderLasts() const { return m_kind == dbkSQLite; }
    /// What makes a column an identity column, after its type; blank where there is none.
    QString identityClause() const;

    /// True when the error means that another connection holds a lock the statement needs.
    bool isLockError(const QSqlError& error) const;

private:
    explicit Dialect(int kind) : m_kind(kind) {}
    int m_kind;
};

} // namespace searchdata
