#include "screens/pattern_view/pattern_view.h"

#include <algorithm>
#include <cstdlib>

#include "platform/gorb.h"
#include "sound/song_player.h"

namespace sondrel {

PatternView::PatternView(Module& module) : module_(&module) { SetModule(module); }

void PatternView::SetModule(Module& module) {
    module_ = &module;
    state_.anchorColumn = state_.anchorLine = state_.cursorColumn = state_.cursorLine = 0;
    state_.patternListTop = 0;
    state_.topLine = 0;
    SetListPosition(0);
    settings_.currentInstrument = 0;
    settings_.instrumentListTop = 0;
}

int PatternView::ClampLine(int line) const { return std::max(std::min(line, Length() - 1), 0); }

// The first visible entry of a window of `visible` entries, moved as little
// as it takes to show `count` entries from `first` (at most a window full;
// the top ones when the range is longer). The caller clamps the result.
static int TopShowing(int top, int first, int count, int visible) {
    count = std::min(count, visible);
    if (top > first) top = first;
    if (first + count > top + visible) top = first + count - visible;
    return top;
}

void PatternView::ScrollToCursor() { EnsureLinesVisible(state_.cursorLine, 1); }

void PatternView::MoveCursor(uint32_t modifiers, int dx, int dy) {
    state_.cursorColumn = std::clamp(state_.cursorColumn + dx, 0, kGridLastColumn);
    state_.cursorLine = ClampLine(state_.cursorLine + dy);
    ScrollToCursor();
    if ((modifiers & kGorbShift) == 0) {
        state_.anchorColumn = state_.cursorColumn;
        state_.anchorLine = state_.cursorLine;
    }
}

void PatternView::SetCursorLine(int delta) {
    state_.cursorLine = state_.anchorLine = ClampLine(state_.cursorLine + delta);
    ScrollToCursor();
}

// One axis of a selection set from a rectangle: a single cell puts both
// corners on it; otherwise only the cursor moves, to the far edge, or to the
// near edge when the anchor already stands on the far one. An anchor inside
// the rectangle stays where it is.
static void SetAxis(int32_t& anchor, int32_t& cursor, int32_t start, int32_t extent) {
    if (extent == 1) {
        anchor = cursor = start;
    } else if (anchor == start + extent - 1) {
        cursor = start;
    } else {
        cursor = start + extent - 1;
    }
}

void PatternView::SetSelection(const SelectionFrame& frame) {
    SetAxis(state_.anchorColumn, state_.cursorColumn, frame.x, frame.w);
    SetAxis(state_.anchorLine, state_.cursorLine, frame.y, frame.h);
}

SelectionFrame PatternView::GetSelection() const {
    return {std::min(state_.anchorColumn, state_.cursorColumn), std::min(state_.anchorLine, state_.cursorLine),
            std::abs(state_.anchorColumn - state_.cursorColumn) + 1,
            std::abs(state_.anchorLine - state_.cursorLine) + 1};
}

void PatternView::ClampSelection() {
    state_.cursorColumn = std::clamp(state_.cursorColumn, 0, kGridLastColumn);
    state_.anchorColumn = std::clamp(state_.anchorColumn, 0, kGridLastColumn);
    state_.cursorLine = ClampLine(state_.cursorLine);
    state_.anchorLine = ClampLine(state_.anchorLine);
}

void PatternView::SelectAllLines() {
    state_.anchorLine = 0;
    state_.cursorLine = Length();
}

void PatternView::HalveSelection() {
    const int32_t a = state_.anchorLine;
    const int32_t c = state_.cursorLine;
    if (c <= a) {
        state_.anchorLine = c + (a - c + 2) / 2 - 1;
    } else {
        state_.cursorLine = a + (c - a + 2) / 2 - 1;
    }
    ClampSelection();
}

void PatternView::DoubleSelection() {
    const int32_t a = state_.anchorLine;
    const int32_t c = state_.cursorLine;
    if (c > a) {
        state_.cursorLine = 2 * c - a + 1;
    } else {
        state_.anchorLine = 2 * a - c + 1;
    }
    ClampSelection();
}

void PatternView::ClampTop() { ScrollTo(state_.topLine); }

void PatternView::ScrollTo(int line) {
    state_.topLine = static_cast<uint16_t>(std::max(std::min(line, Length() - kGridVisibleLines), 0));
}

void PatternView::EnsureLinesVisible(int first, int count) {
    ScrollTo(TopShowing(state_.topLine, first, count, kGridVisibleLines));
}

void PatternView::SetListPosition(uint8_t position) {
    state_.listPosition = position;
    state_.currentPattern = module_->patternList[position];
}

void PatternView::ClampPatternListTop() {
    int top = state_.patternListTop;
    if (top + state_.patternListVisible > module_->patternListLength) {
        top = module_->patternListLength - state_.patternListVisible;
    }
    state_.patternListTop = static_cast<int16_t>(std::max(top, 0));
}

void PatternView::CenterListPosition() {
    state_.patternListTop = static_cast<int16_t>(state_.listPosition - state_.patternListVisible / 2);
    ClampPatternListTop();
}

void PatternView::EnsureListPositionVisible() {
    state_.patternListTop = static_cast<int16_t>(
        TopShowing(state_.patternListTop, state_.listPosition, 1, state_.patternListVisible));
    ClampPatternListTop();
}

void PatternView::EnsureListRangeVisible(int first, int count) {
    state_.patternListTop =
        static_cast<int16_t>(TopShowing(state_.patternListTop, first, count, kPatternListVisibleLines));
    ClampPatternListTop();
}

EditorPosition PatternView::SaveState() const {
    return {state_.anchorColumn, state_.anchorLine, state_.cursorColumn, state_.cursorLine, state_.listPosition};
}

void PatternView::RestoreState(const EditorPosition& position) {
    state_.anchorColumn = position.anchorColumn;
    state_.anchorLine = position.anchorLine;
    state_.cursorColumn = position.cursorColumn;
    state_.cursorLine = position.cursorLine;
    SetListPosition(position.listPosition);
    ClampSelection();
    ClampTop();
}

void PatternView::RestoreFromPlayer(const SongPlayer& player) {
    state_.playLine = static_cast<uint8_t>(player.Line());
    state_.followPlay = player.Playing();
    SetListPosition(static_cast<uint8_t>(player.ListPosition()));
    ClampSelection();
    ClampTop();
    CenterListPosition();
    ScrollTo(player.Line() - kGridVisibleLines / 2);
}

}  // namespace sondrel
