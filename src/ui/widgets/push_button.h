#pragma once
// A push button with a text: pressing it holds it down, letting go over it
// queues a value entry with its id (value 0). Space on the focused button holds it
// down the same way until Space is released.

#include <string>

#include "ui/widget.h"

namespace sondrel {

class PushButton : public Widget {
public:
    PushButton(uint16_t id, const Gorb_Rect& rect, std::string text)
        : Widget(WidgetKind::Button, id, rect), text_(std::move(text)) {}

    const std::string& Text() const { return text_; }
    void SetText(std::string text) { text_ = std::move(text); }
    // Drawn pushed in: held down with the pointer over it, or with Space.
    bool Down() const { return down_; }

    void Press(WidgetContext& context, Point, int part) override;
    void Release(WidgetContext& context, Point, int part) override;
    void Drag(WidgetContext& context, Point p) override;
    bool KeyPress(WidgetContext& context, const Gorb_Event& event) override;
    void Draw(Painter& painter, const DrawStyle& style) const override;

protected:
    // For kinds that press like a button but look otherwise.
    PushButton(WidgetKind kind, uint16_t id, const Gorb_Rect& rect, std::string text)
        : Widget(kind, id, rect), text_(std::move(text)) {}
    // Queues what a click means; a value entry with value 0 here.
    virtual void Clicked(WidgetContext& context);

private:
    std::string text_;
    bool down_ = false;
};

}  // namespace sondrel
