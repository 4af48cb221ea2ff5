#pragma once
// What the file tests share: byte builders, fresh modules on the heap, small
// modules for the exporters, walking a song line by line, and running one
// importer on bytes.

#include <cstdint>
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "files/basic/basic_import.h"
#include "files/file_stream.h"
#include "files/import/importers.h"
#include "files/module_file.h"
#include "model/module.h"
#include "test_support.h"

namespace sondrel::test {

using Bytes = std::vector<unsigned char>;

inline Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }

inline Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

inline uint32_t Le32(const Bytes& b, size_t at) {
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<uint32_t>(b[at + 3]) << 24;
}

// Modules live on the heap: each is almost two megabytes.
inline std::unique_ptr<Module> NewModule(ChipSettings settings = {}, const std::string& title = "") {
    auto module = std::make_unique<Module>();
    module->NewModule(settings);
    module->title = title;
    return module;
}

// A module whose pattern 0 has `lines` lines played one tick each.
inline std::unique_ptr<Module> TickPerLine(int lines, ChipSettings settings = {}) {
    auto module = NewModule(settings);
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
    auto module = NewModule();
    ImportOptionsProvider defaults;
    if (!LoadAnyFile(*module, (SourceDir() / "data" / "demo.sdrltk").string(), defaults)) return nullptr;
    return module;
}

// The demo song as it was before its last pattern showed the channel
// effects: what a module without them sounds and exports like.
inline std::unique_ptr<Module> LoadDemoWithoutEffects() {
    auto module = LoadDemo();
    if (!module) return nullptr;
    const uint8_t effects = module->patternList[module->patternListLength - 1];
    module->patterns[effects].used = 0;
    module->patternList[--module->patternListLength] = 0;
    return module;
}

// Calls visit(n, line) for the n-th line the pattern list plays, in order; returns how many there are.
inline long ForEachSongLine(const Module& m, const std::function<void(long, const PatternLine&)>& visit = {}) {
    long n = 0;
    for (int i = 0; i < m.patternListLength; ++i) {
        const Pattern& p = m.patterns[m.patternList[i]];
        for (int l = 0; l < p.length; ++l, ++n)
            if (visit) visit(n, p.lines[l]);
    }
    return n;
}

// Writes the bytes to a scratch file of that name and runs the importer of that kind on it.
inline bool ImportBytes(FileKind kind, Module& module, const Bytes& bytes, ImportOptionsProvider& options,
                        const std::string& name = "input") {
    ScratchDir dir;
    const std::string path = (dir / name).string();
    WriteBytes(dir / name, bytes);
    if (kind == FileKind::Vgm) return ImportVgm(module, path, options);
    UniqueFile file = OpenFile(path, "rb");
    if (kind == FileKind::Mod) return ImportMod(module, file.get(), path, options);
    if (kind == FileKind::Midi) return ImportMidi(module, file.get(), path, options);
    return ImportBasic(module, file.get(), path, options);
}

// Answers one importer: records its proposal and the text changes, applies
// `change` to the choice, or declines.
template <typename Options>
struct Chooser : ImportOptionsProvider {
    std::optional<Options> proposal;
    std::function<void(Options&)> change;
    bool decline = false;
    std::vector<TextChange> changes;

    std::optional<Options> Choose(const Options& offered) {
        proposal = offered;
        Options chosen = offered;
        if (change) change(chosen);
        return decline ? std::nullopt : std::optional(chosen);
    }
    template <typename Asked>
    std::optional<Asked> Answer(const Asked& offered) {
        if constexpr (std::is_same_v<Asked, Options>) return Choose(offered);
        return offered;
    }
    std::optional<ModImportOptions> ChooseModOptions(const ModImportOptions& p) override { return Answer(p); }
    std::optional<VgmImportOptions> ChooseVgmOptions(const VgmImportOptions& p) override { return Answer(p); }
    std::optional<MidiImportOptions> ChooseMidiOptions(const MidiImportOptions& p) override { return Answer(p); }
    std::optional<BasicImportOptions> ChooseBasicOptions(const BasicImportOptions& p) override { return Answer(p); }
    void TextsChanged(const std::vector<TextChange>& made) override { changes = made; }
};

// Imports the bytes into a fresh module; null when the chooser declines, and
// then the module must have been left as it was.
template <typename Options>
std::unique_ptr<Module> ImportFresh(FileKind kind, const Bytes& bytes, Chooser<Options>& chooser,
                                    const std::string& name = "input") {
    auto module = NewModule(), fresh = NewModule();
    if (ImportBytes(kind, *module, bytes, chooser, name)) return module;
    if (!(*module == *fresh)) ADD_FAILURE() << "a declined import changed the module";
    return nullptr;
}

}  // namespace sondrel::test
