#pragma once
// The dialogs an import asks before it fills a module: what the file tells
// about itself, the importer's own choices and the sound chip. Each opens
// over the screen with the importer's proposal, runs until "Okay" or
// "Cancel", and returns the values confirmed, or nothing when cancelled or
// when another dialog is open. "Okay" is refused, with a message, while a
// chip setting is not chosen.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/module.h"

namespace sondrel {

class Requesters;

inline constexpr int kMidiChannels = 16;

// "Load BAS file": the instrument each kind of sound is written with.
struct BasicImportValues {
    // PLAY normal, staccato and legato, SOUND, BEEP, pause; 0..kInstruments-1.
    std::array<uint8_t, 6> instruments{};
    ChipSettings chip{};
    bool operator==(const BasicImportValues&) const = default;
};

// "Load MIDI file": one row per MIDI channel 1..16.
struct MidiChannelRow {
    bool hasNotes = false;    // shown only: rows without notes can't be changed
    bool enable = false;
    uint8_t chipChannel = 0;  // 0..3
    uint8_t instrument = 0;   // 0..kInstruments-1
    bool operator==(const MidiChannelRow&) const = default;
};
struct MidiImportValues {
    std::array<MidiChannelRow, kMidiChannels> channels{};
    ChipSettings chip{};
    bool operator==(const MidiImportValues&) const = default;
};

// "Load MOD file": the song's name and sample names are shown only.
struct ModImportValues {
    std::string name;
    std::vector<std::string> sampleNames;
    ChipSettings chip{};
    bool operator==(const ModImportValues&) const = default;
};

// "Load VGM file": the header's values are shown only; 0 for a rate or a
// clock the log does not give.
struct VgmImportValues {
    uint32_t rate = 0;
    uint32_t chipClock = 0;  // may carry the dual-chip and variant flags in its top bits
    uint16_t noisePattern = 0;
    uint8_t noiseWidth = 0;
    ChipSettings chip{};
    bool operator==(const VgmImportValues&) const = default;
};

std::optional<BasicImportValues> AskBasicImport(Requesters& requesters, const BasicImportValues& proposal);
std::optional<MidiImportValues> AskMidiImport(Requesters& requesters, const MidiImportValues& proposal);
std::optional<ModImportValues> AskModImport(Requesters& requesters, const ModImportValues& proposal);
std::optional<VgmImportValues> AskVgmImport(Requesters& requesters, const VgmImportValues& proposal);


}  // namespace sondrel
