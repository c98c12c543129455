#include "searchdata/CFilterColumns.h"

#include "platform/Guard_p.h"
#include "searchdata/CCommon.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/Resources.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/Validation.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

} // namespace

CFilterColumns::CFilterColumns() = default;

CFilterColumns::~CFilterColumns() = default;

SchemaTool& CFilterColumns::schemaTool() const
{
    static SchemaTool standard;
    return m_schemaTool ? *m_schemaTool : standard;
}

QString CFilterColumns::BracketedKeyColumnName() const
{
    return m_handler ? m_handler->BracketName(KeyColumnName()) : KeyColumnName();
}

// ---- opening ---------------------------------------------------------------------------------------

void CFilterColumns::Setup(std::shared_ptr<DatabaseHandler> handler, std::shared_ptr<ISearchBaseTable> baseTable,
                           std::shared_ptr<searchdata::Catalog> catalog, std::shared_ptr<IProfile> profile, int,
                           std::shared_ptr<TableStructure> baseStructure)
{
    SD_PROC("Setup");
    SD_GUARDED([&] {
        if (!baseTable || !baseStructure)
            m_status = kvoFCSMissingBaseTable; // and go on: a later step that needs them ends the open
        m_baseTableObject = baseTable;
        m_baseStructure = baseStructure;
        m_profile = profile;
        if (!handler) {
            m_status = kvoFCSMissingDatabaseHandler;
            return;
        }
        m_handler = handler;
        if (!catalog) {
            m_status = kvoFCSMissingDatabase;
            return;
        }
        m_catalog = catalog;
        if (!baseTable)
            detail::fail(QStringLiteral("no base table was given"));
        m_baseTable = GetCatalogTable(*m_catalog, baseTable->TableName());
        if (!m_baseTable) {
            m_status = kvoFCSBaseTableNotDefined;
            return;
        }
        if (!baseStructure)
            detail::fail(QStringLiteral("no structure of the base table was given"));
        const std::optional<StructureKey> primary = baseStructure->PrimaryKey();
        if (!primary) {
            m_status = kvoFCSBaseTableMissingPrimaryIndex;
            return;
        }
        if (primary->columns.size() > 1) {
            m_status = kvoFSCBaseTablePrimaryIndexSegmented;
            return;
        }
        if (primary->columns.isEmpty()) {
            m_status = kvoFCSNoColumnsDefined;
            return;
        }
        m_baseKeyColumn = GetTableColumn(m_baseTable, primary->columns.first());
        ColumnsFetch();
        if (m_columns.isEmpty()) {
            m_status = kvoFCSNoColumnsDefined;
            return;
        }
        const std::shared_ptr<TableStructure> definition = MyStructureDefinition();
        if (definition && schemaTool().TableExists(*m_catalog, *definition)
            && schemaTool().TableMatches(smcColumnTypes | smcColumnNullability, *m_catalog, *definition))
            m_status = kvoFCSSuccess;
    });
}

// ---- the columns -------------------------------------------------------------------------------------

CFilterColumns::ColumnPtr CFilterColumns::Add(const QString& strName, const QString& strCaption, const QString& strDescription,
                                              FilterColumnTypeConstants enmType, qint16 intTextLengthInUI, bool blnIsPicklist,
                                              bool blnPicklistAllowBlanks, const QString& strPicklistDefault,
                                              EFilterColumnDateTimeDefaultModeConstants enmDateTimeDefaultMode,
                                              const Value& varDateTimeDefaultValue, bool blnDisableEditDateTime)
{
    return addColumn(strName, strCaption, strDescription, enmType, intTextLengthInUI, blnIsPicklist, blnPicklistAllowBlanks,
                     strPicklistDefault, enmDateTimeDefaultMode, varDateTimeDefaultValue, blnDisableEditDateTime, nullptr);
}

CFilterColumns::ColumnPtr CFilterColumns::Add(const QString& strName, const QString& strCaption, const QString& strDescription,
                                              FilterColumnTypeConstants enmType, qint16 intTextLengthInUI, bool blnIsPicklist,
                                              bool blnPicklistAllowBlanks, const QString& strPicklistDefault,
                                              EFilterColumnDateTimeDefaultModeConstants enmDateTimeDefaultMode,
                                              const Value& varDateTimeDefaultValue, bool blnDisableEditDateTime,
                                              const QString& strMergeName)
{
    return addColumn(strName, strCaption, strDescription, enmType, intTextLengthInUI, blnIsPicklist, blnPicklistAllowBlanks,
                     strPicklistDefault, enmDateTimeDefaultMode, varDateTimeDefaultValue, blnDisableEditDateTime, &strMergeName);
}

