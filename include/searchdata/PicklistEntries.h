#pragma once

#include "searchdata/Result.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace searchdata {

class CFilterColumn;
class CScPicklist;
class DatabaseHandler;

/// One entry of a picklist as its table holds it.
struct PicklistEntry {
    QString text;        ///< the value in its column's type, as users see and type it
    bool hidden = false; ///< no longer offered to records that do not hold it
};

/// The entries of the picklist of `column`, in the order of the table, nulls left out; a failure when
/// the table is missing or cannot be read (reported).
Result<QList<PicklistEntry>> ReadPicklistEntries(DatabaseHandler& db, const CFilterColumn& column);

/// What the picklist dialog does to entries that the user marked, for callers with or without it.

/// Hides (mode 1) or shows again (mode 2) the entries of `picklist` whose texts are `entries`, all in
/// one transaction: on failure nothing changes and the result is false. Other modes do nothing.
bool HideShowCollection(CScPicklist& picklist, const QStringList& entries, int mode);

/// Deletes the entries `entries` that no stored value uses and keeps the default and blank entries
/// in step with the column, all in one transaction: on failure nothing changes. Gives the texts that stay because stored values
/// use them, or because their deletion failed. `hiddenEntries` tells which kind of entries the user
/// marked, for the texts shown while the table is locked.
QStringList RemovePicklistEntries(CScPicklist& picklist, const QStringList& entries, bool hiddenEntries);

} // namespace searchdata
