// searchdata: administers and uses the search data of a database's tables from the command line.

#include "CommandLine.h"
#include "Commands.h"
#include "Output.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QTextStream>

using namespace searchdata;
using namespace searchdata::cli;

namespace {

QList<CommandSpec> allCommands()
{
    QList<CommandSpec> commands;
    commands += demoCommands();
    commands += columnCommands();
    commands += valueCommands();
    commands += picklistCommands();
    commands += filterCommands();
    commands += maintenanceCommands();
    commands += dataCommands();
    return commands;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("searchdata"));
    // The library's log lines and the database drivers' warnings would mix with the program's output;
    // failures reach the user through the messages of the commands, in words, and --verbose shows the
    // log itself.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false\n*.warning=false"));

    auto services = std::make_shared<ConsoleUiServices>();
    services->setProgress(std::make_shared<StderrProgress>());
    UiServices::install(services);

    const QList<CommandSpec> commands = allCommands();
    Output& output = Output::instance();
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    int code = ExitSuccess;
    try {
        const ParseResult parsed = parseCommandLine(args, commands);
        const Invocation& invocation = parsed.invocation;
        output.configure(invocation.json(), invocation.has(QStringLiteral("quiet")));
        if (invocation.has(QStringLiteral("verbose"))) {
            QLoggingCategory::setFilterRules(QStringLiteral("searchdata.*=true"));
            qSetMessagePattern(QStringLiteral("searchdata: %{category}: %{message}"));
        }
        services->setLockTimeout(std::chrono::seconds(invocation.intValue(QStringLiteral("lock-wait"), 30, 0, 24 * 3600)));
        if (parsed.versionRequested) {
            output.out() << "searchdata " << SEARCHDATA_VERSION << '\n';
            output.out().flush();
        } else if (parsed.commandMissing) {
            if (output.json())
                usageError(QStringLiteral("no command given; see: searchdata --help"));
            QTextStream(stderr) << helpText(commands, nullptr);
            code = ExitUsage;
        } else if (parsed.helpRequested) {
            output.out() << helpText(commands, invocation.command, invocation.arguments);
            output.out().flush();
        } else {
            Invocation command = invocation;
            code = command.command->run(command);
        }
    } catch (const CliError& e) {
        output.error(e.exitCode, e.message);
        code = e.exitCode;
    }
    UiServices::install(nullptr);
    return code;
}
