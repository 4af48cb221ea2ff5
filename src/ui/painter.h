#pragma once
// The one drawing service every widget paints through. A Painter is bound to
// an RGB565 surface (normally the screen) and keeps a stack of clip
// rectangles and origins, so a widget draws in its own coordinates and can
// never spill outside the area its parent gave it. Fills, blends and lines
// write the locked rows directly; each call clips its rectangle once against
// the current clip and then runs straight along the rows.
//
// Colours are ARGB (0xAARRGGBB); only FillAlpha uses the alpha byte.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/gorb.h"

namespace sondrel {

// Part of a texture drawn stretched: the corners keep their size, the border
// strips stretch along their length and the middle stretches both ways.
// Borders of 0 leave those slices out (left and right only stretch it like a
// horizontal bar, none at all stretches the whole rectangle).
struct StretchSource {
    Gorb_Rect rect;
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
};

enum class TextAlign : uint8_t { Left, Centre, Right };
// Text wider than its rectangle: cut off; cut and ended in "..."; or its
// start cut and replaced by "..." (for paths, at a folder boundary where
// one is kept).
enum class TextFit : uint8_t { Clip, Ellipsis, EllipsisFront };
enum class BevelStyle : uint8_t { Raised, Sunken };
enum class MarkerStyle : uint8_t { Solid, Dotted };

// The RGB565 pixel of an ARGB colour (alpha ignored).
constexpr uint16_t Rgb565(uint32_t argb) {
    return static_cast<uint16_t>(((argb >> 8) & 0xF800u) | ((argb >> 5) & 0x07E0u) | ((argb >> 3) & 0x001Fu));
}

// a over b with alpha 0..255: 0 keeps b, 255 gives a.
uint16_t BlendRgb565(uint16_t a, uint16_t b, int alpha);

// Both rectangles' common part; an empty rectangle (w or h 0) when they don't meet.
Gorb_Rect Intersect(const Gorb_Rect& a, const Gorb_Rect& b);

class Painter {
public:
    // Draws into target, first clipped to the whole surface. The surface's own
    // clip rectangle follows the painter's and is given back on destruction.
    explicit Painter(Gorb_Surface& target);
    ~Painter();
    Painter(const Painter&) = delete;
    Painter& operator=(const Painter&) = delete;

    Gorb_Surface& Target() { return target_; }

    // rect (in current coordinates) narrows the clip until the matching PopClip.
    void PushClip(const Gorb_Rect& rect);
    void PopClip();
    // Moves the origin by (dx, dy) until the matching PopOrigin.
    void PushOrigin(int dx, int dy);
    void PopOrigin();
    // The current clip in current coordinates.
    Gorb_Rect Clip() const;
    int OriginX() const { return originX_; }
    int OriginY() const { return originY_; }

    // A widget's area for one scope: clipped to rect with the origin at its
    // top left corner.
    class Scope {
    public:
        Scope(Painter& painter, const Gorb_Rect& rect);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        Painter& painter_;
    };

    void Fill(const Gorb_Rect& rect, uint32_t argb);
    void FillAlpha(const Gorb_Rect& rect, uint32_t argb);
    void Outline(const Gorb_Rect& rect, uint32_t argb);
    void HLine(int x, int y, int width, uint32_t argb);
    void VLine(int x, int y, int height, uint32_t argb);
    // Raised: light top row and left column, dark bottom row and right column
    // (the top right and bottom left corner pixels are dark); sunken swaps them.
    void Bevel(const Gorb_Rect& rect, uint32_t light, uint32_t dark, BevelStyle style = BevelStyle::Raised);
    // A 1-pixel frame; dotted sets every other pixel, counted from the frame's top left corner.
    void Marker(const Gorb_Rect& rect, uint32_t argb, MarkerStyle style);

    // The texture's source part stretched to fill target; its transparent pixels stay out.
    void DrawStretched(const Gorb_Texture& texture, const StretchSource& source, const Gorb_Rect& target);

    void Text(const Gorb_Font& font, int x, int y, const std::string& text, uint32_t argb);
    // Text aligned in rect, placed vertically by TextTop and clipped to it.
    void TextIn(const Gorb_Font& font, const Gorb_Rect& rect, const std::string& text, uint32_t argb,
                TextAlign align = TextAlign::Left, TextFit fit = TextFit::Clip);
    static int TextWidth(const Gorb_Font& font, const std::string& text) { return font.TextWidth(text); }
    // How high a row must be for every glyph of font to show whole.
    static int TextRowHeight(const Gorb_Font& font) { return font.InkBottom() - font.InkTop(); }
    // The y to print at for text in the row of that height starting at top:
    // the glyphs centred in it; in a row lower than TextRowHeight, their
    // bottoms (descenders, underscores) kept and accents cut at the top.
    static int TextTop(const Gorb_Font& font, int top, int height);
    // The longest start of text that fits width with "..." after it (text itself when it fits).
    static std::string Ellipsised(const Gorb_Font& font, const std::string& text, int width);
    // "..." and the longest end of text that fits width after it, begun at
    // its first "/" when it holds one (text itself when it fits).
    static std::string EllipsisedFront(const Gorb_Font& font, const std::string& text, int width);

private:
    // rect moved by the origin and cut to the clip: the pixels a call may touch.
    Gorb_Rect Visible(const Gorb_Rect& rect) const;
    // Sets pixel on every visible pixel of rect.
    void FillPixels(const Gorb_Rect& rect, uint16_t pixel);
    void SyncSurfaceClip();
    // part of the texture scaled to where (surface coordinates), within the clip.
    void StretchPart(const Gorb_Pixels& pixels, const Gorb_Texture& texture, const Gorb_Rect& part,
                     const Gorb_Rect& where) const;

    Gorb_Surface& target_;
    Gorb_Rect savedClip_;
    std::vector<Gorb_Rect> clips_;  // absolute; the back one is current
    std::vector<int> origins_;      // x, y pairs pushed
    int originX_ = 0;
    int originY_ = 0;
};

}  // namespace sondrel
