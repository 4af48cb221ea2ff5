#pragma once
// A transient list or panel that a widget opens over every window (a menu
// button's choices). The widget owns it; the toolkit only points at the open
// one, draws it last and gives it presses, pointer moves and keys before any
// window. A handler opens or closes it through WidgetContext::popup.

#include "platform/gorb.h"
#include "ui/widget.h"

namespace sondrel {

class Popup {
public:
    virtual ~Popup() = default;

    // Screen coordinates.
    virtual bool Contains(Point screen) const = 0;
    // The first button went down on it.
    virtual void Press(WidgetContext& context, Point screen) = 0;
    // The pointer moved, with or without a button down.
    virtual void Follow(Point screen) = 0;
    // The first button went up after a press on the popup or on the widget
    // that opened it; the pointer may be anywhere.
    virtual void Release(WidgetContext& context, Point screen) = 0;
    // A key went down while it is open; true when it took the key.
    virtual bool KeyPress(WidgetContext& context, const Gorb_Event& event) = 0;
    // The toolkit closed it: a press elsewhere, its window closed or another opened.
    virtual void Close() = 0;
    virtual void Draw(Painter& painter, const DrawStyle& style) const = 0;
};

}  // namespace sondrel
