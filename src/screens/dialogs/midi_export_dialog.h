#pragma once
// The "Export MIDI" dialog: the General MIDI program of every instrument for
// tone notes, for periodic noise ("PE") and for white noise ("WN"), 48 rows
// in all, beside the list of program names; picking a name gives it to the
// selected row.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/module.h"

namespace sondrel {

class Requesters;

inline constexpr int kMidiExportRows = 3 * kInstruments;

struct MidiExportTable {
    // Rows 0-15 tone notes, 16-31 periodic noise, 32-47 white noise, each by instrument.
    std::array<uint8_t, kMidiExportRows> programs{};
    std::array<std::string, kInstruments> instrumentNames;
    std::vector<std::string> programNames;  // by program number
};

// The programs as confirmed with "Okay"; nothing when cancelled or when
// another dialog is open.
std::optional<std::array<uint8_t, kMidiExportRows>> EditMidiExportTable(Requesters& requesters,
                                                                       const MidiExportTable& table);

}  // namespace sondrel
