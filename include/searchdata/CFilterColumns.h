#pragma once

#include "searchdata/Catalog.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/Enums.h"
#include "searchdata/Progress.h"
#include "searchdata/Recordset.h"
#include "searchdata/TableStructure.h"

#include <QDateTime>
#include <QPointF>
#include <QSizeF>
#include <functional>
#include <memory>

namespace searchdata {

namespace detail {
class RecordStatements;
}

class CCheckPopulationArgs;
class CCheckPopulationResult;
class CImportField;
class CImportFields;
class CScPicklist;
class CSearchFilter;
class DatabaseHandler;
class IFormInfo;
class IProfile;
class IProgress;
class ISearchBaseEntry;
class ISearchBaseTable;
class SchemaTool;

/// Where the library's dialogs stand: left, top, width and height, device-independent pixels.
struct OwnerLocation {
    float left = 0;
    float top = 0;
    float width = 0;
    float height = 0;
};

/// The ordered search columns of one base table, and the owner of the definition table
/// `SearchColumnConfiguration`, where the definitions of every base table of a database live.
class CFilterColumns : public std::enable_shared_from_this<CFilterColumns>, public IProgressHandler {
public:
    using ColumnPtr = std::shared_ptr<CFilterColumn>;

    CFilterColumns();
    ~CFilterColumns() override;
    CFilterColumns(const CFilterColumns&) = delete;
    CFilterColumns& operator=(const CFilterColumns&) = delete;

    /// Name of the definition table.
    static QString definitionTableName() { return QStringLiteral("SearchColumnConfiguration"); }

    // ---- opening ---------------------------------------------------------------------------------

    /// Opens the collection: tests what it was given in a fixed order, records the outcome in
    /// `Status`, and loads the definitions of the base table.
    void Setup(std::shared_ptr<DatabaseHandler> handler, std::shared_ptr<ISearchBaseTable> baseTable,
               std::shared_ptr<searchdata::Catalog> catalog, std::shared_ptr<IProfile> profile, int convertMode,
               std::shared_ptr<TableStructure> baseStructure);
    ColumnsStatusConstants Status() const { return m_status; }
    void setStatus(ColumnsStatusConstants status) { m_status = status; }

    const std::shared_ptr<searchdata::Catalog>& Catalog() const { return m_catalog; }
    /// The base table as the catalog holds it; null before a successful open.
    const CatalogTablePtr& BaseTable() const { return m_baseTable; }
    /// Name of the base table as the catalog spells it; blank without one.
    QString BaseTableName() const { return m_baseTable ? m_baseTable->name : QString(); }
    /// The single column of the base table's primary key, the link column of the search tables.
    const std::optional<CatalogColumn>& BaseKeyColumn() const { return m_baseKeyColumn; }
    const std::shared_ptr<ISearchBaseTable>& BaseTableObject() const { return m_baseTableObject; }
    const std::shared_ptr<TableStructure>& BaseStructure() const { return m_baseStructure; }
    const std::shared_ptr<DatabaseHandler>& Handler() const { return m_handler; }
    const std::shared_ptr<IProfile>& Profile() const { return m_profile; }
    QString KeyColumnName() const { return m_baseKeyColumn ? m_baseKeyColumn->name : QString(); }
    QString BracketedKeyColumnName() const;
    bool ConvertRequired() const { return m_convertRequired; }
    void setConvertRequired(bool required) { m_convertRequired = required; }

    /// The tool that creates, compares and changes tables; replaceable, for tests that fail a step.
    SchemaTool& schemaTool() const;
    void setSchemaTool(std::shared_ptr<SchemaTool> tool) { m_schemaTool = std::move(tool); }

    // ---- the columns -----------------------------------------------------------------------------

