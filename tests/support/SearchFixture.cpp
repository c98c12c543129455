#include "support/SearchFixture.h"

namespace searchdata::test {

std::shared_ptr<TableStructure> baseStructureOf(const QString& table, const QStringList& keyColumns)
{
    auto s = TableStructure::NewStructure(table);
    for (const QString& k : keyColumns)
        (void)s->AddColumn(k, adInteger, 0, 0, false);
    (void)s->AddPrimaryKey(QStringLiteral("PK_") + table, keyColumns);
    return s;
}

void SearchTest::SetUp()
{
    DatabaseTest::SetUp();
    if (HasFatalFailure())
        return;
    makeBaseTable(QStringLiteral("Files"), QStringLiteral("FileId"), rowCount);
    catalog = std::make_shared<Catalog>(testDb().handler());
    files = std::make_shared<TestBaseTable>(QStringLiteral("Files"));
    profile = std::make_shared<IniProfile>(testDb().tempDir().filePath(QStringLiteral("profile.ini")));
}

void SearchTest::makeBaseTable(const QString& table, const QString& key, int count)
{
    const QString boolType = db().dialect().declaredType(adBoolean, 0);
    SD_ASSERT_SQL(testDb(), QStringLiteral("CREATE TABLE %1 (%2 INTEGER PRIMARY KEY, %3 VARCHAR(255), %4 %5)")
                                .arg(q(table), q(key), q(QStringLiteral("Name")), q(QStringLiteral("Archived")), boolType));
    TransactionState tx;
    ASSERT_TRUE(db().BeginTableTransaction(tx));
    for (int i = 1; i <= count; ++i)
        ASSERT_TRUE(db().ExecuteSql(QStringLiteral("INSERT INTO %1 VALUES (%2, %3, %4)")
                                        .arg(q(table))
                                        .arg(i)
                                        .arg(db().SqlQuote(QStringLiteral("file %1").arg(i)), db().SqlBoolean(i % 3 == 0))));
    ASSERT_TRUE(db().CommitTableTransaction(tx));
    db().EndTableTransaction(tx);
    if (catalog)
        catalog->Refresh();
}

std::shared_ptr<CSearchFilter> SearchTest::open(const QString& table, const QString& key)
{
    catalog->Refresh();
    auto base = table == files->name ? files : std::make_shared<TestBaseTable>(table);
    return CCommon().CreateSearchFilterObject(testDb().handler(), base, catalog, profile, 0, baseStructureOf(table, {key}));
}

std::shared_ptr<CFilterColumns> SearchTest::columns(const QString& table, const QString& key)
{
    auto filter = open(table, key);
    EXPECT_NE(filter->FilterColumns(), nullptr) << "opening a search on " << qPrintable(table) << " failed";
    return filter->FilterColumns();
}

qint64 SearchTest::rows(const QString& table, const QString& where)
{
    const QVariant n = testDb().scalar(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE %2").arg(q(table), where));
    return n.isValid() ? n.toLongLong() : -1;
}

} // namespace searchdata::test
