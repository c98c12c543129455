#include "CheckBoxAdapter.h"

#include <QCheckBox>

namespace searchdata::detail {

int CheckBoxAdapter::Value() const
{
    return m_box && m_box->isChecked() ? 1 : 0;
}

void CheckBoxAdapter::SetValue(int value)
{
    if (m_box)
        m_box->setChecked(value != 0);
}

QWidget* CheckBoxAdapter::widget() const
{
    return m_box;
}

} // namespace searchdata::detail
