#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ui/painter.h"
#include "ui/toolkit_fixture.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/check_button.h"
#include "ui/widgets/frame.h"
#include "ui/widgets/gauge.h"
#include "ui/widgets/image.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/progress_bar.h"
#include "ui/widgets/scroll_bar.h"
#include "ui/widgets/select_box.h"
#include "ui/widgets/select_button.h"
#include "ui/widgets/slider.h"
#include "ui/widgets/space_bar.h"
#include "ui/widgets/speed_button.h"
#include "ui/widgets/text_field.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

class SimpleWidgetsTest : public ToolkitFixture {
protected:
    Entries ClickOn(const Widget& widget) {
        Click(widget);
        return Drain();
    }
    Entries PressSpace() {
        Key(kKeySpace);
        return Drain();
    }

    Window* window = Restart({0, 0, 400, 300});
};

TEST_F(SimpleWidgetsTest, CheckBoxesAndCheckButtonsFlipOnClickAndSpace) {
    auto& box = window->Emplace<CheckBox>(7, Gorb_Rect{10, 30, 100, 16}, "Loop");
    auto& button = window->Emplace<CheckButton>(8, Gorb_Rect{10, 60, 60, 20}, "Mute");
    const std::pair<ToggleWidget*, EntryKind> cases[] = {{&box, kEntryToggle}, {&button, kEntryToggle}};
    for (const auto& [widget, kind] : cases) {
        SCOPED_TRACE(widget->Text());
        EXPECT_EQ(ClickOn(*widget), (Entries{{kind, widget->Id(), 1}}));
        EXPECT_TRUE(widget->On());
        EXPECT_EQ(window->Focus(), widget);
        EXPECT_EQ(PressSpace(), (Entries{{kind, widget->Id(), 0}}));
        EXPECT_FALSE(widget->On());
        EXPECT_EQ(toolkit.Mode(), MouseMode::Idle);  // acts at once, holds nothing

        // Disabled: neither the click nor the focus it would bring.
        toolkit.Focus(window, nullptr);
        widget->SetEnabled(false);
        EXPECT_TRUE(ClickOn(*widget).empty());
        EXPECT_TRUE(PressSpace().empty());
        EXPECT_FALSE(widget->On());
        EXPECT_EQ(window->Focus(), nullptr);
    }
}

// Toggles that are the bits of one mask: a click queues the mask of those on,
// a Shift+click asks for this one alone and leaves them all as they are.
TEST_F(SimpleWidgetsTest, MaskTogglesQueueTheirMaskOrASoloForShiftClick) {
    std::vector<CheckButton*> bits;
    for (int b = 0; b < 4; ++b) {
        bits.push_back(&window->Emplace<CheckButton>(9, Gorb_Rect{10 + 30 * b, 60, 28, 20}, std::to_string(b)));
        bits.back()->SetBit(b);
        bits.back()->SetOn(true);
    }
    EXPECT_EQ(ClickOn(*bits[1]), (Entries{{kEntryToggle, 9, 0x0D}}));
    const Gorb_Rect r = bits[2]->Rect();
    Click({r.x + 4, r.y + 4}, kGorbShift);
    EXPECT_EQ(Drain(), (Entries{{kEntryMaskSolo, 9, 2}}));
    EXPECT_EQ(bits[0]->Mask(), 0x0Du);
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

    EXPECT_EQ(ClickOn(*boxes[2]), (Entries{{kEntryChoice, 22, 2}}));
    EXPECT_EQ(PressSpace(), Entries{});  // the chosen one again: no change, no entry
    const auto states = [&] {
        return std::vector<bool>{boxes[0]->On(), boxes[1]->On(), boxes[2]->On(), otherGroup.On(), button.On()};
    };
    EXPECT_EQ(states(), (std::vector<bool>{false, false, true, true, true}));

    button.SetOn(false);
    EXPECT_EQ(ClickOn(button), (Entries{{kEntryChoice, 40, 9}}));
    EXPECT_EQ(states(), (std::vector<bool>{false, false, true, true, true}));
    boxes[1]->SetEnabled(false);
    EXPECT_TRUE(ClickOn(*boxes[1]).empty());
    EXPECT_FALSE(boxes[1]->On());
}

