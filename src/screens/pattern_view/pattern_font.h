#pragma once
// The pattern grid's bitmap font: 8 x 9 glyphs of characters 32..127 in two
// colours (normal and dimmed), read once from the font sheet "modfont.png".
// The sheet is 256 pixels wide, 32 glyphs a row, and holds each colour as
// three glyph rows: the glyph of ch in colour a lies at x = (ch mod 32) * 8,
// y = ((ch - 32) div 32 + 3a) * 9. The character '&' is drawn as a 4-pixel
// gap rather than a glyph.

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "platform/gorb.h"

namespace sondrel {

class PatternFont {
public:
    static constexpr int kGlyphWidth = 8;
    static constexpr int kGlyphHeight = 9;
    static constexpr int kColours = 2;
    static constexpr const char* kFileName = "modfont.png";

    // Throws FileIOException when the sheet can't be read and ParseException
    // when it is too small to hold both colours.
    explicit PatternFont(const std::filesystem::path& sheet);

    // Whole glyph cells, black pixels included; a gap clears a 4 x 9 cell to
    // black. colours holds the colour of each character (null: all normal).
    void DrawOpaque(Gorb_Surface& target, int x, int y, std::string_view text, const uint8_t* colours) const;
    // Only the lit pixels of normal-coloured glyphs; a gap only advances.
    void DrawTransparent(Gorb_Surface& target, int x, int y, std::string_view text) const;

private:
    const uint16_t* GlyphRow(char ch, int colour, int row) const;

    int width_ = 0;
    std::vector<uint16_t> pixels_;  // the sheet in RGB565, row by row
};

}  // namespace sondrel
