#pragma once
// The widgets of the main screen that the pattern view fills when it
// updates: the screen set-up makes them and hands them over; the view never
// creates or lays out widgets itself. Any of them may be missing (null) in
// tests that only look at some.

#include <array>

namespace sondrel {

class Image;
class ListBox;
class CheckButton;
class Slider;
class TextLine;
class Window;

struct PatternViewWidgets {
    Window* mainWindow = nullptr;        // its title is not drawn; the program window's title is
    Image* grid = nullptr;               // the pattern grid: 32 rows of text drawn into its surface
    ListBox* patternList = nullptr;      // one line per pattern list position
    ListBox* instrumentList = nullptr;   // the sixteen instruments
    Image* instrumentPreview = nullptr;  // the current instrument's envelope
    // The edit settings panel.
    TextLine* lineStep = nullptr;        // numeric
    Slider* octave = nullptr;            // shows octave - 2
    TextLine* volume = nullptr;          // numeric, the default volume
    CheckButton* testMode = nullptr;
    TextLine* speed = nullptr;           // numeric, the player's speed
    // "0", "1", "2", "3": the channels the song player lets sound, one toggle
    // each; together they queue the player's channel mask.
    std::array<CheckButton*, 4> channels{};
};

}  // namespace sondrel
