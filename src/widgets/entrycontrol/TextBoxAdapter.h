#pragma once

#include "RowControl.h"

#include <QPointer>

class QLineEdit;
class QPlainTextEdit;

namespace searchdata::detail {

/// A text box of a row over a `QLineEdit`, or over a `QPlainTextEdit` for a note, whose length
/// limit is kept here since the widget has none.
class TextBoxAdapter : public ITextBoxControl, public RowControl {
public:
    explicit TextBoxAdapter(QLineEdit* line);
    explicit TextBoxAdapter(QPlainTextEdit* note);

    QString Text() const override;
    void SetText(const QString& text) override;
    /// 0 for no limit.
    int MaxLength() const override;
    void SetMaxLength(int length) override;
    int SelStart() const override;
    int SelLength() const override;

    /// A locked box shows its text and lets it be selected and copied, but not changed.
    bool Locked() const;
    void SetLocked(bool locked);

    QWidget* widget() const override;

private:
    void enforceNoteLimit();

    QPointer<QLineEdit> m_line;
    QPointer<QPlainTextEdit> m_note;
    int m_noteLimit = 0;
};

} // namespace searchdata::detail