CFilterColumns::ColumnPtr CFilterColumns::addColumn(const QString& name, const QString& caption, const QString& description,
                                                    FilterColumnTypeConstants type, qint16 textLength, bool isPicklist,
                                                    bool allowBlanks, const QString& picklistDefault,
                                                    EFilterColumnDateTimeDefaultModeConstants dateMode, const Value& dateDefault,
                                                    bool disableEdit, const QString* mergeName, bool stored)
{
    SD_PROC("Add");
    ColumnPtr result;
    SD_GUARDED([&] {
        if (name.trimmed().isEmpty())
            detail::fail(QStringLiteral("a column needs a name"));
        // A stored column keeps the name it has, whatever an earlier version let through.
        if (const QString refusal = stored ? QString() : ColumnNameRefusal(name); !refusal.isEmpty())
            detail::fail(refusal);
        if (indexOfName(name) >= 0)
            detail::fail(QStringLiteral("the base table %1 has a column %2 already").arg(BaseTableName(), name));
        auto column = std::make_shared<CFilterColumn>();
        column->setName(name);
        column->setCaption(caption);
        column->setDescription(description);
        column->setColumnType(type);
        column->setTextLengthInUI(textLength);
        column->setIsPicklist(isPicklist);
        column->setPicklistAllowBlanks(allowBlanks);
        column->setPicklistDefault(picklistDefault);
        column->setIndex(static_cast<qint16>(Count() + 1));
        column->setDateTimeDefaultMode(dateMode);
        column->setDateTimeDefaultValue(dateDefault);
        column->setDisableEditDateTime(disableEdit);
        if (mergeName) {
            column->setMergeName(*mergeName);
            column->setIsMergeColumn(true);
        }
        column->SetupContext(m_catalog, SearchKeyword(nullptr), m_handler, SearchKeyword(column.get()), BaseTableName());
        m_columns.append(column);
        ResetColumnKindCaches();
        result = column;
    });
    return result;
}

int CFilterColumns::indexOfName(const QString& name) const
{
    for (int i = 0; i < m_columns.size(); ++i)
        if (TextEquals(m_columns[i]->Name(), name, 1))
            return i;
    return -1;
}

CFilterColumns::ColumnPtr CFilterColumns::Item(const Value& varIndex) const
{
    switch (varIndex.type()) {
    case Value::Type::Text: {
        const QString text = varIndex.text();
        if (text.isEmpty())
            return nullptr;
        const int i = indexOfName(text);
        if (i >= 0)
            return m_columns[i];
        for (const ColumnPtr& c : m_columns)
            if (TextEquals(c->Caption(), text, 1))
                return c;
        return nullptr;
    }
    case Value::Type::Int16:
    case Value::Type::Int32:
    case Value::Type::Single:
    case Value::Type::Double: {
        const Result<qint32> position = varIndex.toInt32();
        if (position && position.value() >= 1 && position.value() <= Count())
            return m_columns[position.value() - 1];
        return nullptr;
    }
    default:
        return nullptr;
    }
}

void CFilterColumns::renumber()
{
    for (int i = 0; i < m_columns.size(); ++i)
        m_columns[i]->setIndex(static_cast<qint16>(i + 1));
}

bool CFilterColumns::MoveColumnDown(const ColumnPtr& column)
{
    if (!column || column->Index() >= Count())
        return false;
    const int at = column->Index() - 1;
    if (at < 0 || m_columns.value(at) != column)
        return false;
    m_columns.swapItemsAt(at, at + 1);
    renumber();
    return true;
}

bool CFilterColumns::MoveColumnUp(const ColumnPtr& column)
{
    if (!column || column->Index() <= 1)
        return false;
    const int at = column->Index() - 1;
    if (at >= m_columns.size() || m_columns.value(at) != column)
        return false;
    m_columns.swapItemsAt(at, at - 1);
    renumber();
    return true;
}

void CFilterColumns::RemoveColumn(const QString& name)
{
    const int i = indexOfName(name);
    if (i < 0)
        return;
    m_columns.removeAt(i);
    // Positions stay a sequence, so that a column added later does not take a position twice.
    renumber();
    ResetColumnKindCaches();
}

void CFilterColumns::ResetColumnKindCaches()
{
    m_hasStandardColumns.reset();
    m_hasKeywordColumns.reset();
}

