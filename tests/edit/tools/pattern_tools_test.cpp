#include "edit/tools/pattern_tools.h"

#include <gtest/gtest.h>

#include <vector>

#include "edit/tools/list_tools.h"
#include "edit/tool_test_support.h"

namespace sondrel {
namespace {

std::bitset<kPatterns> Patterns(std::initializer_list<int> numbers) {
    std::bitset<kPatterns> bits;
    for (int n : numbers) bits.set(n);
    return bits;
}

// Patterns 0..2: line l, channel c holds note 60 with instrument (l + c) % 4;
// every third line's channel 1 and all of line 9 are empty, with instrument 15.
class PatternToolsTest : public test::ToolsTest {
protected:
    void SetUp() override {
        for (int p = 0; p < 3; ++p) {
            module->patterns[p].used = 1;
            for (int l = 0; l < kMaxLines; ++l) {
                PatternLine& line = module->patterns[p].lines[l];
                for (int c = 0; c < kChannels; ++c) {
                    bool empty = l == 9 || (c == 1 && l % 3 == 0);
                    line.note[c] = empty ? 255 : 60;
                    line.instrument[c] = static_cast<uint8_t>(empty ? 15 : (l + c) % 4);
                    line.volume[c] = static_cast<uint8_t>(c + 1);
                }
            }
        }
    }
};

struct InstrumentCase {
    const char* name;
    InstrumentChange change;
    std::array<uint8_t, 4> line2;  // instruments of line 2 afterwards; they were 2, 3, 0, 1
};

TEST_F(PatternToolsTest, ChangeInstrumentsOverMaskLinesAndPatternsAndUndo) {
    const std::vector<InstrumentCase> cases = {
        {"change #1 to #2", {kChangeFirstToSecond, 3, 7, 0b1111}, {2, 7, 0, 1}},
        {"exchange", {kExchangeInstruments, 2, 3, 0b0011}, {3, 2, 0, 1}},
        {"all to #2 on a mask", {kChangeAllToSecond, 0, 9, 0b1010}, {2, 9, 0, 9}},
    };
    for (const InstrumentCase& c : cases) {
        SCOPED_TRACE(c.name);
        SetUp();
        const auto before = Snapshot();
        dialogs.changeInstruments = ChangeInstrumentsRequest{c.change, 1, 20, Patterns({0, 2})};
        ASSERT_TRUE(ChangeInstruments(ctx, dialogs));
        EXPECT_EQ(module->patterns[0].lines[2].instrument, c.line2);
        EXPECT_EQ(module->patterns[2].lines[2].instrument, c.line2);
        for (auto [p, l] : {std::pair{1, 2}, {0, 0}, {0, 21}}) {
            EXPECT_EQ(module->patterns[p].lines[l], before->patterns[p].lines[l]) << p << ", " << l;
        }
        // Line 9 has no notes: "all to #2" changes its masked instruments
        // without recording the line, so undo leaves them changed.
        if (c.change.mode == kChangeAllToSecond) {
            EXPECT_EQ(module->patterns[0].lines[9].instrument, (std::array<uint8_t, 4>{15, 9, 15, 9}));
            for (int p : {0, 2}) before->patterns[p].lines[9] = module->patterns[p].lines[9];
        }
        ExpectUndoAndRedo(*before, *Snapshot());
    }
}

TEST_F(PatternToolsTest, CopyAndExchangeChannelsSkipEmptyLinesAndUndo) {
    for (uint8_t mode : {kCopyFirstToSecond, kExchangeChannels}) {
        SCOPED_TRACE(mode);
        SetUp();
        Pattern& pattern = module->patterns[1];
        pattern.lines[3].note[2] = 255;  // both channels empty on line 3: skipped
        pattern.lines[4].channelCommand[1] = kChannelCommandVO;
        const auto before = Snapshot();
        const Pattern& old = before->patterns[1];
        dialogs.copyChannels = CopyChannelsRequest{{1, 2, mode}, 0, 255, Patterns({1})};
        ASSERT_TRUE(CopyChannels(ctx, dialogs));
        EXPECT_EQ(pattern.lines[4].channelCommand[2], kChannelCommandVO);
        EXPECT_EQ(pattern.lines[4].instrument[2], old.lines[4].instrument[1]);
        EXPECT_EQ(pattern.lines[4].instrument[1], old.lines[4].instrument[mode == kExchangeChannels ? 2 : 1]);
        EXPECT_EQ(pattern.lines[3], old.lines[3]);
        EXPECT_EQ(module->patterns[0], before->patterns[0]);
        ExpectUndoAndRedo(*before, *Snapshot());
    }
}

// A copy that leaves lines as they are records none of them: the entry alone
// stays, one slot long, and undoing it changes nothing.
TEST_F(PatternToolsTest, CopyChannelsRecordsOnlyTheLinesItChanges) {
    for (const ChannelCopy copy : {ChannelCopy{kCommandChannel, 1, kCopyFirstToSecond},
                                   ChannelCopy{2, kCommandChannel, kExchangeChannels}, ChannelCopy{1, 1, kCopyFirstToSecond}}) {
        SCOPED_TRACE(testing::Message() << int{copy.first} << " to " << int{copy.second});
        SetUp();
        undo.Reset(*module);
        module->patterns[0].lines[5].command = kCommandSP;
        const auto before = Snapshot();
        dialogs.copyChannels = CopyChannelsRequest{copy, 0, 255, Patterns({0, 1, 2})};
        ASSERT_TRUE(CopyChannels(ctx, dialogs));
        EXPECT_TRUE(*module == *before);
        const UndoEntry& entry = undo.Entry(undo.Head() - 1);
        EXPECT_EQ(entry.kind, UndoKind::CopyChannels);
        EXPECT_EQ(entry.records, 0u);
        EXPECT_EQ(undo.StorePos(), 1u);
        ExpectUndoAndRedo(*before, *before);
    }

    // Line 4 changes, line 5 already holds the copy, line 6 differs only in
    // the detune: it is recorded so that redo copies the detune again, while
    // undo leaves the detune as the copy made it.
    SetUp();
    Pattern& pattern = module->patterns[1];
    for (int l : {5, 6}) {
        PatternLine& line = pattern.lines[l];
        line.note[1] = line.note[0];
        line.instrument[1] = line.instrument[0];
        line.volume[1] = line.volume[0];
        line.detune[0] = 3;
        line.detune[1] = l == 5 ? 3 : 0;
    }
    const auto before = Snapshot();
    dialogs.copyChannels = CopyChannelsRequest{{0, 1, kCopyFirstToSecond}, 4, 6, Patterns({1})};
    ASSERT_TRUE(CopyChannels(ctx, dialogs));
    EXPECT_EQ(undo.Entry(undo.Head() - 1).records, 2u);
    EXPECT_EQ(pattern.lines[6].detune[1], 3);
    const auto after = Snapshot();
    before->patterns[1].lines[6].detune[1] = 3;
    ExpectUndoAndRedo(*before, *after);
}

TEST_F(PatternToolsTest, ResizingClearsTheNewLinesAndUndoRestoresTheOldOnes) {
    Pattern& pattern = module->patterns[0];
    view.MoveCursor(0, 0, 63);
    EXPECT_FALSE(ResizePattern(ctx, dialogs));  // cancelled
    EXPECT_EQ(dialogs.shownLength, 64);
    dialogs.newLength = 128;
    ASSERT_TRUE(ResizePattern(ctx, dialogs));
    EXPECT_EQ(pattern.length, 128);
    for (int l : {64, 127}) {
        EXPECT_TRUE(pattern.lines[l].note[0] == 255 && pattern.lines[l].instrument[0] == (l % 4));
    }
    EXPECT_EQ(pattern.lines[128].note[0], 60);  // beyond the new length

    dialogs.newLength = 10;
    ASSERT_TRUE(ResizePattern(ctx, dialogs));
    EXPECT_EQ(view.State().cursorLine, 9);
    undo.Undo(undoView);
    EXPECT_EQ(pattern.length, 128);
    EXPECT_EQ(view.State().cursorLine, 63);
}

// The longest name the dialogs take comes back whole from undo and redo, of
// the settings and of a deletion alike.
TEST_F(PatternToolsTest, TheLongestPatternNameSurvivesUndo) {
    const std::string old(kLongestPatternName, 'o');
    const std::string typed(kLongestPatternName, 't');
    SetList({0, 1});
    module->patterns[0].name = old;
    dialogs.patternSettings = SettingsOf(module->patterns[0]);
    dialogs.patternSettings->name = typed;
    ASSERT_TRUE(EditPatternSettings(ctx, dialogs));
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_EQ(module->patterns[0].name, old);
    ASSERT_TRUE(undo.Redo(undoView));
    EXPECT_EQ(module->patterns[0].name, typed);

    prompts.answers = {true};
    ASSERT_TRUE(DeleteOldPattern(ctx));
    EXPECT_FALSE(module->patterns[0].used);
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_EQ(module->patterns[0].name, typed);
}

TEST_F(PatternToolsTest, OnlyPatternSettingsWorkWhileTheSongPlays) {
    song.Start(0, 0, false);
    dialogs.patternSettings = PatternSettings{"Intro", 32, {1, 1}, {0, 2}, {8, 4}};
    ASSERT_TRUE(EditPatternSettings(ctx, dialogs));
    const Pattern& pattern = module->patterns[0];
    EXPECT_TRUE(pattern.name == "Intro" && pattern.tactInterval[0] == 8 && pattern.length == 64);

    dialogs.newLength = 16;
    dialogs.changeInstruments = ChangeInstrumentsRequest{};
    dialogs.copyChannels = CopyChannelsRequest{};
    dialogs.newPatternSettings = PatternSettings{};
    EXPECT_FALSE(ResizePattern(ctx, dialogs) || ChangeInstruments(ctx, dialogs) || CopyChannels(ctx, dialogs) ||
                 InsertCurrentPattern(ctx) || MakeNewPattern(ctx, dialogs));
    EXPECT_FALSE(dialogs.shownLength || dialogs.shownNewPattern);
    EXPECT_EQ(module->patternListLength, 1);
    EXPECT_TRUE(song.Playing());
}

TEST_F(PatternToolsTest, ModuleSettingsStopTheSongAndOnlyTheRepeatPositionIsUndone) {
    SetList({0, 1, 2});
    song.Start(0, 0, false);
    EXPECT_FALSE(EditModuleSettings(ctx, dialogs));  // cancelled, still stops the song
    EXPECT_FALSE(song.Playing() || undo.CanUndo());

    song.Start(0, 0, false);
    ModuleSettings settings = *dialogs.shownModule;
    settings.title = "Tune";
    settings.chipType = kChipPal;
    settings.initialSpeed = 24;
    settings.repeatPosition = 2;
    dialogs.moduleSettings = settings;
    ASSERT_TRUE(EditModuleSettings(ctx, dialogs));
    EXPECT_FALSE(song.Playing() || audioMutex.HeldByThisThread());
    EXPECT_TRUE(module->title == "Tune" && module->repeatPosition == 2 && song.GetSpeed() == 24);

    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_EQ(module->repeatPosition, 0);
    EXPECT_TRUE(module->title == "Tune" && module->IsPal());
}

}  // namespace
}  // namespace sondrel
