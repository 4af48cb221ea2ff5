#include "ui/widgets/text_line.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string>

#include "ui/command_queue.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"

namespace sondrel {
namespace {

constexpr int kPadding = 3;
constexpr int kPlainCharWidth = 8;  // per character before a font has been drawn with

bool Printable(uint16_t character) { return character >= 32 && character != 127 && character <= 255; }

}  // namespace

void TextLine::SetText(std::string text) {
    if (text.size() > maxLength_) text.resize(maxLength_);
    text_ = std::move(text);
    cursor_ = anchor_ = text_.size();
}

void TextLine::SetNumeric(int32_t minimum, int32_t maximum) {
    numeric_ = true;
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    SetNumber(Value());
}

void TextLine::SetNumber(int32_t number) {
    SetText(std::to_string(std::clamp(number, minimum_, maximum_)));
}

int32_t TextLine::Value() const {
    if (!numeric_) return 0;
    int64_t number = 0;
    const char* end = text_.data() + text_.size();
    std::from_chars(text_.data(), end, number);
    return static_cast<int32_t>(std::clamp<int64_t>(number, minimum_, maximum_));
}

int TextLine::HitTest(Point p) const {
    if (!Contains(Rect(), p)) return kNoPart;
    if (!numeric_ || p.x < Rect().x + Rect().w - kButtonWidth) return kPartText;
    return p.y < Rect().y + Rect().h / 2 ? kPartPlus : kPartMinus;
}

void TextLine::Press(WidgetContext& context, Point p, int part) {
    context.mouseMode = MouseMode::WidgetHeld;
    stepping_ = part == kPartPlus || part == kPartMinus ? part : kNoPart;
    buttonDown_ = stepping_ != kNoPart;
    if (buttonDown_) {
        Step(stepping_ == kPartPlus ? 1 : -1);
        return;
    }
    MoveTo(PositionAt(p.x), (context.modifiers & kGorbShift) != 0);
}

void TextLine::Release(WidgetContext&, Point, int) { buttonDown_ = false; }

void TextLine::Drag(WidgetContext&, Point p) {
    if (stepping_ != kNoPart)
        buttonDown_ = HitTest(p) == stepping_;
    else
        MoveTo(PositionAt(p.x), true);
}

void TextLine::Repeat(WidgetContext&) {
    if (buttonDown_) Step(stepping_ == kPartPlus ? 1 : -1);
}

void TextLine::Step(int direction) {
    const int64_t next = static_cast<int64_t>(Value()) + direction;
    SetNumber(static_cast<int32_t>(std::clamp<int64_t>(next, minimum_, maximum_)));
}

bool TextLine::KeyPress(WidgetContext& context, const Gorb_Event& event) {
    if (!Enabled() || event.key == kKeyEscape) return false;
    if (event.key == kKeyEnter || event.key == kKeyPadEnter) {
        if (numeric_) SetNumber(Value());
        context.queue.PushEntry(kEntryTextReturn, Id(), static_cast<uint32_t>(numeric_ ? Value() : 0));
        return true;
    }
    const std::string before = text_;
    EditKey(context, event);
    if (text_ != before) context.queue.PushEntry(kEntryTextChanged, Id(), static_cast<uint32_t>(text_.size()));
    return true;
}

void TextLine::EditKey(WidgetContext& context, const Gorb_Event& event) {
    const bool shift = (context.modifiers & kGorbShift) != 0;
    const bool ctrl = (context.modifiers & kGorbCtrl) != 0;
    switch (event.key) {
        case kKeyLeft: MoveTo(cursor_ > 0 ? cursor_ - 1 : 0, shift); return;
        case kKeyRight: MoveTo(std::min(cursor_ + 1, text_.size()), shift); return;
        case kKeyHome: MoveTo(0, shift); return;
        case kKeyEnd: MoveTo(text_.size(), shift); return;
        case kKeyUp:
        case kKeyDown:
            if (numeric_) Step(event.key == kKeyUp ? 1 : -1);
            return;
        case kKeyBackspace:
        case kKeyDelete:
            if (anchor_ == cursor_) {
                if (event.key == kKeyBackspace && cursor_ > 0) anchor_ = cursor_ - 1;
                if (event.key == kKeyDelete && cursor_ < text_.size()) anchor_ = cursor_ + 1;
            }
            EraseSelection();
            return;
        default: break;
    }
    if (ctrl) {
        const std::string selected = text_.substr(SelectionStart(), SelectionEnd() - SelectionStart());
        if (event.key == kKeyA) {
            anchor_ = 0;
            cursor_ = text_.size();
        } else if ((event.key == kKeyC || event.key == kKeyX) && clipboard_ != nullptr && !selected.empty()) {
            clipboard_->SetText(selected);
            if (event.key == kKeyX) EraseSelection();
        } else if (event.key == kKeyV && clipboard_ != nullptr) {
            Insert(clipboard_->Text());
        }
        return;
    }
    if (Printable(event.character)) Insert(std::string(1, static_cast<char>(event.character)));
}

void TextLine::FocusGained(WidgetContext&, bool byTab) {
    focused_ = true;
    // Tabbing in selects everything, so typing replaces it.
    if (byTab) {
        anchor_ = 0;
        cursor_ = text_.size();
    }
}

void TextLine::FocusLost(WidgetContext& context) {
    focused_ = false;
    if (numeric_) SetNumber(Value());
    anchor_ = cursor_;
    context.queue.PushEntry(kEntryValue, Id(), static_cast<uint32_t>(Value()));
}

void TextLine::Insert(const std::string& text) {
    std::string kept;
    for (char c : text) {
        if (!Printable(static_cast<unsigned char>(c))) continue;
        if (filter_) c = filter_(c);
        if (numeric_ && !(c >= '0' && c <= '9') && !(c == '-' && minimum_ < 0)) c = 0;
        if (c != 0) kept.push_back(c);
    }
    EraseSelection();
    const std::size_t room = maxLength_ - std::min(maxLength_, text_.size());
    if (kept.size() > room) kept.resize(room);
    text_.insert(cursor_, kept);
    cursor_ += kept.size();
    anchor_ = cursor_;
}

void TextLine::EraseSelection() {
    const std::size_t start = SelectionStart();
    text_.erase(start, SelectionEnd() - start);
    cursor_ = anchor_ = start;
}

void TextLine::MoveTo(std::size_t position, bool extend) {
    cursor_ = std::min(position, text_.size());
    if (!extend) anchor_ = cursor_;
}

Gorb_Rect TextLine::TextArea() const {
    const int buttons = numeric_ ? kButtonWidth : 0;
    return {kPadding, 0, std::max(0, Rect().w - 2 * kPadding - buttons), Rect().h};
}

int TextLine::TextX(std::size_t position) const {
    const std::string prefix = text_.substr(0, position);
    return font_ != nullptr ? Painter::TextWidth(*font_, prefix) : static_cast<int>(position) * kPlainCharWidth;
}

std::size_t TextLine::PositionAt(int x) const {
    const int local = x - Rect().x - TextArea().x + scroll_;
    std::size_t best = 0;
    for (std::size_t i = 1; i <= text_.size(); ++i)
        if (std::abs(TextX(i) - local) < std::abs(TextX(best) - local)) best = i;
    return best;
}

void TextLine::Draw(Painter& painter, const DrawStyle& style) const {
    font_ = style.font;
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    const std::string kind(SkinTypeName(Kind()));
    const std::string state = !Enabled() ? "_D" : focused_ ? "_F" : "";
    if (!style.DrawItem(painter, "B" + kind + state, local)) {
        painter.Fill(local, style.Colour(focused_ ? ThemeColour::Background : ThemeColour::WindowBody));
        painter.Bevel(local, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      BevelStyle::Sunken);
    }

    // Keep the cursor inside the text area.
    const Gorb_Rect area = TextArea();
    const int cursorX = TextX(cursor_);
    if (cursorX - scroll_ > area.w - 1) scroll_ = cursorX - area.w + 1;
    if (cursorX < scroll_) scroll_ = cursorX;
    {
        Painter::Scope scope(painter, area);
        const int h = area.h - 4;
        if (focused_ && SelectionStart() != SelectionEnd()) {
            const int from = TextX(SelectionStart());
            const Gorb_Rect selection{from - scroll_, 2, TextX(SelectionEnd()) - from, h};
            if (!style.DrawItem(painter, "B" + kind + "_SEL", selection))
                painter.Fill(selection, style.Colour(ThemeColour::Selection));
        }
        if (style.font != nullptr) {
            const ThemeColour colour = Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled;
            painter.Text(*style.font, -scroll_, (area.h - style.font->Height()) / 2, text_, style.Colour(colour));
        }
        if (focused_) {
            const Gorb_Rect cursor{cursorX - scroll_, 2, 1, h};
            if (!style.DrawItem(painter, "S" + kind + "_CUR", cursor))
                painter.Fill(cursor, style.Colour(ThemeColour::Text));
        }
    }
    if (!numeric_) return;
    const int half = Rect().h / 2;
    const struct {
        int part;
        const char* name;
        Gorb_Rect rect;
    } buttons[] = {{kPartPlus, "_PLUS", {Rect().w - kButtonWidth, 0, kButtonWidth, half}},
                   {kPartMinus, "_MINUS", {Rect().w - kButtonWidth, half, kButtonWidth, Rect().h - half}}};
    for (const auto& button : buttons) {
        const bool down = buttonDown_ && stepping_ == button.part;
        const std::string look = "S" + kind + button.name + (!Enabled() ? "_D" : down ? "_P" : "");
        if (style.DrawItem(painter, look, button.rect)) continue;
        painter.Fill(button.rect, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(button.rect, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      down ? BevelStyle::Sunken : BevelStyle::Raised);
    }
}

}  // namespace sondrel
