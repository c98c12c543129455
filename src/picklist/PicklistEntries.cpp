// Hiding, showing and removing marked picklist entries.

#include "searchdata/PicklistEntries.h"

#include "platform/Guard_p.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Resources.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "PicklistEntries";

/// A value of `SQLFormatPicklistValue` as SQL: texts are literals already, numbers go in the C form.
QString literalOf(const Value& v)
{
    if (v.isBlank())
        return {};
    if (v.type() == Value::Type::Text)
        return v.text();
    return Dialect::sqlNumber(v.toDouble().valueOr(0));
}

} // namespace

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
        const QString update = QStringLiteral("UPDATE %1 SET %2 = %3 WHERE %4 = ")
                                   .arg(db.BracketName(picklist.Picklist()), db.BracketName(CScPicklist::HideEntry()), db.SqlBoolean(hide),
                                        db.BracketName(column->Name()));
        for (const QString& entry : entries)
            if (!db.ExecuteSql(update + db.SqlQuote(entry), &locked))
                return; // the whole batch is undone
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
        const QString remove = QStringLiteral("DELETE FROM %1 WHERE %2 = ").arg(db.BracketName(picklist.Picklist()), db.BracketName(column->Name()));
        for (const QString& entry : entries) {
            const QString literal = literalOf(column->SQLFormatPicklistValue(entry));
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
