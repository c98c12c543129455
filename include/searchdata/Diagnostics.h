#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

namespace searchdata {

/// One error as a procedure reported it.
struct ErrorReport {
    int number = 0;
    QString text;
    QString procedure;
    QString module;
    int line = 0;
    QDateTime when;
};

/// The diagnostics object of the calling thread: error reports, the call trace, and the schema log.
///
/// Procedures report their errors here and carry on with their result as it stands; a host (or a
/// test) reads what went wrong through `lastError` and `reports`. Output goes through the logging
/// category "searchdata.diagnostics".
class Diagnostics {
public:
    /// The object of the calling thread, made on first use.
    static Diagnostics& instance();

    void report(const ErrorReport& report);
    /// The most recent reports, oldest first; at most `maxKeptReports`.
    QList<ErrorReport> reports() const { return m_reports; }
    std::optional<ErrorReport> lastError() const;
    /// Reports made since the last `clearReports`, including those no longer kept.
    qint64 reportCount() const { return m_reportCount; }
    void clearReports();
    static constexpr int maxKeptReports = 200;
    /// Keeps the reports made from now on aside, unreported, until `releaseHeld` with the mark given
    /// here: for work that may be undone and done again, whose first failures are not the caller's.
    /// Holds nest.
    qsizetype holdReports()
    {
        ++m_holds;
        return m_held.size();
    }
    /// Keeps what was held since `mark`, or forgets it; the outermost release reports what is kept.
    void releaseHeld(qsizetype mark, bool keep);

    /// Call trace: entries and exits of procedures, kept in a fixed ring of static names.
    void enter(const char* procedure, const char* module) noexcept;
    void leave(const char* procedure, const char* module) noexcept;
    /// The recorded trace, most recent last, one line per entry or exit, indented by depth.
    QString callTrace() const;
    static constexpr int traceCapacity = 256;

    /// Caption for message boxes that report on the library itself.
    QString caption() const;

    /// The schema log: lines that a schema check writes when a log file is set.
    bool LogEnabled() const { return !m_logPath.isEmpty(); }
    void LogLine(const QString& text);
    /// Sets the schema log's file; blank turns the log off. Lines are appended.
    void setLogFile(const QString& path) { m_logPath = path; }
    QString logFile() const { return m_logPath; }

    /// Set by a schema repair that failed, read by the steps of a check after it.
    bool ConversionFailed() const { return m_conversionFailed; }
    void setConversionFailed(bool failed) { m_conversionFailed = failed; }

private:
    Diagnostics() = default;
    struct TraceEntry {
        const char* procedure;
        const char* module;
        bool entering;
    };
    QList<ErrorReport> m_reports;
    qint64 m_reportCount = 0;
    int m_holds = 0;
    QList<ErrorReport> m_held;
    TraceEntry m_trace[traceCapacity] = {};
    int m_traceNext = 0;
    int m_traceSize = 0;
    QString m_logPath;
    bool m_conversionFailed = false;
};

} // namespace searchdata
