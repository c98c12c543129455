#include "searchdata/CScPicklist.h"

#include "columns/SchemaCheck_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/UiServices.h"

#include <optional>

namespace searchdata {

namespace {

constexpr char kModule[] = "CScPicklist";

bool isTextual(FilterColumnTypeConstants type)
{
    return type == fcKeyword || type == fcText || type == fcNote;
}

/// A transaction, or a savepoint inside a caller's, that undoes its work unless committed. The
/// schema tool read the catalog after each change, so an undo reads it once more.
class UndoUnlessCommitted {
public:
    UndoUnlessCommitted(DatabaseHandler& db, Catalog& catalog) : m_catalog(catalog)
    {
        m_tx.emplace(db);
        if (!m_tx->begun())
            detail::fail(QStringLiteral("cannot begin a picklist change: %1").arg(db.lastError()));
    }
    ~UndoUnlessCommitted()
    {
        m_tx.reset();
        if (!m_committed)
            m_catalog.Refresh();
    }
    UndoUnlessCommitted(const UndoUnlessCommitted&) = delete;
    UndoUnlessCommitted& operator=(const UndoUnlessCommitted&) = delete;
    bool commit() { return m_committed = m_tx->commit(); }

private:
    Catalog& m_catalog;
    std::optional<TableTransaction> m_tx;
    bool m_committed = false;
};

} // namespace

CScPicklist::CScPicklist() = default;
CScPicklist::~CScPicklist() = default;

void CScPicklist::Init(std::shared_ptr<DatabaseHandler> handler, CatalogTablePtr baseTable, std::weak_ptr<const CFilterColumn> column)
{
    m_handler = std::move(handler);
    m_baseTable = std::move(baseTable);
    m_column = std::move(column);
    m_structure.reset();
    m_keysChecked = false;
}

SchemaTool& CScPicklist::schemaTool() const
{
    static SchemaTool standard;
    return m_schemaTool ? *m_schemaTool : standard;
}

Catalog* CScPicklist::catalog() const
{
    const std::shared_ptr<const CFilterColumn> c = column();
    return c ? c->MyCatalog().get() : nullptr;
}

QString CScPicklist::Picklist() const
{
    const std::shared_ptr<const CFilterColumn> c = column();
    return c && m_baseTable ? QStringLiteral("Picklist") + m_baseTable->name + c->Name() : QString();
}

QString CScPicklist::DataTable() const
{
    const std::shared_ptr<const CFilterColumn> c = column();
    return c ? c->KeywordTable() : QString();
}

QString CScPicklist::bracketedField() const
{
    const std::shared_ptr<const CFilterColumn> c = column();
    return c && m_handler ? m_handler->BracketName(c->Name()) : QString();
}

std::shared_ptr<TableStructure> CScPicklist::MyStructure()
{
    const std::shared_ptr<const CFilterColumn> c = column();
    if (!c)
        return nullptr;
    // Kept, unless the column was renamed or retyped since: the table follows the column.
    if (m_structure) {
        const std::optional<StructureColumn> value = m_structure->ColumnNamed(c->Name());
        if (m_structure->name() == Picklist() && value && value->type == c->ADOFieldType())
            return m_structure;
    }
    SD_PROC("MyStructure");
    SD_GUARDED([&] {
        m_structure.reset();
        const int type = c->ADOFieldType();
        auto s = TableStructure::NewStructure(Picklist());
        const QString hiddenDefault = m_handler ? m_handler->SqlBoolean(false) : QStringLiteral("0");
        if (s && s->AddColumn(c->Name(), type, type == adVarWChar ? c->TextLengthInDB() : 0, 0, false)
            && s->AddColumn(HideEntry(), adBoolean, 0, 0, false, true, hiddenDefault) && s->AddUniqueKey(UK_(), {c->Name()}))
            m_structure = s;
    });
    return m_structure;
}

StructureKey CScPicklist::MyRelation() const
{
    StructureKey key;
    const std::shared_ptr<const CFilterColumn> c = column();
    key.name = FK_();
    key.kind = kkForeign;
    if (c) {
        key.columns = QStringList{c->Name()};
        key.relatedColumns = QStringList{c->Name()};
    }
    key.relatedTable = Picklist();
    key.cascade = false; // an entry that data uses cannot go
    return key;
}

bool CScPicklist::ValidateSetup() const
{
    if (m_handler && m_baseTable && column())
        return true;
    Diagnostics& diagnostics = Diagnostics::instance();
    UiServices::current().ShowMessage(MessageKind::Warning, diagnostics.caption(),
                                      GetResourceText(9201) + QStringLiteral("\n\n") + diagnostics.callTrace());
    return false;
}

bool CScPicklist::executeInTransaction(const QString& sql, int titleText, int operationText)
{
    const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(operationText), GetResourceText(titleText));
    TableTransaction tx(*m_handler, &locked);
    return tx.begun() && m_handler->ExecuteSql(sql, &locked) && tx.commit();
}

