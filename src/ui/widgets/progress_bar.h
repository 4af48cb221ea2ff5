#pragma once
// A horizontal gauge with its filled share written over it ("%3d%%").

#include <string>

#include "ui/widgets/gauge.h"

namespace sondrel {

class ProgressBar : public Gauge {
public:
    ProgressBar(uint16_t id, const Gorb_Rect& rect, int32_t maximum = 100)
        : Gauge(WidgetKind::ProgressBar, id, rect, maximum) {}

    // The text drawn over the bar: the percentage right-aligned in three places.
    std::string Caption() const;

    void Draw(Painter& painter, const DrawStyle& style) const override;
};

}  // namespace sondrel
