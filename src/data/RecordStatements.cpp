#include "data/RecordStatements_p.h"

#include "searchdata/DatabaseHandler.h"

namespace searchdata::detail {

RecordStatements::RecordStatements(const CFilterColumns& columns)
    : m_columns(columns), m_handler(columns.Handler().get()), m_catalog(columns.Catalog().get()),
      m_generation(m_catalog ? m_catalog->generation() : 0), m_baseTable(columns.BaseTableName()), m_keyColumn(columns.KeyColumnName())
{
}

RecordStatements& RecordStatements::of(const CFilterColumns& columns)
{
    const RecordStatements* made = columns.m_statements.get();
    const Catalog* catalog = columns.Catalog().get();
    if (!made || made->m_handler != columns.Handler().get() || made->m_catalog != catalog
        || made->m_generation != (catalog ? catalog->generation() : 0) || made->m_baseTable != columns.BaseTableName()
        || made->m_keyColumn != columns.KeyColumnName())
        columns.m_statements.reset(new RecordStatements(columns));
    return *columns.m_statements;
}

QStringList RecordStatements::namesOf(const QList<CFilterColumns::ColumnPtr>& columns)
{
    QStringList names;
    names.reserve(columns.size());
    for (const CFilterColumns::ColumnPtr& column : columns)
        names << column->Name();
    return names;
}

bool RecordStatements::sameColumns(const QList<CFilterColumns::ColumnPtr>& columns, const QList<CFilterColumns::ColumnPtr>& made,
                                   const QStringList& names)
{
    if (columns.size() != made.size())
        return false;
    for (qsizetype i = 0; i < columns.size(); ++i)
        if (columns[i] != made[i] || columns[i]->Name() != names[i])
            return false;
    return true;
}

const QString& RecordStatements::searchRow(const QList<CFilterColumns::ColumnPtr>& wanted, QStringList& fields)
{
    if (m_row.isEmpty() || !sameColumns(wanted, m_rowColumns, m_rowNames)) {
        const DatabaseHandler& db = *m_columns.Handler();
        const QString table = m_columns.SearchKeyword(nullptr);
        // A field that the table lacks is not asked for; its column keeps what it holds.
        const CatalogTablePtr known = m_columns.Catalog() ? GetCatalogTable(*m_columns.Catalog(), table) : nullptr;
        m_rowFields.clear();
        QString select = m_columns.BracketedKeyColumnName();
        for (const CFilterColumns::ColumnPtr& column : wanted)
            if (const std::optional<CatalogColumn> field = GetTableColumn(known, column->Name())) {
                select += QStringLiteral(", ") + db.BracketName(field->name);
                m_rowFields << field->name;
            }
        m_row = QStringLiteral("SELECT ") + select + QStringLiteral(" FROM ") + db.BracketName(table) + QStringLiteral(" WHERE ")
              + m_columns.BracketedKeyColumnName() + QStringLiteral(" = ?");
        m_rowColumns = wanted;
        m_rowNames = namesOf(wanted);
    }
    fields = m_rowFields;
    return m_row;
}

const QString& RecordStatements::keywordLists(const QList<CFilterColumns::ColumnPtr>& keywords)
{
    if (!m_listColumns.isEmpty() && sameColumns(keywords, m_listColumns, m_listNames))
        return m_lists;
    const DatabaseHandler& db = *m_columns.Handler();
    const Dialect& dialect = db.dialect();
    const QString keyTest = QStringLiteral(" WHERE ") + m_columns.BracketedKeyColumnName() + QStringLiteral(" = ?");
    m_lists.clear();
    for (qsizetype k = 0; k < keywords.size(); ++k) {
        const QString order = m_columns.KeywordStorageOrder(*keywords[k]);
        if (order == dialect.storageOrder() && !dialect.storageOrderLasts()) {
            m_lists.clear();
            break;
        }
        m_lists += (k ? QStringLiteral(" UNION ALL SELECT ") : QStringLiteral("SELECT ")) + QString::number(k) + QStringLiteral(", ") + order
                 + QStringLiteral(", ") + db.BracketName(keywords[k]->Name()) + QStringLiteral(" FROM ")
                 + db.BracketName(m_columns.SearchKeyword(keywords[k].get())) + keyTest;
    }
    m_listColumns = keywords;
    m_listNames = namesOf(keywords);
    return m_lists;
}

RecordStatements::Keyword& RecordStatements::keyword(const CFilterColumn& column)
{
    Keyword& texts = m_keywords[&column];
    if (texts.name == column.Name() && !texts.select.isEmpty())
        return texts;
    const DatabaseHandler& db = *m_columns.Handler();
    const QString table = db.BracketName(m_columns.SearchKeyword(&column));
    const QString field = db.BracketName(column.Name());
    const QString key = m_columns.BracketedKeyColumnName();
    texts.name = column.Name();
    texts.select = QStringLiteral("SELECT ") + field + QStringLiteral(" FROM ") + table + QStringLiteral(" WHERE ") + key
                 + QStringLiteral(" = ? ORDER BY ") + m_columns.KeywordStorageOrder(column);
    texts.remove = QStringLiteral("DELETE FROM ") + table + QStringLiteral(" WHERE ") + key + QStringLiteral(" = ? AND ") + field
                 + QStringLiteral(" = ?");
    // The unique key of the keyword table takes each keyword of an entry once; a keyword that another
    // user adds at the same moment waits for that user's transaction and then adds nothing.
    texts.insert = QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") + key + QStringLiteral(", ") + field
                 + QStringLiteral(") VALUES (?, ?) ON CONFLICT DO NOTHING");
    return texts;
}

const QString& RecordStatements::selectKeywords(const CFilterColumn& column)
{
    return keyword(column).select;
}

const QString& RecordStatements::removeKeyword(const CFilterColumn& column)
{
    return keyword(column).remove;
}

const QString& RecordStatements::insertKeyword(const CFilterColumn& column)
{
    return keyword(column).insert;
}

} // namespace searchdata::detail