bool CFilterColumns::HasStandardColumns()
{
    if (!m_hasStandardColumns)
        m_hasStandardColumns = std::any_of(m_columns.cbegin(), m_columns.cend(),
                                           [](const ColumnPtr& c) { return c->ColumnType() != fcKeyword; });
    return *m_hasStandardColumns;
}

bool CFilterColumns::HasKeywordColumns()
{
    if (!m_hasKeywordColumns)
        m_hasKeywordColumns = std::any_of(m_columns.cbegin(), m_columns.cend(),
                                          [](const ColumnPtr& c) { return c->ColumnType() == fcKeyword; });
    return *m_hasKeywordColumns;
}

CFilterColumns::ColumnPtr CFilterColumns::FindByMergeName(const QString& name) const
{
    for (const ColumnPtr& c : m_columns)
        if (c->IsMergeColumn() && TextEquals(c->MergeName(), name, 1))
            return c;
    return nullptr;
}

// ---- the definition table -------------------------------------------------------------------------

std::shared_ptr<TableStructure> CFilterColumns::MyStructureDefinition()
{
    if (m_definitionStructure)
        return m_definitionStructure;
    SD_PROC("MyStructureDefinition");
    SD_GUARDED([&] {
        const QString falseLiteral = m_handler ? m_handler->SqlBoolean(false) : QStringLiteral("0");
        auto s = TableStructure::NewStructure(definitionTableName());
        const bool built = s && s->AddColumn(QStringLiteral("BaseTable"), adVarWChar, 0, 0, false)
                        && s->AddColumn(QStringLiteral("Position"), adInteger, 0, 0, false)
                        && s->AddColumn(QStringLiteral("Name"), adVarWChar, 0, 0, false)
                        && s->AddColumn(QStringLiteral("Type"), adInteger)
                        && s->AddColumn(QStringLiteral("Size"), adSmallInt)
                        && s->AddColumn(QStringLiteral("Caption"), adVarWChar)
                        && s->AddColumn(QStringLiteral("Description"), adVarWChar)
                        && s->AddColumn(QStringLiteral("IsPicklist"), adBoolean)
                        && s->AddColumn(QStringLiteral("PicklistAllowBlanks"), adBoolean)
                        && s->AddColumn(QStringLiteral("PicklistDefault"), adVarWChar)
                        && s->AddColumn(QStringLiteral("DateTimeDefaultMode"), adInteger, 0, 0, true, true, QStringLiteral("0"))
                        && s->AddColumn(QStringLiteral("DateTimeDefaultValue"), adDate)
                        && s->AddColumn(QStringLiteral("DisableEditDateTime"), adBoolean, 0, 0, true, true, falseLiteral)
                        && s->AddIndex(QStringLiteral("BaseTableIndex"), {QStringLiteral("BaseTable")})
                        && s->AddIndex(QStringLiteral("ColumnNameField"), {QStringLiteral("Name")})
                        && s->AddPrimaryKey(QStringLiteral("PK_SearchColumnConfiguration"), {QStringLiteral("BaseTable"), QStringLiteral("Position")})
                        && s->AddUniqueKey(QStringLiteral("UK_SearchColumnConfiguration"), {QStringLiteral("BaseTable"), QStringLiteral("Name")});
        if (built)
            m_definitionStructure = s;
    });
    return m_definitionStructure;
}

std::unique_ptr<Recordset> CFilterColumns::OpenDefinitionTable()
{
    SD_PROC("OpenDefinitionTable");
    std::unique_ptr<Recordset> result;
    SD_GUARDED([&] {
        if (!m_handler)
            return;
        if (!m_handler->tableExists(definitionTableName())) {
            result = CreateDefinitionTable();
            return;
        }
        const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8469), GetResourceText(8470));
        // In position order: a base table's rows may differ in the case of its name, and still belong together.
        result = m_handler->OpenSqlRecordset(QStringLiteral("SELECT * FROM %1 ORDER BY %2, %3")
                                                 .arg(m_handler->BracketName(definitionTableName()),
                                                      m_handler->BracketName(QStringLiteral("Position")),
                                                      m_handler->BracketName(QStringLiteral("BaseTable"))),
                                             adOpenKeyset, adLockOptimistic, &locked);
    });
    return result;
}

