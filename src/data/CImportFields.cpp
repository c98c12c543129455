#include "searchdata/CImportFields.h"

namespace searchdata {

CImportFields::FieldPtr CImportFields::Add(const QString& strName, const CatalogColumn& roField, std::shared_ptr<const Recordset> source)
{
    auto field = std::make_shared<CImportField>(strName, roField, std::move(source));
    m_fields.append(field);
    return field;
}

CImportFields::FieldPtr CImportFields::Item(int position) const
{
    return position >= 1 && position <= m_fields.size() ? m_fields[position - 1] : nullptr;
}

QString CImportFields::Report(const QString& strName, const Value& value) const
{
    QString text = strName + QStringLiteral(" = ") + value.text();
    for (const FieldPtr& f : m_fields)
        text += QStringLiteral("\r\n") + f->Name() + QStringLiteral(" = ") + f->FieldValue().text();
    return text;
}

} // namespace searchdata
