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

}  // namespace

void TextLine::SetText(std::string text) { edit_.SetText(std::move(text)); }

void TextLine::SetNumeric(int32_t minimum, int32_t maximum) {
    numeric_ = true;
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    SetNumber(Value());
}

void TextLine::SetNumberFormat(NumberShow show, NumberRead read) {
    const int32_t number = Value();
    show_ = std::move(show);
    read_ = std::move(read);
    SetNumber(number);
}

void TextLine::SetNumber(int32_t number) {
    number = std::clamp(number, minimum_, maximum_);
    SetText(show_ ? show_(number) : std::to_string(number));
}

int32_t TextLine::Value() const {
    if (!numeric_) return 0;
    int64_t number = 0;
    const std::string& text = edit_.Text();
    if (read_)
        number = read_(text);
    else
        std::from_chars(text.data(), text.data() + text.size(), number);
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
    edit_.MoveTo(PositionAt(p.x), (context.modifiers & kGorbShift) != 0);
}

void TextLine::Release(WidgetContext&, Point, int) { buttonDown_ = false; }

void TextLine::Drag(WidgetContext&, Point p) {
    if (stepping_ != kNoPart)
        buttonDown_ = HitTest(p) == stepping_;
    else
        edit_.MoveTo(PositionAt(p.x), true);
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
    const std::string before = Text();
    EditKey(context, event);
    if (Text() != before) context.queue.PushEntry(kEntryTextChanged, Id(), static_cast<uint32_t>(Text().size()));
    return true;
}

void TextLine::EditKey(WidgetContext& context, const Gorb_Event& event) {
    const bool shift = (context.modifiers & kGorbShift) != 0;
    switch (event.key) {
        case kKeyHome: edit_.MoveTo(0, shift); return;
        case kKeyEnd: edit_.MoveTo(Text().size(), shift); return;
        case kKeyUp:
        case kKeyDown:
            if (numeric_) Step(event.key == kKeyUp ? 1 : -1);
            return;
        default: break;
    }
    // Numeric mode keeps digits, and a minus sign when the range goes below zero.
    const auto numeric = [this](char c) {
        return (c >= '0' && c <= '9') || (c == '-' && minimum_ < 0) || (c == '.' && read_) ? c : '\0';
    };
    edit_.CommonKey(event.key, event.character, context.modifiers, clipboard_ ? clipboard_ : context.clipboard, false,
                    numeric_ ? TextEdit::Filter(numeric) : TextEdit::Filter{});
}

void TextLine::FocusGained(WidgetContext& context, bool byTab) {
    focused_ = true;
    AnnounceTabFocus(context, byTab);
    // Tabbing in selects everything, so typing replaces it.
    if (byTab) edit_.SelectAll();
}

void TextLine::FocusLost(WidgetContext& context) {
    focused_ = false;
    if (numeric_) SetNumber(Value());
    edit_.Deselect();
    context.queue.PushEntry(kEntryValue, Id(), static_cast<uint32_t>(Value()));
}

Gorb_Rect TextLine::TextArea() const {
    const int buttons = numeric_ ? kButtonWidth : 0;
    return {kPadding, 0, std::max(0, Rect().w - 2 * kPadding - buttons), Rect().h};
}

int TextLine::TextX(std::size_t position) const { return PrefixWidth(font_, Text(), position); }

std::size_t TextLine::PositionAt(int x) const {
    return NearestBoundary(font_, Text(), x - Rect().x - TextArea().x + scroll_);
}

void TextLine::Draw(Painter& painter, const DrawStyle& style) const {
    font_ = style.font;
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    DrawEntryBody(painter, style, Kind(), Enabled(), focused_, local);

    // Keep the cursor inside the text area.
    const Gorb_Rect area = TextArea();
    const int cursorX = TextX(Cursor());
    if (cursorX - scroll_ > area.w - 1) scroll_ = cursorX - area.w + 1;
    if (cursorX < scroll_) scroll_ = cursorX;
    {
        Painter::Scope scope(painter, area);
        const int h = area.h - 4;
        if (focused_ && SelectionStart() != SelectionEnd()) {
            const int from = TextX(SelectionStart());
            DrawEntrySelection(painter, style, Kind(), {from - scroll_, 2, TextX(SelectionEnd()) - from, h});
        }
        if (style.font != nullptr) {
            const ThemeColour colour = Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled;
            painter.Text(*style.font, -scroll_, Painter::TextTop(*style.font, 0, area.h), Text(), style.Colour(colour));
        }
        if (focused_) DrawEntryCursor(painter, style, Kind(), {cursorX - scroll_, 2, 1, h});
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
        const std::string look = "S" + std::string(SkinTypeName(Kind())) + button.name + (!Enabled() ? "_D" : down ? "_P" : "");
        if (style.DrawItem(painter, look, button.rect)) continue;
        painter.Fill(button.rect, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(button.rect, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      down ? BevelStyle::Sunken : BevelStyle::Raised);
    }
}

}  // namespace sondrel
