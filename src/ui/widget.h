#pragma once
// The common part of every widget: its id, flags, kind, window and
// rectangle, and the operations the toolkit calls on it. Each widget kind is
// a subclass in ui/widgets/ that overrides what it needs; the defaults do
// nothing, so a plain Widget is an inert area.

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/gorb.h"
#include "ui/skin/skin_names.h"

namespace sondrel {

class Clipboard;
class CommandQueue;
class Painter;
class Popup;
class SkinLibrary;
class Widget;
class Window;

struct Point {
    int x = 0;
    int y = 0;
};

inline bool Contains(const Gorb_Rect& rect, Point p) {
    return p.x >= rect.x && p.y >= rect.y && p.x < rect.x + rect.w && p.y < rect.y + rect.h;
}

// Widget kinds, numbered in the order of the skin's widget type table.
enum class WidgetKind : uint32_t {
    Window,
    Menu,
    Button,
    MenuButton,
    WindowClose,
    WindowMaximize,
    WindowResize,
    SpeedButton,
    CheckBox,
    SelectBox,
    CheckButton,
    SelectButton,
    Frame,
    HGauge,
    VGauge,
    ProgressBar,
    HScrollBar,
    VScrollBar,
    HSlider,
    VSlider,
    TextLine,
    TextField,
    List,
    Image,
    HSpaceBar,
    VSpaceBar,
    Count
};
static_assert(static_cast<int>(WidgetKind::Count) == kSkinWidgetTypeCount);

// The skin's type name of a kind ("GT_BUTTON").
inline std::string_view SkinTypeName(WidgetKind kind) { return SkinWidgetTypeNames()[static_cast<int>(kind)]; }

// What the mouse is doing, as the toolkit tracks it.
enum class MouseMode : uint8_t {
    Idle = 0,
    DraggingWindow = 1,
    InMenu = 2,
    WidgetHeld = 3,   // a widget is held down with the first button
    WindowPartHeld = 4,  // a window's close or maximise box or its resize grip is held
    SpaceHeld = 5,    // a button is held down with Space
};

// Widget flag bits.
constexpr uint16_t kWidgetEnabled = 1u << 0;        // enabled and focusable
constexpr uint16_t kWidgetHidden = 1u << 2;
constexpr uint16_t kWidgetChangedWhileHeld = 1u << 3;

constexpr int kNoPart = -1;  // a hit test that missed

// Key codes the toolkit itself reacts to.
constexpr uint16_t kKeyTab = 15;
constexpr uint16_t kKeySpace = 57;

// What a widget's input handlers may touch: the queue for its entries and
// the mouse mode (a press that sets WidgetHeld makes the widget the held one).
struct WidgetContext {
    CommandQueue& queue;
    MouseMode mouseMode = MouseMode::Idle;
    uint32_t modifiers = 0;
    double now = 0;  // the toolkit's clock, in seconds
    // The open popup: a press or key handler opens its own by pointing this
    // at it, and a popup's handlers close it by clearing this.
    Popup* popup = nullptr;
    // Where text entries without a clipboard of their own cut, copy and paste.
    Clipboard* clipboard = nullptr;
};

// What widgets draw with: the skin when there is one, and the theme colours.
struct DrawStyle {
    const SkinLibrary* skin = nullptr;
    const Gorb_Font* font = nullptr;  // null: no text is drawn
    std::array<uint32_t, kThemeColourCount> colours{};

    // The widget under the pointer and the part it is on, set while nothing
    // is held so that widgets can draw their hover looks.
    const Widget* hovered = nullptr;
    int hoveredPart = kNoPart;

