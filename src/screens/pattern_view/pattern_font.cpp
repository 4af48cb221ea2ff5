#include "screens/pattern_view/pattern_font.h"

#include <algorithm>

#include "model/exception.h"
#include "screens/pattern_view/pattern_rows.h"

namespace sondrel {

namespace {

constexpr int kFirstChar = 32;
constexpr int kLastChar = 127;
constexpr int kGlyphsPerRow = 32;
constexpr int kGlyphRowsPerColour = 3;

}  // namespace

PatternFont::PatternFont(const std::filesystem::path& sheet) {
    std::unique_ptr<Gorb_Surface> surface = Gorb_CreateSurface(sheet);
    surface->Convert();
    width_ = surface->Width();
    const int height = surface->Height();
    if (width_ < kGlyphsPerRow * kGlyphWidth || height < kColours * kGlyphRowsPerColour * kGlyphHeight) {
        throw ParseException("PatternFont(): the font sheet " + sheet.string() + " is too small");
    }
    pixels_.resize(static_cast<size_t>(width_) * height);
    const Gorb_Pixels locked = surface->Lock();
    for (int y = 0; y < height; ++y) {
        std::copy_n(locked.Row(y), width_, pixels_.begin() + static_cast<std::ptrdiff_t>(y) * width_);
    }
    surface->Unlock();
}

const uint16_t* PatternFont::GlyphRow(char ch, int colour, int row) const {
    int code = static_cast<unsigned char>(ch);
    if (code < kFirstChar || code > kLastChar) code = '?';
    const int x = (code % kGlyphsPerRow) * kGlyphWidth;
    const int y = ((code - kFirstChar) / kGlyphsPerRow + kGlyphRowsPerColour * colour) * kGlyphHeight + row;
    return pixels_.data() + static_cast<size_t>(y) * width_ + x;
}

void PatternFont::DrawOpaque(Gorb_Surface& target, int x, int y, std::string_view text, const uint8_t* colours) const {
    const int width = target.Width();
    const int rows = std::min(kGlyphHeight, target.Height() - y);
    if (y < 0 || rows <= 0) return;
    const Gorb_Pixels out = target.Lock();
    for (size_t i = 0; i < text.size() && x < width; ++i) {
        const bool gap = text[i] == kRowGap;
        const int cell = gap ? kRowGapWidth : kGlyphWidth;
        const int from = std::max(0, -x);
        const int count = std::min(cell, width - x) - from;
        const int colour = colours ? std::min<int>(colours[i], kColours - 1) : 0;
        for (int row = 0; row < rows && count > 0; ++row) {
            uint16_t* dest = out.Row(y + row) + x + from;
            if (gap) {
                std::fill_n(dest, count, uint16_t{0});
            } else {
                std::copy_n(GlyphRow(text[i], colour, row) + from, count, dest);
            }
        }
        x += cell;
    }
    target.Unlock();
}

void PatternFont::DrawTransparent(Gorb_Surface& target, int x, int y, std::string_view text) const {
    const Gorb_Pixels out = target.Lock();
    for (char ch : text) {
        if (ch == kRowGap) {
            x += kRowGapWidth;
            continue;
        }
        for (int row = 0; row < kGlyphHeight; ++row) {
            if (y + row < 0 || y + row >= target.Height()) continue;
            const uint16_t* glyph = GlyphRow(ch, 0, row);
            for (int column = 0; column < kGlyphWidth; ++column) {
                const int px = x + column;
                if (glyph[column] != 0 && px >= 0 && px < target.Width()) out.Row(y + row)[px] = glyph[column];
            }
        }
        x += kGlyphWidth;
    }
    target.Unlock();
}

}  // namespace sondrel
