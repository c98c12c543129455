// The filter dialog and its help window over the demonstration table Files.

#include "filter/frmFilter.h"
#include "filter/frmFilterHelp.h"
#include "screenshots/Scenes.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CFilterTerms.h"

#include <QRadioButton>

namespace searchdata::shots {

namespace {

/// Files with a keyword column besides its demonstration set, descriptions for the help, and base
/// fields as a host would offer them: the key hidden, the others under names of their own.
std::shared_ptr<CFilterColumns> filesColumns(SceneContext& ctx)
{
    const std::shared_ptr<CFilterColumns> columns = ctx.openSearch(QStringLiteral("Files"))->FilterColumns();
    if (!columns)
        qFatal("the search on Files did not open");
    if (!columns->Add(QStringLiteral("Tags"), QStringLiteral("Tags"), QStringLiteral("Keywords that group programs"), fcKeyword, 20,
                      false, false)
        || !columns->ColumnsSave(nullptr))
        qFatal("cannot add the keyword column");
    columns->Item("DrawingNo")->setDescription(QStringLiteral("Number of the drawing the program was written for"));
    columns->Item("PartNo")->setDescription(QStringLiteral("Part number as the customer orders it"));
    columns->Item("Customer")->setDescription(QStringLiteral("Customer who orders the part"));
    TableStructure& base = *columns->BaseStructure();
    if (!base.MarkFilterField(QStringLiteral("Id"), false) || !base.MarkFilterField(QStringLiteral("Size"), true, QStringLiteral("File size"))
        || !base.MarkFilterField(QStringLiteral("Modified"), true, QStringLiteral("Last modified")))
        qFatal("cannot mark the fields of Files");
    return columns;
}

std::unique_ptr<QWidget> filterDialog(const std::shared_ptr<CFilterColumns>& columns, const std::shared_ptr<CFilterTerms>& terms)
{
    auto dialog = std::make_unique<frmFilter>();
    dialog->Prepare(columns, terms);
    return dialog;
}

std::unique_ptr<QWidget> helpWindow(SceneContext& ctx, int view)
{
    auto help = std::make_unique<frmFilterHelp>();
    help->Prepare(filesColumns(ctx));
    help->findChild<QRadioButton*>(QStringLiteral("optView_%1").arg(view))->setChecked(true);
    return help;
}

} // namespace

SD_SCENE("filter-dialog", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    const auto columns = filesColumns(ctx);
    auto terms = std::make_shared<CFilterTerms>(columns);
    terms->Add(kvoCJ_None, columns->SearchKeyword(columns->Item("Tags").get()), QStringLiteral("Tags"), kvoCC_Keyword, kvoOP_Includes,
               QStringLiteral("urgent"));
    terms->Add(kvoCJ_And, columns->SearchKeyword(), QStringLiteral("Customer"), kvoCC_Text, kvoOP_IsLike, QStringLiteral("J%"));
    terms->Add(kvoCJ_OR, columns->BaseTableName(), QStringLiteral("Size"), kvoCC_Numeric, kvoOP_Greater, QStringLiteral("4096"));
    return filterDialog(columns, terms);
});

SD_SCENE("filter-dialog-invalid-date", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    const auto columns = filesColumns(ctx);
    auto terms = std::make_shared<CFilterTerms>(columns);
    terms->Add(kvoCJ_None, columns->SearchKeyword(), QStringLiteral("PartNo"), kvoCC_Text, kvoOP_Equals, QStringLiteral("P-4711"));
    terms->Add(kvoCJ_And, columns->BaseTableName(), QStringLiteral("Modified"), kvoCC_Date, kvoOP_GreatorOrEqual,
               QStringLiteral("2024-02-30"));
    return filterDialog(columns, terms);
});

SD_SCENE("filter-help-general", [](SceneContext& ctx) { return helpWindow(ctx, 0); });

SD_SCENE("filter-help-columns", [](SceneContext& ctx) { return helpWindow(ctx, 1); });

} // namespace searchdata::shots
