#pragma once

#include <QString>
#include <QVariant>

namespace searchdata {

/// What the library may ask of a host window: where it stands, for placing dialogs over it.
/// Sizes are device-independent pixels.
class IFormInfo {
public:
    virtual ~IFormInfo() = default;
    virtual QString Caption() const = 0;
    virtual bool GetEnabled() const = 0;
    virtual float Height() const = 0;
    /// True while the wrapper holds a window.
    virtual bool IsValid() const = 0;
    virtual float Left() const = 0;
    virtual bool MDIChild() const = 0;
    virtual int MousePointer() const = 0;
    virtual QString Name() const = 0;
    /// The window itself, or its parent when it is a child inside another window.
    virtual const IFormInfo* Root() const = 0;
    virtual QVariant Tag() const = 0;
    virtual float TextWidth(const QString& text) const = 0;
    virtual float Top() const = 0;
    virtual float Width() const = 0;
    virtual int WindowState() const = 0;
};

} // namespace searchdata
