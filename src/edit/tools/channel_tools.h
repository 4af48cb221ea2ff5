#pragma once
// The per-line steps of the two tools that sweep many patterns: changing
// instruments and copying or exchanging channels. Undo records what a line
// held before them and redo performs them again line by line.

#include <array>
#include <cstdint>

#include "model/module.h"
#include "screens/dialogs/tool_dialog_values.h"

namespace sondrel {

// Whether the change touches an instrument that sounds on the line (a masked
// channel whose note has a volume), which is when the line is recorded.
bool ChangeMatchesLine(const PatternLine& line, const InstrumentChange& change);
// Changes the instrument of every masked channel, whatever its note.
void ChangeLineInstruments(PatternLine& line, const InstrumentChange& change);

// The bytes of one channel that undo keeps: note, instrument, volume, channel
// command and parameter; for the command column its command and parameter.
using ChannelBytes = std::array<uint8_t, 5>;
ChannelBytes SaveChannel(const PatternLine& line, int channel);
void RestoreChannel(PatternLine& line, int channel, const ChannelBytes& bytes);

// Whether both channels' cells are empty, so that copying skips the line.
bool ChannelsEmpty(const PatternLine& line, const ChannelCopy& copy);
// Writes channel #1's cell into channel #2 (and in exchange mode #2's old cell
// into #1). A copy between the command column and a note channel does nothing.
void CopyLineChannels(PatternLine& line, const ChannelCopy& copy);

}  // namespace sondrel
