#pragma once
// Writes a module as a standard MIDI file of format 1: a conductor track with
// the module's texts and the tempo, then one track per chip channel, with the
// song played once from its start, each frame lasting 8 MIDI ticks.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "model/module.h"

namespace sondrel {

inline constexpr char kMidiExtension[] = ".mid";

// The General MIDI program (0..127) for every instrument and tone type.
struct MidiExportOptions {
    static constexpr int kRowsPerType = kInstruments;
    static constexpr int kRows = 3 * kRowsPerType;
    static constexpr int kToneRows = 0;            // tone notes, by instrument
    static constexpr int kPeriodicNoiseRows = 16;  // note values 247..250 ("PE")
    static constexpr int kWhiteNoiseRows = 32;     // note values 251..254 ("WN")
    static constexpr uint8_t kToneDefault = 80;           // "Lead 1 (square)"
    static constexpr uint8_t kPeriodicNoiseDefault = 81;  // "Lead 2 (sawtooth)"
    static constexpr uint8_t kWhiteNoiseDefault = 117;    // "Melodic Tom"

    MidiExportOptions() { Reset(); }
    // Back to the default program of each row.
    void Reset();

    std::array<uint8_t, kRows> programs{};
};

// The "Export MIDI" dialog: lets the user edit the table; false when cancelled.
class MidiExportDialog {
public:
    virtual ~MidiExportDialog() = default;
    virtual bool EditMidiExportOptions(MidiExportOptions& options) = 0;
};

// value as a MIDI variable-length quantity: 7 bits a byte, most significant
// group first, bit 7 set on all but the last byte.
void AppendVariableLength(std::vector<uint8_t>& out, uint32_t value);

// The whole file, built in memory.
std::vector<uint8_t> BuildMidi(const MidiExportOptions& options, Module& module);

// Writes the file with the options as they stand. Throws FileIOException when
// the path can't be opened for writing.
void WriteMidiFile(const MidiExportOptions& options, Module& module, const std::string& path);

// Shows the dialog first: false, with nothing written, when it is cancelled;
// otherwise writes the file with the options chosen and returns true.
bool ExportMidi(MidiExportOptions& options, Module& module, const std::string& path, MidiExportDialog& dialog);

}  // namespace sondrel
