#include "searchdata/Recordset.h"

namespace searchdata {

Recordset::Recordset(QStringList names, QVector<QVariantList> rows, QString source)
    : m_names(std::move(names)), m_rows(std::move(rows)), m_source(std::move(source))
{
}

qsizetype Recordset::indexOf(const QString& name) const
{
    // Callers mostly spell a field as the statement did; other capitals are the rare case.
    const qsizetype exact = m_names.indexOf(name);
    if (exact >= 0)
        return exact;
    for (qsizetype i = 0; i < m_names.size(); ++i)
        if (m_names.at(i).compare(name, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

bool Recordset::hasField(const QString& name) const
{
    return indexOf(name) >= 0;
}

QStringList Recordset::fieldNames() const
{
    return m_names;
}

QVariant Recordset::rawField(const QString& name) const
{
    const qsizetype at = EndOfFile() ? -1 : indexOf(name);
    return at < 0 ? QVariant() : m_rows.at(m_position).at(at);
}

QVariant Recordset::rawFieldAt(qsizetype index) const
{
    return EndOfFile() || index < 0 || index >= m_names.size() ? QVariant() : m_rows.at(m_position).at(index);
}

Value Recordset::field(const QString& name) const
{
    const qsizetype at = EndOfFile() ? -1 : indexOf(name);
    return at < 0 ? Value() : Value::fromVariant(m_rows.at(m_position).at(at));
}

bool GetOptionalField(const Recordset& recordset, const QString& name, Value& value)
{
    if (!recordset.hasField(name))
        return false;
    value = recordset.field(name);
    return true;
}

} // namespace searchdata
