#include "ui/widgets/text_field.h"

#include <algorithm>
#include <string_view>

#include "ui/command_queue.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"

namespace sondrel {

void TextField::SetText(std::string text) {
    edit_.SetText(std::move(text));
    edit_.MoveTo(0, false);
    top_ = 0;
    goalX_ = -1;
    scrollX_ = 0;
}

int TextField::LineCount() const { return static_cast<int>(std::count(Text().begin(), Text().end(), '\n')) + 1; }

int TextField::LineOf(std::size_t position) const {
    position = std::min(position, Text().size());
    return static_cast<int>(std::count(Text().begin(), Text().begin() + static_cast<std::ptrdiff_t>(position), '\n'));
}

std::size_t TextField::LineStart(int line) const {
    std::size_t start = 0;
    for (int i = 0; i < line; ++i) {
        const std::size_t next = Text().find('\n', start);
        if (next == std::string::npos) return Text().size();
        start = next + 1;
    }
    return start;
}

std::size_t TextField::LineEnd(int line) const {
    const std::size_t end = Text().find('\n', LineStart(line));
    return end == std::string::npos ? Text().size() : end;
}

std::size_t TextField::PositionIn(int line, int x) const {
    const std::size_t start = LineStart(line);
    return start + NearestBoundary(font_, std::string_view(Text()).substr(start, LineEnd(line) - start), x);
}

int TextField::CursorX() const {
    const std::size_t start = LineStart(LineOf(Cursor()));
    return PrefixWidth(font_, std::string_view(Text()).substr(start), Cursor() - start);
}

int TextField::LineHeight() const {
    return font_ != nullptr ? std::max(1, Painter::TextRowHeight(*font_)) : kPlainLineHeight;
}

int TextField::VisibleLines() const { return std::max(1, (Rect().h - 2 * kPadding) / LineHeight()); }

void TextField::SetTop(int line) { top_ = std::clamp(line, 0, std::max(0, LineCount() - VisibleLines())); }

Gorb_Rect TextField::TextArea() const {
    const int bar = LineCount() > VisibleLines() ? AttachedScrollBar::kWidth : 0;
    return {kPadding, kPadding, std::max(0, Rect().w - 2 * kPadding - bar), std::max(0, Rect().h - 2 * kPadding)};
}

void TextField::FitBar() const {
    const Gorb_Rect& r = Rect();
    bar_.Fit({r.x + r.w - 2 - AttachedScrollBar::kWidth, r.y + 2, AttachedScrollBar::kWidth, r.h - 4}, LineCount(),
             VisibleLines(), top_, Enabled());
}

std::size_t TextField::PositionAt(Point p) const {
    const Gorb_Rect area = TextArea();
    const int row = p.y - Rect().y - area.y;
    const int height = LineHeight();
    const int line = top_ + (row >= 0 ? row / height : -((height - 1 - row) / height));
    return PositionIn(std::clamp(line, 0, LineCount() - 1), p.x - Rect().x - area.x + scrollX_);
}

void TextField::FollowCursor() {
    const int line = LineOf(Cursor());
    if (line < top_) SetTop(line);
    else if (line >= top_ + VisibleLines()) SetTop(line - VisibleLines() + 1);
}

int TextField::HitTest(Point p) const {
    if (!Contains(Rect(), p)) return kNoPart;
    FitBar();
    const int part = bar_.HitTest(p);
    return part != kNoPart ? part : kPartText;
}

void TextField::Press(WidgetContext& context, Point p, int part) {
    context.mouseMode = MouseMode::WidgetHeld;
    if (AttachedScrollBar::OnBar(part)) {
        FitBar();
        bar_.Press(context, p, part);
        SetTop(bar_.Top());
        return;
    }
    goalX_ = -1;
    edit_.MoveTo(PositionAt(p), (context.modifiers & kGorbShift) != 0);
    FollowCursor();
}

void TextField::Drag(WidgetContext& context, Point p) {
    if (bar_.Held()) {
        bar_.Drag(context, p);
        SetTop(bar_.Top());
        return;
    }
    // Dragging past the top or bottom edge scrolls on as the pointer moves.
    edit_.MoveTo(PositionAt(p), true);
    FollowCursor();
}

void TextField::Repeat(WidgetContext& context) {
    bar_.Repeat(context);
    if (bar_.Held()) SetTop(bar_.Top());
}

void TextField::Release(WidgetContext& context, Point p, int) { bar_.Release(context, p); }

bool TextField::LineKey(uint16_t key, uint32_t modifiers) {
    const bool shift = (modifiers & kGorbShift) != 0;
    const bool ctrl = (modifiers & kGorbCtrl) != 0;
    const int line = LineOf(Cursor());
    int delta = 0;
    switch (key) {
        case kKeyHome:
        case kKeyEnd:
            goalX_ = -1;
            if (ctrl) edit_.MoveTo(key == kKeyHome ? 0 : Text().size(), shift);
            else edit_.MoveTo(key == kKeyHome ? LineStart(line) : LineEnd(line), shift);
            return true;
        case kKeyUp: delta = -1; break;
        case kKeyDown: delta = 1; break;
        case kKeyPageUp: delta = -VisibleLines(); break;
        case kKeyPageDown: delta = VisibleLines(); break;
        default: return false;
    }
    if (goalX_ < 0) goalX_ = CursorX();
    const int target = line + delta;
    // Past the first or last line the cursor goes to that end of the text.
    const std::size_t position = target < 0 ? 0 : target >= LineCount() ? Text().size() : PositionIn(target, goalX_);
    edit_.MoveTo(position, shift);
    if (key == kKeyPageUp || key == kKeyPageDown) SetTop(top_ + delta);
    return true;
}

bool TextField::KeyPress(WidgetContext& context, const Gorb_Event& event) {
    if (!Enabled() || event.key == kKeyEscape || event.key == kKeyTab) return false;
    const std::string before = readOnly_ ? std::string() : Text();
    if (!LineKey(event.key, context.modifiers)) {
        goalX_ = -1;
        if (event.key == kKeyEnter || event.key == kKeyPadEnter) {
            if (!readOnly_) edit_.Insert("\n");
        } else {
            edit_.CommonKey(event.key, event.character, context.modifiers, clipboard_ ? clipboard_ : context.clipboard, readOnly_);
        }
    }
    FollowCursor();
    if (!readOnly_ && Text() != before)
        context.queue.PushEntry(kEntryTextField, Id(), static_cast<uint32_t>(LineCount()));
    return true;
}

void TextField::FocusGained(WidgetContext& context, bool byTab) {
    focused_ = true;
    AnnounceTabFocus(context, byTab);
}

void TextField::FocusLost(WidgetContext& context) {
    focused_ = false;
    edit_.Deselect();
    context.queue.PushEntry(kEntryValue, Id(), 0);
}

bool TextField::Wheel(WidgetContext& context, int delta) {
    // Turning the wheel away from the user scrolls toward the first line.
    SetTop(top_ - delta * wheelLines_);
    context.queue.PushEntry(delta < 0 ? kEntryWheelWidgetDown : kEntryWheelWidgetUp, Id(), 0);
    return true;
}

void TextField::Draw(Painter& painter, const DrawStyle& style) const {
    font_ = style.font;
    DrawEntryBody(painter, style, Kind(), Enabled(), focused_, {0, 0, Rect().w, Rect().h});
    FitBar();
    const Gorb_Rect area = TextArea();
    // Keep the cursor's column inside the text area.
    const int cursorX = CursorX();
    if (focused_ && cursorX - scrollX_ > area.w - 1) scrollX_ = cursorX - area.w + 1;
    if (cursorX < scrollX_) scrollX_ = cursorX;
    {
        Painter::Scope scope(painter, area);
        const std::string_view text = Text();
        const int height = LineHeight();
        const int top = std::min(top_, std::max(0, LineCount() - VisibleLines()));
        const uint32_t colour = style.Colour(Enabled() ? ThemeColour::Text : ThemeColour::TextDisabled);
        const std::size_t selStart = SelectionStart();
        const std::size_t selEnd = SelectionEnd();
        std::size_t start = LineStart(top);
        for (int row = 0; row < VisibleLines() && start <= text.size(); ++row) {
            const std::size_t end = std::min(text.find('\n', start), text.size());
            const std::string_view line = text.substr(start, end - start);
            const int y = row * height;
            // A selection that runs on past the line's end shows a little past its last character.
            if (focused_ && selStart < selEnd && selStart <= end && selEnd > start) {
                const int from = PrefixWidth(font_, line, std::max(selStart, start) - start);
                const int to = PrefixWidth(font_, line, std::min(selEnd, end) - start) + (selEnd > end ? 4 : 0);
                DrawEntrySelection(painter, style, Kind(), {from - scrollX_, y, to - from, height});
            }
            if (style.font != nullptr)
                painter.Text(*style.font, -scrollX_, Painter::TextTop(*style.font, y, height), std::string(line), colour);
            if (focused_ && !readOnly_ && Cursor() >= start && Cursor() <= end)
                DrawEntryCursor(painter, style, Kind(), {PrefixWidth(font_, line, Cursor() - start) - scrollX_, y, 1, height});
            start = end + 1;
        }
    }
    bar_.Draw(painter, style, Rect());
}

}  // namespace sondrel
