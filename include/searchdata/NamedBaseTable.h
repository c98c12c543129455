#pragma once

#include "searchdata/ISearchBaseTable.h"

#include <utility>

namespace searchdata {

/// A base table known by its name alone, with the defaults for everything else: all that a host
/// needs that selects every record and offers no help texts of its own.
class NamedBaseTable : public ISearchBaseTable {
public:
    explicit NamedBaseTable(QString name) : m_name(std::move(name)) {}
    QString TableName() const override { return m_name; }

private:
    QString m_name;
};

} // namespace searchdata
