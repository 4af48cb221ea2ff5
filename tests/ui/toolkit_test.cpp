#include "ui/toolkit.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "ui/painter.h"
#include "ui/toolkit_fixture.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/scroll_bar.h"
#include "ui/widgets/text_field.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

// A widget that holds itself down when pressed and counts its repeats.
class HeldCounter : public Widget {
public:
    HeldCounter(uint16_t id, const Gorb_Rect& rect) : Widget(WidgetKind::HScrollBar, id, rect) {}
    void Press(WidgetContext& context, Point, int) override { context.mouseMode = MouseMode::WidgetHeld; }
    void Repeat(WidgetContext&) override { ++repeats; }
    bool CommitsOnRelease() const override { return true; }
    int32_t Value() const override { return 77; }
    int repeats = 0;
};

using ToolkitTest = ToolkitFixture;

TEST(CommandQueueTest, PopsInOrderAndKeepsTheLastEntryUntilTheNextPop) {
    CommandQueue queue;
    EXPECT_EQ(queue.PopEntry(), nullptr);
    queue.PushEntry(kEntryNone, 5);  // never queued
    queue.PushEntry(kEntryButton, 7);
    queue.PushKey(kKeySpace, ' ', kGorbLeftShift, true, false);
    EXPECT_EQ(*queue.PopEntry(), (QueueEntry{kEntryButton, 7, 0}));
    const QueueEntry* key = queue.PopEntry();
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->kind, kEntryKeyDown);
    EXPECT_EQ(KeyCode(key->a), kKeySpace);
    EXPECT_EQ(KeyCharacter(key->a), ' ');
    EXPECT_EQ(KeyModifiers(key->b), kGorbLeftShift);
    EXPECT_TRUE(KeyRepeat(key->b));
    EXPECT_FALSE(KeyTaken(key->b));
    // An empty pop frees nothing: the key entry is still readable.
    EXPECT_EQ(queue.PopEntry(), nullptr);
    EXPECT_EQ(KeyCode(key->a), kKeySpace);
}

TEST_F(ToolkitTest, TicksRepeatTheHeldWidgetAndCapTheBacklog) {
    struct Case {
        std::vector<double> frames;  // seconds each frame took
        int repeats;
        double backlog;
    };
    const Case cases[] = {
        {{0.5}, 10, 0.0},           // a stalled frame runs at most ten ticks and drops the rest
        {{0.025}, 2, 0.005},        // the part of a tick left over waits for the next frame
        {{0.025, 0.025}, 5, 0.0},
        {{0.004, 0.004}, 0, 0.008},
    };
    for (const Case& c : cases) {
        toolkit.Init(*screen);
        Window* window = toolkit.OpenWindow(1, {0, 0, 200, 100}, 0, "held");
        auto& counter = window->Emplace<HeldCounter>(3, Gorb_Rect{10, 30, 50, 20});
        Mouse(kGorbButton1Down, {20, 40});
        ASSERT_EQ(toolkit.Held(), &counter);
        for (double frame : c.frames) {
            now += frame;
            toolkit.Update();
        }
        EXPECT_EQ(counter.repeats, c.repeats) << c.frames.size() << " frames from " << c.frames[0];
        EXPECT_NEAR(toolkit.TickBacklog(), c.backlog, 1e-9);
        // Letting go commits the value and ends the repeats.
        now += 0.05;
        Mouse(kGorbButton1Up, {20, 40});
        EXPECT_EQ(counter.repeats, c.repeats);
        EXPECT_EQ(Drain(), (Entries{{kEntryValue, 3, 77}}));
    }
}

