// A minimal host: its own SQLite database with a table of parts, a search column defined on it, a
// value saved through the entry control, and a filter on that value ANDed into the host's query.
// Exits with 0 when the filter finds the record whose value was saved.

#include <searchdata/CCommon.h>
#include <searchdata/CFilterColumn.h>
#include <searchdata/CFilterColumns.h>
#include <searchdata/CFilterTerms.h>
#include <searchdata/CSearchFilter.h>
#include <searchdata/Catalog.h>
#include <searchdata/DatabaseHandler.h>
#include <searchdata/Diagnostics.h>
#include <searchdata/ISearchBaseEntry.h>
#include <searchdata/ISearchBaseTable.h>
#include <searchdata/Profile.h>
#include <searchdata/widgets/UKVOSearch.h>
#include <searchdata/widgets/UKVOSearchContainer.h>
#include <searchdata/widgets/WidgetUiServices.h>

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

class Parts : public searchdata::ISearchBaseTable {
public:
    QString TableName() const override { return QStringLiteral("Parts"); }
};

class Part : public searchdata::ISearchBaseEntry {
public:
    explicit Part(qint32 id) : m_id(id) {}
    qint32 Id() const override { return m_id; }

private:
    qint32 m_id;
};

int fail(const QString& what)
{
    const auto reason = searchdata::Diagnostics::instance().lastError();
    QTextStream(stderr) << "minimal-host: " << what << (reason ? ": " + reason->text : QString()) << "\n";
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QTemporaryDir dir;

    // The host's own connection and table.
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("main"));
    db.setDatabaseName(dir.filePath(QStringLiteral("parts.sqlite")));
    if (!db.open())
        return fail(QStringLiteral("cannot open the database"));
    QSqlQuery sql(db);
    if (!sql.exec(QStringLiteral("CREATE TABLE Parts (Id INTEGER PRIMARY KEY, Name TEXT)"))
        || !sql.exec(QStringLiteral("INSERT INTO Parts (Id, Name) VALUES (1, 'Flange'), (2, 'Shaft'), (3, 'Bolt')")))
        return fail(QStringLiteral("cannot make the table Parts"));

    searchdata::UiServices::install(std::make_shared<searchdata::WidgetUiServices>());
    auto handler = std::make_shared<searchdata::DatabaseHandler>(QStringLiteral("main"));
    auto catalog = std::make_shared<searchdata::Catalog>(handler);
    catalog->Refresh();
    auto profile = std::make_shared<searchdata::IniProfile>(dir.filePath(QStringLiteral("profile.ini")));
    const searchdata::CatalogTablePtr table = searchdata::GetCatalogTable(*catalog, QStringLiteral("Parts"));
    if (!table)
        return fail(QStringLiteral("the catalog does not know Parts"));

    // An administrator's column: a text of up to 20 characters.
    {
        auto search = searchdata::CCommon().CreateSearchFilterObject(handler, std::make_shared<Parts>(), catalog, profile, 0,
                                                                     searchdata::DescribeBaseTable(*table, QStringLiteral("Id")));
        if (!search || !search->FilterColumns())
            return fail(QStringLiteral("cannot open the search data of Parts"));
        auto column = search->FilterColumns()->Add(QStringLiteral("Drawing"), QStringLiteral("Drawing number"), QString(), searchdata::fcText, 20, false, false);
        if (!column)
            return fail(QStringLiteral("cannot define the column"));
        column->setIsNew(true);
        if (!search->FilterColumns()->ColumnsSave(nullptr))
            return fail(QStringLiteral("cannot save the column"));
    }

    // A user's value, through the entry control on record 2.
    searchdata::UKVOSearch entry;
    if (!entry.OpenSearch(std::make_shared<searchdata::UKVOSearchContainer>(&entry), handler, std::make_shared<Parts>(), catalog, profile, 0,
                          searchdata::DescribeBaseTable(*table, QStringLiteral("Id"))))
        return fail(QStringLiteral("the entry control cannot open Parts"));
    QObject::connect(&entry, &searchdata::UKVOSearch::OnStartEditing, &entry, [](searchdata::ISearchBaseEntry*, bool* accepted) { *accepted = true; });
    Part shaft(2);
    entry.Display(nullptr, &shaft, searchdata::kseModeEdit);
    entry.show();
    entry.findChild<QPushButton*>(QStringLiteral("cmdEdit"))->click();
    entry.findChild<QLineEdit*>(QStringLiteral("txtTextField_0"))->setText(QStringLiteral("D-4711"));
    entry.SaveData();

    // A filter on the value, ANDed into the host's own query.
    searchdata::CFilterTerms terms(entry.MyFilter()->FilterColumns());
    terms.Add(searchdata::kvoCJ_None, QStringLiteral("PartsSearchData"), QStringLiteral("Drawing"), searchdata::kvoCC_Text, searchdata::kvoOP_Equals,
              QStringLiteral("D-4711"));
    if (!sql.exec(QStringLiteral("SELECT Name FROM Parts WHERE ") + terms.SQLString()))
        return fail(QStringLiteral("the filter's query failed"));
    QStringList found;
    while (sql.next())
        found << sql.value(0).toString();
    QTextStream(stdout) << "Drawing = D-4711: " << found.join(QStringLiteral(", ")) << "\n";
    return found == QStringList{QStringLiteral("Shaft")} ? 0 : fail(QStringLiteral("the filter found the wrong parts"));
}
