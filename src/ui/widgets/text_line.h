#pragma once
// A one-line text entry: a cursor, a selection made with Shift and the arrow
// keys or by dragging the mouse, cut, copy and paste through a clipboard, a
// maximum length and a filter for typed characters. While it has the focus
// it takes every key but Escape. Each edit queues a text changed entry,
// Return queues a return entry, and when the focus leaves it the toolkit's
// queue gets a value entry with its id (and its number in numeric mode).
//
// In numeric mode the entry holds a whole number within a range and shows a
// plus and a minus button at its right end; holding one steps the number
// every tick, and letting go commits it.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "ui/widget.h"
#include "ui/widgets/text_edit.h"

namespace sondrel {

class TextLine : public Widget, public TextKeys {
public:
    // Hit test parts in numeric mode.
    static constexpr int kPartText = 0;
    static constexpr int kPartPlus = 1;
    static constexpr int kPartMinus = 2;
    static constexpr int kButtonWidth = 12;

    using Filter = TextEdit::Filter;

    TextLine(uint16_t id, const Gorb_Rect& rect, std::size_t maxLength = 255)
        : Widget(WidgetKind::TextLine, id, rect), edit_(maxLength, false) {}

    const std::string& Text() const { return edit_.Text(); }
    // Cut to the maximum length; the cursor goes to the end, the selection away.
    void SetText(std::string text);
    std::size_t MaxLength() const { return edit_.MaxLength(); }
    void SetClipboard(Clipboard* clipboard) { clipboard_ = clipboard; }
    void SetFilter(Filter filter) { edit_.SetFilter(std::move(filter)); }

    // Numeric mode with the number kept within [minimum, maximum].
    void SetNumeric(int32_t minimum, int32_t maximum);
    // A number shown in another form than plain digits (a speed in ticks and
    // fractions, say): show turns the number into its text, read a typed text
    // back into a number. Typing then also takes a decimal point.
    using NumberShow = std::function<std::string(int32_t)>;
    using NumberRead = std::function<int64_t(const std::string&)>;
    void SetNumberFormat(NumberShow show, NumberRead read);
    bool Numeric() const { return numeric_; }
    void SetNumber(int32_t number);
    // The number shown (clamped to the range), 0 outside numeric mode.
    int32_t Value() const override;

    std::size_t Cursor() const { return edit_.Cursor(); }
    // The selected characters are [SelectionStart, SelectionEnd); empty when equal.
    std::size_t SelectionStart() const { return edit_.SelectionStart(); }
    std::size_t SelectionEnd() const { return edit_.SelectionEnd(); }
    bool HasFocus() const { return focused_; }

    int HitTest(Point p) const override;
    void Press(WidgetContext& context, Point p, int part) override;
    void Release(WidgetContext& context, Point p, int part) override;
    void Drag(WidgetContext& context, Point p) override;
    void Repeat(WidgetContext& context) override;
    bool CommitsOnRelease() const override { return stepping_ != kNoPart; }
    bool KeyPress(WidgetContext& context, const Gorb_Event& event) override;
    void FocusGained(WidgetContext& context, bool byTab) override;
    void FocusLost(WidgetContext& context) override;
    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    void EditKey(WidgetContext& context, const Gorb_Event& event);
    void Step(int direction);
    // The text area in widget coordinates.
    Gorb_Rect TextArea() const;
    int TextX(std::size_t position) const;
    // The character boundary nearest window x.
    std::size_t PositionAt(int x) const;

    TextEdit edit_;
    Clipboard* clipboard_ = nullptr;
    bool focused_ = false;
    bool numeric_ = false;
    int32_t minimum_ = 0;
    int32_t maximum_ = 0;
    NumberShow show_;
    NumberRead read_;
    int stepping_ = kNoPart;   // the plus or minus part held since the last press
    bool buttonDown_ = false;  // ... and the pointer is still on it
    // The font and scroll of the last drawing, for placing mouse clicks.
    mutable const Gorb_Font* font_ = nullptr;
    mutable int scroll_ = 0;
};

}  // namespace sondrel
