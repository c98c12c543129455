#include "searchdata/CImportField.h"

#include "searchdata/Recordset.h"

namespace searchdata {

CImportField::CImportField(QString name, CatalogColumn field, std::shared_ptr<const Recordset> source)
    : m_name(std::move(name)), m_field(std::move(field)), m_source(std::move(source))
{
}

Value CImportField::FieldValue() const
{
    if (!m_source)
        return m_value;
    // Past the last row, or a field the recordset lacks, reads as nothing at all.
    const Value v = m_source->field(m_field.name);
    return v.isEmpty() ? Value::null() : v;
}

FilterColumnTypeConstants CImportField::ColumnTypeOf(int adoType)
{
    switch (adoType) {
    case adSmallInt:
    case adTinyInt:
    case adUnsignedTinyInt:
        return fcInteger16;
    case adInteger:
        return fcInteger32;
    case adSingle:
        return fcSingle;
    case adDouble:
        return fcDouble;
    case adDate:
        return fcDateTime;
    case adBoolean:
        return fcBoolean;
    case adChar:
    case adVarWChar:
        return fcText;
    default:
        return fcUndefined;
    }
}

} // namespace searchdata
