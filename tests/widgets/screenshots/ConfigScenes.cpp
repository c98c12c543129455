// The column list and the column edit dialog.

#include "config/frmColumnEdit.h"
#include "config/frmConfigure.h"
#include "screenshots/Scenes.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>

namespace searchdata::shots {

namespace {

/// The collection of Files with three columns beside the demonstration set, saved.
std::shared_ptr<CFilterColumns> sixColumns(SceneContext& ctx)
{
    const std::shared_ptr<CFilterColumns> columns = ctx.openSearch(QStringLiteral("Files"))->FilterColumns();
    columns->Add(QStringLiteral("Tags"), QStringLiteral("Tags"), {}, fcKeyword, 30, false, false);
    columns->Add(QStringLiteral("Quantity"), {}, {}, fcInteger32, 0, true, false, QStringLiteral("1"));
    columns->Add(QStringLiteral("Due"), QStringLiteral("Due date"), {}, fcDateTime, 0, false, false, {}, fcDTDM_Configure,
                 Value(QDateTime(QDate(2024, 3, 1), QTime(0, 0))));
    if (!columns->ColumnsSave(nullptr))
        qFatal("the scene's columns could not be saved");
    return ctx.openSearch(QStringLiteral("Files"))->FilterColumns();
}

void selectType(frmColumnEdit& dialog, FilterColumnTypeConstants type)
{
    auto* types = dialog.findChild<QListWidget*>(QStringLiteral("lstType"));
    for (int row = 0; row < types->count(); ++row)
        if (types->item(row)->data(Qt::UserRole).toInt() == type)
            types->setCurrentRow(row);
}

/// Keeps the collection alive as long as the window that shows it: the connection holds the copy.
template <typename Dialog>
std::unique_ptr<QWidget> holding(std::unique_ptr<Dialog> dialog, std::shared_ptr<CFilterColumns> columns)
{
    QObject::connect(dialog.get(), &QObject::destroyed, [columns] {});
    return dialog;
}

} // namespace

SD_SCENE("column-list", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    auto columns = sixColumns(ctx);
    auto dialog = std::make_unique<frmConfigure>();
    dialog->Setup(*columns);
    return holding(std::move(dialog), columns);
});

SD_SCENE("column-edit-new-date", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    auto columns = ctx.openSearch(QStringLiteral("Files"))->FilterColumns();
    auto dialog = std::make_unique<frmColumnEdit>();
    dialog->SetupNew(*columns, QPoint(0, 0));
    selectType(*dialog, fcDateTime);
    dialog->findChild<QLineEdit*>(QStringLiteral("txtCaption"))->setText(QStringLiteral("Inspected on"));
    dialog->findChild<QLineEdit*>(QStringLiteral("txtDefault"))->setText(QStringLiteral("3/1/2024"));
    return holding(std::move(dialog), columns);
});

SD_SCENE("column-edit-picklist-warning", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    auto columns = ctx.openSearch(QStringLiteral("Files"))->FilterColumns();
    auto dialog = std::make_unique<frmColumnEdit>();
    dialog->SetupNew(*columns, QPoint(0, 0));
    selectType(*dialog, fcText);
    dialog->findChild<QLineEdit*>(QStringLiteral("txtName"))->setText(QStringLiteral("Folder"));
    dialog->findChild<QLineEdit*>(QStringLiteral("txtCaption"))->setText(QStringLiteral("Storage folder"));
    dialog->findChild<QCheckBox*>(QStringLiteral("chkIsPicklist"))->setChecked(true);
    dialog->findChild<QCheckBox*>(QStringLiteral("chkPicklistBlank"))->setChecked(true);
    dialog->findChild<QLineEdit*>(QStringLiteral("txtDefault"))->setText(QStringLiteral("Programs"));
    return holding(std::move(dialog), columns);
});

} // namespace searchdata::shots
