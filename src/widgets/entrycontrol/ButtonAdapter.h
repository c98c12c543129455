#pragma once

#include "RowControl.h"

#include <QPointer>

class QPushButton;

namespace searchdata::detail {

/// A push button of the entry control. Of all the buttons that share one `defaultSlot` at most one
/// is the default, the one that Enter presses: making a button the default takes it from the other.
class ButtonAdapter : public IButtonControl, public RowControl {
public:
    ButtonAdapter(QPushButton* button, QPointer<QPushButton>* defaultSlot);

    /// The button's own setting, whatever the state of the widgets around it.
    bool Enabled() const override;
    void SetEnabled(bool enabled) override;
    bool Default() const override;
    void SetDefault(bool isDefault) override;

    QWidget* widget() const override;

private:
    QPointer<QPushButton> m_button;
    QPointer<QPushButton>* m_defaultSlot;
};

} // namespace searchdata::detail
