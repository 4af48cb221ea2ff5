#pragma once
// One of the toolkit's window records: a rectangle on the screen with a
// title bar, the widgets inside it (owned here, later ones on top), the
// focused widget and the active flag that makes it clickable.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/gorb.h"
#include "ui/widget.h"

namespace sondrel {

// Window flag bits 3, 4 and 7: any of them keeps the window from being
// dragged by its body (the main screen, fixed panels, requesters).
constexpr uint32_t kWindowNotDraggable = (1u << 3) | (1u << 4) | (1u << 7);

constexpr int kTitleBarHeight = 18;
constexpr int kCloseBoxSize = 14;

class Window {
public:
    Window(uint16_t id, const Gorb_Rect& rect, uint32_t flags, std::string title)
        : id_(id), rect_(rect), flags_(flags), title_(std::move(title)) {}
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    uint16_t Id() const { return id_; }
    // Screen coordinates; widgets are placed relative to its top left corner.
    const Gorb_Rect& Rect() const { return rect_; }
    void MoveBy(int dx, int dy) {
        rect_.x += dx;
        rect_.y += dy;
    }
    uint32_t Flags() const { return flags_; }
    bool Draggable() const { return (flags_ & kWindowNotDraggable) == 0; }
    const std::string& Title() const { return title_; }
    // The close box in window coordinates.
    Gorb_Rect CloseBox() const;

    bool Active() const { return active_; }
    void SetActive(bool on) { active_ = on; }
    // The windows this one took the active flag from when it opened.
    std::vector<Window*>& TookActiveFrom() { return tookActiveFrom_; }

    Widget* Focus() const { return focus_; }
    void SetFocus(Widget* widget) { focus_ = widget; }

    // Adds a widget on top of the others and returns it.
    template <class W>
    W& Add(std::unique_ptr<W> widget) {
        W& added = *widget;
        added.SetOwner(this);
        widgets_.push_back(std::move(widget));
        return added;
    }
    template <class W, class... Args>
    W& Emplace(Args&&... args) {
        return Add(std::make_unique<W>(std::forward<Args>(args)...));
    }
    const std::vector<std::unique_ptr<Widget>>& Widgets() const { return widgets_; }

    bool Contains(Point screen) const { return sondrel::Contains(rect_, screen); }
    Point ToLocal(Point screen) const { return {screen.x - rect_.x, screen.y - rect_.y}; }
    // The topmost visible widget at p (window coordinates) and its part;
    // null (part kNoPart) when none is there.
    Widget* WidgetAt(Point p, int& part) const;
    // The next focusable widget after the focused one in list order (before
    // it with backwards), wrapping around; the first (last) focusable one
    // when nothing has the focus; null when no widget can take the focus.
    Widget* NextFocusable(bool backwards) const;

private:
    uint16_t id_;
    Gorb_Rect rect_;
    uint32_t flags_;
    std::string title_;
    bool active_ = true;
    Widget* focus_ = nullptr;
    std::vector<std::unique_ptr<Widget>> widgets_;
    std::vector<Window*> tookActiveFrom_;
};

}  // namespace sondrel
