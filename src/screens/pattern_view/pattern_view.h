#pragma once
// The pattern editor's state: the cursor and block selection in the current
// pattern, the grid's scroll, the position in the pattern list (and so the
// pattern shown), the current instrument and the edit settings. Editing
// commands change it through the operations below and then ask for a redraw
// by setting redraw bits; nothing here draws. The drawing side reads State()
// and Settings(), repaints what the bits ask for and clears them.

#include <cstdint>

#include "model/module.h"
#include "screens/pattern_view/editor_position.h"
#include "screens/pattern_view/selection_frame.h"

namespace sondrel {

class SongPlayer;

// Redraw bits of the pattern view; editing commands OR them together.
enum PatternViewRedraw : uint32_t {
    kRedrawGridState = 1,     // cursor, selection, scroll and play marker into the grid widget
    kRedrawGridRows = 2,      // the grid's rows (the header only with kRedrawAll)
    kRedrawInstruments = 4,   // instrument list and instrument preview
    kRedrawPatternList = 8,   // pattern list box
    kRedrawSettings = 16,     // line step, octave, volume, test mode and the player settings
    kRedrawTitle = 32,        // the window title
    kRedrawMenus = 64,        // enabled state of menu entries
    kRedrawAll = 255,
};

constexpr int kGridColumns = 13;       // three per channel, then the command column
constexpr int kGridLastColumn = kGridColumns - 1;
constexpr int kGridVisibleLines = 32;  // pattern lines on view at once
// Entries the pattern list box shows; a selected range of entries is kept in
// view against this many even when the box is given another height.
constexpr int kPatternListVisibleLines = 9;

// Settings the editing commands read and the settings panel sets directly.
struct EditSettings {
    uint8_t currentInstrument = 0;  // 0..15
    uint8_t instrumentListTop = 0;  // first visible entry of the instrument list
    uint8_t lineStep = 1;           // lines the cursor moves down after a note
    uint8_t octave = 3;             // its slider shows octave - 2
    uint8_t defaultVolume = 15;
    bool testMode = false;          // entered notes are only heard, never written
};

// What the view keeps consistent itself: change it through PatternView.
struct PatternViewState {
    int32_t anchorColumn = 0;
    int32_t anchorLine = 0;
    int32_t cursorColumn = 0;
    int32_t cursorLine = 0;
    uint16_t topLine = 0;         // first pattern line in the grid
    uint8_t listPosition = 0;
    uint8_t currentPattern = 0;   // always the pattern list's entry at listPosition
    int16_t patternListTop = 0;   // first visible entry of the pattern list box
    int patternListVisible = kPatternListVisibleLines;
    uint8_t playLine = 0;         // where the play marker stands while following playback
    bool followPlay = false;
    uint32_t dirtyFlags = 0;
};

class PatternView {
public:
    explicit PatternView(Module& module);

    // Binds a created or loaded module and puts the view back to its start:
    // cursor, scrolls, list position and instrument all at 0.
    void SetModule(Module& module);
    Module& GetModule() const { return *module_; }
    const Pattern& CurrentPattern() const { return module_->patterns[state_.currentPattern]; }

    const PatternViewState& State() const { return state_; }
    EditSettings& Settings() { return settings_; }
    const EditSettings& Settings() const { return settings_; }

    void Invalidate(uint32_t bits) { state_.dirtyFlags |= bits; }
    uint32_t DirtyFlags() const { return state_.dirtyFlags; }
    // Called by the drawing side once it has repainted what was asked for.
    void ClearDirtyFlags() { state_.dirtyFlags = 0; }

    // Cursor and selection. Either shift bit in modifiers keeps the anchor,
    // growing the selection; otherwise the anchor follows the cursor.
    void MoveCursor(uint32_t modifiers, int dx, int dy);
    // Cursor and anchor lines both to the cursor line + delta; columns stay.
    void SetCursorLine(int delta);
    void SetSelection(const SelectionFrame& frame);
    SelectionFrame GetSelection() const;
    void ClampSelection();
    // Anchor on line 0, cursor one past the last line: the next clamp brings it back.
    void SelectAllLines();
    // Shrink or grow the selection's lines after halving or doubling a block.
    void HalveSelection();
    void DoubleSelection();

    // Grid scroll.
    void ClampTop();
    void ScrollTo(int line);
    void ScrollBy(int delta) { ScrollTo(state_.topLine + delta); }
    void EnsureLinesVisible(int first, int count);

    // Pattern list position and the pattern list box's scroll.
    void SetListPosition(uint8_t position);
    void SetPatternListVisible(int entries) { state_.patternListVisible = entries; }
    void EnsureListPositionVisible();
    void CenterListPosition();
    void ClampPatternListTop();
    void EnsureListRangeVisible(int first, int count);

    // Where the editor stood, for the undo history.
    EditorPosition SaveState() const;
    void RestoreState(const EditorPosition& position);
    // Follows the song player (the caller holds the audio mutex): its line
    // becomes the play marker and its list position the current one.
    void RestoreFromPlayer(const SongPlayer& player);

private:
    int Length() const { return CurrentPattern().length; }
    int ClampLine(int line) const;
    // Scrolls the grid so that the cursor line is on view.
    void ScrollToCursor();

    Module* module_;
    PatternViewState state_;
    EditSettings settings_;
};

}  // namespace sondrel
