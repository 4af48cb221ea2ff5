#include "ui/menu_bar.h"

#include <gtest/gtest.h>

#include <vector>

#include "ui/toolkit_fixture.h"

namespace sondrel {
namespace {

MenuEntry Item(const char* text, int command, bool enabled = true) {
    MenuEntry entry;
    entry.text = text;
    entry.command = command;
    entry.enabled = enabled;
    return entry;
}

// File: New, Save (disabled), separator, Recent > (One, Two), Loop (checked). Edit: Undo.
std::vector<MenuTitle> SampleMenus() {
    MenuEntry recent = Item("Recent", -1);
    recent.submenu = {Item("One", 10), Item("Two", 11)};
    MenuEntry loop = Item("Loop", 7);
    loop.checked = true;
    MenuEntry fresh = Item("New", 3);
    fresh.shortcut = "Ctrl+N";
    return {{"File", {fresh, Item("Save", 5, false), MenuSeparator(), recent, loop}}, {"Edit", {Item("Undo", 20)}}};
}

Point Centre(const Gorb_Rect& r) { return {r.x + r.w / 2, r.y + r.h / 2}; }

class MenuBarTest : public ToolkitFixture {
protected:
    void SetUp() override { toolkit.SetMenuBar(&menu); }
    // The menu commands queued since the last call.
    std::vector<uint32_t> Commands() {
        std::vector<uint32_t> out;
        for (const QueueEntry& entry : Drain())
            if (entry.kind == kEntryMenuCommand) out.push_back(entry.a);
        return out;
    }
    Point Title(int title) const { return Centre(menu.TitleRect(title)); }
    Point Entry(int level, int entry) const { return Centre(menu.EntryRect(level, entry)); }
    void Press(uint16_t key) {
        Queue(kGorbKeyDown, {}, key);
        Update();
    }

