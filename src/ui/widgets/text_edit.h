#pragma once
// What the one-line entry and the multi-line field share: the text with a
// cursor and a selection anchor, a maximum length, a filter for typed and
// pasted characters, the editing keys that work alike on one line and on
// many, and the pieces of drawing that look the same.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "ui/widget.h"

namespace sondrel {

class Painter;

// Where cut and copied text goes; the program hands in the platform's.
class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual std::string Text() const = 0;
    virtual void SetText(const std::string& text) = 0;
};

// Key codes the text entries edit with.
struct TextKeys {
    static constexpr uint16_t kKeyBackspace = 0x0E;
    static constexpr uint16_t kKeyEscape = 0x01;
    static constexpr uint16_t kKeyEnter = 0x1C;
    static constexpr uint16_t kKeyPadEnter = 0x9C;
    static constexpr uint16_t kKeyHome = 0xC7;
    static constexpr uint16_t kKeyUp = 0xC8;
    static constexpr uint16_t kKeyPageUp = 0xC9;
    static constexpr uint16_t kKeyLeft = 0xCB;
    static constexpr uint16_t kKeyRight = 0xCD;
    static constexpr uint16_t kKeyEnd = 0xCF;
    static constexpr uint16_t kKeyDown = 0xD0;
    static constexpr uint16_t kKeyPageDown = 0xD1;
    static constexpr uint16_t kKeyDelete = 0xD3;
    static constexpr uint16_t kKeyA = 0x1E;
    static constexpr uint16_t kKeyC = 0x2E;
    static constexpr uint16_t kKeyV = 0x2F;
    static constexpr uint16_t kKeyX = 0x2D;
};

class TextEdit {
public:
    // A typed or pasted character maps to what is stored, or to 0 to leave it out.
    using Filter = std::function<char(char)>;

    // multiline: line breaks are kept in the text.
    TextEdit(std::size_t maxLength, bool multiline) : maxLength_(maxLength), multiline_(multiline) {}

    const std::string& Text() const { return text_; }
    // Cut to the maximum length; the cursor goes to the end, the selection away.
    void SetText(std::string text);
    std::size_t MaxLength() const { return maxLength_; }
    void SetFilter(Filter filter) { filter_ = std::move(filter); }

    std::size_t Cursor() const { return cursor_; }
    // The selected characters are [SelectionStart, SelectionEnd); empty when equal.
    std::size_t SelectionStart() const { return std::min(anchor_, cursor_); }
    std::size_t SelectionEnd() const { return std::max(anchor_, cursor_); }
    // Moves the cursor; with extend the anchor stays, otherwise it follows.
    void MoveTo(std::size_t position, bool extend);
    void SelectAll();
    void Deselect() { anchor_ = cursor_; }

    // Puts text at the cursor in place of the selection. Characters that
    // cannot be shown, and those the filter or then accept maps to 0, are left
    // out; what is left is cut to the room below the maximum length.
    void Insert(const std::string& text, const Filter& accept = {});
    void EraseSelection();

    // Left, Right, Backspace, Delete, Ctrl+A/C/X/V and typed characters; a
    // read-only text refuses the edits but moves, selects and copies. False
    // for any other key.
    bool CommonKey(uint16_t key, uint16_t character, uint32_t modifiers, Clipboard* clipboard, bool readOnly,
                   const Filter& accept = {});

private:
    std::string text_;
    std::size_t maxLength_;
    bool multiline_;
    std::size_t cursor_ = 0;
    std::size_t anchor_ = 0;
    Filter filter_;
};

// The width of text's first length characters in font; 8 pixels a character
// before a font has been drawn with.
int PrefixWidth(const Gorb_Font* font, std::string_view text, std::size_t length);
// The character boundary of text nearest x pixels from its start.
std::size_t NearestBoundary(const Gorb_Font* font, std::string_view text, int x);

// The entry's body from the skin item "B" + its type name + _D (disabled) or
// _F (focused), or a sunken plain box.
void DrawEntryBody(Painter& painter, const DrawStyle& style, WidgetKind kind, bool enabled, bool focused,
                   const Gorb_Rect& rect);
// A selection band (the skin's _SEL item) and a cursor (its _CUR item), with
// plain colours when the skin lacks them.
void DrawEntrySelection(Painter& painter, const DrawStyle& style, WidgetKind kind, const Gorb_Rect& rect);
void DrawEntryCursor(Painter& painter, const DrawStyle& style, WidgetKind kind, const Gorb_Rect& rect);

}  // namespace sondrel
