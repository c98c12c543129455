#pragma once

#include <QString>

namespace searchdata {

/// What a host sees of a filter: whether it has terms, and the predicate to AND into its WHERE clause.
class ISqlFilterTerms {
public:
    virtual ~ISqlFilterTerms() = default;
    virtual bool HasTerms() const { return false; }
    /// Predicate on the base table's link column; blank when there is nothing to filter.
    virtual QString SQLString() const { return {}; }
};

} // namespace searchdata
