#pragma once
// The text of one pattern grid row and the colour of each of its characters.
// A row is 107 characters: the line number, four channel blocks of 24
// characters (channel c starts at 24c) and the command column at 101. The
// character '&' is no glyph but a 4-pixel gap; every other character is 8
// pixels wide, so the line number column is 28 pixels wide with its left
// margin of 4 and each channel block exactly 168.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "model/module.h"

namespace sondrel {

constexpr int kRowTextLength = 107;
constexpr char kRowGap = '&';
constexpr int kRowGapWidth = 4;
constexpr int kGlyphCellWidth = 8;

// Character colours of a row.
enum RowColour : uint8_t { kRowNormal = 0, kRowDimmed = 1 };

// Where the fields of a row start.
constexpr int kChannelBlockChars = 24;
constexpr int kNoteField = 5;            // + 24c: note name, 3 characters
constexpr int kDetuneField = 9;          // + 24c: sign and two characters
constexpr int kInstrumentField = 13;     // + 24c: "I" and two characters
constexpr int kVolumeField = 17;         // + 24c: "V" and two characters
constexpr int kChannelCommandField = 21; // + 24c: two letters, a blank, then the parameter
constexpr int kChannelParamField = 24;   // + 24c: three characters
constexpr int kCommandField = 101;       // six characters

struct RowText {
    std::string text;                              // kRowTextLength characters
    std::array<uint8_t, kRowTextLength> colours{}; // RowColour of each character
};

// Line number `line` of a pattern as the grid shows it.
RowText PatternRowText(const PatternLine& cells, int line);
// A row past the pattern's end: blanks only.
RowText BlankRowText();

// The pixel offset of character `position` in every pattern row (the
// template's gaps; a blank row has the same fields, only no gaps).
int RowPixelX(int position);

// A cursor column's cells in pixels from where a row's text starts: the
// note with its detune (3c), instrument and volume (3c + 1), the channel
// command (3c + 2) and the command column (12), each with half a gap of room
// either side so that neighbouring columns meet.
struct PixelSpan {
    int x = 0;
    int w = 0;
};
PixelSpan CursorColumnSpan(int column);

// The pixel offset of character `position` of text from where the text starts.
int TextPixelX(std::string_view text, int position);
int TextPixelWidth(std::string_view text);

}  // namespace sondrel