std::unique_ptr<Recordset> CFilterColumns::CreateDefinitionTable()
{
    SD_PROC("CreateDefinitionTable");
    std::unique_ptr<Recordset> result;
    SD_GUARDED([&] {
        const std::shared_ptr<TableStructure> definition = MyStructureDefinition();
        if (!m_catalog || !definition)
            return;
        if (!schemaTool().CreateTable(nullptr, *m_catalog, *definition))
            detail::fail(QStringLiteral("the definition table could not be made"));
        result = OpenDefinitionTable();
    });
    return result;
}

void CFilterColumns::ColumnsFetch()
{
    SD_PROC("ColumnsFetch");
    SD_GUARDED([&] {
        m_columns.clear();
        ResetColumnKindCaches();
        std::unique_ptr<Recordset> rs = OpenDefinitionTable();
        if (!rs)
            return;
        const QString base = BaseTableName();
        for (; !rs->EndOfFile(); rs->MoveNext()) {
            if (!TextEquals(rs->field(QStringLiteral("BaseTable")).text(), base, 1))
                continue;
            const QString name = rs->field(QStringLiteral("Name")).text();
            const QString caption = rs->field(QStringLiteral("Caption")).text();
            const QString description = rs->field(QStringLiteral("Description")).text();
            const auto type = static_cast<FilterColumnTypeConstants>(rs->field(QStringLiteral("Type")).toInt32().valueOr(fcUndefined));
            Value v;
            const qint16 size = GetOptionalField(*rs, QStringLiteral("Size"), v) ? v.toInt16().valueOr(0) : 0;
            const bool isPicklist = rs->field(QStringLiteral("IsPicklist")).toBoolean().valueOr(false);
            const bool allowBlanks = rs->field(QStringLiteral("PicklistAllowBlanks")).toBoolean().valueOr(false);

            QString picklistDefault = rs->field(QStringLiteral("PicklistDefault")).text();
            if (picklistDefault.trimmed().isEmpty())
                picklistDefault.clear();
            else if (type == fcDateTime)
                picklistDefault = Value(picklistDefault).isDate() ? DateToText(Value(picklistDefault).toDateTime().value()) : QString();

            auto dateMode = fcDTDM_Configure;
            Value dateDefault = Value::null();
            bool disableEdit = false;
            Value mode, dateValue, disable;
            const bool hasMode = GetOptionalField(*rs, QStringLiteral("DateTimeDefaultMode"), mode);
            const bool hasDate = GetOptionalField(*rs, QStringLiteral("DateTimeDefaultValue"), dateValue);
            const bool hasDisable = GetOptionalField(*rs, QStringLiteral("DisableEditDateTime"), disable);
            // Each field that is there counts; only the missing ones take their defaults.
            if (hasMode && mode.toInt32().valueOr(0) == fcDTDM_Now)
                dateMode = fcDTDM_Now;
            if (hasDate && !dateValue.isBlank() && dateValue.isDate())
                dateDefault = Value(dateValue.toDateTime().value());
            if (hasDisable)
                disableEdit = disable.toBoolean().valueOr(false);
            if (!hasMode || !hasDate || !hasDisable)
                m_convertRequired = true;

            Value merge;
            const bool isMerge = GetOptionalField(*rs, QStringLiteral("MergeName"), merge) && !merge.text().trimmed().isEmpty();
            const QString mergeName = merge.text();
            addColumn(name, caption, description, type, size, isPicklist, allowBlanks, picklistDefault, dateMode, dateDefault,
                      disableEdit, isMerge ? &mergeName : nullptr, true);
        }
    });
}

bool CFilterColumns::DeleteColumnDefinition(const ColumnPtr& column)
{
    if (!column || !m_handler)
        return true;
    SD_PROC("DeleteColumnDefinition");
    bool done = false;
    SD_GUARDED([&] {
        DatabaseHandler& db = *m_handler;
        // The base table's name is matched as rows are read: ignoring case.
        const QString sql = QStringLiteral("DELETE FROM %1 WHERE LOWER(%2) = LOWER(%3) AND %4 = %5")
                                .arg(db.BracketName(definitionTableName()), db.BracketName(QStringLiteral("BaseTable")),
                                     db.SqlQuote(BaseTableName()), db.BracketName(QStringLiteral("Name")), db.SqlQuote(column->Name()));
        const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8465, {column->Name()}), GetResourceText(8466));
        TableTransaction tx(db, &locked);
        done = tx.begun() && db.ExecuteSql(sql, &locked) && tx.commit();
    });
    return done;
}

