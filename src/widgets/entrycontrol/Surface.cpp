#include "Surface.h"

namespace searchdata::detail {

Surface::Surface(QWidget* parent) : QFrame(parent), m_client(new QWidget(this))
{
    setFrameShape(QFrame::NoFrame);
    placeClient();
}

void Surface::setBorderStyle(int style)
{
    if (style == borderStyle())
        return;
    setFrameStyle(style == 0 ? QFrame::NoFrame : QFrame::StyledPanel | QFrame::Sunken);
    placeClient();
}

void Surface::resizeEvent(QResizeEvent* event)
{
    QFrame::resizeEvent(event);
    placeClient();
}

void Surface::placeClient()
{
    m_client->setGeometry(contentsRect());
}

} // namespace searchdata::detail
