#include "searchdata/Diagnostics.h"

#include "platform/Guard_p.h"
#include "platform/Logging_p.h"

#include <QFile>
#include <QTextStream>
#include <algorithm>
#include <utility>

// Only warnings by default; QT_LOGGING_RULES="searchdata.*=true" shows the statements and steps too.
Q_LOGGING_CATEGORY(lcDiagnostics, "searchdata.diagnostics", QtWarningMsg)
Q_LOGGING_CATEGORY(lcDatabase, "searchdata.db", QtWarningMsg)
Q_LOGGING_CATEGORY(lcSchema, "searchdata.schema", QtWarningMsg)

namespace searchdata {

Diagnostics& Diagnostics::instance()
{
    thread_local Diagnostics diagnostics;
    return diagnostics;
}

void Diagnostics::report(const ErrorReport& report)
{
    ErrorReport r = report;
    if (!r.when.isValid())
        r.when = QDateTime::currentDateTime();
    if (m_holds > 0) {
        m_held.append(r);
        return;
    }
    qCWarning(lcDiagnostics).noquote() << QStringLiteral("error %1 in %2.%3 (line %4): %5")
                                              .arg(r.number).arg(r.module, r.procedure).arg(r.line).arg(r.text);
    if (m_reports.size() >= maxKeptReports)
        m_reports.removeFirst();
    m_reports.append(r);
    ++m_reportCount;
}

void Diagnostics::releaseHeld(qsizetype mark, bool keep)
{
    if (!keep)
        m_held.resize(std::min(mark, m_held.size()));
    if (m_holds == 0 || --m_holds > 0)
        return;
    for (const ErrorReport& r : std::exchange(m_held, {}))
        report(r);
}

std::optional<ErrorReport> Diagnostics::lastError() const
{
    if (m_reports.isEmpty())
        return std::nullopt;
    return m_reports.last();
}

void Diagnostics::clearReports()
{
    m_reports.clear();
    m_reportCount = 0;
}

void Diagnostics::enter(const char* procedure, const char* module) noexcept
{
    m_trace[m_traceNext] = {procedure, module, true};
    m_traceNext = (m_traceNext + 1) % traceCapacity;
    if (m_traceSize < traceCapacity)
        ++m_traceSize;
}

void Diagnostics::leave(const char* procedure, const char* module) noexcept
{
    m_trace[m_traceNext] = {procedure, module, false};
    m_traceNext = (m_traceNext + 1) % traceCapacity;
    if (m_traceSize < traceCapacity)
        ++m_traceSize;
}

QString Diagnostics::callTrace() const
{
    QString out;
    int depth = 0;
    const int first = (m_traceNext - m_traceSize + traceCapacity) % traceCapacity;
    for (int i = 0; i < m_traceSize; ++i) {
        const TraceEntry& e = m_trace[(first + i) % traceCapacity];
        if (!e.entering && depth > 0)
            --depth;
        out += QString(depth * 2, QLatin1Char(' '));
        out += e.entering ? QStringLiteral("> ") : QStringLiteral("< ");
        out += QLatin1String(e.module) + QLatin1Char('.') + QLatin1String(e.procedure) + QLatin1Char('\n');
        if (e.entering)
            ++depth;
    }
    return out;
}

QString Diagnostics::caption() const
{
    return QStringLiteral("searchdata");
}

void Diagnostics::LogLine(const QString& text)
{
    qCInfo(lcSchema).noquote() << text;
    if (m_logPath.isEmpty())
        return;
    QFile file(m_logPath);
    if (!file.open(QIODevice::Append | QIODevice::Text))
        return;
    QTextStream stream(&file);
    stream << text << '\n';
}

namespace detail {

void reportFailure(const ProcScope& scope, int number, const QString& text, int line) noexcept
{
    try {
        Diagnostics::instance().report(ErrorReport{number, text, QLatin1String(scope.procedure),
                                                   QLatin1String(scope.module), line, QDateTime::currentDateTime()});
    } catch (...) {
        // Reporting must never throw out of an error handler.
    }
}

} // namespace detail
} // namespace searchdata
