#pragma once

#include "searchdata/CFilterColumns.h"
#include "searchdata/Enums.h"

#include <QByteArray>
#include <memory>

namespace searchdata {

class CFilterTerms;
class DatabaseHandler;
class IFormInfo;
class IProfile;
class ISearchBaseEntry;
class ISearchBaseTable;
class Recordset;

/// The search of one base table: the shell through which a host reaches its columns, their
/// configuration, viewing, filtering and checking, and the captions and pictures of its menus.
/// Made by `CCommon::CreateSearchFilterObject`; a failed open leaves `FilterColumns` empty.
class CSearchFilter {
public:
    CSearchFilter();
    ~CSearchFilter();

    /// Opens the collection of the base table; keeps it when it opened well enough to be used.
    void OpenSearch(std::shared_ptr<DatabaseHandler> roHandler, std::shared_ptr<ISearchBaseTable> roBaseTable,
                    std::shared_ptr<Catalog> roCatalog, std::shared_ptr<IProfile> roProfile, int enmConvertMode,
                    std::shared_ptr<TableStructure> roBaseStructure);

    /// The collection, or null when the open failed.
    const std::shared_ptr<CFilterColumns>& FilterColumns() const { return m_filterColumns; }
    /// True when the base table has at least one column.
    bool Exists() const;

    /// Caption of a host menu item.
    QString StandardCaption(FilterMenuItems enmCaptionId) const;
    /// Picture of a host menu item as PNG bytes; empty for items without one.
    QByteArray BitmapLarge(FilterMenuItems enmBitmapId) const;
    QByteArray BitmapSmall(FilterMenuItems enmBitmapId) const;

    /// Remembers where dialogs are to stand: over `oFI`, or in the middle of the screen.
    void SetupOwnerLocation(const IFormInfo* oFI);
    /// Opens the column list dialog.
    void Configure(const IFormInfo* oFI);
    /// Shows one record's search data in a window of its own.
    void View(Recordset* rstSource, ISearchBaseEntry* roSource, const IFormInfo* oFI);
    /// Editing goes through the entry control; this tells the user so.
    FilterStatusConstants Edit(Recordset* rstSource, const IFormInfo* oFI);

private:
    std::shared_ptr<CFilterColumns> m_filterColumns;
};

} // namespace searchdata
