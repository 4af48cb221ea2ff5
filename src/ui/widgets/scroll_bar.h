#pragma once
// A horizontal or vertical scroll bar over a total of items of which a
// number are visible at once: its value is the first visible item. The
// arrows at its ends step by one item and keep stepping every tick while held;
// a press on the track beside the grip moves a page (the visible count) toward
// the pointer and keeps paging until the grip reaches it. The grip's length
// shows how much of the total is visible. The wheel scrolls it too.

#include "ui/widgets/range_widget.h"

namespace sondrel {

class ScrollBar : public RangeWidget {
public:
    ScrollBar(bool vertical, uint16_t id, const Gorb_Rect& rect)
        : RangeWidget(vertical ? WidgetKind::VScrollBar : WidgetKind::HScrollBar, vertical, id, rect) {}

    int32_t Total() const { return total_; }
    int32_t Visible() const { return visible_; }
    // The value's range becomes 0 to total - visible.
    void SetTotal(int32_t total, int32_t visible);
    // Items an arrow or a wheel notch moves.
    void SetStep(int32_t step) { step_ = step; }

    void Repeat(WidgetContext& context) override;
    bool Wheel(WidgetContext& context, int delta) override;
    void Draw(Painter& painter, const DrawStyle& style) const override;

protected:
    int TrackStart() const override { return ArrowLength(); }
    int TrackLength() const override { return Length() - 2 * ArrowLength(); }
    int GripLength() const override;
    void Step(int part) override;

private:
    // Square arrows, shrunk when the bar is too short for both.
    int ArrowLength() const;

    int32_t total_ = 1;
    int32_t visible_ = 1;
    int32_t step_ = 1;
};

}  // namespace sondrel
