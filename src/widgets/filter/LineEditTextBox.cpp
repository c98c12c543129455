#include "filter/LineEditTextBox.h"

#include <QKeyEvent>
#include <QKeySequence>
#include <QLineEdit>

namespace searchdata {

QString LineEditTextBox::Text() const
{
    return m_edit->text();
}

void LineEditTextBox::SetText(const QString& text)
{
    m_edit->setText(text);
}

int LineEditTextBox::MaxLength() const
{
    return m_edit->maxLength();
}

void LineEditTextBox::SetMaxLength(int length)
{
    m_edit->setMaxLength(length);
}

int LineEditTextBox::SelStart() const
{
    return m_edit->hasSelectedText() ? m_edit->selectionStart() : m_edit->cursorPosition();
}

int LineEditTextBox::SelLength() const
{
    return m_edit->hasSelectedText() ? m_edit->selectionLength() : 0;
}

std::optional<int> keyPressCode(const QKeyEvent& event)
{
    if (event.matches(QKeySequence::Paste))
        return 22;
    if (event.matches(QKeySequence::Copy))
        return 3;
    if (event.key() == Qt::Key_Backspace)
        return 8;
    if (event.key() == Qt::Key_Delete)
        return 46;
    if (event.modifiers() & (Qt::ControlModifier | Qt::MetaModifier))
        return std::nullopt;
    const QString text = event.text();
    if (text.isEmpty() || !text.at(0).isPrint())
        return std::nullopt;
    return static_cast<int>(text.toUcs4().value(0));
}

} // namespace searchdata
