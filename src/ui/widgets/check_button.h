#pragma once
// A toggle button: every press or Space flips it (drawn pushed in while on)
// and queues its state.

#include <string>

#include "ui/widgets/toggle_widget.h"

namespace sondrel {

class CheckButton : public ToggleWidget {
public:
    CheckButton(uint16_t id, const Gorb_Rect& rect, std::string text)
        : ToggleWidget(WidgetKind::CheckButton, kEntryToggle, ToggleLook::Button, id, rect, std::move(text)) {}
};

}  // namespace sondrel
