#pragma once
// A check box with its text: every press or Space flips it and queues its state.

#include <string>

#include "ui/widgets/toggle_widget.h"

namespace sondrel {

class CheckBox : public ToggleWidget {
public:
    CheckBox(uint16_t id, const Gorb_Rect& rect, std::string text)
        : ToggleWidget(WidgetKind::CheckBox, kEntryToggle, ToggleLook::Box, id, rect, std::move(text)) {}
};

}  // namespace sondrel
