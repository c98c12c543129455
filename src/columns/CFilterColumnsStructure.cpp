// The names and structures of the tables that hold a base table's search values.

#include "searchdata/CFilterColumns.h"

#include "platform/Guard_p.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/SchemaTool.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

} // namespace

QString CFilterColumns::SearchKeyword(const CFilterColumn* column) const
{
    if (column && column->ColumnType() == fcKeyword)
        return BaseTableName() + QStringLiteral("SearchKeyword") + column->Name();
    return BaseTableName() + QStringLiteral("SearchData");
}

QString CFilterColumns::Unknown_(const CFilterColumn* column, int n) const
{
    return column ? column->Name() + QLatin1Char('_') + QString::number(n) : QStringLiteral("Unknown_%1").arg(n);
}

QString CFilterColumns::KeywordStorageOrder(const CFilterColumn& column) const
{
    const Dialect& d = m_handler ? m_handler->dialect() : Dialect::forKind(dbkSQLite);
    if (!d.storageOrderLasts() && m_catalog && GetTableColumn(GetCatalogTable(*m_catalog, SearchKeyword(&column)), KeywordOrder()))
        return d.BracketName(KeywordOrder());
    return d.storageOrder();
}

std::shared_ptr<TableStructure> CFilterColumns::MyStructureDefault(const CFilterColumn& column, const QDateTime& timeStamp) const
{
    SD_PROC("MyStructureDefault");
    std::shared_ptr<TableStructure> result;
    SD_GUARDED([&] {
        if (!m_baseKeyColumn)
            detail::fail(QStringLiteral("the base table %1 has no key column").arg(BaseTableName()));
        const CatalogColumn& key = *m_baseKeyColumn;
        const int keySize = key.type == adVarWChar ? key.definedSize : 0;
        const QString table = SearchKeyword(&column);
        const bool keyword = column.ColumnType() == fcKeyword;

        auto population = TableStructure::NewStructure(table);
        if (!population || !population->AddColumn(key.name, key.type, keySize, 0, true))
            return;
        std::shared_ptr<TableStructure> s;
        if (keyword)
            s = TableStructure::NewStructure(table);
        else
            s = TableStructure::NewStructure(table, true, BaseTableName(), BracketedKeyColumnName(), population,
                                             m_baseTableObject ? m_baseTableObject->SearchSelectionCriteria() : QString());
        if (!s || !s->AddColumn(key.name, key.type, keySize, 0, false))
            return;

        const QString defaultText = keyword ? QString() : column.SQLDefaultValue(timeStamp);
        const bool textual = keyword || column.ColumnType() == fcText || column.ColumnType() == fcNote;
        const bool added = textual
                               ? s->AddColumn(column.Name(), column.ADOFieldType(), column.TextLengthInDB(), 0, !keyword, !keyword, defaultText)
                               : s->AddColumn(column.Name(), column.ADOFieldType(), 0, 0, true, true, defaultText);
        if (!added)
            return;
        const QStringList uniqueColumns = keyword ? QStringList{key.name, column.Name()} : QStringList{key.name};
        if (!s->AddUniqueKey(UK_(&column), uniqueColumns))
            return;
        // The filter looks keywords up by value.
        if (keyword && !s->AddIndex(QStringLiteral("IX_") + table, {column.Name()}))
            return;
        // A keyword list is read back in the order it was saved.
        if (keyword && m_handler && !m_handler->dialect().storageOrderLasts() && !s->AddIdentityColumn(KeywordOrder()))
            return;
        if (!s->AddForeignKey(QString(), {key.name}, BaseTableName(), {key.name}, true))
            return;
        result = s;
    });
    return result;
}

std::shared_ptr<TableStructure> CFilterColumns::BuildDefaultTable(IProgress* progress, const CFilterColumn& column, bool flag,
                                                                  const QDateTime& timeStamp)
{
    SD_PROC("BuildDefaultTable");
    std::shared_ptr<TableStructure> result;
    SD_GUARDED([&] {
        const std::shared_ptr<TableStructure> structure = MyStructureDefault(column, timeStamp);
        if (!structure || !m_catalog)
            return;
        if (!schemaTool().CreateTable(progress, *m_catalog, *structure))
            detail::fail(QStringLiteral("the table %1 could not be made").arg(structure->name()));
        // `flag`: whether the check also looks at the picklist tables of an earlier version.
        CheckForeignKeysAndIndexes(progress, 1, flag, true);
        if (GetCatalogTable(*m_catalog, SearchKeyword(&column)))
            result = structure;
    });
    return result;
}

std::optional<StructureColumn> CFilterColumns::MakeLinkColumn() const
{
    auto s = TableStructure::NewStructure(definitionTableName());
    if (!s || !s->AddColumn(QStringLiteral("MergeName"), adVarWChar, 0, 0, true))
        return std::nullopt;
    return s->ColumnNamed(QStringLiteral("MergeName"));
}

std::unique_ptr<Recordset> CFilterColumns::OpenSearchTable(const ISearchBaseEntry* entry, const QString& table, const QString& seek,
                                                           int& mode, bool create)
{
    SD_PROC("OpenSearchTable");
    std::unique_ptr<Recordset> result;
    SD_GUARDED([&] {
        if (!m_handler)
            return;
        DatabaseHandler& db = *m_handler;
        const QString select = QStringLiteral("SELECT * FROM %1 WHERE %2").arg(db.BracketName(table), seek);
        if (mode == 0) {
            result = db.OpenSqlRecordset(select, adOpenStatic, adLockReadOnly);
            return;
        }
        if (mode != 1)
            return;
        result = db.OpenSqlRecordset(select, adOpenDynamic, adLockOptimistic);
        if (!result || !result->EndOfFile())
            return;
        if (!create || !entry) {
            result.reset();
            return;
        }
        // The entry has no row yet: it gets one, with its key and the declared defaults.
        const QString id = m_baseKeyColumn && m_baseKeyColumn->type == adVarWChar ? db.SqlQuote(QString::number(entry->Id()))
                                                                                   : QString::number(entry->Id());
        if (!db.ExecuteSql(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(db.BracketName(table), BracketedKeyColumnName(), id)))
            result.reset();
        else
            result = db.OpenSqlRecordset(select, adOpenDynamic, adLockOptimistic);
    });
    return result;
}

} // namespace searchdata
