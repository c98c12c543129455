#pragma once

#include "searchdata/CFilterColumns.h"
#include "searchdata/DataBlockImport.h"
#include "searchdata/Enums.h"

#include <QByteArray>
#include <memory>

namespace searchdata {

class CFilterTerms;
class CImportFields;
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
    /// definitions. Mode 0 asks the host (`DatabaseHandler::QueryConversion`) at a difference: its
    /// answers 1 to 5 end the check, 0 goes on to the repair (see `CFilterColumns` for the steps).
    /// Mode 1 repairs; other modes look on where the steps say so. Gives 0, or the host's answer 1 to
    /// 5 that ended the check. A repair that failed shows in `Diagnostics::ConversionFailed`.
    int CheckTable(IProgress* roProgress, int enmConvertMode, bool blnCheckKeysAndIndexes);
    /// The step of `CheckTable` for a definition table that differs or needs converting: asks the
    /// host, and with an answer of 0 converts, whatever the mode. Gives the answer, or the result of
    /// the conversion.
    int QueryConvert(IProgress* progress, int mode);

    // ---- demonstration column sets -------------------------------------------------------------

    /// Defines a ready-made set of columns, with its picklist entries, on a base table that has no
    /// columns yet; a table with columns is left alone. A set that does not exist is reported to
    /// diagnostics as not implemented. True when the set was made.
    bool CreateDemoColumnSet(EDemoColumnSet enmDemoSet, IProgress* roProgress, const IFormInfo* oFI);
    /// Writes the values of the DNC file set into the entry's search row, which must exist; the
    /// values are not checked against the definitions. False when the statement failed.
    bool UpdateDemoDncFile(IProgress* roProgress, const IFormInfo* oFI, const ISearchBaseEntry* sbeDncFile,
                           const QString& strDrawingNo, const QString& strPartNo, const QString& strCustomer);
    /// The same for the packet set.
    bool UpdateDemoPacket(IProgress* roProgress, const IFormInfo* oFI, const ISearchBaseEntry* sbePacket, const QString& strOpNo,
                          const QString& strOpType, const QString& strDescription);

    // ---- copy, merge and import ----------------------------------------------------------------

    /// Copies one record's search data to another record of the base table: stored values and
    /// keywords; the target's keywords are replaced. Blank texts, False booleans and dates that hold
    /// none leave the target's value alone. False without columns, or when the copy failed, which
    /// then wrote nothing.
    bool CopyValuesWithinTable(const ISearchBaseEntry* roSource, const ISearchBaseEntry* roTarget);
    /// Copies a record's search data, keywords included, from the search of a base table of the same
    /// name (as a rule in another database). Every source column needs a column of its name here;
    /// without one nothing is written and the result is false.
    bool CopyValuesBetweenTables(const CSearchFilter* oSource, const ISearchBaseEntry* roSource, const ISearchBaseEntry* roTarget);
    /// Merge, step 1: a base table without columns gets those of `oSource`, each remembering its name
    /// there; a name that clashes gets "_1", "_2"... A base table with columns keeps them, and the
    /// result is success all the same.
    ESearchFilterCopyConfigurationResults CopyConfiguration(IProgress* oContext, const CSearchFilter* oSource);
    /// A record named by its key alone, for a merge.
    std::shared_ptr<ISearchBaseEntry> MakeMergeBaseEntry(qint32 lngId) const;
    /// Merge, step 2, once per record: the source record's stored values overwrite the target's
    /// (whose search row must exist), and its keywords join the target's. One transaction per record.
    bool MergeSearchData(const ISearchBaseEntry* roTarget, const CSearchFilter* oSource, const ISearchBaseEntry* roSource);
    /// Merge, step 3: the columns forget their source names.
    bool CopyCleanup();

    /// Imports a data block of the source file `strSourceFile` into a record: each column that the
    /// block names gets the value it gives, a blank or False included; the others keep theirs. Lines
    /// that fail go to an error log in "ImportSearchDataErrors" below `strLogFolder` (the source
    /// file's folder when blank), in a folder named by `dtmTimestamp`, beside a copy of the source
    /// file; the other lines are imported all the same.
    DataBlockImport AnalyzeDataBlock(const QDateTime& dtmTimestamp, const QString& strSourceFile, const ISearchBaseEntry* dflThis,
                                     const QByteArray& baData, const QString& strLogFolder = {});
    /// The same with the data block of the file `strPath`, read a line at a time up to its end marker,
    /// so that a file of any size takes little memory; its time of change is the timestamp. A file
    /// that is not a regular one (a pipe, a device), or whose lines are far too long for a block, is
    /// refused (`DataBlockImport::refused`) and nothing is written.
    DataBlockImport ImportDataBlockFile(const QString& strPath, const ISearchBaseEntry* dflThis, const QString& strLogFolder = {});
    /// Imports values from fields of another table. `kvoTLImportInitialize` adds a column for each
    /// field whose name has none and whose type a column can take; `kvoTLImportData` writes the
    /// fields' present values into the record; `kvoTLImportCleanup` does nothing. False on failure.
    bool Import(IProgress* progress, ImportActions enmAction, const ISearchBaseEntry* roEntry, const CImportFields& fields);

private:
    std::shared_ptr<CFilterColumns> m_filterColumns;
};

} // namespace searchdata
