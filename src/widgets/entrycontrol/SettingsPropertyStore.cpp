#include "searchdata/widgets/PropertyStore.h"

#include <QSettings>

namespace searchdata {

SettingsPropertyStore::SettingsPropertyStore(QSettings& settings, QString group) : m_settings(settings), m_group(std::move(group)) {}

QString SettingsPropertyStore::path(const QString& key) const
{
    return m_group.isEmpty() ? key : m_group + QLatin1Char('/') + key;
}

QVariant SettingsPropertyStore::ReadProperty(const QString& key, const QVariant& defaultValue) const
{
    return m_settings.value(path(key), defaultValue);
}

void SettingsPropertyStore::WriteProperty(const QString& key, const QVariant& value, const QVariant& defaultValue)
{
    if (value == defaultValue)
        m_settings.remove(path(key));
    else
        m_settings.setValue(path(key), value);
}

} // namespace searchdata
