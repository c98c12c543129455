#include "searchdata/widgets/ObjectMonitor.h"

#include <QCoreApplication>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcObjects, "searchdata.objects", QtWarningMsg)

namespace searchdata {

ObjectMonitor& ObjectMonitor::instance()
{
    static ObjectMonitor monitor;
    return monitor;
}

QString ObjectMonitor::ObjectLine(const QString& typeName, const void* object)
{
    const QString title = QCoreApplication::instance() ? QCoreApplication::applicationName() : QString();
    return typeName + QLatin1Char('\t') + QString::number(quintptr(object), 16).toUpper() + QLatin1Char('\t') + title;
}

void ObjectMonitor::change(const QString& typeName, const void* object, int delta, const char* what)
{
    int count;
    {
        const QMutexLocker lock(&m_mutex);
        count = (m_counts[typeName] += delta); // a type seen first gets its entry here
    }
    qCInfo(lcObjects).noquote() << what << ObjectLine(typeName, object) << count;
}

void ObjectMonitor::Created(const QString& typeName, const void* object)
{
    change(typeName, object, 1, "created");
}

void ObjectMonitor::Destroyed(const QString& typeName, const void* object)
{
    change(typeName, object, -1, "destroyed");
}

int ObjectMonitor::Count(const QString& typeName) const
{
    const QMutexLocker lock(&m_mutex);
    return m_counts.value(typeName);
}

QMap<QString, int> ObjectMonitor::Counts() const
{
    const QMutexLocker lock(&m_mutex);
    return m_counts;
}

} // namespace searchdata
