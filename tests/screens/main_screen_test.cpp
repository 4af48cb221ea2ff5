#include "screens/main_screen.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "test_support.h"
#include "ui/skin/skin_library.h"
#include "ui/toolkit.h"
#include "ui/widgets/check_button.h"
#include "ui/widgets/image.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/slider.h"
#include "ui/widgets/text_line.h"
#include "ui/window.h"

namespace sondrel {
namespace {

class NoInput : public InputSource {
public:
    bool NextEvent(Gorb_Event&) override { return false; }
    uint32_t Modifiers() override { return 0; }
    uint32_t MouseState(int& x, int& y) override { return x = y = 0, 0u; }
};

bool Overlap(const Gorb_Rect& a, const Gorb_Rect& b) {
    return a.x < b.x + b.w && b.x < a.x + a.w && a.y < b.y + b.h && b.y < a.y + a.h;
}

class MainScreenTest : public ::testing::Test {
protected:
    std::multimap<uint16_t, const Widget*> ById() const {
        std::multimap<uint16_t, const Widget*> found;
        for (const auto& widget : widgets.mainWindow->Widgets()) found.emplace(widget->Id(), widget.get());
        return found;
    }

    NoInput input;
    Toolkit toolkit{input};
    PatternViewWidgets widgets = BuildMainScreen(toolkit, 800, 600, 20);
};

TEST_F(MainScreenTest, EveryControlIsThereWithItsIdKindAndText) {
    ASSERT_NE(widgets.mainWindow, nullptr);
    struct Control {
        uint16_t id;
        WidgetKind kind;
        const char* text;
        int count = 1;
    };
    const Control controls[] = {
        {kControlPlay, WidgetKind::Button, "Play"},
        {kControlCursorPlay, WidgetKind::Button, "Cursor play"},
        {kControlStop, WidgetKind::Button, "Stop"},
        {kControlPatternPlay, WidgetKind::Button, "Pat. play"},
        {kControlPatternSettings, WidgetKind::Button, "Pattern settings"},
        {kControlPatternResize, WidgetKind::Button, "Pattern resize"},
        {kControlModuleSettings, WidgetKind::Button, "Module settings"},
        {kControlModuleInfo, WidgetKind::Button, "Module info"},
        {kControlEditInstrument, WidgetKind::Button, "Edit"},
        {kControlListInsert, WidgetKind::Button, "Insert"},
        {kControlListRemove, WidgetKind::Button, "Remove"},
        {kControlListValue, WidgetKind::SpeedButton, "", 2},
        {kControlListOrder, WidgetKind::SpeedButton, "", 2},
        {kControlMakeNew, WidgetKind::Button, "Make new ..."},
        {kControlDeleteOld, WidgetKind::Button, "Delete old ..."},
        {kControlOverview, WidgetKind::Button, "Overview"},
        {kControlChannel, WidgetKind::CheckButton, "0", 4},
        {kControlTestMode, WidgetKind::CheckButton, "Test mode"},
        {kControlLineStep, WidgetKind::TextLine, ""},
        {kControlSpeed, WidgetKind::TextLine, ""},
        {kControlOctave, WidgetKind::HSlider, ""},
        {kControlVolume, WidgetKind::TextLine, ""},
        {kControlGrid, WidgetKind::Image, ""},
        {kControlPatternList, WidgetKind::List, ""},
        {kControlInstrumentList, WidgetKind::List, ""},
        {kControlInstrumentPreview, WidgetKind::Image, ""},
    };
    const auto byId = ById();
    for (const Control& control : controls) {
        SCOPED_TRACE(control.id);
        ASSERT_EQ(static_cast<int>(byId.count(control.id)), control.count);
        const Widget* widget = byId.find(control.id)->second;
        EXPECT_EQ(widget->Kind(), control.kind);
        if (control.kind == WidgetKind::Button) {
            EXPECT_EQ(static_cast<const PushButton*>(widget)->Text(), control.text);
        } else if (control.kind == WidgetKind::CheckButton) {
            EXPECT_EQ(static_cast<const CheckButton*>(widget)->Text(), control.text);
        }
    }
    // The four channel toggles start on and queue the mask of those left on.
    widgets.channels[2]->SetOn(false);
    for (const CheckButton* toggle : widgets.channels) EXPECT_EQ(toggle->Mask(), 0x0Bu);

    // The record handed to the pattern view names the same widgets.
    const std::pair<const Widget*, uint16_t> handed[] = {
        {widgets.grid, kControlGrid},           {widgets.patternList, kControlPatternList},
        {widgets.instrumentList, kControlInstrumentList}, {widgets.instrumentPreview, kControlInstrumentPreview},
        {widgets.lineStep, kControlLineStep},   {widgets.octave, kControlOctave},
        {widgets.volume, kControlVolume},       {widgets.testMode, kControlTestMode},
        {widgets.speed, kControlSpeed},         {widgets.channels[3], kControlChannel}};
    for (const auto& [widget, id] : handed) {
        ASSERT_NE(widget, nullptr) << id;
        EXPECT_EQ(widget->Id(), id);
    }
}

TEST_F(MainScreenTest, TheWindowFillsTheScreenBelowTheMenuAndNothingOverlaps) {
    const Window& window = *widgets.mainWindow;
    EXPECT_EQ(window.Rect().y, 20);
    EXPECT_EQ(window.Rect().w, 800);
    EXPECT_EQ(window.Rect().y + window.Rect().h, 600);
    EXPECT_FALSE(window.Draggable());
    EXPECT_FALSE(window.HasPart(WindowPart::Close));

    const Gorb_Rect body{0, kTitleBarHeight, window.Rect().w, window.Rect().h - kTitleBarHeight};
    const auto& all = window.Widgets();
    for (size_t i = 0; i < all.size(); ++i) {
        const Gorb_Rect& r = all[i]->Rect();
        EXPECT_TRUE(r.x >= body.x && r.y >= body.y && r.x + r.w <= body.x + body.w && r.y + r.h <= body.y + body.h)
            << "widget " << all[i]->Id() << " leaves the window";
        // The labelled frames lie around their controls; everything else stands alone.
        for (size_t j = i + 1; j < all.size(); ++j) {
            const bool frames = all[i]->Kind() == WidgetKind::Frame || all[j]->Kind() == WidgetKind::Frame;
            if (frames && !(all[i]->Kind() == WidgetKind::Frame && all[j]->Kind() == WidgetKind::Frame)) continue;
            EXPECT_FALSE(Overlap(r, all[j]->Rect())) << all[i]->Id() << " and " << all[j]->Id();
        }
    }

    // The grid holds all 32 rows of 12 pixels below its header, and the widest row text.
    EXPECT_GE(widgets.grid->Rect().h, 14 + 32 * 12);
    EXPECT_GE(widgets.grid->Rect().w, 756);
    EXPECT_EQ(widgets.grid->Surface().Height(), widgets.grid->Rect().h);
}

// Instrument names of their usual length show whole in the instrument list
// with the shipped font: a General MIDI name and a MOD sample name of 22
// characters, beside the number column and the scroll bar.
TEST(MainScreenNamesTest, TheInstrumentListFitsNamesOfTheirUsualLength) {
    SkinLibrary skin(test::BinaryDir() / "skins");
    skin.LoadSkin("default.skin");
    const Gorb_Font& font = skin.Font("default");
    NoInput input;
    Toolkit toolkit{input};
    const PatternViewWidgets widgets = BuildMainScreen(toolkit, 800, 600, 20);
    const int numberColumn = 8 * 3;
    const int nameWidth = widgets.instrumentList->Rect().w - 2 * ListBox::kBorder - AttachedScrollBar::kWidth -
                          numberColumn - 4;
    for (const char* name : {"Acoustic Grand Piano", "Electric Bass (finger)", "ST-01:StringsSynth.11x"})
        EXPECT_LE(font.TextWidth(name), nameWidth) << name;
}

}  // namespace
}  // namespace sondrel
