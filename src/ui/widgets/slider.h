#pragma once
// A horizontal or vertical slider: a grip of fixed length along a track,
// placed by its value within the range. Dragging the grip sets the value; a
// press on the track beside it moves the value one step toward the pointer.

#include <algorithm>

#include "ui/widgets/range_widget.h"

namespace sondrel {

class Slider : public RangeWidget {
public:
    static constexpr int kGripLength = 10;

    Slider(bool vertical, uint16_t id, const Gorb_Rect& rect)
        : RangeWidget(vertical ? WidgetKind::VSlider : WidgetKind::HSlider, vertical, id, rect) {}

    // What a press on the track moves the value by.
    void SetStep(int32_t step) { step_ = step; }

    void Draw(Painter& painter, const DrawStyle& style) const override;

protected:
    int GripLength() const override { return std::min(kGripLength, Length()); }
    void Step(int part) override;

private:
    int32_t step_ = 1;
};

}  // namespace sondrel
