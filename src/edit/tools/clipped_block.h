#pragma once
// A selection frame clipped to a pattern's cells, and the block change that
// undo must be able to perform again (clearing).

#include <cstdint>
#include <optional>

#include "model/module.h"
#include "screens/pattern_view/selection_frame.h"

namespace sondrel {

constexpr int kCellColumns = 9;     // note and channel-command cell per channel, then the command cell
constexpr int kCommandCellColumn = 8;

// A frame cut down to existing cells: cell columns first..last, lines top..top+height-1.
struct ClippedBlock {
    int firstCell = 0;
    int lastCell = 0;
    int top = 0;
    int height = 0;
};

// Cursor column (0..12) to cell column: 3c and 3c+1 are channel c's note
// cell, 3c+2 its channel-command cell, 12 the command cell.
int CellColumnOf(int cursorColumn);

// Nothing when no cell of the pattern lies inside the frame.
std::optional<ClippedBlock> ClipBlock(const SelectionFrame& rect, int patternLength);

// Empties one cell: the note, the channel command or the command; other bytes stay.
void ClearCell(PatternLine& line, int cellColumn);

// Clears every cell of the clipped frame; false when the frame holds no cell.
bool ClearBlock(Pattern& pattern, const SelectionFrame& rect);

}  // namespace sondrel
