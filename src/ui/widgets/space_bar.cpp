#include "ui/widgets/space_bar.h"

#include <string>

#include "ui/painter.h"

namespace sondrel {

void SpaceBar::Draw(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    if (style.DrawItem(painter, "B" + std::string(SkinTypeName(Kind())), local)) return;
    // A dark line with a light one beside it, through the middle.
    const uint32_t dark = style.Colour(ThemeColour::BevelDark);
    const uint32_t light = style.Colour(ThemeColour::BevelLight);
    if (Kind() == WidgetKind::VSpaceBar) {
        const int x = local.w / 2 - 1;
        painter.VLine(x, 0, local.h, dark);
        painter.VLine(x + 1, 0, local.h, light);
    } else {
        const int y = local.h / 2 - 1;
        painter.HLine(0, y, local.w, dark);
        painter.HLine(0, y + 1, local.w, light);
    }
}

}  // namespace sondrel
