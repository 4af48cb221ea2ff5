#include "ui/widgets/value_label.h"

#include <string>

#include "ui/painter.h"
#include "ui/widgets/range_widget.h"

namespace sondrel {

void ValueLabel::Draw(Painter& painter, const DrawStyle& style) const {
    if (style.font == nullptr) return;
    painter.TextIn(*style.font, {0, 0, Rect().w, Rect().h}, std::to_string(source_.Value()),
                   style.Colour(ThemeColour::Text), TextAlign::Centre, TextFit::Ellipsis);
}

}  // namespace sondrel
