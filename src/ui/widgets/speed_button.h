#pragma once
// A small button showing one of the skin's icons instead of a text; it
// presses like a push button and a click queues a button entry with its id
// and direction, so a pair of arrows can share one id (0 up or back, 1 down
// or on).

#include <string>

#include "ui/widgets/push_button.h"

namespace sondrel {

class SpeedButton : public PushButton {
public:
    SpeedButton(uint16_t id, const Gorb_Rect& rect, std::string icon, uint32_t direction = 0)
        : PushButton(WidgetKind::SpeedButton, id, rect, {}), icon_(std::move(icon)), direction_(direction) {}

    const std::string& Icon() const { return icon_; }
    void SetIcon(std::string icon) { icon_ = std::move(icon); }

    void Draw(Painter& painter, const DrawStyle& style) const override;

protected:
    void Clicked(WidgetContext& context) override;

private:
    std::string icon_;
    uint32_t direction_;
};

}  // namespace sondrel
