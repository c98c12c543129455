#include "searchdata/CFilterTerms.h"

#include "platform/Guard_p.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Dialect.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterTerms";

/// What stands for a term whose compare value does not convert to its class: it matches no record.
const QString kNoRecord = QStringLiteral("1 = 0");

} // namespace

CFilterTerms::CFilterTerms() = default;

CFilterTerms::CFilterTerms(std::shared_ptr<CFilterColumns> columns) : m_columns(std::move(columns)) {}

CFilterTerms::~CFilterTerms() = default;

void CFilterTerms::setMyColumns(std::shared_ptr<CFilterColumns> columns)
{
    m_columns = std::move(columns);
    for (const TermPtr& term : m_terms)
        term->setOwner(m_columns);
}

CFilterTerms::TermPtr CFilterTerms::Add(EConjunctions conjunction, const QString& table, const QString& field,
                                        FilterComparisonClasses comparisonClass, EComparisonOperations operation,
                                        const QString& compareTo)
{
    SD_PROC("Add");
    TermPtr term;
    SD_GUARDED([&] {
        term = std::make_shared<CFilterTerm>();
        term->setOwner(m_columns);
        term->setConjunction(conjunction);
        term->setField(field);
        term->setTable(table);
        // Only the search side has columns; the base table's own fields stand for themselves.
        if (m_columns && table != m_columns->BaseTableName())
            term->setColumn(m_columns->Item(field));
        term->setComparisonClass(comparisonClass);
        term->setOperation(operation);
        term->setCompareTo(compareTo);
        term->setSequence(static_cast<qint16>(m_terms.size() + 1));
        m_terms.append(term);
    });
    return term;
}

CFilterTerms::TermPtr CFilterTerms::Item(qint32 position) const
{
    if (position < 1 || position > m_terms.size())
        return nullptr;
    return m_terms.at(position - 1);
}

void CFilterTerms::Clear()
{
    m_terms.clear();
}

QString CFilterTerms::SQLString() const
{
    SD_PROC("SQLString");
    QString result;
    SD_GUARDED([&] { result = build(false).sql; });
    return result;
}

ParameterizedSql CFilterTerms::SQLStringWithParameters() const
{
    SD_PROC("SQLStringWithParameters");
    ParameterizedSql result;
    SD_GUARDED([&] { result = build(true); });
    return result;
}

ParameterizedSql CFilterTerms::build(bool withParameters) const
{
    if (m_terms.isEmpty())
        return {};
    if (!m_columns)
        detail::fail(QStringLiteral("the filter has no columns"));
    const CFilterColumns& columns = *m_columns;
    const QString base = columns.BaseTableName();
    const QString key = columns.KeyColumnName();
    if (base.isEmpty() || key.isEmpty())
        detail::fail(QStringLiteral("the filter's columns have no base table"));
    const Dialect& d = columns.Handler() ? columns.Handler()->dialect() : Dialect::forKind(dbkSQLite);

    const QString q = d.QualifiedName(base, key);
    QString filter;
    QString conjunction;
    QString join;
    QVariantList values;
    auto compareValue = [&](const CFilterTerm& term) {
        if (!withParameters)
            return term.SQLCompareTo();
        QVariant value;
        const QString marker = term.SQLCompareToParameter(value);
        if (!marker.isEmpty())
            values.append(value);
        return marker;
    };

    for (const TermPtr& term : m_terms) {
        // The first term's conjunction means nothing; a later term without one repeats the one before,
        // or is joined by AND when there was none before.
        if (!filter.isEmpty()) {
            if (term->Conjunction() != kvoCJ_None)
                conjunction = term->Conjunction() == kvoCJ_OR ? QStringLiteral(" OR ") : QStringLiteral(" AND ");
            else if (conjunction.isEmpty())
                conjunction = QStringLiteral(" AND ");
        }

        if (term->ComparisonClass() == kvoCC_Keyword) {
            const QString compareTo = compareValue(*term);
            if (compareTo.isEmpty()) {
                filter += conjunction + kNoRecord;
                continue;
            }
            const QString keywordTable = columns.SearchKeyword(term->Column().get());
            filter += conjunction + q + (term->Operation() == kvoOP_Excludes ? QStringLiteral(" NOT") : QString())
                      + QStringLiteral(" IN (SELECT ") + q + QStringLiteral(" FROM ") + d.BracketName(base) + QStringLiteral(", ")
                      + d.BracketName(keywordTable) + QStringLiteral(" WHERE ") + q + QStringLiteral(" = ")
                      + d.QualifiedName(keywordTable, key) + QStringLiteral(" AND ") + d.QualifiedName(keywordTable, term->Field())
                      + QStringLiteral(" = ") + compareTo + QLatin1Char(')');
            continue;
        }

        if (term->HasColumn())
            join = columns.SearchKeyword(term->Column().get());
        const QString op = term->SQLOperator();
        if (op.isEmpty())
            continue;
        QString compareTo;
        if (term->ComparisonClass() != kvoCC_Boolean) {
            compareTo = compareValue(*term);
            // The value did not convert (reported): the term selects nothing, and the others keep
            // their conjunctions.
            if (compareTo.isEmpty()) {
                filter += conjunction + kNoRecord;
                continue;
            }
        }
        filter += conjunction + term->SQLField() + op + compareTo;
        if (term->Operation() == kvoOP_IsLike || term->Operation() == kvoOP_IsNotLike)
            filter += d.likeEscapeClause();
    }

    if (filter.isEmpty())
        return {};
    ParameterizedSql result;
    result.sql = q + QStringLiteral(" IN (SELECT ") + q + QStringLiteral(" FROM ") + d.BracketName(base);
    if (!join.isEmpty())
        result.sql += QStringLiteral(" INNER JOIN ") + d.BracketName(join) + QStringLiteral(" ON ") + q + QStringLiteral(" = ")
                      + d.QualifiedName(join, key);
    result.sql += QStringLiteral(" WHERE (") + filter + QStringLiteral("))");
    result.values = values;
    return result;
}

} // namespace searchdata
