#pragma once

#include "searchdata/widgets/IControlWrapper.h"

#include <QPointer>

namespace searchdata {

/// A control of any kind, reached by the names of its members at run time through Qt's properties:
/// `Caption` is the control's "text" (or "title" of a group box), `Tag` its "tag", and so on. A
/// control without the member gives an empty result. `Index` is the number that ends the name of a
/// control array's member ("txtValue_3").
class CControlWrapper : public IControlWrapper {
public:
    explicit CControlWrapper(QObject* control = nullptr) : m_control(control) {}

    QVariant Buttons() const override;
    QString Caption() const override;
    void setCaption(const QString& caption) override;
    QObject* ControlReference() const override { return m_control; }
    void setControlReference(QObject* control) override { m_control = control; }
    QVariant DragIcon() const override;
    QVariant ImageList() const override;
    QVariant Index() const override;
    bool IsDbGrid() const override { return false; }
    bool IsTreeView() const override { return false; }
    QVariant Tag() const override;
    void setTag(const QVariant& tag) override;
    bool Visible() const override;
    void setVisible(bool visible) override;

private:
    /// The first of `names` that the control has as a property, or an empty value.
    QVariant member(std::initializer_list<const char*> names) const;
    /// Sets the first of `names` that the control has; nothing when it has none.
    void setMember(std::initializer_list<const char*> names, const QVariant& value);

    QPointer<QObject> m_control;
};

} // namespace searchdata
