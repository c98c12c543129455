#include "ButtonAdapter.h"

#include <QPushButton>

namespace searchdata::detail {

ButtonAdapter::ButtonAdapter(QPushButton* button, QPointer<QPushButton>* defaultSlot) : m_button(button), m_defaultSlot(defaultSlot)
{
    // Enter goes to the button that the control names, not to whichever has the focus.
    button->setAutoDefault(false);
}

bool ButtonAdapter::Enabled() const
{
    return m_button && !m_button->testAttribute(Qt::WA_ForceDisabled);
}

void ButtonAdapter::SetEnabled(bool enabled)
{
    if (m_button)
        m_button->setEnabled(enabled);
}

bool ButtonAdapter::Default() const
{
    return m_button && m_button->isDefault();
}

void ButtonAdapter::SetDefault(bool isDefault)
{
    if (!m_button)
        return;
    QPointer<QPushButton>& current = *m_defaultSlot;
    if (isDefault) {
        if (current && current != m_button)
            current->setDefault(false);
        current = m_button;
    } else if (current == m_button) {
        current = nullptr;
    }
    m_button->setDefault(isDefault);
}

QWidget* ButtonAdapter::widget() const
{
    return m_button;
}

} // namespace searchdata::detail
