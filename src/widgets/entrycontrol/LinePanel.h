#pragma once

#include <QFrame>

namespace searchdata::detail {

/// A member of the entry control's `picLine` array: a rule while it is as thin as its border, or a
/// panel that holds one text, painted in the middle.
class LinePanel : public QFrame {
public:
    explicit LinePanel(QWidget* parent = nullptr);

    /// Height less the inner height: the height of a rule.
    int borderThickness() const { return height() - contentsRect().height(); }
    QString text() const { return m_text; }
    void setText(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
};

} // namespace searchdata::detail
