#pragma once
// Standard MIDI file import.
//
// The file's notes are routed channel by channel onto the chip channels. By
// default the result has one line per chip tick (speed "SP" 1.0), with every
// onset on the tick nearest to its time in the file; with linesPerBeat set the
// notes are quantised to that many lines per quarter note and the speed
// follows the file's tempo, which gives a score that is easier to edit.

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "model/module.h"

namespace sondrel {

class ImportOptionsProvider;

// One line of the "Load MIDI file" dialog's "MIDI channels" group ("MIDI channel %2D").
struct MidiChannelChoice {
    bool hasNotes = false;    // shown, not asked: the file plays notes on this channel
    bool enable = false;      // "Enable:"
    uint8_t chipChannel = 0;  // "Channel #:", 0..3
    uint8_t instrument = 0;   // "Instrument #:", 0..15
};

struct MidiImportOptions {
    std::array<MidiChannelChoice, 16> channels{};  // MIDI channels 1..16
    ChipSettings chip{};
    int linesPerBeat = 0;  // 0: one line per tick; N: quantised to N lines per quarter note
};

// The proposal gives every channel with notes enabled; MIDI channel 10 (the
// General MIDI drums) on the noise channel, the others on tone channels 0, 1,
// 2, 0, ... in the order of their first note; instruments numbered in the
// order of the enabled channels.
//
// The stream is positioned at the start of the file. Returns false, leaving
// the module untouched, when the caller declines the options; throws
// ParseException on a malformed file or one in format 2.
bool ImportMidi(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options);

}  // namespace sondrel
