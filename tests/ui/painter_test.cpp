#include "ui/painter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include "model/exception.h"

namespace sondrel {
namespace {

constexpr char kSystemFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr uint32_t kWhite = 0xFFFFFF;
constexpr uint32_t kKey = 0xFF00FF;     // the texture's transparent colour
constexpr uint16_t kPoison = 0x0841;    // frames the source part; must never be drawn
constexpr uint16_t kBackground = 0x1111;

uint16_t At(Gorb_Surface& surface, int x, int y) {
    const uint16_t pixel = surface.Lock().Row(y)[x];
    surface.Unlock();
    return pixel;
}

// The surface as text rows: '.' for black, '#' for white, 'L' and 'D' for the
// bevel colours, '?' for anything else.
std::string Picture(Gorb_Surface& surface) {
    std::string out;
    for (int y = 0; y < surface.Height(); ++y) {
        for (int x = 0; x < surface.Width(); ++x) {
            switch (At(surface, x, y)) {
                case 0: out += '.'; break;
                case Rgb565(kWhite): out += '#'; break;
                case Rgb565(0xC0C0C0): out += 'L'; break;
                case Rgb565(0x404040): out += 'D'; break;
                default: out += '?';
            }
        }
        out += '\n';
    }
    return out;
}

std::unique_ptr<Gorb_Surface> Blank(int width, int height, uint16_t pixel = 0) {
    auto surface = Gorb_CreateSurface(width, height);
    surface->Fill(pixel);
    return surface;
}

TEST(Painter, NestedClipsAndOriginsKeepDrawingInside) {
    auto surface = Blank(10, 6);
    {
        Painter painter(*surface);
        Painter::Scope outer(painter, {2, 1, 6, 4});
        {
            Painter::Scope inner(painter, {1, 1, 10, 10});  // sticks out of outer at the right and bottom
            EXPECT_EQ(painter.Clip().x, 0);
            EXPECT_EQ(painter.Clip().w, 5);
            painter.Fill({-5, -5, 50, 50}, kWhite);
            painter.FillAlpha({-5, -5, 50, 50}, 0x80FFFFFF);
            painter.HLine(-3, 2, 40, kWhite);
        }
        painter.VLine(0, -1, 9, 0xC0C0C0);  // the outer scope's own origin and clip again
        painter.PushClip({0, 0, 0, 0});
        painter.Fill({0, 0, 9, 9}, 0x404040);
        painter.PopClip();
    }
    EXPECT_EQ(Picture(*surface),
              "..........\n"
              "..L.......\n"
              "..L#####..\n"
              "..L#####..\n"
              "..L#####..\n"
              "..........\n");
    EXPECT_EQ(surface->Clip().w, 10);  // the surface's clip is given back

    Painter painter(*surface);
    EXPECT_THROW(painter.PopClip(), InternalException);
    EXPECT_THROW(painter.PopOrigin(), InternalException);
}

TEST(Painter, AlphaBlendsAtNoneHalfAndFull) {
    struct Case {
        uint16_t under;
        uint32_t argb;
        uint16_t expected;
    };
    const Case cases[] = {
        {0x0000, 0x00FFFFFF, 0x0000}, {0x0000, 0x80FFFFFF, 0x7BEF}, {0x0000, 0xFFFFFFFF, 0xFFFF},
        {0xF800, 0x000000FF, 0xF800}, {0xF800, 0x800000FF, 0x780F}, {0xF800, 0xFF0000FF, 0x001F},
        {0xFFFF, 0x80000000, 0x7BEF},  // dark over light rounds the same way
    };
    for (const Case& c : cases) {
        auto surface = Blank(4, 2, c.under);
        Painter painter(*surface);
        painter.FillAlpha({1, 0, 2, 1}, c.argb);
        EXPECT_EQ(At(*surface, 2, 0), c.expected) << std::hex << c.argb;
        EXPECT_EQ(At(*surface, 1, 1), c.under);
        EXPECT_EQ(BlendRgb565(Rgb565(c.argb), c.under, static_cast<int>(c.argb >> 24)), c.expected);
    }
}

TEST(Painter, BevelsOutlinesAndMarkersDrawCrispEdges) {
    struct Case {
        const char* name;
        void (*paint)(Painter&);
        const char* picture;
    };
    const Case cases[] = {
        {"raised", [](Painter& p) { p.Bevel({1, 0, 4, 3}, 0xC0C0C0, 0x404040); },
         ".LLLD.\n.L..D.\n.DDDD.\n"},
        {"sunken", [](Painter& p) { p.Bevel({1, 0, 4, 3}, 0xC0C0C0, 0x404040, BevelStyle::Sunken); },
         ".DDDL.\n.D..L.\n.LLLL.\n"},
        {"outline", [](Painter& p) { p.Outline({0, 0, 6, 3}, kWhite); }, "######\n#....#\n######\n"},
        {"solid marker", [](Painter& p) { p.Marker({0, 0, 2, 2}, kWhite, MarkerStyle::Solid); },
         "##....\n##....\n......\n"},
        {"dotted marker", [](Painter& p) { p.Marker({0, 0, 6, 3}, kWhite, MarkerStyle::Dotted); },
         "#.#.#.\n.....#\n#.#.#.\n"},
        {"dotted marker, clipped and moved",
         [](Painter& p) {
             Painter::Scope scope(p, {1, 0, 4, 3});
             p.Marker({-1, 0, 6, 3}, kWhite, MarkerStyle::Dotted);  // the same frame as above
         },
         "..#.#.\n......\n..#.#.\n"},
        {"one-pixel bevel", [](Painter& p) { p.Bevel({2, 1, 1, 1}, 0xC0C0C0, 0x404040); }, "......\n..D...\n......\n"},
    };
    for (const Case& c : cases) {
        auto surface = Blank(6, 3);
        {
            Painter painter(*surface);
            c.paint(painter);
        }
        EXPECT_EQ(Picture(*surface), c.picture) << c.name;
    }
}

// An 8 x 8 texture: a poison frame around a 6 x 6 source part whose pixels
// all differ, with two transparent pixels in its middle.
std::unique_ptr<Gorb_Texture> StretchTexture() {
    auto surface = Blank(8, 8, kPoison);
    Gorb_Pixels pixels = surface->Lock();
    for (int y = 1; y < 7; ++y) {
        for (int x = 1; x < 7; ++x) pixels.Row(y)[x] = static_cast<uint16_t>(0x8000 + y * 64 + x);
    }
    pixels.Row(3)[3] = Rgb565(kKey);
    pixels.Row(4)[4] = Rgb565(kKey);
    surface->Unlock();
    surface->Convert(kGorbFormatRgb565, kGorbConvertColourKey, kKey);
    return Gorb_CreateTexture(*surface);
}

uint16_t SourcePixel(int x, int y) { return static_cast<uint16_t>(0x8000 + (y + 1) * 64 + x + 1); }

TEST(Painter, StretchedPicturesKeepCornersStretchEdgesAndKeepTransparency) {
    const auto texture = StretchTexture();
    const StretchSource source{{1, 1, 6, 6}, 2, 2, 2, 2};
    auto surface = Blank(24, 16, kBackground);
    {
        Painter painter(*surface);
        painter.PushOrigin(1, 1);
        painter.DrawStretched(*texture, source, {1, 1, 20, 12});  // lands at (2, 2)
    }
    // Corners are exact copies.
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 2; ++x) {
            EXPECT_EQ(At(*surface, 2 + x, 2 + y), SourcePixel(x, y));
            EXPECT_EQ(At(*surface, 20 + x, 2 + y), SourcePixel(4 + x, y));
            EXPECT_EQ(At(*surface, 2 + x, 12 + y), SourcePixel(x, 4 + y));
            EXPECT_EQ(At(*surface, 20 + x, 12 + y), SourcePixel(4 + x, 4 + y));
        }
    }
    // Edges stretch along their length only: the top edge's rows keep their
    // source rows, the left edge's columns their source columns.
    for (int x = 4; x < 20; ++x) {
        const uint16_t top = At(*surface, x, 2);
        EXPECT_TRUE(top == SourcePixel(2, 0) || top == SourcePixel(3, 0)) << x;
        EXPECT_EQ(At(*surface, x, 3), static_cast<uint16_t>(top + 64)) << x;
    }
    for (int y = 4; y < 12; ++y) {
        const uint16_t left = At(*surface, 2, y);
        EXPECT_TRUE(left == SourcePixel(0, 2) || left == SourcePixel(0, 3)) << y;
        EXPECT_EQ(At(*surface, 3, y), static_cast<uint16_t>(left + 1)) << y;
    }
    // The middle shows its two transparent pixels as the background, stretched to 8 x 4 blocks.
    int seeThrough = 0;
    for (int y = 4; y < 12; ++y) {
        for (int x = 4; x < 20; ++x) seeThrough += At(*surface, x, y) == kBackground;
    }
    EXPECT_EQ(seeThrough, 2 * 8 * 4);
    EXPECT_EQ(At(*surface, 1, 1), kBackground);
    EXPECT_EQ(At(*surface, 22, 14), kBackground);
}

