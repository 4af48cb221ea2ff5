#pragma once
// One of the toolkit's window records: a rectangle on the screen with a
// title bar, the widgets inside it (owned here, later ones on top), the
// focused widget and the active flag that makes it clickable.

#include <cstdint>
#include <functional>
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

// Window flag bits for the parts of the frame: the main screen has no close
// box; maximisable windows get a maximise box beside it and resizable ones a
// grip in the bottom right corner.
constexpr uint32_t kWindowNoCloseBox = 1u << 8;
constexpr uint32_t kWindowMaximizable = 1u << 9;
constexpr uint32_t kWindowResizable = 1u << 10;

constexpr int kTitleBarHeight = 18;
constexpr int kCloseBoxSize = 14;
constexpr int kResizeGripSize = 12;
// The smallest size a window can be dragged to with its grip.
constexpr int kWindowMinWidth = 120;
constexpr int kWindowMinHeight = 60;

// The parts of a window's frame that act by themselves, not through widgets.
enum class WindowPart : uint8_t { None, Close, Maximize, Resize };

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
    // Takes a new rectangle; a change of size calls the resized hook.
    void SetRect(const Gorb_Rect& rect);
    // Called after the window changed size, so its owner can lay it out again.
    void SetResizedHook(std::function<void(Window&)> hook) { resized_ = std::move(hook); }
    // Fills area (the screen below the menu bar), or gives back the rectangle
    // the window had before it was maximised.
    void ToggleMaximized(const Gorb_Rect& area);
    bool Maximized() const { return maximized_; }
    uint32_t Flags() const { return flags_; }
    bool Draggable() const { return (flags_ & kWindowNotDraggable) == 0; }
    const std::string& Title() const { return title_; }
    bool HasPart(WindowPart part) const;
    // Where a part lies, in window coordinates; empty when the window lacks it.
    Gorb_Rect PartRect(WindowPart part) const;
    // The part at p (window coordinates), None when p is on no part.
    WindowPart PartAt(Point p) const;

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
    bool maximized_ = false;
    Gorb_Rect restored_{};
    std::function<void(Window&)> resized_;
    Widget* focus_ = nullptr;
    std::vector<std::unique_ptr<Widget>> widgets_;
    std::vector<Window*> tookActiveFrom_;
};

}  // namespace sondrel