TEST_F(SimpleWidgetsTest, ArrowPairSharesAnIdAndTellsItsDirection) {
    auto& up = window->Emplace<SpeedButton>(12, Gorb_Rect{10, 30, 16, 16}, "up", 0);
    auto& down = window->Emplace<SpeedButton>(12, Gorb_Rect{10, 50, 16, 16}, "down", 1);
    auto& plain = window->Emplace<PushButton>(13, Gorb_Rect{40, 30, 60, 20}, "Go");
    EXPECT_EQ(ClickOn(down), (Entries{{kEntryButton, 12, 1}}));
    EXPECT_EQ(ClickOn(up), (Entries{{kEntryButton, 12, 0}}));
    EXPECT_EQ(ClickOn(plain), (Entries{{kEntryValue, 13, 0}}));
}

TEST_F(SimpleWidgetsTest, DecorationsTakeNoFocusAndLetTheWindowBeDragged) {
    window->Emplace<Frame>(1, Gorb_Rect{0, 20, 400, 280}, "Group");
    auto& gauge = window->Emplace<Gauge>(WidgetKind::HGauge, 2, Gorb_Rect{10, 30, 100, 10});
    window->Emplace<SpaceBar>(WidgetKind::VSpaceBar, 3, Gorb_Rect{200, 30, 6, 100});
    auto& box = window->Emplace<CheckBox>(4, Gorb_Rect{10, 200, 100, 16}, "only focusable");
    Mouse(kGorbButton1Down, {50, 35});  // on the gauge, inside the frame
    Mouse(kGorbMouseMove, {60, 45});
    Mouse(kGorbButton1Up, {60, 45});
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(window->Focus(), nullptr);
    EXPECT_EQ(window->Rect().x, 10);
    EXPECT_EQ(gauge.Value(), 0);
    for (int i = 0; i < 2; ++i) {
        Keys({{kKeyTab}});
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

    Click({40 + 63, 50 + 2});
    EXPECT_EQ(Drain(), (Entries{{kEntryImage, 9, 63u | (2u << 16)}}));
    // An image that follows drags reports where the pointer goes, kept inside it.
    image.SetFollowsDrags(true);
    Mouse(kGorbButton1Down, {40 + 3, 50 + 4});
    Mouse(kGorbMouseMove, {40 + 3, 50 + 4});
    Mouse(kGorbMouseMove, {40 + 100, 50 - 9});
    Mouse(kGorbButton1Up, {40 + 100, 50 - 9});
    Mouse(kGorbMouseMove, {40 + 5, 50 + 5});
    EXPECT_EQ(Drain(), (Entries{{kEntryImage, 9, PackImagePoint(3, 4, false)},
                                {kEntryImage, 9, PackImagePoint(63, 0, true)}}));
    image.SetEnabled(false);
    EXPECT_TRUE(ClickOn(image).empty());
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

// A maker of a widget of kind W from the arguments, set up by setup.
template <class W, class... Args>
std::function<Widget&(Window&)> Make(std::function<void(W&)> setup, Args... args) {
    return [=](Window& window) -> Widget& {
        W& widget = window.Emplace<W>(args...);
        if (setup) setup(widget);
        return widget;
    };
}

// Every kind draws a visible change of state, with the shipped skin and (where the
// plain look has one) without it.
TEST_F(SimpleWidgetsTest, EachKindDrawsItsStateChange) {
    struct Case {
        const char* name;
        std::function<Widget&(Window&)> make;
        std::function<void(Widget&)> change;
        bool skinOnly = false;  // the plain look shows no difference (text needs the skin's font)
        Gorb_Rect rect = {20, 40, 120, 40};
    };
    const Gorb_Rect r{20, 40, 120, 40}, wide{20, 40, 200, 14}, tall{20, 40, 14, 200};
    const auto flip = [](Widget& w) { static_cast<ToggleWidget&>(w).SetOn(true); };
    const auto fill = [](Widget& w) { static_cast<Gauge&>(w).SetValue(60); };
    const auto move = [](Widget& w) { static_cast<RangeWidget&>(w).SetValue(40); };
    const auto disable = [](Widget& w) { w.SetEnabled(false); };
    const auto focus = [this](Widget& w) { toolkit.Focus(w.Owner(), &w); };
    const auto press = [this](Point at) { return [this, at](Widget&) { Mouse(kGorbButton1Down, at); }; };
    const auto selectAll = [this](Widget& w) {
        toolkit.Focus(w.Owner(), &w);
        Keys({Ctrl(TextLine::kKeyA)});
    };
    const auto textLine = Make<TextLine>([](TextLine& l) { l.SetText("text"), l.SetNumeric(0, 9); }, 1, r);
    const auto textField = Make<TextField>([](TextField& f) { f.SetText("one\ntwo"); }, 1, r);
    const auto bar = [](bool vertical, Gorb_Rect at) {
        return Make<ScrollBar>([](ScrollBar& b) { b.SetTotal(100, 10); }, vertical, 1, at);
    };
    const auto slider = [](bool vertical, Gorb_Rect at) {
        return Make<Slider>([](Slider& s) { s.SetRange(0, 50); }, vertical, 1, at);
    };
    const auto list = Make<ListBox>([](ListBox& l) {
        std::vector<ListLine> lines(20, {ListCell{"line"}});
        l.SetLines(std::move(lines));
    }, 1, Gorb_Rect{r.x, r.y, r.w, 80});
    const Case cases[] = {
        {"check box", Make<CheckBox>({}, 1, r, "x"), flip},
        {"select box", Make<SelectBox>({}, 1, r, "x", 0, 0u), flip},
        {"check button", Make<CheckButton>({}, 1, r, "x"), flip},
        {"select button", Make<SelectButton>({}, 1, r, "x", 0, 0u), flip},
        {"disabled", Make<CheckButton>({}, 1, r, "x"), disable, true},
        {"speed button", Make<SpeedButton>({}, 1, r, "play"), disable, true},
        {"focused button", Make<PushButton>({}, 1, r, "x"), focus, true},
        {"hgauge", Make<Gauge>({}, WidgetKind::HGauge, 1, r), fill},
        {"vgauge", Make<Gauge>({}, WidgetKind::VGauge, 1, r), fill},
        {"progress", Make<ProgressBar>({}, 1, r), fill},
        {"frame", Make<Frame>({}, 1, r), [](Widget& w) { static_cast<Frame&>(w).SetLabel("Label"); }, true},
        {"image", Make<Image>([](Image& i) { i.Surface().Fill(i.Surface().FindPixel(0xFFFFFFFF)); }, 1, r),
         [](Widget& w) { static_cast<Image&>(w).SetSelection({4, 4, 30, 20}, 128); }},
        {"spacer", Make<SpaceBar>({}, WidgetKind::HSpaceBar, 1, r), [](Widget& w) { w.SetHidden(true); }},
        {"text line focused", textLine, focus},
        {"text line selected", textLine, selectAll},
        {"text line plus held", textLine, press({r.x + r.w - 4, r.y + 2})},
        {"text field focused", textField, focus},
        {"text field selected", textField, selectAll},
        {"text field scroll bar", textField,
         [](Widget& w) { static_cast<TextField&>(w).SetText("1\n2\n3\n4\n5\n6\n7\n8\n9"); }},
        {"hbar moved", bar(false, wide), move, false, wide},
        {"hbar held", bar(false, wide), press({wide.x + 2, wide.y + 2}), false, wide},
        {"vbar moved", bar(true, tall), move, false, tall},
        {"vbar held", bar(true, tall), press({tall.x + 2, tall.y + 2}), false, tall},
        {"hslider moved", slider(false, wide), move, false, wide},
        {"vslider moved", slider(true, tall), move, false, tall},
        {"list selected", list, [](Widget& w) { static_cast<ListBox&>(w).Select(1); }},
        {"list scrolled", list, [](Widget& w) { static_cast<ListBox&>(w).SetTop(1); }},
    };
    for (const SkinLibrary* library : {static_cast<const SkinLibrary*>(nullptr), &ShippedSkin()}) {
        for (const Case& c : cases) {
            if (c.skinOnly && library == nullptr) continue;
            SCOPED_TRACE(std::string(c.name) + (library != nullptr ? " skinned" : " plain"));
            Widget& widget = c.make(*Restart({0, 0, 300, 260}, library));
            const auto before = Pixels(c.rect);
            c.change(widget);
            EXPECT_NE(Pixels(c.rect), before);
        }
    }
}

}  // namespace
}  // namespace sondrel
