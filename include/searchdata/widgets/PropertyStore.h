#pragma once

#include <QString>
#include <QVariant>

class QSettings;

namespace searchdata {

/// Where a control keeps the properties that a host stores with each instance of it.
class IPropertyStore {
public:
    virtual ~IPropertyStore() = default;
    /// The stored value of `key`, or `defaultValue` when none is stored.
    virtual QVariant ReadProperty(const QString& key, const QVariant& defaultValue) const = 0;
    /// Stores `value` under `key`. A value equal to `defaultValue` removes the key instead, since a
    /// read gives the default anyway; so an old setting goes by writing its default.
    virtual void WriteProperty(const QString& key, const QVariant& value, const QVariant& defaultValue) = 0;
};

/// The default store: one group of a `QSettings`, which the caller owns and keeps alive.
class SettingsPropertyStore : public IPropertyStore {
public:
    SettingsPropertyStore(QSettings& settings, QString group);

    QVariant ReadProperty(const QString& key, const QVariant& defaultValue) const override;
    void WriteProperty(const QString& key, const QVariant& value, const QVariant& defaultValue) override;

private:
    QString path(const QString& key) const;

    QSettings& m_settings;
    QString m_group;
};

} // namespace searchdata
