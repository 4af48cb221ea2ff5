// What every importer shares: a refusal leaves the module it was given as it was.

#include <gtest/gtest.h>

#include <cstring>

#include "files/module_test_support.h"
#include "model/exception.h"

namespace sondrel {
namespace {

using test::Bytes;

// Answers every importer with its proposal and these chip settings.
struct Answer : ImportOptionsProvider {
    ChipSettings chip;
    bool asked = false;
    explicit Answer(ChipSettings settings) : chip(settings) {}
    template <typename Options>
    std::optional<Options> With(Options options) {
        asked = true;
        options.chip = chip;
        return options;
    }
    std::optional<ModImportOptions> ChooseModOptions(const ModImportOptions& p) override { return With(p); }
    std::optional<VgmImportOptions> ChooseVgmOptions(const VgmImportOptions& p) override { return With(p); }
    std::optional<MidiImportOptions> ChooseMidiOptions(const MidiImportOptions& p) override { return With(p); }
    std::optional<BasicImportOptions> ChooseBasicOptions(const BasicImportOptions& p) override { return With(p); }
};

// Pattern 0 at speed 31 (1984 ticks) `repeats` times, then pattern 1, whose
// first row breaks to `breakParam`; byte `at` set to `value` on top.
Bytes Mod(int repeats, unsigned char breakParam, size_t at = 0, unsigned char value = 0) {
    Bytes b(1084 + 2 * 1024);
    b[950] = static_cast<unsigned char>(repeats + 1);
    b[952 + repeats] = 1;
    std::memcpy(&b[1080], "M.K.", 4);
    b[1084 + 6] = 0x0F, b[1084 + 7] = 31;
    b[1084 + 1024 + 10] = 0x0D, b[1084 + 1024 + 11] = breakParam;
    b[at] = value;
    return b;
}

Bytes Vgm(unsigned char endOffset) {
    Bytes b(0x40);
    std::memcpy(b.data(), "Vgm ", 4);
    b[4] = endOffset;
    return b;
}

Bytes Midi(unsigned char division) {
    Bytes b = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 0, division,
               'M', 'T', 'r', 'k', 0, 0, 0, 4, 0, 0xFF, 0x2F, 0};
    return b;
}

TEST(Importers, RefusalsComeBeforeTheModuleIsTouched) {
    const ChipSettings pal{kDivider1x, kChipPal}, unsetType{kDivider1x, kChipSettingUnset},
        unsetDivider{kChipSettingUnset, kChipNtsc};
    const std::string badBreak = "ImportMod(): Pattern break beyond the last row";
    struct Case { const char* what; FileKind kind; Bytes bytes; ChipSettings chip; bool asked; std::string message; };
    const Case cases[] = {
        {"MOD sample louder than 64", FileKind::Mod, Mod(0, 0, 20 + 25, 65), pal, false, "ImportMod(): Invalid MOD header"},
        {"MOD break reached at both rates", FileKind::Mod, Mod(0, 0x64), pal, false, badBreak},
        // 30 * 1984 ticks fill the module at 60 ticks a second, but not at 50.
        {"MOD break reached only at 50 ticks a second", FileKind::Mod, Mod(30, 0x64), pal, true, badBreak},
        {"VGM end before its header's end", FileKind::Vgm, Vgm(0), pal, false,
         "ImportVgm(): The header leaves no room for command data"},
        {"MIDI of zero ticks a beat", FileKind::Midi, Midi(0), pal, false, "ReadMidiFile(): Zero ticks per quarter note"},
        {"MOD, no chip type", FileKind::Mod, Mod(0, 0), unsetType, true, "ImportMod(): All chip settings must be set."},
        {"VGM, no divider", FileKind::Vgm, Vgm(0x3C), unsetDivider, true, "ImportVgm(): All chip settings must be set."},
        {"MIDI, no chip type", FileKind::Midi, Midi(96), unsetType, true, "ImportMidi(): All chip settings must be set."},
        {"BASIC, no divider", FileKind::Basic, {'B', 'E', 'E', 'P', '\n'}, unsetDivider, true,
         "ImportBasic(): All chip settings must be set."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        auto module = test::NewModule({kDivider2x, kChipPal}, "kept");
        const auto before = std::make_unique<Module>(*module);
        Answer answer(c.chip);
        try {
            test::ImportBytes(c.kind, *module, c.bytes, answer);
            ADD_FAILURE() << "imported";
        } catch (const Exception& e) {
            EXPECT_EQ(e.what(), c.message);
        }
        EXPECT_EQ(answer.asked, c.asked);
        EXPECT_TRUE(*module == *before);
    }
}

}  // namespace
}  // namespace sondrel
