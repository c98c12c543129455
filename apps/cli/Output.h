#pragma once

// The output layer: results on standard output as text or JSON, notes, errors and progress on standard
// error, and the user-interface services through which the library talks to a user without a window.

#include "searchdata/Progress.h"
#include "searchdata/UiServices.h"

#include <QJsonValue>
#include <QString>
#include <QTextStream>

namespace searchdata::cli {

class Output {
public:
    static Output& instance();

    void configure(bool json, bool quiet);
    bool json() const { return m_json; }
    bool quiet() const { return m_quiet; }

    /// Standard output, for results.
    QTextStream& out() { return m_out; }
    /// Prints one JSON document as the whole result of a command.
    void printJson(const QJsonValue& value);
    /// An informational line on standard error (left out with --quiet).
    void note(const QString& text);
    /// A warning on standard error, also with --quiet.
    void warning(const QString& text);
    /// A progress line on standard error (left out with --quiet).
    void progress(const QString& text);
    /// A line on standard error that --quiet keeps: why the program is waiting, which is no progress.
    void notice(const QString& text);
    /// The error that ends the run, as text or JSON on standard error.
    void error(int exitCode, const QString& text);

private:
    Output();
    QTextStream m_out;
    QTextStream m_err;
    bool m_json = false;
    bool m_quiet = false;
};

/// Progress of long library work, as lines on standard error.
class StderrProgress : public IProgress {
public:
    void SetStatus(const QString& text) override;
    void SetProgress(const QString& text) override;

private:
    QString m_last;
};

/// The services without a window, telling the user on standard error what a window would have shown.
class ConsoleUiServices : public HeadlessUiServices {
public:
    void ShowMessage(MessageKind kind, const QString& title, const QString& text) override;
    Answer AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer) override;
    void ShowLockedMessage(const IDebugLockedMessage& message) override;
};

/// Forgets earlier library reports, so that `failWithReason` names the reason of the next failure.
void clearLibraryReports();
/// The library's reason for its last failure in words, or blank. A failure of the database is said in
/// words of the program's own; the database's text and statement go to the library's log, which
/// --verbose shows.
QString libraryReason();
/// Fails with `what`, followed by the library's reason when it gave one.
[[noreturn]] void failWithReason(const QString& what);
/// What a message of the database driver means, in words.
QString databaseTextInWords(const QString& driverText);

} // namespace searchdata::cli
