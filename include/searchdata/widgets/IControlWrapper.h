#pragma once

#include <QString>
#include <QVariant>

class QObject;

namespace searchdata {

/// A control of any kind, as the host's libraries reach it: members that the control lacks give
/// empty results, and setting them does nothing.
class IControlWrapper {
public:
    virtual ~IControlWrapper() = default;
    virtual QVariant Buttons() const = 0;
    virtual QString Caption() const = 0;
    virtual void setCaption(const QString& caption) = 0;
    virtual QObject* ControlReference() const = 0;
    virtual void setControlReference(QObject* control) = 0;
    virtual QVariant DragIcon() const = 0;
    virtual QVariant ImageList() const = 0;
    /// Position of the control in its control array; empty for a control outside one.
    virtual QVariant Index() const = 0;
    virtual bool IsDbGrid() const = 0;
    virtual bool IsTreeView() const = 0;
    virtual QVariant Tag() const = 0;
    virtual void setTag(const QVariant& tag) = 0;
    virtual bool Visible() const = 0;
    virtual void setVisible(bool visible) = 0;
};

} // namespace searchdata
