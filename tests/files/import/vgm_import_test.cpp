#include <gtest/gtest.h>

#include <zlib.h>

#include <cstring>
#include <tuple>

#include "files/module_test_support.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {
namespace {

using test::Bytes;
using Chooser = test::Chooser<VgmImportOptions>;

void Put32(Bytes& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<unsigned char>(v >> (8 * i));
}

// A log of these commands; `after` follows the end that the header gives.
Bytes Vgm(const Bytes& commands, uint32_t rate = 60, uint32_t clock = 3579545, const Bytes& after = {}) {
    Bytes b(0x40);
    std::memcpy(b.data(), "Vgm ", 4);
    Put32(b, 0x0C, clock), Put32(b, 0x24, rate), Put32(b, 0x34, 0x4C);  // data offset says 0x80
    b.insert(b.end(), commands.begin(), commands.end());
    Put32(b, 4, static_cast<uint32_t>(b.size() - 4));
    b.insert(b.end(), after.begin(), after.end());
    return b;
}

// Nothing when the chooser declines; gzip writes the log compressed.
std::unique_ptr<Module> Import(const Bytes& bytes, Chooser& chooser) { return test::ImportFresh(FileKind::Vgm, bytes, chooser); }

std::unique_ptr<Module> Import(const Bytes& bytes, bool gzip = false) {
    Chooser chooser;
    if (!gzip) return Import(bytes, chooser);
    test::ScratchDir dir;
    gzFile out = gzopen((dir / "a.vgm").c_str(), "wb");
    gzwrite(out, bytes.data(), static_cast<unsigned>(bytes.size()));
    gzclose(out);
    auto module = test::NewModule();
    EXPECT_TRUE(ImportVgm(*module, (dir / "a.vgm").string(), chooser));
    return module;
}

TEST(VgmImport, WaitsCarryOverIntoOneLinePerFrame) {
    // The set-up line comes first and each whole frame adds a line.
    struct Case { Bytes commands; uint32_t rate; int lines; };
    for (const Case& c : {Case{{0x61, 1470 & 255, 1470 >> 8}, 60, 3}, {{0x61, 1469 & 255, 1469 >> 8}, 60, 2},
                          {{0x61, 1469 & 255, 1469 >> 8, 0x70}, 60, 3},
                          {{0x61, 700 & 255, 700 >> 8, 0x7F, 0x8F, 0x80, 0x84}, 60, 2},  // 700 + 16 + 15 + 4
                          {{0x62, 0x62}, 50, 2}, {{0x63, 0x63}, 50, 3}})
        EXPECT_EQ(Import(Vgm(c.commands, c.rate))->patterns[0].length, c.lines) << c.lines;
    EXPECT_EQ(Import(Vgm({0x62, 0x62}))->patterns[0].lines[1].note, (std::array<uint8_t, 4>{255, 255, 255, 255}));
}

TEST(VgmImport, RegisterChangesBecomeNotesAndCommandsPlainOrCompressed) {
    const Bytes log = Vgm({0x50, 0x8E, 0x50, 0x3F, 0x50, 0x90, 0x62,  // tone 0: period 0x3FE, loudest
                           0x50, 0xE5, 0x50, 0xF3, 0x4F, 0xED, 0x62,  // white noise, middle rate; stereo
                           0x50, 0xF7, 0x4F, 0xED, 0x62,              // the noise volume alone, the same stereo
                           0x50, 0x80, 0x50, 0x00, 0x62});            // tone 0 at period 0
    auto module = Import(log);
    const auto& lines = module->patterns[0].lines;
    EXPECT_EQ(std::tie(lines[0].note[0], lines[0].detune[0], lines[0].volume[0]),
              std::make_tuple(45, 6, 15));  // period 1016, six lower
    EXPECT_EQ(lines[1].note, (std::array<uint8_t, 4>{255, 255, 255, 252}));
    EXPECT_EQ(lines[1].volume[3], 12);
    EXPECT_EQ(std::tie(lines[1].command, lines[1].commandParam), std::make_tuple(kCommandST, 0xED));
    EXPECT_EQ(lines[2].note[3], kNoteEmpty);
    EXPECT_EQ(std::tie(lines[2].channelCommand[3], lines[2].channelParam[3]), std::make_tuple(kChannelCommandVO, 8));
    EXPECT_EQ(lines[2].command, kCommandNone);
    EXPECT_EQ(lines[3].note[0], kNoteNull);
    EXPECT_EQ(module->patterns[0].length, 5);
    EXPECT_TRUE(*Import(log, true) == *module);
}

TEST(VgmImport, EveryTwoHundredFiftySixLinesOpenANewPatternUntilTheModuleIsFull) {
    Bytes commands(256, 0x62);
    commands.insert(commands.end(), {0x50, 0x90, 0x62});
    auto module = Import(Vgm(commands));
    EXPECT_EQ(std::tie(module->patternListLength, module->patternList[1], module->patterns[0].length,
                       module->patterns[1].length), std::make_tuple(2, 1, 256, 2));
    EXPECT_EQ(module->patterns[1].lines[0].volume[0], 15);
    Bytes endless;
    for (int i = 0; i < 800; ++i) endless.insert(endless.end(), {0x61, 0xFF, 0xFF});
    module = Import(Vgm(endless));
    EXPECT_EQ(module->patternListLength, 256);
    EXPECT_EQ(module->patterns[255].length, 256);
}

TEST(VgmImport, CommandsAreReadFromTheHeadersEndWithTheImportersOwnOperandCounts) {
    auto loud = [](const Bytes& commands, const Bytes& after = {}) {
        return Import(Vgm(commands, 60, 3579545, after))->patterns[0].lines[0].volume[0] == 15;
    };
    EXPECT_TRUE(loud({0x50, 0x90, 0x62}));
    EXPECT_FALSE(loud({0x30, 0x00, 0x50, 0x90, 0x62}));  // two operands, not one
    EXPECT_FALSE(loud({0xA0, 0x00, 0x50, 0x90, 0x62}));
    EXPECT_FALSE(loud({0x67, 0x66, 0x00, 0x02, 0, 0, 0, 0x50, 0x90, 0x62}));
    EXPECT_FALSE(loud({0x66, 0x50, 0x90, 0x62}));
    EXPECT_FALSE(loud({}, {0x50, 0x90, 0x62}));
}

TEST(VgmImport, TheHeaderProposesTheOptionsAndBadFilesAreRefused) {
    auto proposed = [](const Bytes& bytes) {
        Chooser chooser;
        Import(bytes, chooser);
        return *chooser.proposal;
    };
    EXPECT_EQ(proposed(Vgm({}, 0, 3546893)).chip, (ChipSettings{kDivider1x, kChipPal}));
    VgmImportOptions ntsc = proposed(Vgm({}, 60, 3579545));
    EXPECT_EQ(ntsc.chip, (ChipSettings{kDivider1x, kChipNtsc}));
    EXPECT_EQ(std::tie(ntsc.noisePattern, ntsc.noiseWidth), std::make_tuple(9, 16));  // what a 0 in the header stands for
    Chooser declining;
    declining.decline = true;
    EXPECT_EQ(Import(Vgm({0x62}), declining), nullptr);

    Bytes notVgm = Vgm({0x62});  // a log that ends too early is refused in the importers' table
    notVgm[0] = 'v';
    EXPECT_THROW(Import(notVgm), Exception);
    EXPECT_THROW(ImportVgm(*Import(Vgm({})), "/nonexistent/a.vgm", declining), Exception);
}

}  // namespace
}  // namespace sondrel
