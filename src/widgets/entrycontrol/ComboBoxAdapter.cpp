#include "ComboBoxAdapter.h"

#include <QComboBox>
#include <QLineEdit>

namespace searchdata::detail {

ComboBoxAdapter::ComboBoxAdapter(QComboBox* combo) : m_combo(combo)
{
    QObject::connect(combo, &QComboBox::activated, combo, [this](int) {
        if (m_locked && m_combo->currentIndex() != m_lockedIndex)
            m_combo->setCurrentIndex(m_lockedIndex);
    });
}

QString ComboBoxAdapter::Text() const
{
    return m_combo ? m_combo->currentText() : QString();
}

void ComboBoxAdapter::SetText(const QString& text)
{
    if (!m_combo)
        return;
    if (m_combo->isEditable()) {
        m_combo->setCurrentIndex(-1);
        m_combo->setEditText(text);
    } else {
        m_combo->setCurrentIndex(m_combo->findText(text, Qt::MatchFixedString | Qt::MatchCaseSensitive));
    }
    m_lockedIndex = m_combo->currentIndex();
}

QString ComboBoxAdapter::List(int index) const
{
    return m_combo ? m_combo->itemText(index) : QString();
}

int ComboBoxAdapter::ListCount() const
{
    return m_combo ? m_combo->count() : 0;
}

int ComboBoxAdapter::ListIndex() const
{
    if (!m_combo)
        return -1;
    const int index = m_combo->currentIndex();
    // An editable combo keeps its current entry while the user types something else over it.
    if (index >= 0 && m_combo->isEditable() && m_combo->lineEdit()->text() != m_combo->itemText(index))
        return -1;
    return index;
}

void ComboBoxAdapter::SetListIndex(int index)
{
    if (!m_combo)
        return;
    m_combo->setCurrentIndex(index);
    m_lockedIndex = m_combo->currentIndex();
}

void ComboBoxAdapter::Clear()
{
    if (m_combo)
        m_combo->clear();
    m_newIndex = -1;
    m_lockedIndex = -1;
}

void ComboBoxAdapter::AddItem(const QString& text)
{
    if (!m_combo)
        return;
    const bool wasEmpty = m_combo->count() == 0;
    m_combo->addItem(text);
    m_newIndex = m_combo->count() - 1;
    // QComboBox selects the first entry added to an empty list; a list box selects nothing until told.
    if (wasEmpty)
        m_combo->setCurrentIndex(-1);
}

void ComboBoxAdapter::RemoveItem(int index)
{
    if (m_combo)
        m_combo->removeItem(index);
}

void ComboBoxAdapter::SetFocus()
{
    if (m_combo)
        m_combo->setFocus(Qt::OtherFocusReason);
}

int ComboBoxAdapter::SelStart() const
{
    if (!m_combo || !m_combo->lineEdit())
        return IComboBoxControl::SelStart();
    const QLineEdit* edit = m_combo->lineEdit();
    return edit->hasSelectedText() ? edit->selectionStart() : edit->cursorPosition();
}

int ComboBoxAdapter::SelLength() const
{
    if (!m_combo || !m_combo->lineEdit())
        return 0;
    return int(m_combo->lineEdit()->selectedText().size());
}

void ComboBoxAdapter::SetLocked(bool locked)
{
    m_locked = locked;
    m_lockedIndex = m_combo ? m_combo->currentIndex() : -1;
    if (m_combo && m_combo->lineEdit())
        m_combo->lineEdit()->setReadOnly(locked);
}

QWidget* ComboBoxAdapter::widget() const
{
    return m_combo;
}

} // namespace searchdata::detail
