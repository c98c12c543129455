#pragma once

#include "searchdata/IFormInfo.h"

#include <QPointer>
#include <QWidget>
#include <memory>

class QMdiSubWindow;

namespace searchdata {

/// A Qt window as the library's interfaces see it. A widget whose parent is a `QMdiSubWindow` is an
/// MDI child: its place and state are those of the sub-window, and its root is the main window.
/// The wrapper follows the widget's life: once the widget is gone, it holds nothing.
class CFormInfo : public virtual IFormInfo {
public:
    explicit CFormInfo(QWidget* form = nullptr);
    ~CFormInfo() override;

    /// The wrapped widget, or null.
    QWidget* form() const { return m_form; }

    QString Caption() const override;
    bool GetEnabled() const override;
    float Height() const override;
    bool IsValid() const override;
    float Left() const override;
    bool MDIChild() const override;
    int MousePointer() const override;
    QString Name() const override;
    const IFormInfo* Root() const override;
    QVariant Tag() const override;
    float TextWidth(const QString& text) const override;
    float Top() const override;
    float Width() const override;
    int WindowState() const override;

protected:
    /// The sub-window that holds an MDI child, or null.
    QMdiSubWindow* subWindow() const;
    /// What stands for the form among its siblings: the sub-window of an MDI child, else the form.
    QWidget* outerWidget() const;
    /// The outer widget's frame, in its parent's coordinates (the screen's for a top-level window).
    QRect outerGeometry() const;
    /// Sets the form's cursor by a pointer code; unknown codes change nothing.
    void applyMousePointer(int pointer);

private:
    QPointer<QWidget> m_form;
    mutable std::unique_ptr<CFormInfo> m_root; // the main window of an MDI child, made on request
};

/// A wrapper of `form`, or null for no form.
std::unique_ptr<CFormInfo> MakeFormInfo(QWidget* form);

} // namespace searchdata
