// The layout of the entry control, by computation: every gap is `fieldSpacing`, half the height of
// a row label, so that the layout follows the font and the screen's scaling.

#include "UKVOSearch_p.h"

#include "platform/Guard_p.h"
#include "searchdata/Value.h"

#include <QScrollBar>
#include <QStatusBar>
#include <QTreeWidget>

namespace searchdata {

using namespace detail;

namespace {

constexpr char kModule[] = "KVOSearchEdit";

int px(float value)
{
    return qRound(value);
}

void setLeft(QWidget* w, float left)
{
    w->move(px(left), w->y());
}

void setTop(QWidget* w, float top)
{
    w->move(w->x(), px(top));
}

void setWidth(QWidget* w, float width)
{
    w->resize(std::max(0, px(width)), w->height());
}

void setHeight(QWidget* w, float height)
{
    w->resize(w->width(), std::max(0, px(height)));
}

float bottomOf(const QWidget* w)
{
    return float(w->y() + w->height());
}

} // namespace

void UKVOSearchPrivate::sizeSetup()
{
    fieldSpacing = float(lblField->item(0)->height()) / 2;
    widthMin = fieldSpacing + float(cmdOk->width()) + float(picContainer->borderWidth()) + float(picView->borderWidth())
             + 1.5f * float(QFontMetricsF(q->font()).horizontalAdvance(QString(15, QLatin1Char('W'))))
             + float(cmdAdd->item(0)->height()) + fieldSpacing;
    // Where the base record and the rows stand before the first arrangement: the base record half a
    // gap in from both sides, the rows below it, as the minimum height then finds them.
    lblEntry->move(px(fieldSpacing / 2), lblEntry->height());
    lvwEntry->move(px(fieldSpacing / 2), px(bottomOf(lblEntry)));
    picView->move(0, px(bottomOf(lvwEntry) + float(lblEntry->height())));
}

void UKVOSearchPrivate::calculateMinimumHeight()
{
    lblEntry->setVisible(displayBaseRecord);
    lvwEntry->setVisible(displayBaseRecord);
    picView->show();
    if (displayBaseRecord) {
        setTop(lblEntry, float(lblEntry->height()));
        setTop(lvwEntry, bottomOf(lblEntry));
        picView->move(0, px(bottomOf(lvwEntry) + float(lblEntry->height())));
    } else {
        picView->move(0, 0);
    }
    float base = float(picContainer->borderHeight());
    sbrStatus->setVisible(editMode == kseModeEdit);
    if (editMode == kseModeEdit) {
        base += float(sbrStatus->height());
        if (const LinePanel* rule = picLine->widget(1))
            base += float(rule->height());
    }
    const float buttons = bottomOf(cmdTemplatePaste) + fieldSpacing;
    const float frames = base + float(picView->borderHeight()) + float(picFields->borderHeight());
    heightMin = std::max(buttons, frames);
}

void UKVOSearchPrivate::controlsArrange()
{
    SD_PROC("ControlsArrange");
    if (!columns())
        return;
    const bool edit = editMode == kseModeEdit;
    const bool noButtons = !edit && !showOKButton && !showCancelButton;
    LinePanel* rule = picLine->widget(1);

    // Surface and height budget.
    picContainer->setGeometry(0, 0, q->width(), q->height());
    picContainer->update();
    // While the rows fit, the sheet sits one gap down in its window (see below); the window is then
    // as tall as the sheet where it sits, since a shorter one would cut the last row.
    float needed = float(picContainer->borderHeight() + picView->y() + picFields->height()) + fieldSpacing;
    if (!noButtons && rule)
        setHeight(rule, float(rule->borderThickness()));
    if (edit) {
        if (!txtStatus->text().isEmpty()) {
            setHeight(picStatus, float(picStatus->borderHeight() + txtStatus->height()));
            needed += float(picStatus->height());
            picStatus->show();
        } else {
            picStatus->hide();
        }
        needed += float(sbrStatus->height());
    } else {
        picStatus->hide();
    }

    // The column of buttons.
    const float top = displayBaseRecord ? bottomOf(lvwEntry) + fieldSpacing : float(picContainer->y()) + fieldSpacing;
    if (displayBaseRecord)
        setWidth(lvwEntry, float(picContainer->scaleWidth()) - fieldSpacing);
    const float right = float(picContainer->scaleWidth()) - (float(cmdOk->width()) + fieldSpacing);
    if (edit) {
        cmdOk->move(px(right), px(top));
        cmdEdit->setGeometry(cmdOk->geometry());
        const auto below = [&](QPushButton* b, float y) { b->move(px(right), px(y)); };
        below(cmdApply, showOKButton ? bottomOf(cmdOk) + fieldSpacing : float(cmdOk->y()));
        below(cmdReset, bottomOf(cmdApply) + fieldSpacing);
        below(cmdClear, bottomOf(cmdReset) + fieldSpacing);
        below(cmdCancel, bottomOf(cmdClear) + fieldSpacing);
        below(cmdTemplateCopy, showCancelButton ? bottomOf(cmdCancel) + fieldSpacing : float(cmdCancel->y()));
        below(cmdTemplatePaste, bottomOf(cmdTemplateCopy) + fieldSpacing);
        if (rule)
            rule->show();
    } else {
        cmdCancel->move(px(right), px(float(picContainer->scaleHeight()) - (float(cmdCancel->height()) + fieldSpacing)));
        if (showCancelButton && rule)
            rule->hide();
    }

    // The window of rows.
    setWidth(picView, right);
    picView->update();
    if (!picStatus->isHidden()) {
        setWidth(picStatus, float(picView->width()));
        txtStatus->setGeometry(0, 0, picView->scaleWidth(), picStatus->scaleHeight());
        picStatus->update();
    }

    // Fit or scroll: the border of the window is the sign of scrolling.
    if (needed > float(q->height())) {
        float h = float(picContainer->scaleHeight()) - float(picView->y());
        if (edit) {
            h -= float(sbrStatus->height()) + float(rule ? rule->height() : 0);
            if (!picStatus->isHidden())
                h -= float(picStatus->height());
        }
        if (h <= 0)
            return;
        setHeight(picView, h);
        if (picView->borderStyle() == 0) {
            // Scrolling starts at the top; a further resize keeps the position.
            picView->setBorderStyle(1);
            setTop(picFields, 0);
            vsbFields->setValue(0);
        }
        setWidth(picFields, float(picView->scaleWidth() - vsbFields->width()));
        vsbFields->show();
        vsbFields->setGeometry(picView->scaleWidth() - vsbFields->width(), 0, vsbFields->width(), picView->scaleHeight());
        vsbFields->setRange(0, 100);
        const double largeChange = BankersRound(double(picView->scaleHeight()) / double(picFields->height()) * 100);
        if (largeChange >= 1 && largeChange <= 32767)
            vsbFields->setPageStep(int(largeChange));
        const double smallChange = BankersRound(vsbFields->pageStep() / 5.0);
        vsbFields->setSingleStep(smallChange >= 1 ? int(smallChange) : 1);
    } else {
        vsbFields->hide();
        picView->setBorderStyle(0);
        setHeight(picView, float(picView->borderHeight() + picFields->height()) + fieldSpacing);
        setTop(picFields, fieldSpacing);
        setWidth(picFields, float(picView->scaleWidth()));
    }
    if (!picStatus->isHidden())
        setTop(picStatus, bottomOf(picView));

    arrangeRows();

    // The bottom of the control.
    if (edit)
        sbrStatus->setGeometry(0, picContainer->scaleHeight() - sbrStatus->height(), picContainer->scaleWidth(), sbrStatus->height());
    if (rule) {
        if (noButtons) {
            rule->hide();
        } else {
            rule->move(px(fieldSpacing), sbrStatus->y() - rule->height());
            setWidth(rule, float(picContainer->scaleWidth()) - 2 * fieldSpacing);
        }
    }
    scheduleControlsUpdate();
}

void UKVOSearchPrivate::arrangeRows()
{
    const CFilterColumns* cols = columns();
    // The add and remove pair stands one gap further out than the widths below allow for. While the
    // rows scroll, that gap would fall under the bar, so the rows then leave it free.
    const float sheetWidth = float(picFields->width()) - (vsbFields->isHidden() ? 0 : fieldSpacing);
    // A label wider than the caption column widens it and starts the pass again; each label can do
    // that once, so the passes are bounded by the number of labels.
    bool widened = true;
    while (widened) {
        widened = false;
        for (const ColumnPtr& column : *cols) {
            QWidget* control = widgetOf(column->MyControl());
            auto* label = qobject_cast<QLabel*>(widgetOf(column->MyCaptionLabel()));
            float width = 0;
            if (!label) {
                if (!control)
                    continue;
                const float left = fieldSpacing + labelColumnWidth;
                setLeft(control, left);
                width = sheetWidth - (left + fieldSpacing);
            } else {
                LabelAdapter::setWordWrap(label, true);
                if (labelColumnWidth < float(label->width())) {
                    labelColumnWidth = float(label->width());
                    widened = true;
                    break;
                }
                LabelAdapter::setWidth(label, px(labelColumnWidth));
                if (control)
                    setLeft(control, fieldSpacing + labelColumnWidth);
                const float natural = float(control ? control->height() : 0) + textWidth(label->property("tag").toString());
                width = sheetWidth - float(label->x() + label->width());
                if (const QWidget* now = widgetOf(column->MyDefaultButton()))
                    width -= float(now->width()) + fieldSpacing;
                else if (const QWidget* add = widgetOf(column->MyAddButton())) {
                    const QWidget* remove = widgetOf(column->MyRemoveButton());
                    width -= float(add->width() + (remove ? remove->width() : 0)) + fieldSpacing;
                }
                width = std::min(width, natural);
            }
            if (!control)
                continue;
            if (control->width() != px(width))
                setWidth(control, width);
            if (QWidget* add = widgetOf(column->MyAddButton())) {
                add->move(px(float(control->x() + control->width()) + fieldSpacing), control->y());
                if (QWidget* remove = widgetOf(column->MyRemoveButton()))
                    remove->move(px(float(add->x() + add->width()) + fieldSpacing), add->y());
            }
            if (QWidget* now = widgetOf(column->MyDefaultButton()))
                now->move(px(float(control->x() + control->width()) + fieldSpacing), control->y());
        }
    }
}

void UKVOSearchPrivate::repositionFields(float percent)
{
    setTop(picFields, percent / 100 * float(picView->scaleHeight() - picFields->height()));
}

void UKVOSearchPrivate::checkVisible(QWidget* control)
{
    if (!control || vsbFields->isHidden())
        return;
    // Each step of the bar moves the sheet, so the position is read afresh in every round; the step
    // is one percent of the range, and the end of the bar ends the walk.
    const auto top = [&] { return picFields->y() + control->y(); };
    if (top() >= 0) {
        while (top() + control->height() > picView->scaleHeight() && vsbFields->value() < vsbFields->maximum())
            vsbFields->setValue(vsbFields->value() + 1);
    } else {
        while (top() < 0 && vsbFields->value() > vsbFields->minimum())
            vsbFields->setValue(vsbFields->value() - 1);
    }
}

void UKVOSearchPrivate::tabOrder()
{
    QList<QWidget*> order{lblEntry, lvwEntry, picView, picFields};
    if (const CFilterColumns* cols = columns()) {
        for (const ColumnPtr& column : *cols) {
            const IControl* row[] = {column->MyCaptionLabel(), column->MyControl(), column->MyDefaultButton(), column->MyAddButton(),
                                     column->MyRemoveButton()};
            for (const IControl* control : row) {
                if (QWidget* w = widgetOf(control))
                    order << w;
            }
        }
    }
    order << vsbFields << cmdApply << cmdReset << sbrStatus;
    for (int i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

} // namespace searchdata
