#include "searchdata/widgets/CFormUpdatable.h"

#include <QMdiSubWindow>

namespace searchdata {

QList<QWidget*> CFormUpdatable::FormControls() const
{
    return form() ? form()->findChildren<QWidget*>() : QList<QWidget*>();
}

void CFormUpdatable::setOuterGeometry(const QRect& frame)
{
    QWidget* outer = outerWidget();
    if (!outer)
        return;
    // A window's position is that of its frame, its size that of its inside.
    const QSize border = outer->isWindow() ? outer->frameGeometry().size() - outer->size() : QSize();
    outer->move(frame.topLeft());
    outer->resize(frame.size() - border);
}

void CFormUpdatable::changeFrame(const std::function<void(QRect&)>& change)
{
    QRect frame = outerGeometry();
    change(frame);
    setOuterGeometry(frame);
}

void CFormUpdatable::setHeight(float height)
{
    changeFrame([&](QRect& frame) { frame.setHeight(qRound(height)); });
}

void CFormUpdatable::setLeft(float left)
{
    changeFrame([&](QRect& frame) { frame.moveLeft(qRound(left)); });
}

void CFormUpdatable::setMousePointer(int pointer)
{
    applyMousePointer(pointer);
}

void CFormUpdatable::Move(std::optional<float> left, std::optional<float> top, std::optional<float> width, std::optional<float> height)
{
    if (!IsValid() || MDIChild())
        return;
    const QRect now = outerGeometry();
    setOuterGeometry(QRect(left ? qRound(*left) : now.x(), top ? qRound(*top) : now.y(), width ? qRound(*width) : now.width(),
                           height ? qRound(*height) : now.height()));
}

float CFormUpdatable::ScaleHeight() const
{
    return form() ? float(form()->contentsRect().height()) : 0.0f;
}

float CFormUpdatable::ScaleWidth() const
{
    return form() ? float(form()->contentsRect().width()) : 0.0f;
}

void CFormUpdatable::setTag(const QVariant& tag)
{
    if (form())
        form()->setProperty("tag", tag);
}

void CFormUpdatable::setTop(float top)
{
    changeFrame([&](QRect& frame) { frame.moveTop(qRound(top)); });
}

void CFormUpdatable::setWidth(float width)
{
    changeFrame([&](QRect& frame) { frame.setWidth(qRound(width)); });
}

void CFormUpdatable::setWindowState(int state)
{
    QWidget* outer = outerWidget();
    if (!outer)
        return;
    switch (state) {
    case 0:
        outer->setWindowState(outer->windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized));
        break;
    case 1:
        outer->setWindowState((outer->windowState() & ~Qt::WindowMaximized) | Qt::WindowMinimized);
        break;
    case 2:
        outer->setWindowState((outer->windowState() & ~Qt::WindowMinimized) | Qt::WindowMaximized);
        break;
    default:
        break;
    }
}

void CFormUpdatable::ZOrder(int position)
{
    if (QWidget* outer = outerWidget())
        position == 0 ? outer->raise() : outer->lower();
}

std::unique_ptr<CFormUpdatable> MakeFormUpdatable(QWidget* form)
{
    return form ? std::make_unique<CFormUpdatable>(form) : nullptr;
}

} // namespace searchdata
