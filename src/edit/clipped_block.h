#pragma once
// A block frame in cursor columns and lines, clipped to a pattern's cells,
// and the block change that undo must be able to perform again (clearing).

#include <cstdint>
#include <optional>

#include "model/module.h"

namespace sondrel {

constexpr int kCursorColumns = 13;  // three per channel, then the command column
constexpr int kCellColumns = 9;     // note and channel-command cell per channel, then the command cell
constexpr int kCommandCellColumn = 8;

// The frame as the pattern view hands it out: lowest column and line, width and height.
struct BlockRect {
    int32_t x = 0;
    int32_t y = 0;
    int32_t w = 1;
    int32_t h = 1;
    friend bool operator==(const BlockRect&, const BlockRect&) = default;
};

// A frame cut down to existing cells: cell columns first..last, lines top..top+height-1.
struct ClippedBlock {
    int firstCell = 0;
    int lastCell = 0;
    int top = 0;
    int height = 0;
};

// Cursor column to cell column: 3c and 3c+1 are channel c's note cell, 3c+2 its
// channel-command cell, 12 the command cell.
int CellColumnOf(int cursorColumn);

// Nothing when no cell of the pattern lies inside the frame.
std::optional<ClippedBlock> ClipBlock(const BlockRect& rect, int patternLength);

// Empties one cell: the note, the channel command or the command; other bytes stay.
void ClearCell(PatternLine& line, int cellColumn);

// Clears every cell of the clipped frame; false when the frame holds no cell.
bool ClearBlock(Pattern& pattern, const BlockRect& rect);

}  // namespace sondrel
