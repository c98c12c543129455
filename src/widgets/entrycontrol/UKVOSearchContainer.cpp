#include "searchdata/widgets/UKVOSearchContainer.h"

#include "searchdata/widgets/UKVOSearch.h"

#include <QFontMetricsF>
#include <cmath>

namespace searchdata {

UKVOSearchContainer::UKVOSearchContainer(UKVOSearch* control) : m_control(control) {}

float UKVOSearchContainer::Height() const
{
    return m_control ? float(m_control->height()) : 0;
}

float UKVOSearchContainer::Left() const
{
    return m_control ? float(m_control->x()) : 0;
}

float UKVOSearchContainer::ScaleWidth() const
{
    return m_control ? float(m_control->width()) : 0;
}

void UKVOSearchContainer::SizeMin()
{
    if (m_control)
        m_control->setMinimumSize(int(std::ceil(m_control->WidthMin())), int(std::ceil(m_control->HeightMin())));
}

float UKVOSearchContainer::TextWidth(const QString& text) const
{
    return m_control ? float(QFontMetricsF(m_control->font()).horizontalAdvance(text)) : 0;
}

float UKVOSearchContainer::Top() const
{
    return m_control ? float(m_control->y()) : 0;
}

float UKVOSearchContainer::Width() const
{
    return m_control ? float(m_control->width()) : 0;
}

} // namespace searchdata
