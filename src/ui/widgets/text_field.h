#pragma once
// A text of several lines (one string with '\n' between them) in a box that
// scrolls: the cursor is kept in view, the wheel scrolls it, and a text
// taller than the box gets a scroll bar inside its right edge. It edits like
// the one-line entry, with Up and Down keeping the cursor's column, Home and
// End going to the ends of the line (with Ctrl, of the text), PageUp and
// PageDown moving a box's height and Return starting a new line. Each edit
// queues a text field entry with the line count; when the focus leaves it
// the toolkit's queue gets a value entry. While focused it takes every key
// but Escape and Tab. A read-only field (for texts that are only to be read)
// can still be scrolled, selected and copied.

#include <cstddef>
#include <cstdint>
#include <string>

#include "ui/widget.h"
#include "ui/widgets/attached_scroll_bar.h"
#include "ui/widgets/text_edit.h"

namespace sondrel {

class TextField : public Widget, public TextKeys {
public:
    static constexpr int kPartText = 0;
    static constexpr int kPadding = 3;
    static constexpr int kPlainLineHeight = 12;  // before a font has been drawn with

    using Filter = TextEdit::Filter;

    TextField(uint16_t id, const Gorb_Rect& rect, std::size_t maxLength = 65535)
        : Widget(WidgetKind::TextField, id, rect), edit_(maxLength, true) {}

    const std::string& Text() const { return edit_.Text(); }
    // Cut to the maximum length; the cursor goes to the end, the view to the top.
    void SetText(std::string text);
    std::size_t MaxLength() const { return edit_.MaxLength(); }
    void SetClipboard(Clipboard* clipboard) { clipboard_ = clipboard; }
    void SetFilter(Filter filter) { edit_.SetFilter(std::move(filter)); }
    bool ReadOnly() const { return readOnly_; }
    void SetReadOnly(bool on) { readOnly_ = on; }
    void SetWheelLines(int lines) { wheelLines_ = lines; }

    std::size_t Cursor() const { return edit_.Cursor(); }
    std::size_t SelectionStart() const { return edit_.SelectionStart(); }
    std::size_t SelectionEnd() const { return edit_.SelectionEnd(); }
    bool HasFocus() const { return focused_; }

    int LineCount() const;
    // The line holding a character position.
    int LineOf(std::size_t position) const;
    // The first line shown.
    int Top() const { return top_; }
    void SetTop(int line);
    int VisibleLines() const;

    int HitTest(Point p) const override;
    void Press(WidgetContext& context, Point p, int part) override;
    void Release(WidgetContext& context, Point p, int part) override;
    void Drag(WidgetContext& context, Point p) override;
    void Repeat(WidgetContext& context) override;
    bool KeyPress(WidgetContext& context, const Gorb_Event& event) override;
    void FocusGained(WidgetContext& context, bool byTab) override;
    void FocusLost(WidgetContext& context) override;
    bool Wheel(WidgetContext& context, int delta) override;
    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    // Keys that move by lines; false for the rest.
    bool LineKey(uint16_t key, uint32_t modifiers);
    std::size_t LineStart(int line) const;
    std::size_t LineEnd(int line) const;
    // The position nearest x pixels into line.
    std::size_t PositionIn(int line, int x) const;
    // The cursor's x within its line.
    int CursorX() const;
    // The position under p (window coordinates); lines above or below the box count too.
    std::size_t PositionAt(Point p) const;
    void FollowCursor();
    int LineHeight() const;
    // The text area in widget coordinates, beside the scroll bar when it shows.
    Gorb_Rect TextArea() const;
    void FitBar() const;

    TextEdit edit_;
    Clipboard* clipboard_ = nullptr;
    bool readOnly_ = false;
    bool focused_ = false;
    int top_ = 0;
    int wheelLines_ = 3;
    int goalX_ = -1;  // where Up and Down aim within a line, -1 until the first of them
    mutable AttachedScrollBar bar_;
    // The font and sideways scroll of the last drawing, for placing the cursor and clicks.
    mutable const Gorb_Font* font_ = nullptr;
    mutable int scrollX_ = 0;
};

}  // namespace sondrel
