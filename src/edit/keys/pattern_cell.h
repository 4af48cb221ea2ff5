#pragma once
// One cell of a pattern line as the block commands and the clipboard move it
// around: a channel's note cell (note, detune, instrument, volume), its
// channel-command cell (command, parameter) or the line's command cell.

#include <array>
#include <cstdint>

#include "model/module.h"

namespace sondrel {

enum CellKind : uint8_t { kNoteCell = 0, kChannelCommandCell = 1, kCommandCell = 2 };

struct PatternCell {
    uint8_t empty = 1;
    uint8_t kind = kNoteCell;
    std::array<uint8_t, 4> bytes{};  // the cell's bytes in line order; a command cell uses two
};

// Cell columns 0..8: even columns below 8 are note cells, odd ones
// channel-command cells, 8 the command cell.
CellKind CellKindOf(int cellColumn);
bool IsCellEmpty(const PatternLine& line, int cellColumn);
PatternCell ReadCell(const PatternLine& line, int cellColumn);
// An empty cell of the column's kind, as a line past the pattern's end reads.
PatternCell EmptyCellOf(int cellColumn);
// A full cell sets all of its bytes, an empty one clears the cell; a cell of
// another kind than the column's changes nothing.
void WriteCell(PatternLine& line, int cellColumn, const PatternCell& cell);

}  // namespace sondrel
