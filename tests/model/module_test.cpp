#include <gtest/gtest.h>

#include <memory>

#include "model/module.h"
#include "model/notes.h"

namespace sondrel {
namespace {

std::unique_ptr<Module> FreshModule(ChipSettings settings = {}) {
    auto module = std::make_unique<Module>();
    module->NewModule(settings);
    return module;
}

TEST(ModuleTest, NewModuleHasOnePatternListZeroAndResetInstruments) {
    auto module = FreshModule({kDivider2x, kChipPal});
    EXPECT_EQ(module->frequencyDivider, kDivider2x);
    EXPECT_EQ(module->chipType, kChipPal);
    EXPECT_EQ(module->initialSpeed, 48);
    EXPECT_EQ(module->patternListLength, 1);
    EXPECT_EQ(module->patternList[0], 0);
    EXPECT_EQ(module->repeatPosition, 0);
    EXPECT_TRUE(module->patterns[0].used);
    EXPECT_EQ(module->patterns[0].length, 64);
    for (int p = 1; p < kPatterns; ++p) EXPECT_FALSE(module->patterns[p].used) << p;
    for (const auto& line : module->patterns[0].lines) {
        for (int c = 0; c < kChannels; ++c) {
            EXPECT_EQ(line.note[c], kNoteEmpty);
            EXPECT_EQ(line.channelCommand[c], 0);
        }
        EXPECT_EQ(line.command, 0);
    }
    for (const auto& instrument : module->instruments) {
        EXPECT_EQ(instrument.startVolume, 255);
        EXPECT_EQ(instrument.delay, (std::array<uint8_t, 4>{8, 8, 8, 8}));
        EXPECT_EQ(instrument.volumeAdd, (std::array<int8_t, 5>{}));
    }
}

TEST(ModuleTest, NewModuleForgetsEverythingOfTheOldSong) {
    auto module = FreshModule();
    module->title = "t";
    module->fileName = "song.sdrltk";
    module->instruments[3].name = "bass";
    module->instruments[3].vibratoStrength[2] = 9;
    module->CreatePattern(7);
    module->patternListLength = 3;
    module->initialSpeed = 20;
    module->NewModule({});
    EXPECT_FALSE(module->patterns[7].used);
    module->patterns[7] = Pattern{};  // unused patterns keep their old lines until created again
    EXPECT_EQ(*module, *FreshModule());
}

TEST(ModuleTest, CopiesAsAValueAndClearingKeepsUnlookedAtBytes) {
    auto module = FreshModule();
    PatternLine& line = module->patterns[0].lines[255];
    line.note[2] = 60;
    line.volume[2] = 9;
    line.detune[2] = -12;
    line.command = kCommandSP;
    auto copy = std::make_unique<Module>(*module);
    EXPECT_EQ(*copy, *module);
    copy->patterns[0].lines[255].note[2] = 61;
    EXPECT_EQ(module->patterns[0].lines[255].note[2], 60);

    line.Clear();
    EXPECT_EQ(line.note[2], kNoteEmpty);
    EXPECT_EQ(line.command, 0);
    EXPECT_EQ(line.volume[2], 9);
    EXPECT_EQ(line.detune[2], -12);
}

TEST(ModuleTest, FreePatternsAndListCounts) {
    auto module = FreshModule();
    EXPECT_EQ(module->FindFreePattern(), 1);
    module->CreatePattern(1);
    module->CreatePattern(3);
    EXPECT_EQ(module->FindFreePattern(), 2);
    for (int p = 0; p < kPatterns; ++p) module->patterns[p].used = 1;
    EXPECT_FALSE(module->FindFreePattern().has_value());

    module->patternList = {};
    module->patternList[0] = 3;
    module->patternList[1] = 1;
    module->patternList[2] = 3;
    module->patternList[3] = 3;  // beyond the list's length: does not count
    module->patternListLength = 3;
    EXPECT_EQ(module->CountInList(3), 2);
    EXPECT_EQ(module->CountInList(1), 1);
    EXPECT_EQ(module->CountInList(0), 0);
}

TEST(ModuleTest, TactLinesWithMainTactWinning) {
    Pattern pattern;
    pattern.tactEnabled = {1, 1};
    pattern.tactStart = {2, 0};
    pattern.tactInterval = {4, 3};
    EXPECT_EQ(pattern.TactOf(0), 1);
    EXPECT_EQ(pattern.TactOf(1), -1);
    EXPECT_EQ(pattern.TactOf(2), 0);
    EXPECT_EQ(pattern.TactOf(3), 1);
    EXPECT_EQ(pattern.TactOf(6), 0);  // both tacts mark it
    pattern.tactEnabled = {0, 0};
    EXPECT_EQ(pattern.TactOf(6), -1);
}

TEST(NotesTest, NamesOfEveryKind) {
    EXPECT_EQ(NoteName(0), "C =");
    EXPECT_EQ(NoteName(45), "A 1");
    EXPECT_EQ(NoteName(57), "A 2");
    EXPECT_EQ(NoteName(58), "B 2");
    EXPECT_EQ(NoteName(59), "H 2");
    EXPECT_EQ(NoteName(61), "C#3");
    EXPECT_EQ(NoteName(155), "H +");
    EXPECT_EQ(NoteName(156), "???");
    EXPECT_EQ(NoteName(245), "???");
    EXPECT_EQ(NoteName(246), "Nul");
    EXPECT_EQ(NoteName(247), "PHi");
    EXPECT_EQ(NoteName(250), "PC2");
    EXPECT_EQ(NoteName(251), "WHi");
    EXPECT_EQ(NoteName(254), "WC2");
    EXPECT_EQ(NoteName(255), "---");
}

TEST(NotesTest, WhatEachKindCarriesAndWhereItPlays) {
    EXPECT_TRUE(NoteHasInstrument(60));
    EXPECT_TRUE(NoteHasInstrument(kNoteNull));
    EXPECT_FALSE(NoteHasInstrument(248));
    EXPECT_FALSE(NoteHasInstrument(200));
    EXPECT_TRUE(NoteHasVolume(248));
    EXPECT_FALSE(NoteHasVolume(200));
    EXPECT_FALSE(NoteHasVolume(kNoteEmpty));

    EXPECT_TRUE(NotePlaysOnChannel(45, 0));
    EXPECT_TRUE(NotePlaysOnChannel(119, 2));
    EXPECT_FALSE(NotePlaysOnChannel(44, 1));
    EXPECT_FALSE(NotePlaysOnChannel(120, 1));
    EXPECT_TRUE(NotePlaysOnChannel(kNoteNull, 0));
    EXPECT_FALSE(NotePlaysOnChannel(kNoteNull, 3));
    EXPECT_FALSE(NotePlaysOnChannel(248, 1));
    EXPECT_TRUE(NotePlaysOnChannel(248, 3));
    EXPECT_FALSE(NotePlaysOnChannel(100, 3));
}

TEST(NotesTest, TonePeriodTable) {
    const auto& table = TonePeriodTable();
    EXPECT_EQ(table[45], 1016);
    EXPECT_EQ(table[57], 508);
    EXPECT_EQ(table[69], 254);
    EXPECT_EQ(table[119], 14);
    for (int n = 0; n < 45; ++n) EXPECT_GT(table[n], 1023) << n;
    for (int n = 156; n < 256; ++n) EXPECT_EQ(table[n], 0) << n;
    for (int n = 1; n <= 155; ++n) EXPECT_LE(table[n], table[n - 1]) << n;
}

TEST(NotesTest, PeriodToNote) {
    EXPECT_EQ(PeriodToNote(0), (NoteAndDetune{kNoteNull, 0}));
    EXPECT_EQ(PeriodToNote(254), (NoteAndDetune{69, 0}));
    EXPECT_EQ(PeriodToNote(250), (NoteAndDetune{69, -4}));
    EXPECT_EQ(PeriodToNote(5000), (NoteAndDetune{45, 7}));  // capped at 1023
    // 118 and 119 share period 14: the lower note wins.
    EXPECT_EQ(PeriodToNote(1), (NoteAndDetune{118, -13}));
    // Halfway between two notes the lower note number wins.
    const auto& table = TonePeriodTable();
    for (int n = 46; n <= 119; ++n) {
        int gap = table[n - 1] - table[n];
        if (gap % 2 == 0) {
            int mid = table[n] + gap / 2;
            EXPECT_EQ(PeriodToNote(mid).note, n - 1) << mid;
            break;
        }
    }
}

TEST(NotesTest, FrequencyToNote) {
    // 440 Hz is "A 3" on an NTSC 1x chip, a hair off the table's period.
    NoteAndDetune a = FrequencyToNote(440.0, kDivider1x, kChipNtsc);
    EXPECT_EQ(a.note, 69);
    EXPECT_EQ(a.detune, 0);
    // With the 2x divider the same pitch sits an octave higher in the note numbers.
    EXPECT_EQ(FrequencyToNote(440.0, kDivider2x, kChipNtsc).note, 81);
    // The PAL clock is lower, so the period for the same pitch is shorter.
    EXPECT_LT(FrequencyToNote(440.0, kDivider1x, kChipPal).detune, 0);
    EXPECT_EQ(FrequencyToNote(1.0, kDivider1x, kChipNtsc).note, 0);
    EXPECT_EQ(FrequencyToNote(1e9, kDivider1x, kChipNtsc).note, 155);
    // Detune saturates in both directions.
    EXPECT_EQ(FrequencyToNote(1.0, kDivider1x, kChipNtsc).detune, 99);
    EXPECT_GE(FrequencyToNote(1e9, kDivider1x, kChipNtsc).detune, -99);
}

}  // namespace
}  // namespace sondrel
