#pragma once
// The value of a range widget (a slider, a gauge) shown as a number beside
// it, read each time it is drawn so it follows a drag at once. It takes
// neither clicks nor the focus.

#include "ui/widgets/decoration.h"

namespace sondrel {

class RangeWidget;

class ValueLabel : public Decoration {
public:
    ValueLabel(uint16_t id, const Gorb_Rect& rect, const RangeWidget& source)
        : Decoration(WidgetKind::TextField, id, rect), source_(source) {}

    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    const RangeWidget& source_;
};

}  // namespace sondrel
