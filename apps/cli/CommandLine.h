#pragma once

// The argument layer of the program: commands with their options, parsing in order (filters depend on
// the order of --where/--and/--or), help texts, and the failures that end a run with an exit code.

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

namespace searchdata::cli {

class Invocation;

/// Exit codes. A failure leaves the database unchanged; a data block of which only some lines could be
/// imported has its own code, since the lines that could are saved.
enum ExitCode : int { ExitSuccess = 0, ExitFailure = 1, ExitUsage = 2, ExitPartlyImported = 3 };

/// Ends a run: thrown by commands, caught once in `main`.
struct CliError {
    int exitCode;
    QString message;
};

/// A failure of the work itself (exit code 1).
[[noreturn]] void fail(const QString& message);
/// A command line that cannot be carried out as written (exit code 2).
[[noreturn]] void usageError(const QString& message);

struct OptionSpec {
    QString name;      ///< without the leading dashes
    QString valueName; ///< blank for a flag
    QString help;
};

struct CommandSpec {
    QStringList path;      ///< the command words, e.g. {"columns", "add"}
    QString arguments;     ///< synopsis of the positional arguments, e.g. "NAME"
    QString summary;       ///< one line for the command list
    QString details;       ///< more lines for the command's own help; may be blank
    QList<OptionSpec> options;
    int minArguments = 0;
    int maxArguments = 0;  ///< -1 for no limit
    bool needsTable = true;
    std::function<int(Invocation&)> run;
};

/// The options every command takes.
const QList<OptionSpec>& globalOptions();

struct ParsedOption {
    QString name;
    QString value;
};

/// One parsed command line.
class Invocation {
public:
    const CommandSpec* command = nullptr;
    QStringList arguments;           ///< positional arguments after the command words
    QList<ParsedOption> options;     ///< in the order given

    bool has(const QString& name) const;
    /// The last value given for `name`, or `fallback`.
    QString value(const QString& name, const QString& fallback = {}) const;
    /// A whole number option within [min, max]; a usage error otherwise.
    int intValue(const QString& name, int fallback, int min, int max) const;
    bool json() const { return has(QStringLiteral("json")); }
};

/// The result of reading the command line: a command to run, help or the version to print, or no
/// command at all.
struct ParseResult {
    Invocation invocation;
    bool helpRequested = false;
    bool versionRequested = false;
    bool commandMissing = false;
};

/// Parses `args` (without the program name) against `commands`. Usage errors are thrown.
ParseResult parseCommandLine(const QStringList& args, const QList<CommandSpec>& commands);

/// The help text: of one command, or of the program with its commands when `command` is null.
QString helpText(const QList<CommandSpec>& commands, const CommandSpec* command, const QStringList& partialPath = {});

} // namespace searchdata::cli
