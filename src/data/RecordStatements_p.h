#pragma once

// The statement texts of a record's load and save. Each names its tables and fields quoted; made
// once for the columns as they stand, not again for every record.

#include "searchdata/CFilterColumns.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace searchdata::detail {

class RecordStatements {
public:
    /// The texts of `columns`, made afresh when the catalog was read again or the connection, base
    /// table or key changed.
    static RecordStatements& of(const CFilterColumns& columns);

    /// A SELECT of the key and the fields of `wanted` that the search table has (`fields`) of the
    /// entry whose key is bound.
    const QString& searchRow(const QList<CFilterColumns::ColumnPtr>& wanted, QStringList& fields);
    /// One SELECT of the keyword lists of `keywords`: a row for each keyword, in no order, giving
    /// its list (counted from 0), its place in that list (a number), and the keyword. Blank where
    /// the places are no numbers (a row's physical address).
    const QString& keywordLists(const QList<CFilterColumns::ColumnPtr>& keywords);
    /// The keywords of a keyword column of the entry whose key is bound, in their stored order.
    const QString& selectKeywords(const CFilterColumn& column);
    /// The DELETE of one keyword (bound after the key) of an entry, and the INSERT of one.
    const QString& removeKeyword(const CFilterColumn& column);
    const QString& insertKeyword(const CFilterColumn& column);

private:
    explicit RecordStatements(const CFilterColumns& columns);
    struct Keyword {
        QString name; // the column's name when these were made
        QString select, remove, insert;
    };
    Keyword& keyword(const CFilterColumn& column);
    /// Whether `columns` are those of `made`, by name as well (a column may have been renamed).
    static bool sameColumns(const QList<CFilterColumns::ColumnPtr>& columns, const QList<CFilterColumns::ColumnPtr>& made,
                            const QStringList& names);
    static QStringList namesOf(const QList<CFilterColumns::ColumnPtr>& columns);

    const CFilterColumns& m_columns;
    // What the texts were made for.
    const DatabaseHandler* m_handler;
    const Catalog* m_catalog;
    quint64 m_generation;
    QString m_baseTable, m_keyColumn;

    QList<CFilterColumns::ColumnPtr> m_rowColumns;
    QStringList m_rowNames, m_rowFields;
    QString m_row;
    QList<CFilterColumns::ColumnPtr> m_listColumns;
    QStringList m_listNames;
    QString m_lists;
    QHash<const CFilterColumn*, Keyword> m_keywords;
};

} // namespace searchdata::detail