TEST(Painter, StretchedPicturesNeverReadOutsideTheirSourceOrDrawOutsideTheirTarget) {
    const auto texture = StretchTexture();
    struct Case {
        StretchSource source;
        Gorb_Rect target;
        Gorb_Rect clip;
    };
    const Gorb_Rect all{0, 0, 32, 32};
    const Case cases[] = {
        {{{1, 1, 6, 6}, 2, 2, 2, 2}, {3, 3, 3, 3}, all},    // narrower than both borders
        {{{1, 1, 6, 6}, 2, 2, 2, 2}, {3, 3, 1, 1}, all},
        {{{1, 1, 6, 6}, 2, 2, 2, 2}, {3, 3, 0, 5}, all},
        {{{1, 1, 6, 6}, 2, 2, 2, 2}, {3, 3, 2, 20}, all},
        {{{1, 1, 6, 6}, 4, 4, 0, 0}, {3, 3, 25, 7}, all},   // borders wider than the source
        {{{1, 1, 6, 6}, 2, 2, 0, 0}, {3, 3, 25, 7}, all},   // stretched along one axis
        {{{1, 1, 6, 6}, 0, 0, 3, 3}, {3, 3, 5, 27}, all},
        {{{1, 1, 6, 6}, 0, 0, 0, 0}, {3, 3, 17, 13}, all},  // plain stretch
        {{{1, 1, 6, 6}, 2, 2, 2, 2}, {3, 3, 25, 25}, {7, 8, 9, 5}},
        {{{1, 1, 6, 6}, 2, 2, 2, 2}, {-9, -9, 25, 25}, all},
    };
    for (const Case& c : cases) {
        auto surface = Blank(32, 32, kBackground);
        {
            Painter painter(*surface);
            painter.PushClip(c.clip);
            painter.DrawStretched(*texture, c.source, c.target);
        }
        const Gorb_Rect inside = Intersect(c.target, c.clip);
        for (int y = 0; y < 32; ++y) {
            for (int x = 0; x < 32; ++x) {
                const uint16_t pixel = At(*surface, x, y);
                const bool in = x >= inside.x && x < inside.x + inside.w && y >= inside.y && y < inside.y + inside.h;
                ASSERT_NE(pixel, kPoison) << x << "," << y << " target " << c.target.w << "x" << c.target.h;
                if (!in) {
                    ASSERT_EQ(pixel, kBackground) << x << "," << y << " target " << c.target.w;
                }
            }
        }
    }
}

