#include "DemoStart.h"

#include "DemoWindow.h"
#include "ProgressTask.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/DemoDatabase.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Profile.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/WidgetUiServices.h"

#include <QDir>
#include <QStandardPaths>

namespace searchdata::demo {

namespace {

QString inFolder(QStandardPaths::StandardLocation location, const QString& name)
{
    const QString folder = QStandardPaths::writableLocation(location);
    QDir().mkpath(folder);
    return QDir(folder).filePath(name);
}

void failure(const QString& text)
{
    UiServices::current().ShowMessage(MessageKind::Critical, GetResourceText(9450), text);
}

} // namespace

QString DefaultDemoLocation()
{
    return inFolder(QStandardPaths::AppDataLocation, QStringLiteral("demo.sqlite"));
}

std::unique_ptr<DemoWindow> StartDemo(const QString& location, const QString& profilePath, int files)
{
    UiServices::install(std::make_shared<WidgetUiServices>());
    const QString where = location.isEmpty() ? DefaultDemoLocation() : location;
    Diagnostics::instance().clearReports();
    const auto opened = DatabaseHandler::open(where);
    if (!opened) {
        failure(GetResourceText(9469, {where, opened.error()}));
        return nullptr;
    }
    const std::shared_ptr<DatabaseHandler>& db = opened.value();
    auto catalog = std::make_shared<Catalog>(db);
    catalog->Refresh();
    auto profile = std::make_shared<IniProfile>(profilePath.isEmpty() ? inFolder(QStandardPaths::AppConfigLocation, QStringLiteral("profile.ini"))
                                                                      : profilePath);

    const auto present = [&] {
        QStringList tables;
        for (const QString& table : {DemoDatabase::filesTable(), DemoDatabase::packetsTable()})
            if (GetCatalogTable(*catalog, table))
                tables << table;
        return tables;
    };
    if (present().isEmpty()) {
        bool made = false;
        RunWithProgress([&](IProgress& progress) { made = DemoDatabase::Create(db, catalog, profile, files, &progress); });
        const auto reason = Diagnostics::instance().lastError();
        if (!made) {
            failure(GetResourceText(9470, {where, reason ? reason->text : QString()}));
            return nullptr;
        }
    }
    auto window = std::make_unique<DemoWindow>(db, catalog, profile, present());
    // From now on dialogs and messages stand over the main window.
    UiServices::install(std::make_shared<WidgetUiServices>(window.get()));
    return window;
}

} // namespace searchdata::demo