    /// Adds a column at the end; null when the name is taken or is no column name (`ValidColumnName`),
    /// reported.
    ColumnPtr Add(const QString& strName, const QString& strCaption, const QString& strDescription,
                  FilterColumnTypeConstants enmType, qint16 intTextLengthInUI, bool blnIsPicklist,
                  bool blnPicklistAllowBlanks, const QString& strPicklistDefault = {},
                  EFilterColumnDateTimeDefaultModeConstants enmDateTimeDefaultMode = fcDTDM_Configure,
                  const Value& varDateTimeDefaultValue = Value::null(), bool blnDisableEditDateTime = false);
    /// The same for a column made for a merge, which remembers the name it had in the other table.
    ColumnPtr Add(const QString& strName, const QString& strCaption, const QString& strDescription,
                  FilterColumnTypeConstants enmType, qint16 intTextLengthInUI, bool blnIsPicklist,
                  bool blnPicklistAllowBlanks, const QString& strPicklistDefault,
                  EFilterColumnDateTimeDefaultModeConstants enmDateTimeDefaultMode, const Value& varDateTimeDefaultValue,
                  bool blnDisableEditDateTime, const QString& strMergeName);
    qint32 Count() const { return static_cast<qint32>(m_columns.size()); }
    /// By position (a number, from 1), by name (a text, ignoring case), or else by caption.
    ColumnPtr Item(const Value& varIndex) const;
    ColumnPtr Item(int position) const { return Item(Value(qint32(position))); }
    ColumnPtr Item(const QString& nameOrCaption) const { return Item(Value(nameOrCaption)); }
    ColumnPtr Item(const char* nameOrCaption) const { return Item(Value(QString::fromUtf8(nameOrCaption))); }
    /// The columns in order, for walking.
    const QList<ColumnPtr>& NewEnum() const { return m_columns; }
    QList<ColumnPtr>::const_iterator begin() const { return m_columns.cbegin(); }
    QList<ColumnPtr>::const_iterator end() const { return m_columns.cend(); }

    /// Moves a column one place; false at the end of the list. Order reaches the table at the save.
    bool MoveColumnUp(const ColumnPtr& column);
    bool MoveColumnDown(const ColumnPtr& column);
    /// Takes a column out of the collection by name.
    void RemoveColumn(const QString& name);
    void ResetColumnKindCaches();
    /// Whether any column is not a keyword (and so the search table is needed).
    bool HasStandardColumns();
    bool HasKeywordColumns();
    /// The first merge column whose merge name is `name`, ignoring case.
    ColumnPtr FindByMergeName(const QString& name) const;

    // ---- the definition table ----------------------------------------------------------------

    /// The structure of `SearchColumnConfiguration`; built once.
    std::shared_ptr<TableStructure> MyStructureDefinition();
    /// All rows of the definition table, creating it when it is missing; null when that fails.
    std::unique_ptr<Recordset> OpenDefinitionTable();
    std::unique_ptr<Recordset> CreateDefinitionTable();
    /// Loads the columns of this base table from the definition table.
    void ColumnsFetch();
    /// Writes the definitions and brings the search tables in line with them. One transaction:
    /// when any step fails, definitions, tables and data stay as they were, and the result is false.
    bool ColumnsSave(IProgress* progress);
    /// Writes one column's definition and makes its physical column.
    bool ColumnSave(IProgress* progress, const ColumnPtr& column, const ColumnPtr& oldColumn, const QDateTime& timeStamp);
    bool DeleteColumnDefinition(const ColumnPtr& column);
    /// Drops what stores a deleted column's values: its field, its keyword table, its picklist.
    bool KillColumnData(const CFilterColumn& column);

    // ---- names and structures of the search tables -------------------------------------------