bool CFilterColumns::ColumnsSave(IProgress* progress)
{
    SD_PROC("ColumnsSave");
    if (!m_handler || !m_catalog)
        return false;
    bool saved = false;
    // The definitions are deleted and written anew, so every save writes every column.
    for (const ColumnPtr& c : m_columns)
        c->setSaveDone(false);
    SD_GUARDED([&] {
        // One transaction: the inner ones of the steps become savepoints, and a failure anywhere
        // leaves definitions, tables and data as they were.
        const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8456, {BaseTableName()}), GetResourceText(8457));
        TableTransaction tx(*m_handler, &locked);
        saved = tx.begun() && columnsSaveSteps(progress) && tx.commit();
    });
    if (!saved) {
        m_catalog->Refresh();
        for (const ColumnPtr& c : m_columns)
            c->setSaveDone(false);
    }
    return saved;
}

bool CFilterColumns::columnsSaveSteps(IProgress* progress)
{
    ResetColumnKindCaches();
    if (!GetCatalogTable(*m_catalog, definitionTableName())) {
        std::unique_ptr<Recordset> created = OpenDefinitionTable();
        DatabaseHandler::CloseRecordset(created);
        m_catalog->Refresh();
        if (!GetCatalogTable(*m_catalog, definitionTableName()))
            return false;
    }

    const std::shared_ptr<CSearchFilter> stored =
        CreateSearchFilterObject(m_handler, m_baseTableObject, m_catalog, m_profile, 0, m_baseStructure);
    const std::shared_ptr<CFilterColumns> before = stored ? stored->FilterColumns() : nullptr;
    if (!before)
        detail::fail(QStringLiteral("the stored definitions of %1 could not be read").arg(BaseTableName()));

    for (const ColumnPtr& old : *before) {
        const ColumnPtr now = Item(old->Name());
        const bool lost = !now || now->ColumnType() != old->ColumnType() || now->TextLengthInUI() != old->TextLengthInUI();
        if (lost && !KillColumnData(*old))
            return false;
        if (!DeleteColumnDefinition(old))
            return false;
    }

    const QDateTime timeStamp = QDateTime::currentDateTime();
    bool allKeywords = true;
    for (const ColumnPtr& column : m_columns) {
        allKeywords = allKeywords && column->ColumnType() == fcKeyword;
        if (!ColumnSave(progress, column, before->Item(column->Name()), timeStamp))
            return false;
    }

    if (allKeywords) {
        // Nothing is left for the search table to hold.
        const QString searchTable = SearchKeyword(nullptr);
        if (GetCatalogTable(*m_catalog, searchTable)
            && !(schemaTool().DropTableKeys(progress, *m_catalog, searchTable) && schemaTool().DropTable(progress, *m_catalog, searchTable)))
            return false;
    }
    return true;
}

