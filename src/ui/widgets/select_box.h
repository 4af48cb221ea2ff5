#pragma once
// A radio-style box with its text: choosing it clears the other select boxes of its
// group and queues its choice index.

#include <string>

#include "ui/widgets/toggle_widget.h"

namespace sondrel {

class SelectBox : public ToggleWidget {
public:
    SelectBox(uint16_t id, const Gorb_Rect& rect, std::string text, int group, uint32_t choice)
        : ToggleWidget(WidgetKind::SelectBox, kEntryChoice, ToggleLook::Box,
                       id, rect, std::move(text), group, choice) {}
};

}  // namespace sondrel