TEST_F(ToolkitTest, OpeningAnOpenIdRaisesItAndAFullStackOpensNothing) {
    Window* first = toolkit.OpenWindow(100, {0, 0, 50, 50}, 0, "first");
    ASSERT_NE(first, nullptr);
    // 32 slots: 31 more fit beside the first.
    for (uint16_t id = 1; id < 32; ++id) ASSERT_NE(toolkit.OpenWindow(id, {0, 0, 50, 50}, 0, ""), nullptr);
    EXPECT_EQ(toolkit.OpenWindow(200, {0, 0, 50, 50}, 0, "one too many"), nullptr);
    EXPECT_EQ(toolkit.Stack().size(), 32u);

    EXPECT_EQ(toolkit.OpenWindow(100, {0, 0, 50, 50}, 0, "again"), nullptr);
    EXPECT_EQ(toolkit.Stack().back(), first);
    EXPECT_EQ(toolkit.Current(), first);
    // A closed window frees its slot.
    toolkit.CloseWindow(toolkit.FindWindow(5));
    EXPECT_NE(toolkit.OpenWindow(200, {0, 0, 50, 50}, 0, "fits now"), nullptr);
}

TEST_F(ToolkitTest, ADialogTakesTheActiveFlagUntilItCloses) {
    Window* main = toolkit.OpenWindow(1, {0, 0, 800, 600}, 1u << 3, "main");
    auto& button = main->Emplace<PushButton>(10, Gorb_Rect{10, 30, 80, 20}, "Play");
    Window* dialog = toolkit.OpenWindow(2, {300, 200, 200, 100}, 0, "dialog");
    Window* request = toolkit.OpenWindow(3, {320, 220, 100, 50}, 0, "request");
    EXPECT_FALSE(main->Active());
    EXPECT_FALSE(dialog->Active());
    EXPECT_TRUE(request->Active());

    Click({20, 40});
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(main->Focus(), nullptr);
    EXPECT_EQ(toolkit.Hover().kind, HoverKind::WindowBody);  // over an inactive window: no widget

    // Closing the dialog under the request passes its claim on to the request.
    toolkit.CloseWindow(dialog);
    EXPECT_FALSE(main->Active());
    toolkit.CloseWindow(request);
    EXPECT_TRUE(main->Active());
    Click(button);
    EXPECT_EQ(main->Focus(), &button);
    EXPECT_EQ(Drain(), (Entries{{kEntryValue, 10, 0}}));
}

TEST_F(ToolkitTest, TabWalksEnabledVisibleWidgetsBothWaysAndWraps) {
    Window* window = toolkit.OpenWindow(1, {0, 0, 400, 300}, 0, "tabs");
    std::vector<Widget*> widgets;
    for (uint16_t id = 0; id < 5; ++id)
        widgets.push_back(&window->Emplace<PushButton>(id, Gorb_Rect{10, 30 + 25 * id, 80, 20}, "b"));
    widgets[1]->SetHidden(true);
    widgets[2]->SetEnabled(false);
    struct Case {
        uint32_t modifiers;
        std::vector<uint16_t> visits;
    };
    const Case cases[] = {
        {0, {0, 3, 4, 0, 3}},
        {kGorbLeftShift, {4, 3, 0, 4}},
        {kGorbRightShift, {4, 3, 0, 4}},
    };
    for (const Case& c : cases) {
        toolkit.Focus(window, nullptr);
        std::vector<uint16_t> visits;
        for (std::size_t i = 0; i < c.visits.size(); ++i) {
            EXPECT_TRUE(Keys({{kKeyTab, 0, c.modifiers}}));
            visits.push_back(window->Focus()->Id());
        }
        EXPECT_EQ(visits, c.visits) << "modifiers " << c.modifiers;
    }
}

