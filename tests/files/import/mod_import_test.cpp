#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

#include "files/module_test_support.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {
namespace {

using test::Bytes;
using Chooser = test::Chooser<ModImportOptions>;

Chooser Ntsc() {
    Chooser chooser;
    chooser.change = [](ModImportOptions& o) { o.chip.chipType = kChipNtsc; };
    return chooser;
}

// A four-channel MOD of empty patterns, played in the given order.
struct ModFile {
    Bytes bytes;
    ModFile(int patterns, const Bytes& orders) : bytes(1084 + patterns * 1024) {
        bytes[950] = static_cast<unsigned char>(orders.size());
        std::copy(orders.begin(), orders.end(), bytes.begin() + 952);
        std::memcpy(&bytes[1080], "M.K.", 4);
    }
    // Lengths in words, as the file has them; zero data go after the patterns.
    void Sample(int number, int words, int volume, int loopStart, int loopWords) {
        unsigned char* at = &bytes[20 + (number - 1) * 30 + 22];
        at[0] = words >> 8, at[1] = words & 255, at[3] = volume, at[5] = loopStart, at[7] = loopWords;
        bytes.resize(bytes.size() + words * 2);
    }
    void Cell(int pattern, int row, int channel, int sample, int period, int effect = 0, int param = 0) {
        unsigned char* at = &bytes[1084 + pattern * 1024 + row * 16 + channel * 4];
        at[0] = (sample & 0xF0) | period >> 8, at[1] = period & 255, at[2] = (sample & 15) << 4 | effect, at[3] = param;
    }
    // Nothing when the chooser declines.
    std::unique_ptr<Module> Import(Chooser&& chooser = {}) const { return Import(chooser); }
    std::unique_ptr<Module> Import(Chooser& chooser) const {
        return test::ImportFresh(FileKind::Mod, bytes, chooser, "a.mod");
    }
};

TEST(ModImport, NamesAreProposedAndACancelLeavesTheModuleAlone) {
    ModFile mod(1, {0});
    std::memcpy(&mod.bytes[0], "Ab\x01" "c\0de0fg", 10);
    std::memcpy(&mod.bytes[20], "Kick\x1f", 5);
    Chooser declining;
    declining.decline = true;
    EXPECT_EQ(mod.Import(declining), nullptr);
    EXPECT_EQ(declining.proposal->name, "Abcde");  // stops at the digit zero, not at the zero byte
    EXPECT_EQ(declining.proposal->chip, (ChipSettings{kDivider1x, kChipPal}));
    auto module = mod.Import();
    EXPECT_EQ(module->title, "Abcde");
    EXPECT_EQ(module->notes, "Kick\n" + std::string(30, '\n'));
}

TEST(ModImport, LongSampleNamesKeepWholeNamesAndTheModuleLoadsBack) {
    // 31 names of lengths within one of each other, the longer first, each on
    // its own line in the notes; the first starts with the digit zero.
    struct Case { size_t joined, kept; };
    const Case cases[] = {{255, 255}, {256, 255}, {300, 255}, {383, 251}, {384, 252}, {512, 255}, {639, 252}};
    test::ScratchDir dir;
    const std::string path = (dir / "names.mod").string(), saved = (dir / "names.sdrltk").string();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.joined);
        ModFile mod(1, {0});
        std::string joined;
        for (size_t i = 0; i < 31; ++i) {
            std::string name((c.joined - 31) / 31 + (i < (c.joined - 31) % 31), static_cast<char>('A' + i % 26));
            if (i == 0) name[0] = '0';
            std::memcpy(&mod.bytes[20 + i * 30], name.data(), name.size());
            joined += name + "\n";
        }
        ASSERT_EQ(joined.size(), c.joined);
        test::WriteBytes(path, mod.bytes);
        Chooser chooser;
        auto imported = test::NewModule(), reloaded = test::NewModule();
        ASSERT_TRUE(LoadAnyFile(*imported, path, chooser));
        EXPECT_EQ(imported->notes, "O" + joined.substr(1, c.kept - 1));
        std::vector<TextChange> expected = {{"notes", TextRule::ZeroReplaced, c.kept}};
        if (c.kept < c.joined) expected.insert(expected.begin(), {"notes", TextRule::Cut, c.kept});
        EXPECT_EQ(chooser.changes, expected);

        SaveModule(*imported, saved);
        ASSERT_TRUE(LoadAnyFile(*reloaded, saved, chooser));
        EXPECT_TRUE(*reloaded == *imported);
    }
}

