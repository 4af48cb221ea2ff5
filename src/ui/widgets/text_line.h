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

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "ui/widget.h"

namespace sondrel {

class Gorb_Font;

// Where cut and copied text goes; the program hands in the platform's.
class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual std::string Text() const = 0;
    virtual void SetText(const std::string& text) = 0;
};

class TextLine : public Widget {
public:
    // Hit test parts in numeric mode.
    static constexpr int kPartText = 0;
    static constexpr int kPartPlus = 1;
    static constexpr int kPartMinus = 2;
    static constexpr int kButtonWidth = 12;

    // Key codes the entry edits with.
    static constexpr uint16_t kKeyBackspace = 0x0E;
    static constexpr uint16_t kKeyEscape = 0x01;
    static constexpr uint16_t kKeyEnter = 0x1C;
    static constexpr uint16_t kKeyPadEnter = 0x9C;
    static constexpr uint16_t kKeyHome = 0xC7;
    static constexpr uint16_t kKeyUp = 0xC8;
    static constexpr uint16_t kKeyLeft = 0xCB;
    static constexpr uint16_t kKeyRight = 0xCD;
    static constexpr uint16_t kKeyEnd = 0xCF;
    static constexpr uint16_t kKeyDown = 0xD0;
    static constexpr uint16_t kKeyDelete = 0xD3;
    static constexpr uint16_t kKeyA = 0x1E;
    static constexpr uint16_t kKeyC = 0x2E;
    static constexpr uint16_t kKeyV = 0x2F;
    static constexpr uint16_t kKeyX = 0x2D;

    // A typed or pasted character maps to what is stored, or to 0 to leave it out.
    using Filter = std::function<char(char)>;

    TextLine(uint16_t id, const Gorb_Rect& rect, std::size_t maxLength = 255)
        : Widget(WidgetKind::TextLine, id, rect), maxLength_(maxLength) {}

    const std::string& Text() const { return text_; }
    // Cut to the maximum length; the cursor goes to the end, the selection away.
    void SetText(std::string text);
    std::size_t MaxLength() const { return maxLength_; }
    void SetClipboard(Clipboard* clipboard) { clipboard_ = clipboard; }
    void SetFilter(Filter filter) { filter_ = std::move(filter); }

    // Numeric mode with the number kept within [minimum, maximum].
    void SetNumeric(int32_t minimum, int32_t maximum);
    bool Numeric() const { return numeric_; }
    void SetNumber(int32_t number);
    // The number shown (clamped to the range), 0 outside numeric mode.
    int32_t Value() const override;

    std::size_t Cursor() const { return cursor_; }
    // The selected characters are [SelectionStart, SelectionEnd); empty when equal.
    std::size_t SelectionStart() const { return std::min(anchor_, cursor_); }
    std::size_t SelectionEnd() const { return std::max(anchor_, cursor_); }
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
    // Inserts text at the cursor in place of the selection, filtered and cut to fit.
    void EditKey(WidgetContext& context, const Gorb_Event& event);
    void Insert(const std::string& text);
    void EraseSelection();
    // Moves the cursor; with extend the anchor stays, otherwise it follows.
    void MoveTo(std::size_t position, bool extend);
    void Step(int direction);
    // The text area in widget coordinates.
    Gorb_Rect TextArea() const;
    int TextX(std::size_t position) const;
    // The character boundary nearest window x.
    std::size_t PositionAt(int x) const;

    std::string text_;
    std::size_t maxLength_;
    std::size_t cursor_ = 0;
    std::size_t anchor_ = 0;
    Clipboard* clipboard_ = nullptr;
    Filter filter_;
    bool focused_ = false;
    bool numeric_ = false;
    int32_t minimum_ = 0;
    int32_t maximum_ = 0;
    int stepping_ = kNoPart;   // the plus or minus part held since the last press
    bool buttonDown_ = false;  // ... and the pointer is still on it
    // The font and scroll of the last drawing, for placing mouse clicks.
    mutable const Gorb_Font* font_ = nullptr;
    mutable int scroll_ = 0;
};

}  // namespace sondrel
