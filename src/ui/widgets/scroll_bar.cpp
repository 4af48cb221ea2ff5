#include "ui/widgets/scroll_bar.h"

#include <algorithm>

#include "ui/command_queue.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"

namespace sondrel {

void ScrollBar::SetTotal(int32_t total, int32_t visible) {
    total_ = std::max(total, 1);
    visible_ = std::clamp(visible, 1, total_);
    SetRange(0, total_ - visible_);
}

int ScrollBar::ArrowLength() const { return std::min(Thickness(), Length() / 2); }

int ScrollBar::GripLength() const {
    const int track = TrackLength();
    const int shown = static_cast<int>(static_cast<int64_t>(track) * visible_ / total_);
    return std::min(track, std::max(shown, std::min(Thickness(), track)));
}

void ScrollBar::Step(int part) {
    switch (part) {
        case kArrowLess: SetValue(Value() - step_); break;
        case kArrowMore: SetValue(Value() + step_); break;
        case kTrackLess:
            if (PointerAlong() < GripStart()) SetValue(Value() - visible_);
            break;
        case kTrackMore:
            if (PointerAlong() >= GripStart() + GripLength()) SetValue(Value() + visible_);
            break;
        default: break;
    }
}

void ScrollBar::Repeat(WidgetContext&) {
    if (HeldPart() != kNoPart && HeldPart() != kGrip) Step(HeldPart());
}

bool ScrollBar::Wheel(WidgetContext& context, int delta) {
    // Turning the wheel away from the user scrolls toward the start.
    SetValue(Value() - delta * step_);
    context.queue.PushEntry(delta < 0 ? kEntryWheelWidgetDown : kEntryWheelWidgetUp, Id(), 0);
    return true;
}

void ScrollBar::Draw(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect track = Span(TrackStart(), TrackLength());
    if (!style.DrawItem(painter, Key('B', "", ""), track)) {
        painter.Fill(track, style.Colour(ThemeColour::Background));
        painter.Bevel(track, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      BevelStyle::Sunken);
    }
    const int arrow = ArrowLength();
    for (const int part : {kArrowLess, kArrowMore}) {
        const bool down = HeldPart() == part;
        const Gorb_Rect where = Span(part == kArrowLess ? 0 : Length() - arrow, arrow);
        const auto state = LookState(Enabled(), down, style.Hovers(*this, part));
        if (style.DrawStateItem(painter, Key('S', part == kArrowLess ? "_ARROW" : "_ARROW2", ""), state, where)) continue;
        painter.Fill(where, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(where, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      down ? BevelStyle::Sunken : BevelStyle::Raised);
        // A small block in the arrow's middle stands for its point.
        const Gorb_Rect mark{where.x + where.w / 2 - 1, where.y + where.h / 2 - 1, 3, 3};
        painter.Fill(mark, style.Colour(Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled));
    }
    const bool grabbed = HeldPart() == kGrip;
    const Gorb_Rect grip = Span(GripStart(), GripLength());
    const auto gripState = LookState(true, grabbed, Enabled() && style.Hovers(*this, kGrip));
    if (!style.DrawStateItem(painter, Key(Vertical() ? 'V' : 'H', "_GRIP", ""), gripState, grip)) {
        painter.Fill(grip, style.Colour(grabbed ? ThemeColour::Selection : ThemeColour::WindowBody));
        painter.Bevel(grip, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark));
    }
}

}  // namespace sondrel
