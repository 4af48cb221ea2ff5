#include "ui/window.h"

#include <algorithm>

namespace sondrel {

void Window::SetRect(const Gorb_Rect& rect) {
    const bool resized = rect.w != rect_.w || rect.h != rect_.h;
    rect_ = rect;
    if (resized && resized_) resized_(*this);
}

void Window::ToggleMaximized(const Gorb_Rect& area) {
    if (maximized_) {
        maximized_ = false;
        SetRect(restored_);
        return;
    }
    restored_ = rect_;
    maximized_ = true;
    SetRect(area);
}

bool Window::HasPart(WindowPart part) const {
    switch (part) {
        case WindowPart::Close: return (flags_ & kWindowNoCloseBox) == 0;
        case WindowPart::Maximize: return (flags_ & kWindowMaximizable) != 0;
        case WindowPart::Resize: return (flags_ & kWindowResizable) != 0;
        case WindowPart::None: break;
    }
    return false;
}

Gorb_Rect Window::PartRect(WindowPart part) const {
    if (!HasPart(part)) return {};
    if (part == WindowPart::Resize)
        return {rect_.w - kResizeGripSize, rect_.h - kResizeGripSize, kResizeGripSize, kResizeGripSize};
    // The title bar boxes sit at its right end, the maximise box left of the close box.
    const int margin = (kTitleBarHeight - kCloseBoxSize) / 2;
    int right = rect_.w - margin;
    if (part == WindowPart::Maximize && HasPart(WindowPart::Close)) right -= kCloseBoxSize + margin;
    return {right - kCloseBoxSize, margin, kCloseBoxSize, kCloseBoxSize};
}

WindowPart Window::PartAt(Point p) const {
    for (WindowPart part : {WindowPart::Close, WindowPart::Maximize, WindowPart::Resize})
        if (HasPart(part) && sondrel::Contains(PartRect(part), p)) return part;
    return WindowPart::None;
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
