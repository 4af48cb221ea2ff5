// Text drawn into a fixed-height row must show every pixel row of its
// glyphs: underscores and descenders at the bottom, the tallest glyphs at
// the top. Each widget is drawn with the shipped skin twice, once without
// and once with the text; the rows where the two differ are the glyph rows
// it shows, and they must be as many as the font itself prints.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "ui/painter.h"
#include "ui/toolkit_fixture.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/menu_button.h"
#include "ui/widgets/text_field.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

// The rows of rect in which before and after differ, counted from rect's top.
std::vector<int> ChangedRows(const std::vector<uint16_t>& before, const std::vector<uint16_t>& after,
                             const Gorb_Rect& rect) {
    std::vector<int> rows;
    for (int y = 0; y < rect.h; ++y)
        for (int x = 0; x < rect.w; ++x)
            if (before[static_cast<size_t>(y * rect.w + x)] != after[static_cast<size_t>(y * rect.w + x)]) {
                rows.push_back(y);
                break;
            }
    return rows;
}

// The rows the font's own rendering of text covers, printed on a plain ground.
std::vector<int> GlyphRows(const Gorb_Font& font, const std::string& text) {
    auto surface = Gorb_CreateSurface(400, 60);
    const Gorb_Rect all{0, 0, 400, 60};
    Painter painter(*surface);
    const std::vector<uint16_t> before = SurfacePixels(*surface, all);
    painter.Text(font, 10, 20, text, 0xFFFFFFFF);
    std::vector<int> rows = ChangedRows(before, SurfacePixels(*surface, all), all);
    for (int& row : rows) row -= 20;
    return rows;
}

class WholeGlyphsTest : public ToolkitFixture {
protected:
    void SetUp() override {
        window = Restart({0, 0, 400, 300}, &ShippedSkin(), kWindowNotDraggable);
        ASSERT_NE(toolkit.Style().font, nullptr);
    }

    // The glyph rows rect (window coordinates) shows once setText has put
    // text in; they must be as many as the font prints, one after the other.
    void ExpectWholeGlyphs(const Gorb_Rect& rect, const std::string& text,
                           const std::function<void(const std::string&)>& setText) {
        SCOPED_TRACE(text);
        const Gorb_Rect on{window->Rect().x + rect.x, window->Rect().y + rect.y, rect.w, rect.h};
        setText("");
        const std::vector<uint16_t> before = Pixels(on);
        setText(text);
        const std::vector<int> shown = ChangedRows(before, Pixels(on), on);
        const std::vector<int> printed = GlyphRows(*toolkit.Style().font, text);
        ASSERT_FALSE(printed.empty());
        ASSERT_EQ(shown.size(), printed.size()) << "rows " << (shown.empty() ? -1 : shown.front()) << " to "
                                                << (shown.empty() ? -1 : shown.back()) << " of " << rect.h
                                                << " at y " << rect.y;
        for (size_t i = 0; i < shown.size(); ++i) EXPECT_EQ(shown[i] - shown.front(), printed[i] - printed.front());
    }

    Window* window = nullptr;
};

const char* const kTexts[] = {"g_p_y", "Alex_Kidd_in_Miracle_World", "(jQ|y)", "\xC0g_\xC9p"};

TEST_F(WholeGlyphsTest, ListRowsOfEveryHeightTheProgramUsesShowWholeGlyphs) {
    // The toolkit's own rows, and the lower rows some dialogs pack their lists with.
    for (int height : {ListBox::kDefaultLineHeight, 14}) {
        SCOPED_TRACE(height);
        auto& list = window->Emplace<ListBox>(30 + height, Gorb_Rect{10, 10, 300, 3 * height + 2 * ListBox::kBorder});
        list.SetColumns({{260, "%s", ""}});
        list.SetLineHeight(height);
        const Gorb_Rect secondRow{list.Rect().x + ListBox::kBorder, list.Rect().y + ListBox::kBorder + height, 290,
                                  height};
        for (const char* text : kTexts) {
            // Accented capitals reach the font's top row, which only a whole-height row has room for.
            if (height < ListBox::kDefaultLineHeight && static_cast<unsigned char>(text[0]) >= 0x80) continue;
            ExpectWholeGlyphs(secondRow, text, [&](const std::string& t) {
                list.SetLines({{std::string("above")}, {t}, {std::string("below")}});
            });
        }
        list.SetFlags(list.Flags() | kWidgetHidden);
    }
}

TEST_F(WholeGlyphsTest, TextLinesFieldsAndMenuButtonsShowWholeGlyphs) {
    auto& line = window->Emplace<TextLine>(1, Gorb_Rect{10, 10, 300, 20});
    auto& field = window->Emplace<TextField>(2, Gorb_Rect{10, 40, 300, 60});
    for (const char* text : kTexts) {
        auto& menu = window->Emplace<MenuButton>(3, Gorb_Rect{10, 110, 300, 20}, text);
        ExpectWholeGlyphs(line.Rect(), text, [&](const std::string& t) { line.SetText(t); });
        // The second line of a field, below one with glyphs of its own.
        ExpectWholeGlyphs(field.Rect(), text,
                          [&](const std::string& t) { field.SetText(t.empty() ? "_" : "_\n" + t); });
        ExpectWholeGlyphs(menu.Rect(), text,
                          [&](const std::string& t) { menu.SetChoice(t.empty() ? MenuButton::kNoChoice : 0); });
        menu.SetFlags(menu.Flags() | kWidgetHidden);
    }
}

// Printf's padding is for fixed-width fonts: in ours, right-justified names
// still start at one x and numbers still end at one x, whatever their length.
TEST_F(WholeGlyphsTest, PaddedColumnsLineUpNamesAtTheLeftAndNumbersAtTheRight) {
    const int height = ListBox::kDefaultLineHeight;
    auto& list = window->Emplace<ListBox>(9, Gorb_Rect{10, 10, 300, 3 * height + 2 * ListBox::kBorder});
    list.SetColumns({{150, "%20s", ""}, {60, "%4D", ""}});
    list.SetLines({{std::string("Intro"), 5LL}, {std::string("Verse A"), 64LL}, {std::string("W"), 1234LL}});
    std::vector<int> nameStarts, numberEnds;
    for (int row = 0; row < 3; ++row) {
        const Gorb_Rect on{window->Rect().x + list.Rect().x + ListBox::kBorder,
                           window->Rect().y + list.Rect().y + ListBox::kBorder + row * height, 210, height};
        const std::vector<uint16_t> pixels = Pixels(on);
        const uint16_t ground = pixels.front();  // the row's own colour, left of its text
        int first = on.w, last = -1, split = 150;
        for (int y = 0; y < on.h; ++y)
            for (int x = 0; x < on.w; ++x)
                if (pixels[static_cast<size_t>(y * on.w + x)] != ground) {
                    if (x < split) first = std::min(first, x);
                    else last = std::max(last, x);
                }
        nameStarts.push_back(first);
        numberEnds.push_back(last);
    }
    // Within the glyphs' own side bearings (a pixel or two).
    const auto spread = [](const std::vector<int>& xs) {
        return *std::max_element(xs.begin(), xs.end()) - *std::min_element(xs.begin(), xs.end());
    };
    EXPECT_LT(nameStarts[0], 10);  // no padding before the name
    EXPECT_LE(spread(nameStarts), 2);
    EXPECT_LE(spread(numberEnds), 2);
}

}  // namespace
}  // namespace sondrel
