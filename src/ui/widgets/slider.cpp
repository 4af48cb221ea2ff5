#include "ui/widgets/slider.h"

#include "ui/painter.h"

namespace sondrel {

void Slider::Step(int part) {
    if (part == kTrackLess) SetValue(Value() - step_);
    if (part == kTrackMore) SetValue(Value() + step_);
}

void Slider::Draw(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    if (!style.DrawItem(painter, Key('B', "", ""), local)) {
        // A thin sunken groove along the middle.
        const int across = Thickness() / 2 - 2;
        const Gorb_Rect groove = Vertical() ? Gorb_Rect{across, 0, 4, local.h} : Gorb_Rect{0, across, local.w, 4};
        painter.Fill(groove, style.Colour(ThemeColour::Background));
        painter.Bevel(groove, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      BevelStyle::Sunken);
    }
    const bool grabbed = HeldPart() == kGrip;
    const Gorb_Rect grip = Span(GripStart(), GripLength());
    const char* state = !Enabled() ? "_D" : grabbed ? "_P" : "";
    if (!style.DrawItem(painter, Key('S', "_GRIP", state), grip)) {
        const ThemeColour fill = !Enabled() ? ThemeColour::TextDisabled
                                 : grabbed ? ThemeColour::Selection
                                           : ThemeColour::WindowBody;
        painter.Fill(grip, style.Colour(fill));
        painter.Bevel(grip, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark));
    }
}

}  // namespace sondrel
