#include "host/FormPlacement.h"

#include "searchdata/CFilterColumns.h"
#include "searchdata/IFormInfo.h"
#include "searchdata/UiServices.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace searchdata {

namespace {

QRect screenArea(const QWidget& form)
{
    const QScreen* screen = form.screen() ? form.screen() : QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect(0, 0, 1280, 800);
}

} // namespace

void CentreForm(QWidget& form, const IFormInfo* owner)
{
    const QRect screen = screenArea(form);
    const QRect area = owner && owner->IsValid()
                           ? QRect(qRound(owner->Left()), qRound(owner->Top()), qRound(owner->Width()), qRound(owner->Height()))
                           : screen;
    QRect frame(QPoint(), form.size());
    frame.moveCenter(area.center());
    // Kept on the screen, its top-left corner first where the form is larger than the screen.
    frame.moveLeft(qMax(screen.left(), qMin(frame.left(), screen.right() + 1 - frame.width())));
    frame.moveTop(qMax(screen.top(), qMin(frame.top(), screen.bottom() + 1 - frame.height())));
    form.move(frame.topLeft());
}

void PositionForm(QWidget& form, CFilterColumns& columns, const IFormInfo* owner)
{
    if (!owner || !owner->IsValid()) {
        CentreForm(form, nullptr);
        return;
    }
    columns.SetOwnerLocation({owner->Left(), owner->Top(), owner->Width(), owner->Height()});
    const UiServices& ui = UiServices::current();
    form.move(columns.FormPosition(form.size(), ui.UsableScreenSize(), ui.DialogOffset()).toPoint());
}

} // namespace searchdata
