#pragma once

#include "searchdata/Value.h"

#include <QList>
#include <QVariantList>
#include <QStringList>
#include <QVector>

namespace searchdata {

/// Cursor types and lock types as callers name them; a static cursor reads all rows at once.
enum CursorType : int { adOpenForwardOnly = 0, adOpenKeyset = 1, adOpenDynamic = 2, adOpenStatic = 3 };
enum LockType : int { adLockReadOnly = 1, adLockPessimistic = 2, adLockOptimistic = 3, adLockBatchOptimistic = 4 };

/// The rows that a SELECT gave, read from first to last. Rows are held in memory, so the database
/// stays free for other statements on the same connection while a recordset is open.
class Recordset {
public:
    /// `rows` hold the values of the fields `names`, in that order.
    Recordset(QStringList names, QVector<QVariantList> rows, QString source);

    bool EndOfFile() const { return m_position >= m_rows.size(); }
    void MoveNext() { if (!EndOfFile()) ++m_position; }
    void MoveFirst() { m_position = 0; }
    qint64 RecordCount() const { return m_rows.size(); }
    qint64 position() const { return m_position; }

    bool hasField(const QString& name) const;
    QStringList fieldNames() const;
    /// The field of the current row by name (ignoring case); Empty when there is no such field
    /// or no current row.
    Value field(const QString& name) const;
    /// The raw value, as the driver gave it.
    QVariant rawField(const QString& name) const;
    /// The raw value of the field at `index`, counted from 0 in the statement's order.
    QVariant rawFieldAt(qsizetype index) const;
    /// The statement or table that this recordset was opened on.
    const QString& source() const { return m_source; }

private:
    /// The position of the field `name`, or -1.
    qsizetype indexOf(const QString& name) const;

    QStringList m_names;
    QVector<QVariantList> m_rows;
    qsizetype m_position = 0;
    QString m_source;
};

/// Reads a field that may be absent from a row: false (and `value` untouched) when it is absent.
bool GetOptionalField(const Recordset& recordset, const QString& name, Value& value);

} // namespace searchdata