    DropDownMenuBar menu{SampleMenus(), kScreenWidth};
};

// Releasing on a disabled entry, a separator or a submenu parent chooses nothing and keeps the menu open.
TEST_F(MenuBarTest, PressMoveReleaseChoosesTheEntryUnderThePointer) {
    struct Case {
        int title;
        std::vector<std::pair<int, int>> path;  // (level, entry) moved over in turn; the last is released on
        std::vector<uint32_t> commands;
    };
    const Case cases[] = {{0, {{0, 0}}, {3}}, {0, {{0, 4}}, {7}}, {1, {{0, 0}}, {20}}, {0, {{0, 3}, {1, 1}}, {11}},
                          {0, {{0, 1}}, {}},  {0, {{0, 2}}, {}},  {0, {{0, 3}}, {}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "entry " << c.path.back().second);
        Mouse(kGorbButton1Down, Title(c.title));
        EXPECT_EQ(toolkit.Mode(), MouseMode::InMenu);
        for (const auto& [level, entry] : c.path) Mouse(kGorbMouseMove, Entry(level, entry));
        const auto [level, entry] = c.path.back();
        Mouse(kGorbButton1Up, Entry(level, entry));
        EXPECT_EQ(Commands(), c.commands);
        EXPECT_EQ(menu.OpenTitle(), c.commands.empty() ? 0 : -1);
        EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);
        menu.Close();
    }
}

TEST_F(MenuBarTest, HoveringASubmenuEntryOpensItAndLeavingForAnotherEntryClosesIt) {
    Mouse(kGorbButton1Down, Title(0));
    Mouse(kGorbMouseMove, Entry(0, 3));
    ASSERT_EQ(menu.OpenDepth(), 2);
    EXPECT_EQ(menu.MenuRect(1).x, menu.MenuRect(0).x + menu.MenuRect(0).w);
    Mouse(kGorbMouseMove, Entry(1, 0));
    EXPECT_EQ(menu.OpenDepth(), 2);
    Mouse(kGorbMouseMove, Entry(0, 0));
    EXPECT_EQ(menu.OpenDepth(), 1);
    // Sliding along the bar swaps the open menu for the other title's.
    Mouse(kGorbMouseMove, Title(1));
    EXPECT_EQ(menu.OpenTitle(), 1);
}

TEST_F(MenuBarTest, AClickedOpenMenuClosesOnEscapeOrAClickElsewhere) {
    Window* window = toolkit.OpenWindow(1, {0, 0, 300, 300}, 0, "under");
    ASSERT_NE(window, nullptr);
    const auto openByClick = [&] {
        Click(Title(0));
        ASSERT_EQ(menu.OpenTitle(), 0);
    };
    openByClick();
    // The open menu covers the window and wins the hover target.
    Mouse(kGorbMouseMove, Entry(0, 4));
    EXPECT_EQ(toolkit.Hover().kind, HoverKind::Menu);
    Press(1);
    EXPECT_EQ(menu.OpenTitle(), -1);

    openByClick();
    Click({400, 400});
    EXPECT_EQ(menu.OpenTitle(), -1);
    EXPECT_TRUE(Commands().empty());

    // A second click on an entry of a clicked-open menu chooses it.
    openByClick();
    Click(Entry(0, 0));
    EXPECT_EQ(Commands(), std::vector<uint32_t>{3});
}

TEST_F(MenuBarTest, KeysWalkTheMenusAndChooseTheHighlightedEntry) {
    constexpr uint16_t kEsc = 0x01, kReturn = 0x1C, kPadEnter = 0x9C, kUp = 0xC8, kLeft = 0xCB, kRight = 0xCD,
                       kDown = 0xD0;
    struct Step {
        uint16_t key;
        int title, depth, highlight;  // afterwards; highlight in the deepest open menu
    };
    struct Case {
        int hover;  // a File entry the pointer rests on first, -1 for none
        std::vector<Step> steps;
        std::vector<uint32_t> commands;
    };
    const Case cases[] = {
        // Down skips the disabled entry and the separator, both ways wrap.
        {-1, {{kDown, 0, 1, 0}, {kDown, 0, 1, 3}, {kDown, 0, 1, 4}, {kDown, 0, 1, 0}, {kUp, 0, 1, 4}}, {}},
        {-1, {{kUp, 0, 1, 4}, {kReturn, -1, 0, 0}}, {7}},
        // Into the submenu with Right, choose there with the keypad Enter.
        {-1, {{kUp, 0, 1, 4}, {kUp, 0, 1, 3}, {kRight, 0, 2, 0}, {kDown, 0, 2, 1}, {kPadEnter, -1, 0, 0}}, {11}},
        // Return on a submenu parent opens it; Left and Escape each close one level.
        {-1, {{kUp, 0, 1, 4}, {kUp, 0, 1, 3}, {kReturn, 0, 2, 0}, {kLeft, 0, 1, 3}, {kRight, 0, 2, 0},
              {kEsc, 0, 1, 3}, {kEsc, -1, 0, 0}}, {}},
        // Off a plain entry Left and Right move along the bar, wrapping.
        {-1, {{kDown, 0, 1, 0}, {kRight, 1, 1, 0}, {kRight, 0, 1, 0}, {kLeft, 1, 1, 0}, {kReturn, -1, 0, 0}}, {20}},
        // A submenu the pointer opened is entered without opening it twice.
        {3, {{kRight, 0, 2, 0}, {kUp, 0, 2, 1}, {kEsc, 0, 1, 3}}, {}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        const Case& c = cases[i];
        Click(Title(0));
        if (c.hover >= 0) Mouse(kGorbMouseMove, Entry(0, c.hover));
        for (const Step& step : c.steps) {
            Press(step.key);
            ASSERT_EQ(menu.OpenTitle(), step.title) << step.key;
            ASSERT_EQ(menu.OpenDepth(), step.depth) << step.key;
            if (step.depth > 0) {
                EXPECT_EQ(menu.Highlighted(step.depth - 1), step.highlight) << step.key;
            }
        }
        EXPECT_EQ(Commands(), c.commands);
        menu.Close();
    }
    // With every menu closed the keys go on to the program untaken.
    Press(kDown);
    const QueueEntry* key = toolkit.PopEntry();
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->kind, kEntryKeyDown);
    EXPECT_FALSE(KeyTaken(key->b));
    EXPECT_EQ(menu.OpenTitle(), -1);
}

// A command may rebuild the titles while a menu hangs open (a save rewrites the
// recent entries): the open menus follow the new entries, measured anew, or
// close where their entries are gone, and drawing never reads the old ones.
TEST_F(MenuBarTest, ReplacingTheTitlesUnderAnOpenMenuKeepsItValid) {
    Mouse(kGorbButton1Down, Title(0));
    Mouse(kGorbMouseMove, Entry(0, 3));
    Mouse(kGorbMouseMove, Entry(1, 1));
    ASSERT_EQ(menu.OpenDepth(), 2);
    const Gorb_Rect submenuBefore = menu.MenuRect(1);

    std::vector<MenuTitle> longer = SampleMenus();
    longer[0].entries[3].submenu.push_back(Item("A much longer third recent module name", 12));
    menu.SetTitles(std::move(longer));
    ASSERT_EQ(menu.OpenDepth(), 2);
    EXPECT_EQ(menu.Highlighted(1), 1);
    EXPECT_GT(menu.MenuRect(1).h, submenuBefore.h);
    EXPECT_GT(menu.MenuRect(1).w, submenuBefore.w);
    (void)Pixels({0, 0, 400, 300});
    Mouse(kGorbMouseMove, Entry(1, 2));
    Mouse(kGorbButton1Up, Entry(1, 2));
    EXPECT_EQ(Commands(), std::vector<uint32_t>{12});

    // The submenu's entry is gone: its menu closes, the title's stays.
    Click(Title(0));
    Mouse(kGorbMouseMove, Entry(0, 3));
    ASSERT_EQ(menu.OpenDepth(), 2);
    std::vector<MenuTitle> shorter = SampleMenus();
    shorter[0].entries.resize(2);
    menu.SetTitles(std::move(shorter));
    EXPECT_EQ(menu.OpenTitle(), 0);
    EXPECT_EQ(menu.OpenDepth(), 1);
    (void)Pixels({0, 0, 400, 300});
    Press(0xD0);
    EXPECT_EQ(menu.Highlighted(0), 0);

    // The open title is gone: everything closes.
    menu.Close();
    Click(Title(1));
    ASSERT_EQ(menu.OpenTitle(), 1);
    menu.SetTitles({SampleMenus()[0]});
    EXPECT_EQ(menu.OpenTitle(), -1);
    EXPECT_EQ(menu.OpenDepth(), 0);
}

TEST_F(MenuBarTest, OpeningAndHoveringRedrawTheMenus) {
    const auto frame = [&] { return Pixels({0, 0, 200, 200}); };
    const auto closed = frame();
    Mouse(kGorbButton1Down, Title(0));
    const auto open = frame();
    EXPECT_NE(open, closed);
    Mouse(kGorbMouseMove, Entry(0, 0));
    EXPECT_NE(frame(), open);
}

}  // namespace
}  // namespace sondrel
