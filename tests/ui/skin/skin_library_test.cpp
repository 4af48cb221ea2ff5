#include "ui/skin/skin_library.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "model/exception.h"
#include "test_support.h"
#include "ui/skin/skin_names.h"
#include "ui/skin/theme_reader.h"

namespace sondrel {
namespace {

constexpr char kSystemFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

// A skin directory with a small picture, a font and a theme file; skins are
// written into it and loaded with only the keys each test asks for.
class SkinLibraryTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(kSystemFont)) GTEST_SKIP() << "no DejaVu font on this system";
        std::filesystem::create_directories(dir_ / "fonts");
        std::filesystem::create_directories(dir_ / "themes");
        ASSERT_TRUE(Gorb_CreateSurface(64, 32)->SavePng(dir_ / "pic.png"));
        std::filesystem::copy_file(kSystemFont, dir_ / "fonts" / "sans.ttf");
        Write("themes/calm.theme", "theme {\nname = \"Calm\"\nauthor = \"Us\"\ncolors {\ntext = $FF102030\n}\n}\n");
    }

    void Write(const std::string& name, const std::string& text) { std::ofstream(dir_ / name) << text; }

    // Loads a skin made of the header, body and closing tag.
    void Load(const std::string& body, const SkinRequirements& required = {}, const std::string& name = "s") {
        Write(name + ".skin", "<skin name=\"" + name + "\" author=\"Us\" picture=\"pic.png\">\n" + body + "</skin>\n");
        library_ = std::make_unique<SkinLibrary>(dir_.Path(), required);
        library_->LoadSkin(name + ".skin");
    }

    test::ScratchDir dir_;
    std::unique_ptr<SkinLibrary> library_;
};

TEST_F(SkinLibraryTest, EntriesTakeTheirPrefixBordersAndDefaults) {
    Load(R"(<!-- each kind once -->
<item name="A" rect="1,2,16,10" />
<hitem name="A" rect="0,0,16,10" brd="3,4" hvr="2" />
<vitem name="A" rect="0,0,16,10" brd="3,4" ext="1,2,3,4" anim="5,6" num="7" />
<sitem name="A" rect="0,0,16,10" />
<item name="B" rect="0,0,16,10" brd="1,2,3,-4" />
<col name="C" rect="0,0,8,8" brd="1,1,2,2" num="3" />
<hcol name="C" rect="0,0,8,8" brd="1,2" />
<vcol name="C" rect="0,0,8,8" brd="1,2" />
<scol name="C" rect="0,0,8,8" hvr="9" />
)");
    const Skin& skin = library_->Current();
    struct Expect {
        const char* key;
        SkinBorders borders;
        int innerWidth, innerHeight, hvr, num;
    };
    const Expect items[] = {{"BA", {0, 0, 0, 0}, 16, 10, 0, 1}, {"HA", {3, 4, 0, 0}, 9, 10, 2, 1},
                            {"VA", {0, 0, 3, 4}, 16, 3, 0, 7},  {"SA", {0, 0, 0, 0}, 16, 10, 0, 1},
                            {"BB", {1, 2, 3, -4}, 13, 11, 0, 1}};
    const Expect areas[] = {{"BC", {1, 1, 2, 2}, 6, 4, 0, 3}, {"HC", {1, 2, 0, 0}, 5, 8, 0, 1},
                            {"VC", {0, 0, 1, 2}, 8, 5, 0, 1}, {"SC", {0, 0, 0, 0}, 8, 8, 9, 1}};
    auto check = [](const SkinColourArea& a, const Expect& e) {
        SCOPED_TRACE(e.key);
        EXPECT_TRUE(a.defined);
        EXPECT_EQ(a.key, e.key);
        const int got[] = {a.borders.left, a.borders.right, a.borders.top, a.borders.bottom,
                           a.innerWidth,   a.innerHeight,   a.hvr,         a.num};
        const int want[] = {e.borders.left, e.borders.right, e.borders.top, e.borders.bottom,
                            e.innerWidth,   e.innerHeight,   e.hvr,         e.num};
        for (int i = 0; i < 8; ++i) EXPECT_EQ(got[i], want[i]) << i;
    };
    for (const Expect& e : items) check(skin.Item(e.key), e);
    for (const Expect& e : areas) check(skin.ColourArea(e.key), e);

    EXPECT_EQ(skin.Item("BA").rect.x, 1);
    EXPECT_EQ(skin.Item("BA").rect.y, 2);
    EXPECT_EQ(skin.Item("BA").anim, (std::array<int, 2>{1, 255}));
    EXPECT_EQ(skin.Item("BA").ext, (std::array<int, 4>{}));
    EXPECT_EQ(skin.Item("VA").anim, (std::array<int, 2>{5, 6}));
    EXPECT_EQ(skin.Item("VA").ext, (std::array<int, 4>{1, 2, 3, 4}));
}

