#include "ui/painter.h"

#include <algorithm>

#include "model/exception.h"

namespace sondrel {

namespace {

constexpr char kEllipsis[] = "...";

// RGB565 spread over 32 bits with gaps between the channels (green high, red
// in the middle, blue low) so all three blend in one multiplication.
constexpr uint32_t kSpreadMask = 0x07E0F81Fu;

constexpr uint32_t Spread(uint16_t pixel) { return (pixel | (static_cast<uint32_t>(pixel) << 16)) & kSpreadMask; }
constexpr uint16_t Gather(uint32_t spread) {
    spread &= kSpreadMask;
    return static_cast<uint16_t>(spread | (spread >> 16));
}

// Alpha 0..255 as 0..32, the weight the spread blend works with.
constexpr uint32_t Weight(int alpha) { return (static_cast<uint32_t>(std::clamp(alpha, 0, 255)) * 32 + 127) / 255; }

// One slice of a stretched picture along one axis: where it comes from and
// where it goes.
struct Span {
    int from = 0;
    int fromLength = 0;
    int to = 0;
    int toLength = 0;
};

// The three slices (start border, middle, end border) of a source run of
// sourceLength pixels drawn into targetLength. Borders wider than the target
// shrink in proportion and keep their outer pixels.
void Slices(int source, int sourceLength, int start, int end, int target, int targetLength, Span out[3]) {
    start = std::clamp(start, 0, sourceLength);
    end = std::clamp(end, 0, sourceLength - start);
    int toStart = start;
    int toEnd = end;
    if (start + end > targetLength) {
        toStart = start + end > 0 ? targetLength * start / (start + end) : 0;
        toEnd = targetLength - toStart;
    }
    out[0] = {source, toStart, target, toStart};
    out[1] = {source + start, sourceLength - start - end, target + toStart, targetLength - toStart - toEnd};
    out[2] = {source + sourceLength - toEnd, toEnd, target + targetLength - toEnd, toEnd};
}

}  // namespace

uint16_t BlendRgb565(uint16_t a, uint16_t b, int alpha) {
    const uint32_t weight = Weight(alpha);
    return Gather((Spread(a) * weight + Spread(b) * (32 - weight)) >> 5);
}

Gorb_Rect Intersect(const Gorb_Rect& a, const Gorb_Rect& b) {
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const int right = std::min(a.x + a.w, b.x + b.w);
    const int bottom = std::min(a.y + a.h, b.y + b.h);
    if (right <= left || bottom <= top) return {left, top, 0, 0};
    return {left, top, right - left, bottom - top};
}

// ---- Clip and origin ----

Painter::Painter(Gorb_Surface& target) : target_(target), savedClip_(target.Clip()) {
    clips_.push_back({0, 0, target.Width(), target.Height()});
    SyncSurfaceClip();
}

Painter::~Painter() { target_.SetClip(savedClip_); }

void Painter::PushClip(const Gorb_Rect& rect) {
    clips_.push_back(Visible(rect));
    SyncSurfaceClip();
}

void Painter::PopClip() {
    if (clips_.size() <= 1) throw InternalException("Painter::PopClip(): no clip pushed");
    clips_.pop_back();
    SyncSurfaceClip();
}

void Painter::PushOrigin(int dx, int dy) {
    origins_.push_back(originX_);
    origins_.push_back(originY_);
    originX_ += dx;
    originY_ += dy;
}

void Painter::PopOrigin() {
    if (origins_.empty()) throw InternalException("Painter::PopOrigin(): no origin pushed");
    originY_ = origins_.back();
    origins_.pop_back();
    originX_ = origins_.back();
    origins_.pop_back();
}

Gorb_Rect Painter::Clip() const {
    const Gorb_Rect& clip = clips_.back();
    return {clip.x - originX_, clip.y - originY_, clip.w, clip.h};
}

Painter::Scope::Scope(Painter& painter, const Gorb_Rect& rect) : painter_(painter) {
    painter_.PushClip(rect);
    painter_.PushOrigin(rect.x, rect.y);
}

Painter::Scope::~Scope() {
    painter_.PopOrigin();
    painter_.PopClip();
}

Gorb_Rect Painter::Visible(const Gorb_Rect& rect) const {
    return Intersect({rect.x + originX_, rect.y + originY_, rect.w, rect.h}, clips_.back());
}

void Painter::SyncSurfaceClip() { target_.SetClip(clips_.back()); }

// ---- Fills and lines ----

void Painter::FillPixels(const Gorb_Rect& rect, uint16_t pixel) {
    const Gorb_Rect area = Visible(rect);
    if (area.w <= 0) return;
    const Gorb_Pixels pixels = target_.Lock();
    if (pixels.pixels) {
        for (int y = area.y; y < area.y + area.h; ++y) std::fill_n(pixels.Row(y) + area.x, area.w, pixel);
    }
    target_.Unlock();
}

void Painter::Fill(const Gorb_Rect& rect, uint32_t argb) { FillPixels(rect, Rgb565(argb)); }

void Painter::FillAlpha(const Gorb_Rect& rect, uint32_t argb) {
    const uint32_t weight = Weight(static_cast<int>(argb >> 24));
    if (weight == 0) return;
    if (weight == 32) return Fill(rect, argb);
    const Gorb_Rect area = Visible(rect);
    if (area.w <= 0) return;
    const Gorb_Pixels pixels = target_.Lock();
    if (pixels.pixels) {
        const uint32_t source = Spread(Rgb565(argb)) * weight;
        const uint32_t keep = 32 - weight;
        for (int y = area.y; y < area.y + area.h; ++y) {
            uint16_t* row = pixels.Row(y) + area.x;
            for (int x = 0; x < area.w; ++x) row[x] = Gather((source + Spread(row[x]) * keep) >> 5);
        }
    }
    target_.Unlock();
}

void Painter::HLine(int x, int y, int width, uint32_t argb) { FillPixels({x, y, width, 1}, Rgb565(argb)); }

void Painter::VLine(int x, int y, int height, uint32_t argb) { FillPixels({x, y, 1, height}, Rgb565(argb)); }

void Painter::Outline(const Gorb_Rect& rect, uint32_t argb) { Bevel(rect, argb, argb); }

void Painter::Bevel(const Gorb_Rect& rect, uint32_t light, uint32_t dark, BevelStyle style) {
    if (rect.w <= 0 || rect.h <= 0) return;
    if (style == BevelStyle::Sunken) std::swap(light, dark);
    const uint16_t lit = Rgb565(light);
    const uint16_t shaded = Rgb565(dark);
    FillPixels({rect.x, rect.y, rect.w - 1, 1}, lit);
    FillPixels({rect.x, rect.y + 1, 1, rect.h - 2}, lit);
    FillPixels({rect.x, rect.y + rect.h - 1, rect.w, 1}, shaded);
    FillPixels({rect.x + rect.w - 1, rect.y, 1, rect.h - 1}, shaded);
}

void Painter::Marker(const Gorb_Rect& rect, uint32_t argb, MarkerStyle style) {
    if (style == MarkerStyle::Solid) return Outline(rect, argb);
    if (rect.w <= 0 || rect.h <= 0) return;
    const Gorb_Rect area = Visible(rect);
    if (area.w <= 0) return;
    const Gorb_Pixels pixels = target_.Lock();
    if (pixels.pixels) {
        const uint16_t pixel = Rgb565(argb);
        // Frame corners in surface coordinates; a pixel is set when its
        // distance from the top left corner is even.
        const int left = rect.x + originX_;
        const int top = rect.y + originY_;
        const int right = left + rect.w - 1;
        const int bottom = top + rect.h - 1;
        auto row = [&](int y) {
            if (y < area.y || y >= area.y + area.h) return;
            uint16_t* line = pixels.Row(y);
            const int first = area.x + ((area.x - left + y - top) & 1);
            for (int x = first; x < area.x + area.w; x += 2) line[x] = pixel;
        };
        auto column = [&](int x) {
            if (x < area.x || x >= area.x + area.w) return;
            const int first = area.y + ((x - left + area.y - top) & 1);
            for (int y = first; y < area.y + area.h; y += 2) pixels.Row(y)[x] = pixel;
        };
        row(top);
        if (bottom != top) row(bottom);
        column(left);
        if (right != left) column(right);
    }
    target_.Unlock();
}

// ---- Pictures ----

void Painter::DrawStretched(const Gorb_Texture& texture, const StretchSource& source, const Gorb_Rect& target) {
    if (target.w <= 0 || target.h <= 0 || source.rect.w <= 0 || source.rect.h <= 0) return;
    // Only whole source parts inside the texture are drawn from.
    const Gorb_Rect inside = Intersect(source.rect, {0, 0, texture.Width(), texture.Height()});
    if (inside.w != source.rect.w || inside.h != source.rect.h) return;
    const Gorb_Rect where{target.x + originX_, target.y + originY_, target.w, target.h};
    if (Intersect(where, clips_.back()).w <= 0) return;
    Span columns[3];
    Span rows[3];
    Slices(source.rect.x, source.rect.w, source.left, source.right, where.x, where.w, columns);
    Slices(source.rect.y, source.rect.h, source.top, source.bottom, where.y, where.h, rows);
    const Gorb_Pixels pixels = target_.Lock();
    if (pixels.pixels) {
        for (const Span& row : rows) {
            if (row.fromLength <= 0 || row.toLength <= 0) continue;
            for (const Span& column : columns) {
                if (column.fromLength <= 0 || column.toLength <= 0) continue;
                StretchPart(pixels, texture, {column.from, row.from, column.fromLength, row.fromLength},
                            {column.to, row.to, column.toLength, row.toLength});
            }
        }
    }
    target_.Unlock();
}

void Painter::StretchPart(const Gorb_Pixels& pixels, const Gorb_Texture& texture, const Gorb_Rect& part,
                          const Gorb_Rect& where) const {
    const Gorb_Rect area = Intersect(where, clips_.back());
    if (area.w <= 0) return;
    // Nearest source pixel in 16.16 fixed point; the steps round down, so
    // the last target pixel still maps inside the part.
    const uint64_t stepX = (static_cast<uint64_t>(part.w) << 16) / static_cast<uint64_t>(where.w);
    const uint64_t stepY = (static_cast<uint64_t>(part.h) << 16) / static_cast<uint64_t>(where.h);
    const uint64_t startX = static_cast<uint64_t>(area.x - where.x) * stepX;
    const int transparent = texture.TransparentPixel();
    const auto firstColumn = static_cast<int>(startX >> 16);
    const auto lastColumn = static_cast<int>((startX + static_cast<uint64_t>(area.w - 1) * stepX) >> 16);
    int lastSourceRow = -1;
    bool lastRowOpaque = false;
    for (int y = area.y; y < area.y + area.h; ++y) {
        const auto sourceRow = static_cast<int>((static_cast<uint64_t>(y - where.y) * stepY) >> 16);
        const uint16_t* from = texture.Row(part.y + sourceRow) + part.x;
        uint16_t* to = pixels.Row(y) + area.x;
        // A stretched row repeats the one above when it comes from the same
        // source row and covered it whole.
        if (sourceRow == lastSourceRow && lastRowOpaque) {
            std::copy_n(pixels.Row(y - 1) + area.x, area.w, to);
            continue;
        }
        lastSourceRow = sourceRow;
        lastRowOpaque = transparent < 0 || std::find(from + firstColumn, from + lastColumn + 1,
                                                     static_cast<uint16_t>(transparent)) == from + lastColumn + 1;
        if (part.w == where.w && lastRowOpaque) {
            std::copy_n(from + firstColumn, area.w, to);
            continue;
        }
        // Runs of target pixels that share a source pixel are filled at once.
        uint64_t position = startX;
        for (int x = 0; x < area.w;) {
            const uint64_t column = position >> 16;
            const uint64_t next = (column + 1) << 16;
            const int run = stepX == 0 ? area.w - x
                                       : std::min<int>(area.w - x, static_cast<int>((next - position + stepX - 1) / stepX));
            const uint16_t pixel = from[column];
            if (pixel != transparent) std::fill_n(to + x, run, pixel);
            x += run;
            position += static_cast<uint64_t>(run) * stepX;
        }
    }
}

// ---- Text ----

void Painter::Text(const Gorb_Font& font, int x, int y, const std::string& text, uint32_t argb) {
    if (text.empty() || clips_.back().w <= 0) return;
    font.Print(target_, x + originX_, y + originY_, text, argb);
}

void Painter::TextIn(const Gorb_Font& font, const Gorb_Rect& rect, const std::string& text, uint32_t argb,
                     TextAlign align, TextFit fit) {
    if (text.empty() || Visible(rect).w <= 0) return;
    const std::string shown = fit == TextFit::Ellipsis        ? Ellipsised(font, text, rect.w)
                              : fit == TextFit::EllipsisFront ? EllipsisedFront(font, text, rect.w)
                                                              : text;
    const int width = font.TextWidth(shown);
    int x = rect.x;
    if (align == TextAlign::Centre) x += (rect.w - width) / 2;
    if (align == TextAlign::Right) x += rect.w - width;
    const int y = TextTop(font, rect.y, rect.h);
    PushClip(rect);
    Text(font, x, y, shown, argb);
    PopClip();
}

int Painter::TextTop(const Gorb_Font& font, int top, int height) {
    const int centred = top + (height - TextRowHeight(font)) / 2 - font.InkTop();
    return std::min(centred, top + height - font.InkBottom());
}

namespace {

// The most characters of text, kept from its start or from its end, that fit
// width together with "..." (text widths only grow with length, so halving
// finds them).
size_t KeptBesideEllipsis(const Gorb_Font& font, const std::string& text, int width, bool fromEnd) {
    const auto shown = [&](size_t kept) {
        return fromEnd ? kEllipsis + text.substr(text.size() - kept) : text.substr(0, kept) + kEllipsis;
    };
    size_t fits = 0;
    size_t tooLong = text.size();
    while (tooLong - fits > 1) {
        const size_t middle = (fits + tooLong) / 2;
        if (font.TextWidth(shown(middle)) <= width) {
            fits = middle;
        } else {
            tooLong = middle;
        }
    }
    return fits;
}

}  // namespace

std::string Painter::Ellipsised(const Gorb_Font& font, const std::string& text, int width) {
    if (font.TextWidth(text) <= width) return text;
    if (font.TextWidth(kEllipsis) > width) return {};
    std::string start = text.substr(0, KeptBesideEllipsis(font, text, width, false));
    while (!start.empty() && start.back() == ' ') start.pop_back();
    return start + kEllipsis;
}

std::string Painter::EllipsisedFront(const Gorb_Font& font, const std::string& text, int width) {
    if (font.TextWidth(text) <= width) return text;
    if (font.TextWidth(kEllipsis) > width) return {};
    std::string end = text.substr(text.size() - KeptBesideEllipsis(font, text, width, true));
    const size_t slash = end.find('/');
    if (slash != std::string::npos && slash > 0) end.erase(0, slash);
    return kEllipsis + end;
}

}  // namespace sondrel
