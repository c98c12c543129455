#include "TextBoxAdapter.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextCursor>

namespace searchdata::detail {

namespace {

// QLineEdit's own default, which stands for "no limit".
constexpr int kLineEditNoLimit = 32767;

} // namespace

TextBoxAdapter::TextBoxAdapter(QLineEdit* line) : m_line(line) {}

TextBoxAdapter::TextBoxAdapter(QPlainTextEdit* note) : m_note(note)
{
    QObject::connect(note, &QPlainTextEdit::textChanged, note, [this] { enforceNoteLimit(); });
}

QString TextBoxAdapter::Text() const
{
    if (m_line)
        return m_line->text();
    return m_note ? m_note->toPlainText() : QString();
}

void TextBoxAdapter::SetText(const QString& text)
{
    // Like any text box, the same text again is no change and raises no change event.
    if (text == Text())
        return;
    if (m_line)
        m_line->setText(text);
    else if (m_note)
        m_note->setPlainText(text);
}

int TextBoxAdapter::MaxLength() const
{
    if (m_line)
        return m_line->maxLength() == kLineEditNoLimit ? 0 : m_line->maxLength();
    return m_noteLimit;
}

void TextBoxAdapter::SetMaxLength(int length)
{
    if (m_line) {
        m_line->setMaxLength(length > 0 ? length : kLineEditNoLimit);
    } else {
        m_noteLimit = std::max(length, 0);
        enforceNoteLimit();
    }
}

void TextBoxAdapter::enforceNoteLimit()
{
    if (!m_note || m_noteLimit <= 0)
        return;
    const QString text = m_note->toPlainText();
    if (text.size() <= m_noteLimit)
        return;
    // Cut what a paste or a typed key brought beyond the limit, leaving the caret where it was.
    QTextCursor cursor = m_note->textCursor();
    const int position = std::min<int>(cursor.position(), m_noteLimit);
    m_note->setPlainText(text.left(m_noteLimit));
    cursor = m_note->textCursor();
    cursor.setPosition(position);
    m_note->setTextCursor(cursor);
}

int TextBoxAdapter::SelStart() const
{
    if (m_line)
        return m_line->hasSelectedText() ? m_line->selectionStart() : m_line->cursorPosition();
    return m_note ? m_note->textCursor().selectionStart() : 0;
}

int TextBoxAdapter::SelLength() const
{
    if (m_line)
        return m_line->hasSelectedText() ? int(m_line->selectedText().size()) : 0;
    if (!m_note)
        return 0;
    const QTextCursor cursor = m_note->textCursor();
    return cursor.selectionEnd() - cursor.selectionStart();
}

bool TextBoxAdapter::Locked() const
{
    if (m_line)
        return m_line->isReadOnly();
    return m_note && m_note->isReadOnly();
}

void TextBoxAdapter::SetLocked(bool locked)
{
    if (m_line)
        m_line->setReadOnly(locked);
    else if (m_note)
        m_note->setReadOnly(locked);
}

QWidget* TextBoxAdapter::widget() const
{
    if (m_line)
        return m_line;
    return m_note;
}

} // namespace searchdata::detail