    /// The table of a column's values: the keyword table of a keyword column, else the search table.
    QString SearchKeyword(const CFilterColumn* column = nullptr) const;
    QString PK_(const CFilterColumn* column = nullptr) const { return QStringLiteral("PK_") + SearchKeyword(column); }
    QString UK_(const CFilterColumn* column = nullptr) const { return QStringLiteral("UK_") + SearchKeyword(column); }
    /// Profile section of the template.
    QString _Template() const { return BaseTableName() + QStringLiteral("_Template"); }
    QString Unknown_(const CFilterColumn* column, int n) const;
    static QString TimeStamp() { return QStringLiteral("TimeStamp"); }
    /// The field of a keyword table that numbers its rows in the order they were saved, where the
    /// database's own order of rows does not last (`Dialect::storageOrderLasts`).
    static QString KeywordOrder() { return QStringLiteral("KeywordOrder"); }
    /// ORDER BY of a keyword column's rows in the order they were saved. A table of an earlier
    /// version that lacks `KeywordOrder` is read in the order its rows lie in, until a check adds it.
    QString KeywordStorageOrder(const CFilterColumn& column) const;
    static QString KVOSearchColumnName(qint16 n) { return QStringLiteral("KVOSearchColumnName%1").arg(n); }
    static QString KVOSearchColumnCaption(qint16 n) { return QStringLiteral("KVOSearchColumnCaption%1").arg(n); }
    static QString KVOSearchColumnDescription(qint16 n) { return QStringLiteral("KVOSearchColumnDescription%1").arg(n); }
    static QString KVOSearchColumnType(qint16 n) { return QStringLiteral("KVOSearchColumnType%1").arg(n); }
    static QString KVOSearchColumnSize(qint16 n) { return QStringLiteral("KVOSearchColumnSize%1").arg(n); }

    /// The structure of the table that holds one column's values, as of `timeStamp`.
    std::shared_ptr<TableStructure> MyStructureDefault(const CFilterColumn& column, const QDateTime& timeStamp) const;
    /// Creates and fills the table of a column; the structure when the table stands, else null.
    std::shared_ptr<TableStructure> BuildDefaultTable(IProgress* progress, const CFilterColumn& column, bool flag, const QDateTime& timeStamp);
    /// The description of the definition table's `MergeName` field, added on demand by merges.
    std::optional<StructureColumn> MakeLinkColumn() const;
    /// Mode 0: the rows of `table` that `seek` selects. Mode 1: the row of the entry, added when
    /// missing and `create` is set. Null when nothing could be opened.
    std::unique_ptr<Recordset> OpenSearchTable(const ISearchBaseEntry* entry, const QString& table, const QString& seek, int& mode, bool create);

    // ---- where dialogs stand -----------------------------------------------------------------

    void SetOwnerLocation(const OwnerLocation& location) { m_ownerLocation = location; }
    const OwnerLocation& GetOwnerLocation() const { return m_ownerLocation; }
    /// Where a dialog of `formSize` goes: the owner's corner plus the dialog offset, kept on a screen of `screenSize`.
    QPointF FormPosition(QSizeF formSize, QSizeF screenSize, float dialogOffset) const;

    // ---- the values of one entry ---------------------------------------------------------------

    /// The condition that finds an entry's rows: the link column equal to its key; blank without one.
    QString SearchTableSeekCriteria(const ISearchBaseEntry* entry) const;
    /// Loads an entry's stored values and keywords into the columns; a record without a search row
    /// reads the defaults. What it loads is what a later save of the entry compares with.
    void GetData(const ISearchBaseEntry* roSource);
    /// Loads the keywords of one keyword column, in the order they were stored.
    void GetDataKeyword(const ISearchBaseEntry* roEntry, CFilterColumn& rfc, const QString& strSeek);
    /// Loads the choices of a picklist column: the visible entries, and a hidden one that the entry holds.
    void GetDataPicklist(CFilterColumn& column, const Value& entryValue);
    /// Gives a new base record its search row, with every column's default.
    bool InitializeSearchData(const ISearchBaseEntry* roEntry);
    /// Writes a column's default into every row of a table.
    void InitializeFieldValues(const CFilterColumn& column, const QString& table, const QString& field, const QDateTime& now);

