#pragma once

#include <QMap>
#include <QMutex>
#include <QString>

namespace searchdata {

/// A diagnostic count of the library's live objects per type. Each creation and destruction is
/// logged in the category "searchdata.objects" (info level) as a line of type, address and
/// application title, separated by tabs, followed by the new count.
class ObjectMonitor {
public:
    static ObjectMonitor& instance();

    void Created(const QString& typeName, const void* object);
    void Destroyed(const QString& typeName, const void* object);
    /// Live objects of a type; 0 for a type never seen.
    int Count(const QString& typeName) const;
    /// Every type seen so far, with its count.
    QMap<QString, int> Counts() const;

    /// The line of one object: type name, address in hexadecimal and application title, tab-separated.
    static QString ObjectLine(const QString& typeName, const void* object);

private:
    void change(const QString& typeName, const void* object, int delta, const char* what);

    mutable QMutex m_mutex;
    QMap<QString, int> m_counts;
};

} // namespace searchdata
