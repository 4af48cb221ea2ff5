// The toolkit's handling of input events: keys, pointer moves, the wheel and
// the mouse buttons.

#include <algorithm>

#include "ui/entry_kinds.h"
#include "ui/toolkit.h"

namespace sondrel {

void Toolkit::Dispatch(const Gorb_Event& event) {
    switch (event.type) {
        case kGorbKeyDown: KeyDown(event); break;
        case kGorbKeyUp: KeyUp(event); break;
        case kGorbMouseMove: MouseMove({event.x, event.y}); break;
        case kGorbWheelUp: Wheel(event.delta != 0 ? event.delta : 1); break;
        case kGorbWheelDown: Wheel(event.delta != 0 ? event.delta : -1); break;
        case kGorbButton1Down:
            buttons_ |= kGorbMouseFirst;
            MouseMove({event.x, event.y});
            Press();
            break;
        case kGorbButton1Up:
            buttons_ &= ~kGorbMouseFirst;
            MouseMove({event.x, event.y});
            Release();
            break;
        case kGorbButton2Down: buttons_ |= kGorbMouseSecond; break;
        case kGorbButton2Up: buttons_ &= ~kGorbMouseSecond; break;
        case kGorbButton3Down:
            buttons_ |= kGorbMouseThird;
            MouseMove({event.x, event.y});
            ThirdButtonDown();
            break;
        case kGorbButton3Up: buttons_ &= ~kGorbMouseThird; break;
        case kGorbCloseRequest: queue_.PushEntry(kEntryCloseRequest, 0); break;
        default: break;
    }
}

void Toolkit::KeyDown(const Gorb_Event& event) {
    bool taken = false;
    if (popup_ != nullptr) {
        WidgetContext context = Context();
        taken = popup_->KeyPress(context, event);
        TakePopup(context, popupWindow_);
    }
    if (taken) {
        // The open popup took it.
    } else if (menu_ != nullptr && menu_->KeyPress(event.key, queue_)) {
        taken = true;
    } else if (event.key == kKeyTab) {
        if (current_ != nullptr && current_->Active()) {
            Widget* next = current_->NextFocusable((modifiers_ & kGorbShift) != 0);
            if (next != nullptr) Focus(current_, next, true);
            taken = next != nullptr;
        }
    } else if (current_ != nullptr && current_->Active() && current_->Focus() != nullptr &&
               mode_ == MouseMode::Idle) {
        Widget* focused = current_->Focus();
        WidgetContext context = Context();
        taken = focused->KeyPress(context, event);
        mode_ = context.mouseMode;
        TakePopup(context, current_);
        if (mode_ == MouseMode::SpaceHeld) held_ = focused;
    }
    queue_.PushKey(event.key, event.character, static_cast<uint16_t>(modifiers_), event.repeat, taken);
}

void Toolkit::KeyUp(const Gorb_Event& event) {
    bool taken = false;
    if (event.key == kKeySpace && mode_ == MouseMode::SpaceHeld) {
        if (held_ != nullptr) {
            WidgetContext context = Context();
            held_->Release(context, {held_->Rect().x, held_->Rect().y}, 0);
        }
        held_ = nullptr;
        mode_ = MouseMode::Idle;
        taken = true;
    }
    queue_.PushKeyUp(event.key, taken);
}

void Toolkit::MouseMove(Point to) {
    const int dx = to.x - mouse_.x;
    const int dy = to.y - mouse_.y;
    mouse_ = to;
    if (mode_ == MouseMode::DraggingWindow && current_ != nullptr && (dx != 0 || dy != 0)) {
        // Keep the title bar on the screen so the window can always be taken back.
        const Gorb_Rect& r = current_->Rect();
        const Gorb_Rect screen = ScreenRect();
        const int x = std::clamp(r.x + dx, kTitleBarHeight - r.w, screen.w - kTitleBarHeight);
        const int y = std::clamp(r.y + dy, 0, screen.h - kTitleBarHeight);
        current_->MoveBy(x - r.x, y - r.y);
    } else if (mode_ == MouseMode::WindowPartHeld && current_ != nullptr) {
        DragWindowPart();
    } else if (mode_ == MouseMode::WidgetHeld && held_ != nullptr) {
        WidgetContext context = Context();
        held_->Drag(context, held_->Owner()->ToLocal(to));
        mode_ = context.mouseMode;
    } else if (popup_ != nullptr) {
        popup_->Follow(to);
    } else if ((mode_ == MouseMode::InMenu || mode_ == MouseMode::Idle) && menu_ != nullptr) {
        // A menu opened by a click follows the pointer with no button down too.
        menu_->Follow(to);
    }
    UpdateHover();
}

void Toolkit::Wheel(int delta) {
    for (auto it = stack_.rbegin(); it != stack_.rend(); ++it) {
        Window* window = *it;
        if (!window->Active() || !window->Contains(mouse_)) continue;
        int part = kNoPart;
        Widget* widget = window->WidgetAt(window->ToLocal(mouse_), part);
        if (widget == nullptr || !widget->Enabled()) continue;
        WidgetContext context = Context();
        if (widget->Wheel(context, delta)) return;
    }
    queue_.PushEntry(delta < 0 ? kEntryWheelDown : kEntryWheelUp, static_cast<uint32_t>(delta));
}

void Toolkit::Press() {
    if (mode_ != MouseMode::Idle) return;
    if (popup_ != nullptr) {
        // A press off the open popup only closes it.
        if (!popup_->Contains(mouse_)) return ClosePopup();
        WidgetContext context = Context();
        popup_->Press(context, mouse_);
        TakePopup(context, popupWindow_);
        mode_ = popup_ != nullptr ? MouseMode::InMenu : MouseMode::Idle;
        return;
    }
    if (hover_.kind == HoverKind::Menu && menu_ != nullptr) {
        menu_->Press(mouse_);
        mode_ = MouseMode::InMenu;
        return;
    }
    // A press anywhere off the menus closes them without choosing.
    if (menu_ != nullptr) menu_->Close();
    Window* window = ActiveWindowAtPointer();
    if (window == nullptr) return;
    if (window != current_) Raise(window);
    const Point local = window->ToLocal(mouse_);
    if (const WindowPart framePart = window->PartAt(local); framePart != WindowPart::None) {
        mode_ = MouseMode::WindowPartHeld;
        heldPart_ = framePart;
        heldPartDown_ = true;
        gripFrom_ = mouse_;
        sizeFrom_ = window->Rect();
        return;
    }
    int part = kNoPart;
    Widget* widget = window->WidgetAt(local, part);
    if (widget != nullptr) {
        if (!widget->Enabled()) return;
        Focus(window, widget, false);
        WidgetContext context = Context();
        widget->Press(context, local, part);
        mode_ = context.mouseMode;
        TakePopup(context, window);
        if (mode_ == MouseMode::WidgetHeld) held_ = widget;
    } else if (window->Draggable()) {
        mode_ = MouseMode::DraggingWindow;
    }
}

void Toolkit::Release() {
    if (mode_ == MouseMode::InMenu && popup_ != nullptr) {
        WidgetContext context = Context();
        popup_->Release(context, mouse_);
        TakePopup(context, popupWindow_);
    } else if (mode_ == MouseMode::InMenu && menu_ != nullptr) {
        menu_->Choose(mouse_, queue_);
    } else if (mode_ == MouseMode::WindowPartHeld && current_ != nullptr) {
        ReleaseWindowPart();
    } else if ((mode_ == MouseMode::WidgetHeld || mode_ == MouseMode::SpaceHeld) && held_ != nullptr) {
        // A button held with Space is let go without a click when the mouse button goes up.
        const Point local = held_->Owner()->ToLocal(mouse_);
        const int part = mode_ == MouseMode::WidgetHeld ? held_->HitTest(local) : kNoPart;
        WidgetContext context = Context();
        held_->Release(context, local, part);
        if (mode_ == MouseMode::WidgetHeld && held_->CommitsOnRelease()) {
            held_->SetFlags(held_->Flags() & ~kWidgetChangedWhileHeld);
            queue_.PushEntry(kEntryValue, held_->Id(), static_cast<uint32_t>(held_->Value()));
        }
    }
    held_ = nullptr;
    mode_ = MouseMode::Idle;
}

void Toolkit::ThirdButtonDown() {
    Window* window = ActiveWindowAtPointer();
    if (window == nullptr) return;
    Raise(window);
    int part = kNoPart;
    Widget* widget = window->WidgetAt(window->ToLocal(mouse_), part);
    if (widget != nullptr && widget->Focusable()) Focus(window, widget, false);
}

void Toolkit::DragWindowPart() {
    if (heldPart_ != WindowPart::Resize) {
        heldPartDown_ = current_->PartAt(current_->ToLocal(mouse_)) == heldPart_;
        return;
    }
    // The grip follows the pointer; the window keeps a minimum size and stays on the screen.
    const Gorb_Rect screen = ScreenRect();
    const Gorb_Rect& r = current_->Rect();
    const int w = std::clamp(sizeFrom_.w + mouse_.x - gripFrom_.x, kWindowMinWidth,
                             std::max(kWindowMinWidth, screen.w - r.x));
    const int h = std::clamp(sizeFrom_.h + mouse_.y - gripFrom_.y, kWindowMinHeight,
                             std::max(kWindowMinHeight, screen.h - r.y));
    current_->SetRect({r.x, r.y, w, h});
}

void Toolkit::ReleaseWindowPart() {
    if (current_->PartAt(current_->ToLocal(mouse_)) != heldPart_) return;
    if (heldPart_ == WindowPart::Close) {
        queue_.PushEntry(kEntryWindowClose, current_->Id(), 0);
    } else if (heldPart_ == WindowPart::Maximize) {
        const int top = menu_ != nullptr ? menu_->BarHeight() : 0;
        const Gorb_Rect screen = ScreenRect();
        current_->ToggleMaximized({0, top, screen.w, screen.h - top});
    }
}

Gorb_Rect Toolkit::ScreenRect() const {
    if (screen_ == nullptr) return {0, 0, kScreenWidth, kScreenHeight};
    return {0, 0, screen_->Width(), screen_->Height()};
}

Window* Toolkit::ActiveWindowAtPointer() const {
    for (auto it = stack_.rbegin(); it != stack_.rend(); ++it)
        if ((*it)->Active() && (*it)->Contains(mouse_)) return *it;
    return nullptr;
}

}  // namespace sondrel
