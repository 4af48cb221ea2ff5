#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <utility>

#include "model/module.h"
#include "model/notes.h"

namespace sondrel {
namespace {

std::unique_ptr<Module> FreshModule(ChipSettings settings = {}) {
    auto module = std::make_unique<Module>();
    module->NewModule(settings);
    return module;
}

TEST(ModuleTest, NewModuleStartsOverWithOnePatternAndResetInstruments) {
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
    const std::array<uint8_t, kChannels> empty{kNoteEmpty, kNoteEmpty, kNoteEmpty, kNoteEmpty};
    for (const auto& line : module->patterns[0].lines) EXPECT_EQ(line.note, empty);
    for (const auto& instrument : module->instruments) {
        EXPECT_EQ(instrument.startVolume, 255);
        EXPECT_EQ(instrument.delay, (std::array<uint8_t, 4>{8, 8, 8, 8}));
        EXPECT_EQ(instrument.volumeAdd, (std::array<int8_t, 5>{}));
    }

    // A second NewModule forgets everything of the old song.
    module->title = "t";
    module->fileName = "song.sdrltk";
    PatternLine& line = module->patterns[0].lines[5];  // lines of the old pattern 0 are cleared
    line.note = {60, 61, 62, 63};
    line.channelCommand[1] = 2;
    line.command = kCommandSP;
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

TEST(ModuleTest, ClearingALineKeepsItsUnlookedAtBytes) {
    PatternLine line;
    line.note[2] = 60;
    line.volume[2] = 9;
    line.detune[2] = -12;
    line.command = kCommandSP;
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

    module->patternList = {3, 1, 3, 3};  // the last is beyond the list's length: does not count
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

TEST(NotesTest, NamesAndWhatEachKindCarries) {
    const std::pair<int, const char*> names[] = {
        {0, "C ="},   {45, "A 1"},  {58, "B 2"},  {59, "H 2"},  {61, "C#3"},  {155, "H +"},
        {156, "???"}, {245, "???"}, {246, "Nul"}, {247, "PHi"}, {250, "PC2"}, {251, "WHi"},
        {254, "WC2"}, {255, "---"}};
    for (auto [note, name] : names) EXPECT_EQ(NoteName(static_cast<uint8_t>(note)), name) << note;

    // {note, has instrument, has volume}
    for (auto [note, instrument, volume] : {std::tuple{60, true, true}, {kNoteNull, true, true},
                                            {248, false, true}, {200, false, false}, {kNoteEmpty, false, false}}) {
        EXPECT_EQ(NoteHasInstrument(static_cast<uint8_t>(note)), instrument) << note;
        EXPECT_EQ(NoteHasVolume(static_cast<uint8_t>(note)), volume) << note;
    }

    // {note, channel, plays}
    const std::tuple<int, int, bool> plays[] = {{45, 0, true},  {119, 2, true},       {44, 1, false},
                                                {120, 1, false}, {kNoteNull, 0, true}, {kNoteNull, 3, false},
                                                {248, 1, false}, {248, 3, true},       {100, 3, false}};
    for (auto [note, channel, expected] : plays)
        EXPECT_EQ(NotePlaysOnChannel(static_cast<uint8_t>(note), channel), expected) << note << " on " << channel;
}

TEST(NotesTest, TonePeriodTable) {
    const auto& table = TonePeriodTable();
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
    EXPECT_EQ(FrequencyToNote(440.0, kDivider1x, kChipNtsc), (NoteAndDetune{69, 0}));
    // With the 2x divider the same pitch sits an octave higher in the note numbers.
    EXPECT_EQ(FrequencyToNote(440.0, kDivider2x, kChipNtsc).note, 81);
    // The PAL clock is lower, so the period for the same pitch is shorter.
    EXPECT_LT(FrequencyToNote(440.0, kDivider1x, kChipPal).detune, 0);
    // Out of range both ways: clamped to the end notes, detune saturating.
    EXPECT_EQ(FrequencyToNote(1.0, kDivider1x, kChipNtsc), (NoteAndDetune{0, 99}));
    EXPECT_EQ(FrequencyToNote(1e9, kDivider1x, kChipNtsc).note, 155);
    EXPECT_GE(FrequencyToNote(1e9, kDivider1x, kChipNtsc).detune, -99);
}

}  // namespace
}  // namespace sondrel
