// The schema check of a base table's search side: the definition table, the search and keyword tables,
// their fields, indexes, keys and rows, against what the definitions say they should be.

#include "searchdata/CFilterColumns.h"

#include "columns/SchemaCheck_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CCheckPopulationArgs.h"
#include "searchdata/CCheckPopulationResult.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/UiServices.h"

#include <QHash>

namespace searchdata {

namespace detail {

namespace {

struct CheckState {
    int depth = 0;
    bool failedBefore = false;
    QHash<int, int> answers; // flag -> an answer that let the check go on
};

thread_local CheckState t_check;

} // namespace

SchemaCheckScope::SchemaCheckScope()
{
    if (t_check.depth++ > 0)
        return;
    Diagnostics& diagnostics = Diagnostics::instance();
    t_check.failedBefore = diagnostics.ConversionFailed();
    t_check.answers.clear();
    diagnostics.setConversionFailed(false);
}

SchemaCheckScope::~SchemaCheckScope()
{
    if (--t_check.depth > 0)
        return;
    Diagnostics& diagnostics = Diagnostics::instance();
    diagnostics.setConversionFailed(t_check.failedBefore || diagnostics.ConversionFailed());
    t_check.answers.clear();
}

int askConversion(DatabaseHandler& db, const QString& table, int flag)
{
    if (t_check.depth > 0)
        if (const auto it = t_check.answers.constFind(flag); it != t_check.answers.constEnd())
            return *it;
    const int answer = db.QueryConversion(db.ConnectionString(), table, flag);
    if (t_check.depth > 0 && !endsCheck(answer))
        t_check.answers.insert(flag, answer);
    return answer;
}

void markConversionFailed()
{
    Diagnostics::instance().setConversionFailed(true);
}

bool conversionFailed()
{
    return Diagnostics::instance().ConversionFailed();
}

} // namespace detail

namespace {

constexpr char kModule[] = "CFilterColumns";

using detail::askConversion;
using detail::conversionFailed;
using detail::endsCheck;
using detail::markConversionFailed;

/// Whether a column's type is one that has storage to check: not undefined, nor a type stored by
/// another version that this one does not know.
bool hasStorage(const CFilterColumn& column)
{
    return column.ColumnType() >= fcKeyword && column.ColumnType() <= fcNote;
}

/// Whether a column keeps its values in the search table.
bool isStandard(const CFilterColumn& column)
{
    return hasStorage(column) && column.ColumnType() != fcKeyword;
}

/// A population check on `progress`, or under a progress runner of its own when there is none.
std::shared_ptr<CCheckPopulationResult> populate(CFilterColumns& columns, IProgress* progress, bool ask, int mode, const QDateTime& now)
{
    if (progress)
        return columns.CheckPopulationProgress(*progress, CCheckPopulationArgs(ask, mode, now));
    const std::any answer =
        UiServices::current().RunProgress(columns, 1, CFilterColumns::CreateCheckPopulationArguments(ask, mode, now), nullptr);
    if (const auto* result = std::any_cast<std::shared_ptr<CCheckPopulationResult>>(&answer); result && *result)
        return *result;
    return std::make_shared<CCheckPopulationResult>();
}

} // namespace

bool CFilterColumns::CheckColumns(IProgress* progress, int mode)
{
    SD_PROC("CheckColumns");
    bool inOrder = false;
    SD_GUARDED([&] {
        const std::shared_ptr<TableStructure> structure = MyStructureDefinition();
        if (!structure || !m_catalog || !GetCatalogTable(*m_catalog, structure->name()))
            return;
        bool converted = false;
        for (const StructureColumn& wanted : structure->StructureColumns()) {
            std::optional<CatalogColumn> actual = GetTableColumn(GetCatalogTable(*m_catalog, structure->name()), wanted.name);
            if (!actual) {
                if (mode != 1)
                    return;
                // One conversion adds every field that is missing.
                if (!converted) {
                    converted = true;
                    Convert(progress, 1);
                    if (conversionFailed())
                        return;
                }
                actual = GetTableColumn(GetCatalogTable(*m_catalog, structure->name()), wanted.name);
            }
            if (schemaTool().ColumnMatches(*m_catalog, actual, wanted))
                continue;
            if (mode != 1)
                return;
            if (!schemaTool().RepairColumn(progress, *m_catalog, structure->name(), wanted)) {
                markConversionFailed();
                return;
            }
        }
        inOrder = true;
    });
    return inOrder;
}

int CFilterColumns::Convert(IProgress* progress, int mode)
{
    SD_PROC("Convert");
    int result = 0;
    SD_GUARDED([&] {
        const std::shared_ptr<TableStructure> structure = MyStructureDefinition();
        if (!structure || !m_catalog)
            return;
        if (!schemaTool().ApplyStructure(progress, *m_catalog, *structure)) {
            markConversionFailed();
            return;
        }
        // The fields that the definitions of an earlier version lacked are there now.
        m_convertRequired = false;
        if (Count() >= 1)
            result = CheckForeignKeysAndIndexes(progress, mode, true, false);
    });
    return result;
}

int CFilterColumns::CheckForeignKeysAndIndexes(IProgress* progress, int mode, bool blnCheckKeysAndIndexes, bool picklistPass)
{
    SD_PROC("CheckForeignKeysAndIndexes");
    const detail::SchemaCheckScope check;
    int result = 0;
    SD_GUARDED([&] {
        const QDateTime now = QDateTime::currentDateTime();
        // Whether a step's result ends the check; an answer that goes on leaves the result at 0.
        auto ends = [&](int stepResult) {
            if (endsCheck(stepResult))
                result = stepResult;
            return endsCheck(stepResult) || conversionFailed() || (progress && progress->Cancelled());
        };

        // A table of a column that is gone altogether is made first; its fields are then checked.
        // Picklist tables are made by the check of their columns below, once their data tables stand.
        if (!picklistPass && ends(CheckTablesExist(progress, mode)))
            return;
        if (ends(ValidateStandardTable(mode)))
            return;

        if (blnCheckKeysAndIndexes && picklistPass) {
            // Lists of an earlier version only: making a list is the save's work, once its data table stands.
            for (const ColumnPtr& column : m_columns) {
                if (!column->IsPicklist())
                    continue;
                const std::shared_ptr<CScPicklist> picklist = PicklistOf(*column);
                if (!picklist || !GetCatalogTable(*m_catalog, picklist->Picklist()))
                    continue;
                if (ends(picklist->CreateHideEntryField(progress, mode)) || ends(picklist->CheckTable(progress, mode)))
                    return;
            }
        }

        for (const ColumnPtr& column : m_columns) {
            if (!hasStorage(*column))
                continue;
            const std::shared_ptr<TableStructure> structure = MyStructureDefault(*column, now);
            if (ends(CheckColumn(column.get(), structure.get(), true, mode)) || ends(CheckIndexes(column.get(), structure.get(), true, mode)))
                return;
        }

        // Rows before keys: a foreign key cannot be made while a search row lacks its record.
        const std::shared_ptr<CCheckPopulationResult> population = populate(*this, progress, true, mode, now);
        if (ends(population->ResultCode()) || population->Cancelled())
            return;

        for (const ColumnPtr& column : m_columns) {
            if (!hasStorage(*column))
                continue;
            const std::shared_ptr<TableStructure> structure = MyStructureDefault(*column, now);
            if (ends(CheckForeignKeys(progress, column.get(), structure.get(), true, mode)))
                return;
        }
    });
    return result;
}

int CFilterColumns::CheckTablesExist(IProgress* progress, int mode)
{
    SD_PROC("CheckTablesExist");
    int result = 0;
    SD_GUARDED([&] {
        if (!m_catalog || !m_handler)
            return;
        Diagnostics& diagnostics = Diagnostics::instance();
        const QDateTime now = QDateTime::currentDateTime();
        // Each table the definitions need, with the column whose structure makes it; the search table
        // comes with the first column that keeps its values there.
        QList<std::pair<QString, ColumnPtr>> missing;
        auto need = [&](const QString& table, const ColumnPtr& column) {
            if (GetCatalogTable(*m_catalog, table))
                return;
            for (const auto& [name, by] : std::as_const(missing))
                if (TextEquals(name, table, 1))
                    return;
            missing.append({table, column});
            if (diagnostics.LogEnabled())
                diagnostics.LogLine(QStringLiteral("table ") + table + QStringLiteral(" missing from the database"));
        };
        for (const ColumnPtr& column : m_columns) {
            if (!hasStorage(*column))
                continue;
            need(SearchKeyword(column.get()), column);
            if (column->IsPicklist())
                need(column->PicklistTableName(), nullptr);
        }
        for (const auto& [table, column] : std::as_const(missing)) {
            if (mode != 1) {
                const int answer = askConversion(*m_handler, table, 0);
                if (endsCheck(answer)) {
                    result = answer;
                    return;
                }
                continue;
            }
            if (!column)
                continue; // a picklist table
            const std::shared_ptr<TableStructure> structure = MyStructureDefault(*column, now);
            if (!structure || !schemaTool().CreateTable(progress, *m_catalog, *structure)) {
                markConversionFailed();
                return;
            }
            if (diagnostics.LogEnabled())
                diagnostics.LogLine(QStringLiteral("made table ") + table);
        }
    });
    return result;
}

int CFilterColumns::ValidateStandardTable(int mode)
{
    SD_PROC("ValidateStandardTable");
    int result = 0;
    SD_GUARDED([&] {
        if (!m_catalog || !m_handler)
            return;
        const CatalogTablePtr table = GetCatalogTable(*m_catalog, SearchKeyword(nullptr));
        if (!table)
            return;
        Diagnostics& diagnostics = Diagnostics::instance();

        QList<ColumnPtr> missing;
        for (const ColumnPtr& column : m_columns)
            if (isStandard(*column) && !GetTableColumn(table, column->Name()))
                missing.append(column);

        QStringList strays;
        for (const CatalogColumn& field : table->columns) {
            if (TextEquals(field.name, KeyColumnName(), 1))
                continue;
            // A field that a column of any kind or type names may hold its data: it is never a stray.
            if (indexOfName(field.name) >= 0)
                continue;
            if (strays.isEmpty() && diagnostics.LogEnabled())
                diagnostics.LogLine(QStringLiteral("defined field count = ") + QString::number(Count()));
            if (diagnostics.LogEnabled())
                diagnostics.LogLine(table->name + QStringLiteral(": database column ") + field.name + QStringLiteral(" missing from ")
                                    + definitionTableName());
            strays.append(field.name);
        }

        if (strays.isEmpty() && missing.isEmpty())
            return;
        if (mode == 0) {
            result = askConversion(*m_handler, BaseTableName(), 0);
            return;
        }
        if (mode != 1)
            return;

        // The definitions are not saved again first: a save insists that the whole table match, and
        // so would fail on any other difference that this check has yet to repair.
        const QDateTime now = QDateTime::currentDateTime();
        for (const ColumnPtr& column : missing) {
            const std::shared_ptr<TableStructure> structure = MyStructureDefault(*column, now);
            const std::optional<StructureColumn> wanted = structure ? structure->ColumnNamed(column->Name()) : std::nullopt;
            if (!wanted || !schemaTool().RepairColumn(nullptr, *m_catalog, table->name, *wanted)) {
                markConversionFailed();
                return;
            }
        }
        for (const QString& stray : std::as_const(strays)) {
            const bool dropped = schemaTool().DropColumn(nullptr, *m_catalog, table->name, stray);
            if (!dropped)
                markConversionFailed();
            if (diagnostics.LogEnabled())
                diagnostics.LogLine(table->name + (dropped ? QStringLiteral(": deleted column ") : QStringLiteral(": failed to delete column "))
                                    + stray + QStringLiteral(" from ") + table->name);
        }
    });
    return result;
}

int CFilterColumns::CheckColumn(const CFilterColumn* column, const TableStructure* structure, bool ask, int mode)
{
    SD_PROC("CheckColumn");
    int result = 0;
    SD_GUARDED([&] {
        if (!m_catalog || !m_handler)
            return;
        if (!structure) {
            markConversionFailed();
            result = 1;
            return;
        }
        const CatalogTablePtr table = GetCatalogTable(*m_catalog, structure->name());
        if (!table)
            return;
        for (const StructureColumn& wanted : structure->StructureColumns()) {
            // Each repair reads the catalog again.
            const std::optional<CatalogColumn> actual = GetTableColumn(GetCatalogTable(*m_catalog, table->name), wanted.name);
            if (schemaTool().ColumnDifferences(*m_catalog, table->name, actual, wanted).isEmpty())
                continue;
            if (mode == 0 && ask) {
                const int answer = askConversion(*m_handler, BaseTableName(), 0);
                if (endsCheck(answer)) {
                    result = answer;
                    return;
                }
            } else if (mode == 1 && !schemaTool().RepairColumn(nullptr, *m_catalog, table->name, wanted)) {
                markConversionFailed();
                return;
            }
        }

        if (!column || !column->IsPicklist())
            return;
        // The list has a check of its own, which asks in mode 0 as well.
        if (const std::shared_ptr<CScPicklist> picklist = PicklistOf(*column)) {
            const int answer = picklist->CheckTable(nullptr, mode);
            if (endsCheck(answer))
                result = answer;
        }
    });
    return result;
}

int CFilterColumns::CheckIndexes(const CFilterColumn* column, const TableStructure* structure, bool ask, int mode)
{
    Q_UNUSED(column); // the structure names the table
    SD_PROC("CheckIndexes");
    int result = 0;
    SD_GUARDED([&] {
        if (!m_catalog || !m_handler)
            return;
        if (!structure) {
            markConversionFailed();
            result = 1;
            return;
        }
        const QString tableName = structure->name();
        if (!GetCatalogTable(*m_catalog, tableName))
            return;
        // False ends the routine. The index is added after the answer in any mode; answer 2 adds it too.
        auto addMissing = [&](const std::function<bool()>& create) {
            if (ask) {
                const int answer = askConversion(*m_handler, BaseTableName(), mode);
                if (answer != 2 && endsCheck(answer)) {
                    result = answer;
                    return false;
                }
            }
            if (!create()) {
                markConversionFailed();
                return false;
            }
            return true;
        };
        for (const StructureIndex& index : structure->StructureIndexes()) {
            if (GetTableIndex(GetCatalogTable(*m_catalog, tableName), index.name))
                continue;
            if (!addMissing([&] { return schemaTool().CreateIndex(nullptr, *m_catalog, tableName, index); }))
                return;
        }
        // A primary or unique key stands on an index of its own.
        for (const StructureKey& key : structure->StructureKeys()) {
            if (key.kind == kkForeign || GetTableKey(GetCatalogTable(*m_catalog, tableName), key.name))
                continue;
            if (!addMissing([&] { return schemaTool().CreateForeignKey(nullptr, *m_catalog, tableName, key); }))
                return;
        }
    });
    return result;
}

int CFilterColumns::CheckForeignKeys(IProgress* progress, const CFilterColumn* column, const TableStructure* structure, bool ask, int mode)
{
    Q_UNUSED(column); // the structure names the table
    SD_PROC("CheckForeignKeys");
    int result = 0;
    SD_GUARDED([&] {
        if (!m_catalog || !m_handler)
            return;
        if (!structure) {
            markConversionFailed();
            result = 1;
            return;
        }
        const QString tableName = structure->name();
        if (!GetCatalogTable(*m_catalog, tableName))
            return;
        for (const StructureKey& key : structure->StructureKeys()) {
            if (key.kind != kkForeign || GetTableKey(GetCatalogTable(*m_catalog, tableName), key.name))
                continue;
            if (mode != 1 && ask) {
                const int answer = askConversion(*m_handler, BaseTableName(), mode);
                if (endsCheck(answer)) {
                    result = answer;
                    return;
                }
            }
            if (!schemaTool().ForeignKeyHolds(*m_catalog, tableName, key)) {
                const std::shared_ptr<CCheckPopulationResult> population =
                    populate(*this, progress, ask, mode, QDateTime::currentDateTime());
                if (endsCheck(population->ResultCode())) {
                    result = population->ResultCode();
                    return;
                }
                if (population->Cancelled() || conversionFailed())
                    return;
            }
            if (!schemaTool().CreateForeignKey(progress, *m_catalog, tableName, key)) {
                markConversionFailed();
                return;
            }
        }
    });
    return result;
}

} // namespace searchdata
