// The user's template: one saved set of values per base table, kept in the profile.

#include "searchdata/CFilterColumns.h"

#include "platform/Guard_p.h"
#include "searchdata/Profile.h"

#include <QLocale>

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

/// A number of the template, read back as the process locale shows it. The profile holds the C form,
/// whatever the locale it was written under; a text that is no number stays as it is.
Value templateNumber(const CFilterColumn& column, const QString& text)
{
    bool isCForm = false;
    const double number = QLocale::c().toDouble(text.trimmed(), &isCForm);
    const Result<Value> typed = column.InColumnType(isCForm ? Value(number) : Value(text));
    return typed ? Value(typed.value().text()) : Value(text);
}

} // namespace

void CFilterColumns::ClearTemplate()
{
    if (m_profile)
        m_profile->DeleteSection(_Template());
}

void CFilterColumns::SaveTemplate()
{
    SD_PROC("SaveTemplate");
    SD_GUARDED([&] {
        ClearTemplate();
        if (Count() < 1)
            return;
        SaveTemplateTimestamp();
        for (const ColumnPtr& column : m_columns) {
            if (column->ColumnType() != fcKeyword) {
                SaveTemplateValueNormal(*column);
                continue;
            }
            int counter = 0;
            for (const QString& keyword : column->SavedKeys())
                SaveTemplateValueKeyword(*column, keyword, ++counter);
        }
    });
}

void CFilterColumns::SaveTemplateTimestamp()
{
    if (m_profile)
        m_profile->WriteTimestamp(_Template(), TimeStamp(), QDateTime::currentDateTime());
}

void CFilterColumns::SaveTemplateValueNormal(const CFilterColumn& column)
{
    const Value v = column.SavedValue();
    if (!m_profile || v.text().isEmpty())
        return;
    const QString section = _Template();
    switch (column.ColumnType()) {
    case fcInteger16:
    case fcInteger32:
        m_profile->WriteLong(section, column.Name(), v.toInt32().valueOr(0));
        break;
    case fcSingle:
    case fcDouble:
        // Through the bound form: a single goes out as it was typed, 1.1 and not 1.100000023841858.
        m_profile->WriteDouble(section, column.Name(), column.InColumnType(v).valueOr(Value(0.0)).toVariant().toDouble());
        break;
    case fcDateTime:
        if (Result<QDateTime> d = v.toDateTime())
            m_profile->WriteDate(section, column.Name(), d.value());
        break;
    case fcBoolean:
        m_profile->WriteBoolean(section, column.Name(), v.toBoolean().valueOr(false));
        break;
    default:
        m_profile->WriteText(section, column.Name(), v.text());
        break;
    }
}

void CFilterColumns::SaveTemplateValueKeyword(const CFilterColumn& column, const QString& value, int counter)
{
    if (!m_profile || value.isEmpty())
        return;
    m_profile->WriteText(_Template(), column.Name() + QLatin1Char('_') + QString::number(counter), value);
}

bool CFilterColumns::FetchTemplateValues()
{
    if (!m_profile)
        return false;
    SD_PROC("FetchTemplateValues");
    SD_GUARDED([&] {
        const QString section = _Template();
        const QString stamp = m_profile->ReadTimestampText(section, TimeStamp(), QString());
        if (TextEquals(stamp, m_templateTimestamp, 1))
            return; // the columns hold this template already
        m_templateTimestamp = stamp;
        if (stamp.isEmpty())
            return;
        // One counter across all keyword columns: stored templates were read this way, so a
        // second keyword column continues where the first one stopped.
        int counter = 0;
        for (const ColumnPtr& column : m_columns) {
            const QString name = column->Name();
            switch (column->ColumnType()) {
            case fcKeyword: {
                column->ClearTemplateKeys();
                for (;;) {
                    const QString keyword = m_profile->ReadText(section, name + QLatin1Char('_') + QString::number(++counter), QString());
                    if (keyword.isEmpty())
                        break;
                    column->TemplateKeys().append(keyword);
                }
                break;
            }
            case fcInteger16:
            case fcInteger32:
            case fcSingle:
            case fcDouble:
                column->setTemplateValue(templateNumber(*column, m_profile->ReadText(section, name, QStringLiteral("0"))));
                break;
            case fcDateTime: {
                const Value text(m_profile->ReadText(section, name, QString()));
                const Result<QDateTime> date = IniProfile::parseDateText(text.text());
                column->setTemplateValue(date ? Value(date.value()) : text);
                break;
            }
            case fcBoolean:
                column->setTemplateValue(Value(Value(m_profile->ReadText(section, name, Value(false).text())).toBoolean().valueOr(false)));
                break;
            default:
                column->setTemplateValue(Value(m_profile->ReadText(section, name, QString())));
                break;
            }
        }
    });
    return true;
}

void CFilterColumns::CopyTemplate()
{
    if (!FetchTemplateValues())
        return;
    for (const ColumnPtr& column : m_columns)
        column->CopyTemplate();
}

} // namespace searchdata
