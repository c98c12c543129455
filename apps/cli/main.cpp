// searchdata: administers and uses the search data of a database's tables from the command line.

#include "CommandLine.h"
#include "Commands.h"
#include "Output.h"

#include <QCoreApplication>
#include <QLoggingCategory>

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
    // The library's own log lines would mix with the program's output; its errors reach the user
    // through the messages of the commands.
    QLoggingCategory::setFilterRules(QStringLiteral("searchdata.*=false"));

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
        output.configure(parsed.invocation.json(), parsed.invocation.has(QStringLiteral("quiet")));
        if (parsed.helpRequested) {
            output.out() << helpText(commands, parsed.invocation.command, parsed.invocation.arguments);
            output.out().flush();
        } else {
            Invocation invocation = parsed.invocation;
            code = invocation.command->run(invocation);
        }
    } catch (const CliError& e) {
        output.error(e.exitCode, e.message);
        code = e.exitCode;
    }
    UiServices::install(nullptr);
    return code;
}
