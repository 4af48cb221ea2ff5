// make-font: draws the pattern grid's font sheet, an 8 x 9 bitmap font of
// characters 32..127, from the glyph pictures below.
//
// usage: make-font FILE.png   ("make font" writes data/modfont.png)
//
// The sheet is 256 pixels wide: 32 glyphs a row, three glyph rows for the 96
// characters, and that block once for each colour (normal, then dimmed) on
// black. The glyph of character ch in colour a lies at x = (ch mod 32) * 8,
// y = ((ch - 32) div 32 + 3a) * 9.
//
// Glyphs are bold (two-pixel uprights, one-pixel bars): capitals and digits
// stand on rows 0..6, lower case has its body on rows 2..6, and descenders use
// rows 7 and 8. Most glyphs are six pixels wide and leave two blank columns
// to the next; M, W, m, w and a few signs take seven. Zero is slashed so that
// it never reads as O.

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "png_writer.h"

namespace {

constexpr int kGlyphWidth = 8;
constexpr int kGlyphHeight = 9;
constexpr int kFirstChar = 32;
constexpr int kChars = 96;
constexpr int kPerRow = 32;
constexpr int kSheetWidth = kPerRow * kGlyphWidth;
constexpr int kRowsPerColour = kChars / kPerRow;

// Normal and dimmed, as 0xRRGGBB.
constexpr std::array<uint32_t, 2> kColours = {0xE8ECF2, 0x5A6478};

struct Glyph {
    char ch;
    // Rows top to bottom, '#' for a lit pixel; missing rows are blank.
    std::array<const char*, kGlyphHeight> rows;
};

// clang-format off
const Glyph kGlyphs[] = {
    {' ', {}},
    {'!', {"  ##", "  ##", "  ##", "  ##", "  ##", "", "  ##"}},
    {'"', {"## ##", "## ##", " #  #"}},
    {'#', {" ## ##", " ## ##", "#######", " ## ##", "#######", " ## ##", " ## ##"}},
    {'$', {"  ##", " #####", "##", " ####", "    ##", "#####", "  ##"}},
    {'%', {"##   #", "##  ##", "   ##", "  ##", " ##", "##  ##", "#   ##"}},
    {'&', {"  ###", " ## ##", "  ###", " ### ##", "## ###", "##  ##", " ### ##"}},
    {'\'', {"  ##", "  ##", " ##"}},
    {'(', {"   ##", "  ##", " ##", " ##", " ##", "  ##", "   ##"}},
    {')', {" ##", "  ##", "   ##", "   ##", "   ##", "  ##", " ##"}},
    {'*', {"", "##  ##", " ####", "######", " ####", "##  ##"}},
    {'+', {"", "  ##", "  ##", "######", "  ##", "  ##"}},
    {',', {"", "", "", "", "", "  ##", "  ##", " ##"}},
    {'-', {"", "", "", "######"}},
    {'.', {"", "", "", "", "", "  ##", "  ##"}},
    {'/', {"    ##", "    ##", "   ##", "  ##", " ##", "##", "##"}},
    {'0', {" ####", "##  ##", "## ###", "######", "### ##", "##  ##", " ####"}},
    {'1', {"  ##", " ###", "  ##", "  ##", "  ##", "  ##", "######"}},
    {'2', {" ####", "##  ##", "    ##", "  ###", " ##", "##", "######"}},
    {'3', {" ####", "##  ##", "    ##", "  ###", "    ##", "##  ##", " ####"}},
    {'4', {"   ###", "  ####", " ## ##", "##  ##", "######", "    ##", "    ##"}},
    {'5', {"######", "##", "#####", "    ##", "    ##", "##  ##", " ####"}},
    {'6', {"  ###", " ##", "##", "#####", "##  ##", "##  ##", " ####"}},
    {'7', {"######", "    ##", "   ##", "  ##", "  ##", "  ##", "  ##"}},
    {'8', {" ####", "##  ##", "##  ##", " ####", "##  ##", "##  ##", " ####"}},
    {'9', {" ####", "##  ##", "##  ##", " #####", "    ##", "   ##", " ###"}},
    {':', {"", "  ##", "  ##", "", "", "  ##", "  ##"}},
    {';', {"", "  ##", "  ##", "", "", "  ##", "  ##", " ##"}},
    {'<', {"   ##", "  ##", " ##", "##", " ##", "  ##", "   ##"}},
    {'=', {"", "", "######", "", "######"}},
    {'>', {"##", " ##", "  ##", "   ##", "  ##", " ##", "##"}},
    {'?', {" ####", "##  ##", "    ##", "   ##", "  ##", "", "  ##"}},
    {'@', {" #####", "##   ##", "## ####", "## ####", "## ###", "##", " #####"}},
    {'A', {"  ##", " ####", "##  ##", "##  ##", "######", "##  ##", "##  ##"}},
    {'B', {"#####", "##  ##", "##  ##", "#####", "##  ##", "##  ##", "#####"}},
    {'C', {" ####", "##  ##", "##", "##", "##", "##  ##", " ####"}},
    {'D', {"####", "## ##", "##  ##", "##  ##", "##  ##", "## ##", "####"}},
    {'E', {"######", "##", "##", "#####", "##", "##", "######"}},
    {'F', {"######", "##", "##", "#####", "##", "##", "##"}},
    {'G', {" ####", "##  ##", "##", "## ###", "##  ##", "##  ##", " #####"}},
    {'H', {"##  ##", "##  ##", "##  ##", "######", "##  ##", "##  ##", "##  ##"}},
    {'I', {" ####", "  ##", "  ##", "  ##", "  ##", "  ##", " ####"}},
    {'J', {"  ####", "    ##", "    ##", "    ##", "##  ##", "##  ##", " ####"}},
    {'K', {"##  ##", "## ##", "####", "###", "####", "## ##", "##  ##"}},
    {'L', {"##", "##", "##", "##", "##", "##", "######"}},
    {'M', {"##   ##", "### ###", "#######", "## # ##", "##   ##", "##   ##", "##   ##"}},
    {'N', {"##   ##", "###  ##", "#### ##", "## ####", "##  ###", "##   ##", "##   ##"}},
    {'O', {" ####", "##  ##", "##  ##", "##  ##", "##  ##", "##  ##", " ####"}},
    {'P', {"#####", "##  ##", "##  ##", "#####", "##", "##", "##"}},
    {'Q', {" ####", "##  ##", "##  ##", "##  ##", "## ###", "## ##", " ## ##"}},
    {'R', {"#####", "##  ##", "##  ##", "#####", "####", "## ##", "##  ##"}},
    {'S', {" ####", "##  ##", "##", " ####", "    ##", "##  ##", " ####"}},
    {'T', {"######", "  ##", "  ##", "  ##", "  ##", "  ##", "  ##"}},
    {'U', {"##  ##", "##  ##", "##  ##", "##  ##", "##  ##", "##  ##", " ####"}},
    {'V', {"##  ##", "##  ##", "##  ##", "##  ##", "##  ##", " ####", "  ##"}},
    {'W', {"##   ##", "##   ##", "##   ##", "## # ##", "#######", "### ###", "##   ##"}},
    {'X', {"##  ##", "##  ##", " ####", "  ##", " ####", "##  ##", "##  ##"}},
    {'Y', {"##  ##", "##  ##", "##  ##", " ####", "  ##", "  ##", "  ##"}},
    {'Z', {"######", "    ##", "   ##", "  ##", " ##", "##", "######"}},
    {'[', {" ####", " ##", " ##", " ##", " ##", " ##", " ####"}},
    {'\\', {"##", "##", " ##", "  ##", "   ##", "    ##", "    ##"}},
    {']', {" ####", "   ##", "   ##", "   ##", "   ##", "   ##", " ####"}},
    {'^', {"  ##", " ####", "##  ##"}},
    {'_', {"", "", "", "", "", "", "", "", "#######"}},
    {'`', {" ##", "  ##"}},
    {'a', {"", "", " ####", "    ##", " #####", "##  ##", " #####"}},
    {'b', {"##", "##", "#####", "##  ##", "##  ##", "##  ##", "#####"}},
    {'c', {"", "", " ####", "##", "##", "##", " ####"}},
    {'d', {"    ##", "    ##", " #####", "##  ##", "##  ##", "##  ##", " #####"}},
    {'e', {"", "", " ####", "##  ##", "######", "##", " ####"}},
    {'f', {"   ###", "  ##", "######", "  ##", "  ##", "  ##", "  ##"}},
    {'g', {"", "", " #####", "##  ##", "##  ##", "##  ##", " #####", "    ##", " ####"}},
    {'h', {"##", "##", "#####", "##  ##", "##  ##", "##  ##", "##  ##"}},
    {'i', {"  ##", "", " ###", "  ##", "  ##", "  ##", " ####"}},
    {'j', {"    ##", "", "   ###", "    ##", "    ##", "    ##", "    ##", "##  ##", " ####"}},
    {'k', {"##", "##", "##  ##", "## ##", "####", "## ##", "##  ##"}},
    {'l', {" ###", "  ##", "  ##", "  ##", "  ##", "  ##", " ####"}},
    {'m', {"", "", "######", "## # ##", "## # ##", "##   ##", "##   ##"}},
    {'n', {"", "", "#####", "##  ##", "##  ##", "##  ##", "##  ##"}},
    {'o', {"", "", " ####", "##  ##", "##  ##", "##  ##", " ####"}},
    {'p', {"", "", "#####", "##  ##", "##  ##", "##  ##", "#####", "##", "##"}},
    {'q', {"", "", " #####", "##  ##", "##  ##", "##  ##", " #####", "    ##", "    ##"}},
    {'r', {"", "", "#####", "##  ##", "##", "##", "##"}},
    {'s', {"", "", " #####", "##", " ####", "    ##", "#####"}},
    {'t', {"  ##", "  ##", "######", "  ##", "  ##", "  ##", "   ###"}},
    {'u', {"", "", "##  ##", "##  ##", "##  ##", "##  ##", " #####"}},
    {'v', {"", "", "##  ##", "##  ##", "##  ##", " ####", "  ##"}},
    {'w', {"", "", "##   ##", "## # ##", "## # ##", "#######", " ## ##"}},
    {'x', {"", "", "##  ##", " ####", "  ##", " ####", "##  ##"}},
    {'y', {"", "", "##  ##", "##  ##", "##  ##", "##  ##", " #####", "    ##", " ####"}},
    {'z', {"", "", "######", "   ##", "  ##", " ##", "######"}},
    {'{', {"   ###", "  ##", "  ##", "###", "  ##", "  ##", "   ###"}},
    {'|', {"  ##", "  ##", "  ##", "  ##", "  ##", "  ##", "  ##"}},
    {'}', {"###", "  ##", "  ##", "   ###", "  ##", "  ##", "###"}},
    {'~', {" ### ##", "## ###"}},
    {'\x7f', {"######", "##  ##", "##  ##", "##  ##", "##  ##", "##  ##", "######"}},
};
// clang-format on

class Sheet {
public:
    Sheet() : rgba_(static_cast<size_t>(kSheetWidth) * Height() * 4, 0) {
        for (size_t i = 3; i < rgba_.size(); i += 4) rgba_[i] = 0xFF;  // opaque black
    }
    static int Height() { return static_cast<int>(kColours.size()) * kRowsPerColour * kGlyphHeight; }
    const std::vector<uint8_t>& Rgba() const { return rgba_; }

