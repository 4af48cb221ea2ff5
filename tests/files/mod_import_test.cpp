#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "files/importers.h"
#include "model/exception.h"
#include "model/notes.h"
#include "test_support.h"

namespace sondrel {
namespace {

using Bytes = std::vector<unsigned char>;

struct Chooser : ImportOptionsProvider {
    std::optional<ModImportOptions> proposal;
    bool cancel = false;
    uint8_t chipType = kChipPal;
    std::optional<ModImportOptions> ChooseModOptions(const ModImportOptions& offered) override {
        proposal = offered;
        if (cancel) return std::nullopt;
        ModImportOptions chosen = offered;
        chosen.chip.chipType = chipType;
        return chosen;
    }
};

// A four-channel MOD with empty patterns, played in the given order.
struct ModFile {
    Bytes bytes;
    ModFile(int patterns, const Bytes& orders) : bytes(1084 + patterns * 1024) {
        bytes[950] = static_cast<unsigned char>(orders.size());
        std::copy(orders.begin(), orders.end(), bytes.begin() + 952);
        std::memcpy(&bytes[1080], "M.K.", 4);
    }
    // Lengths in words, as the file has them; the data go after the patterns.
    void Sample(int number, int words, int volume, int loopStart, int loopWords) {
        unsigned char* at = &bytes[20 + (number - 1) * 30 + 22];
        at[0] = words >> 8, at[1] = words & 255, at[3] = volume, at[5] = loopStart, at[7] = loopWords;
        bytes.resize(bytes.size() + words * 2);
    }
    void Cell(int pattern, int row, int channel, int sample, int period, int effect = 0, int param = 0) {
        unsigned char* at = &bytes[1084 + pattern * 1024 + row * 16 + channel * 4];
        at[0] = (sample & 0xF0) | period >> 8, at[1] = period & 255, at[2] = (sample & 15) << 4 | effect;
        at[3] = param;
    }
    bool Import(Module& module, Chooser& chooser) const {
        test::ScratchDir dir;
        test::WriteBytes(dir / "a.mod", bytes);
        FILE* file = std::fopen((dir / "a.mod").c_str(), "rb");
        std::unique_ptr<FILE, int (*)(FILE*)> closer(file, std::fclose);
        return ImportMod(module, file, "a.mod", chooser);
    }
};

int TotalLines(const Module& m) {
    int lines = 0;
    for (int i = 0; i < m.patternListLength; ++i) lines += m.patterns[m.patternList[i]].length;
    return lines;
}

TEST(ModImport, NamesGoToTheProposalAndACancelLeavesTheModuleAlone) {
    ModFile mod(1, {0});
    std::memcpy(&mod.bytes[0], "Ab\x01", 3), std::memcpy(&mod.bytes[3], "c\0de0fg", 7);
    std::memcpy(&mod.bytes[20], "Kick\x7f\x1f", 6);
    auto module = std::make_unique<Module>();
    module->NewModule({});
    auto before = std::make_unique<Module>(*module);
    Chooser chooser;
    chooser.cancel = true;
    EXPECT_FALSE(mod.Import(*module, chooser));
    EXPECT_TRUE(*module == *before);
    ASSERT_TRUE(chooser.proposal);
    EXPECT_EQ(chooser.proposal->name, "Abcde");  // stops at the digit zero, not at the zero byte
    ASSERT_EQ(chooser.proposal->sampleNames.size(), 31u);
    EXPECT_EQ(chooser.proposal->sampleNames[0], "Kick\x7f");
    EXPECT_EQ(chooser.proposal->chip, (ChipSettings{kDivider1x, kChipPal}));

    chooser.cancel = false;
    ASSERT_TRUE(mod.Import(*module, chooser));
    EXPECT_EQ(module->title, "Abcde");
    EXPECT_EQ(module->notes, "Kick\x7f\n" + std::string(30, '\n'));
    EXPECT_EQ(module->patterns[0].lines[0].note, (std::array<uint8_t, 4>{246, 246, 246, 253}));
    EXPECT_EQ(module->patterns[0].lines[0].command, kCommandSP);
    EXPECT_EQ(module->patterns[0].lines[0].commandParam, 8);
}

TEST(ModImport, SamplesAreReadFourBytesEarlyAndOneShotsFallSilent) {
    ModFile mod(1, {0});
    mod.Sample(1, 4, 64, 0, 1);  // one-shot: six bytes once the first two are skipped
    mod.Cell(0, 0, 0, 1, 428);
    mod.Cell(0, 0, 3, 1, 428);
    mod.Cell(0, 1, 0, 0, 428);       // no sample number: the same sample again
    mod.Cell(0, 63, 3, 0x72, 0, 0, 0x10);  // bytes 70 00 20 10 just before the sample data
    auto module = std::make_unique<Module>();
    Chooser chooser;
    ASSERT_TRUE(mod.Import(*module, chooser));
    const auto& lines = module->patterns[0].lines;
    // Peak 32 of the bytes 20 10 00 00 00 00 at full volume gives volume 8; 428 is note 72 +1 in PAL.
    for (int c : {0, 3}) {
        EXPECT_EQ(lines[0].note[c], 72);
        EXPECT_EQ(lines[0].detune[c], 1);
        EXPECT_EQ(lines[0].volume[c], 8);
        EXPECT_EQ(lines[1].note[c], 72);
        EXPECT_EQ(lines[1].volume[c], 0);
        EXPECT_EQ(lines[1].detune[c], 0);
        EXPECT_EQ(lines[2].note[c], kNoteEmpty);
    }
    EXPECT_EQ(lines[6].volume[0], 8);
    EXPECT_EQ(lines[7].volume[0], 0);
    EXPECT_EQ(lines[8].note[0], kNoteEmpty);
    EXPECT_EQ(lines[6].note[3], kNoteEmpty);
}

TEST(ModImport, FiveMinutesInPalAreFifteenThousandLines) {
    ModFile mod(2, Bytes(39, 0));
    mod.bytes[950] = 40, mod.bytes[952 + 39] = 1;
    mod.Cell(1, 3, 2, 0, 0, 0xD, 0);  // 39 patterns and 4 rows at 6 ticks: 15000 ticks
    auto module = std::make_unique<Module>();
    Chooser chooser;
    ASSERT_TRUE(mod.Import(*module, chooser));
    ASSERT_EQ(module->patternListLength, 59);
    for (int p = 0; p < 59; ++p) {
        EXPECT_EQ(module->patternList[p], p);
        EXPECT_EQ(module->patterns[p].length, p < 58 ? 256 : 152);
    }
    chooser.chipType = kChipNtsc;
    ASSERT_TRUE(mod.Import(*module, chooser));
    EXPECT_EQ(TotalLines(*module), 18000);
}

TEST(ModImport, SpeedAndTempoEffectsSetTheLinesPerRow) {
    struct Case { int speed, tempo; uint8_t chip; int lines; };
    // Four rows; tempo 125 is one tick per line in PAL and 1.2 in NTSC.
    for (Case c : {Case{-1, -1, kChipPal, 24}, {-1, 125, kChipPal, 24}, {-1, 250, kChipPal, 12},
                   {0, -1, kChipPal, 4}, {3, 250, kChipPal, 6}, {-1, 33, kChipPal, 91},
                   {-1, -1, kChipNtsc, 29}, {-1, 125, kChipNtsc, 29}}) {
        ModFile mod(1, {0});
        mod.Cell(0, 3, 0, 0, 0, 0xD, 0);
        if (c.speed >= 0) mod.Cell(0, 0, 1, 0, 0, 0xF, c.speed);
        if (c.tempo >= 0) mod.Cell(0, 0, 2, 0, 0, 0xF, c.tempo);
        auto module = std::make_unique<Module>();
        Chooser chooser;
        chooser.chipType = c.chip;
        ASSERT_TRUE(mod.Import(*module, chooser));
        EXPECT_EQ(TotalLines(*module), c.lines) << c.speed << " " << c.tempo << " " << int{c.chip};
    }
}

TEST(ModImport, VolumeFollowsThePeakWithSlidesAndSetVolume) {
    ModFile mod(1, {0});
    mod.Sample(1, 2, 64, 1, 1);  // a looped sample of the two bytes before its data
    mod.Cell(0, 63, 3, 0, 0, 0, 0x7F);
    mod.Cell(0, 0, 0, 1, 428, 0xC, 40);
    mod.Cell(0, 1, 0, 0, 0, 0xA, 0x0F);
    mod.Cell(0, 2, 0, 0, 0, 0xA, 0x20);
    auto module = std::make_unique<Module>();
    Chooser chooser;
    ASSERT_TRUE(mod.Import(*module, chooser));
    const auto& lines = module->patterns[0].lines;
    // Peak 127 at volume 40 gives 13. The slides act at the end of each tick:
    // down 15 to 0 (one silent cell, then nothing), then up 2 a tick.
    const int expected[] = {13, 13, 13, 13, 13, 13, 13, 11, 5, 0, -1, -1, -1, 1, 2, 3, 4, 5, 6, 6};
    for (int l = 0; l < 20; ++l) {
        EXPECT_EQ(lines[l].note[0], expected[l] < 0 ? kNoteEmpty : 72) << l;
        if (expected[l] >= 0) {
            EXPECT_EQ(lines[l].volume[0], expected[l]) << l;
        }
    }
}

TEST(ModImport, MalformedHeadersAndBreaksAreRefused) {
    auto module = std::make_unique<Module>();
    Chooser chooser;
    auto refused = [&](ModFile mod) { EXPECT_THROW(mod.Import(*module, chooser), Exception); };
    ModFile loud(1, {0});
    loud.Sample(1, 2, 65, 0, 0);
    refused(loud);
    ModFile loopFromStart(1, {0});
    loopFromStart.Sample(1, 8, 64, 0, 4);  // a loop from the first word is not taken as one-shot
    refused(loopFromStart);
    ModFile loopPastEnd(1, {0});
    loopPastEnd.Sample(1, 8, 64, 2, 7);
    refused(loopPastEnd);
    refused(ModFile(1, {}));
    refused(ModFile(1, {0, 128}));
    ModFile badBreak(1, {0});
    badBreak.Cell(0, 0, 0, 0, 0, 0xD, 0x64);
    refused(badBreak);
    EXPECT_EQ(module->patterns[0].length, 1);  // the line played before the break stays
}

}  // namespace
}  // namespace sondrel
