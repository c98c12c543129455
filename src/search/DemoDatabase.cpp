#include "searchdata/DemoDatabase.h"

#include "platform/Guard_p.h"
#include "searchdata/AdoTypes.h"
#include "searchdata/CCommon.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/Progress.h"
#include "searchdata/Recordset.h"
#include "searchdata/Resources.h"

#include <QDateTime>
#include <functional>

namespace searchdata {

namespace {

constexpr const char* kModule = "DemoDatabase";

struct Field {
    const char* name;
    int type;
    int size;
};

class KeyEntry : public ISearchBaseEntry {
public:
    explicit KeyEntry(qint32 id) : m_id(id) {}
    qint32 Id() const override { return m_id; }

private:
    qint32 m_id;
};

void createTable(DatabaseHandler& db, const QString& table, const QList<Field>& fields)
{
    QStringList parts;
    for (const Field& f : fields) {
        const QString name = QString::fromUtf8(f.name);
        parts << db.BracketName(name) + QLatin1Char(' ') + db.dialect().declaredType(f.type, f.size)
                     + (name == QLatin1String("Id") ? QStringLiteral(" NOT NULL") : QString());
    }
    parts << QStringLiteral("CONSTRAINT ") + db.BracketName(QStringLiteral("PK_") + table) + QStringLiteral(" PRIMARY KEY (")
                 + db.BracketName(QStringLiteral("Id")) + QLatin1Char(')');
    if (!db.ExecuteSql(QStringLiteral("CREATE TABLE ") + db.BracketName(table) + QStringLiteral(" (") + parts.join(QStringLiteral(", ")) + QLatin1Char(')')))
        detail::fail(GetResourceText(9251, {table}));
}

void insertRow(DatabaseHandler& db, const QString& table, const QStringList& fields, const QVariantList& values)
{
    QStringList names, marks;
    for (const QString& f : fields) {
        names << db.BracketName(f);
        marks << QStringLiteral("?");
    }
    if (!db.ExecuteSql(QStringLiteral("INSERT INTO ") + db.BracketName(table) + QStringLiteral(" (") + names.join(QStringLiteral(", "))
                           + QStringLiteral(") VALUES (") + marks.join(QStringLiteral(", ")) + QLatin1Char(')'),
                       values))
        detail::fail(GetResourceText(9251, {table}));
}

void makeBaseTables(DatabaseHandler& db, int files, int packets)
{
    TableTransaction tx(db);
    if (!tx.begun())
        detail::fail(GetResourceText(9251, {DemoDatabase::filesTable()}));
    const QString filesTable = DemoDatabase::filesTable();
    const QString packetsTable = DemoDatabase::packetsTable();
    createTable(db, filesTable, {{"Id", adInteger, 0}, {"Name", adVarWChar, 255}, {"Folder", adVarWChar, 255}, {"Size", adBigInt, 0}, {"Modified", adDate, 0}});
    createTable(db, packetsTable, {{"Id", adInteger, 0}, {"Name", adVarWChar, 255}, {"Machine", adVarWChar, 50}, {"Created", adDate, 0}});

    static const char* const parts[] = {"bracket", "flange", "shaft", "housing", "gear", "lever", "bushing", "cover", "plate", "spindle"};
    static const char* const folders[] = {"/cnc/lathe", "/cnc/mill", "/cnc/mill/5-axis", "/cnc/grinder"};
    static const char* const machines[] = {"Lathe 1", "Lathe 2", "Mill 1", "Mill 5-axis", "Grinder"};
    const QDateTime start(QDate(2024, 1, 8), QTime(7, 30));
    const QStringList fileFields = {QStringLiteral("Id"), QStringLiteral("Name"), QStringLiteral("Folder"), QStringLiteral("Size"), QStringLiteral("Modified")};
    for (int i = 1; i <= files; ++i) {
        // One name with a quote in it, to show that every value reaches SQL safely.
        const QString name = i == 3 ? QStringLiteral("O'Neil shaft-0003.nc")
                                    : QLatin1String(parts[i % 10]) + QLatin1Char('-') + QStringLiteral("%1").arg(i, 4, 10, QLatin1Char('0')) + QStringLiteral(".nc");
        insertRow(db, filesTable, fileFields,
                  {i, name, QLatin1String(folders[i % 4]), qint64(2048 + (i * 7919) % 250000), start.addSecs(qint64(i) * 5400)});
    }
    const QStringList packetFields = {QStringLiteral("Id"), QStringLiteral("Name"), QStringLiteral("Machine"), QStringLiteral("Created")};
    for (int i = 1; i <= packets; ++i)
        insertRow(db, packetsTable, packetFields,
                  {i, QStringLiteral("packet %1").arg(i, 3, 10, QLatin1Char('0')), QLatin1String(machines[i % 5]), start.addDays(i)});
    if (!tx.commit())
        detail::fail(GetResourceText(9251, {filesTable}));
}

using DemoUpdate = std::function<bool(CSearchFilter&, IProgress*, const KeyEntry&, int)>;

/// Defines a demo set on `table` and writes values into every record through `update`.
void fillDemoSet(const std::shared_ptr<DatabaseHandler>& db, const std::shared_ptr<Catalog>& catalog,
                 const std::shared_ptr<IProfile>& profile, const QString& table, EDemoColumnSet set, IProgress* progress,
                 const DemoUpdate& update)
{
    DatabaseHandler& h = *db;
    catalog->Refresh();
    const CatalogTablePtr base = GetCatalogTable(*catalog, table);
    if (!base)
        detail::fail(GetResourceText(9251, {table}));
    auto search = CCommon().CreateSearchFilterObject(db, std::make_shared<NamedBaseTable>(table), catalog, profile, 0,
                                                     DescribeBaseTable(*base, QStringLiteral("Id")));
    if (!search || !search->FilterColumns() || !search->CreateDemoColumnSet(set, progress, nullptr))
        detail::fail(GetResourceText(9252, {table}));

    QList<qint32> ids;
    auto rs = h.OpenSqlRecordset(QStringLiteral("SELECT ") + h.BracketName(QStringLiteral("Id")) + QStringLiteral(" AS id FROM ")
                                 + h.BracketName(table) + QStringLiteral(" ORDER BY 1"));
    if (!rs)
        detail::fail(GetResourceText(9252, {table}));
    for (; !rs->EndOfFile(); rs->MoveNext())
        ids << rs->field(QStringLiteral("id")).toInt32().valueOr(0);
    rs.reset();

    // One transaction: a thousand single statements would each wait for the disk.
    TableTransaction tx(h);
    int lastQuarter = 0;
    for (int n = 0; n < ids.size(); ++n) {
        if (!update(*search, progress, KeyEntry(ids[n]), ids[n]))
            detail::fail(GetResourceText(9252, {table}));
        const int quarter = (n + 1) * 4 / int(ids.size());
        if (progress && quarter != lastQuarter)
            progress->SetProgress(GetResourceText(9253, {table, QString::number(n + 1), QString::number(ids.size())}));
        lastQuarter = quarter;
    }
    if (!tx.commit())
        detail::fail(GetResourceText(9252, {table}));
}

} // namespace

QString DemoDatabase::filesTable()
{
    return QStringLiteral("Files");
}

QString DemoDatabase::packetsTable()
{
    return QStringLiteral("Packets");
}

int DemoDatabase::packetCount(int files)
{
    return std::max(1, files / 10);
}

bool DemoDatabase::Create(const std::shared_ptr<DatabaseHandler>& db, const std::shared_ptr<Catalog>& catalog,
                          const std::shared_ptr<IProfile>& profile, int files, IProgress* progress)
{
    SD_PROC("Create");
    return SD_GUARDED([&] {
        if (!db || !catalog)
            detail::fail(GetResourceText(9250));
        const int packets = packetCount(files);
        if (progress)
            progress->SetStatus(GetResourceText(9250));
        makeBaseTables(*db, files, packets);

        static const char* const customers[] = {"Acme Machine", "General Parts", "Johnson Auto Supply", "Jones Gear and Axle", "Phillips Mfg"};
        fillDemoSet(db, catalog, profile, filesTable(), fltrDCS_DncFile, progress,
                    [](CSearchFilter& search, IProgress* p, const KeyEntry& entry, int id) {
                        return search.UpdateDemoDncFile(p, nullptr, &entry, QStringLiteral("D-%1").arg(10000 + id),
                                                        QStringLiteral("P-%1-%2").arg(4700 + id % 97).arg(QChar(u'A' + id % 3)),
                                                        QLatin1String(customers[(id * 7) % 5]));
                    });
        static const char* const operations[] = {"Drill", "Finish Cut", "Mill", "Rough Cut"};
        static const char* const descriptions[] = {"Spot and drill the bolt circle", "Finish the outer contour to size",
                                                   "Mill the pocket, two passes", "Rough the stock, leave 0.5 mm"};
        fillDemoSet(db, catalog, profile, packetsTable(), fltrDCS_Packet, progress,
                    [](CSearchFilter& search, IProgress* p, const KeyEntry& entry, int id) {
                        return search.UpdateDemoPacket(p, nullptr, &entry, QString::number(10 * (id % 9 + 1)),
                                                       QLatin1String(operations[id % 4]), QLatin1String(descriptions[id % 4]));
                    });
        catalog->Refresh();
    });
}

} // namespace searchdata