    /// Writes what the user changed in the entry control's fields since the entry was loaded (valid
    /// fields whose value differs), and the keywords added to and removed from the lists, in one
    /// transaction: what other users changed meanwhile in other fields and keywords stays. An
    /// unchanged entry writes nothing; an entry without its row gets one with every valid field.
    bool SaveDataFromEditControl(const ISearchBaseEntry* entry);
    /// Writes the columns' `UpdatedValue`s; an Empty one leaves its field alone, a Null one writes NULL.
    bool SaveDataFromClientUpdates(const ISearchBaseEntry* roEntry);
    /// Writes the keywords added to and removed from the list of the column's combo box since the
    /// entry was loaded (or, when it was not, compared with what is stored now).
    bool SaveDataKeyword(const ISearchBaseEntry* entry, CFilterColumn& column, const QString& seek);
    /// Whether the picklist settings of `first` differ from those of `second`.
    static bool PicklistChanged(const CFilterColumn* first, const CFilterColumn* second);

    // ---- the template ------------------------------------------------------------------------

    /// The stored values of the entry last loaded become the user's template.
    void SaveTemplate();
    void ClearTemplate();
    void SaveTemplateTimestamp();
    void SaveTemplateValueNormal(const CFilterColumn& column);
    void SaveTemplateValueKeyword(const CFilterColumn& column, const QString& value, int counter);
    /// Reads the template into the columns when it changed since the last read; false without a profile.
    bool FetchTemplateValues();
    /// Puts the template's values into the columns' controls.
    void CopyTemplate();

    // ---- picklists -----------------------------------------------------------------------------

    /// Whether any column is a picklist.
    bool HasPicklists() const;
    /// Opens the picklist dialog of the one picklist column, or the choice among several; nothing
    /// without picklist columns.
    void EditPicklists(const IFormInfo* oFI);
    /// Opens the dialog that chooses which column's picklist to edit.
    void SelectAndEditPicklist(const IFormInfo* oFI);
    /// A column's picklist, working through this collection's schema tool.
    std::shared_ptr<CScPicklist> PicklistOf(const CFilterColumn& column) const;
    /// Brings a saved column's picklist in line with its definition: makes, changes or drops the
    /// list as the settings changed from `oldColumn` (null for a new column). False on failure.
    bool SavePicklist(const ColumnPtr& column, const ColumnPtr& oldColumn);

    // ---- schema check and population check ------------------------------------------------------
    // Modes: 1 repairs; 0 asks the host first (`DatabaseHandler::QueryConversion`): its answers 1 to 5
    // end the check with that answer, and any other goes on, to the repair where the step makes one
    // after the question (indexes, keys, rows, picklist tables, a conversion of the definition table;
    // the fields of the search tables are only reported). Within one check the host is asked once: an
    // answer that goes on stands for the rest of the check. Results: 0 goes on. A repair that fails
    // sets `Diagnostics::ConversionFailed` and ends the check; what was repaired before it stands.

    /// Whether every field of the definition table is there and as its structure describes it. Mode 1
    /// adds the missing fields and repairs the others, and then checks the search tables too.
    bool CheckColumns(IProgress* progress, int mode);
    /// Adds what the definition table lacks and, with columns defined, checks the search tables.
    int Convert(IProgress* progress, int mode);
    /// Checks the search tables against the definitions: the search table's fields, each table's fields
    /// and indexes, the search rows, then the foreign keys, which would fail on a record without its
    /// row. With both flags also the picklist tables first (a table just made by `BuildDefaultTable`).
    int CheckForeignKeysAndIndexes(IProgress* progress, int mode, bool blnCheckKeysAndIndexes, bool picklistPass);
    /// Whether every table that the definitions need is there: the search table, each keyword table,
    /// each picklist table. Each missing one is written to the schema log; mode 0 asks the host about
    /// each (the question names the table), mode 1 makes the search and keyword tables (a picklist
    /// table is made by the check of its column).
    int CheckTablesExist(IProgress* progress, int mode);
    /// Compares the search table's fields with the columns that are not keywords. Mode 0 asks the host
    /// and gives its answer; mode 1 drops the fields no column defines (writing the schema log) and
    /// adds the missing ones.
    int ValidateStandardTable(int mode);
    /// Makes the fields of a column's table agree with `structure` (mode 1; mode 0 asks), then runs a
    /// picklist column's own check of its list in the same mode.
    int CheckColumn(const CFilterColumn* column, const TableStructure* structure, bool ask, int mode);
    /// Adds the indexes and the primary and unique keys of `structure` that its table lacks, in any
    /// mode. With `ask` the host is asked first in every mode, mode 1 included; an answer of 2 does
    /// not end the check here, unlike elsewhere.
    int CheckIndexes(const CFilterColumn* column, const TableStructure* structure, bool ask, int mode);
    /// Adds the foreign keys of `structure` that its table lacks, in any mode, after asking the host
    /// (with `ask`, in modes other than 1); rows that the key would refuse are dealt with by a
    /// population check first.
    int CheckForeignKeys(IProgress* progress, const CFilterColumn* column, const TableStructure* structure, bool ask, int mode);

