#include "LabelAdapter.h"

#include <QFontMetrics>
#include <QLabel>
#include <QRegularExpression>

namespace searchdata::detail {

namespace {

const char kAutoSize[] = "autoSize";

/// The widest word with the blank after it, which keeps a caption's ": " off the value beside it.
int widestWord(const QLabel* label)
{
    static const QRegularExpression word(QStringLiteral("\\S+\\s?"));
    const QFontMetrics metrics(label->font());
    int widest = 0;
    for (auto it = word.globalMatch(label->text()); it.hasNext();)
        widest = std::max(widest, metrics.horizontalAdvance(it.next().captured()));
    return widest + 2 * label->margin();
}

} // namespace

QString LabelAdapter::Caption() const
{
    return m_label ? m_label->text() : QString();
}

void LabelAdapter::SetCaption(const QString& caption)
{
    if (!m_label)
        return;
    m_label->setText(caption);
    fit(m_label);
}

QWidget* LabelAdapter::widget() const
{
    return m_label;
}

bool LabelAdapter::autoSize(const QLabel* label)
{
    return label->property(kAutoSize).toBool();
}

void LabelAdapter::setAutoSize(QLabel* label, bool on)
{
    label->setProperty(kAutoSize, on);
    fit(label);
}

void LabelAdapter::fit(QLabel* label)
{
    if (!autoSize(label))
        return;
    if (!label->wordWrap()) {
        label->resize(label->sizeHint());
        return;
    }
    const int width = std::max(label->width(), widestWord(label));
    label->resize(width, std::max(label->heightForWidth(width), label->fontMetrics().height()));
}

void LabelAdapter::setWordWrap(QLabel* label, bool on)
{
    if (label->wordWrap() == on)
        return;
    label->setWordWrap(on);
    fit(label);
}

void LabelAdapter::setWidth(QLabel* label, int width)
{
    if (label->width() == width)
        return;
    label->resize(width, label->height());
    fit(label);
}

} // namespace searchdata::detail