// ---- the life of the table ---------------------------------------------------------------------------

bool CScPicklist::CreatePicklist()
{
    SD_PROC("CreatePicklist");
    if (!ValidateSetup())
        return false;
    bool created = false;
    SD_GUARDED([&] {
        UndoUnlessCommitted tx(*m_handler, requireCatalog());
        // Before the table exists: the defaults written here become entries with the stored values.
        created = ForceNullsAndBlanksToDefault() && CreatePicklistTable() && GuaranteeDefaultEntryExists() && CheckAllowBlanks()
               && tx.commit();
    });
    if (!created)
        m_keysChecked = false;
    return created;
}

bool CScPicklist::CreatePicklistTable()
{
    SD_PROC("CreatePicklistTable");
    if (!ValidateSetup())
        return false;
    bool created = false;
    SD_GUARDED([&] {
        Catalog& cat = requireCatalog();
        const std::shared_ptr<TableStructure> structure = MyStructure();
        if (!structure)
            detail::fail(QStringLiteral("the picklist %1 has no structure").arg(Picklist()));
        UndoUnlessCommitted tx(*m_handler, cat);
        if (!schemaTool().CreateTable(nullptr, cat, *structure))
            detail::fail(QStringLiteral("the picklist table %1 could not be made").arg(Picklist()));
        // A new table: whatever was checked before was about another one.
        m_keysChecked = false;
        // The values stored so far are the list's first entries, or the key could not hold.
        if (!AdoptStoredValues() || !CheckForeignKeys())
            return;
        cat.Refresh();
        created = GetCatalogTable(cat, Picklist()) != nullptr && tx.commit();
    });
    if (!created)
        m_keysChecked = false;
    return created;
}

bool CScPicklist::ChangePicklist()
{
    SD_PROC("ChangePicklist");
    if (!ValidateSetup())
        return false;
    bool changed = false;
    SD_GUARDED([&] {
        Catalog& cat = requireCatalog();
        if (!GetCatalogTable(cat, Picklist())) {
            changed = CreatePicklist();
            return;
        }
        UndoUnlessCommitted tx(*m_handler, cat);
        // The keys first: the next steps change rows that they protect.
        dropKeys(cat);
        changed = ForceNullsAndBlanksToDefault() && AdoptStoredValues() && GuaranteeDefaultEntryExists() && CheckAllowBlanks()
               && CheckForeignKeys() && tx.commit();
    });
    if (!changed)
        m_keysChecked = false;
    return changed;
}

bool CScPicklist::DestroyPicklist()
{
    SD_PROC("DestroyPicklist");
    if (!ValidateSetup())
        return false;
    bool destroyed = false;
    SD_GUARDED([&] {
        Catalog& cat = requireCatalog();
        if (!GetCatalogTable(cat, Picklist())) {
            destroyed = true;
            return;
        }
        UndoUnlessCommitted tx(*m_handler, cat);
        dropKeys(cat);
        if (!schemaTool().DropTable(nullptr, cat, Picklist()))
            detail::fail(QStringLiteral("the picklist table %1 could not be dropped").arg(Picklist()));
        destroyed = tx.commit();
    });
    return destroyed;
}