// Tab into a text line or text field queues a value entry with its id (and
// the line's number); a click into one doesn't, and buttons never do.
TEST_F(ToolkitTest, TabIntoATextEntryQueuesItsValue) {
    Window* window = toolkit.OpenWindow(1, {0, 0, 400, 300}, 0, "entries");
    window->Emplace<PushButton>(1, Gorb_Rect{10, 30, 80, 20}, "b");
    auto& number = window->Emplace<TextLine>(2, Gorb_Rect{10, 60, 80, 20});
    number.SetNumeric(0, 99);
    number.SetNumber(42);
    window->Emplace<TextField>(3, Gorb_Rect{10, 90, 200, 40});
    auto& name = window->Emplace<TextLine>(4, Gorb_Rect{10, 140, 80, 20});
    name.SetText("Verse");

    EXPECT_TRUE(Keys({{kKeyTab}}));
    EXPECT_TRUE(Drain().empty());  // the button
    EXPECT_TRUE(Keys({{kKeyTab}}));
    EXPECT_EQ(Drain(), (Entries{{kEntryValue, 2, 42}}));
    EXPECT_TRUE(Keys({{kKeyTab}}));
    EXPECT_EQ(Drain(), (Entries{{kEntryValue, 2, 42}, {kEntryValue, 3, 0}}));
    EXPECT_TRUE(Keys({{kKeyTab, 0, kGorbLeftShift}}));
    EXPECT_EQ(Drain(), (Entries{{kEntryValue, 3, 0}, {kEntryValue, 2, 42}}));
    EXPECT_TRUE(Keys({{kKeyTab}, {kKeyTab}}));
    EXPECT_EQ(Drain(), (Entries{{kEntryValue, 2, 42}, {kEntryValue, 3, 0}, {kEntryValue, 3, 0}, {kEntryValue, 4, 0}}));

    Click(number);
    EXPECT_EQ(window->Focus(), &number);
    EXPECT_EQ(Drain(), (Entries{{kEntryValue, 4, 0}}));  // only the name's leaving
}

TEST_F(ToolkitTest, DraggingByTheBodyMovesOnlyDraggableWindows) {
    struct Case {
        uint32_t flags;
        Gorb_Rect after;
    };
    const Case cases[] = {
        {0, {130, 120, 200, 100}},
        {1u << 3, {100, 100, 200, 100}},
        {1u << 4, {100, 100, 200, 100}},
        {1u << 7, {100, 100, 200, 100}},
        {1u << 5, {130, 120, 200, 100}},
    };
    for (const Case& c : cases) {
        toolkit.Init(*screen);
        Window* window = toolkit.OpenWindow(1, {100, 100, 200, 100}, c.flags, "drag");
        Mouse(kGorbButton1Down, {110, 105});
        Mouse(kGorbMouseMove, {125, 115});
        Mouse(kGorbMouseMove, {140, 125});
        Mouse(kGorbButton1Up, {140, 125});
        EXPECT_EQ(window->Rect().x, c.after.x) << "flags " << c.flags;
        EXPECT_EQ(window->Rect().y, c.after.y) << "flags " << c.flags;
        EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);
    }
}

TEST_F(ToolkitTest, ButtonsQueueAClickOnlyWhenLetGoOverThem) {
    Window* window = toolkit.OpenWindow(1, {0, 0, 400, 300}, 0, "buttons");
    auto& button = window->Emplace<PushButton>(42, Gorb_Rect{10, 30, 80, 20}, "OK");

    Mouse(kGorbButton1Down, {20, 40});
    EXPECT_EQ(toolkit.Mode(), MouseMode::WidgetHeld);
    EXPECT_TRUE(button.Down());
    Mouse(kGorbMouseMove, {200, 200});  // slid off: no click
    Mouse(kGorbButton1Up, {200, 200});
    EXPECT_TRUE(Drain().empty());

    // Space holds the focused button until it is released.
    Queue(kGorbKeyDown, {}, kKeySpace);
    Update();
    EXPECT_EQ(toolkit.Mode(), MouseMode::SpaceHeld);
    Queue(kGorbKeyUp, {}, kKeySpace);
    Update();
    EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);
    EXPECT_EQ(DrainAll(), (Entries{{kEntryKeyDown, PackKeyA(kKeySpace, 0), PackKeyB(0, false, true)},
                                                {kEntryValue, 42, 0},
                                                {kEntryKeyUp, kKeySpace, 1}}));
}

