// Importing values from fields of another table into one entry's search data.

#include "searchdata/CFilterColumns.h"

#include "data/CopyValues_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CImportFields.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/Resources.h"
#include "searchdata/Validation.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

} // namespace

bool CFilterColumn::ImportFieldFits(const CImportField& field) const
{
    const Value v = field.FieldValue();
    if (v.isBlank())
        return false;
    const QString text = v.text();
    switch (m_columnType) {
    case fcKeyword:
    case fcText:
    case fcNote:
        return text.size() <= TextLengthInDB();
    // A blank passes the number checks of a text box, but gives no number to store.
    case fcInteger16: return !text.trimmed().isEmpty() && ValidInteger16(text);
    case fcInteger32: return !text.trimmed().isEmpty() && ValidInteger32(text);
    case fcSingle: return !text.trimmed().isEmpty() && ValidSingle(text);
    case fcDouble: return !text.trimmed().isEmpty() && ValidDouble(text);
    case fcDateTime: return field.Field().type == adDate;
    case fcBoolean: return field.Field().type == adBoolean;
    default: return false;
    }
}

bool CFilterColumns::ImportData(const ISearchBaseEntry* entry, const CImportFields& fields)
{
    if (!entry || !m_handler)
        return false;
    SD_PROC("ImportData");
    bool done = false;
    SD_GUARDED([&] {
        const QString seek = SearchTableSeekCriteria(entry);
        if (seek.isEmpty())
            return;
        DatabaseHandler& db = *m_handler;
        const QString table = db.BracketName(SearchKeyword(nullptr));
        const QString keyTest = BracketedKeyColumnName() + QStringLiteral(" = ?");
        const QVariant key = detail::entryKey(*this, *entry);
        detail::forgetLoaded(*this, key);
        TableTransaction tx(db);
        if (!tx.begun())
            return;
        bool rowReady = false;
        // A column that two fields name takes the later value.
        QList<const CFilterColumn*> order;
        QHash<const CFilterColumn*, QVariant> given;
        for (const CImportFields::FieldPtr& field : fields) {
            const ColumnPtr column = Item(field->Name());
            if (!column)
                continue;
            if (column->ColumnType() == fcKeyword) {
                if (!ImportDataKeyword(entry, *column, seek, *field))
                    return;
                continue;
            }
            if (!rowReady) {
                int mode = 1;
                if (!OpenSearchTable(entry, SearchKeyword(nullptr), seek, mode, true))
                    return;
                rowReady = true;
            }
            if (!column->ImportFieldFits(*field))
                continue;
            const QVariant bound = detail::boundColumnValue(*column, detail::listForm(*column, field->FieldValue()));
            if (column->IsPicklist()) {
                const std::shared_ptr<CScPicklist> picklist = PicklistOf(*column);
                if (!picklist || !picklist->SaveAdditions({Value::fromVariant(bound).text()}))
                    return;
            }
            if (!given.contains(column.get()))
                order.append(column.get());
            given.insert(column.get(), bound);
        }
        if (rowReady) {
            QString assignments;
            QVariantList values;
            for (const CFilterColumn* column : order) {
                db.AddSetPair(assignments, column->Name(), QStringLiteral("?"));
                values << given.value(column);
            }
            // Fields that hold nothing get the type's empty value. A date stays without one rather than
            // become day 0, and a picklist field rather than hold a value its list may lack.
            for (const ColumnPtr& column : m_columns) {
                const FilterColumnTypeConstants type = column->ColumnType();
                if (type == fcKeyword || type == fcDateTime || type == fcUndefined || column->IsPicklist() || given.contains(column.get()))
                    continue;
                const Value empty = type == fcText || type == fcNote ? Value(QString()) : Value(qint16(0));
                const QString name = db.BracketName(column->Name());
                if (!assignments.isEmpty())
                    assignments += QStringLiteral(", ");
                assignments += QStringLiteral("%1 = COALESCE(%1, ?)").arg(name);
                values << detail::boundColumnValue(*column, empty);
            }
            if (!assignments.isEmpty()) {
                values << key;
                const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(8473), GetResourceText(8471));
                if (!db.ExecuteSql(QStringLiteral("UPDATE %1 SET %2 WHERE %3").arg(table, assignments, keyTest), values, &locked))
                    return;
            }
        }
        done = tx.commit();
    });
    return done;
}

bool CFilterColumns::ImportDataKeyword(const ISearchBaseEntry* entry, const CFilterColumn& column, const QString& seek,
                                       const CImportField& field)
{
    Q_UNUSED(seek); // the entry's own criteria, bound below as its key
    if (!entry || !m_handler || column.ColumnType() != fcKeyword)
        return false;
    const Value v = field.FieldValue();
    if (v.isBlank())
        return true; // the keyword table holds no nulls
    SD_PROC("ImportDataKeyword");
    bool done = false;
    SD_GUARDED([&] {
        const QString text = detail::boundText(detail::listForm(column, v.text()));
        TableTransaction tx(*m_handler);
        if (!tx.begun())
            return;
        if (column.IsPicklist()) {
            const std::shared_ptr<CScPicklist> picklist = PicklistOf(column);
            if (!picklist || !picklist->SaveAdditions({text}))
                return;
        }
        // A second import of the same value adds nothing.
        detail::insertKeys(*this, column, detail::entryKey(*this, *entry), {text}, MakeLockedMessage(GetResourceText(8479), GetResourceText(8477)));
        done = tx.commit();
    });
    return done;
}

} // namespace searchdata
