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
class IProgress;
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
    /// Gives a new base record its search row with default values; false without columns.
    bool InitializeSearchData(const ISearchBaseEntry* roEntry);
    /// Opens the column list dialog.
    void Configure(const IFormInfo* oFI);
    /// Shows one record's search data in a window of its own.
    void View(Recordset* rstSource, ISearchBaseEntry* roSource, const IFormInfo* oFI);
    /// Editing goes through the entry control; this tells the user so.
    FilterStatusConstants Edit(Recordset* rstSource, const IFormInfo* oFI);

    // ---- filtering and saved filters ----------------------------------------------------------

    /// Asks the user for a filter on the base table: starts from the filter this user last used in
    /// this mode, shows the filter dialog over `oFI`, keeps what the user made of it and gives it back.
    /// A filter kept under the user's name, in this profile or in `oOldProfile`, moves to the user's
    /// number the first time it is read. Null without columns, or when the dialog leaves no terms.
    std::shared_ptr<CFilterTerms> Filter(std::shared_ptr<IProfile> oOldProfile, const QString& strUser, const IFormInfo* oFI,
                                         EFilterDatabaseModes enmMode);
    /// The filter kept in `profile` under `userKey` and `mode`; null without a profile.
    static std::shared_ptr<CFilterTerms> GetFilter(const std::shared_ptr<CFilterColumns>& columns, IProfile* profile,
                                                   const QString& userKey, EFilterDatabaseModes mode);
    /// Replaces the filter kept in `profile` under `userKey` and `mode` by `terms`; no terms removes it.
    static void SaveFilter(const CFilterTerms* terms, const CFilterColumns& columns, IProfile* profile, const QString& userKey,
                           EFilterDatabaseModes mode);
    /// The profile section of a saved filter: base table, user key, mode.
    static QString _Archive(const CFilterColumns& columns, const QString& userKey, EFilterDatabaseModes mode);
    /// The comparison class of a field of `table`: a field of the base table by its type, else a
    /// search column by its type; `kvoCC_Unknown` for a field that is no longer there.
    static FilterComparisonClasses FilterFieldClass(const QString& field, const QString& table, const CFilterColumns& columns);
    /// A date as kept in a profile ("#m-d-yyyy[ h:n:s]#", or the local form) as local date text;
    /// blank when it is no date.
    static QString FilterDateToText(const QString& text);

    /// The search table's fields for a host's SELECT list, named by their captions.
    QString SQLSearchFields() const;
    /// The condition that joins the search table to the base table.
    QString SQLSearchJoinOn() const;
    /// The search table, quoted; blank when every column is a keyword.
    QString SQLSearchTable() const;

    // ---- schema check ----------------------------------------------------------------------------

    /// Checks the definition table, then the search tables of this base table, against the
    /// definitions. Mode 0 asks the host (`DatabaseHandler::QueryConversion`) at a difference and
    /// changes nothing; mode 1 repairs; other modes do nothing. Gives 0, or the host's answer 1 to 5
    /// that ended the check. A repair that failed shows in `Diagnostics::ConversionFailed`.
    int CheckTable(IProgress* roProgress, int enmConvertMode, bool blnCheckKeysAndIndexes);
    /// The step of `CheckTable` for a definition table that needs converting: asks the host, and with
    /// an answer of 0 converts in mode 1. Gives the answer, or the result of the conversion.
    int QueryConvert(IProgress* progress, int mode);

private:
    std::shared_ptr<CFilterColumns> m_filterColumns;
};

} // namespace searchdata
