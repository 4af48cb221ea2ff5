#include "edit/keys/value_steps.h"

#include <algorithm>

#include "edit/tools/clipped_block.h"
#include "screens/pattern_view/pattern_view.h"

namespace sondrel {

namespace {

int Delta(int step, bool down) { return down ? -step : step; }

int StepOf(StepSize size, int middle, int large) {
    switch (size) {
    case StepSize::One: return 1;
    case StepSize::Middle: return middle;
    case StepSize::Large: return large;
    }
    return 0;
}

// Calls visit(line, channel) for every instrument/volume field of the frame,
// cut to the grid's columns and the pattern's lines.
template <typename Visit>
void ForEachVolumeField(Pattern& pattern, const SelectionFrame& frame, Visit visit) {
    const int first = std::max(frame.x, 0);
    const int last = std::min(frame.x + frame.w - 1, kGridLastColumn);
    const auto lines = ClipBlock(frame, pattern.length);
    if (last < first || !lines) return;
    for (int y = lines->top; y < lines->top + lines->height; ++y)
        for (int column = first; column <= last; ++column)
            if (column < kGridLastColumn && column % 3 == 1) visit(pattern.lines[y], column / 3);
}

// The two hexadecimal digits of a value step apart, each wrapping within
// itself: the small step moves the low digit, the middle one the high digit,
// the large one neither.
uint8_t StepHexDigits(uint8_t param, StepSize size, bool down) {
    const int sum = param + Delta(StepOf(size, 16, 256), down);
    if (size == StepSize::One) return static_cast<uint8_t>((param & 0xF0) | (sum & 0x0F));
    if (size == StepSize::Middle) return static_cast<uint8_t>((param & 0x0F) | (sum & 0xF0));
    return param;
}

}  // namespace

uint8_t StepChannelParam(uint8_t channelCommand, uint8_t param, StepSize size, bool down) {
    if (ChannelParamIsHex(channelCommand)) return StepHexDigits(param, size, down);
    const bool decimal = channelCommand != kChannelCommandNone && channelCommand <= kLastChannelCommand;
    const int sum = param + Delta(StepOf(size, decimal ? 10 : 16, decimal ? 0 : 256), down);
    if (channelCommand == kChannelCommandPV) return static_cast<uint8_t>(std::clamp(sum, 0, 15));
    if (channelCommand == kChannelCommandVO) return static_cast<uint8_t>(sum & 15);
    if (decimal) return static_cast<uint8_t>(std::clamp(sum, 0, kLargestDecimalParam));
    return static_cast<uint8_t>(sum);
}

uint8_t StepCommandParam(uint8_t command, uint8_t param, StepSize size, bool down) {
    if (command == kCommandSP)
        return static_cast<uint8_t>(std::clamp(param + Delta(StepOf(size, 8, 80), down), 8, 255));
    if (command == kCommandST) return StepHexDigits(param, size, down);
    return static_cast<uint8_t>(param + Delta(StepOf(size, 16, 256), down));
}

void StepVolumes(Pattern& pattern, const SelectionFrame& frame, bool down, bool wrap) {
    ForEachVolumeField(pattern, frame, [&](PatternLine& line, int channel) {
        const int volume = line.volume[channel] + (down ? -1 : 1);
        line.volume[channel] = static_cast<uint8_t>(wrap ? volume & 15 : std::clamp(volume, 0, 15));
    });
}

void StepInstruments(Pattern& pattern, const SelectionFrame& frame, bool down) {
    ForEachVolumeField(pattern, frame, [&](PatternLine& line, int channel) {
        line.instrument[channel] = static_cast<uint8_t>((line.instrument[channel] + (down ? 255 : 1)) % 16);
    });
}

void StepValues(Pattern& pattern, const SelectionFrame& frame, StepSize size, bool down) {
    const auto block = ClipBlock(frame, pattern.length);
    if (!block) return;
    for (int y = block->top; y < block->top + block->height; ++y) {
        PatternLine& line = pattern.lines[y];
        for (int cell = block->firstCell; cell <= block->lastCell; ++cell) {
            if (cell == kCommandCellColumn) {
                line.commandParam = StepCommandParam(line.command, line.commandParam, size, down);
            } else if (cell % 2 == 1) {
                const int c = cell / 2;
                line.channelParam[c] = StepChannelParam(line.channelCommand[c], line.channelParam[c], size, down);
            }
        }
    }
}

}  // namespace sondrel