TEST(ModImport, SamplesAreReadFourBytesEarlyAndOneShotsFallSilent) {
    ModFile mod(1, {0});
    mod.Sample(1, 4, 64, 0, 1);  // one-shot: six bytes once the first two are skipped
    mod.Cell(0, 0, 0, 1, 428);
    mod.Cell(0, 0, 3, 1, 428);
    mod.Cell(0, 1, 0, 0, 428);             // no sample number: the same sample again
    mod.Cell(0, 63, 3, 0x72, 0, 0, 0x10);  // 70 00 20 10, the four bytes before the data
    auto module = mod.Import();
    const auto& lines = module->patterns[0].lines;
    auto cell = [&](int l, int c) { return std::tuple<int, int, int>(lines[l].note[c], lines[l].detune[c], lines[l].volume[c]); };
    // Peak 32 of 20 10 00 00 00 00 at full volume is volume 8; period 428 is note 72 +1 in PAL.
    for (int c : {0, 3}) {
        EXPECT_EQ(cell(0, c), std::make_tuple(72, 1, 8));
        EXPECT_EQ(cell(1, c), std::make_tuple(72, 0, 0));
        EXPECT_EQ(lines[2].note[c], kNoteEmpty);
    }
    EXPECT_EQ(std::tie(lines[6].volume[0], lines[7].volume[0], lines[8].note[0]), std::make_tuple(8, 0, kNoteEmpty));
}

TEST(ModImport, FiveMinutesInPalAreFifteenThousandLines) {
    ModFile mod(2, Bytes(39, 0));
    mod.bytes[950] = 40, mod.bytes[952 + 39] = 1;
    mod.Cell(1, 3, 2, 0, 0, 0xD, 0);  // 39 patterns and 4 rows at 6 ticks: 15000 ticks
    auto module = mod.Import();
    ASSERT_EQ(module->patternListLength, 59);
    for (int p = 0; p < 59; ++p)
        EXPECT_TRUE(module->patternList[p] == p && module->patterns[p].length == (p < 58 ? 256 : 152)) << p;
    EXPECT_EQ(test::ForEachSongLine(*mod.Import(Ntsc())), 18000);
}

TEST(ModImport, SpeedTempoVolumeAndSlideEffects) {
    struct Case { int speed, tempo; uint8_t chip; int lines; };
    // Four rows; tempo 125 is one tick per line in PAL and 1.2 in NTSC.
    for (Case c : {Case{-1, -1, kChipPal, 24}, {-1, 125, kChipPal, 24}, {-1, 250, kChipPal, 12}, {0, -1, kChipPal, 4},
                   {3, 250, kChipPal, 6}, {-1, 33, kChipPal, 91}, {-1, -1, kChipNtsc, 29}, {-1, 125, kChipNtsc, 29}}) {
        ModFile mod(1, {0});
        mod.Cell(0, 3, 0, 0, 0, 0xD, 0);
        if (c.speed >= 0) mod.Cell(0, 0, 1, 0, 0, 0xF, c.speed);
        if (c.tempo >= 0) mod.Cell(0, 0, 2, 0, 0, 0xF, c.tempo);
        EXPECT_EQ(test::ForEachSongLine(*mod.Import(c.chip == kChipPal ? Chooser() : Ntsc())), c.lines)
            << c.speed << " " << c.tempo;
    }
    ModFile mod(1, {0});
    mod.Sample(1, 2, 64, 1, 1);  // looping over the two bytes before the data: 00 7F
    mod.Cell(0, 63, 3, 0, 0, 0, 0x7F);
    mod.Cell(0, 0, 0, 1, 428, 0xC, 40);
    mod.Cell(0, 1, 0, 0, 0, 0xA, 0x0F);
    mod.Cell(0, 2, 0, 0, 0, 0xA, 0x20);
    // Volume 40 gives 13; slides act at the end of each tick: down 15 to 0
    // (one silent cell, then nothing), then up 2 a tick.
    const int expected[] = {13, 13, 13, 13, 13, 13, 13, 11, 5, 0, -1, -1, -1, 1, 2, 3, 4, 5, 6, 6};
    auto module = mod.Import();
    for (int l = 0; l < 20; ++l) {
        const PatternLine& line = module->patterns[0].lines[l];
        EXPECT_EQ(line.note[0], expected[l] < 0 ? kNoteEmpty : 72) << l;
        EXPECT_EQ(line.volume[0], std::max(expected[l], 0)) << l;
    }
}

TEST(ModImport, MalformedHeadersAndBreaksAreRefused) {
    // Loud samples and breaks past the last row are refused in the importers' table.
    ModFile loopFromStart(1, {0}), loopPastEnd(1, {0});
    loopFromStart.Sample(1, 8, 64, 0, 4);  // only a one-word loop at the start means one-shot
    loopPastEnd.Sample(1, 8, 64, 2, 7);
    for (const ModFile& mod : {loopFromStart, loopPastEnd, ModFile(1, {}), ModFile(1, {0, 128})}) {
        EXPECT_THROW(mod.Import(), Exception);
    }
    // A break after 30 patterns of 1984 ticks refuses the file at 50 ticks a
    // second, but at 60 the module is full before the replay gets there.
    ModFile lateBreak(2, Bytes(30, 0));
    lateBreak.bytes[950] = 31, lateBreak.bytes[952 + 30] = 1;
    lateBreak.Cell(0, 0, 1, 0, 0, 0xF, 31);
    lateBreak.Cell(1, 0, 2, 0, 0, 0xD, 0x64);
    EXPECT_EQ(test::ForEachSongLine(*lateBreak.Import(Ntsc())), kPatterns * kMaxLines);
}

}  // namespace
}  // namespace sondrel
