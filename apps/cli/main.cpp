// searchdata: opens a database through the library and shows its search columns and tables.

#include "searchdata/CCommon.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/Profile.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

using namespace searchdata;

namespace {

class NamedTable : public ISearchBaseTable {
public:
    explicit NamedTable(QString name) : m_name(std::move(name)) {}
    QString TableName() const override { return m_name; }

private:
    QString m_name;
};

std::shared_ptr<TableStructure> keyStructure(const QString& table, const QString& key)
{
    auto s = TableStructure::NewStructure(table);
    if (!s || !s->AddColumn(key, adInteger, 0, 0, false) || !s->AddPrimaryKey(QStringLiteral("PK_") + table, {key}))
        return nullptr;
    return s;
}

bool makeSampleTable(DatabaseHandler& db)
{
    TransactionState tx;
    bool ok = db.BeginTableTransaction(tx)
           && db.ExecuteSql(QStringLiteral("CREATE TABLE %1 (%2 INTEGER PRIMARY KEY, %3 VARCHAR(255) NOT NULL)")
                                .arg(db.BracketName(QStringLiteral("Files")), db.BracketName(QStringLiteral("FileId")),
                                     db.BracketName(QStringLiteral("Name"))));
    const QStringList names = {QStringLiteral("bracket.nc"), QStringLiteral("flange.nc"), QStringLiteral("O'Neil shaft.nc")};
    for (int i = 0; ok && i < names.size(); ++i)
        ok = db.ExecuteSql(QStringLiteral("INSERT INTO %1 VALUES (%2, %3)").arg(db.BracketName(QStringLiteral("Files"))).arg(i + 1).arg(db.SqlQuote(names[i])));
    ok = ok && db.CommitTableTransaction(tx);
    db.EndTableTransaction(tx);
    return ok;
}

QString failure()
{
    const auto last = Diagnostics::instance().lastError();
    return last ? last->text : QStringLiteral("unknown failure");
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("searchdata"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows the search columns of a base table and the tables that hold them."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("db"), QStringLiteral("SQLite file or postgresql://user@host:port/database."), QStringLiteral("location")});
    parser.addOption({QStringLiteral("table"), QStringLiteral("Base table (default Files)."), QStringLiteral("name"), QStringLiteral("Files")});
    parser.addOption({QStringLiteral("key"), QStringLiteral("Key column of the base table (default FileId)."), QStringLiteral("name"), QStringLiteral("FileId")});
    parser.addOption({QStringLiteral("sample"), QStringLiteral("Makes a sample base table Files with a few search columns when the database has none.")});
    parser.process(app);

    QTextStream out(stdout);
    QTextStream err(stderr);
    if (!parser.isSet(QStringLiteral("db"))) {
        err << "searchdata: --db is required\n";
        return 2;
    }
    auto opened = DatabaseHandler::open(parser.value(QStringLiteral("db")));
    if (!opened) {
        err << "searchdata: " << opened.error() << '\n';
        return 1;
    }
    const std::shared_ptr<DatabaseHandler> db = opened.value();
    const QString tableName = parser.value(QStringLiteral("table"));
    const QString keyName = parser.value(QStringLiteral("key"));
    const bool sample = parser.isSet(QStringLiteral("sample")) && !db->tableExists(QStringLiteral("Files"));
    if (sample && !makeSampleTable(*db)) {
        err << "searchdata: could not make the sample table: " << db->lastError() << '\n';
        return 1;
    }

    auto catalog = std::make_shared<Catalog>(db);
    auto search = CCommon().CreateSearchFilterObject(db, std::make_shared<NamedTable>(tableName), catalog, nullptr, 0,
                                                     keyStructure(tableName, keyName));
    const std::shared_ptr<CFilterColumns> columns = search->FilterColumns();
    if (!columns) {
        err << "searchdata: cannot open a search on " << tableName << ": " << failure() << '\n';
        return 1;
    }
    if (sample && columns->Count() == 0) {
        columns->Add(QStringLiteral("Customer"), QStringLiteral("Customer"), QString(), fcText, 40, false, false);
        columns->Add(QStringLiteral("Qty"), QStringLiteral("Quantity"), QString(), fcInteger32, 0, false, false);
        columns->Add(QStringLiteral("Due"), QStringLiteral("Due date"), QString(), fcDateTime, 0, false, false);
        columns->Add(QStringLiteral("Approved"), QString(), QString(), fcBoolean, 0, false, false);
        columns->Add(QStringLiteral("Tags"), QString(), QStringLiteral("Free keywords"), fcKeyword, 30, false, false);
        columns->Add(QStringLiteral("Remarks"), QString(), QString(), fcNote, 255, false, true, QStringLiteral("none yet"))->setIsNew(true);
        if (!columns->ColumnsSave(nullptr)) {
            err << "searchdata: could not save the columns: " << failure() << '\n';
            return 1;
        }
        columns->ColumnsFetch();
    }

    out << "database: " << db->ConnectionString() << '\n';
    out << "search columns of " << tableName << ": " << columns->Count() << '\n';
    for (const auto& c : *columns)
        out << "  " << c->Index() << ". " << c->Name() << " (" << c->ColumnTypeName() << ")"
            << (c->Caption().isEmpty() ? QString() : QStringLiteral(" \"%1\"").arg(c->Caption())) << '\n';
    catalog->Refresh();
    out << "tables:\n";
    for (const CatalogTablePtr& t : catalog->Tables()) {
        auto n = db->OpenSqlRecordset(QStringLiteral("SELECT COUNT(*) AS n FROM ") + db->BracketName(t->name));
        out << "  " << t->name << " (" << (n ? n->field(QStringLiteral("n")).text() : QStringLiteral("?")) << " rows)\n";
        for (const CatalogColumn& c : t->columns)
            out << "    " << c.name << ' ' << c.declaredType << (c.nullable ? "" : " NOT NULL")
                << (c.hasDefault ? QStringLiteral(" DEFAULT %1").arg(c.defaultText) : QString()) << '\n';
        for (const CatalogKey& k : t->keys)
            out << "    key " << k.name << " (" << k.columns.join(QStringLiteral(", ")) << ")"
                << (k.relatedTable.isEmpty() ? QString() : QStringLiteral(" -> %1").arg(k.relatedTable)) << '\n';
    }
    return 0;
}