TEST_F(SkinLibraryTest, FontsIconsConfigsAndThemesLoad) {
    SkinRequirements required;
    required.fonts = {"default"};
    required.icons = {"row"};
    required.configs = {"list_line"};
    Load(R"(<font name="default" filename="sans.ttf" />
<font name="big" filename="sans.ttf" size="20" embolden="1" mono="1" />
<icon name="one" rect="0,0,8,8" ctype="single" />
<icon name="row" rect="0,8,32,8" ctype="multi" />
<include_themes name="calm.theme" />
<cfg name="list_line" height="18" text_y="2">
)",
         required);
    const Skin& skin = library_->Current();
    EXPECT_EQ(skin.Font("default").size, 12);
    EXPECT_FALSE(skin.Font("default").mono);
    EXPECT_EQ(skin.Font("big").size, 20);
    EXPECT_EQ(skin.Font("big").embolden, 1);
    EXPECT_TRUE(skin.Font("big").mono);
    EXPECT_GT(library_->Font("big").Height(), library_->Font("default").Height());
    EXPECT_EQ(skin.Icon("one").type, SkinIconType::Single);
    EXPECT_EQ(skin.Icon("row").type, SkinIconType::Multi);
    EXPECT_EQ(skin.Icon("row").rect.w, 32);
    // text_x is left out and keeps its default between the two given values
    const SkinConfig& line = skin.Config("list_line");
    EXPECT_EQ(line.Value("height"), 18);
    EXPECT_EQ(line.Value("text_x"), 3);
    EXPECT_EQ(line.Value("text_y"), 2);
    EXPECT_EQ(skin.Colour(ThemeColour::Text), 0xFF102030u);
    EXPECT_EQ(library_->Picture().Width(), 64);
}

