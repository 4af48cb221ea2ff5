#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "test_support.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"
#include "ui/queued_input.h"
#include "ui/skin/skin_library.h"
#include "ui/surface_pixels.h"
#include "ui/toolkit.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/check_button.h"
#include "ui/widgets/frame.h"
#include "ui/widgets/gauge.h"
#include "ui/widgets/image.h"
#include "ui/widgets/progress_bar.h"
#include "ui/widgets/select_box.h"
#include "ui/widgets/select_button.h"
#include "ui/widgets/space_bar.h"
#include "ui/widgets/speed_button.h"

namespace sondrel {
namespace {

class SimpleWidgetsTest : public ::testing::Test {
protected:
    void SetUp() override {
        screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
        toolkit.Init(*screen);
        window = toolkit.OpenWindow(1, {0, 0, 400, 300}, 0, "widgets");
    }
    void Send(int type, int x = 0, int y = 0, uint16_t key = 0) {
        Gorb_Event event;
        event.type = type;
        event.x = x;
        event.y = y;
        event.key = key;
        input.events.push_back(event);
    }
    // A click in the middle of the widget, then the queue's entries other than keys.
    std::vector<QueueEntry> Click(const Widget& widget) {
        const Gorb_Rect& r = widget.Rect();
        Send(kGorbButton1Down, r.x + r.w / 2, r.y + r.h / 2);
        Send(kGorbButton1Up, r.x + r.w / 2, r.y + r.h / 2);
        return Run();
    }
    std::vector<QueueEntry> PressSpace() {
        Send(kGorbKeyDown, 0, 0, kKeySpace);
        Send(kGorbKeyUp, 0, 0, kKeySpace);
        return Run();
    }
    std::vector<QueueEntry> Run() {
        toolkit.Update();
        std::vector<QueueEntry> out;
        while (const QueueEntry* entry = toolkit.PopEntry())
            if (entry->kind != kEntryKeyDown && entry->kind != kEntryKeyUp) out.push_back(*entry);
        return out;
    }

