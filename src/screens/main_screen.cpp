#include "screens/main_screen.h"

#include <string>

#include "model/module.h"
#include "screens/dialogs/value_formats.h"
#include "ui/toolkit.h"
#include "ui/widgets/check_button.h"
#include "ui/widgets/frame.h"
#include "ui/widgets/image.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/slider.h"
#include "ui/widgets/speed_button.h"
#include "ui/widgets/text_line.h"
#include "ui/widgets/value_label.h"
#include "ui/window.h"

namespace sondrel {

namespace {

// The panel below the grid runs in seven rows of buttons.
constexpr int kMargin = 4;
constexpr int kGridTop = kTitleBarHeight + 2;
constexpr int kPanelTop = kGridTop + kGridHeight + 4;
constexpr int kRow = 22;
constexpr int kButtonHeight = 20;
constexpr int kPanelHeight = 7 * kRow - 2;

// Columns of the panel, left to right. The instrument list is wide enough
// for a number and a name of 22 characters; the play column holds the
// instrument's Edit button and envelope below its buttons.
constexpr int kPatternListX = kMargin;
constexpr int kPatternListWidth = 130;
constexpr int kListToolsX = kPatternListX + kPatternListWidth + 4;
constexpr int kListToolsWidth = 88;
constexpr int kInstrumentListX = kListToolsX + kListToolsWidth + 4;
constexpr int kInstrumentListWidth = 200;
constexpr int kPlayX = kInstrumentListX + kInstrumentListWidth + 4;
constexpr int kPlayWidth = 80;
constexpr int kToolsX = kPlayX + kPlayWidth + 4;
constexpr int kToolsWidth = 104;
constexpr int kSettingsX = kToolsX + kToolsWidth + 4;
constexpr int kSettingWidth = 80;
constexpr int kSettingHeight = 42;   // a labelled frame around one control
constexpr int kOctaveNumberWidth = 16;

Gorb_Rect RowRect(int x, int width, int row) { return {x, kPanelTop + row * kRow, width, kButtonHeight}; }

class MainScreenBuilder {
public:
    explicit MainScreenBuilder(Window& window) : window_(window) {}

    PatternViewWidgets Build() {
        PatternViewWidgets widgets;
        widgets.mainWindow = &window_;
        widgets.grid = &window_.Emplace<Image>(kControlGrid, Gorb_Rect{kMargin, kGridTop, kGridWidth, kGridHeight});
        widgets.grid->SetFollowsDrags(true);
        PatternListPanel(widgets);
        InstrumentPanel(widgets);
        Buttons(kPlayX, kPlayWidth, {{kControlPlay, "Play"}, {kControlCursorPlay, "Cursor play"},
                                     {kControlStop, "Stop"}, {kControlPatternPlay, "Pat. play"}});
        Buttons(kToolsX, kToolsWidth, {{kControlPatternSettings, "Pattern settings"},
                                       {kControlPatternResize, "Pattern resize"},
                                       {kControlModuleSettings, "Module settings"},
                                       {kControlModuleInfo, "Module info"}});
        SettingsPanel(widgets);
        return widgets;
    }

private:
    struct ButtonSpec {
        uint16_t id;
        const char* text;
    };

    void Buttons(int x, int width, std::initializer_list<ButtonSpec> buttons) {
        int row = 0;
        for (const ButtonSpec& button : buttons) window_.Emplace<PushButton>(button.id, RowRect(x, width, row++), button.text);
    }

    // Two arrows side by side sharing one id.
    void ArrowPair(uint16_t id, int row, const char* back, const char* on) {
        const int half = (kListToolsWidth - 2) / 2;
        window_.Emplace<SpeedButton>(id, RowRect(kListToolsX, half, row), back, 0);
        window_.Emplace<SpeedButton>(id, RowRect(kListToolsX + kListToolsWidth - half, half, row), on, 1);
    }

    void PatternListPanel(PatternViewWidgets& widgets) {
        widgets.patternList =
            &window_.Emplace<ListBox>(kControlPatternList, Gorb_Rect{kPatternListX, kPanelTop, kPatternListWidth, kPanelHeight});
        widgets.patternList->SetColumns({{kPatternListWidth - 20, "%s", ""}});
        Buttons(kListToolsX, kListToolsWidth, {{kControlListInsert, "Insert"}, {kControlListRemove, "Remove"}});
        ArrowPair(kControlListValue, 2, "minus", "plus");
        ArrowPair(kControlListOrder, 3, "arrow_up", "arrow_down");
        window_.Emplace<PushButton>(kControlMakeNew, RowRect(kListToolsX, kListToolsWidth, 4), "Make new ...");
        window_.Emplace<PushButton>(kControlDeleteOld, RowRect(kListToolsX, kListToolsWidth, 5), "Delete old ...");
        window_.Emplace<PushButton>(kControlOverview, RowRect(kListToolsX, kListToolsWidth, 6), "Overview");
    }

