#pragma once

#include "RowControl.h"

#include <QPointer>

class QLabel;

namespace searchdata::detail {

/// A label of a row: the caption of a row, or the read-only form of a boolean. A label that sizes
/// itself (`setAutoSize`) takes the width of its caption on one line, or, when it wraps, keeps its
/// width (widened to its longest word, which cannot wrap) and takes the height of its lines.
class LabelAdapter : public ILabelControl, public RowControl {
public:
    explicit LabelAdapter(QLabel* label) : m_label(label) {}

    QString Caption() const override;
    void SetCaption(const QString& caption) override;

    QWidget* widget() const override;

    /// Sizes `label` to its caption when it sizes itself.
    static void fit(QLabel* label);
    static bool autoSize(const QLabel* label);
    static void setAutoSize(QLabel* label, bool on);
    /// Turns wrapping on or off, and sizes the label again.
    static void setWordWrap(QLabel* label, bool on);
    /// Gives the label a width, and a self-sizing one the height of its lines at that width.
    static void setWidth(QLabel* label, int width);

private:
    QPointer<QLabel> m_label;
};

} // namespace searchdata::detail
