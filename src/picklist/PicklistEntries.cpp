// Reading the entries of a picklist, and hiding, showing and removing marked ones.

#include "searchdata/PicklistEntries.h"

#include "platform/Guard_p.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Resources.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "PicklistEntries";

/// An entry as an SQL literal that finds its row: a text exactly as the table holds it, blanks
/// included; a number or a date in the column's own form, whatever the locale and the server's date
/// style. Blank for a text that is no value of the column.
QString entryLiteral(const DatabaseHandler& db, const CFilterColumn& column, const QString& entry)
{
    const FilterColumnTypeConstants type = column.ColumnType();
    if (type == fcKeyword || type == fcText || type == fcNote)
        return db.SqlQuote(entry);
    return column.SQLPicklistLiteral(entry);
}

} // namespace

Result<QList<PicklistEntry>> ReadPicklistEntries(DatabaseHandler& db, const CFilterColumn& column)
{
    using R = Result<QList<PicklistEntry>>;
    std::unique_ptr<Recordset> rs = db.OpenTableRecordset(column.PicklistTableName(), adOpenForwardOnly, adLockReadOnly);
    if (!rs)
        return R::failure(QStringLiteral("the picklist %1 cannot be read").arg(column.PicklistTableName()));
    QList<PicklistEntry> entries;
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        const Value v = rs->field(column.Name());
        if (v.isNull())
            continue;
        const Value hidden = rs->field(CScPicklist::HideEntry());
        // Drivers give dates as text and numbers in their own widths: the column's type decides the form.
        entries.append({column.InColumnType(v).valueOr(v).text(), !hidden.isBlank() && hidden.toBoolean().valueOr(false)});
    }
    return entries;
}

bool HideShowCollection(CScPicklist& picklist, const QStringList& entries, int mode)
{
    if (entries.isEmpty() || (mode != 1 && mode != 2) || !picklist.ValidateSetup())
        return false;
    SD_PROC("HideShowCollection");
    bool done = false;
    SD_GUARDED([&] {
        DatabaseHandler& db = *picklist.handler();
        const std::shared_ptr<const CFilterColumn> column = picklist.column();
        const bool hide = mode == 1;
        const CDebugLockedMessage locked = MakeLockedMessage(GetResourceText(hide ? 8366 : 8368), GetResourceText(hide ? 8365 : 8367));
        TableTransaction tx(db, &locked);
        if (!tx.begun())
            return;
        const QString update = QStringLiteral("UPDATE ") + db.BracketName(picklist.Picklist()) + QStringLiteral(" SET ")
                               + db.BracketName(CScPicklist::HideEntry()) + QStringLiteral(" = ") + db.SqlBoolean(hide) + QStringLiteral(" WHERE ")
                               + db.BracketName(column->Name()) + QStringLiteral(" = ");
        for (const QString& entry : entries) {
            const QString literal = entryLiteral(db, *column, entry);
            if (!literal.isEmpty() && !db.ExecuteSql(update + literal, &locked))
                return; // the whole batch is undone
        }
        done = tx.commit();
    });
    return done;
}

QStringList RemovePicklistEntries(CScPicklist& picklist, const QStringList& entries, bool hiddenEntries)
{
    if (entries.isEmpty() || !picklist.ValidateSetup())
        return {};
    SD_PROC("RemovePicklistEntries");
    QStringList kept;
    SD_GUARDED([&] {
        DatabaseHandler& db = *picklist.handler();
        const std::shared_ptr<const CFilterColumn> column = picklist.column();
        const CDebugLockedMessage locked =
            MakeLockedMessage(GetResourceText(hiddenEntries ? 8370 : 8372), GetResourceText(hiddenEntries ? 8369 : 8371));
        TableTransaction tx(db, &locked);
        if (!tx.begun()) {
            kept = entries;
            return;
        }
        const QString remove = QStringLiteral("DELETE FROM ") + db.BracketName(picklist.Picklist()) + QStringLiteral(" WHERE ")
                               + db.BracketName(column->Name()) + QStringLiteral(" = ");
        for (const QString& entry : entries) {
            const QString literal = entryLiteral(db, *column, entry);
            // An entry that stored values use stays: the list must keep offering what records hold.
            const Result<bool> used = literal.isEmpty() ? Result<bool>::failure(QString()) : db.RowExists(column->Name(), picklist.DataTable(), literal);
            if (!used || used.value() || !db.ExecuteSql(remove + literal, &locked))
                kept.append(entry);
        }
        // A removal may have taken the default entry or the blank one: they come back in the same
        // transaction, so that the list is never seen without them.
        if (!picklist.GuaranteeDefaultEntryExists() || !picklist.CheckAllowBlanks() || !tx.commit())
            kept = entries;
    });
    return kept;
}

} // namespace searchdata