TEST_F(ToolkitTest, InputNoWidgetTakesBecomesQueueEntries) {
    toolkit.OpenWindow(1, {0, 0, 400, 300}, 0, "plain");
    Gorb_Event wheel;
    wheel.type = kGorbWheelDown;
    wheel.delta = -2;
    input.events.push_back(wheel);
    wheel.type = kGorbWheelUp;
    wheel.delta = 3;
    input.events.push_back(wheel);
    Queue(kGorbCloseRequest);
    Queue(kGorbKeyDown, {}, 30);
    Update();
    EXPECT_EQ(DrainAll(), (Entries{{kEntryWheelDown, static_cast<uint32_t>(-2), 0},
                                                {kEntryWheelUp, 3, 0},
                                                {kEntryCloseRequest, 0, 0},
                                                {kEntryKeyDown, 30, 0}}));
}

TEST_F(ToolkitTest, DrawsWindowsInThemeColoursWithoutASkin) {
    Window* lower = toolkit.OpenWindow(1, {10, 10, 100, 80}, 0, "lower");
    toolkit.OpenWindow(2, {60, 40, 100, 80}, 0, "upper");
    lower->Emplace<PushButton>(1, Gorb_Rect{5, 60, 20, 10}, "");
    toolkit.Draw();
    const auto at = [&](int x, int y) {
        const uint16_t pixel = screen->Lock().Row(y)[x];
        screen->Unlock();
        return pixel;
    };
    const DrawStyle& style = toolkit.Style();
    EXPECT_EQ(at(400, 400), Rgb565(style.Colour(ThemeColour::Background)));
    EXPECT_EQ(at(30, 15), Rgb565(style.Colour(ThemeColour::TitleInactive)));
    EXPECT_EQ(at(80, 45), Rgb565(style.Colour(ThemeColour::TitleActive)));  // the upper one covers the lower
    EXPECT_EQ(at(15, 70), Rgb565(style.Colour(ThemeColour::BevelLight)));   // the button's raised edge
}

TEST_F(ToolkitTest, TheCloseBoxQueuesItsEntryOnlyWhenLetGoOverIt) {
    struct Case {
        const char* name;
        uint32_t flags;
        bool dialogOnTop;    // a dialog elsewhere takes the active flag
        Point releaseAt;
        bool queued;
    };
    // The window lies at (100, 100), 200 wide: its close box is 14 pixels at the title bar's right end.
    const Point box{100 + 200 - 2 - 7, 100 + 9};
    const Case cases[] = {
        {"let go over it", 0, false, box, true},
        {"slid off", 0, false, {150, 150}, false},
        {"inactive", 0, true, box, false},
        {"no close box", kWindowNoCloseBox, false, box, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        toolkit.Init(*screen);
        Window* window = toolkit.OpenWindow(7, {100, 100, 200, 150}, c.flags, "closable");
        if (c.dialogOnTop) toolkit.OpenWindow(8, {500, 400, 100, 100}, 0, "dialog");
        Mouse(kGorbButton1Down, box);
        EXPECT_EQ(toolkit.Mode() == MouseMode::WindowPartHeld, c.flags == 0 && !c.dialogOnTop);
        Mouse(kGorbMouseMove, c.releaseAt);
        Mouse(kGorbButton1Up, c.releaseAt);
        EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);
        EXPECT_EQ(Drain(), (c.queued ? Entries{{kEntryWindowClose, 7, 0}} : Entries{}));
        EXPECT_EQ(window->Rect().x, 100);  // a press on the box never drags the window
    }
}

// A menu bar along the top that takes no clicks.
class BarOnly : public MenuBar {
public:
    bool Contains(Point p) const override { return p.y < BarHeight(); }
    void Press(Point) override {}
    void Follow(Point) override {}
    void Choose(Point, CommandQueue&) override {}
    void Close() override {}
    int BarHeight() const override { return 20; }
    void Draw(Painter&, const DrawStyle&) const override {}
};

