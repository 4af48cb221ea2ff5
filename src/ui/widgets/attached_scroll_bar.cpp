#include "ui/widgets/attached_scroll_bar.h"

#include "ui/painter.h"

namespace sondrel {

void AttachedScrollBar::Fit(const Gorb_Rect& where, int total, int visible, int top, bool enabled) {
    shown_ = total > visible && where.w > 0 && where.h > 0;
    bar_.SetRect(where);
    bar_.SetEnabled(enabled);
    bar_.SetTotal(total, visible);
    bar_.SetValue(top);
}

int AttachedScrollBar::HitTest(Point p) const {
    if (!shown_) return kNoPart;
    const int part = bar_.HitTest(p);
    return part == kNoPart ? kNoPart : kFirstPart + part;
}

void AttachedScrollBar::Press(WidgetContext& context, Point p, int part) {
    held_ = shown_ && OnBar(part);
    if (held_) bar_.Press(context, p, part - kFirstPart);
}

void AttachedScrollBar::Drag(WidgetContext& context, Point p) {
    if (held_) bar_.Drag(context, p);
}

void AttachedScrollBar::Repeat(WidgetContext& context) {
    if (held_) bar_.Repeat(context);
}

void AttachedScrollBar::Release(WidgetContext& context, Point p) {
    if (held_) bar_.Release(context, p, bar_.HitTest(p));
    held_ = false;
}

void AttachedScrollBar::Draw(Painter& painter, const DrawStyle& style, const Gorb_Rect& owner) const {
    if (!shown_) return;
    const Gorb_Rect& r = bar_.Rect();
    Painter::Scope scope(painter, {r.x - owner.x, r.y - owner.y, r.w, r.h});
    bar_.Draw(painter, style);
}

}  // namespace sondrel
