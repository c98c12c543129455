#pragma once

#include <QFrame>

namespace searchdata::detail {

/// A surface of the entry control that holds others: a frame whose children stand on its inner
/// area, so that a position of 0, 0 is just inside the border and the scale width and height are
/// the inner size.
class Surface : public QFrame {
public:
    explicit Surface(QWidget* parent = nullptr);

    /// Where the children go.
    QWidget* client() const { return m_client; }
    /// 0 no border, 1 a sunken panel.
    int borderStyle() const { return frameShape() == QFrame::NoFrame ? 0 : 1; }
    void setBorderStyle(int style);
    int scaleWidth() const { return contentsRect().width(); }
    int scaleHeight() const { return contentsRect().height(); }
    /// The thickness of the border, both sides: width less scale width, height less scale height.
    int borderWidth() const { return width() - scaleWidth(); }
    int borderHeight() const { return height() - scaleHeight(); }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeClient();

    QWidget* m_client;
};

} // namespace searchdata::detail
