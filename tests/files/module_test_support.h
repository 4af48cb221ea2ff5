#pragma once
// Small modules for the exporter tests, and the demo song.

#include <memory>

#include "files/module_file.h"
#include "model/module.h"
#include "test_support.h"

namespace sondrel::test {

// A module whose pattern 0 has `lines` lines played one tick each.
inline std::unique_ptr<Module> TickPerLine(int lines, ChipSettings settings = {}) {
    auto module = std::make_unique<Module>();
    module->NewModule(settings);
    module->initialSpeed = 8;
    module->patterns[0].length = static_cast<uint16_t>(lines);
    return module;
}

// A note at full cell volume in pattern 0.
inline void SetNote(Module& module, int line, int channel, uint8_t note, uint8_t instrument = 0) {
    PatternLine& cell = module.patterns[0].lines[line];
    cell.note[channel] = note;
    cell.volume[channel] = 15;
    cell.instrument[channel] = instrument;
}

inline std::unique_ptr<Module> LoadDemo() {
    auto module = std::make_unique<Module>();
    module->NewModule({});
    ImportOptionsProvider defaults;
    if (!LoadAnyFile(*module, (SourceDir() / "data" / "demo.sdrltk").string(), defaults)) return nullptr;
    return module;
}

}  // namespace sondrel::test
