#pragma once
// Amiga MOD import: a simplified replay that follows the song's pitch and
// loudness tick by tick into a module.
//
// The replay writes one line per chip tick (50 a second for PAL, 60 for NTSC).
// In every line each of the four MOD channels gets the note nearest to its
// current pitch and a volume taken from the loudest sample value it played
// during that tick. MOD channel c lands on chip channel c, so the fourth MOD
// channel sits on the noise channel, where its tone notes do not sound.

#include <cstdio>
#include <string>
#include <vector>

#include "model/module.h"

namespace sondrel {

class ImportOptionsProvider;

// What the "Load MOD file" dialog shows and asks.
struct ModImportOptions {
    std::string name;                      // "Name:"
    std::vector<std::string> sampleNames;  // "Sample names:", all 31 slots
    ChipSettings chip{kDivider1x, kChipPal};
};

// The stream is positioned at the start of the file. Returns false, leaving
// the module untouched, when the caller declines the options. Throws Exception,
// again leaving the module untouched, for a malformed file: a bad sample
// record or song order, or a pattern break beyond the last row that the
// replay reaches before the module is full (at the chosen tick rate).
bool ImportMod(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options);

}  // namespace sondrel
