#pragma once

#include "searchdata/Catalog.h"
#include "searchdata/TableStructure.h"

#include <QString>
#include <QStringList>
#include <memory>

namespace searchdata {

class CFilterColumn;
class DatabaseHandler;
class IFormInfo;
class IProgress;
class SchemaTool;

/// The picklist of one column: a table of the values that the column allows, and the foreign key
/// by which the table holding the column's values refers to it, so that the database itself refuses
/// a value that is not in the list (a null passes). Entries that stored data use are hidden, never
/// simply removed.
///
/// Operations that change tables start with `ValidateSetup` and do nothing when it fails. The others
/// report their failures to diagnostics and give false; each runs in a transaction of its own, which
/// becomes a savepoint inside a caller's, so a failure leaves its own work undone.
class CScPicklist {
public:
    CScPicklist();
    ~CScPicklist();
    CScPicklist(const CScPicklist&) = delete;
    CScPicklist& operator=(const CScPicklist&) = delete;

    /// Sets what the picklist works on. The column is held weakly: the column owns its picklist.
    void Init(std::shared_ptr<DatabaseHandler> handler, CatalogTablePtr baseTable, std::weak_ptr<const CFilterColumn> column);

    /// The column, or null once it is gone or before `Init`.
    std::shared_ptr<const CFilterColumn> column() const { return m_column.lock(); }
    /// The connection that the list lives on.
    const std::shared_ptr<DatabaseHandler>& handler() const { return m_handler; }
    /// The base table whose column this is; it gives the list its name.
    const CatalogTablePtr& baseTable() const { return m_baseTable; }

    /// The schema tool that changes the tables; null goes back to the standard one.
    void setSchemaTool(std::shared_ptr<SchemaTool> tool) { m_schemaTool = std::move(tool); }
    SchemaTool& schemaTool() const;

    // ---- names and shapes --------------------------------------------------------------------

    /// Name of the picklist table: "Picklist" + base table + column; blank before `Init`.
    QString Picklist() const;
    /// Name of the field that hides an entry.
    static QString HideEntry() { return QStringLiteral("HideEntry"); }
    /// Name of the foreign key from the column's data to the list.
    QString FK_() const { return QStringLiteral("FK_") + Picklist(); }
    /// Name of the unique key on the list's values.
    QString UK_() const { return QStringLiteral("UK_") + Picklist(); }
    /// The table that holds the column's values: its keyword table, or the search table.
    QString DataTable() const;
    /// The picklist table's shape: the value field, `HideEntry` and the unique key. Built once.
    std::shared_ptr<TableStructure> MyStructure();
    /// The foreign key of the data table that ties the column's values to the list.
    StructureKey MyRelation() const;

    // ---- the life of the table ---------------------------------------------------------------

    /// Whether handler, base table and column are set. If not, says so in a warning with the call
    /// trace, and gives false.
    bool ValidateSetup() const;
    /// Makes the list for a column that has just become a picklist: empty values take the default,
    /// every value that is stored becomes an entry, the default and blank entries follow the
    /// settings, and the key ties the data to the list.
    bool CreatePicklist();
    /// Makes the table with the stored values as entries, and the keys.
    bool CreatePicklistTable();
    /// Brings the list and the data in line with changed settings, and ties them again.
    bool ChangePicklist();
    /// Drops the key and the table; the column's values stay. True when there is no table.
    bool DestroyPicklist();

    // ---- keeping data and list in step ---------------------------------------------------------

    /// Gives stored values the default where they have nothing: nulls, and blanks of a text or note
    /// column that does not allow them.
    bool ForceNullsAndBlanksToDefault();
    /// Adds the default entry when it is missing; true when there is no default to keep.
    bool GuaranteeDefaultEntryExists();
    /// Keeps the blank entry in step with the setting: there while blanks are allowed or stored,
    /// gone when neither. Acts on keyword, text and note columns only.
    bool CheckAllowBlanks();
    /// Adds every stored value that the list lacks as an entry, so that the key can hold.
    bool AdoptStoredValues();
    /// Makes the keys that are missing, once in the life of this object: later calls do nothing
    /// until this object itself drops the keys, or `ForgetKeysChecked` is called.
    bool CheckForeignKeys();
    /// Whether `CheckForeignKeys` has run and no key went since.
    bool KeysChecked() const { return m_keysChecked; }
    /// For a rolled-back transaction that took away keys this object made.
    void ForgetKeysChecked() { m_keysChecked = false; }

    // ---- schema check ------------------------------------------------------------------------

    /// Compares the table with `MyStructure` and makes what is missing: the table, its fields, then the
    /// keys. Mode 0 asks the host before each change (an answer of 1 to 5 ends the check with that
    /// answer, any other goes on), mode 1 repairs at once, other modes change the table in nothing and
    /// make the keys of a table in order. Gives 0 to go on. A failed repair sets the diagnostics'
    /// `ConversionFailed`.
    int CheckTable(IProgress* progress, int mode);
    /// Adds `HideEntry` to a table of an earlier version. Mode 0 asks first (an answer of 1, 3, 4 or
    /// 5 leaves the table alone and is given back); other modes add it at once.
    int CreateHideEntryField(IProgress* progress, int mode);

    // ---- entries -----------------------------------------------------------------------------

    /// Adds the texts that the list lacks, visible, all in one transaction: a failed insert adds none.
    /// Texts that are there already, hidden or not, stay as they are; texts that do not fit the type,
    /// or that cannot be looked for in the list (reported), are left out.
    bool SaveAdditions(const QStringList& entries);
    /// Opens the picklist dialog over `oFI`, if the picklist is set up.
    void Edit(const IFormInfo* oFI);

private:
    /// Runs one statement in a transaction of its own, under the locked message of two texts.
    bool executeInTransaction(const QString& sql, int titleText, int operationText);
    void dropKeys(Catalog& catalog);
    /// Whether a key of the list, or the one that ties the data to it, is missing.
    bool keysMissing(const Catalog& catalog);
    QString bracketedField() const;
    Catalog* catalog() const;
    Catalog& requireCatalog() const;

    std::shared_ptr<DatabaseHandler> m_handler;
    CatalogTablePtr m_baseTable;
    std::weak_ptr<const CFilterColumn> m_column;
    std::shared_ptr<TableStructure> m_structure;
    std::shared_ptr<SchemaTool> m_schemaTool;
    bool m_keysChecked = false;
};

} // namespace searchdata