    void InstrumentPanel(PatternViewWidgets& widgets) {
        widgets.instrumentList = &window_.Emplace<ListBox>(
            kControlInstrumentList, Gorb_Rect{kInstrumentListX, kPanelTop, kInstrumentListWidth, kPanelHeight});
        widgets.instrumentList->SetColumns({{kInstrumentListWidth - 20, "%s", ""}});
        window_.Emplace<PushButton>(kControlEditInstrument, RowRect(kPlayX, kPlayWidth, 4), "Edit");
        const int previewTop = kPanelTop + 5 * kRow;
        widgets.instrumentPreview = &window_.Emplace<Image>(
            kControlInstrumentPreview,
            Gorb_Rect{kPlayX, previewTop, kToolsX + kToolsWidth - kPlayX, kPanelTop + kPanelHeight - previewTop});
    }

    // A labelled frame in the settings panel's column and row, and the
    // rectangle inside it for its control.
    // Without a label the control stands where a labelled one would.
    Gorb_Rect Labelled(int column, int row, const char* label) {
        const Gorb_Rect frame{kSettingsX + column * (kSettingWidth + 4), kPanelTop + row * (kSettingHeight + 2),
                              kSettingWidth, kSettingHeight};
        if (label != nullptr) window_.Emplace<Frame>(nextLabel_++, frame, label);
        return {frame.x + 6, frame.y + 16, frame.w - 12, kButtonHeight};
    }

    void SettingsPanel(PatternViewWidgets& widgets) {
        widgets.lineStep = &Number(kControlLineStep, Labelled(0, 0, "Line step:"), 0, kLineStepMax, 1);
        widgets.speed = &Number(kControlSpeed, Labelled(1, 0, "Speed:"), kSpeedMin, kSpeedMax, kNewModuleSpeed);
        ShowAsSpeed(*widgets.speed);  // ticks a line, as the grid's speed commands read
        // The slider's value is the octave digit of the lowest piano key's C in the grid.
        const Gorb_Rect octave = Labelled(0, 1, "Octave:");
        widgets.octave = &window_.Emplace<Slider>(
            false, kControlOctave, Gorb_Rect{octave.x, octave.y, octave.w - kOctaveNumberWidth - 2, octave.h});
        widgets.octave->SetRange(kOctaveSliderMin, kOctaveSliderMax);
        widgets.octave->SetValue(1);
        window_.Emplace<ValueLabel>(nextLabel_++,
                                    Gorb_Rect{octave.x + octave.w - kOctaveNumberWidth, octave.y, kOctaveNumberWidth, octave.h},
                                    *widgets.octave);
        widgets.volume = &Number(kControlVolume, Labelled(1, 1, "Volume:"), 0, kVolumeMax, kVolumeMax);
        ChannelToggles(widgets, Labelled(0, 2, "Channels:"));
        widgets.testMode = &window_.Emplace<CheckButton>(kControlTestMode, Labelled(1, 2, nullptr), "Test mode");
    }

    // One toggle a channel, all on: every channel sounds.
    void ChannelToggles(PatternViewWidgets& widgets, const Gorb_Rect& rect) {
        static constexpr const char* kLabels[] = {"0", "1", "2", "3"};
        const int width = rect.w / 4;
        for (int c = 0; c < 4; ++c) {
            CheckButton& toggle =
                window_.Emplace<CheckButton>(kControlChannel, Gorb_Rect{rect.x + c * width, rect.y, width - 1, rect.h}, kLabels[c]);
            toggle.SetBit(c);
            toggle.SetOn(true);
            widgets.channels[c] = &toggle;
        }
    }

    TextLine& Number(uint16_t id, const Gorb_Rect& rect, int minimum, int maximum, int value) {
        TextLine& line = window_.Emplace<TextLine>(id, rect, 6);
        line.SetNumeric(minimum, maximum);
        line.SetNumber(value);
        return line;
    }

    Window& window_;
    uint16_t nextLabel_ = kFirstMainLabel;
};

}  // namespace

PatternViewWidgets BuildMainScreen(Toolkit& toolkit, int screenWidth, int screenHeight, int menuBarHeight) {
    const Gorb_Rect rect{0, menuBarHeight, screenWidth, screenHeight - menuBarHeight};
    Window* window = toolkit.OpenWindow(kMainWindowId, rect, kWindowNoCloseBox | kWindowNotDraggable, "Sondrel");
    if (window == nullptr) return {};
    return MainScreenBuilder(*window).Build();
}

}  // namespace sondrel
