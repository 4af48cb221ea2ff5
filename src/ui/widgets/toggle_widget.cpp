#include "ui/widgets/toggle_widget.h"

#include <string>

#include "ui/command_queue.h"
#include "ui/painter.h"
#include "ui/window.h"

namespace sondrel {

namespace {
constexpr int kBoxSize = 13;
constexpr int kBoxTextGap = 4;
}  // namespace

void ToggleWidget::Press(WidgetContext& context, Point, int part) {
    if (part == kNoPart) return;
    if (bit_ != kNoBit && group_ == kNoGroup && (context.modifiers & kGorbShift) != 0) {
        context.queue.PushEntry(kEntryMaskSolo, Id(), static_cast<uint32_t>(bit_));
        return;
    }
    Activate(context);
}

bool ToggleWidget::KeyPress(WidgetContext& context, const Gorb_Event& event) {
    if (event.key != kKeySpace || event.repeat) return false;
    Activate(context);
    return true;
}

void ToggleWidget::Activate(WidgetContext& context) {
    if (group_ == kNoGroup) {
        on_ = !on_;
        context.queue.PushEntry(entry_, Id(), bit_ == kNoBit ? (on_ ? 1u : 0u) : Mask());
        return;
    }
    if (on_) return;  // choosing the chosen one changes nothing
    ClearGroup();
    on_ = true;
    context.queue.PushEntry(entry_, Id(), choice_);
}

uint32_t ToggleWidget::Mask() const {
    if (Owner() == nullptr) return on_ && bit_ != kNoBit ? 1u << bit_ : 0u;
    uint32_t mask = 0;
    for (const auto& widget : Owner()->Widgets()) {
        if (widget->Kind() != Kind() || widget->Id() != Id()) continue;
        const auto* other = static_cast<const ToggleWidget*>(widget.get());
        if (other->on_ && other->bit_ != kNoBit) mask |= 1u << other->bit_;
    }
    return mask;
}

void ToggleWidget::ClearGroup() {
    if (Owner() == nullptr) return;
    for (const auto& widget : Owner()->Widgets()) {
        if (widget.get() == this || widget->Kind() != Kind()) continue;
        auto* other = static_cast<ToggleWidget*>(widget.get());
        if (other->group_ == group_) other->on_ = false;
    }
}

bool ToggleWidget::DrawLook(Painter& painter, const DrawStyle& style, const Gorb_Rect& rect) const {
    const std::string base = "B" + std::string(SkinTypeName(Kind())) + (on_ ? "_T" : "");
    return style.DrawStateItem(painter, base, LookState(Enabled(), false, style.Hovers(*this)), rect);
}

void ToggleWidget::Draw(Painter& painter, const DrawStyle& style) const {
    if (look_ == ToggleLook::Box)
        DrawBox(painter, style);
    else
        DrawButton(painter, style);
}

void ToggleWidget::DrawBox(Painter& painter, const DrawStyle& style) const {
    const int h = Rect().h;
    const Gorb_Rect box{0, (h - kBoxSize) / 2, kBoxSize, kBoxSize};
    if (!DrawLook(painter, style, box)) {
        painter.Fill(box, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(box, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      BevelStyle::Sunken);
        if (on_) {
            // A select box shows a smaller dot than a check box's mark.
            const int inset = Kind() == WidgetKind::SelectBox ? 4 : 3;
            const ThemeColour mark = Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled;
            painter.Fill({box.x + inset, box.y + inset, kBoxSize - 2 * inset, kBoxSize - 2 * inset},
                         style.Colour(mark));
        }
    }
    if (style.font != nullptr) {
        const ThemeColour colour = Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled;
        const int x = kBoxSize + kBoxTextGap;
        painter.TextIn(*style.font, {x, 0, Rect().w - x, h}, text_, style.Colour(colour), TextAlign::Left,
                       TextFit::Ellipsis);
    }
}

void ToggleWidget::DrawButton(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    if (!DrawLook(painter, style, local)) {
        painter.Fill(local, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(local, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      on_ ? BevelStyle::Sunken : BevelStyle::Raised);
    }
    if (style.font != nullptr) {
        const ThemeColour colour = Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled;
        const int shift = on_ ? 1 : 0;
        painter.TextIn(*style.font, {2 + shift, shift, local.w - 4, local.h}, text_, style.Colour(colour),
                       TextAlign::Centre, TextFit::Ellipsis);
    }
}

}  // namespace sondrel
