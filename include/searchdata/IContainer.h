#pragma once

#include <QString>

namespace searchdata {

/// The host's geometry, as the entry control asks for it. Sizes are device-independent pixels.
class IContainer {
public:
    virtual ~IContainer() = default;
    virtual float Height() const { return 0; }
    virtual float Left() const { return 0; }
    virtual float ScaleWidth() const { return 0; }
    /// Called when the control's minimum size may have changed.
    virtual void SizeMin() {}
    virtual float TextWidth(const QString& text) const { Q_UNUSED(text); return 0; }
    virtual float Top() const { return 0; }
    virtual float Width() const { return 0; }
};

} // namespace searchdata
