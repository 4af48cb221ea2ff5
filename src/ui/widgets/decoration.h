#pragma once
// A widget that only shows something: it takes neither clicks nor the focus,
// so a press on it reaches the window body beneath (and may drag the window).

#include "ui/widget.h"

namespace sondrel {

class Decoration : public Widget {
public:
    int HitTest(Point) const override { return kNoPart; }

protected:
    Decoration(WidgetKind kind, uint16_t id, const Gorb_Rect& rect) : Widget(kind, id, rect) { SetEnabled(false); }
};

}  // namespace sondrel
