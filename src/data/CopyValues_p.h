#pragma once

// Helpers that copying, merging and importing share: values bound in their column's type, an
// entry's key as the link column holds it, and the writing of an entry's values.

#include "searchdata/CFilterColumns.h"

#include <QSet>
#include <QVariant>

namespace searchdata {
class ISearchBaseEntry;
}

namespace searchdata::detail {

/// A value bound in the type of its column; Null stays null. Fails (throws) when it cannot take the type.
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

/// Writes an entry's `SavedValue`s and `SavedKeys` in one transaction. With `only`, exactly those
/// columns are written, whatever they hold; without it every column is, except those that hold
/// nothing worth copying. False when something failed; then nothing was written.
bool writeEntryValues(CFilterColumns& columns, const ISearchBaseEntry& entry, const QSet<const CFilterColumn*>* only);

} // namespace searchdata::detail
