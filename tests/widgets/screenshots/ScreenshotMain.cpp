// Renders every registered scene offscreen into PNG files: searchdata-screenshots OUTDIR [NAME...]
// (only the named scenes when names are given).

#include "screenshots/Scenes.h"
#include "searchdata/CCommon.h"
#include "searchdata/DemoDatabase.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/widgets/WidgetUiServices.h"
#include "support/WidgetTestSupport.h"

#include <QApplication>
#include <QDir>
#include <QLocale>
#include <QSqlDatabase>
#include <QStandardPaths>
#include <QTest>
#include <cstdio>
#include <map>

namespace searchdata::shots {

namespace {

std::map<QString, SceneFunction>& registry()
{
    static std::map<QString, SceneFunction> scenes;
    return scenes;
}

} // namespace

SceneRegistrar::SceneRegistrar(const char* name, SceneFunction make)
{
    registry()[QString::fromUtf8(name)] = std::move(make);
}

SceneContext::SceneContext()
{
    static int counter = 0;
    m_connection = QStringLiteral("scene-%1").arg(++counter);
}

SceneContext::~SceneContext()
{
    m_catalog.reset();
    m_db.reset();
    if (QSqlDatabase::contains(m_connection)) {
        QSqlDatabase::database(m_connection, false).close();
        QSqlDatabase::removeDatabase(m_connection);
    }
}

const std::shared_ptr<DatabaseHandler>& SceneContext::database(int files)
{
    if (m_db)
        return m_db;
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    db.setDatabaseName(m_dir.filePath(QStringLiteral("demo.sqlite")));
    if (!db.open())
        qFatal("cannot open the scene database: %s", qPrintable(db.databaseName()));
    m_db = std::make_shared<DatabaseHandler>(m_connection);
    m_catalog = std::make_shared<Catalog>(m_db);
    m_catalog->Refresh();
    if (!DemoDatabase::Create(m_db, m_catalog, profile(), files, nullptr)) {
        const auto error = Diagnostics::instance().lastError();
        qFatal("cannot make the demonstration database: %s", error ? qPrintable(error->text) : "");
    }
    return m_db;
}

const std::shared_ptr<Catalog>& SceneContext::catalog()
{
    database();
    return m_catalog;
}

const std::shared_ptr<IProfile>& SceneContext::profile()
{
    if (!m_profile)
        m_profile = std::make_shared<IniProfile>(m_dir.filePath(QStringLiteral("profile.ini")));
    return m_profile;
}

std::shared_ptr<CSearchFilter> SceneContext::openSearch(const QString& table)
{
    const CatalogTablePtr base = GetCatalogTable(*catalog(), table);
    if (!base)
        qFatal("no table %s in the scene database", qPrintable(table));
    return CCommon().CreateSearchFilterObject(m_db, std::make_shared<NamedBaseTable>(table), m_catalog, profile(), 0,
                                              DescribeBaseTable(*base, QStringLiteral("Id")));
}

} // namespace searchdata::shots

int main(int argc, char** argv)
{
    using namespace searchdata;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    test::pinApplicationFont();
    UiServices::install(std::make_shared<WidgetUiServices>());

    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: searchdata-screenshots OUTDIR [SCENE...]\n");
        return 2;
    }
    const QDir out(args.first());
    QDir().mkpath(out.path());
    const QStringList only = args.mid(1);
    int written = 0;
    for (const auto& [name, make] : shots::registry()) {
        if (!only.isEmpty() && !only.contains(name))
            continue;
        shots::SceneContext context;
        std::unique_ptr<QWidget> window = make(context);
        if (!window) {
            std::fprintf(stderr, "scene %s made no window\n", qPrintable(name));
            return 1;
        }
        if (!window->isVisible())
            window->show();
        // Lets layouts settle and the timers that follow a change (200 ms at most) run.
        QTest::qWait(300);
        const QString file = out.filePath(name + QStringLiteral(".png"));
        if (!window->grab().save(file)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            return 1;
        }
        std::printf("%s\n", qPrintable(file));
        ++written;
        window.reset();
        UiServices::current().ClearLockedMessage();
    }
    std::printf("%d screenshots\n", written);
    return 0;
}