class PainterText : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(kSystemFont)) GTEST_SKIP() << "no system font";
        font_ = Gorb_CreateFont(kSystemFont, 14);
    }

    // The box around the pixels that are no longer black.
    static Gorb_Rect Inked(Gorb_Surface& surface) {
        int left = surface.Width(), top = surface.Height(), right = -1, bottom = -1;
        for (int y = 0; y < surface.Height(); ++y) {
            for (int x = 0; x < surface.Width(); ++x) {
                if (At(surface, x, y) == 0) continue;
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
        return {left, top, right - left + 1, bottom - top + 1};
    }

    std::unique_ptr<Gorb_Font> font_;
};

TEST_F(PainterText, TextStaysInItsRectangleAlignedAndEllipsised) {
    const std::string longText = "A pattern name far too long";
    const Gorb_Rect box{20, 10, 60, 30};
    struct Case {
        const char* text;
        TextAlign align;
        TextFit fit;
    };
    const Case cases[] = {{"Hi", TextAlign::Left, TextFit::Clip},
                          {"Hi", TextAlign::Centre, TextFit::Clip},
                          {"Hi", TextAlign::Right, TextFit::Clip},
                          {longText.c_str(), TextAlign::Centre, TextFit::Clip},
                          {longText.c_str(), TextAlign::Left, TextFit::Ellipsis}};
    for (const Case& c : cases) {
        auto surface = Blank(100, 50);
        {
            Painter painter(*surface);
            painter.PushOrigin(10, 5);
            painter.TextIn(*font_, {10, 5, box.w, box.h}, c.text, kWhite, c.align, c.fit);
        }
        const Gorb_Rect ink = Inked(*surface);
        ASSERT_GT(ink.w, 0) << c.text;
        EXPECT_GE(ink.x, box.x) << c.text;
        EXPECT_LE(ink.x + ink.w, box.x + box.w) << c.text;
        EXPECT_NEAR(ink.y + ink.h / 2.0, box.y + box.h / 2.0, 3.0) << c.text;  // centred vertically
        if (std::string(c.text) == "Hi") {
            const int margin = c.align == TextAlign::Left    ? ink.x - box.x
                               : c.align == TextAlign::Right ? box.x + box.w - ink.x - ink.w
                                                             : std::abs(2 * ink.x + ink.w - 2 * box.x - box.w) / 2;
            EXPECT_LE(margin, 3) << static_cast<int>(c.align);
        }
    }

    // The same text again in another colour is not the picture of the first.
    auto surface = Blank(60, 20);
    {
        Painter painter(*surface);
        painter.Text(*font_, 0, 0, "Hi", kWhite);
        painter.Text(*font_, 30, 0, "Hi", 0xFF0000);
    }
    int green = 0;
    for (int y = 0; y < 20; ++y) {
        for (int x = 30; x < 60; ++x) green += (At(*surface, x, y) & 0x07E0) != 0;
    }
    EXPECT_EQ(green, 0);
    EXPECT_GT(Inked(*surface).w, 30);

    const std::string cut = Painter::Ellipsised(*font_, longText, 60);
    EXPECT_LE(font_->TextWidth(cut), 60);
    EXPECT_EQ(cut.substr(cut.size() - 3), "...");
    EXPECT_EQ(longText.rfind(cut.substr(0, cut.size() - 3), 0), 0u);
    EXPECT_GT(font_->TextWidth(longText.substr(0, cut.size() - 2) + "..."), 60);  // one letter more is too wide
    EXPECT_EQ(Painter::Ellipsised(*font_, "Hi", 60), "Hi");
    EXPECT_EQ(Painter::Ellipsised(*font_, longText, 3), "");
}

TEST_F(PainterText, PathsCutAtTheirStartKeepWholeFolderNames) {
    const std::string path = "/home/musician/songs/chip_tunes/Alex_Kidd_in_Miracle_World";
    struct Case {
        int width;
        std::string shown;
    };
    // Wide enough for the last two folders, for only the last, for part of the last.
    const int lastTwo = font_->TextWidth(".../chip_tunes/Alex_Kidd_in_Miracle_World");
    const int last = font_->TextWidth(".../Alex_Kidd_in_Miracle_World");
    const int part = font_->TextWidth("...Kidd_in_Miracle_World");
    const Case cases[] = {{font_->TextWidth(path), path},
                          {lastTwo + 2, ".../chip_tunes/Alex_Kidd_in_Miracle_World"},
                          {last + 2, ".../Alex_Kidd_in_Miracle_World"},
                          {part, "...Kidd_in_Miracle_World"},
                          {3, ""}};
    for (const Case& c : cases) EXPECT_EQ(Painter::EllipsisedFront(*font_, path, c.width), c.shown) << c.width;
}

}  // namespace
}  // namespace sondrel
