#include "ui/toolkit.h"

#include <gtest/gtest.h>

#include <vector>

#include "ui/queued_input.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"
#include "ui/widgets/push_button.h"

namespace sondrel {
namespace {

using FakeInput = QueuedInput;

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

class ToolkitTest : public ::testing::Test {
protected:
    void SetUp() override {
        screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
        toolkit.Init(*screen);
    }
    void Send(int type, int x = 0, int y = 0) {
        Gorb_Event event;
        event.type = type;
        event.x = x;
        event.y = y;
        input.events.push_back(event);
    }
    void Key(int type, uint16_t key) {
        Gorb_Event event;
        event.type = type;
        event.key = key;
        input.events.push_back(event);
    }
    void Click(int x, int y) {
        Send(kGorbButton1Down, x, y);
        Send(kGorbButton1Up, x, y);
    }
    // Every queued entry, oldest first, leaving the queue empty.
    std::vector<QueueEntry> Drain() {
        std::vector<QueueEntry> out;
        while (const QueueEntry* entry = toolkit.PopEntry()) out.push_back(*entry);
        return out;
    }

    FakeInput input;
    double now = 0;
    Toolkit toolkit{input, [this] { return now; }};
    std::unique_ptr<Gorb_Surface> screen;
};

TEST(CommandQueueTest, PopsInOrderAndKeepsTheLastEntryUntilTheNextPop) {
    CommandQueue queue;
    EXPECT_EQ(queue.PopEntry(), nullptr);
    queue.PushEntry(kEntryNone, 5);  // never queued
    queue.PushEntry(kEntryButton, 7);
    queue.PushKey(kKeySpace, ' ', kGorbLeftShift, true, false);
    const QueueEntry* first = queue.PopEntry();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(*first, (QueueEntry{kEntryButton, 7, 0}));
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
        Send(kGorbButton1Down, 20, 40);
        toolkit.Update();
        ASSERT_EQ(toolkit.Held(), &counter);
        for (double frame : c.frames) {
            now += frame;
            toolkit.Update();
        }
        EXPECT_EQ(counter.repeats, c.repeats) << c.frames.size() << " frames from " << c.frames[0];
        EXPECT_NEAR(toolkit.TickBacklog(), c.backlog, 1e-9);
        // Letting go commits the value and ends the repeats.
        Send(kGorbButton1Up, 20, 40);
        now += 0.05;
        toolkit.Update();
        EXPECT_EQ(counter.repeats, c.repeats);
        EXPECT_EQ(Drain(), (std::vector<QueueEntry>{{kEntryValue, 3, 77}}));
    }
}

TEST_F(ToolkitTest, OpeningAnOpenIdRaisesItAndAFullStackOpensNothing) {
    Window* first = toolkit.OpenWindow(100, {0, 0, 50, 50}, 0, "first");
    ASSERT_NE(first, nullptr);
    for (uint16_t id = 1; id < Toolkit::kWindowSlots; ++id) ASSERT_NE(toolkit.OpenWindow(id, {0, 0, 50, 50}, 0, ""), nullptr);
    EXPECT_EQ(toolkit.Stack().back()->Id(), Toolkit::kWindowSlots - 1);
    EXPECT_EQ(toolkit.OpenWindow(200, {0, 0, 50, 50}, 0, "one too many"), nullptr);
    EXPECT_EQ(toolkit.Stack().size(), static_cast<std::size_t>(Toolkit::kWindowSlots));

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

    Click(20, 40);
    toolkit.Update();
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(main->Focus(), nullptr);
    EXPECT_EQ(toolkit.Hover().kind, HoverKind::WindowBody);  // over an inactive window: no widget

    // Closing the dialog under the request passes its claim on to the request.
    toolkit.CloseWindow(dialog);
    EXPECT_FALSE(main->Active());
    toolkit.CloseWindow(request);
    EXPECT_TRUE(main->Active());
    Click(20, 40);
    toolkit.Update();
    EXPECT_EQ(main->Focus(), &button);
    EXPECT_EQ(Drain(), (std::vector<QueueEntry>{{kEntryValue, 10, 0}}));
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
        input.modifiers = c.modifiers;
        std::vector<uint16_t> visits;
        for (std::size_t i = 0; i < c.visits.size(); ++i) {
            Key(kGorbKeyDown, kKeyTab);
            toolkit.Update();
            visits.push_back(window->Focus()->Id());
        }
        EXPECT_EQ(visits, c.visits) << "modifiers " << c.modifiers;
        const auto entries = Drain();
        ASSERT_FALSE(entries.empty());
        EXPECT_EQ(entries[0].kind, kEntryKeyDown);
        EXPECT_TRUE(KeyTaken(entries[0].b));
    }
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
        Send(kGorbButton1Down, 110, 105);
        Send(kGorbMouseMove, 125, 115);
        Send(kGorbMouseMove, 140, 125);
        Send(kGorbButton1Up, 140, 125);
        toolkit.Update();
        EXPECT_EQ(window->Rect().x, c.after.x) << "flags " << c.flags;
        EXPECT_EQ(window->Rect().y, c.after.y) << "flags " << c.flags;
        EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);
    }
}

TEST_F(ToolkitTest, ButtonsQueueAClickOnlyWhenLetGoOverThem) {
    Window* window = toolkit.OpenWindow(1, {0, 0, 400, 300}, 0, "buttons");
    auto& button = window->Emplace<PushButton>(42, Gorb_Rect{10, 30, 80, 20}, "OK");

    Send(kGorbButton1Down, 20, 40);
    toolkit.Update();
    EXPECT_EQ(toolkit.Mode(), MouseMode::WidgetHeld);
    EXPECT_TRUE(button.Down());
    Send(kGorbMouseMove, 200, 200);  // slid off: no click
    Send(kGorbButton1Up, 200, 200);
    toolkit.Update();
    EXPECT_TRUE(Drain().empty());

    // Space holds the focused button until it is released.
    Key(kGorbKeyDown, kKeySpace);
    toolkit.Update();
    EXPECT_EQ(toolkit.Mode(), MouseMode::SpaceHeld);
    Key(kGorbKeyUp, kKeySpace);
    toolkit.Update();
    EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);
    EXPECT_EQ(Drain(), (std::vector<QueueEntry>{{kEntryKeyDown, PackKeyA(kKeySpace, 0), PackKeyB(0, false, true)},
                                                {kEntryValue, 42, 0},
                                                {kEntryKeyUp, kKeySpace, 1}}));

    // A disabled button takes neither the focus nor the click.
    toolkit.Focus(window, nullptr);
    button.SetEnabled(false);
    Click(20, 40);
    toolkit.Update();
    EXPECT_EQ(window->Focus(), nullptr);
    EXPECT_TRUE(Drain().empty());
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
    Send(kGorbCloseRequest);
    Key(kGorbKeyDown, 30);
    toolkit.Update();
    EXPECT_EQ(Drain(), (std::vector<QueueEntry>{{kEntryWheelDown, static_cast<uint32_t>(-2), 0},
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

}  // namespace
}  // namespace sondrel