void CScPicklist::dropKeys(Catalog& cat)
{
    m_keysChecked = false;
    if (!schemaTool().DropTableKeys(nullptr, cat, Picklist()))
        detail::fail(QStringLiteral("the keys of the picklist %1 could not be dropped").arg(Picklist()));
}

Catalog& CScPicklist::requireCatalog() const
{
    Catalog* cat = catalog();
    if (!cat)
        detail::fail(QStringLiteral("the picklist %1 has no catalog").arg(Picklist()));
    return *cat;
}

// ---- keeping data and list in step ---------------------------------------------------------------

bool CScPicklist::ForceNullsAndBlanksToDefault()
{
    SD_PROC("ForceNullsAndBlanksToDefault");
    if (!ValidateSetup())
        return false;
    bool done = false;
    SD_GUARDED([&] {
        const std::shared_ptr<const CFilterColumn> c = column();
        DatabaseHandler& db = *m_handler;
        const QString literal = c->SQLPicklistLiteral(c->PicklistDefault());
        if (literal.isEmpty()) {
            done = true; // no default that fits the type: nothing to give
            return;
        }
        const QString field = bracketedField();
        const bool blanksToo = (c->ColumnType() == fcText || c->ColumnType() == fcNote) && !c->PicklistAllowBlanks();
        const QString condition = blanksToo ? QStringLiteral("%1 = %2 OR %1 IS NULL").arg(field, db.SqlQuote(QString()))
                                            : QStringLiteral("%1 IS NULL").arg(field);
        const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8362), GetResourceText(8361));
        done = db.ExecuteSql(QStringLiteral("UPDATE %1 SET %2 = %3 WHERE %4").arg(db.BracketName(DataTable()), field, literal, condition), &locked);
    });
    return done;
}

bool CScPicklist::GuaranteeDefaultEntryExists()
{
    SD_PROC("GuaranteeDefaultEntryExists");
    if (!ValidateSetup())
        return false;
    bool done = false;
    SD_GUARDED([&] {
        const std::shared_ptr<const CFilterColumn> c = column();
        DatabaseHandler& db = *m_handler;
        const QString literal = c->SQLPicklistLiteral(c->PicklistDefault());
        // An empty default that blanks allow, or one that does not fit the type, needs no entry.
        if ((c->PicklistDefault().trimmed().isEmpty() && c->PicklistAllowBlanks()) || literal.isEmpty()) {
            done = true;
            return;
        }
        const Result<bool> exists = db.RowExists(c->Name(), Picklist(), literal);
        if (!exists)
            detail::fail(QStringLiteral("cannot look for the default entry of %1: %2").arg(Picklist(), exists.error()));
        if (exists.value()) {
            done = true;
            return;
        }
        QString fields, values;
        db.AddInsertPair(fields, values, c->Name(), literal);
        done = executeInTransaction(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(db.BracketName(Picklist()), fields, values), 8363, 8364);
    });
    return done;
}

bool CScPicklist::CheckAllowBlanks()
{
    SD_PROC("CheckAllowBlanks");
    if (!ValidateSetup())
        return false;
    bool done = false;
    SD_GUARDED([&] {
        const std::shared_ptr<const CFilterColumn> c = column();
        if (!isTextual(c->ColumnType())) {
            done = true;
            return;
        }
        DatabaseHandler& db = *m_handler;
        const QString blank = db.SqlQuote(QString());
        const Result<bool> stored = db.RowExists(c->Name(), DataTable(), blank);
        const Result<bool> listed = db.RowExists(c->Name(), Picklist(), blank);
        if (!stored || !listed)
            detail::fail(QStringLiteral("cannot look for blanks of %1: %2").arg(Picklist(), stored ? listed.error() : stored.error()));
        // A blank that is stored keeps its entry even where blanks are no longer allowed (only a
        // keyword column can have one then): the key would refuse the data otherwise.
        const bool wanted = c->PicklistAllowBlanks() || stored.value();
        if (wanted && !listed.value())
            done = executeInTransaction(
                QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(db.BracketName(Picklist()), bracketedField(), blank), 8358, 8359);
        else if (!wanted && listed.value())
            done = executeInTransaction(
                QStringLiteral("DELETE FROM %1 WHERE %2 = %3").arg(db.BracketName(Picklist()), bracketedField(), blank), 8358, 8360);
        else
            done = true;
    });
    return done;
}

