#pragma once
// A spacer: a groove that separates groups of widgets, across its rectangle
// for a horizontal spacer and down it for a vertical one.

#include "ui/widgets/decoration.h"

namespace sondrel {

class SpaceBar : public Decoration {
public:
    // kind: HSpaceBar or VSpaceBar.
    SpaceBar(WidgetKind kind, uint16_t id, const Gorb_Rect& rect) : Decoration(kind, id, rect) {}

    void Draw(Painter& painter, const DrawStyle& style) const override;
};

}  // namespace sondrel
