#include "ui/widgets/frame.h"

#include <algorithm>

#include "ui/painter.h"

namespace sondrel {

void Frame::Draw(Painter& painter, const DrawStyle& style) const {
    const bool labelled = style.font != nullptr && !label_.empty();
    // A label sits on the top edge, so the edge runs through its middle.
    const int top = labelled ? style.font->Height() / 2 : 0;
    const Gorb_Rect edge{0, top, Rect().w, Rect().h - top};
    if (!style.DrawItem(painter, "BGT_FRAME", edge)) {
        painter.Bevel(edge, style.Colour(ThemeColour::BevelDark), style.Colour(ThemeColour::BevelLight));
        painter.Bevel({1, top + 1, edge.w - 2, edge.h - 2}, style.Colour(ThemeColour::BevelLight),
                      style.Colour(ThemeColour::BevelDark));
    }
    if (!labelled) return;
    constexpr int kIndent = 8;
    const int width = Painter::TextWidth(*style.font, label_) + 4;
    const Gorb_Rect plate{kIndent, 0, std::min(width, Rect().w - 2 * kIndent), style.font->Height()};
    painter.Fill(plate, style.Colour(ThemeColour::WindowBody));
    painter.TextIn(*style.font, plate, label_, style.Colour(ThemeColour::Text), TextAlign::Centre, TextFit::Ellipsis);
}

}  // namespace sondrel
