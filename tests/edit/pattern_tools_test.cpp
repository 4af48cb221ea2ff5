#include "edit/pattern_tools.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "edit/tool_test_support.h"

namespace sondrel {
namespace {

// Line l, channel c holds note 60 with instrument (l + c) % 4; every third
// line's channel 1 and all of line 9 are empty, with instrument 15.
void FillNotes(Module& module, std::initializer_list<int> patterns) {
    for (int p : patterns) {
        module.patterns[p].used = 1;
        for (int l = 0; l < kMaxLines; ++l) {
            PatternLine& line = module.patterns[p].lines[l];
            for (int c = 0; c < kChannels; ++c) {
                bool empty = l == 9 || (c == 1 && l % 3 == 0);
                line.note[c] = empty ? 255 : 60;
                line.instrument[c] = static_cast<uint8_t>(empty ? 15 : (l + c) % 4);
                line.volume[c] = static_cast<uint8_t>(c + 1);
            }
        }
    }
}

std::bitset<kPatterns> Patterns(std::initializer_list<int> numbers) {
    std::bitset<kPatterns> bits;
    for (int n : numbers) bits.set(n);
    return bits;
}

class PatternToolsTest : public test::ToolsTest {
protected:
    void SetUp() override { FillNotes(*module, {0, 1, 2}); }
};

struct InstrumentCase {
    const char* name;
    InstrumentChange change;
    // Instruments of pattern 0, line 2, channels 0..3 afterwards ((l + c) % 4 was 2, 3, 0, 1).
    std::array<uint8_t, 4> line2;
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
        EXPECT_EQ(module->patterns[1].lines[2].instrument, before->patterns[1].lines[2].instrument);
        EXPECT_EQ(module->patterns[0].lines[21], before->patterns[0].lines[21]);
        EXPECT_EQ(module->patterns[0].lines[0], before->patterns[0].lines[0]);
        // Line 9 has no notes: "all to #2" changes its masked instruments without
        // recording the line, so undo leaves them changed.
        if (c.change.mode == kChangeAllToSecond) {
            before->patterns[0].lines[9] = module->patterns[0].lines[9];
            before->patterns[2].lines[9] = module->patterns[2].lines[9];
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
        pattern.lines[4].channelParam[1] = 7;
        const auto before = Snapshot();
        dialogs.copyChannels = CopyChannelsRequest{{1, 2, mode}, 0, 255, Patterns({1})};
        ASSERT_TRUE(CopyChannels(ctx, dialogs));

        const Pattern& old = before->patterns[1];
        EXPECT_EQ(pattern.lines[4].channelCommand[2], kChannelCommandVO);
        EXPECT_EQ(pattern.lines[4].instrument[2], old.lines[4].instrument[1]);
        EXPECT_EQ(pattern.lines[4].instrument[1], mode == kExchangeChannels ? old.lines[4].instrument[2]
                                                                            : old.lines[4].instrument[1]);
        EXPECT_EQ(pattern.lines[3], old.lines[3]);
        EXPECT_EQ(module->patterns[0], before->patterns[0]);
        ExpectUndoAndRedo(*before, *Snapshot());
    }
}

TEST_F(PatternToolsTest, ResizingClearsTheNewLinesAndUndoRestoresTheOldOnes) {
    Pattern& pattern = module->patterns[0];
    pattern.length = 200;
    pattern.lines[150].command = kCommandSP;
    pattern.length = 64;
    view.MoveCursor(0, 0, 63);
    const auto before = Snapshot();

    EXPECT_FALSE(ResizePattern(ctx, dialogs));  // cancelled
    EXPECT_EQ(dialogs.shownLength, 64);
    dialogs.newLength = 128;
    ASSERT_TRUE(ResizePattern(ctx, dialogs));
    EXPECT_EQ(pattern.length, 128);
    for (int l : {64, 100, 127}) {
        EXPECT_EQ(pattern.lines[l].note[0], 255);
        EXPECT_EQ(pattern.lines[l].channelCommand[0], kChannelCommandNone);
        EXPECT_EQ(pattern.lines[l].instrument[0], before->patterns[0].lines[l].instrument[0]);
    }
    EXPECT_EQ(pattern.lines[150].command, kCommandSP);  // beyond the new length
    EXPECT_EQ(pattern.lines[63], before->patterns[0].lines[63]);

    dialogs.newLength = 10;
    ASSERT_TRUE(ResizePattern(ctx, dialogs));
    EXPECT_EQ(view.State().cursorLine, 9);
    undo.Undo(undoView);
    EXPECT_EQ(pattern.length, 128);
    EXPECT_EQ(view.State().cursorLine, 63);
    undo.Undo(undoView);
    EXPECT_EQ(pattern.length, 64);
}

TEST_F(PatternToolsTest, PatternSettingsWorkWhilePlayingAndKeepTheLength) {
    song.Start(0, 0, false);
    dialogs.patternSettings = PatternSettings{"Intro", 32, {1, 1}, {0, 2}, {8, 4}};
    ASSERT_TRUE(EditPatternSettings(ctx, dialogs));
    const Pattern& pattern = module->patterns[0];
    EXPECT_EQ(pattern.name, "Intro");
    EXPECT_EQ(pattern.tactInterval[0], 8);
    EXPECT_EQ(pattern.length, 64);
    EXPECT_TRUE(song.Playing());

    // The other pattern tools wait for the song to stop.
    dialogs.newLength = 16;
    dialogs.changeInstruments = ChangeInstrumentsRequest{};
    dialogs.copyChannels = CopyChannelsRequest{};
    EXPECT_FALSE(ResizePattern(ctx, dialogs));
    EXPECT_FALSE(ChangeInstruments(ctx, dialogs));
    EXPECT_FALSE(CopyChannels(ctx, dialogs));
    EXPECT_FALSE(dialogs.shownLength);
    EXPECT_EQ(pattern.length, 64);
}

TEST_F(PatternToolsTest, ModuleSettingsStopTheSongAndOnlyTheRepeatPositionIsUndone) {
    SetList({0, 1, 2});
    song.Start(0, 0, false);
    EXPECT_FALSE(EditModuleSettings(ctx, dialogs));  // cancelled: still stops the song
    EXPECT_FALSE(song.Playing());
    EXPECT_FALSE(undo.CanUndo());

    song.Start(0, 0, false);
    ModuleSettings settings = *dialogs.shownModule;
    settings.title = "Tune";
    settings.chipType = kChipPal;
    settings.initialSpeed = 24;
    settings.repeatPosition = 2;
    dialogs.moduleSettings = settings;
    ASSERT_TRUE(EditModuleSettings(ctx, dialogs));
    EXPECT_FALSE(song.Playing());
    EXPECT_EQ(module->title, "Tune");
    EXPECT_EQ(module->repeatPosition, 2);
    EXPECT_EQ(song.GetSpeed(), 24);
    EXPECT_FALSE(audioMutex.HeldByThisThread());

    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_EQ(module->repeatPosition, 0);
    EXPECT_EQ(module->title, "Tune");
    EXPECT_TRUE(module->IsPal());
}

}  // namespace
}  // namespace sondrel
