#pragma once

#include "searchdata/CImportField.h"

#include <QList>
#include <memory>

namespace searchdata {

/// The fields of one import, in order: which search column takes the value of which source field.
class CImportFields {
public:
    using FieldPtr = std::shared_ptr<CImportField>;

    /// Adds a field and gives it back.
    FieldPtr Add(const QString& strName, const CatalogColumn& roField, std::shared_ptr<const Recordset> source = {});
    /// How many fields there are.
    qint32 Count() const { return static_cast<qint32>(m_fields.size()); }
    /// Removes every field.
    void Clear() { m_fields.clear(); }
    /// By position, from 1; null outside the range.
    FieldPtr Item(int position) const;
    /// The fields in order, for walking.
    const QList<FieldPtr>& NewEnum() const { return m_fields; }
    QList<FieldPtr>::const_iterator begin() const { return m_fields.cbegin(); }
    QList<FieldPtr>::const_iterator end() const { return m_fields.cend(); }

    /// A text for logs: "name = value" of the given pair, then one line per field, each after a
    /// carriage return and line feed.
    QString Report(const QString& strName, const Value& value) const;

private:
    QList<FieldPtr> m_fields;
};

} // namespace searchdata