    /// The argument object of a population check.
    static std::shared_ptr<CCheckPopulationArgs> CreateCheckPopulationArguments(bool askFirst, int mode, const QDateTime& defaultDate);
    /// Makes sure that every record that the host selects has its search row, and that no search or
    /// keyword row is left without its record, under the progress runner of `UiServices` (over
    /// `owner`). In a mode other than 1 with `askFirst` the host is asked before the first change (the
    /// set statements ask once per table): an answer of 1 to 5 ends the check with that answer, any
    /// other repairs. Without `askFirst`, and in mode 1, it repairs without asking. Gives the check's
    /// result code.
    int StartProcessDataReportProgress(const IFormInfo* owner, bool askFirst, int mode, const QDateTime& defaultDate);
    /// Request 1 with a `CCheckPopulationArgs` (or a shared pointer to one) runs the population check
    /// and gives a `std::shared_ptr<CCheckPopulationResult>`; other requests give nothing.
    std::any IProgressHandler_ProcessRequest(int request, IProgress& progress, const std::any& arguments) override;
    /// The population check in the way that suits the database: walking the keys on SQLite, set
    /// statements elsewhere.
    std::shared_ptr<CCheckPopulationResult> CheckPopulationProgress(IProgress& progress, const CCheckPopulationArgs& arguments);
    /// The population check by set statements that the database carries out; status lines only.
    std::shared_ptr<CCheckPopulationResult> CheckPopulationProgressSQL(IProgress& progress, const CCheckPopulationArgs& arguments);
    /// The population check by walking the sorted keys of the base table and of each search-side
    /// table side by side, with a percentage at most once a second. Each table's changes are one
    /// transaction (a savepoint inside a caller's); cancelling leaves the table in hand as it was.
    std::shared_ptr<CCheckPopulationResult> CheckPopulationProgressADO(IProgress& progress, const CCheckPopulationArgs& arguments);

    // ---- copy, merge and import ----------------------------------------------------------------

