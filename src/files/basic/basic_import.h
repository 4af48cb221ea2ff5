#pragma once
// BASIC music listing import: PLAY, SOUND and BEEP of plain-text and
// tokenized listings, run into a module.

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "model/module.h"

namespace sondrel {

class ImportOptionsProvider;

// The "Load BAS file" dialog's fields.
struct BasicImportOptions {
    enum Slot { kPlayNormal, kPlayStaccato, kPlayLegato, kSound, kBeep, kPause };
    // "PLAY: Normal:", "PLAY: Staccato:", "PLAY: Legato:", "SOUND:", "BEEP:", "Pause:"
    std::array<uint8_t, 6> instruments{0, 1, 2, 3, 4, 5};
    ChipSettings chip{};
};

// The stream is positioned at the start of the file. Returns false, leaving
// the module untouched, when the caller declines the options.
bool ImportBasic(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options);

}  // namespace sondrel
