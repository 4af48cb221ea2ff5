#pragma once
// VGM and gzip-compressed VGM import: the chip log replayed into one line per frame.

#include <cstdint>
#include <string>

#include "model/module.h"

namespace sondrel {

class ImportOptionsProvider;

// What the "Load VGM file" dialog shows ("VGM file info") and asks ("Sound chip").
struct VgmImportOptions {
    uint32_t rate = 0;          // "Rate:", 0 when the header does not say
    uint32_t chipClock = 0;     // "Chip clock:"
    uint16_t noisePattern = 0;  // "Noise channel pattern:", 0 when unused
    uint8_t noiseWidth = 0;     // "Noise channel width:", 0 when unused
    ChipSettings chip{};
};

// Opens the file by name (plain or gzip). Returns false, leaving the module
// untouched, when the caller declines the options.
bool ImportVgm(Module& module, const std::string& path, ImportOptionsProvider& options);

}  // namespace sondrel
