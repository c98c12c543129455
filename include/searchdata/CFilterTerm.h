#pragma once

#include "searchdata/Enums.h"

#include <QString>
#include <QVariant>
#include <memory>

namespace searchdata {

class CFilterColumn;
class CFilterColumns;
class Dialect;

/// One term of a filter: a field of the base table or a search column, compared with what the user
/// typed. It knows the SQL pieces of itself; `CFilterTerms` puts them together.
class CFilterTerm {
public:
    /// An empty term; `CFilterTerms::Add` fills it in.
    CFilterTerm();
    ~CFilterTerm();

    /// Position in the filter, from 1.
    qint16 Sequence() const { return m_sequence; }
    void setSequence(qint16 sequence) { m_sequence = sequence; }
    /// Name of the column or base field, unquoted.
    QString Field() const { return m_field; }
    void setField(const QString& field) { m_field = field; }
    /// How the field compares; decides the operations and the form of the compare value.
    FilterComparisonClasses ComparisonClass() const { return m_class; }
    void setComparisonClass(FilterComparisonClasses comparisonClass) { m_class = comparisonClass; }
    /// The comparison made.
    EComparisonOperations Operation() const { return m_operation; }
    void setOperation(EComparisonOperations operation) { m_operation = operation; }
    /// The value as the user typed it.
    QString CompareTo() const { return m_compareTo; }
    void setCompareTo(const QString& compareTo) { m_compareTo = compareTo; }
    /// How the term joins the terms before it.
    EConjunctions Conjunction() const { return m_conjunction; }
    void setConjunction(EConjunctions conjunction) { m_conjunction = conjunction; }
    /// The table that holds `Field`.
    QString Table() const { return m_table; }
    void setTable(const QString& table) { m_table = table; }
    /// The search column, set only when `Table` is not the base table.
    const std::shared_ptr<CFilterColumn>& Column() const { return m_column; }
    void setColumn(std::shared_ptr<CFilterColumn> column) { m_column = std::move(column); }
    /// True when the term is on a search column rather than a field of the base table.
    bool HasColumn() const { return m_column != nullptr; }

    /// The collection whose database writes the term's SQL; without one, SQLite's forms are used.
    void setOwner(std::weak_ptr<const CFilterColumns> owner) { m_owner = std::move(owner); }

    /// The field, qualified by its table and quoted.
    QString SQLField() const;
    /// The comparison operator with its blanks (" = ", " LIKE ", " <> 0"...); blank when the
    /// operation does not suit the comparison class.
    QString SQLOperator() const;
    /// The compare value as an SQL literal of the class. Blank for classes without one, and when the
    /// value does not convert to the class (reported to diagnostics); the filter then puts a false
    /// predicate in the term's place.
    QString SQLCompareTo() const;
    /// The same value as a positional marker ("?", with the explicit conversion the database needs)
    /// and the value to bind to it; blank, and `value` untouched, when `SQLCompareTo` is blank.
    QString SQLCompareToParameter(QVariant& value) const;

private:
    struct Operand;
    Operand compareOperand() const;
    const Dialect& dialect() const;
    int baseFieldType() const;

    qint16 m_sequence = 0;
    QString m_field;
    FilterComparisonClasses m_class = kvoCC_Unknown;
    EComparisonOperations m_operation = kvoOP_IsFalse;
    QString m_compareTo;
    EConjunctions m_conjunction = kvoCJ_None;
    QString m_table;
    std::shared_ptr<CFilterColumn> m_column;
    std::weak_ptr<const CFilterColumns> m_owner;
};

} // namespace searchdata
