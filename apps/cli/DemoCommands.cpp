// demo init: a database with a table of files and a table of packets, the library's demonstration
// column sets on them, and demonstration values.

#include "Commands.h"
#include "Output.h"
#include "Session.h"
#include "searchdata/AdoTypes.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

const QString kFiles = QStringLiteral("Files");
const QString kPackets = QStringLiteral("Packets");

struct Field {
    const char* name;
    int type;
    int size;
};

void createTable(DatabaseHandler& db, const QString& table, const QList<Field>& fields)
{
    QStringList parts;
    for (const Field& f : fields) {
        const QString name = QString::fromUtf8(f.name);
        parts << db.BracketName(name) + QLatin1Char(' ') + db.dialect().declaredType(f.type, f.size)
                     + (name == QLatin1String("Id") ? QStringLiteral(" NOT NULL") : QString());
    }
    parts << QStringLiteral("CONSTRAINT %1 PRIMARY KEY (%2)").arg(db.BracketName(QStringLiteral("PK_") + table), db.BracketName(QStringLiteral("Id")));
    if (!db.ExecuteSql(QStringLiteral("CREATE TABLE %1 (%2)").arg(db.BracketName(table), parts.join(QStringLiteral(", ")))))
        failWithReason(QStringLiteral("cannot create the table %1").arg(table));
}

void insertRow(DatabaseHandler& db, const QString& table, const QStringList& fields, const QVariantList& values)
{
    QStringList names, marks;
    for (const QString& f : fields) {
        names << db.BracketName(f);
        marks << QStringLiteral("?");
    }
    if (!db.ExecuteSql(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(db.BracketName(table), names.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))),
                       values))
        failWithReason(QStringLiteral("cannot fill the table %1").arg(table));
}

/// Progress of a loop, at most every quarter of the way.
class Steps {
public:
    Steps(QString what, int total) : m_what(std::move(what)), m_total(total) {}
    void step(int done)
    {
        const int quarter = m_total > 0 ? done * 4 / m_total : 4;
        if (quarter != m_lastQuarter)
            Output::instance().progress(QStringLiteral("%1: %2 of %3").arg(m_what).arg(done).arg(m_total));
        m_lastQuarter = quarter;
    }

private:
    QString m_what;
    int m_total;
    int m_lastQuarter = 0;
};

void makeBaseTables(DatabaseHandler& db, int files, int packets)
{
    TableTransaction tx(db);
    if (!tx.begun())
        failWithReason(QStringLiteral("cannot begin a transaction"));
    createTable(db, kFiles, {{"Id", adInteger, 0}, {"Name", adVarWChar, 255}, {"Folder", adVarWChar, 255}, {"Size", adBigInt, 0}, {"Modified", adDate, 0}});
    createTable(db, kPackets, {{"Id", adInteger, 0}, {"Name", adVarWChar, 255}, {"Machine", adVarWChar, 50}, {"Created", adDate, 0}});

    static const char* const parts[] = {"bracket", "flange", "shaft", "housing", "gear", "lever", "bushing", "cover", "plate", "spindle"};
    static const char* const folders[] = {"/cnc/lathe", "/cnc/mill", "/cnc/mill/5-axis", "/cnc/grinder"};
    static const char* const machines[] = {"Lathe 1", "Lathe 2", "Mill 1", "Mill 5-axis", "Grinder"};
    const QDateTime start(QDate(2024, 1, 8), QTime(7, 30));
    const QStringList fileFields = {QStringLiteral("Id"), QStringLiteral("Name"), QStringLiteral("Folder"), QStringLiteral("Size"), QStringLiteral("Modified")};
    for (int i = 1; i <= files; ++i) {
        // One name with a quote in it, to show that every value reaches SQL safely.
        const QString name = i == 3 ? QStringLiteral("O'Neil shaft-0003.nc")
                                    : QStringLiteral("%1-%2.nc").arg(QLatin1String(parts[i % 10])).arg(i, 4, 10, QLatin1Char('0'));
        insertRow(db, kFiles, fileFields,
                  {i, name, QLatin1String(folders[i % 4]), qint64(2048 + (i * 7919) % 250000), start.addSecs(qint64(i) * 5400)});
    }
    const QStringList packetFields = {QStringLiteral("Id"), QStringLiteral("Name"), QStringLiteral("Machine"), QStringLiteral("Created")};
    for (int i = 1; i <= packets; ++i)
        insertRow(db, kPackets, packetFields,
                  {i, QStringLiteral("packet %1").arg(i, 3, 10, QLatin1Char('0')), QLatin1String(machines[i % 5]), start.addDays(i)});
    if (!tx.commit())
        failWithReason(QStringLiteral("cannot store the demo tables"));
}

