#include "ui/widgets/menu_button.h"

#include <algorithm>

#include "ui/command_queue.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"
#include "ui/window.h"

namespace sondrel {

namespace {

constexpr int kMarkColumn = 18;  // the current choice's mark at the left of its line

bool Picks(uint16_t key) {
    return key == MenuButton::kKeyReturn || key == MenuButton::kKeyPadEnter || key == kKeySpace;
}

int Step(uint16_t key) { return key == MenuButton::kKeyUp ? -1 : key == MenuButton::kKeyDown ? 1 : 0; }

}  // namespace

MenuButton::MenuButton(uint16_t id, const Gorb_Rect& rect, std::string_view choices, int choice)
    : Widget(WidgetKind::MenuButton, id, rect) {
    for (size_t start = 0;;) {
        const size_t end = choices.find('\n', start);
        choices_.emplace_back(choices.substr(start, end - start));
        if (end == std::string_view::npos) break;
        start = end + 1;
    }
    SetChoice(choice);
}

void MenuButton::SetChoice(int choice) {
    choice_ = choice < 0 ? kNoChoice : std::min(choice, static_cast<int>(choices_.size()) - 1);
}

Gorb_Rect MenuButton::LineRect(int index) const {
    return {listRect_.x + kListBorder, listRect_.y + kListBorder + index * kEntryHeight, listRect_.w - 2 * kListBorder,
            kEntryHeight};
}

int MenuButton::LineAt(Point screen) const {
    if (!open_) return -1;
    for (int i = 0; i < static_cast<int>(choices_.size()); ++i)
        if (Contains(LineRect(i), screen)) return i;
    return -1;
}

bool MenuButton::Focused() const { return Owner() != nullptr && Owner()->Focus() == this; }

void MenuButton::OpenList(WidgetContext& context) {
    const Gorb_Rect at = Owner() != nullptr ? Owner()->Rect() : Gorb_Rect{};
    const int height = 2 * kListBorder + static_cast<int>(choices_.size()) * kEntryHeight;
    int y = at.y + Rect().y + Rect().h;
    // Without room below the button the list opens above it.
    if (y + height > kScreenHeight) y = std::max(0, at.y + Rect().y - height);
    listRect_ = {at.x + Rect().x, y, Rect().w, height};
    highlighted_ = choice_;
    open_ = true;
    context.popup = &list_;
}

void MenuButton::Pick(WidgetContext& context, int index) {
    open_ = false;
    context.popup = nullptr;
    if (index < 0) return;
    choice_ = index;
    context.queue.PushEntry(kEntryChoice, Id(), static_cast<uint32_t>(index));
}

void MenuButton::Press(WidgetContext& context, Point, int part) {
    if (part == kNoPart || !Enabled()) return;
    OpenList(context);
    // Held like a menu: letting go on a choice picks it.
    context.mouseMode = MouseMode::InMenu;
}

bool MenuButton::KeyPress(WidgetContext& context, const Gorb_Event& event) {
    if (!Enabled()) return false;
    if (Picks(event.key)) {
        if (!event.repeat) OpenList(context);
        return true;
    }
    const int step = Step(event.key);
    if (step == 0) return false;
    const int choice = std::clamp(choice_ + step, 0, static_cast<int>(choices_.size()) - 1);
    if (choice != choice_) Pick(context, choice);
    return true;
}

bool MenuButton::List::Contains(Point screen) const { return sondrel::Contains(button_.listRect_, screen); }

void MenuButton::List::Press(WidgetContext&, Point screen) { Follow(screen); }

void MenuButton::List::Follow(Point screen) {
    const int line = button_.LineAt(screen);
    if (line >= 0) button_.highlighted_ = line;
}

void MenuButton::List::Release(WidgetContext& context, Point screen) {
    const int line = button_.LineAt(screen);
    if (line >= 0) return button_.Pick(context, line);
    // Let go on the button itself: the list stays open for a click on a choice.
    const Window* window = button_.Owner();
    if (window != nullptr && button_.HitTest(window->ToLocal(screen)) != kNoPart) return;
    button_.Pick(context, -1);
}

bool MenuButton::List::KeyPress(WidgetContext& context, const Gorb_Event& event) {
    if (event.key == kKeyEscape) {
        button_.Pick(context, -1);
    } else if (Picks(event.key)) {
        if (!event.repeat) button_.Pick(context, button_.highlighted_);
    } else if (const int step = Step(event.key); step != 0) {
        const int last = static_cast<int>(button_.choices_.size()) - 1;
        button_.highlighted_ = std::clamp(button_.highlighted_ + step, 0, last);
    } else {
        return false;
    }
    return true;
}

void MenuButton::List::Draw(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect& rect = button_.listRect_;
    // The drop-down menus' look.
    if (!style.DrawItem(painter, "BMENU", rect)) {
        painter.Fill(rect, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(rect, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark));
    }
    for (int i = 0; i < static_cast<int>(button_.choices_.size()); ++i) {
        const Gorb_Rect line = button_.LineRect(i);
        const bool highlighted = i == button_.highlighted_;
        if (highlighted && !style.DrawItem(painter, "HMENU_ENTRY_S", line))
            painter.Fill(line, style.Colour(ThemeColour::Selection));
        const uint32_t text = style.Colour(highlighted ? ThemeColour::TextSelected : ThemeColour::Text);
        if (i == button_.choice_) {
            const Gorb_Rect mark{line.x + (kMarkColumn - 10) / 2, line.y + (line.h - 10) / 2, 10, 10};
            if (!style.DrawItem(painter, "SMENU_CHECK", mark)) painter.Fill({mark.x + 2, mark.y + 2, 6, 6}, text);
        }
        if (style.font != nullptr) {
            painter.TextIn(*style.font, {line.x + kMarkColumn, line.y, line.w - kMarkColumn - 2, line.h},
                           button_.choices_[static_cast<size_t>(i)], text, TextAlign::Left, TextFit::Ellipsis);
        }
    }
}

void MenuButton::Draw(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    const std::string base = "B" + std::string(SkinTypeName(Kind()));
    const char* state = !Enabled() ? "_D" : open_ ? "_P" : Focused() ? "_F" : "";
    if (!style.DrawItem(painter, base + state, local) && !style.DrawItem(painter, base, local)) {
        painter.Fill(local, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(local, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      open_ ? BevelStyle::Sunken : BevelStyle::Raised);
        // A small triangle pointing down in the right border.
        const uint32_t arrow = style.Colour(Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled);
        const int x = local.w - kArrowWidth + (kArrowWidth - 7) / 2;
        const int y = (local.h - 4) / 2;
        for (int i = 0; i < 4; ++i) painter.HLine(x + i, y + i, 7 - 2 * i, arrow);
        if (Focused()) painter.Outline({2, 2, local.w - 4, local.h - 4}, style.Colour(ThemeColour::FocusRing));
    }
    if (style.font != nullptr && choice_ != kNoChoice) {
        const ThemeColour colour = Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled;
        const int shift = open_ ? 1 : 0;
        painter.TextIn(*style.font, {3 + shift, shift, local.w - 6 - kArrowWidth, local.h},
                       choices_[static_cast<size_t>(choice_)], style.Colour(colour), TextAlign::Centre,
                       TextFit::Ellipsis);
    }
}

}  // namespace sondrel