bool CScPicklist::AdoptStoredValues()
{
    SD_PROC("AdoptStoredValues");
    if (!ValidateSetup())
        return false;
    bool done = false;
    SD_GUARDED([&] {
        const std::shared_ptr<const CFilterColumn> c = column();
        DatabaseHandler& db = *m_handler;
        const QString data = QStringLiteral("d");
        const QString list = QStringLiteral("p");
        const QString stored = db.QualifiedName(data, c->Name());
        const QString sql = QStringLiteral("INSERT INTO %1 (%2) SELECT DISTINCT %3 FROM %4 AS %5 WHERE %3 IS NOT NULL "
                                           "AND NOT EXISTS (SELECT 1 FROM %1 AS %6 WHERE %7 = %3)")
                                .arg(db.BracketName(Picklist()), bracketedField(), stored, db.BracketName(DataTable()),
                                     db.BracketName(data), db.BracketName(list), db.QualifiedName(list, c->Name()));
        done = executeInTransaction(sql, 8373, 8374);
    });
    return done;
}

bool CScPicklist::CheckForeignKeys()
{
    if (m_keysChecked)
        return true;
    SD_PROC("CheckForeignKeys");
    bool done = false;
    SD_GUARDED([&] {
        Catalog* cat = catalog();
        if (!m_handler || !cat || !GetCatalogTable(*cat, Picklist()))
            return;
        const std::shared_ptr<TableStructure> structure = MyStructure();
        if (!structure)
            return;
        m_keysChecked = true; // once, whatever happens below
        SchemaTool& tool = schemaTool();
        for (const StructureKey& key : structure->StructureKeys())
            if (!tool.CreateForeignKey(nullptr, *cat, Picklist(), key))
                detail::fail(QStringLiteral("the key %1 of the picklist could not be made").arg(key.name));
        if (!tool.CreateForeignKey(nullptr, *cat, DataTable(), MyRelation()))
            detail::fail(QStringLiteral("the values of %1 could not be tied to the picklist %2").arg(DataTable(), Picklist()));
        done = true;
    });
    return done;
}

// ---- schema check ----------------------------------------------------------------------------------

int CScPicklist::CheckTable(IProgress* progress, int mode)
{
    SD_PROC("CheckTable");
    int result = 0;
    SD_GUARDED([&] {
        Catalog* cat = catalog();
        const std::shared_ptr<TableStructure> structure = MyStructure();
        if (!m_handler || !cat || !structure)
            return;
        SchemaTool& tool = schemaTool();
        // Mode 0 asks before each change: answers 1 to 5 end the check, any other goes on.
        auto mayChange = [&] {
            if (mode != 0)
                return true;
            const int answer = detail::askConversion(*m_handler, Picklist(), mode);
            if (detail::endsCheck(answer))
                result = answer;
            return !detail::endsCheck(answer);
        };
        // Modes other than 0 and 1 look on without changing the table.
        const bool repairs = mode == 0 || mode == 1;

        if (repairs && !tool.TableExists(*cat, *structure)) {
            if (!mayChange())
                return;
            if (!CreatePicklistTable()) {
                detail::markConversionFailed();
                detail::fail(QStringLiteral("the missing picklist table %1 could not be made").arg(Picklist()));
            }
        }
        const int columnChecks = smcColumns | smcColumnTypes | smcColumnNullability;
        const QList<SchemaDifference> differences = tool.TableDifferences(columnChecks, *cat, *structure);
        if (!differences.isEmpty()) {
            if (!repairs || !mayChange())
                return;
            for (const SchemaDifference& d : differences) {
                const std::optional<StructureColumn> wanted = structure->ColumnNamed(d.item);
                if (wanted && !tool.RepairColumn(progress, *cat, Picklist(), *wanted)) {
                    detail::markConversionFailed();
                    detail::fail(QStringLiteral("column %1 of the picklist %2 could not be repaired").arg(d.item, Picklist()));
                }
            }
        }
        if (!m_keysChecked && keysMissing(*cat) && !mayChange())
            return;
        CheckForeignKeys();
    });
    return result;
}

