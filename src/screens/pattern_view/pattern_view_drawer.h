#pragma once
// The pattern view's drawing half: once a frame Update() repaints what the
// view's redraw bits ask for into the main screen's widgets, in this order:
// pattern list (8), edit settings (16), grid rows (2; the header only when
// the bits are exactly kRedrawAll), grid selection and play marker (1),
// instrument list and preview (4), window title (32), menu states (64); then
// the bits are cleared; last, the grid shades the channels whose toggles
// are off. Nothing else draws.
//
// The grid surface: a 13-pixel header band with the channel titles, then 32
// rows 12 pixels apart from y = 14, the text of row i at (4, 14 + 12i + 2).
// The selection and the play marker are laid over it in pixels: a cursor
// column spans its fields (see CursorColumnSpan) and a line its 12-pixel row;
// only the part on view is shown.

#include <functional>
#include <string>

#include "platform/gorb.h"
#include "screens/pattern_view/pattern_font.h"
#include "screens/pattern_view/pattern_view.h"
#include "screens/pattern_view/pattern_view_widgets.h"

namespace sondrel {

// What the settings panel shows of the song player.
struct PlayerSettingsShown {
    int speed = 0;
    int channelMask = 0x0F;  // bit c: channel c sounds
};

// What the view needs from the program around it; any may be left empty.
struct PatternViewHooks {
    // Sets the program window's title; by default the platform's.
    std::function<void(const std::string&)> setTitle = Gorb_SetWindowTitle;
    std::function<bool()> modified;             // unsaved changes, for the title's "*"
    std::function<void()> refreshMenus;         // enables or greys menu entries
    std::function<PlayerSettingsShown()> playerSettings;
};

constexpr int kGridHeaderHeight = 14;  // band, then the white line at y = 13
constexpr int kGridRowHeight = 12;
constexpr int kGridTextX = 4;
// The grid surface's size that shows every row and column.
constexpr int kGridWidth = 760;
constexpr int kGridHeight = kGridHeaderHeight + kGridVisibleLines * kGridRowHeight;

// The cursor column and the grid row under a point of the grid surface.
// Rows count from the first one below the header: -1 is the header, 32 and
// on lie below the last row; points left of the first column or right of the
// last take the nearest column.
struct GridCell {
    int column = 0;
    int row = 0;
};
GridCell GridCellAt(int x, int y);
constexpr uint8_t kSelectionAlpha = 128;
constexpr uint8_t kFollowSelectionAlpha = 64;  // fainter under the play marker

class PatternViewDrawer {
public:
    PatternViewDrawer(PatternView& view, const PatternViewWidgets& widgets, const PatternFont& font,
                      PatternViewHooks hooks = {});

    void Update();

    // The grid surface rectangle of cursor columns [column, column + columns)
    // on lines [line, line + lines), clipped to the rows on view; w or h is 0
    // when none of it is on view.
    Gorb_Rect CellArea(int column, int line, int columns, int lines) const;

private:
    void FillPatternList();
    void PushSettings();
    void DrawGrid(bool withHeader);
    void DrawHeader(Gorb_Surface& surface);
    void DrawRow(Gorb_Surface& surface, int row);
    void PushGridState();
    void FillInstruments();
    void DrawInstrumentPreview();
    void SetTitle();
    void ShadeMutedChannels();

    PatternView& view_;
    PatternViewWidgets widgets_;
    const PatternFont& font_;
    PatternViewHooks hooks_;
};

}  // namespace sondrel
