#pragma once

#include "searchdata/ControlInterfaces.h"

#include <optional>

class QKeyEvent;
class QLineEdit;

namespace searchdata {

/// A `QLineEdit` as the core's text box, so that core rules such as `ValidKeyPress` judge it.
class LineEditTextBox : public ITextBoxControl {
public:
    explicit LineEditTextBox(QLineEdit* edit) : m_edit(edit) {}

    QString Text() const override;
    void SetText(const QString& text) override;
    int MaxLength() const override;
    void SetMaxLength(int length) override;
    int SelStart() const override;
    int SelLength() const override;

private:
    QLineEdit* m_edit;
};

/// The key code under which `ValidKeyPress` judges a key press: 8 backspace, 46 delete, 3 copy,
/// 22 paste, else the character typed. Nothing for keys that do not change the text by themselves
/// (movement, Tab, Enter, shortcuts other than copy and paste).
std::optional<int> keyPressCode(const QKeyEvent& event);

} // namespace searchdata