    /// Copies one entry's stored values and keywords to another entry: `GetData` of the source, then
    /// `CopyData` of the target.
    bool Copy(const ISearchBaseEntry* source, const ISearchBaseEntry* target);
    /// Writes the columns' `SavedValue`s and `SavedKeys` for `entry`, in one transaction: all of it or,
    /// on failure, nothing. Blank texts, False booleans and dates that hold none are not written, so
    /// the entry keeps what it held there; its keywords are replaced. Values that a picklist lacks
    /// join it. Nothing at all is written when nothing is worth copying.
    bool CopyData(const ISearchBaseEntry* entry);
    /// Replaces the entry's keywords of a keyword column by the column's `SavedKeys`, each once.
    bool CopyDataKeyword(const ISearchBaseEntry* entry, const CFilterColumn& column, const QString& seek);
    /// Adds the column's `SavedValue` to its picklist when the list lacks it.
    bool CopyDataInsertIntoPicklist(const CFilterColumn& column);
    /// Adds the field `MergeName` to the definition table (making the table when it is missing).
    bool MakeMergeColumn();
    /// Drops the field `MergeName` from the definition table; the columns stop being merge columns.
    bool MergeCleanup();
    /// Merges a record of another database into `target`: keywords, then stored values, in one
    /// transaction. Only merge columns take part, matched by their merge names.
    bool MergeData(const ISearchBaseEntry* target, const CSearchFilter* sourceFilter, const ISearchBaseEntry* source);
    /// Adds the source record's keywords that the target record lacks.
    bool MergeDataKeywordColumns(const ISearchBaseEntry* target, const CSearchFilter* sourceFilter, const ISearchBaseEntry* source);
    /// Writes every value that the source record holds over the target's; the target's search row must
    /// exist, else nothing changes. A source without its row writes nothing.
    bool MergeDataStandardColumns(const ISearchBaseEntry* target, const CSearchFilter* sourceFilter, const ISearchBaseEntry* source);
    /// Writes the present values of import fields into an entry, in one transaction: the row is made
    /// when missing, a field whose value does not suit its column is left out, and the row's empty
    /// texts and numbers then get "" and 0. Fields without a column are skipped.
    bool ImportData(const ISearchBaseEntry* entry, const CImportFields& fields);
    /// Adds an import field's value to the entry's keywords unless it is there.
    bool ImportDataKeyword(const ISearchBaseEntry* entry, const CFilterColumn& column, const QString& seek, const CImportField& field);

private:
    ColumnPtr addColumn(const QString& name, const QString& caption, const QString& description, FilterColumnTypeConstants type,
                        qint16 textLength, bool isPicklist, bool allowBlanks, const QString& picklistDefault,
                        EFilterColumnDateTimeDefaultModeConstants dateMode, const Value& dateDefault, bool disableEdit,
                        const QString* mergeName, bool stored = false);
    int indexOfName(const QString& name) const;
    /// Writes an entry's row with the values that `valueOf` gives (false skips a column), only those
    /// that differ from what was loaded when `changesOnly`, and its keywords.
    bool saveEntry(const ISearchBaseEntry* entry, const std::function<bool(const CFilterColumn&, Value&)>& valueOf, bool changesOnly,
                   int titleText, int insertText, int updateText);
    /// The fields of `columns` in the entry's row of the search table, or null when it cannot be read
    /// (reported, naming the fields that another user dropped meanwhile).
    std::unique_ptr<Recordset> readSearchRow(const ISearchBaseEntry& entry, const QList<ColumnPtr>& columns);
    /// The entry's keyword lists of `keywords`, in that order, read in one statement; nothing when
    /// that statement fails (not reported).
    std::optional<QList<QStringList>> readKeywordLists(const ISearchBaseEntry& entry, const QList<ColumnPtr>& keywords);
    /// The key of an entry as the link column holds it, for binding.
    QVariant keyValue(const ISearchBaseEntry& entry) const;
    void renumber();
    bool columnsSaveSteps(IProgress* progress);

    ColumnsStatusConstants m_status = kvoFCSUndefinedStatus;
    std::shared_ptr<searchdata::Catalog> m_catalog;
    CatalogTablePtr m_baseTable;
    std::optional<CatalogColumn> m_baseKeyColumn;
    QList<ColumnPtr> m_columns;
    OwnerLocation m_ownerLocation;
    bool m_convertRequired = false;
    std::shared_ptr<IProfile> m_profile;
    std::shared_ptr<ISearchBaseTable> m_baseTableObject;
    std::shared_ptr<TableStructure> m_baseStructure;
    std::shared_ptr<DatabaseHandler> m_handler;
    std::shared_ptr<TableStructure> m_definitionStructure;
    std::shared_ptr<SchemaTool> m_schemaTool;
    std::optional<bool> m_hasStandardColumns;
    friend class detail::RecordStatements;
    mutable std::shared_ptr<detail::RecordStatements> m_statements;
    std::optional<bool> m_hasKeywordColumns;
    QString m_templateTimestamp;
};

} // namespace searchdata
