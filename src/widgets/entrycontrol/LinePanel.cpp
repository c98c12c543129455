#include "LinePanel.h"

#include <QFontMetricsF>
#include <QPainter>

namespace searchdata::detail {

LinePanel::LinePanel(QWidget* parent) : QFrame(parent)
{
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
}

void LinePanel::setText(const QString& text)
{
    m_text = text;
    update();
}

void LinePanel::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    if (m_text.isEmpty())
        return;
    QPainter painter(this);
    const QRectF inner = contentsRect();
    const QFontMetricsF metrics(font());
    const qreal x = std::max<qreal>(0, (inner.width() - metrics.horizontalAdvance(m_text)) / 2);
    const qreal y = std::max<qreal>(0, (inner.height() - metrics.height()) / 2);
    painter.drawText(QPointF(inner.left() + x, inner.top() + y + metrics.ascent()), m_text);
}

} // namespace searchdata::detail