bool CScPicklist::keysMissing(const Catalog& cat)
{
    const CatalogTablePtr list = GetCatalogTable(cat, Picklist());
    const std::shared_ptr<TableStructure> structure = MyStructure();
    if (!list || !structure)
        return false;
    for (const StructureKey& key : structure->StructureKeys())
        if (!GetTableKey(list, key.name))
            return true;
    return !GetTableKey(GetCatalogTable(cat, DataTable()), FK_());
}

int CScPicklist::CreateHideEntryField(IProgress* progress, int mode)
{
    SD_PROC("CreateHideEntryField");
    int result = 0;
    SD_GUARDED([&] {
        Catalog* cat = catalog();
        const std::shared_ptr<TableStructure> structure = MyStructure();
        if (!m_handler || !cat || !structure)
            return;
        const CatalogTablePtr table = GetCatalogTable(*cat, Picklist());
        if (!table || GetTableColumn(table, HideEntry()))
            return;
        if (mode == 0) {
            // Answer 2 lets the field be added, as it lets a missing index be added.
            const int answer = detail::askConversion(*m_handler, Picklist(), mode);
            if (answer != 2 && detail::endsCheck(answer)) {
                result = answer;
                return;
            }
        }
        if (!schemaTool().RepairColumn(progress, *cat, Picklist(), *structure->ColumnNamed(HideEntry()))) {
            detail::markConversionFailed();
            detail::fail(QStringLiteral("the field %1 could not be added to %2").arg(HideEntry(), Picklist()));
        }
    });
    return result;
}

// ---- entries -----------------------------------------------------------------------------------------

bool CScPicklist::SaveAdditions(const QStringList& entries)
{
    SD_PROC("SaveAdditions");
    if (!m_handler || !ValidateSetup())
        return false;
    bool saved = false;
    SD_GUARDED([&] {
        const std::shared_ptr<const CFilterColumn> c = column();
        DatabaseHandler& db = *m_handler;
        const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8374), GetResourceText(8373));
        // One transaction for the whole walk: a failed insert leaves none of this call's entries.
        TableTransaction tx(db, &locked);
        if (!tx.begun())
            return;
        for (const QString& entry : entries) {
            const QString literal = c->SQLPicklistLiteral(entry);
            if (literal.isEmpty())
                continue; // not a value of this column
            // An entry that cannot be looked for (reported) is left out; the others are added.
            const Result<bool> exists = db.RowExists(c->Name(), Picklist(), literal);
            if (!exists || exists.value())
                continue;
            QString fields, values;
            db.AddInsertPair(fields, values, c->Name(), literal);
            db.AddInsertPair(fields, values, HideEntry(), db.SqlBoolean(false));
            if (!db.ExecuteSql(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(db.BracketName(Picklist()), fields, values), &locked))
                return;
        }
        saved = tx.commit();
    });
    return saved;
}

void CScPicklist::Edit(const IFormInfo* oFI)
{
    if (!m_handler || !m_baseTable || !column())
        return;
    SD_PROC("Edit");
    SD_GUARDED([&] { UiServices::current().OpenPicklistDialog(*this, oFI); });
}

} // namespace searchdata
