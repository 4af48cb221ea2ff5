#pragma once
// Writes a module as a VGM 1.50 log for the SN76489: the song played once from
// its start, frame by frame, as the register writes that changed in each frame
// and a one-frame wait, followed by a GD3 tag with the module's texts. The log
// ends when the pattern list runs out (or first wraps to the repeat
// position); unless asked to loop, it has no loop point.

#include <cstdint>
#include <string>
#include <vector>

#include "model/module.h"

namespace sondrel {

inline constexpr char kVgmExtension[] = ".vgm";

struct VgmExportOptions {
    // Loop from the frame where the repeat position first starts to play,
    // the whole chip state written again there.
    bool loop = false;
};

// The whole file, built in memory.
std::vector<uint8_t> BuildVgm(Module& module, const VgmExportOptions& options = {});

// Builds the file and writes it with one write. Throws FileIOException when the
// path can't be opened for writing.
void ExportVgm(Module& module, const std::string& path, const VgmExportOptions& options = {});

}  // namespace sondrel