TEST_F(SkinLibraryTest, FailuresNameTheirKeyFileAndLineAndKeepTheCurrentSkin) {
    // The good skin has what every case requires; the bad one fails on its own entry or on a missing key.
    Load(R"(<item name="GT_BUTTON" rect="0,0,4,4" />
<scol name="CUR" rect="0,0,1,1" />
<font name="default" filename="sans.ttf" />
<icon name="play" rect="0,0,8,8" ctype="single" />
<cfg name="menu_bar">
)",
         {}, "good");
    Write("themes/broken.theme", "theme {\nname = \"x\"\nauthor = \"y\"\ncolors {\nnot_a_colour = 1\n}\n}\n");
    const std::string directory = std::filesystem::absolute(dir_.Path()).lexically_normal().string();
    const std::string skin = "\nin " + directory + "/bad.skin";
    // A bad skin's body (from line 2), or a key the skin has to define and lacks.
    using KeyList = std::vector<std::string> SkinRequirements::*;
    struct Case {
        std::string body;
        KeyList list;
        std::string key;
        std::string message;
    };
    const Case cases[] = {
        {"", &SkinRequirements::items, "BGT_BUTTON", "Skin item name not found\nskit_data_.name: BGT_BUTTON" + skin},
        {"", &SkinRequirements::colourAreas, "SCUR", "Skin col name not found\nscol_data_.name: SCUR" + skin},
        {"", &SkinRequirements::fonts, "default", "Font name not found" + skin},
        {"", &SkinRequirements::icons, "play", "Icon name not found" + skin},
        // This message ends its own last line.
        {"", &SkinRequirements::configs, "menu_bar", "Config name not found\ncfg.name: menu_bar" + skin},
        {"<cfg name=\"no_such\">\n", nullptr, "", "Config name not found\ncfg.name: no_such" + skin + ", line 2"},
        {"<icon name=\"x\" rect=\"0,0,1,1\" ctype=\"double\" />\n", nullptr, "",
         "Icon ctype must be single or multi: double" + skin + ", line 2"},
        {"<item rect=\"0,0,1,1\" name=\"x\" />\n", nullptr, "", "MatchName(): Failed" + skin + ", line 2"},
        {"<item name=\"x\"\n\n  rect=\"0,0,1\" />\n", nullptr, "", "MatchSpecial(): Failed" + skin + ", line 4"},
        {"<item name=\"x\" rect=\"0,0,1,1\" num=\"1\" hvr=\"2\" />\n", nullptr, "",
         "MatchSpecial(): Failed" + skin + ", line 2"},
        {"<include_themes name=\"missing.theme\" />\n", nullptr, "",
         "Load(): Couldn't open file\n" + directory + "/themes/missing.theme (No such file or directory)" + skin +
             ", line 2"},
        // A theme's failure names the theme file, then where the skin includes it.
        {"<!-- a comment\n  over two lines -->\n<include_themes name=\"broken.theme\" />\n", nullptr, "",
         "ReadTheme(): Unknown colour name not_a_colour\nin " + directory + "/themes/broken.theme, line 5" + skin +
             ", line 4"},
        {"<item name=\"x\" rect=\"0,0,1,1\" />\n<widget name=\"x\" />\n", nullptr, "",
         "Parse error in skin file" + skin + ", line 3"},
    };
    const auto failureOf = [&](SkinLibrary& library, const std::string& file) {
        try {
            library.LoadSkin(file);
        } catch (const Exception& e) {
            return e.Message();
        }
        return std::string("loaded");
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.body);
        Write("bad.skin", "<skin name=\"bad\" author=\"\" picture=\"pic.png\">\n" + c.body + "</skin>\n");
        SkinRequirements required;
        if (c.list) required.*c.list = {c.key};
        SkinLibrary library(dir_.Path(), required);
        library.LoadSkin("good.skin");
        EXPECT_EQ(failureOf(library, "bad.skin"), c.message);
        EXPECT_EQ(library.Current().name, "good");
    }

    // A picture or font the skin names and the system can't open: its name, and
    // where the skin names it.
    Write("bad.skin", "<skin name=\"bad\" author=\"\" picture=\"nowhere.png\">\n</skin>\n");
    std::string message = failureOf(*library_, "bad.skin");
    EXPECT_NE(message.find("nowhere.png"), std::string::npos) << message;
    EXPECT_TRUE(message.ends_with(skin + ", line 1")) << message;
    Write("bad.skin", "<skin name=\"bad\" author=\"\" picture=\"pic.png\">\n\n<font name=\"f\" filename=\"gone.ttf\" />\n"
                      "</skin>\n");
    message = failureOf(*library_, "bad.skin");
    EXPECT_NE(message.find("gone.ttf"), std::string::npos) << message;
    EXPECT_TRUE(message.ends_with(skin + ", line 3")) << message;

    EXPECT_EQ(failureOf(*library_, "absent.skin"),
              "Load(): Couldn't open file\n" + directory + "/absent.skin (No such file or directory)");
    EXPECT_THROW(library_->LoadSkin("absent.skin"), FileIOException);
    EXPECT_THROW(library_->Current().Item("BNONE"), ParseException);
    EXPECT_EQ(library_->Current().name, "good");
}

// The window and menu kinds go by the type table's names (WINDOW, MENU and
// their parts); skins that spell them GT_WINDOW and GT_MENU still load, with
// the table's spelling winning where a skin has both.
TEST_F(SkinLibraryTest, WindowAndMenuGoByTheTypeTableAndTheOlderSpellingStillLoads) {
    for (const auto& [name, table] :
         {std::pair{"GT_WINDOW", "WINDOW"}, {"GT_WINDOW_TITLE_I", "WINDOW_TITLE_I"}, {"GT_MENU2_S", "MENU2_S"},
          {"GT_WINDOW_CLOSE_P", "GT_WINDOW_CLOSE_P"}, {"GT_WINDOW_RESIZE", "GT_WINDOW_RESIZE"},
          {"GT_MENUS", "GT_MENUS"}, {"GT_MBUTTON", "GT_MBUTTON"}, {"WINDOW", "WINDOW"}, {"MENU_BAR", "MENU_BAR"}})
        EXPECT_EQ(TableItemName(name), table) << name;

    SkinRequirements required;
    required.items = {"BWINDOW", "HMENU_BAR", "BGT_WINDOW_CLOSE"};
    const auto windowX = [&](const std::string& body) {
        Load(body + "<hitem name=\"MENU_BAR\" rect=\"0,0,8,8\" />\n<item name=\"GT_WINDOW_CLOSE\" rect=\"0,0,8,8\" />\n",
             required);
        return library_->Current().Item("BWINDOW").rect.x;
    };
    EXPECT_EQ(windowX("<item name=\"WINDOW\" rect=\"1,0,8,8\" />\n"), 1);
    EXPECT_EQ(windowX("<item name=\"GT_WINDOW\" rect=\"2,0,8,8\" />\n"), 2);
    EXPECT_EQ(library_->Current().items.count("BGT_WINDOW"), 0u);
    EXPECT_EQ(windowX("<item name=\"WINDOW\" rect=\"1,0,8,8\" />\n<item name=\"GT_WINDOW\" rect=\"2,0,8,8\" />\n"), 1);
    EXPECT_EQ(windowX("<item name=\"GT_WINDOW\" rect=\"2,0,8,8\" />\n<item name=\"WINDOW\" rect=\"1,0,8,8\" />\n"), 1);

    // A name neither spelling knows leaves the window undefined.
    const std::string shown = std::filesystem::absolute(dir_.Path()).lexically_normal().string() + "/s.skin";
    try {
        windowX("<item name=\"WINDOWS\" rect=\"1,0,8,8\" />\n");
        ADD_FAILURE() << "loaded";
    } catch (const Exception& e) {
        EXPECT_EQ(e.Message(), "Skin item name not found\nskit_data_.name: BWINDOW\nin " + shown);
    }
}

