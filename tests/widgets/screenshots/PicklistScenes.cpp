// The picklist dialogs: one picklist on each of its tabs, the choice among several, the kept entries.

#include "picklist/frmPicklistEdit.h"
#include "picklist/frmPicklistKept.h"
#include "picklist/frmPicklistSelect.h"
#include "screenshots/Scenes.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/PicklistEntries.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>

namespace searchdata::shots {

namespace {

/// Keeps the search whose picklist a window shows for as long as the window.
class SearchHolder : public QObject {
public:
    SearchHolder(std::shared_ptr<CSearchFilter> search, QObject* window) : QObject(window), search(std::move(search)) {}
    std::shared_ptr<CSearchFilter> search;
};

/// Customer of Files with the default "General Parts", a few more entries, and two of them hidden.
std::shared_ptr<CSearchFilter> customers(SceneContext& ctx)
{
    std::shared_ptr<CSearchFilter> search = ctx.openSearch(QStringLiteral("Files"));
    search->FilterColumns()->Item("Customer")->setPicklistDefault(QStringLiteral("General Parts"));
    if (!search->FilterColumns()->ColumnsSave(nullptr))
        qFatal("cannot give Customer its default");
    search = ctx.openSearch(QStringLiteral("Files"));
    const std::shared_ptr<CFilterColumns>& columns = search->FilterColumns();
    const std::shared_ptr<CScPicklist> picklist = columns->PicklistOf(*columns->Item("Customer"));
    if (!picklist->SaveAdditions({QStringLiteral("Harbor Castings"), QStringLiteral("Delta Fixtures"), QStringLiteral("Summit Tool Works"),
                                  QStringLiteral("Keystone Bearings"), QStringLiteral("Riverside Plating")})
        || !HideShowCollection(*picklist, {QStringLiteral("Keystone Bearings"), QStringLiteral("Delta Fixtures"), QStringLiteral("Riverside Plating")}, 1))
        qFatal("cannot fill the Customer picklist");
    return search;
}

void check(QWidget* form, const char* tree, const QString& text)
{
    if (QTreeWidgetItem* node = form->findChild<QTreeWidget*>(QLatin1String(tree))->findItems(text, Qt::MatchExactly).value(0))
        node->setCheckState(0, Qt::Checked);
}

/// The dialog on the Customer picklist, on tab `tab`.
std::unique_ptr<frmPicklistEdit> customerDialog(SceneContext& ctx, int tab)
{
    const std::shared_ptr<CSearchFilter> search = customers(ctx);
    auto form = std::make_unique<frmPicklistEdit>();
    new SearchHolder(search, form.get());
    const std::shared_ptr<CFilterColumns>& columns = search->FilterColumns();
    form->Prepare(nullptr, *columns->PicklistOf(*columns->Item("Customer")));
    form->findChild<QTabWidget*>(QStringLiteral("tabEdit"))->setCurrentIndex(tab);
    return form;
}

SD_SCENE("picklist-edit-new", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    std::unique_ptr<frmPicklistEdit> form = customerDialog(ctx, 0);
    auto* text = form->findChild<QLineEdit*>(QStringLiteral("txtNew"));
    for (const char* entry : {"Orchard Instruments", "Cobalt Gearing"}) {
        text->setText(QLatin1String(entry));
        form->findChild<QPushButton*>(QStringLiteral("cmdAdd"))->click();
    }
    text->setText(QStringLiteral("Westfield Mould"));
    return form;
});

SD_SCENE("picklist-edit-entries", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    std::unique_ptr<frmPicklistEdit> form = customerDialog(ctx, 1);
    check(form.get(), "tvwOld", QStringLiteral("Harbor Castings"));
    check(form.get(), "tvwOld", QStringLiteral("Summit Tool Works"));
    return form;
});

SD_SCENE("picklist-edit-hidden", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    std::unique_ptr<frmPicklistEdit> form = customerDialog(ctx, 2);
    check(form.get(), "tvwHidden", QStringLiteral("Delta Fixtures"));
    return form;
});

SD_SCENE("picklist-select", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    std::shared_ptr<CSearchFilter> search = ctx.openSearch(QStringLiteral("Files"));
    search->FilterColumns()->Item("PartNo")->setIsPicklist(true);
    if (!search->FilterColumns()->ColumnsSave(nullptr))
        qFatal("cannot make PartNo a picklist");
    search = ctx.openSearch(QStringLiteral("Files"));
    auto form = std::make_unique<frmPicklistSelect>();
    new SearchHolder(search, form.get());
    form->Prepare(*search->FilterColumns(), nullptr);
    return form;
});

SD_SCENE("picklist-kept", [](SceneContext&) -> std::unique_ptr<QWidget> {
    auto form = std::make_unique<frmPicklistKept>();
    form->Prepare(nullptr,
                  {QStringLiteral("Acme Machine"), QStringLiteral("Harbor Castings"), QStringLiteral("Johnson Auto Supply"),
                   QStringLiteral("Jones Gear and Axle"), QStringLiteral("Phillips Mfg")},
                  true);
    return form;
});

} // namespace

} // namespace searchdata::shots
