#pragma once

#include "searchdata/CCommon.h"
#include "searchdata/Catalog.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/Profile.h"
#include "searchdata/TableStructure.h"
#include "support/TestDatabase.h"

namespace searchdata::test {

/// A host's base table as the library sees it.
class TestBaseTable : public ISearchBaseTable {
public:
    explicit TestBaseTable(QString name, QString criteria = {}) : name(std::move(name)), criteria(std::move(criteria)) {}
    QString TableName() const override { return name; }
    QString SearchSelectionCriteria() const override { return criteria; }
    QString name;
    QString criteria;
};

/// The host's description of a base table: its key as the primary key.
std::shared_ptr<TableStructure> baseStructureOf(const QString& table, const QStringList& keyColumns);

/// A database with a base table "Files" (FileId, Name, Archived) of `rowCount` rows, every third
/// one archived, and what a host hands the library to open a search on it.
class SearchTest : public DatabaseTest {
protected:
    void SetUp() override;
    /// Makes a base table with an integer key and `rows` rows.
    void makeBaseTable(const QString& table, const QString& key, int rows);
    /// Opens a search on a base table through the library's entry point.
    std::shared_ptr<CSearchFilter> open(const QString& table = QStringLiteral("Files"), const QString& key = QStringLiteral("FileId"));
    /// The collection of an open that must succeed.
    std::shared_ptr<CFilterColumns> columns(const QString& table = QStringLiteral("Files"), const QString& key = QStringLiteral("FileId"));
    /// Row count of a table, or -1 when it cannot be read.
    qint64 rows(const QString& table, const QString& where = QStringLiteral("1 = 1"));
    QString q(const QString& name) { return db().BracketName(name); }

    std::shared_ptr<Catalog> catalog;
    std::shared_ptr<TestBaseTable> files;
    std::shared_ptr<IProfile> profile;
    int rowCount = 30;
};

} // namespace searchdata::test
