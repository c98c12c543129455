#include "searchdata/Profile.h"

#include "searchdata/Value.h"

#include <QLocale>
#include <QRegularExpression>
#include <QSettings>

namespace searchdata {

namespace {

QString keyPath(const QString& section, const QString& key)
{
    return section + QLatin1Char('/') + key;
}

} // namespace

IniProfile::IniProfile(const QString& path, qint32 userNumber)
    : m_settings(std::make_unique<QSettings>(path, QSettings::IniFormat)), m_userNumber(userNumber)
{
}

IniProfile::~IniProfile() = default;

QString IniProfile::dateText(const QDateTime& value)
{
    const QDate d = value.date();
    const QTime t = value.time();
    QString text = QStringLiteral("#%1-%2-%3").arg(d.month()).arg(d.day()).arg(d.year());
    if (t != QTime(0, 0))
        text += QStringLiteral(" %1:%2:%3").arg(t.hour()).arg(t.minute()).arg(t.second());
    return text + QLatin1Char('#');
}

Result<QDateTime> IniProfile::parseDateText(const QString& text)
{
    const QString t = text.trimmed();
    if (!t.startsWith(QLatin1Char('#')))
        return ParseDateText(t);
    // "#m-d-yyyy[ h:n:s]#": month first, whatever the locale.
    static const QRegularExpression form(QStringLiteral(R"(^#(\d{1,2})-(\d{1,2})-(\d{1,4})(?: (\d{1,2}):(\d{1,2}):(\d{1,2}))?#$)"));
    const QRegularExpressionMatch m = form.match(t);
    if (!m.hasMatch())
        return Result<QDateTime>::failure(QStringLiteral("not a date: %1").arg(text));
    const QDate date(m.captured(3).toInt(), m.captured(1).toInt(), m.captured(2).toInt());
    const QTime time = m.captured(4).isEmpty() ? QTime(0, 0) : QTime(m.captured(4).toInt(), m.captured(5).toInt(), m.captured(6).toInt());
    if (!date.isValid() || !time.isValid())
        return Result<QDateTime>::failure(QStringLiteral("not a date: %1").arg(text));
    return QDateTime(date, time);
}

void IniProfile::ClearProfileSection(const QString& section)
{
    DeleteSection(section);
}

QString IniProfile::ReadProfileText(const QString& section, const QString& key, const QString& defaultValue)
{
    return ReadText(section, key, defaultValue);
}

qint32 IniProfile::ReadProfileNumber(const QString& section, const QString& key, qint32 defaultValue)
{
    const QVariant v = m_settings->value(keyPath(section, key));
    if (!v.isValid())
        return defaultValue;
    return Value(v.toString()).toInt32().valueOr(defaultValue);
}

void IniProfile::WriteProfileText(const QString& section, const QString& key, const QString& value)
{
    WriteText(section, key, value);
}

void IniProfile::WriteProfileNumber(const QString& section, const QString& key, qint32 value)
{
    WriteLong(section, key, value);
}

void IniProfile::WriteProfileDate(const QString& section, const QString& key, const QDateTime& value)
{
    WriteDate(section, key, value);
}

void IniProfile::DeleteSection(const QString& section)
{
    m_settings->remove(section);
    m_settings->sync();
}

QString IniProfile::ReadTimestampText(const QString& section, const QString& key, const QString& defaultValue)
{
    return ReadText(section, key, defaultValue);
}

QString IniProfile::ReadText(const QString& section, const QString& key, const QString& defaultValue)
{
    const QVariant v = m_settings->value(keyPath(section, key));
    return v.isValid() ? v.toString() : defaultValue;
}

void IniProfile::WriteBoolean(const QString& section, const QString& key, bool value)
{
    WriteText(section, key, value ? QStringLiteral("True") : QStringLiteral("False"));
}

void IniProfile::WriteDate(const QString& section, const QString& key, const QDateTime& value)
{
    WriteText(section, key, dateText(value));
}

void IniProfile::WriteDouble(const QString& section, const QString& key, double value)
{
    // The C form: a profile may be read back under another locale.
    WriteText(section, key, QString::number(value, 'g', QLocale::FloatingPointShortest));
}

void IniProfile::WriteLong(const QString& section, const QString& key, qint32 value)
{
    WriteText(section, key, QString::number(value));
}

void IniProfile::WriteTimestamp(const QString& section, const QString& key, const QDateTime& value)
{
    WriteText(section, key, value.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")));
}

void IniProfile::WriteText(const QString& section, const QString& key, const QString& value)
{
    m_settings->setValue(keyPath(section, key), value);
    m_settings->sync();
}

QStringList IniProfile::sections() const
{
    return m_settings->childGroups();
}

QStringList IniProfile::keys(const QString& section) const
{
    m_settings->beginGroup(section);
    const QStringList keys = m_settings->childKeys();
    m_settings->endGroup();
    return keys;
}

QString IniProfile::fileName() const
{
    return m_settings->fileName();
}

bool IniProfile::accessFailed() const
{
    return m_settings->status() == QSettings::AccessError;
}

} // namespace searchdata
