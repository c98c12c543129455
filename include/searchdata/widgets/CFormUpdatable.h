#pragma once

#include "searchdata/widgets/CFormInfo.h"
#include "searchdata/widgets/IFormUpdatable.h"

#include <functional>

namespace searchdata {

/// A Qt window that the host's libraries may also move, size and restyle.
class CFormUpdatable : public CFormInfo, public IFormUpdatable {
public:
    using CFormInfo::CFormInfo;

    QList<QWidget*> FormControls() const override;
    void setHeight(float height) override;
    void setLeft(float left) override;
    void setMousePointer(int pointer) override;
    void Move(std::optional<float> left, std::optional<float> top = std::nullopt, std::optional<float> width = std::nullopt,
              std::optional<float> height = std::nullopt) override;
    float ScaleHeight() const override;
    float ScaleWidth() const override;
    void setTag(const QVariant& tag) override;
    void setTop(float top) override;
    void setWidth(float width) override;
    void setWindowState(int state) override;
    void ZOrder(int position = 0) override;

private:
    void setOuterGeometry(const QRect& frame);
    /// Changes the outer frame of the form by `change`.
    void changeFrame(const std::function<void(QRect&)>& change);
};

/// A wrapper of `form`, or null for no form.
std::unique_ptr<CFormUpdatable> MakeFormUpdatable(QWidget* form);

} // namespace searchdata
