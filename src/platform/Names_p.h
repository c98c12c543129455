#pragma once

// Look-ups of named items (columns, keys, indexes) as the databases treat names: ignoring case.

#include <QString>
#include <QStringList>
#include <optional>

namespace searchdata::detail {

/// The item of `list` whose `name` equals `name` ignoring case.
template <typename List>
auto findNamed(const List& list, const QString& name) -> std::optional<typename List::value_type>
{
    for (const auto& item : list)
        if (item.name.compare(name, Qt::CaseInsensitive) == 0)
            return item;
    return std::nullopt;
}

/// Whether two lists of names are equal, item by item, ignoring case.
inline bool sameNames(const QStringList& a, const QStringList& b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i)
        if (a[i].compare(b[i], Qt::CaseInsensitive) != 0)
            return false;
    return true;
}

} // namespace searchdata::detail
