#include "ui/widgets/list_box.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "model/exception.h"
#include "ui/command_queue.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"
#include "ui/window.h"

namespace sondrel {

namespace {

// Splits a cell format around its one conversion: the text before it up to
// the '%', the conversion's flags, width and precision, its letter, and the
// text after.
struct Conversion {
    std::string head;
    std::string modifiers;
    char letter = 0;
    std::string tail;
};

Conversion SplitFormat(const std::string& format) {
    const auto fail = [&format](const char* why) {
        return ParseException("List column format \"" + format + "\": " + why);
    };
    Conversion out;
    bool found = false;
    for (size_t i = 0; i < format.size(); ++i) {
        std::string& part = found ? out.tail : out.head;
        part += format[i];
        if (format[i] != '%') continue;
        if (i + 1 < format.size() && format[i + 1] == '%') {
            part += format[++i];
            continue;
        }
        if (found) throw fail("more than one conversion");
        size_t j = i + 1;
        while (j < format.size() && std::strchr("-+ #0123456789.", format[j]) != nullptr) ++j;
        if (j >= format.size() || std::strchr("sSdDiuxXc", format[j]) == nullptr) throw fail("unsupported conversion");
        out.modifiers.assign(format, i + 1, j - i - 1);
        out.letter = format[j];
        found = true;
        i = j;
    }
    if (!found) throw fail("no conversion");
    return out;
}

// The width among a conversion's flags, width and precision; 0 for none.
int FieldWidth(const std::string& modifiers) {
    const size_t start = modifiers.find_first_not_of("-+ #0");
    return start == std::string::npos ? 0 : std::atoi(modifiers.c_str() + start);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
template <typename T>
std::string Printf(const std::string& format, T value) {
    const int size = std::snprintf(nullptr, 0, format.c_str(), value);
    if (size <= 0) return {};
    std::string out(static_cast<size_t>(size) + 1, '\0');
    std::snprintf(out.data(), out.size(), format.c_str(), value);
    out.resize(static_cast<size_t>(size));
    return out;
}
#pragma GCC diagnostic pop

}  // namespace

std::string FormatListCell(const std::string& format, const ListCell& cell) {
    const auto* text = std::get_if<std::string>(&cell);
    if (format.empty()) return text != nullptr ? *text : std::to_string(std::get<long long>(cell));
    const Conversion c = SplitFormat(format);
    if ((c.letter == 's' || c.letter == 'S') != (text != nullptr))
        throw ParseException("List column format \"" + format + "\" does not fit its cell");
    if (c.letter == 'S') {
        // A fixed field: the text left-aligned, padded and cut to the width.
        const std::string width = std::to_string(FieldWidth(c.modifiers));
        return Printf(c.head + (width == "0" ? "s" : "-" + width + "." + width + "s") + c.tail, text->c_str());
    }
    if (text != nullptr) return Printf(c.head + c.modifiers + "s" + c.tail, text->c_str());
    const char letter = c.letter == 'D' ? 'd' : c.letter;
    return Printf(c.head + c.modifiers + "ll" + letter + c.tail, std::get<long long>(cell));
}

namespace {

// A cell as drawn. Printf's padding lines columns up only in a fixed-width
// font; in ours a cell that is one right-justified conversion and nothing
// else is drawn without it instead: a number set against the column's right
// edge, so its digits line up, and a name against the left, where it is read.
struct PlacedCell {
    std::string text;
    TextAlign align = TextAlign::Left;
};

PlacedCell PlaceListCell(const std::string& format, const ListCell& cell) {
    std::string text = FormatListCell(format, cell);
    if (format.size() < 2 || format[0] != '%' || format[1] == '%') return {std::move(text)};
    const Conversion c = SplitFormat(format);
    const bool rightJustified = FieldWidth(c.modifiers) > 0 && c.modifiers.find('-') == std::string::npos;
    if (!c.tail.empty() || !rightJustified || c.letter == 'S' || c.letter == 'c') return {std::move(text)};
    if (const auto* name = std::get_if<std::string>(&cell)) return {*name};
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    return {std::move(text), TextAlign::Right};
}

}  // namespace

void ListBox::SetColumns(std::vector<ListColumn> columns) {
    for (const ListColumn& column : columns) {
        if (!column.format.empty()) SplitFormat(column.format);
    }
    columns_ = std::move(columns);
}

void ListBox::SetLines(std::vector<ListLine> lines) {
    lines_ = std::move(lines);
    selected_.assign(lines_.size(), false);
    top_ = 0;
    current_ = anchor_ = lastPressLine_ = -1;
}

int ListBox::HeaderHeight() const {
    const bool titled = std::any_of(columns_.begin(), columns_.end(), [](const ListColumn& c) { return !c.title.empty(); });
    return titled ? lineHeight_ : 0;
}

int ListBox::VisibleLines() const {
    return std::max(1, (Rect().h - 2 * kBorder - HeaderHeight()) / lineHeight_);
}

void ListBox::FitBar() const {
    const int header = HeaderHeight();
    const Gorb_Rect& r = Rect();
    bar_.Fit({r.x + r.w - kBorder - AttachedScrollBar::kWidth, r.y + kBorder + header, AttachedScrollBar::kWidth,
              r.h - 2 * kBorder - header},
             LineCount(), VisibleLines(), top_, Enabled());
}

void ListBox::SetTop(int line) { top_ = std::clamp(line, 0, std::max(0, LineCount() - VisibleLines())); }

void ListBox::ScrollTo(int line) {
    if (line < top_) SetTop(line);
    else if (line >= top_ + VisibleLines()) SetTop(line - VisibleLines() + 1);
}

void ListBox::Select(int line) {
    std::fill(selected_.begin(), selected_.end(), false);
    current_ = anchor_ = (line >= 0 && line < LineCount()) ? line : -1;
    if (current_ < 0) return;
    selected_[current_] = true;
    ScrollTo(current_);
}

void ListBox::SelectRange(int line) {
    if (anchor_ < 0) {
        Select(line);
        return;
    }
    std::fill(selected_.begin(), selected_.end(), false);
    for (int i = std::min(anchor_, line); i <= std::max(anchor_, line); ++i) selected_[i] = true;
    current_ = line;
    ScrollTo(line);
}

int ListBox::LineAt(Point p) const {
    const int y = p.y - Rect().y - kBorder - HeaderHeight();
    if (!Contains(Rect(), p) || y < 0 || y >= VisibleLines() * lineHeight_) return -1;
    const int line = top_ + y / lineHeight_;
    return line < LineCount() ? line : -1;
}

// Every selection queues a list line entry; a double click queues an
// activation after it.
void ListBox::Notify(WidgetContext& context, bool activate) const {
    context.queue.PushEntry(kEntryListLine, Id(), static_cast<uint32_t>(current_));
    if (activate) context.queue.PushEntry(kEntryListActivate, Id(), static_cast<uint32_t>(current_));
}

int ListBox::HitTest(Point p) const {
    if (!Contains(Rect(), p)) return kNoPart;
    FitBar();
    const int part = bar_.HitTest(p);
    return part != kNoPart ? part : 0;
}

void ListBox::Press(WidgetContext& context, Point p, int part) {
    if (AttachedScrollBar::OnBar(part)) {
        FitBar();
        bar_.Press(context, p, part);
        SetTop(bar_.Top());
        return;
    }
    const int line = LineAt(p);
    if (line < 0) return;
    const bool shift = extended_ && (context.modifiers & kGorbShift) != 0;
    const bool ctrl = extended_ && (context.modifiers & kGorbCtrl) != 0;
    if (ctrl) {
        selected_[line] = !selected_[line];
        current_ = anchor_ = line;
    } else if (shift) {
        SelectRange(line);
    } else {
        Select(line);
    }
    // A third press starts a new pair rather than making another double click.
    const bool twice = line == lastPressLine_ && context.now - lastPressTime_ <= kDoubleClickSeconds;
    lastPressLine_ = twice ? -1 : line;
    lastPressTime_ = context.now;
    Notify(context, twice);
}

void ListBox::Drag(WidgetContext& context, Point p) {
    bar_.Drag(context, p);
    if (bar_.Held()) SetTop(bar_.Top());
}

void ListBox::Repeat(WidgetContext& context) {
    bar_.Repeat(context);
    if (bar_.Held()) SetTop(bar_.Top());
}

void ListBox::Release(WidgetContext& context, Point p, int) { bar_.Release(context, p); }

bool ListBox::KeyPress(WidgetContext& context, const Gorb_Event& event) {
    if (LineCount() == 0) return false;
    const int page = VisibleLines();
    int line = current_ < 0 ? top_ : current_;
    switch (event.key) {
        case kKeyUp: line -= 1; break;
        case kKeyDown: line += current_ < 0 ? 0 : 1; break;
        case kKeyPageUp: line -= page; break;
        case kKeyPageDown: line += page; break;
        case kKeyHome: line = 0; break;
        case kKeyEnd: line = LineCount() - 1; break;
        default: return false;
    }
    line = std::clamp(line, 0, LineCount() - 1);
    if (extended_ && (context.modifiers & kGorbShift) != 0) SelectRange(line);
    else Select(line);
    Notify(context, false);
    return true;
}

bool ListBox::Wheel(WidgetContext& context, int delta) {
    // Turning the wheel away from the user scrolls toward the first line.
    SetTop(top_ - delta * wheelLines_);
    context.queue.PushEntry(delta < 0 ? kEntryWheelWidgetDown : kEntryWheelWidgetUp, Id(), 0);
    return true;
}

void ListBox::DrawHeader(Painter& painter, const DrawStyle& style, int width) const {
    int x = kBorder;
    for (const ListColumn& column : columns_) {
        const Gorb_Rect cell{x, kBorder, std::min(column.width, width - x), lineHeight_};
        if (cell.w <= 0) break;
        if (!style.DrawItem(painter, "HGT_LIST_COLUMN", cell)) {
            painter.Fill(cell, style.Colour(ThemeColour::WindowBody));
            painter.Bevel(cell, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark));
        }
        if (style.font != nullptr)
            painter.TextIn(*style.font, {cell.x + 2, cell.y, cell.w - 4, cell.h}, column.title,
                           style.Colour(ThemeColour::Text), TextAlign::Left, TextFit::Ellipsis);
        x += column.width;
    }
}

void ListBox::Draw(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect local{0, 0, Rect().w, Rect().h};
    const bool focused = Owner() != nullptr && Owner()->Focus() == this;
    // Without the skin's frame the theme's list colours are unset too: the
    // plain look puts the lines on the window body and marks the selection
    // in the title bar's colours.
    const bool skinned = style.DrawItem(painter, focused ? "BGT_LIST_F" : "BGT_LIST", local);
    if (!skinned) {
        painter.Fill(local, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(local, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                      BevelStyle::Sunken);
    }
    FitBar();
    const int inner = local.w - kBorder - bar_.Width();
    if (HeaderHeight() > 0) DrawHeader(painter, style, inner);
    const bool active = Owner() == nullptr || Owner()->Active();
    const ThemeColour selection = !skinned ? (active ? ThemeColour::TitleActive : ThemeColour::TitleInactive)
                                  : active ? ThemeColour::Selection
                                           : ThemeColour::SelectionInactive;
    const ThemeColour selectedText = skinned ? ThemeColour::TextSelected : ThemeColour::TitleText;
    const ThemeColour odd = skinned ? ThemeColour::ListLineOdd : ThemeColour::WindowBody;
    const ThemeColour even = skinned ? ThemeColour::ListLineEven : ThemeColour::WindowBody;
    const ThemeColour text = !Enabled() ? ThemeColour::TextDisabled : ThemeColour::Text;
    const int last = std::min(LineCount(), top_ + VisibleLines());
    for (int line = top_; line < last; ++line) {
        const Gorb_Rect row{kBorder, kBorder + HeaderHeight() + (line - top_) * lineHeight_, inner - kBorder, lineHeight_};
        const ThemeColour body = selected_[line] ? selection : line % 2 ? even : odd;
        painter.Fill(row, style.Colour(body));
        if (focused && line == current_) painter.Marker(row, style.Colour(ThemeColour::FocusRing), MarkerStyle::Dotted);
        if (style.font == nullptr) continue;
        int x = row.x;
        const ListLine& cells = lines_[line];
        for (size_t c = 0; c < columns_.size() && c < cells.size() && x < inner; ++c) {
            const Gorb_Rect cell{x + 2, row.y, std::min(columns_[c].width, inner - x) - 4, row.h};
            const PlacedCell placed = PlaceListCell(columns_[c].format, cells[c]);
            painter.TextIn(*style.font, cell, placed.text, style.Colour(selected_[line] ? selectedText : text),
                           placed.align, TextFit::Ellipsis);
            x += columns_[c].width;
        }
    }
    bar_.Draw(painter, style, Rect());
}

}  // namespace sondrel