    void Draw(const Glyph& glyph, int colourIndex) {
        const int index = static_cast<unsigned char>(glyph.ch) - kFirstChar;
        const int left = (index % kPerRow) * kGlyphWidth;
        const int top = (index / kPerRow + kRowsPerColour * colourIndex) * kGlyphHeight;
        const uint32_t colour = kColours[colourIndex];
        for (int y = 0; y < kGlyphHeight; ++y) {
            const char* row = glyph.rows[y];
            for (int x = 0; row && row[x] != '\0' && x < kGlyphWidth; ++x) {
                if (row[x] == '#') Set(left + x, top + y, colour);
            }
        }
    }

private:
    void Set(int x, int y, uint32_t rgb) {
        uint8_t* pixel = &rgba_[(static_cast<size_t>(y) * kSheetWidth + x) * 4];
        pixel[0] = static_cast<uint8_t>(rgb >> 16);
        pixel[1] = static_cast<uint8_t>(rgb >> 8);
        pixel[2] = static_cast<uint8_t>(rgb);
    }

    std::vector<uint8_t> rgba_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-font FILE.png\n");
        return 2;
    }
    std::array<bool, kChars> drawn{};
    Sheet sheet;
    for (const Glyph& glyph : kGlyphs) {
        const int index = static_cast<unsigned char>(glyph.ch) - kFirstChar;
        if (index < 0 || index >= kChars || drawn[index]) {
            std::fprintf(stderr, "make-font: glyph %d is out of range or drawn twice\n", glyph.ch);
            return 1;
        }
        drawn[index] = true;
        for (size_t colour = 0; colour < kColours.size(); ++colour) sheet.Draw(glyph, static_cast<int>(colour));
    }
    for (int i = 0; i < kChars; ++i) {
        if (!drawn[i]) {
            std::fprintf(stderr, "make-font: no glyph for character %d\n", i + kFirstChar);
            return 1;
        }
    }
    std::vector<uint8_t> png;
    if (!sondrel::tools::EncodePng(kSheetWidth, Sheet::Height(), sheet.Rgba(), png)) {
        std::fprintf(stderr, "make-font: couldn't compress the picture\n");
        return 1;
    }
    if (!sondrel::tools::WriteFileBytes(argv[1], png)) {
        std::fprintf(stderr, "make-font: couldn't write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
