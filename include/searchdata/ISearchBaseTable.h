#pragma once

#include <QString>

namespace searchdata {

/// What the host tells the library about one of its base tables. The defaults describe a table that
/// selects every record and offers no help texts; a host overrides what it knows better.
class ISearchBaseTable {
public:
    virtual ~ISearchBaseTable() = default;
    /// Name of the base table as the database spells it.
    virtual QString TableName() const { return {}; }
    /// A SELECT of the link column up to its WHERE clause that limits which records get search rows;
    /// blank for all records.
    virtual QString SearchSelectionCriteria() const { return {}; }
    /// Caption of the table for progress texts.
    virtual QString Caption() const { return TableName(); }
    /// Caption of the filter dialog; blank for the library's own.
    virtual QString EditFilterCaption() const { return {}; }
    /// Caption of the filter's help window; blank for the library's own.
    virtual QString EditFilterHelpCaption() const { return {}; }
    /// Help text for filtering on one of the table's own fields.
    virtual QString EditFilterColumnHelpText(const QString& fieldName) const { Q_UNUSED(fieldName); return {}; }
};

} // namespace searchdata
