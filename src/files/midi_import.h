#pragma once
// Standard MIDI file import.

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

// The stream is positioned at the start of the file. Returns false, leaving
// the module untouched, when the caller declines the options.
bool ImportMidi(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options);

}  // namespace sondrel
