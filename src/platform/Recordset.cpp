#include "searchdata/Recordset.h"

namespace searchdata {

Recordset::Recordset(const QSqlRecord& shape, QVector<QSqlRecord> rows, QString source)
    : m_shape(shape), m_rows(std::move(rows)), m_source(std::move(source))
{
}

bool Recordset::hasField(const QString& name) const
{
    return m_shape.indexOf(name) >= 0;
}

QStringList Recordset::fieldNames() const
{
    QStringList names;
    for (int i = 0; i < m_shape.count(); ++i)
        names << m_shape.fieldName(i);
    return names;
}

QVariant Recordset::rawField(const QString& name) const
{
    if (EndOfFile())
        return {};
    return m_rows.at(m_position).value(name);
}

Value Recordset::field(const QString& name) const
{
    if (EndOfFile() || !hasField(name))
        return {};
    return Value::fromVariant(m_rows.at(m_position).value(name));
}

bool GetOptionalField(const Recordset& recordset, const QString& name, Value& value)
{
    if (!recordset.hasField(name))
        return false;
    value = recordset.field(name);
    return true;
}

} // namespace searchdata
