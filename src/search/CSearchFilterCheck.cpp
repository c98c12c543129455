// The entry point of the schema check of one base table.

#include "searchdata/CSearchFilter.h"

#include "columns/SchemaCheck_p.h"
#include "platform/Guard_p.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Progress.h"

#include <optional>

namespace searchdata {

namespace {

constexpr char kModule[] = "CSearchFilter";

} // namespace

int CSearchFilter::CheckTable(IProgress* roProgress, int enmConvertMode, bool blnCheckKeysAndIndexes)
{
    if (!m_filterColumns)
        return 0;
    SD_PROC("CheckTable");
    const detail::SchemaCheckScope check;
    CFilterColumns& columns = *m_filterColumns;
    const bool convertRequired = columns.ConvertRequired();
    // A repair is one transaction: it makes every change it finds, or, when a step fails or the check
    // ends early, none, so that nothing is ever left half repaired.
    std::optional<TableTransaction> repair;
    if (enmConvertMode == 1 && columns.Handler()) {
        repair.emplace(*columns.Handler());
        if (!repair->begun()) {
            detail::markConversionFailed();
            return 0;
        }
    }
    int result = 0;
    const bool ran = SD_GUARDED([&] {
        if (convertRequired && enmConvertMode == 0) {
            result = QueryConvert(roProgress, 0);
            return;
        }
        if (convertRequired && enmConvertMode != 1)
            return;
        if (columns.CheckColumns(roProgress, enmConvertMode)) {
            // Without columns there is nothing on the search side to look at.
            if (Exists())
                result = columns.CheckForeignKeysAndIndexes(roProgress, enmConvertMode, blnCheckKeysAndIndexes, false);
            return;
        }
        // A definition table that differs, or whose repair failed, is put to the host.
        if (!convertRequired)
            result = QueryConvert(roProgress, enmConvertMode);
    });
    const bool cancelled = roProgress && roProgress->Cancelled();
    if (repair && !(ran && result == 0 && !cancelled && !detail::conversionFailed() && repair->commit())) {
        if (result == 0 && !cancelled)
            detail::markConversionFailed();
        repair.reset();
        // The tables are as they were, and so is what is known of them.
        columns.setConvertRequired(convertRequired);
        if (columns.Catalog())
            columns.Catalog()->Refresh();
    }
    return result;
}

int CSearchFilter::QueryConvert(IProgress* progress, int mode)
{
    if (!m_filterColumns || !m_filterColumns->Handler())
        return 0;
    SD_PROC("QueryConvert");
    int result = 0;
    SD_GUARDED([&] {
        CFilterColumns& columns = *m_filterColumns;
        result = detail::askConversion(*columns.Handler(), columns.BaseTableName(), mode);
        if (result == 0)
            result = columns.Convert(progress, mode);
    });
    return result;
}

} // namespace searchdata
