#include "edit/tools/channel_tools.h"

namespace sondrel {

namespace {

bool NoteHasVolume(uint8_t note) {
    return note <= 155 || (note >= 246 && note <= 254);
}

bool Masked(const InstrumentChange& change, int channel) {
    return (change.channelMask >> channel) & 1;
}

// A channel's whole cell: the note cell with the channel-command cell, or the command column.
struct ChannelCell {
    uint8_t note, instrument, volume, channelCommand, channelParam;
    int8_t detune;
};

ChannelCell ReadCell(const PatternLine& line, int channel) {
    if (channel == kCommandChannel) return {line.command, line.commandParam, 0, 0, 0, 0};
    return {line.note[channel],           line.instrument[channel],   line.volume[channel],
            line.channelCommand[channel], line.channelParam[channel], line.detune[channel]};
}

void WriteCell(PatternLine& line, int channel, const ChannelCell& cell) {
    if (channel == kCommandChannel) {
        line.command = cell.note;
        line.commandParam = cell.instrument;
        return;
    }
    line.note[channel] = cell.note;
    line.instrument[channel] = cell.instrument;
    line.volume[channel] = cell.volume;
    line.channelCommand[channel] = cell.channelCommand;
    line.channelParam[channel] = cell.channelParam;
    line.detune[channel] = cell.detune;
}

bool CellEmpty(const PatternLine& line, int channel) {
    if (channel == kCommandChannel) return line.command == kCommandNone;
    return line.note[channel] == 255 && line.channelCommand[channel] == kChannelCommandNone;
}

}  // namespace

bool ChangeMatchesLine(const PatternLine& line, const InstrumentChange& change) {
    for (int channel = 0; channel < kChannels; ++channel) {
        if (!Masked(change, channel) || !NoteHasVolume(line.note[channel])) continue;
        uint8_t instrument = line.instrument[channel];
        switch (change.mode) {
        case kChangeFirstToSecond:
            if (instrument == change.first) return true;
            break;
        case kExchangeInstruments:
            if (instrument == change.first || instrument == change.second) return true;
            break;
        default:
            return true;
        }
    }
    return false;
}

void ChangeLineInstruments(PatternLine& line, const InstrumentChange& change) {
    for (int channel = 0; channel < kChannels; ++channel) {
        if (!Masked(change, channel)) continue;
        uint8_t& instrument = line.instrument[channel];
        if (change.mode == kChangeAllToSecond) {
            instrument = change.second;
        } else if (instrument == change.first) {
            instrument = change.second;
        } else if (change.mode == kExchangeInstruments && instrument == change.second) {
            instrument = change.first;
        }
    }
}

ChannelBytes SaveChannel(const PatternLine& line, int channel) {
    ChannelCell cell = ReadCell(line, channel);
    return {cell.note, cell.instrument, cell.volume, cell.channelCommand, cell.channelParam};
}

void RestoreChannel(PatternLine& line, int channel, const ChannelBytes& bytes) {
    ChannelCell cell = ReadCell(line, channel);  // the detune is not kept and stays as it is
    cell.note = bytes[0];
    cell.instrument = bytes[1];
    cell.volume = bytes[2];
    cell.channelCommand = bytes[3];
    cell.channelParam = bytes[4];
    WriteCell(line, channel, cell);
}

bool ChannelsEmpty(const PatternLine& line, const ChannelCopy& copy) {
    return CellEmpty(line, copy.first) && CellEmpty(line, copy.second);
}

void CopyLineChannels(PatternLine& line, const ChannelCopy& copy) {
    if ((copy.first == kCommandChannel) != (copy.second == kCommandChannel)) return;
    ChannelCell first = ReadCell(line, copy.first);
    ChannelCell second = ReadCell(line, copy.second);
    WriteCell(line, copy.second, first);
    if (copy.mode == kExchangeChannels) WriteCell(line, copy.first, second);
}

}  // namespace sondrel
