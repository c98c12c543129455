#pragma once

#include "searchdata/Result.h"

#include <QDateTime>
#include <QString>
#include <memory>

class QSettings;

namespace searchdata {

/// The user's profile: sections of keys that keep saved filters and templates between runs.
/// Dates are written in the form "#m-d-yyyy[ h:n:s]#", which stored profiles already use.
class IProfile {
public:
    virtual ~IProfile() = default;

    virtual void ClearProfileSection(const QString& section) = 0;
    virtual QString ReadProfileText(const QString& section, const QString& key, const QString& defaultValue) = 0;
    virtual qint32 ReadProfileNumber(const QString& section, const QString& key, qint32 defaultValue) = 0;
    virtual void WriteProfileText(const QString& section, const QString& key, const QString& value) = 0;
    virtual void WriteProfileNumber(const QString& section, const QString& key, qint32 value) = 0;
    virtual void WriteProfileDate(const QString& section, const QString& key, const QDateTime& value) = 0;

    virtual void DeleteSection(const QString& section) = 0;
    virtual QString ReadTimestampText(const QString& section, const QString& key, const QString& defaultValue) = 0;
    virtual QString ReadText(const QString& section, const QString& key, const QString& defaultValue) = 0;
    virtual void WriteBoolean(const QString& section, const QString& key, bool value) = 0;
    virtual void WriteDate(const QString& section, const QString& key, const QDateTime& value) = 0;
    virtual void WriteDouble(const QString& section, const QString& key, double value) = 0;
    virtual void WriteLong(const QString& section, const QString& key, qint32 value) = 0;
    virtual void WriteTimestamp(const QString& section, const QString& key, const QDateTime& value) = 0;
    virtual void WriteText(const QString& section, const QString& key, const QString& value) = 0;

    /// Number of the user that is logged in; saved filters are kept under it.
    virtual qint32 UserNumber() const = 0;
};

/// The default profile: an INI file through QSettings.
class IniProfile : public IProfile {
public:
    /// Opens (or creates on first write) the INI file at `path`.
    explicit IniProfile(const QString& path, qint32 userNumber = 1);
    ~IniProfile() override;

    void ClearProfileSection(const QString& section) override;
    QString ReadProfileText(const QString& section, const QString& key, const QString& defaultValue) override;
    qint32 ReadProfileNumber(const QString& section, const QString& key, qint32 defaultValue) override;
    void WriteProfileText(const QString& section, const QString& key, const QString& value) override;
    void WriteProfileNumber(const QString& section, const QString& key, qint32 value) override;
    void WriteProfileDate(const QString& section, const QString& key, const QDateTime& value) override;

    void DeleteSection(const QString& section) override;
    QString ReadTimestampText(const QString& section, const QString& key, const QString& defaultValue) override;
    QString ReadText(const QString& section, const QString& key, const QString& defaultValue) override;
    void WriteBoolean(const QString& section, const QString& key, bool value) override;
    void WriteDate(const QString& section, const QString& key, const QDateTime& value) override;
    void WriteDouble(const QString& section, const QString& key, double value) override;
    void WriteLong(const QString& section, const QString& key, qint32 value) override;
    void WriteTimestamp(const QString& section, const QString& key, const QDateTime& value) override;
    void WriteText(const QString& section, const QString& key, const QString& value) override;

    qint32 UserNumber() const override { return m_userNumber; }
    /// Section names present in the file.
    QStringList sections() const;
    /// Keys of one section.
    QStringList keys(const QString& section) const;
    QString fileName() const;
    /// Whether the file could not be read or written: a folder that cannot be made, a file without
    /// the permission. Writes before and after such a failure may have been lost.
    bool accessFailed() const;

    /// The profile's date form: "#7-4-2003#", or "#7-4-2003 13:5:9#" when there is a time.
    static QString dateText(const QDateTime& value);
    /// Reads a date in the profile's form, or in any form that `ParseDateText` takes.
    static Result<QDateTime> parseDateText(const QString& text);

private:
    std::unique_ptr<QSettings> m_settings;
    qint32 m_userNumber;
};

} // namespace searchdata
