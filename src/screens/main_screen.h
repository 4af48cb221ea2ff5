#pragma once
// The main screen: one window below the menu bar, fixed in place and without
// a close box, holding the pattern grid, the pattern and instrument lists,
// the play and tool buttons and the edit settings panel. The ids of its
// controls are what their entries carry to the command dispatcher.

#include <cstdint>

#include "screens/pattern_view/pattern_view_drawer.h"  // the grid's size
#include "screens/pattern_view/pattern_view_widgets.h"

namespace sondrel {

class Toolkit;

constexpr uint16_t kMainWindowId = 1;

enum MainControl : uint16_t {
    kControlPlay = 0,
    kControlCursorPlay = 1,
    kControlStop = 2,
    kControlPatternPlay = 3,
    kControlPatternSettings = 4,
    kControlPatternResize = 5,
    kControlModuleSettings = 6,
    kControlModuleInfo = 7,
    kControlEditInstrument = 9,
    kControlListInsert = 10,
    kControlListRemove = 11,
    kControlListValue = 12,   // a pair of arrows: direction 0 the previous used pattern, 1 the next
    kControlListOrder = 13,   // a pair of arrows: direction 0 moves the entry up, 1 down
    kControlMakeNew = 14,
    kControlDeleteOld = 15,
    kControlOverview = 16,
    kControlChannel = 17,
    kControlTestMode = 18,
    kControlLineStep = 19,
    kControlSpeed = 20,
    kControlOctave = 21,      // shows octave - 2
    kControlVolume = 22,
    kControlGrid = 23,
    kControlPatternList = 24,
    kControlInstrumentList = 25,
    kControlInstrumentPreview = 26,
    kFirstMainLabel = 100,    // the labelled frames, which take no input
};

// The value ranges of the settings panel.
constexpr int kLineStepMax = 64;
constexpr int kSpeedMin = 1;
constexpr int kSpeedMax = 255;
constexpr int kOctaveSliderMin = 1;   // octave 3
constexpr int kOctaveSliderMax = 8;   // octave 10
constexpr int kVolumeMax = 15;

// Opens the main window over the whole screen below a menu bar of
// menuBarHeight pixels, fills it and hands over the widgets the pattern
// view fills. Null members only when the window could not be opened.
PatternViewWidgets BuildMainScreen(Toolkit& toolkit, int screenWidth, int screenHeight, int menuBarHeight);

}  // namespace sondrel
