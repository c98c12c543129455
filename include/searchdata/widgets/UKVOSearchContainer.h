#pragma once

#include "searchdata/IContainer.h"

#include <QPointer>

namespace searchdata {

class UKVOSearch;

/// The geometry interface for a host that simply puts a `UKVOSearch` into a layout: sizes are the
/// control's own, text widths come from the control's font, and `SizeMin` makes the control's
/// suggested minimum its minimum size, so that the layout never squeezes it below that.
class UKVOSearchContainer : public IContainer {
public:
    explicit UKVOSearchContainer(UKVOSearch* control);

    float Height() const override;
    float Left() const override;
    float ScaleWidth() const override;
    void SizeMin() override;
    float TextWidth(const QString& text) const override;
    float Top() const override;
    float Width() const override;

private:
    QPointer<UKVOSearch> m_control;
};

} // namespace searchdata
