#pragma once

// Opening a search over a base table that a test has made, and making the search-side tables by SQL
// in the shapes the library gives them.

#include "searchdata/AdoTypes.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/Profile.h"
#include "searchdata/TableStructure.h"
#include "support/TestDatabase.h"

#include <QList>
#include <QStringList>
#include <gtest/gtest.h>
#include <memory>
#include <utility>

namespace searchdata::test {

/// A field of a test table: name and type code.
using FieldSpec = std::pair<QString, int>;

/// CREATE TABLE for `table` with an integer key and `fields`, in the database's own declared types.
inline QString createTableSql(const DatabaseHandler& db, const QString& table, const QString& key, const QList<FieldSpec>& fields,
                              bool keyIsPrimary = true)
{
    const Dialect& d = db.dialect();
    QString sql = QStringLiteral("CREATE TABLE ") + d.BracketName(table) + QStringLiteral(" (") + d.BracketName(key)
                  + QStringLiteral(" INTEGER NOT NULL") + (keyIsPrimary ? QStringLiteral(" PRIMARY KEY") : QString());
    for (const auto& [name, type] : fields)
        sql += QStringLiteral(", ") + d.BracketName(name) + QLatin1Char(' ') + d.declaredType(type, type == adVarWChar ? 255 : 0);
    return sql + QLatin1Char(')');
}

/// The search table of `base`: the link column, unique, and one field per column.
inline QStringList searchTableSql(const DatabaseHandler& db, const QString& base, const QString& key, const QList<FieldSpec>& fields)
{
    const QString table = base + QStringLiteral("SearchData");
    return {createTableSql(db, table, key, fields, false),
            QStringLiteral("CREATE UNIQUE INDEX ") + db.BracketName(QStringLiteral("UK_") + table) + QStringLiteral(" ON ")
                + db.BracketName(table) + QStringLiteral(" (") + db.BracketName(key) + QLatin1Char(')')};
}

/// The keyword table of column `column`: unique on link and value, and an index on the value alone.
inline QStringList keywordTableSql(const DatabaseHandler& db, const QString& base, const QString& key, const QString& column)
{
    const QString table = base + QStringLiteral("SearchKeyword") + column;
    return {QStringLiteral("CREATE TABLE ") + db.BracketName(table) + QStringLiteral(" (") + db.BracketName(key)
                + QStringLiteral(" INTEGER NOT NULL, ") + db.BracketName(column) + QLatin1Char(' ')
                + db.dialect().declaredType(adVarWChar, 255) + QStringLiteral(" NOT NULL)"),
            QStringLiteral("CREATE UNIQUE INDEX ") + db.BracketName(QStringLiteral("UK_") + table) + QStringLiteral(" ON ")
                + db.BracketName(table) + QStringLiteral(" (") + db.BracketName(key) + QStringLiteral(", ") + db.BracketName(column)
                + QLatin1Char(')'),
            QStringLiteral("CREATE INDEX ") + db.BracketName(QStringLiteral("IX_") + table) + QStringLiteral(" ON ") + db.BracketName(table)
                + QStringLiteral(" (") + db.BracketName(column) + QLatin1Char(')')};
}

/// Opens a search on the existing table `base` whose integer key is `key`; `fields` are the base
/// table's other fields as the host describes them.
inline std::shared_ptr<CSearchFilter> openSearch(const std::shared_ptr<DatabaseHandler>& db, const QString& base, const QString& key,
                                                 const QList<FieldSpec>& fields, std::shared_ptr<IProfile> profile = {})
{
    auto structure = TableStructure::NewStructure(base);
    bool built = structure && structure->AddColumn(key, adInteger, 0, 0, false);
    for (const auto& [name, type] : fields)
        built = built && structure->AddColumn(name, type, type == adVarWChar ? 255 : 0);
    built = built && structure->AddPrimaryKey(QStringLiteral("PK_") + base, {key});
    if (!built) {
        ADD_FAILURE() << "cannot describe " << qPrintable(base);
        return nullptr;
    }
    auto search = std::make_shared<CSearchFilter>();
    search->OpenSearch(db, std::make_shared<NamedBaseTable>(base), std::make_shared<Catalog>(db), std::move(profile), 0, structure);
    if (!search->FilterColumns())
        ADD_FAILURE() << "the search on " << qPrintable(base) << " did not open";
    return search;
}

} // namespace searchdata::test
