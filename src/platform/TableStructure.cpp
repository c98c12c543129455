#include "searchdata/TableStructure.h"

#include "platform/Names_p.h"

#include "platform/Guard_p.h"

#include <algorithm>

namespace searchdata {

using detail::findNamed;
using detail::sameNames;

namespace {

constexpr const char* kModule = "TableStructure";

bool knownType(int code)
{
    switch (code) {
    case adSmallInt: case adInteger: case adSingle: case adDouble: case adCurrency: case adDate: case adBoolean:
    case adDecimal: case adTinyInt: case adUnsignedTinyInt: case adBigInt: case adGUID: case adBinary: case adChar:
    case adNumeric: case adDBTime: case adDBTimeStamp: case adVarWChar: case adLongVarWChar: case adVarBinary:
    case adLongVarBinary:
        return true;
    default:
        return false;
    }
}


} // namespace

TableStructure::TableStructure(QString name) : m_name(std::move(name)) {}

std::shared_ptr<TableStructure> TableStructure::NewStructure(const QString& name, bool fill, const QString& baseTableName,
                                                             const QString& bracketedKey,
                                                             std::shared_ptr<const TableStructure> population,
                                                             const QString& selectionText)
{
    SD_PROC("NewStructure");
    std::shared_ptr<TableStructure> result;
    SD_GUARDED(([&] {
        if (name.trimmed().isEmpty())
            detail::fail(QStringLiteral("a table structure needs a name"));
        auto made = std::make_shared<TableStructure>(name);
        if (fill) {
            const bool hasSource = !selectionText.trimmed().isEmpty()
                                   || (!baseTableName.trimmed().isEmpty() && !bracketedKey.trimmed().isEmpty());
            const bool hasTarget = (population && !population->StructureColumns().isEmpty()) || !bracketedKey.trimmed().isEmpty();
            if (!hasSource || !hasTarget)
                detail::fail(QStringLiteral("the fill of %1 needs a selection or a base table and key, and a key or population").arg(name));
            made->m_fill = StructureFill{baseTableName, bracketedKey, std::move(population), selectionText};
        }
        result = std::move(made);
    }));
    return result;
}

bool TableStructure::hasColumn(const QString& name) const
{
    return findNamed(m_columns, name).has_value();
}

bool TableStructure::nameTaken(const QString& name) const
{
    return findNamed(m_keys, name).has_value() || findNamed(m_indexes, name).has_value();
}

void TableStructure::checkKeyColumns(const QString& name, const QStringList& columns) const
{
    if (name.trimmed().isEmpty())
        detail::fail(QStringLiteral("a key or index of %1 needs a name").arg(m_name));
    if (nameTaken(name))
        detail::fail(QStringLiteral("%1 already has a key or index named %2").arg(m_name, name));
    if (columns.isEmpty())
        detail::fail(QStringLiteral("%1 of %2 has no columns").arg(name, m_name));
    for (int i = 0; i < columns.size(); ++i) {
        if (!hasColumn(columns[i]))
            detail::fail(QStringLiteral("%1 of %2 names the unknown column %3").arg(name, m_name, columns[i]));
        for (int j = 0; j < i; ++j)
            if (columns[j].compare(columns[i], Qt::CaseInsensitive) == 0)
                detail::fail(QStringLiteral("%1 of %2 names %3 twice").arg(name, m_name, columns[i]));
    }
}

bool TableStructure::AddColumn(const QString& name, int adoType, int size, int scale, bool nullable, bool hasDefault,
                               const QString& defaultText)
{
    SD_PROC("AddColumn");
    return SD_GUARDED(([&] {
        if (name.trimmed().isEmpty())
            detail::fail(QStringLiteral("a column of %1 needs a name").arg(m_name));
        if (hasColumn(name))
            detail::fail(QStringLiteral("%1 already has a column %2").arg(m_name, name));
        if (!knownType(adoType))
            detail::fail(QStringLiteral("column %1 of %2 has the unknown type %3").arg(name, m_name, QString::number(adoType)));
        if (size < 0 || scale < 0)
            detail::fail(QStringLiteral("column %1 of %2 has a negative size").arg(name, m_name));
        m_columns.append(StructureColumn{name, adoType, size, scale, nullable, hasDefault, defaultText});
    }));
}

bool TableStructure::MarkFilterField(const QString& name, bool usable, const QString& displayName)
{
    SD_PROC("MarkFilterField");
    return SD_GUARDED(([&] {
        const auto found = std::find_if(m_columns.begin(), m_columns.end(),
                                        [&](const StructureColumn& c) { return c.name.compare(name, Qt::CaseInsensitive) == 0; });
        if (found == m_columns.end())
            detail::fail(QStringLiteral("%1 has no column %2 to mark").arg(m_name, name));
        found->usable = usable;
        found->displayName = displayName;
    }));
}

bool TableStructure::AddIdentityColumn(const QString& name)
{
    if (!AddColumn(name, adBigInt, 0, 0, false))
        return false;
    m_columns.last().identity = true;
    return true;
}

bool TableStructure::AddIndex(const QString& name, const QStringList& columns, bool unique)
{
    SD_PROC("AddIndex");
    return SD_GUARDED(([&] {
        checkKeyColumns(name, columns);
        m_indexes.append(StructureIndex{name, columns, unique});
    }));
}

bool TableStructure::addKey(const char* procedure, StructureKey key)
{
    const detail::ProcScope sd_proc_scope(procedure, kModule);
    return SD_GUARDED(([&] {
        checkKeyColumns(key.name, key.columns);
        if (key.kind == kkPrimary && PrimaryKey())
            detail::fail(QStringLiteral("%1 already has a primary key").arg(m_name));
        if (key.kind == kkForeign) {
            if (key.relatedTable.trimmed().isEmpty())
                detail::fail(QStringLiteral("foreign key %1 of %2 has no related table").arg(key.name, m_name));
            if (key.relatedColumns.size() != key.columns.size())
                detail::fail(QStringLiteral("foreign key %1 of %2 relates %3 columns to %4")
                                 .arg(key.name, m_name, QString::number(key.columns.size()), QString::number(key.relatedColumns.size())));
        }
        m_keys.append(std::move(key));
    }));
}

bool TableStructure::AddPrimaryKey(const QString& name, const QStringList& columns)
{
    return addKey("AddPrimaryKey", StructureKey{name, kkPrimary, columns, {}, {}, false});
}

bool TableStructure::AddUniqueKey(const QString& name, const QStringList& columns)
{
    return addKey("AddUniqueKey", StructureKey{name, kkUnique, columns, {}, {}, false});
}

bool TableStructure::AddForeignKey(const QString& name, const QStringList& columns, const QString& relatedTable,
                                   const QStringList& relatedColumns, bool cascade)
{
    QString keyName = name;
    if (keyName.trimmed().isEmpty()) {
        // The key has no name of its own; a fixed rule lets a later check find it again.
        const QString stem = QStringLiteral("FK_%1_%2").arg(m_name, relatedTable);
        keyName = stem;
        for (int n = 2; nameTaken(keyName); ++n)
            keyName = stem + QLatin1Char('_') + QString::number(n);
    }
    return addKey("AddForeignKey", StructureKey{keyName, kkForeign, columns, relatedTable, relatedColumns, cascade});
}

std::optional<StructureColumn> TableStructure::ColumnNamed(const QString& name) const
{
    return findNamed(m_columns, name);
}

std::optional<StructureKey> TableStructure::KeyNamed(const QString& name) const
{
    return findNamed(m_keys, name);
}

std::optional<StructureIndex> TableStructure::IndexNamed(const QString& name) const
{
    return findNamed(m_indexes, name);
}

std::optional<StructureKey> TableStructure::PrimaryKey() const
{
    for (const StructureKey& key : m_keys)
        if (key.kind == kkPrimary)
            return key;
    return std::nullopt;
}

} // namespace searchdata
