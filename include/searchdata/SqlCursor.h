#pragma once

#include "searchdata/Value.h"

#include <QSqlQuery>
#include <QString>
#include <QVariant>

namespace searchdata {

/// The rows of a SELECT, read one at a time from first to last, for results too large to hold as a
/// `Recordset`. Made by `DatabaseHandler::OpenSqlCursor`; it must be closed (destroyed) before its
/// connection goes. Other statements may run on the connection while a cursor is open, but a cursor on
/// a table that those statements change may or may not see the change.
class SqlCursor {
public:
    /// Takes over `executed`, a query that has just run its SELECT, and moves to the first row.
    /// `executed` is left empty.
    SqlCursor(QSqlQuery& executed, QString source);
    SqlCursor(const SqlCursor&) = delete;
    SqlCursor& operator=(const SqlCursor&) = delete;

    bool EndOfFile() const { return m_endOfFile; }
    /// Moves to the next row; at the last one to end of file. A read that fails ends the rows too,
    /// and is reported.
    void MoveNext();

    bool hasField(const QString& name) const { return fieldIndex(name) >= 0; }
    /// Position of a field by name, ignoring case; -1 when there is none.
    int fieldIndex(const QString& name) const;
    /// The raw value of a field of the current row, as the driver gave it; invalid at end of file.
    QVariant value(int index) const { return m_endOfFile ? QVariant() : m_query.value(index); }
    /// The field of the current row by name; Empty when there is no such field or no current row.
    Value field(const QString& name) const;

    /// True when reading a row failed, rather than the rows coming to an end.
    bool failed() const { return !m_error.isEmpty(); }
    /// The database's message of a failed read.
    const QString& lastError() const { return m_error; }
    /// The statement this cursor reads.
    const QString& source() const { return m_source; }

private:
    void fetch();

    QSqlQuery m_query;
    QString m_source;
    QString m_error;
    bool m_endOfFile = true;
};

} // namespace searchdata