    QueuedInput input;
    Toolkit toolkit{input, [] { return 0.0; }};
    std::unique_ptr<Gorb_Surface> screen;
    Window* window = nullptr;
};

using Entries = std::vector<QueueEntry>;

TEST_F(SimpleWidgetsTest, CheckBoxesAndCheckButtonsFlipOnClickAndSpace) {
    auto& box = window->Emplace<CheckBox>(7, Gorb_Rect{10, 30, 100, 16}, "Loop");
    auto& button = window->Emplace<CheckButton>(8, Gorb_Rect{10, 60, 60, 20}, "Mute");
    const std::pair<ToggleWidget*, EntryKind> cases[] = {{&box, kEntryToggle}, {&button, kEntryToggle}};
    for (const auto& [widget, kind] : cases) {
        SCOPED_TRACE(widget->Text());
        EXPECT_EQ(Click(*widget), (Entries{{kind, widget->Id(), 1}}));
        EXPECT_TRUE(widget->On());
        EXPECT_EQ(window->Focus(), widget);
        EXPECT_EQ(PressSpace(), (Entries{{kind, widget->Id(), 0}}));
        EXPECT_FALSE(widget->On());
        EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);  // acts at once, holds nothing

        // Disabled: neither the click nor the focus it would bring.
        toolkit.Focus(window, nullptr);
        widget->SetEnabled(false);
        EXPECT_TRUE(Click(*widget).empty());
        EXPECT_TRUE(PressSpace().empty());
        EXPECT_FALSE(widget->On());
        EXPECT_EQ(window->Focus(), nullptr);
    }
}

TEST_F(SimpleWidgetsTest, ChoosingARadioWidgetClearsOnlyItsOwnGroupOfItsOwnKind) {
    std::vector<ToggleWidget*> boxes;
    for (uint32_t i = 0; i < 3; ++i)
        boxes.push_back(&window->Emplace<SelectBox>(20 + i, Gorb_Rect{10, 30 + 20 * int(i), 100, 16}, "b", 0, i));
    auto& otherGroup = window->Emplace<SelectBox>(30, Gorb_Rect{150, 30, 100, 16}, "g", 1, 5);
    auto& button = window->Emplace<SelectButton>(40, Gorb_Rect{150, 60, 60, 20}, "k", 0, 9);
    otherGroup.SetOn(true);
    button.SetOn(true);
    boxes[0]->SetOn(true);

    EXPECT_EQ(Click(*boxes[2]), (Entries{{kEntryChoice, 22, 2}}));
    EXPECT_EQ(PressSpace(), Entries{});  // the chosen one again: no change, no entry
    const auto states = [&] {
        return std::vector<bool>{boxes[0]->On(), boxes[1]->On(), boxes[2]->On(), otherGroup.On(), button.On()};
    };
    EXPECT_EQ(states(), (std::vector<bool>{false, false, true, true, true}));

    button.SetOn(false);
    EXPECT_EQ(Click(button), (Entries{{kEntryChoice, 40, 9}}));
    EXPECT_EQ(states(), (std::vector<bool>{false, false, true, true, true}));
    boxes[1]->SetEnabled(false);
    EXPECT_TRUE(Click(*boxes[1]).empty());
    EXPECT_FALSE(boxes[1]->On());
}

TEST_F(SimpleWidgetsTest, ArrowPairSharesAnIdAndTellsItsDirection) {
    auto& up = window->Emplace<SpeedButton>(12, Gorb_Rect{10, 30, 16, 16}, "up", 0);
    auto& down = window->Emplace<SpeedButton>(12, Gorb_Rect{10, 50, 16, 16}, "down", 1);
    auto& plain = window->Emplace<PushButton>(13, Gorb_Rect{40, 30, 60, 20}, "Go");
    EXPECT_EQ(Click(down), (Entries{{kEntryButton, 12, 1}}));
    EXPECT_EQ(Click(up), (Entries{{kEntryButton, 12, 0}}));
    EXPECT_EQ(Click(plain), (Entries{{kEntryValue, 13, 0}}));
}

TEST_F(SimpleWidgetsTest, DecorationsTakeNoFocusAndLetTheWindowBeDragged) {
    window->Emplace<Frame>(1, Gorb_Rect{0, 20, 400, 280}, "Group");
    auto& gauge = window->Emplace<Gauge>(WidgetKind::HGauge, 2, Gorb_Rect{10, 30, 100, 10});
    window->Emplace<SpaceBar>(WidgetKind::VSpaceBar, 3, Gorb_Rect{200, 30, 6, 100});
    auto& box = window->Emplace<CheckBox>(4, Gorb_Rect{10, 200, 100, 16}, "only focusable");
    Send(kGorbButton1Down, 50, 35);  // on the gauge, inside the frame
    Send(kGorbMouseMove, 60, 45);
    Send(kGorbButton1Up, 60, 45);
    EXPECT_TRUE(Run().empty());
    EXPECT_EQ(window->Focus(), nullptr);
    EXPECT_EQ(window->Rect().x, 10);
    EXPECT_EQ(gauge.Value(), 0);
    for (int i = 0; i < 2; ++i) {
        Send(kGorbKeyDown, 0, 0, kKeyTab);
        Run();
        EXPECT_EQ(window->Focus(), &box);
    }
}

TEST_F(SimpleWidgetsTest, ImagesShowTheirSurfaceUnderTheSelectionAndMarkerAndReportClicks) {
    auto& image = window->Emplace<Image>(9, Gorb_Rect{40, 50, 64, 32});
    image.Surface().Fill(image.Surface().FindPixel(0xFF2040C0));
    image.SetSelection({10, 4, 20, 10}, 96);
    image.SetMarker({0, 0, 64, 32}, MarkerStyle::Solid);
    toolkit.Draw();
    const Gorb_Pixels locked = screen->Lock();
    const uint16_t plain = locked.Row(50 + 20)[40 + 5], selected = locked.Row(50 + 6)[40 + 15];
    const uint16_t marker = locked.Row(50 + 31)[40 + 63];
    screen->Unlock();
    const DrawStyle& style = toolkit.Style();
    EXPECT_EQ(plain, Rgb565(0xFF2040C0));
    EXPECT_EQ(selected, BlendRgb565(Rgb565(style.Colour(ThemeColour::Selection)), Rgb565(0xFF2040C0), 96));
    EXPECT_EQ(marker, Rgb565(style.Colour(ThemeColour::FocusRing)));

    Send(kGorbButton1Down, 40 + 63, 50 + 2);
    Send(kGorbButton1Up, 40 + 63, 50 + 2);
    EXPECT_EQ(Run(), (Entries{{kEntryImage, 9, 63u | (2u << 16)}}));
    image.SetEnabled(false);
    EXPECT_TRUE(Click(image).empty());
}

TEST(GaugeTest, ClampsItsValueAndCaptionsThePercentage) {
    struct Case {
        int32_t maximum;
        int32_t value;
        int32_t kept;
        const char* caption;
    };
    const Case cases[] = {
        {100, 0, 0, "  0%"}, {200, 50, 50, " 25%"}, {3, 1, 1, " 33%"},
        {100, 250, 100, "100%"}, {100, -5, 0, "  0%"}, {0, 1, 1, "100%"},  // a maximum below 1 counts as 1
        {2000000000, 1999999999, 1999999999, " 99%"},
    };
    for (const Case& c : cases) {
        ProgressBar bar(1, {0, 0, 100, 14}, c.maximum);
        bar.SetValue(c.value);
        EXPECT_EQ(bar.Value(), c.kept) << c.value << " of " << c.maximum;
        EXPECT_EQ(bar.Caption(), c.caption) << c.value << " of " << c.maximum;
    }
    ProgressBar bar(1, {0, 0, 100, 14}, 100);
    bar.SetValue(80);
    bar.SetMaximum(40);
    EXPECT_EQ(bar.Value(), 40);
}

// Every kind draws a visible change of state, with the shipped skin and (where the
// plain look has one) without it.
TEST_F(SimpleWidgetsTest, EachKindDrawsItsStateChange) {
    SkinLibrary skin(test::BinaryDir() / "skins");
    skin.LoadSkin("default.skin");
    struct Case {
        const char* name;
        std::function<Widget&(Window&)> make;
        std::function<void(Widget&)> change;
        bool skinOnly = false;  // the plain look shows no difference (text needs the skin's font)
    };
    const auto flip = [](Widget& w) { static_cast<ToggleWidget&>(w).SetOn(true); };
    const auto fill = [](Widget& w) { static_cast<Gauge&>(w).SetValue(60); };
    const Gorb_Rect r{20, 40, 120, 40};
    const Case cases[] = {
        {"check box", [&](Window& w) -> Widget& { return w.Emplace<CheckBox>(1, r, "x"); }, flip},
        {"select box", [&](Window& w) -> Widget& { return w.Emplace<SelectBox>(1, r, "x", 0, 0); }, flip},
        {"check button", [&](Window& w) -> Widget& { return w.Emplace<CheckButton>(1, r, "x"); }, flip},
        {"select button", [&](Window& w) -> Widget& { return w.Emplace<SelectButton>(1, r, "x", 0, 0); }, flip},
        {"disabled", [&](Window& w) -> Widget& { return w.Emplace<CheckButton>(1, r, "x"); },
         [](Widget& w) { w.SetEnabled(false); }, true},
        {"speed button", [&](Window& w) -> Widget& { return w.Emplace<SpeedButton>(1, r, "play"); },
         [](Widget& w) { w.SetEnabled(false); }, true},
        {"focused button", [&](Window& w) -> Widget& { return w.Emplace<PushButton>(1, r, "x"); },
         [](Widget& w) { w.Owner()->SetFocus(&w); }, true},
        {"hgauge", [&](Window& w) -> Widget& { return w.Emplace<Gauge>(WidgetKind::HGauge, 1, r); }, fill},
        {"vgauge", [&](Window& w) -> Widget& { return w.Emplace<Gauge>(WidgetKind::VGauge, 1, r); }, fill},
        {"progress", [&](Window& w) -> Widget& { return w.Emplace<ProgressBar>(1, r); }, fill},
        {"frame", [&](Window& w) -> Widget& { return w.Emplace<Frame>(1, r); },
         [](Widget& w) { static_cast<Frame&>(w).SetLabel("Label"); }, true},
        {"image",
         [&](Window& w) -> Widget& {
             auto& image = w.Emplace<Image>(1, r);
             image.Surface().Fill(image.Surface().FindPixel(0xFFFFFFFF));
             return image;
         },
         [](Widget& w) { static_cast<Image&>(w).SetSelection({4, 4, 30, 20}, 128); }},
        {"spacer", [&](Window& w) -> Widget& { return w.Emplace<SpaceBar>(WidgetKind::HSpaceBar, 1, r); },
         [](Widget& w) { w.SetHidden(true); }},
    };
    const auto pixels = [&] {
        toolkit.Draw();
        return SurfacePixels(*screen, r);
    };
    for (const SkinLibrary* library : std::vector<const SkinLibrary*>{nullptr, &skin}) {
        for (const Case& c : cases) {
            if (c.skinOnly && library == nullptr) continue;
            SCOPED_TRACE(std::string(c.name) + (library != nullptr ? " skinned" : " plain"));
            toolkit.Init(*screen, library);
            Window* w = toolkit.OpenWindow(1, {0, 0, 300, 200}, 0, "draw");
            Widget& widget = c.make(*w);
            const auto before = pixels();
            c.change(widget);
            EXPECT_NE(pixels(), before);
        }
    }
}

}  // namespace
}  // namespace sondrel
