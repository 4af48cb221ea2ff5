#pragma once
// The widget toolkit: up to 32 windows stacked over the screen background,
// the widgets in them, and the translation of raw input into focus changes,
// widget presses and releases and entries of the command queue. The main
// loop calls Update after polling input, drains the queue, then calls Draw.
// The toolkit never calls into the editor; everything it has to say goes
// through the queue.

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/gorb.h"
#include "ui/command_queue.h"
#include "ui/popup.h"
#include "ui/widget.h"
#include "ui/window.h"

namespace sondrel {

class Painter;
class SkinLibrary;

// Where the toolkit's input comes from: the graphics library in the
// program, synthetic events in tests.
class InputSource {
public:
    virtual ~InputSource() = default;
    // The next pending event; false when there is none.
    virtual bool NextEvent(Gorb_Event& event) = 0;
    virtual uint32_t Modifiers() = 0;
    // The held buttons (Gorb_MouseButton bits) and the pointer position.
    virtual uint32_t MouseState(int& x, int& y) = 0;
};

// Input from the graphics library's event queue.
class GorbInputSource : public InputSource {
public:
    bool NextEvent(Gorb_Event& event) override { return Gorb_GetEvent(event); }
    uint32_t Modifiers() override { return Gorb_GetKeyModifiers(); }
    uint32_t MouseState(int& x, int& y) override { return Gorb_GetMouseState(x, y); }
};

// The menu bar and its open menus, tested before the windows. The toolkit
// runs without one too.
class MenuBar {
public:
    virtual ~MenuBar() = default;
    virtual bool Contains(Point screen) const = 0;
    // The first button went down on the bar or an open menu.
    virtual void Press(Point screen) = 0;
    virtual void Follow(Point screen) = 0;
    // The button went up: choose the entry under the pointer (a menu command entry).
    virtual void Choose(Point screen, CommandQueue& queue) = 0;
    virtual void Close() = 0;
    // The height of the bar along the top of the screen; maximised windows fill the screen below it.
    virtual int BarHeight() const { return 0; }
    // A key went down; true when an open menu took it. Choosing an entry by
    // key queues its menu command entry.
    virtual bool KeyPress(uint16_t /*key*/, CommandQueue& /*queue*/) { return false; }
    virtual void Draw(Painter& painter, const DrawStyle& style) const = 0;
};

enum class HoverKind : uint8_t { Nothing = 0, Widget = 1, WindowBody = 2, Menu = 3 };

struct HoverTarget {
    HoverKind kind = HoverKind::Nothing;
    Window* window = nullptr;
    Widget* widget = nullptr;
    int part = kNoPart;
    WindowPart windowPart = WindowPart::None;  // on an active window's frame part
};

class Toolkit {
public:
    static constexpr int kWindowSlots = 32;
    static constexpr double kTickSeconds = 0.01;
    static constexpr double kMaxTickBacklog = 0.1;

    // clock: seconds from any fixed start; a steady clock when empty.
    explicit Toolkit(InputSource& input, std::function<double()> clock = {});
    ~Toolkit();
    Toolkit(const Toolkit&) = delete;
    Toolkit& operator=(const Toolkit&) = delete;

    // Draws onto screen, with the skin (and its active theme's colours) when
    // one is given and loaded, otherwise in plain built-in colours. Clears
    // the windows and the queue and reads the pointer position.
    void Init(Gorb_Surface& screen, const SkinLibrary* skin = nullptr);
    void SetMenuBar(MenuBar* menu) { menu_ = menu; }
    // The clipboard text entries use unless they were given their own (the system's in the program).
    void SetClipboard(Clipboard* clipboard) { clipboard_ = clipboard; }

    // A window on top of the others, taking the active flag from every active
    // window until it closes. Null when a window with that id is open (it is
    // raised instead) or all 32 slots are taken.
    Window* OpenWindow(uint16_t id, const Gorb_Rect& rect, uint32_t flags, const std::string& title);
    void CloseWindow(Window* window);
    Window* FindWindow(uint16_t id) const;
    void Raise(Window* window);
    // Moves the window's focus to widget (null: no focus), telling the widget
    // that had it first.
    void Focus(Window* window, Widget* widget) { Focus(window, widget, false); }

    // Handles every pending input event, then runs the 10 ms ticks due.
    void Update();
    // The screen background, then the windows from the bottom up.
    void Draw();
    // Frees every window and queued entry.
    void Shutdown();

    CommandQueue& Queue() { return queue_; }
    const QueueEntry* PopEntry() { return queue_.PopEntry(); }

    // Windows from the bottom up; the last is on top.
    const std::vector<Window*>& Stack() const { return stack_; }
    Window* Current() const { return current_; }
    MouseMode Mode() const { return mode_; }
    Widget* Held() const { return held_; }
    uint32_t Buttons() const { return buttons_; }
    const HoverTarget& Hover() const { return hover_; }
    double TickBacklog() const { return backlog_; }
    const DrawStyle& Style() const { return style_; }
    // The open popup, drawn over everything and given input first; null when none is open.
    const Popup* OpenPopup() const { return popup_; }
    // Closes the open popup without choosing anything.
    void ClosePopup();

private:
    void Dispatch(const Gorb_Event& event);
    void KeyDown(const Gorb_Event& event);
    void KeyUp(const Gorb_Event& event);
    void MouseMove(Point to);
    void Wheel(int delta);
    void Press();
    void Release();
    void ThirdButtonDown();
    void RunTicks();
    void Focus(Window* window, Widget* widget, bool byTab);
    void UpdateHover();
    // The topmost active window under the pointer.
    Window* ActiveWindowAtPointer() const;
    // A context for widget handlers; the caller takes back the mouse mode it leaves.
    WidgetContext Context() { return {queue_, mode_, modifiers_, clock_(), popup_, clipboard_}; }
    // Takes back the popup a handler of window's widget opened or closed.
    void TakePopup(const WidgetContext& context, Window* window);
    void DrawWindow(Painter& painter, const Window& window) const;
    void DrawWindowParts(Painter& painter, const Window& window) const;
    // The pointer moved while a frame part of the current window is held.
    void DragWindowPart();
    void ReleaseWindowPart();
    Gorb_Rect ScreenRect() const;

    InputSource& input_;
    std::function<double()> clock_;
    Gorb_Surface* screen_ = nullptr;
    DrawStyle style_;
    MenuBar* menu_ = nullptr;
    Clipboard* clipboard_ = nullptr;
    CommandQueue queue_;

    std::array<std::unique_ptr<Window>, kWindowSlots> slots_;
    std::vector<Window*> stack_;
    Window* current_ = nullptr;

    MouseMode mode_ = MouseMode::Idle;
    Widget* held_ = nullptr;
    // The current window's frame part held in WindowPartHeld mode, whether the
    // pointer is still on it, and the grip's starting point and rectangle.
    WindowPart heldPart_ = WindowPart::None;
    bool heldPartDown_ = false;
    Point gripFrom_;
    Gorb_Rect sizeFrom_{};
    Popup* popup_ = nullptr;
    Window* popupWindow_ = nullptr;  // the window of the widget that opened it
    uint32_t buttons_ = 0;
    uint32_t modifiers_ = 0;
    Point mouse_;
    HoverTarget hover_;
    double backlog_ = 0;
    double lastTime_ = 0;
};

}  // namespace sondrel
