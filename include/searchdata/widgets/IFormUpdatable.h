#pragma once

#include "searchdata/IFormInfo.h"

#include <QList>
#include <optional>

class QWidget;

namespace searchdata {

/// A host window that the library may also move, resize and restyle. Sizes are device-independent
/// pixels; on an empty wrapper getters give empty values and setters do nothing.
class IFormUpdatable : public virtual IFormInfo {
public:
    /// The widgets on the window, in the order of their creation.
    virtual QList<QWidget*> FormControls() const = 0;
    virtual void setHeight(float height) = 0;
    virtual void setLeft(float left) = 0;
    /// A pointer code: 0 the window's own, 11 the hourglass, the rest as the cursor shapes go.
    virtual void setMousePointer(int pointer) = 0;
    /// Moves and sizes a top-level window at once; a missing value keeps the present one. A window
    /// inside another one's area is left where it is.
    virtual void Move(std::optional<float> left, std::optional<float> top = std::nullopt, std::optional<float> width = std::nullopt,
                      std::optional<float> height = std::nullopt) = 0;
    /// Size of the area inside the window's frame.
    virtual float ScaleHeight() const = 0;
    virtual float ScaleWidth() const = 0;
    virtual void setTag(const QVariant& tag) = 0;
    virtual void setTop(float top) = 0;
    virtual void setWidth(float width) = 0;
    /// 0 normal, 1 minimized, 2 maximized.
    virtual void setWindowState(int state) = 0;
    /// 0 brings the window to the front, 1 sends it to the back.
    virtual void ZOrder(int position = 0) = 0;
};

} // namespace searchdata
