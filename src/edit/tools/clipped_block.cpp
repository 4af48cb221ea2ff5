#include "edit/tools/clipped_block.h"

#include <algorithm>

namespace sondrel {

int CellColumnOf(int cursorColumn) {
    return (cursorColumn / 3) * 2 + (cursorColumn % 3 == 2 ? 1 : 0);
}

std::optional<ClippedBlock> ClipBlock(const SelectionFrame& rect, int patternLength) {
    ClippedBlock block;
    block.firstCell = std::max(CellColumnOf(rect.x), 0);
    int last = CellColumnOf(rect.x + rect.w - 1);
    if (block.firstCell >= kCellColumns || last < 0) return std::nullopt;
    block.lastCell = std::min(last, kCommandCellColumn);
    block.top = rect.y;
    block.height = rect.h;
    if (block.top < 0) {
        block.height += block.top;
        block.top = 0;
    }
    if (block.top + block.height > patternLength) block.height = patternLength - block.top;
    if (block.height < 1) return std::nullopt;
    return block;
}

void ClearCell(PatternLine& line, int cellColumn) {
    if (cellColumn == kCommandCellColumn) {
        line.command = kCommandNone;
    } else if (cellColumn % 2 == 0) {
        line.note[cellColumn / 2] = 255;
    } else {
        line.channelCommand[cellColumn / 2] = kChannelCommandNone;
    }
}

bool ClearBlock(Pattern& pattern, const SelectionFrame& rect) {
    auto block = ClipBlock(rect, pattern.length);
    if (!block) return false;
    for (int line = block->top; line < block->top + block->height; ++line) {
        for (int cell = block->firstCell; cell <= block->lastCell; ++cell) ClearCell(pattern.lines[line], cell);
    }
    return true;
}

}  // namespace sondrel
