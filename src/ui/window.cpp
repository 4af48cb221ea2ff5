#include "ui/window.h"

#include <algorithm>

namespace sondrel {

Gorb_Rect Window::CloseBox() const {
    const int margin = (kTitleBarHeight - kCloseBoxSize) / 2;
    return {rect_.w - margin - kCloseBoxSize, margin, kCloseBoxSize, kCloseBoxSize};
}

Widget* Window::WidgetAt(Point p, int& part) const {
    for (auto it = widgets_.rbegin(); it != widgets_.rend(); ++it) {
        Widget& widget = **it;
        if (widget.Hidden()) continue;
        part = widget.HitTest(p);
        if (part != kNoPart) return &widget;
    }
    part = kNoPart;
    return nullptr;
}

Widget* Window::NextFocusable(bool backwards) const {
    const int count = static_cast<int>(widgets_.size());
    if (count == 0) return nullptr;
    const auto focused = std::find_if(widgets_.begin(), widgets_.end(), [&](const auto& w) { return w.get() == focus_; });
    // Start one step before the first candidate: past either end when nothing has the focus.
    int index = focused != widgets_.end() ? static_cast<int>(focused - widgets_.begin()) : (backwards ? count : -1);
    const int step = backwards ? -1 : 1;
    for (int tried = 0; tried < count; ++tried) {
        index = (index + step + count) % count;
        if (widgets_[index]->Focusable()) return widgets_[index].get();
    }
    return nullptr;
}

}  // namespace sondrel
