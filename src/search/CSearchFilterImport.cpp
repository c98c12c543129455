// Importing search values: from a data block of a file, and from fields of another table.

#include "searchdata/CSearchFilter.h"

#include "data/DataBlock_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CImportFields.h"

#include <algorithm>
#include <limits>

namespace searchdata {

namespace {

constexpr char kModule[] = "CSearchFilter";

} // namespace

DataBlockImport CSearchFilter::AnalyzeDataBlock(const QDateTime& dtmTimestamp, const QString& strSourceFile, const ISearchBaseEntry* dflThis,
                                                const QByteArray& baData, const QString& strLogFolder)
{
    return detail::AnalyzeDataBlock(this, dtmTimestamp, strSourceFile, dflThis, baData, strLogFolder);
}

DataBlockImport CSearchFilter::ImportDataBlockFile(const QString& strPath, const ISearchBaseEntry* dflThis, const QString& strLogFolder)
{
    return detail::ImportDataBlockFile(this, strPath, dflThis, strLogFolder);
}

bool CSearchFilter::Import(IProgress* progress, ImportActions enmAction, const ISearchBaseEntry* roEntry, const CImportFields& fields)
{
    if (!m_filterColumns)
        return false;
    CFilterColumns& columns = *m_filterColumns;
    switch (enmAction) {
    case kvoTLImportInitialize: {
        SD_PROC("Import");
        QStringList added;
        bool done = false;
        SD_GUARDED([&] {
            for (const CImportFields::FieldPtr& field : fields) {
                if (columns.Item(field->Name()) || field->ColumnType() == fcUndefined)
                    continue;
                const int size = std::clamp(field->Field().definedSize, 0, int(std::numeric_limits<qint16>::max()));
                if (!columns.Add(field->Name(), QString(), QString(), field->ColumnType(), qint16(size), false, false))
                    return;
                added.append(field->Name());
            }
            done = added.isEmpty() || columns.ColumnsSave(progress);
        });
        if (!done)
            for (const QString& name : added)
                columns.RemoveColumn(name); // the definitions on disk stayed as they were
        return done;
    }
    case kvoTLImportData:
        return columns.ImportData(roEntry, fields);
    case kvoTLImportCleanup:
        return true;
    }
    return false;
}

} // namespace searchdata
