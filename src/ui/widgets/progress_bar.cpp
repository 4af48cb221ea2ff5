#include "ui/widgets/progress_bar.h"

#include <cstdio>

#include "ui/painter.h"

namespace sondrel {

std::string ProgressBar::Caption() const {
    char text[16];
    std::snprintf(text, sizeof text, "%3d%%", Percent());
    return text;
}

void ProgressBar::Draw(Painter& painter, const DrawStyle& style) const {
    Gauge::Draw(painter, style);
    if (style.font == nullptr) return;
    painter.TextIn(*style.font, {0, 0, Rect().w, Rect().h}, Caption(), style.Colour(ThemeColour::Text),
                   TextAlign::Centre);
}

}  // namespace sondrel
