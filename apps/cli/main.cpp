// searchdata: looks at a database through the library and prints what it finds.

#include "searchdata/DatabaseHandler.h"
#include "searchdata/Diagnostics.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

using namespace searchdata;

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("searchdata"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows the tables of a database as searchdata sees them."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("db"), QStringLiteral("SQLite file or postgresql://user@host:port/database."), QStringLiteral("location")});
    parser.addOption({QStringLiteral("sample"), QStringLiteral("Adds a small sample base table when the database has none.")});
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
    DatabaseHandler& db = *opened.value();
    out << "database: " << db.ConnectionString() << '\n';
    if (parser.isSet(QStringLiteral("sample")) && !db.tableExists(QStringLiteral("Files"))) {
        TransactionState tx;
        bool ok = db.BeginTableTransaction(tx)
            && db.ExecuteSql(QStringLiteral("CREATE TABLE %1 (%2 INTEGER PRIMARY KEY, %3 VARCHAR(255) NOT NULL)")
                                 .arg(db.BracketName(QStringLiteral("Files")), db.BracketName(QStringLiteral("FileId")),
                                      db.BracketName(QStringLiteral("Name"))));
        const QStringList names = {QStringLiteral("bracket.nc"), QStringLiteral("flange.nc"), QStringLiteral("O'Neil shaft.nc")};
        for (int i = 0; ok && i < names.size(); ++i)
            ok = db.ExecuteSql(QStringLiteral("INSERT INTO %1 VALUES (%2, %3)")
                                   .arg(db.BracketName(QStringLiteral("Files"))).arg(i + 1).arg(db.SqlQuote(names[i])));
        ok = ok && db.CommitTableTransaction(tx);
        db.EndTableTransaction(tx);
        if (!ok) {
            err << "searchdata: could not add the sample table: " << db.lastError() << '\n';
            return 1;
        }
        out << "added sample table Files\n";
    }
    const QStringList tables = db.database().tables(QSql::Tables);
    out << "tables: " << tables.size() << '\n';
    for (const QString& table : tables) {
        auto rs = db.OpenSqlRecordset(QStringLiteral("SELECT COUNT(*) AS n FROM ") + db.BracketName(table));
        out << "  " << table << ": " << (rs ? rs->field(QStringLiteral("n")).text() : QStringLiteral("?")) << " rows\n";
    }
    return 0;
}
