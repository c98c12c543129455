// The demo host's main window: Files narrowed by a filter, and the entry control editing the current
// record.

#include "DemoWindow.h"
#include "screenshots/Scenes.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/widgets/UKVOSearch.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace searchdata::shots {

namespace {

std::unique_ptr<demo::DemoWindow> filteredWindow(SceneContext& ctx)
{
    auto window = std::make_unique<demo::DemoWindow>(ctx.database(), ctx.catalog(), ctx.profile(),
                                                     QStringList{QStringLiteral("Files"), QStringLiteral("Packets")});
    auto terms = std::make_shared<CFilterTerms>(window->entryControl()->MyFilter()->FilterColumns());
    terms->Add(kvoCJ_None, QStringLiteral("FilesSearchData"), QStringLiteral("Customer"), kvoCC_Text, kvoOP_Equals, QStringLiteral("Phillips Mfg"));
    window->applyFilter(terms);
    return window;
}

} // namespace

SD_SCENE("demo-filtered", [](SceneContext& ctx) -> std::unique_ptr<QWidget> { return filteredWindow(ctx); });

SD_SCENE("demo-editing", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    auto window = filteredWindow(ctx);
    window->show();
    QApplication::setActiveWindow(window.get());
    (void)QTest::qWaitForWindowActive(window.get());
    UKVOSearch* control = window->entryControl();
    QTest::mouseClick(control->findChild<QPushButton*>(QStringLiteral("cmdEdit")), Qt::LeftButton);
    // The part number, the second column, takes a new value.
    auto* partNo = control->findChild<QLineEdit*>(QStringLiteral("txtTextField_1"));
    partNo->setFocus();
    partNo->selectAll();
    QTest::keyClicks(partNo, QStringLiteral("P-4711-B"));
    return window;
});

} // namespace searchdata::shots