bool CFilterColumns::ColumnSave(IProgress* progress, const ColumnPtr& column, const ColumnPtr& oldColumn, const QDateTime& timeStamp)
{
    if (!column || column->SaveDone())
        return true;
    SD_PROC("ColumnSave");
    bool saved = false;
    SD_GUARDED([&] {
        // A column that is not stored yet may have been renamed since it was added.
        if (const QString refusal = oldColumn ? QString() : ColumnNameRefusal(column->Name()); !refusal.isEmpty())
            detail::fail(refusal);
        DatabaseHandler& db = *m_handler;
        QString fields, values;
        db.AddInsertPair(fields, values, QStringLiteral("BaseTable"), db.SqlQuote(BaseTableName()));
        db.AddInsertPair(fields, values, QStringLiteral("Position"), QString::number(column->Index()));
        db.AddInsertPair(fields, values, QStringLiteral("Name"), db.SqlQuote(column->Name()));
        db.AddInsertPair(fields, values, QStringLiteral("Type"), QString::number(column->ColumnType()));
        db.AddInsertPair(fields, values, QStringLiteral("Size"), QString::number(column->TextLengthInUI()));
        db.AddInsertPair(fields, values, QStringLiteral("Caption"), db.SqlQuote(column->Caption()));
        db.AddInsertPair(fields, values, QStringLiteral("Description"), db.SqlQuote(column->Description()));
        db.AddInsertPair(fields, values, QStringLiteral("IsPicklist"), db.SqlBoolean(column->IsPicklist()));
        db.AddInsertPair(fields, values, QStringLiteral("PicklistAllowBlanks"), db.SqlBoolean(column->PicklistAllowBlanks()));
        const QString picklistDefault = column->SQLPicklistLiteral(column->PicklistDefault());
        db.AddInsertPair(fields, values, QStringLiteral("PicklistDefault"), picklistDefault.isEmpty() ? QStringLiteral("NULL") : picklistDefault);
        db.AddInsertPair(fields, values, QStringLiteral("DateTimeDefaultMode"), QString::number(column->DateTimeDefaultMode()));
        const Value dateDefault = column->DateTimeDefaultValue();
        if (column->DateTimeDefaultMode() == fcDTDM_Configure && !dateDefault.isBlank() && dateDefault.isDate())
            db.AddInsertPair(fields, values, QStringLiteral("DateTimeDefaultValue"), db.SqlDate(dateDefault.toDateTime().value()));
        db.AddInsertPair(fields, values, QStringLiteral("DisableEditDateTime"), db.SqlBoolean(column->DisableEditDateTime()));
        if (column->IsMergeColumn() && !column->MergeName().trimmed().isEmpty())
            db.AddInsertPair(fields, values, QStringLiteral("MergeName"), db.SqlQuote(column->MergeName()));
        const QString insert = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(db.BracketName(definitionTableName()), fields, values);

        const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8456, {column->Name()}), GetResourceText(8457));
        TableTransaction tx(db, &locked);
        if (!(tx.begun() && db.ExecuteSql(insert, &locked) && tx.commit()))
            return;

        const QString table = SearchKeyword(column.get());
        std::shared_ptr<TableStructure> structure = GetCatalogTable(*m_catalog, table)
                                                        ? MyStructureDefault(*column, timeStamp)
                                                        : BuildDefaultTable(progress, *column, true, timeStamp);
        if (!structure)
            return;
        if (!schemaTool().ApplyStructure(progress, *m_catalog, *structure))
            return;
        column->setSaveDone(true);
        // A table that differs from its definitions (one of an earlier version, say) is the schema
        // check's to repair; the definition is saved all the same, without the filling and the list.
        if (!schemaTool().TableExists(*m_catalog, *structure) || !schemaTool().TableMatches(smcEverything, *m_catalog, *structure)) {
            saved = true;
            return;
        }

        if (column->IsNew() && column->ColumnType() == fcNote && !column->PicklistDefault().trimmed().isEmpty()) {
            const CDebugLockedMessage filling = MakeLockedMessage(GetResourceText(8458, {column->Name()}));
            if (!db.ExecuteSql(QStringLiteral("UPDATE %1 SET %2 = %3")
                                   .arg(db.BracketName(table), db.BracketName(column->Name()), column->SQLPicklistLiteral(column->PicklistDefault())),
                               &filling))
                return;
        }
        // The old column's picklist settings decide whether the list is made, changed or dropped.
        saved = SavePicklist(column, oldColumn);
    });
    return saved;
}

bool CFilterColumns::KillColumnData(const CFilterColumn& column)
{
    if (!m_catalog)
        return false;
    SD_PROC("KillColumnData");
    bool done = false;
    SD_GUARDED([&] {
        SchemaTool& tool = schemaTool();
        auto destroyPicklist = [&] {
            if (!column.IsPicklist())
                return true;
            const std::shared_ptr<CScPicklist> picklist = PicklistOf(column);
            return picklist && picklist->DestroyPicklist();
        };
        if (column.ColumnType() != fcKeyword) {
            if (!destroyPicklist())
                return;
            const QString table = SearchKeyword(nullptr);
            const CatalogTablePtr searchTable = GetCatalogTable(*m_catalog, table);
            if (searchTable && GetTableColumn(searchTable, column.Name()) && !tool.DropColumn(nullptr, *m_catalog, table, column.Name()))
                return;
        } else {
            const QString table = SearchKeyword(&column);
            if (GetCatalogTable(*m_catalog, table)
                && !(tool.DropTableKeys(nullptr, *m_catalog, table) && tool.DropTable(nullptr, *m_catalog, table)))
                return;
            // The list goes too: a later column of the same name could not make its own beside it.
            if (!destroyPicklist())
                return;
        }
        done = true;
    });
    return done;
}

// ---- where dialogs stand --------------------------------------------------------------------------

QPointF CFilterColumns::FormPosition(QSizeF formSize, QSizeF screenSize, float dialogOffset) const
{
    qreal left = m_ownerLocation.left + dialogOffset;
    qreal top = m_ownerLocation.top + dialogOffset;
    if (left < 0)
        left = 0;
    else if (formSize.width() + left > screenSize.width())
        left = screenSize.width() - formSize.width();
    if (top < 0)
        top = 0;
    else if (formSize.height() + top > screenSize.height())
        top = screenSize.height() - formSize.height();
    return {left, top};
}

} // namespace searchdata
