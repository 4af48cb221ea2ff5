#pragma once
// A radio-style button: choosing it clears the other select buttons of its
// group and queues its choice index.

#include <string>

#include "ui/widgets/toggle_widget.h"

namespace sondrel {

class SelectButton : public ToggleWidget {
public:
    SelectButton(uint16_t id, const Gorb_Rect& rect, std::string text, int group, uint32_t choice)
        : ToggleWidget(WidgetKind::SelectButton, kEntryChoice, ToggleLook::Button,
                       id, rect, std::move(text), group, choice) {}
};

}  // namespace sondrel
