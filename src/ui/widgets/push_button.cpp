#include "ui/widgets/push_button.h"

#include <string>

#include "ui/command_queue.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"
#include "ui/window.h"

namespace sondrel {

void PushButton::Press(WidgetContext& context, Point, int part) {
    down_ = part != kNoPart;
    context.mouseMode = MouseMode::WidgetHeld;
}

void PushButton::Release(WidgetContext& context, Point, int part) {
    if (down_ && part != kNoPart) Clicked(context);
    down_ = false;
}

void PushButton::Clicked(WidgetContext& context) { context.queue.PushEntry(kEntryValue, Id(), 0); }

void PushButton::Drag(WidgetContext&, Point p) { down_ = HitTest(p) != kNoPart; }

bool PushButton::KeyPress(WidgetContext& context, const Gorb_Event& event) {
    if (event.key != kKeySpace || event.repeat) return false;
    down_ = true;
    context.mouseMode = MouseMode::SpaceHeld;
    return true;
}

void PushButton::Draw(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    const std::string base = "B" + std::string(SkinTypeName(Kind()));
    // The focused button is the one Space (and Return in a requester) presses: it shows.
    const bool focused = Owner() != nullptr && Owner()->Active() && Owner()->Focus() == this;
    if (!style.DrawStateItem(painter, base, LookState(Enabled(), down_, style.Hovers(*this), focused), local)) {
        painter.Fill(local, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(local, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      down_ ? BevelStyle::Sunken : BevelStyle::Raised);
    }
    if (style.font != nullptr) {
        const ThemeColour colour = Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled;
        const int shift = down_ ? 1 : 0;
        const Gorb_Rect textArea{2 + shift, shift, local.w - 4, local.h};
        painter.TextIn(*style.font, textArea, text_, style.Colour(colour), TextAlign::Centre, TextFit::Ellipsis);
    }
}

}  // namespace sondrel
