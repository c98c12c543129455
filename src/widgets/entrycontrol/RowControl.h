#pragma once

#include "searchdata/ControlInterfaces.h"

class QWidget;

namespace searchdata::detail {

/// What every adapter of a row control gives beside its control interface: the widget it drives,
/// so that the layout can place the controls that a column refers to.
class RowControl {
public:
    virtual ~RowControl() = default;
    virtual QWidget* widget() const = 0;
};

/// The widget behind a control of a row; null for no control or one that no adapter drives.
inline QWidget* widgetOf(const IControl* control)
{
    const auto* row = dynamic_cast<const RowControl*>(control);
    return row ? row->widget() : nullptr;
}

} // namespace searchdata::detail
