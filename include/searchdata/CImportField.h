#pragma once

#include "searchdata/Catalog.h"
#include "searchdata/Enums.h"
#include "searchdata/Value.h"

#include <QString>
#include <memory>

namespace searchdata {

class Recordset;

/// One value to import: the search column it is meant for, and the field of another table that holds
/// it. A field bound to a recordset is read at the row where the recordset stands when the import
/// runs, so a host binds its fields once and moves the recordset from record to record.
class CImportField {
public:
    /// `field` describes the source field as its table declares it (name, type code, size); `source`,
    /// when given, is the recordset whose current row holds the value.
    CImportField(QString name, CatalogColumn field, std::shared_ptr<const Recordset> source = {});

    /// Name of the search column that the value is for.
    QString Name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    /// The source field as declared.
    const CatalogColumn& Field() const { return m_field; }
    /// The value of the field now: the recordset's current row when bound to one (Null past its last
    /// row), else the value given by `setFieldValue` (Null until then).
    Value FieldValue() const;
    /// Gives a field without a recordset its value.
    void setFieldValue(const Value& value) { m_value = value; }
    /// The search column type that the source field's type maps to; `fcUndefined` for a type that
    /// no column can take.
    FilterColumnTypeConstants ColumnType() const { return ColumnTypeOf(m_field.type); }
    /// The column type of a field type code.
    static FilterColumnTypeConstants ColumnTypeOf(int adoType);

private:
    QString m_name;
    CatalogColumn m_field;
    std::shared_ptr<const Recordset> m_source;
    Value m_value = Value::null();
};

} // namespace searchdata
