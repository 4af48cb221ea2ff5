#pragma once
// VGM and gzip-compressed VGM import: the chip log replayed into one line per frame.
//
// The log's SN76489 writes go through a SoundChip used only to decode them.
// Once per video frame (735 samples NTSC, 882 PAL) the chip's registers are
// looked at, and every channel whose tone or volume changed since the last
// frame gets a new note in that frame's line.

#include <cstdint>
#include <string>

#include "model/module.h"

namespace sondrel {

class ImportOptionsProvider;

// What the "Load VGM file" dialog shows ("VGM file info") and asks ("Sound chip").
struct VgmImportOptions {
    uint32_t rate = 0;          // "Rate:", 0 when the header does not say
    uint32_t chipClock = 0;     // "Chip clock:", 0 when the log has no SN76489
    uint16_t noisePattern = 9;  // "Noise channel pattern:" (a 0 in the file reads as 9)
    uint8_t noiseWidth = 16;    // "Noise channel width:" (a 0 in the file reads as 16)
    // Proposed from the header: PAL for a 50 Hz rate or the PAL clock, else NTSC;
    // 1x; the TI chip for a 15-bit noise register or taps at bits 0 and 1.
    ChipSettings chip{};
};

// Opens the file by name (plain or gzip). Returns false, leaving the module
// untouched, when the caller declines the options. Throws Exception, again
// before the module is touched, when the file can't be opened, doesn't begin
// with "Vgm " or its header gives no room for command data.
bool ImportVgm(Module& module, const std::string& path, ImportOptionsProvider& options);

}  // namespace sondrel
