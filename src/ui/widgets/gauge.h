#pragma once
// A gauge: a bar filled in proportion to its value out of its maximum, from
// the left for a horizontal gauge and from the bottom for a vertical one.

#include <cstdint>

#include "ui/widgets/decoration.h"

namespace sondrel {

class Gauge : public Decoration {
public:
    // kind: HGauge or VGauge.
    Gauge(WidgetKind kind, uint16_t id, const Gorb_Rect& rect, int32_t maximum = 100)
        : Decoration(kind, id, rect), maximum_(maximum > 0 ? maximum : 1) {}

    int32_t Value() const override { return value_; }
    int32_t Maximum() const { return maximum_; }
    // Clamped to 0..maximum.
    void SetValue(int32_t value);
    void SetMaximum(int32_t maximum);
    // The filled share in whole percent, rounded down.
    int Percent() const { return static_cast<int>(int64_t{value_} * 100 / maximum_); }

    void Draw(Painter& painter, const DrawStyle& style) const override;

protected:
    bool Vertical() const { return Kind() == WidgetKind::VGauge; }

private:
    int32_t maximum_;
    int32_t value_ = 0;
};

}  // namespace sondrel