// The skin the program ships, as the build lays it out with its fonts: every
// key the widgets look up is there, and its pieces lie inside the picture.
TEST(ShippedSkin, DefinesEveryRequiredKeyWithinItsPicture) {
    SkinLibrary library(test::BinaryDir() / "skins");
    try {
        library.LoadSkin("default.skin");
    } catch (const Exception& e) {
        FAIL() << e.Message();
    }
    const Skin& skin = library.Current();
    const int width = library.Picture().Width(), height = library.Picture().Height();
    auto within = [&](const std::string& key, const Gorb_Rect& rect) {
        SCOPED_TRACE(key);
        EXPECT_GE(rect.x, 0);
        EXPECT_GE(rect.y, 0);
        EXPECT_LE(rect.x + rect.w, width);
        EXPECT_LE(rect.y + rect.h, height);
    };
    auto inside = [&](const SkinColourArea& area) {
        within(area.key, area.rect);
        EXPECT_GT(area.innerWidth, 0) << area.key;
        EXPECT_GT(area.innerHeight, 0) << area.key;
    };
    for (const auto& [key, item] : skin.items) inside(item);
    for (const auto& [key, area] : skin.colourAreas) inside(area);
    // The icons a speed button centres on its face fit inside it.
    const Gorb_Rect button = skin.Item("BGT_SPEEDBUTTON").rect;
    for (const auto& [name, icon] : skin.icons) {
        within(name, icon.rect);
        EXPECT_LE(icon.rect.h, button.h - 4) << name;
    }
    // The theme sets every colour; one it forgets stays 0.
    ASSERT_EQ(skin.themes.size(), 1u);
    for (int i = 0; i < kThemeColourCount; ++i) EXPECT_NE(skin.Colour(i), 0u) << kThemeColourNames[i];
    EXPECT_TRUE(skin.Font("pattern").mono);
}

TEST(ThemeReader, ReadsSeveralThemesWithDerivedColours) {
    const auto themes = ReadThemes(R"(theme {
name = "One"
author = "A"
colors {
background = $FFC83264
; a comment line among the colours

text = lighten(background, 100)
text_disabled = darken(background, 100)
hover = alphaset(background, $40)
selection = copy(hover)
focus_ring = 0x80FF0000
}
}

theme {
name = "Two"
author = "B"
colors {
}
})");
    ASSERT_EQ(themes.size(), 2u);
    EXPECT_EQ(themes[0].name, "One");
    EXPECT_EQ(themes[0].author, "A");
    // red 200, green 50, blue 100: lightened to 255/150/200, darkened to 100/0/0
    EXPECT_EQ(themes[0].Colour(ThemeColour::Text), 0xFFFF96C8u);
    EXPECT_EQ(themes[0].Colour(ThemeColour::TextDisabled), 0xFF640000u);
    EXPECT_EQ(themes[0].Colour(ThemeColour::Hover), 0x40C83264u);
    EXPECT_EQ(themes[0].Colour(ThemeColour::Selection), 0x40C83264u);
    EXPECT_EQ(themes[0].Colour(ThemeColour::FocusRing), 0x80FF0000u);
    EXPECT_EQ(themes[1].name, "Two");
    EXPECT_EQ(themes[1].Colour(ThemeColour::Background), 0u);

    EXPECT_THROW(ReadThemes("theme {\nname = \"x\"\nauthor = \"y\"\ncolors {\nnot_a_colour = 1\n}\n}\n"),
                 ParseException);
    EXPECT_THROW(ReadThemes("theme {\nname = \"x\"\nauthor = \"y\"\ncolors {\ntext = copy(nothing)\n}\n}\n"),
                 ParseException);
}

}  // namespace
}  // namespace sondrel
