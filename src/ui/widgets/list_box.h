#pragma once
// A list of lines in columns. Each column has a width, a printf-style format
// for its cells and an optional title; titles give the list a header row.
// Lines can be selected one at a time or, in extended mode, several: Shift
// selects the range from the last clicked line, Ctrl toggles one line. Two
// presses on the same line within kDoubleClickSeconds make a double click.
// The wheel scrolls it; when focused, Up, Down, PageUp, PageDown, Home and
// End move the current line. Every selection queues a list line entry.
// While there are more lines than fit, a scroll bar inside the right edge
// scrolls them too, and the columns give up its width.

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "ui/widget.h"
#include "ui/widgets/attached_scroll_bar.h"

namespace sondrel {

struct ListColumn {
    int width = 0;
    // One conversion: %s for text cells, d/i/u/x/X/c for numbers; empty for
    // the plain value. %S is a text in a fixed field ("%20S": exactly 20
    // characters, cut or padded on the right); %D is a decimal like %d.
    std::string format;
    std::string title;
};

using ListCell = std::variant<std::string, long long>;
using ListLine = std::vector<ListCell>;

// Extended key codes of the navigation keys.
constexpr uint16_t kKeyHome = 0xC7;
constexpr uint16_t kKeyUp = 0xC8;
constexpr uint16_t kKeyPageUp = 0xC9;
constexpr uint16_t kKeyEnd = 0xCF;
constexpr uint16_t kKeyDown = 0xD0;
constexpr uint16_t kKeyPageDown = 0xD1;

// The cell as its column's format writes it; throws ParseException when the
// format does not hold exactly one conversion that fits the cell.
std::string FormatListCell(const std::string& format, const ListCell& cell);

class ListBox : public Widget {
public:
    static constexpr double kDoubleClickSeconds = 0.4;
    static constexpr int kBorder = 2;
    // A row of the shipped skin's text with every glyph whole.
    static constexpr int kDefaultLineHeight = 15;

    ListBox(uint16_t id, const Gorb_Rect& rect) : Widget(WidgetKind::List, id, rect) {}

    // Checks every format now, so a bad one fails here rather than when drawn.
    void SetColumns(std::vector<ListColumn> columns);
    const std::vector<ListColumn>& Columns() const { return columns_; }
    // Clears the selection and scrolls back to the top.
    void SetLines(std::vector<ListLine> lines);
    int LineCount() const { return static_cast<int>(lines_.size()); }
    void SetLineHeight(int pixels) { lineHeight_ = pixels > 0 ? pixels : 1; }
    void SetExtended(bool on) { extended_ = on; }
    void SetWheelLines(int lines) { wheelLines_ = lines; }

    int Top() const { return top_; }
    void SetTop(int line);
    int VisibleLines() const;
    // The current line (the last one clicked or moved to), -1 for none.
    int Current() const { return current_; }
    bool Selected(int line) const { return line >= 0 && line < LineCount() && selected_[line]; }
    // Selects only line (-1: nothing) and makes it current and visible.
    void Select(int line);
    // Selects or deselects one line, leaving the others as they are.
    void SetSelected(int line, bool on) {
        if (line >= 0 && line < LineCount()) selected_[line] = on;
    }
    // The line under p (window coordinates), -1 for none.
    int LineAt(Point p) const;

    int32_t Value() const override { return current_; }
    void FocusGained(WidgetContext& context, bool byTab) override { AnnounceTabFocus(context, byTab); }
    int HitTest(Point p) const override;
    void Press(WidgetContext& context, Point p, int part) override;
    void Drag(WidgetContext& context, Point p) override;
    void Repeat(WidgetContext& context) override;
    void Release(WidgetContext& context, Point p, int part) override;
    bool KeyPress(WidgetContext& context, const Gorb_Event& event) override;
    bool Wheel(WidgetContext& context, int delta) override;
    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    int HeaderHeight() const;
    // Lays the scroll bar out for the lines and the top line as they are now.
    void FitBar() const;
    void ScrollTo(int line);
    // Selects the lines from the anchor to line, or only line without an anchor.
    void SelectRange(int line);
    void Notify(WidgetContext& context, bool activate) const;
    void DrawHeader(Painter& painter, const DrawStyle& style, int width) const;

    std::vector<ListColumn> columns_;
    std::vector<ListLine> lines_;
    std::vector<bool> selected_;
    int lineHeight_ = kDefaultLineHeight;
    int wheelLines_ = 3;
    bool extended_ = false;
    int top_ = 0;
    int current_ = -1;
    int anchor_ = -1;
    int lastPressLine_ = -1;
    double lastPressTime_ = 0;
    mutable AttachedScrollBar bar_;
};

}  // namespace sondrel