/// Defines a demo set on `table` and writes values into every record through `update`.
void fillDemoSet(Session& session, const QString& table, EDemoColumnSet set,
                 const std::function<bool(CSearchFilter&, StderrProgress&, const RecordEntry&, int)>& update)
{
    session.catalog()->Refresh();
    session.openSearch(table);
    StderrProgress progress;
    clearLibraryReports();
    if (!session.search()->CreateDemoColumnSet(set, &progress, nullptr))
        failWithReason(QStringLiteral("cannot define the demo columns of %1").arg(table));
    const QList<qint32> ids = session.recordIds();
    Steps steps(QStringLiteral("demo values of %1").arg(table), int(ids.size()));
    // One transaction: a thousand single statements would each wait for the disk.
    TableTransaction tx(session.db());
    for (int n = 0; n < ids.size(); ++n) {
        const RecordEntry entry(ids[n]);
        if (!update(*session.search(), progress, entry, ids[n]))
            failWithReason(QStringLiteral("cannot write the demo values of record %1 of %2").arg(ids[n]).arg(table));
        steps.step(n + 1);
    }
    if (!tx.commit())
        failWithReason(QStringLiteral("cannot store the demo values of %1").arg(table));
}

int initDemo(Invocation& inv)
{
    const int records = inv.intValue(QStringLiteral("records"), 1000, 1, 1000000);
    const int packets = std::max(1, records / 10);
    Session session(inv, true);
    for (const QString& t : {kFiles, kPackets})
        if (GetCatalogTable(*session.catalog(), t))
            fail(QStringLiteral("%1 has a table %2 already; \"demo init\" makes its tables in a new database").arg(session.location(), t));

    Output::instance().progress(QStringLiteral("making the tables %1 (%2 records) and %3 (%4 records)").arg(kFiles).arg(records).arg(kPackets).arg(packets));
    makeBaseTables(session.db(), records, packets);

    static const char* const customers[] = {"Acme Machine", "General Parts", "Johnson Auto Supply", "Jones Gear and Axle", "Phillips Mfg"};
    fillDemoSet(session, kFiles, fltrDCS_DncFile, [](CSearchFilter& search, StderrProgress& progress, const RecordEntry& entry, int id) {
        return search.UpdateDemoDncFile(&progress, nullptr, &entry, QStringLiteral("D-%1").arg(10000 + id),
                                        QStringLiteral("P-%1-%2").arg(4700 + id % 97).arg(QChar(u'A' + id % 3)),
                                        QLatin1String(customers[(id * 7) % 5]));
    });
    static const char* const operations[] = {"Drill", "Finish Cut", "Mill", "Rough Cut"};
    static const char* const descriptions[] = {"Spot and drill the bolt circle", "Finish the outer contour to size",
                                               "Mill the pocket, two passes", "Rough the stock, leave 0.5 mm"};
    fillDemoSet(session, kPackets, fltrDCS_Packet, [](CSearchFilter& search, StderrProgress& progress, const RecordEntry& entry, int id) {
        return search.UpdateDemoPacket(&progress, nullptr, &entry, QString::number(10 * (id % 9 + 1)), QLatin1String(operations[id % 4]),
                                       QLatin1String(descriptions[id % 4]));
    });

    Output& output = Output::instance();
    if (output.json()) {
        output.printJson(QJsonObject{{QStringLiteral("database"), session.location()},
                                     {QStringLiteral("tables"), QJsonObject{{kFiles, records}, {kPackets, packets}}}});
    } else {
        output.out() << "demo database " << session.location() << ":\n"
                     << "  " << kFiles << ": " << records << " records, search columns DrawingNo, PartNo, Customer\n"
                     << "  " << kPackets << ": " << packets << " records, search columns OpNo, OpType, Description\n"
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
