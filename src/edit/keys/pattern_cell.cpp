#include "edit/keys/pattern_cell.h"

#include "edit/tools/clipped_block.h"

namespace sondrel {

CellKind CellKindOf(int cellColumn) {
    if (cellColumn == kCommandCellColumn) return kCommandCell;
    return cellColumn % 2 == 0 ? kNoteCell : kChannelCommandCell;
}

bool IsCellEmpty(const PatternLine& line, int cellColumn) {
    const int channel = cellColumn / 2;
    switch (CellKindOf(cellColumn)) {
    case kNoteCell: return line.note[channel] == 255;
    case kChannelCommandCell: return line.channelCommand[channel] == kChannelCommandNone;
    case kCommandCell: break;
    }
    return line.command == kCommandNone;
}

PatternCell ReadCell(const PatternLine& line, int cellColumn) {
    const int channel = cellColumn / 2;
    PatternCell cell;
    cell.kind = CellKindOf(cellColumn);
    cell.empty = IsCellEmpty(line, cellColumn) ? 1 : 0;
    switch (cell.kind) {
    case kNoteCell:
        cell.bytes = {line.note[channel], static_cast<uint8_t>(line.detune[channel]), line.instrument[channel],
                      line.volume[channel]};
        break;
    case kChannelCommandCell:
        cell.bytes = {line.channelCommand[channel], line.channelParam[channel], 0, 0};
        break;
    default:
        cell.bytes = {line.command, line.commandParam, 0, 0};
        break;
    }
    return cell;
}

PatternCell EmptyCellOf(int cellColumn) {
    PatternCell cell;
    cell.kind = CellKindOf(cellColumn);
    return cell;
}

void WriteCell(PatternLine& line, int cellColumn, const PatternCell& cell) {
    if (cell.kind != CellKindOf(cellColumn)) return;
    if (cell.empty) {
        ClearCell(line, cellColumn);
        return;
    }
    const int channel = cellColumn / 2;
    switch (cell.kind) {
    case kNoteCell:
        line.note[channel] = cell.bytes[0];
        line.detune[channel] = static_cast<int8_t>(cell.bytes[1]);
        line.instrument[channel] = cell.bytes[2];
        line.volume[channel] = cell.bytes[3];
        break;
    case kChannelCommandCell:
        line.channelCommand[channel] = cell.bytes[0];
        line.channelParam[channel] = cell.bytes[1];
        break;
    default:
        line.command = cell.bytes[0];
        line.commandParam = cell.bytes[1];
        break;
    }
}

}  // namespace sondrel
