#include "ui/widgets/menu_button.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "ui/painter.h"
#include "ui/toolkit_fixture.h"
#include "ui/widgets/push_button.h"

namespace sondrel {
namespace {

class MenuButtonTest : public ToolkitFixture {
public:
    // The middle of the button, or of one line of its open list, on the screen.
    Point OnButton() const { return {100 + 20 + 40, 50 + 30 + 10}; }
    Point OnLine(int index) const {
        const Gorb_Rect r = button->LineRect(index);
        return {r.x + r.w / 2, r.y + r.h / 2};
    }
    void Open() {
        Click(OnButton());
        ASSERT_TRUE(button->IsOpen());
    }

    Window* window = Restart({100, 50, 300, 200});
    MenuButton* button = &window->Emplace<MenuButton>(9, Gorb_Rect{20, 30, 80, 20}, "0\n1\n2\n3", 1);
};

TEST_F(MenuButtonTest, SplitsItsChoicesAndOpensBelowOrAboveItself) {
    EXPECT_EQ(button->Choices(), (std::vector<std::string>{"0", "1", "2", "3"}));
    EXPECT_EQ(MenuButton(1, {0, 0, 10, 10}, "only", 5).Choice(), 0);
    Open();
    EXPECT_EQ(button->ListRect().y, 50 + 30 + 20);
    EXPECT_EQ(button->Highlighted(), 1);
    EXPECT_NE(toolkit.OpenPopup(), nullptr);
    Click({5, 5});  // elsewhere: closes, chooses nothing
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(toolkit.OpenPopup(), nullptr);

    auto& low = window->Emplace<MenuButton>(10, Gorb_Rect{20, 180, 80, 20}, "a\nb\nc");
    window->MoveBy(0, 600 - 250);
    Mouse(kGorbButton1Down, {130, 400 + 190});
    ASSERT_TRUE(low.IsOpen());
    EXPECT_EQ(low.ListRect().y + low.ListRect().h, 400 + 180);
}

// Each way of working the list, from the closed button with choice 1.
TEST_F(MenuButtonTest, PicksByMouseAndKeysAndClosesWithoutChoosing) {
    struct Case {
        const char* name;
        std::function<void(MenuButtonTest&)> act;
        Entries entries;
        int choice;
    };
    const Case cases[] = {
        {"press, move, release on a choice",
         [](MenuButtonTest& t) {
             t.Mouse(kGorbButton1Down, t.OnButton());
             t.Mouse(kGorbMouseMove, t.OnLine(3));
             t.Mouse(kGorbButton1Up, t.OnLine(3));
         },
         {{kEntryChoice, 9, 3}}, 3},
        {"click to open, click a choice",
         [](MenuButtonTest& t) {
             t.Open();
             t.Mouse(kGorbMouseMove, t.OnLine(0));
             EXPECT_EQ(t.button->Highlighted(), 0);
             t.Click(t.OnLine(0));
         },
         {{kEntryChoice, 9, 0}}, 0},
        {"press, release off everything",
         [](MenuButtonTest& t) {
             t.Mouse(kGorbButton1Down, t.OnButton());
             t.Mouse(kGorbButton1Up, {600, 500});
         },
         {}, 1},
        {"click on the button again", [](MenuButtonTest& t) {
             t.Open();
             t.Click(t.OnButton());
         },
         {}, 1},
        {"Escape", [](MenuButtonTest& t) { t.Open(); t.Key(MenuButton::kKeyEscape); }, {}, 1},
        {"Space, Down, Down, Return",
         [](MenuButtonTest& t) {
             t.toolkit.Focus(t.window, t.button);
             t.Key(kKeySpace);
             t.Key(MenuButton::kKeyDown);
             t.Key(MenuButton::kKeyDown);
             t.Key(MenuButton::kKeyDown);  // stops on the last choice
             t.Key(MenuButton::kKeyReturn);
         },
         {{kEntryChoice, 9, 3}}, 3},
        {"Up and Down while closed",
         [](MenuButtonTest& t) {
             t.toolkit.Focus(t.window, t.button);
             for (uint16_t key : {MenuButton::kKeyUp, MenuButton::kKeyUp, MenuButton::kKeyDown}) t.Key(key);
         },
         {{kEntryChoice, 9, 0}, {kEntryChoice, 9, 1}}, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        button->SetChoice(1);
        c.act(*this);
        EXPECT_EQ(Drain(), c.entries);
        EXPECT_EQ(button->Choice(), c.choice);
        EXPECT_FALSE(button->IsOpen());
        EXPECT_EQ(toolkit.OpenPopup(), nullptr);
        EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);
    }
}

TEST_F(MenuButtonTest, DisabledTakesNoInput) {
    button->SetEnabled(false);
    toolkit.Focus(window, button);
    Click(OnButton());
    Key(kKeySpace);
    Key(MenuButton::kKeyDown);
    EXPECT_TRUE(Drain().empty());
    EXPECT_FALSE(button->IsOpen());
    EXPECT_EQ(button->Choice(), 1);
}

TEST_F(MenuButtonTest, ListIsDrawnOverLaterWidgetsAndClosesWithItsWindow) {
    // A later widget lies on top of the button's list area.
    auto& under = window->Emplace<PushButton>(11, Gorb_Rect{20, 52, 80, 60}, "under");
    const Gorb_Rect area{100 + under.Rect().x, 50 + under.Rect().y, under.Rect().w, under.Rect().h};
    const auto closed = Pixels(area);
    Open();
    EXPECT_NE(Pixels(area), closed);
    const Point highlighted = OnLine(1);
    const Gorb_Pixels pixels = screen->Lock();
    const uint16_t shown = pixels.Row(highlighted.y)[highlighted.x + 20];
    screen->Unlock();
    EXPECT_EQ(shown, Rgb565(toolkit.Style().Colour(ThemeColour::Selection)));

    // Another window opening closes the list; so does its own window closing.
    Window* other = toolkit.OpenWindow(2, {0, 0, 50, 50}, 0, "other");
    EXPECT_FALSE(button->IsOpen());
    toolkit.CloseWindow(other);
    Open();
    toolkit.CloseWindow(window);
    EXPECT_EQ(toolkit.OpenPopup(), nullptr);
    toolkit.Draw();  // nothing left to draw from the closed window
}

}  // namespace
}  // namespace sondrel
