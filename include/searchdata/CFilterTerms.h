#pragma once

#include "searchdata/CFilterTerm.h"
#include "searchdata/Enums.h"
#include "searchdata/ISqlFilterTerms.h"

#include <QList>
#include <QString>
#include <QVariantList>
#include <memory>

namespace searchdata {

class CFilterColumns;

/// A predicate with positional "?" markers and the values to bind to them, in order.
struct ParameterizedSql {
    QString sql;
    QVariantList values;
};

/// A filter: an ordered list of terms over the search columns and fields of one base table, and the
/// one SQL predicate on the base table's link column that they make together.
class CFilterTerms : public ISqlFilterTerms {
public:
    using TermPtr = std::shared_ptr<CFilterTerm>;

    /// An empty filter; it needs its columns before it can give SQL.
    CFilterTerms();
    /// An empty filter over `columns`.
    explicit CFilterTerms(std::shared_ptr<CFilterColumns> columns);
    ~CFilterTerms() override;

    /// True when the filter has at least one term.
    bool HasTerms() const override { return !m_terms.isEmpty(); }
    /// `[B].[K] IN (SELECT ...)`: the records whose data meet the terms, to AND into a query that
    /// has the base table in its FROM clause. A term whose operation does not suit its class is left
    /// out; one whose compare value does not convert to its class matches no record (a false
    /// predicate stands in its place, reported to diagnostics). Blank without terms, and when every
    /// term was left out.
    QString SQLString() const override;
    /// The predicate of `SQLString` with the compare values as bound parameters.
    ParameterizedSql SQLStringWithParameters() const;

    /// The terms in order, for walking.
    const QList<TermPtr>& NewEnum() const { return m_terms; }
    QList<TermPtr>::const_iterator begin() const { return m_terms.cbegin(); }
    QList<TermPtr>::const_iterator end() const { return m_terms.cend(); }

    /// Appends a term. A field of a table other than the base table (compared as the names are
    /// spelled) is looked up among the columns and linked to its column.
    TermPtr Add(EConjunctions conjunction, const QString& table, const QString& field,
                FilterComparisonClasses comparisonClass, EComparisonOperations operation, const QString& compareTo);
    /// The number of terms.
    qint32 Count() const { return static_cast<qint32>(m_terms.size()); }
    /// The term at `position`, from 1; null outside the list.
    TermPtr Item(qint32 position) const;
    /// Removes every term.
    void Clear();

    /// The columns of the base table, through which all SQL names come.
    const std::shared_ptr<CFilterColumns>& MyColumns() const { return m_columns; }
    void setMyColumns(std::shared_ptr<CFilterColumns> columns);

private:
    ParameterizedSql build(bool withParameters) const;

    QList<TermPtr> m_terms;
    std::shared_ptr<CFilterColumns> m_columns;
};

} // namespace searchdata
