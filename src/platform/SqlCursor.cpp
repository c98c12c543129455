#include "searchdata/SqlCursor.h"

#include "searchdata/Diagnostics.h"

#include <QSqlError>
#include <QSqlRecord>

namespace searchdata {

SqlCursor::SqlCursor(QSqlQuery& executed, QString source) : m_source(std::move(source))
{
    // The caller's query object finishes when it goes out of scope; the result lives on here.
    m_query.swap(executed);
    fetch();
}

void SqlCursor::fetch()
{
    m_endOfFile = !m_query.next();
    if (!m_endOfFile || !m_query.lastError().isValid())
        return;
    m_error = m_query.lastError().text();
    Diagnostics::instance().report({0, QStringLiteral("%1 [%2]").arg(m_error, m_source), QStringLiteral("MoveNext"),
                                    QStringLiteral("SqlCursor"), __LINE__, {}});
}

void SqlCursor::MoveNext()
{
    if (!m_endOfFile)
        fetch();
}

int SqlCursor::fieldIndex(const QString& name) const
{
    const QSqlRecord shape = m_query.record();
    for (int i = 0; i < shape.count(); ++i)
        if (shape.fieldName(i).compare(name, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

Value SqlCursor::field(const QString& name) const
{
    const int i = fieldIndex(name);
    if (m_endOfFile || i < 0)
        return {};
    return Value::fromVariant(m_query.value(i));
}

} // namespace searchdata
