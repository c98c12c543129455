#pragma once

// Helpers that copying, merging and importing share: values bound in their column's type, an
// entry's key as the link column holds it, and the writing of an entry's values.

#include "searchdata/CFilterColumns.h"
#include "searchdata/LockedMessage.h"

#include <QSet>
#include <QVariant>

namespace searchdata {
class ISearchBaseEntry;
}

namespace searchdata::detail {

/// A value bound in the type of its column; Null, and a date that holds none, bind as NULL. Fails
/// (throws) when it cannot take the type.
QVariant boundColumnValue(const CFilterColumn& column, const Value& value);

/// A text for binding: an empty one stays an empty text, where a null QString would bind as NULL.
inline QString boundText(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

/// A value as a picklist column stores it: the list holds its texts trimmed, and its key admits
/// nothing else. Other columns keep the value as it is.
inline Value listForm(const CFilterColumn& column, const Value& value)
{
    return column.IsPicklist() && value.type() == Value::Type::Text ? Value(value.text().trimmed()) : value;
}
inline QString listForm(const CFilterColumn& column, const QString& text)
{
    return column.IsPicklist() ? text.trimmed() : text;
}

/// The key of an entry as the link column of `columns` holds it.
QVariant entryKey(const CFilterColumns& columns, const ISearchBaseEntry& entry);

/// The texts of `keys` without repeats, first occurrence kept, compared exactly as the keyword
/// table's unique key compares them.
QStringList distinctKeys(const QStringList& keys);

/// The keywords of the rows of a keyword column's table that `where` selects (with `values` bound to
/// its marks), in the order they were stored. Fails (throws) when they cannot be read.
QStringList storedKeys(const CFilterColumns& columns, const CFilterColumn& column, const QString& where, const QVariantList& values);
/// The keywords of the entry whose key is `key`.
QStringList storedKeys(const CFilterColumns& columns, const CFilterColumn& column, const QVariant& key);

/// Adds keywords to the entry whose key is `key`, each once: one that the entry holds already, or
/// that another user adds at the same moment, is passed over. The caller holds the transaction.
/// Fails (throws) naming the keyword that could not be written.
void insertKeys(const CFilterColumns& columns, const CFilterColumn& column, const QVariant& key, const QStringList& keys,
                const CDebugLockedMessage& locked);

/// How a keyword column's list went from `before` to `wanted`: the keywords that left it and those
/// that came, each once.
struct KeyChanges {
    QStringList removed, added;
};
KeyChanges keyChanges(const QStringList& before, const QStringList& wanted);

/// Writes `changes` to a keyword column's table: deletes the keywords that left from the rows that
/// `seek` selects (blank: the rows of the entry whose key is `key`), and inserts those that came for
/// that entry. The caller holds the transaction. False when a deletion failed (reported); fails
/// (throws) when an insertion does.
bool writeKeyChanges(const CFilterColumns& columns, const CFilterColumn& column, const QVariant& key, const QString& seek,
                     const KeyChanges& changes, const CDebugLockedMessage& deleting, const CDebugLockedMessage& inserting);

/// After a statement naming `fields` of `table` failed: fails (throws) naming those of them that the
/// table no longer has, when another user dropped them meanwhile; returns when all are there.
void failOnGoneFields(const CFilterColumns& columns, const QString& table, const QStringList& fields);

/// A field of an entry's search row with the value bound to it.
struct BoundField {
    QString name;
    QVariant value;
};

/// Writes the search row of the entry whose key is `key`: `changed` as an UPDATE where the row is
/// there, as a rule; else the row comes into being with `all`. Another user who gives it the row at
/// the same moment wins the INSERT; then `changed` goes as an UPDATE after all. The caller holds the
/// transaction. False when a statement failed (reported).
bool writeSearchRow(const CFilterColumns& columns, const QVariant& key, const QList<BoundField>& changed, const QList<BoundField>& all,
                    const CDebugLockedMessage& inserting, const CDebugLockedMessage& updating);

/// Forgets what was loaded of the entry whose key is `key`: once it is written otherwise than by a
/// save of its loaded values, a save compares with what is stored then.
void forgetLoaded(const CFilterColumns& columns, const QVariant& key);

/// Writes an entry's `SavedValue`s and `SavedKeys` in one transaction. With `only`, exactly those
/// columns are written, whatever they hold; without it every column is, except those that hold
/// nothing worth copying. False when something failed; then nothing was written.
bool writeEntryValues(CFilterColumns& columns, const ISearchBaseEntry& entry, const QSet<const CFilterColumn*>* only);

} // namespace searchdata::detail
