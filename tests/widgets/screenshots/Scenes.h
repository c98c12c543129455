#pragma once

// A scene is one window in one state, rendered offscreen into docs/screenshots/<name>.png by
// scripts/screenshots.sh. Each subsystem registers its scenes in a file of its own with SD_SCENE.

#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Profile.h"

#include <QTemporaryDir>
#include <QWidget>
#include <functional>
#include <memory>

namespace searchdata::shots {

/// What a scene may use: a folder of its own and, on request, the demonstration database in it.
class SceneContext {
public:
    SceneContext();
    ~SceneContext();
    SceneContext(const SceneContext&) = delete;
    SceneContext& operator=(const SceneContext&) = delete;

    /// The demonstration database (Files with `files` records, Packets), made on first call.
    const std::shared_ptr<DatabaseHandler>& database(int files = 60);
    const std::shared_ptr<Catalog>& catalog();
    const std::shared_ptr<IProfile>& profile();
    /// The search of a base table of the database, opened as a host opens it.
    std::shared_ptr<CSearchFilter> openSearch(const QString& table);
    QString path(const QString& name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
    QString m_connection;
    std::shared_ptr<DatabaseHandler> m_db;
    std::shared_ptr<Catalog> m_catalog;
    std::shared_ptr<IProfile> m_profile;
};

/// Makes the window of a scene, in the state to be shown. The program shows it, lets its timers
/// run, and grabs it.
using SceneFunction = std::function<std::unique_ptr<QWidget>(SceneContext&)>;

struct SceneRegistrar {
    SceneRegistrar(const char* name, SceneFunction make);
};

} // namespace searchdata::shots

#define SD_SCENE_CONCAT2(a, b) a##b
#define SD_SCENE_CONCAT(a, b) SD_SCENE_CONCAT2(a, b)
/// Registers a scene: SD_SCENE("filter-dialog", [](SceneContext& ctx) { ... return window; });
#define SD_SCENE(name, ...) \
    static const ::searchdata::shots::SceneRegistrar SD_SCENE_CONCAT(sd_scene_, __LINE__)(name, __VA_ARGS__)
