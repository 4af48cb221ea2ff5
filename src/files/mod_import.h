#pragma once
// Amiga MOD import: a simplified replay that follows the song's pitch and
// loudness tick by tick into a module.

#include <cstdio>
#include <string>
#include <vector>

#include "model/module.h"

namespace sondrel {

class ImportOptionsProvider;

// What the "Load MOD file" dialog shows and asks.
struct ModImportOptions {
    std::string name;                      // "Name:"
    std::vector<std::string> sampleNames;  // "Sample names:"
    ChipSettings chip{kDivider1x, kChipPal};
};

// The stream is positioned at the start of the file. Returns false, leaving
// the module untouched, when the caller declines the options.
bool ImportMod(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options);

}  // namespace sondrel
