#pragma once
// A small button showing one of the skin's icons instead of a text; it
// presses and clicks like a push button.

#include <string>

#include "ui/widgets/push_button.h"

namespace sondrel {

class SpeedButton : public PushButton {
public:
    SpeedButton(uint16_t id, const Gorb_Rect& rect, std::string icon)
        : PushButton(WidgetKind::SpeedButton, id, rect, {}), icon_(std::move(icon)) {}

    const std::string& Icon() const { return icon_; }
    void SetIcon(std::string icon) { icon_ = std::move(icon); }

    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    std::string icon_;
};

}  // namespace sondrel
