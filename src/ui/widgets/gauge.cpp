#include "ui/widgets/gauge.h"

#include <algorithm>
#include <string>

#include "ui/painter.h"

namespace sondrel {

void Gauge::SetValue(int32_t value) { value_ = std::clamp(value, 0, maximum_); }

void Gauge::SetMaximum(int32_t maximum) {
    maximum_ = std::max(maximum, 1);
    value_ = std::min(value_, maximum_);
}

void Gauge::Draw(Painter& painter, const DrawStyle& style) const {
    const std::string type(SkinTypeName(Kind()));
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    if (!style.DrawItem(painter, "B" + type, local)) {
        painter.Fill(local, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(local, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      BevelStyle::Sunken);
    }
    // The bar fills the inside, within a 2-pixel border.
    const Gorb_Rect inside{2, 2, local.w - 4, local.h - 4};
    if (inside.w <= 0 || inside.h <= 0 || value_ == 0) return;
    Gorb_Rect bar = inside;
    if (Vertical()) {
        bar.h = static_cast<int>(int64_t{inside.h} * value_ / maximum_);
        bar.y = inside.y + inside.h - bar.h;
    } else {
        bar.w = static_cast<int>(int64_t{inside.w} * value_ / maximum_);
    }
    if (bar.w <= 0 || bar.h <= 0) return;
    const std::string barKey = (Vertical() ? "V" : "H") + type + "_BAR";
    if (!style.DrawItem(painter, barKey, bar)) painter.Fill(bar, style.Colour(ThemeColour::Selection));
}

}  // namespace sondrel