    uint32_t Colour(ThemeColour colour) const { return colours[static_cast<int>(colour)]; }
    // Draws the skin item of that key stretched over rect; false (nothing
    // drawn) without a skin or when the skin lacks the item.
    bool DrawItem(Painter& painter, std::string_view key, const Gorb_Rect& rect) const;
    // Draws the item of base with a state suffix ("_P"), or base itself when
    // the skin has no item for that state.
    bool DrawStateItem(Painter& painter, std::string_view base, std::string_view state, const Gorb_Rect& rect) const;
    // Whether the pointer is on widget (on that part of it, unless part is kNoPart).
    bool Hovers(const Widget& widget, int part = kNoPart) const {
        return hovered == &widget && (part == kNoPart || part == hoveredPart);
    }
};

// The skin suffix of a button-like look: disabled, pressed, under the
// pointer, holding the keyboard focus, or plain.
constexpr std::string_view LookState(bool enabled, bool pressed, bool hovered, bool focused = false) {
    return !enabled ? "_D" : pressed ? "_P" : hovered ? "_R" : focused ? "_F" : "";
}

class Widget {
public:
    Widget(WidgetKind kind, uint16_t id, const Gorb_Rect& rect) : kind_(kind), id_(id), rect_(rect) {}
    virtual ~Widget() = default;
    Widget(const Widget&) = delete;
    Widget& operator=(const Widget&) = delete;

    WidgetKind Kind() const { return kind_; }
    uint16_t Id() const { return id_; }
    uint16_t Flags() const { return flags_; }
    void SetFlags(uint16_t flags) { flags_ = flags; }
    bool Enabled() const { return (flags_ & kWidgetEnabled) != 0; }
    bool Hidden() const { return (flags_ & kWidgetHidden) != 0; }
    void SetEnabled(bool on) { SetFlag(kWidgetEnabled, on); }
    void SetHidden(bool on) { SetFlag(kWidgetHidden, on); }
    bool Focusable() const { return Enabled() && !Hidden(); }

    Window* Owner() const { return window_; }
    void SetOwner(Window* window) { window_ = window; }
    // In window coordinates.
    const Gorb_Rect& Rect() const { return rect_; }
    void SetRect(const Gorb_Rect& rect) { rect_ = rect; }

    // The part of the widget at p (window coordinates), or kNoPart. One part
    // (0) covering the rectangle unless a kind has more.
    virtual int HitTest(Point p) const { return Contains(rect_, p) ? 0 : kNoPart; }
    virtual void Press(WidgetContext&, Point, int /*part*/) {}
    // The first button let go (or Space for a button held with it); part is
    // where the pointer is now, kNoPart when it left the widget.
    virtual void Release(WidgetContext&, Point, int /*part*/) {}
    // Every 10 ms tick while the widget is held down.
    virtual void Repeat(WidgetContext&) {}
    // The pointer moved while the widget is held down.
    virtual void Drag(WidgetContext&, Point) {}
    // A key while the widget has the focus; true when the widget took it.
    virtual bool KeyPress(WidgetContext&, const Gorb_Event&) { return false; }
    virtual void FocusLost(WidgetContext&) {}
    // byTab: Tab moved the focus here (rather than a click).
    virtual void FocusGained(WidgetContext&, bool /*byTab*/) {}
    // Text lines, text fields, lists and owner-drawn images tell the program
    // when Tab brings the keyboard to them (a value entry with their value),
    // so it can follow.
    void AnnounceTabFocus(WidgetContext& context, bool byTab) const;
    // The wheel turned over the widget; true when it scrolled.
    virtual bool Wheel(WidgetContext&, int /*delta*/) { return false; }
    // Kinds that commit a value when let go answer true; the toolkit then
    // queues a value entry with Value().
    virtual bool CommitsOnRelease() const { return false; }
    virtual int32_t Value() const { return 0; }

    // Draws the widget with the painter's origin at its top left corner and
    // the clip on its rectangle.
    virtual void Draw(Painter&, const DrawStyle&) const {}

private:
    void SetFlag(uint16_t bit, bool on) { flags_ = on ? (flags_ | bit) : (flags_ & ~bit); }

    WidgetKind kind_;
    uint16_t id_;
    uint16_t flags_ = kWidgetEnabled;
    Window* window_ = nullptr;
    Gorb_Rect rect_;
};

}  // namespace sondrel
