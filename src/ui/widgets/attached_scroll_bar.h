#pragma once
// A vertical scroll bar that belongs to a widget showing lines (a list, a
// text field): it sits inside the widget's right edge while there are more
// lines than fit, and the widget passes it the presses, drags, ticks and
// releases on its parts. It is a scroll bar in all but its place in the
// window, so it looks and behaves like one; its value is the top line.

#include "ui/widgets/scroll_bar.h"

namespace sondrel {

class AttachedScrollBar {
public:
    static constexpr int kWidth = 14;
    // The owner reports the bar's parts as this plus the scroll bar's part.
    static constexpr int kFirstPart = 100;

    // Places the bar over where (window coordinates) for total lines of which
    // visible fit, top first; it shows only when total > visible.
    void Fit(const Gorb_Rect& where, int total, int visible, int top, bool enabled);
    bool Shown() const { return shown_; }
    // The room the bar takes from the owner's width.
    int Width() const { return shown_ ? kWidth : 0; }
    bool Held() const { return held_; }
    int Top() const { return bar_.Value(); }

    // The owner's part for p on the bar, else kNoPart.
    int HitTest(Point p) const;
    static bool OnBar(int part) { return part >= kFirstPart; }
    // These follow the owner's handlers; afterwards Top() is the line to show first.
    void Press(WidgetContext& context, Point p, int part);
    void Drag(WidgetContext& context, Point p);
    void Repeat(WidgetContext& context);
    void Release(WidgetContext& context, Point p);
    // With the painter's origin at the owner's top left corner.
    void Draw(Painter& painter, const DrawStyle& style, const Gorb_Rect& owner) const;

private:
    static constexpr Gorb_Rect kUnplaced{0, 0, kWidth, kWidth};
    ScrollBar bar_{true, 0, kUnplaced};
    bool shown_ = false;
    bool held_ = false;
};

}  // namespace sondrel