TEST_F(ToolkitTest, MaximisingAndResizingChangeTheSizeAndTellTheOwner) {
    BarOnly bar;
    toolkit.SetMenuBar(&bar);
    const Gorb_Rect start{100, 100, 200, 150};
    const auto open = [&](int& resizes) {
        toolkit.Init(*screen);
        Window* window = toolkit.OpenWindow(1, start, kWindowMaximizable | kWindowResizable, "sizes");
        window->SetResizedHook([&resizes](Window&) { ++resizes; });
        return window;
    };
    const auto clickPart = [&](Window* window, WindowPart part) {
        const Gorb_Rect box = window->PartRect(part);
        Click({window->Rect().x + box.x + 2, window->Rect().y + box.y + 2});
    };
    const auto same = [](const Gorb_Rect& a, const Gorb_Rect& b) {
        return std::tie(a.x, a.y, a.w, a.h) == std::tie(b.x, b.y, b.w, b.h);
    };

    int resizes = 0;
    Window* window = open(resizes);
    clickPart(window, WindowPart::Maximize);
    EXPECT_TRUE(window->Maximized());
    EXPECT_TRUE(same(window->Rect(), {0, 20, kScreenWidth, kScreenHeight - 20}));
    clickPart(window, WindowPart::Maximize);
    EXPECT_FALSE(window->Maximized());
    EXPECT_TRUE(same(window->Rect(), start));
    EXPECT_EQ(resizes, 2);

    struct Drag {
        int dx, dy;
        int w, h;
    };
    const Drag drags[] = {
        {50, 30, 250, 180},
        {-500, -500, kWindowMinWidth, kWindowMinHeight},
        {2000, 2000, kScreenWidth - start.x, kScreenHeight - start.y},
        {0, 0, 200, 150},  // no change of size: the owner is not told
    };
    for (const Drag& d : drags) {
        resizes = 0;
        window = open(resizes);
        const Point grip{start.x + start.w - 3, start.y + start.h - 3};
        Mouse(kGorbButton1Down, grip);
        Mouse(kGorbMouseMove, {grip.x + d.dx / 2, grip.y + d.dy / 2});
        Mouse(kGorbMouseMove, {grip.x + d.dx, grip.y + d.dy});
        Mouse(kGorbButton1Up, {grip.x + d.dx, grip.y + d.dy});
        EXPECT_TRUE(same(window->Rect(), {start.x, start.y, d.w, d.h})) << d.dx << "," << d.dy;
        EXPECT_EQ(resizes > 0, d.w != start.w || d.h != start.h);
    }
    toolkit.SetMenuBar(nullptr);
}

// Under the pointer with nothing held, buttons, boxes, scroll bars and the
// title bar boxes draw their hover looks; a held button keeps the others plain.
TEST_F(ToolkitTest, WidgetsUnderThePointerDrawTheirHoverLook) {
    struct Case {
        const char* name;
        Gorb_Rect area;  // window coordinates; the pointer goes to its middle
    };
    const Case cases[] = {
        {"push button", {10, 30, 80, 20}},
        {"check box", {10, 60, 80, 16}},
        {"scroll bar grip", {24, 90, 92, 14}},
        {"close box", {200 - 16, 2, 14, 14}},
        {"maximise box", {200 - 32, 2, 14, 14}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Window* window = Restart({0, 0, 200, 150}, &ShippedSkin(), kWindowMaximizable);
        window->Emplace<PushButton>(1, Gorb_Rect{10, 30, 80, 20}, "OK");
        window->Emplace<CheckBox>(2, Gorb_Rect{10, 60, 80, 16}, "On");
        window->Emplace<ScrollBar>(false, 3, Gorb_Rect{10, 90, 120, 14});
        window->Emplace<PushButton>(4, Gorb_Rect{100, 120, 60, 20}, "Held");
        const auto look = [&](int x, int y) {
            Mouse(kGorbMouseMove, {x, y});
            return Pixels(c.area);
        };
        const auto away = look(150, 100);
        const Point middle{c.area.x + c.area.w / 2, c.area.y + c.area.h / 2};
        EXPECT_NE(look(middle.x, middle.y), away);
        // Holding another button down: nothing else shows its hover look.
        Mouse(kGorbButton1Down, {120, 130});
        EXPECT_EQ(look(middle.x, middle.y), away);
        Mouse(kGorbButton1Up, middle);
    }
}

}  // namespace
}  // namespace sondrel
