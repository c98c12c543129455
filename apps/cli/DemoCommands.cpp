// demo init: a database with a table of files and a table of packets, the library's demonstration
// column sets on them, and demonstration values.

#include "Commands.h"
#include "Output.h"
#include "Session.h"
#include "searchdata/DemoDatabase.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

int initDemo(Invocation& inv)
{
    const int records = inv.intValue(QStringLiteral("records"), 1000, 1, 1000000);
    const int packets = DemoDatabase::packetCount(records);
    Session session(inv, true);
    for (const QString& t : {DemoDatabase::filesTable(), DemoDatabase::packetsTable()})
        if (GetCatalogTable(*session.catalog(), t))
            fail(QStringLiteral("%1 has a table %2 already; \"demo init\" makes its tables in a new database").arg(session.location(), t));

    StderrProgress progress;
    clearLibraryReports();
    if (!DemoDatabase::Create(session.handler(), session.catalog(), session.profile(), records, &progress))
        failWithReason(QStringLiteral("cannot make the demo database"));

    Output& output = Output::instance();
    if (output.json()) {
        output.printJson(QJsonObject{{QStringLiteral("database"), session.location()},
                                     {QStringLiteral("tables"), QJsonObject{{DemoDatabase::filesTable(), records}, {DemoDatabase::packetsTable(), packets}}}});
    } else {
        output.out() << "demo database " << session.location() << ":\n"
                     << "  " << DemoDatabase::filesTable() << ": " << records << " records, search columns DrawingNo, PartNo, Customer\n"
                     << "  " << DemoDatabase::packetsTable() << ": " << packets << " records, search columns OpNo, OpType, Description\n"
                     << "next: searchdata --db " << session.location() << " --table Files columns list\n";
        output.out().flush();
    }
    return ExitSuccess;
}

} // namespace

QList<CommandSpec> demoCommands()
{
    return {
        {{QStringLiteral("demo"), QStringLiteral("init")}, {},
         QStringLiteral("Makes a demo database: files and packets with the demonstration search columns and values."),
         QStringLiteral("The tables Files (Id, Name, Folder, Size, Modified) and Packets (Id, Name, Machine, Created) are\n"
                        "made in the database of --db, which must not have them yet; an SQLite file is made when missing."),
         {{QStringLiteral("records"), QStringLiteral("N"), QStringLiteral("records of Files (default 1000); Packets gets a tenth")}}, 0, 0, false,
         initDemo},
    };
}

} // namespace searchdata::cli
