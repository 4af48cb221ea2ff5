#include <gtest/gtest.h>

#include <vector>

#include "ui/toolkit_fixture.h"
#include "ui/widgets/scroll_bar.h"
#include "ui/widgets/slider.h"

namespace sondrel {
namespace {

// One window at the screen's corner (window and screen coordinates agree)
// holding a bar and a slider of each orientation:
//   horizontal bar   x 10..209, arrows 14 px, 100 items with 10 visible
//   vertical bar     y 40..239 at x 250, the same
//   horizontal slider x 10..209 at y 80, 0..50
//   vertical slider  y 40..239 at x 280, 0..50
class ScrollWidgetsTest : public ToolkitFixture {
protected:
    void SetUp() override {
        for (ScrollBar* bar : {hbar, vbar}) bar->SetTotal(100, 10);
        for (Slider* slider : {hslider, vslider}) slider->SetRange(0, 50);
    }
    void Wheel(int type, Point p) {
        Mouse(kGorbMouseMove, p);
        Mouse(type, p);
    }
    // Lets that many 10 ms ticks pass in one frame.
    void Ticks(int count) {
        now += count * Toolkit::kTickSeconds + 1e-6;
        Update();
    }

    Window* window = Restart({0, 0, 320, 260});
    ScrollBar* hbar = &window->Emplace<ScrollBar>(false, 11, Gorb_Rect{10, 40, 200, 14});
    ScrollBar* vbar = &window->Emplace<ScrollBar>(true, 12, Gorb_Rect{250, 40, 14, 200});
    Slider* hslider = &window->Emplace<Slider>(false, 13, Gorb_Rect{10, 80, 200, 14});
    Slider* vslider = &window->Emplace<Slider>(true, 14, Gorb_Rect{280, 40, 14, 200});
};

TEST_F(ScrollWidgetsTest, HeldArrowsAndTrackRepeatOncePerTickAndCommitOnRelease) {
    struct Case {
        RangeWidget* widget;
        Point at;
        int32_t start;
        int ticks;
        int32_t expected;
    };
    const Case cases[] = {
        {hbar, {205, 47}, 0, 3, 4},     // the right arrow: one step on the press, one per tick
        {vbar, {257, 235}, 0, 3, 4},    // the lower arrow
        {hbar, {15, 47}, 5, 2, 2},      // the left arrow
        {hbar, {15, 47}, 1, 5, 0},      // stops at the start
        {hbar, {205, 47}, 88, 20, 90},  // and at the end (ten ticks at most in one frame)
        // A press on the track pages toward the pointer until the grip reaches it:
        // pages to 50, where the grip starts at 14 + 50 * 155 / 90 = 100.
        {hbar, {110, 47}, 0, 10, 50},
        {vbar, {257, 140}, 0, 10, 50},
        {hbar, {40, 47}, 90, 1, 70},    // back from the end, two pages in two steps
        // A slider's track steps once, however long it is held.
        {hslider, {200, 87}, 20, 10, 21},
        {vslider, {287, 230}, 0, 3, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "at " << c.at.x << "," << c.at.y << " from " << c.start);
        RangeWidget& bar = *c.widget;
        bar.SetValue(c.start);
        Mouse(kGorbButton1Down, c.at);
        ASSERT_EQ(toolkit.Held(), &bar);
        Ticks(c.ticks);
        EXPECT_EQ(bar.Value(), c.expected);
        EXPECT_EQ((bar.Flags() & kWidgetChangedWhileHeld) != 0, c.expected != c.start);
        Mouse(kGorbButton1Up, c.at);
        Ticks(5);
        EXPECT_EQ(bar.Value(), c.expected);  // no more steps once let go
        EXPECT_EQ(bar.Flags() & kWidgetChangedWhileHeld, 0);
        EXPECT_EQ(Drain(), (Entries{{kEntryValue, bar.Id(), static_cast<uint32_t>(c.expected)}}));
    }
}

TEST_F(ScrollWidgetsTest, DraggingTheGripFollowsThePointerAndClampsAtTheEnds) {
    struct Case {
        RangeWidget* widget;
        Point grip;  // on the grip at value 0
        Point step;  // one pixel further along
        int32_t maximum;
    };
    const Case cases[] = {
        {hbar, {30, 47}, {1, 0}, 90},
        {vbar, {257, 60}, {0, 1}, 90},
        {hslider, {14, 87}, {1, 0}, 50},
        {vslider, {287, 44}, {0, 1}, 50},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "widget " << c.widget->Id());
        Mouse(kGorbButton1Down, c.grip);
        ASSERT_EQ(c.widget->HeldPart(), RangeWidget::kGrip);
        EXPECT_EQ(c.widget->Value(), 0);  // taking the grip moves nothing
        const auto along = [&](int pixels) { return Point{c.grip.x + c.step.x * pixels, c.grip.y + c.step.y * pixels}; };
        Mouse(kGorbMouseMove, along(1000));
        EXPECT_EQ(c.widget->Value(), c.maximum);
        Mouse(kGorbMouseMove, along(-1000));
        EXPECT_EQ(c.widget->Value(), 0);
        Mouse(kGorbMouseMove, along(1000));
        Ticks(3);  // the grip does not repeat
        Mouse(kGorbButton1Up, along(1000));
        EXPECT_EQ(c.widget->Value(), c.maximum);
        EXPECT_EQ(Drain(), (Entries{{kEntryValue, c.widget->Id(), static_cast<uint32_t>(c.maximum)}}));
        c.widget->SetValue(0);
    }
}

TEST_F(ScrollWidgetsTest, WheelScrollsAnEnabledBarAndDisabledWidgetsIgnoreInput) {
    Wheel(kGorbWheelDown, {110, 47});
    Wheel(kGorbWheelDown, {257, 140});
    Wheel(kGorbWheelDown, {257, 140});
    Wheel(kGorbWheelUp, {257, 140});
    EXPECT_EQ(hbar->Value(), 1);
    EXPECT_EQ(vbar->Value(), 1);
    EXPECT_EQ(Drain(), (Entries{{kEntryWheelWidgetDown, 11, 0},
                                                {kEntryWheelWidgetDown, 12, 0},
                                                {kEntryWheelWidgetDown, 12, 0},
                                                {kEntryWheelWidgetUp, 12, 0}}));

    for (RangeWidget* widget : std::vector<RangeWidget*>{hbar, vbar, hslider, vslider}) widget->SetEnabled(false);
    for (Point p : {Point{205, 47}, Point{110, 47}, Point{257, 235}, Point{200, 87}, Point{287, 44}}) {
        Mouse(kGorbButton1Down, p);
        EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);
        Mouse(kGorbButton1Up, p);
    }
    Wheel(kGorbWheelDown, {110, 47});
    EXPECT_EQ(hbar->Value(), 1);
    EXPECT_EQ(vbar->Value(), 1);
    EXPECT_EQ(hslider->Value(), 0);
    EXPECT_EQ(vslider->Value(), 0);
    // The wheel went to no widget, so it is the program's.
    EXPECT_EQ(Drain(), (Entries{{kEntryWheelDown, static_cast<uint32_t>(-1), 0}}));
}

}  // namespace
}  // namespace sondrel
