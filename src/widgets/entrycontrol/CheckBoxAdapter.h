#pragma once

#include "RowControl.h"

#include <QPointer>

class QCheckBox;

namespace searchdata::detail {

/// The check box of a boolean row being edited.
class CheckBoxAdapter : public ICheckBoxControl, public RowControl {
public:
    explicit CheckBoxAdapter(QCheckBox* box) : m_box(box) {}

    int Value() const override;
    void SetValue(int value) override;

    QWidget* widget() const override;

private:
    QPointer<QCheckBox> m_box;
};

} // namespace searchdata::detail
