#pragma once

#include <QString>

namespace searchdata {

/// The two texts shown while a statement waits for a table that another user holds.
class IDebugLockedMessage {
public:
    virtual ~IDebugLockedMessage() = default;
    virtual QString Message() const = 0;
    virtual QString Title() const = 0;
};

class CDebugLockedMessage : public IDebugLockedMessage {
public:
    CDebugLockedMessage() = default;
    /// Trims both; a blank message or title takes the library's standard text.
    void Init(const QString& message, const QString& title);
    QString Message() const override { return m_message; }
    QString Title() const override { return m_title; }
    bool isSet() const { return !m_message.isEmpty(); }

private:
    QString m_message;
    QString m_title;
};

/// A locked message of `message` and `title`, each standing in for the standard text when blank.
CDebugLockedMessage MakeLockedMessage(const QString& message = {}, const QString& title = {});

} // namespace searchdata
