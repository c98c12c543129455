#pragma once

#include "searchdata/Catalog.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/Enums.h"
#include "searchdata/Recordset.h"
#include "searchdata/TableStructure.h"

#include <QDateTime>
#include <QPointF>
#include <QSizeF>
#include <memory>

namespace searchdata {

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
class CFilterColumns : public std::enable_shared_from_this<CFilterColumns> {
public:
    using ColumnPtr = std::shared_ptr<CFilterColumn>;

    CFilterColumns();
    ~CFilterColumns();
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

    /// Adds a column at the end; null when the name is taken (reported).
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

private:
    ColumnPtr addColumn(const QString& name, const QString& caption, const QString& description, FilterColumnTypeConstants type,
                        qint16 textLength, bool isPicklist, bool allowBlanks, const QString& picklistDefault,
                        EFilterColumnDateTimeDefaultModeConstants dateMode, const Value& dateDefault, bool disableEdit,
                        const QString* mergeName);
    int indexOfName(const QString& name) const;
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
    std::optional<bool> m_hasKeywordColumns;
};

} // namespace searchdata
