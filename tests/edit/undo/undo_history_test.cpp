#include "edit/undo/undo_history.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "edit/tools/clipped_block.h"
#include "edit/tools/pattern_list.h"
#include "edit/undo/undo_slot.h"

namespace sondrel {
namespace {

class FakeView : public UndoView {
public:
    void RestoreState(const EditorPosition& position) override { restored = position; }
    void SetListPosition(int position) override { listPosition = position; }
    void RedrawLines(int first, int last) override { lines = {first, last}; }
    void RedrawAll() override { ++fullRedraws; }

    std::optional<EditorPosition> restored;
    std::optional<int> listPosition;
    std::optional<std::pair<int, int>> lines;
    int fullRedraws = 0;
};

// Every byte of a line depends on the pattern, line and channel, so a line put
// back in the wrong place shows. Some notes are empty (instrument 0 there).
void FillPattern(Pattern& pattern, int number) {
    for (int l = 0; l < kMaxLines; ++l) {
        PatternLine& line = pattern.lines[l];
        for (int c = 0; c < kChannels; ++c) {
            bool empty = (l + c + number) % 4 == 0;
            line.note[c] = empty ? 255 : static_cast<uint8_t>(45 + (l * 7 + c + number) % 70);
            line.instrument[c] = empty ? 0 : static_cast<uint8_t>((l + c) % 4);
            line.volume[c] = static_cast<uint8_t>((l + number) % 16);
            line.channelCommand[c] = static_cast<uint8_t>((l + c) % 3);
            line.channelParam[c] = static_cast<uint8_t>(l ^ number);
        }
        line.command = static_cast<uint8_t>(l % 3);
        line.commandParam = static_cast<uint8_t>(l + number);
    }
}

const EditorPosition kBefore{3, 2, 7, 5, 1};
const EditorPosition kAfter{0, 9, 0, 9, 2};

class UndoHistoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        module->NewModule({});
        for (int p = 0; p < 4; ++p) module->CreatePattern(p);
        for (int p = 0; p < 3; ++p) FillPattern(module->patterns[p], p);
        module->patterns[0].length = 256;
        module->patterns[2].length = 10;
        module->patterns[2].name = "Verse";
        module->patterns[3].used = 0;  // free, for a new pattern
        module->patternList = {0, 1, 0, 2};
        module->patternListLength = 4;
        module->repeatPosition = 1;
        module->instruments[3].name = "Lead";
        history.Reset(*module);
    }

    std::unique_ptr<Module> Copy() const { return std::make_unique<Module>(*module); }

    std::unique_ptr<Module> module = std::make_unique<Module>();
    bool playing = false;
    UndoHistory history{[this] { return playing; }};
    FakeView view;
};

// One recorded change: what it does through the recording API, how many slots
// it takes, and what the view is shown when it is taken back and done again.
struct KindCase {
    using Recorder = std::function<void(UndoHistory&, Module&)>;
    using Patch = std::function<void(Module&)>;
    KindCase(const char* name, Recorder record, uint32_t slots, std::optional<EditorPosition> undoPosition,
             std::optional<EditorPosition> redoPosition, std::optional<int> undoList = {},
             std::optional<int> redoList = {}, Patch leftByUndo = {})
        : name(name), record(std::move(record)), slots(slots), undoPosition(undoPosition),
          redoPosition(redoPosition), undoList(undoList), redoList(redoList), leftByUndo(std::move(leftByUndo)) {}

    const char* name;
    Recorder record;
    uint32_t slots;
    std::optional<EditorPosition> undoPosition, redoPosition;
    std::optional<int> undoList, redoList;
    // What undo knowingly leaves changed, patched into the expected module.
    Patch leftByUndo;
};

const std::vector<KindCase> kKindCases = {
    {"single line", [](UndoHistory& h, Module& m) {
         h.BeginLine(0, 5, kBefore);
         m.patterns[0].lines[5].note[1] = 60;
         h.EndLines();
     }, 2, EditorPosition{3, 5, 7, 5, 1}, EditorPosition{3, 5, 7, 5, 1}},
    {"line range", [](UndoHistory& h, Module& m) {
         h.BeginLines(0, 2, 4, kBefore);
         for (int l = 2; l < 6; ++l) m.patterns[0].lines[l].volume[2] = 1;
         h.EndLines(kAfter);
     }, 8, kBefore, kAfter},
    {"256 lines resized to 1", [](UndoHistory& h, Module& m) {
         h.BeginWholePattern(0, kBefore);
         m.patterns[0].length = 1;
         m.patterns[0].lines[0].Clear();
         h.EndWholePattern(kAfter);
     }, 257, kBefore, kAfter},
    {"pattern lengthened", [](UndoHistory& h, Module& m) {
         h.BeginWholePattern(2, kBefore);
         m.patterns[2].length = 200;
         for (int l = 10; l < 200; ++l) m.patterns[2].lines[l].Clear();
         h.EndWholePattern(kAfter);
     }, 210, kBefore, kAfter, {}, {}, [](Module& m) {  // only the old length's lines are kept
         for (int l = 10; l < 200; ++l) m.patterns[2].lines[l].Clear();
     }},
    {"block cleared", [](UndoHistory& h, Module& m) {
         SelectionFrame rect{4, 2, 5, 4};
         h.BeginBlock(0, rect, kBefore);
         ClearBlock(m.patterns[0], rect);
         h.Close();
     }, 4, kBefore, kBefore},
    {"block reaching past the pattern", [](UndoHistory& h, Module& m) {
         SelectionFrame rect{10, 60, 10, 10};  // channel 3 and the command column, lines 60..63
         EditorPosition frame{19, 69, 10, 60, 0};
         h.BeginBlock(1, rect, frame);
         ClearBlock(m.patterns[1], rect);
         h.Close();
     }, 10, EditorPosition{19, 69, 10, 60, 0}, EditorPosition{19, 69, 10, 60, 0}},
    {"list entry", [](UndoHistory& h, Module& m) {
         h.BeginListEntry(1);
         m.patternList[1] = 2;
         h.EndListEntry();
     }, 1, {}, {}, 1, 1},
    {"list entry moved up", [](UndoHistory& h, Module& m) {
         h.BeginListMove(2, true);
         std::swap(m.patternList[1], m.patternList[2]);
         h.Close();
     }, 1, {}, {}, 2, 1},
    {"list entry moved down", [](UndoHistory& h, Module& m) {
         h.BeginListMove(1, false);
         std::swap(m.patternList[1], m.patternList[2]);
         h.Close();
     }, 1, {}, {}, 1, 2},
    {"whole list", [](UndoHistory& h, Module& m) {
         h.BeginPatternList(3);
         RemoveListEntry(m, 3);
         InsertListEntry(m, 0, 2);
         m.repeatPosition = 3;
         h.EndPatternList(0);
     }, 16, {}, {}, 3, 0},
    {"change instruments", [](UndoHistory& h, Module& m) {
         InstrumentChange change{kExchangeInstruments, 1, 2, 0b1011};
         h.BeginChangeInstruments(change);
         for (int p : {0, 2}) {
             for (int l = 0; l < 20; ++l) {
                 PatternLine& line = m.patterns[p].lines[l];
                 if (ChangeMatchesLine(line, change)) h.AddRecord(static_cast<uint8_t>(p), l);
                 ChangeLineInstruments(line, change);
             }
         }
         h.EndRecords();
     }, 7, {}, {}},  // 35 lines recorded, five a slot
    {"change instruments on no line", [](UndoHistory& h, Module&) {
         h.BeginChangeInstruments({});
         h.EndRecords();
     }, 1, {}, {}},
    {"exchange channels", [](UndoHistory& h, Module& m) {
         ChannelCopy copy{0, 2, kExchangeChannels};
         h.BeginCopyChannels(copy);
         for (int l = 0; l < 7; ++l) {
             PatternLine& line = m.patterns[1].lines[l];
             line.detune.fill(0);  // the detune is not kept; keep it out of the way
             if (ChannelsEmpty(line, copy)) continue;
             h.AddRecord(1, l);
             CopyLineChannels(line, copy);
         }
         h.EndRecords();
     }, 3, {}, {}, {}, {}, [](Module& m) {
         for (int l = 0; l < 7; ++l) m.patterns[1].lines[l].detune.fill(0);
     }},
    {"copy channel", [](UndoHistory& h, Module& m) {
         ChannelCopy copy{1, 3, kCopyFirstToSecond};
         h.BeginCopyChannels(copy);
         for (int l = 20; l < 30; ++l) {
             PatternLine& line = m.patterns[2].lines[l];
             line.detune[3] = line.detune[1];
             if (ChannelsEmpty(line, copy)) continue;
             h.AddRecord(2, l);
             CopyLineChannels(line, copy);
         }
         h.EndRecords();
     }, 4, {}, {}},  // ten lines, three a slot
    {"pattern settings", [](UndoHistory& h, Module& m) {
         h.BeginPatternSettings(2);
         m.patterns[2].name = "Chorus";
         m.patterns[2].tactEnabled = {1, 1};
         m.patterns[2].tactInterval = {12, 3};
         h.EndPatternSettings();
     }, 3, {}, {}},
    {"instruments", [](UndoHistory& h, Module& m) {
         h.BeginInstruments();
         m.instruments[3].name = "Bass";
         m.instruments[3].volumeAdd[4] = -7;
         m.instruments[15].delay[2] = 99;
         m.ResetInstrument(0);
         h.EndInstruments();
     }, 64, {}, {}},
    {"new pattern", [](UndoHistory& h, Module& m) {
         h.BeginNewPattern(2);
         m.CreatePattern(3);
         InsertListEntry(m, 2, 3);
         m.patterns[3].name = "Bridge";
         m.patterns[3].tactStart = {4, 2};
         m.patterns[3].length = 32;
         h.EndNewPattern();
     }, 2, {}, {}, 1, 2, [](Module& m) {
         m.patterns[3].name = "Bridge";
         m.patterns[3].tactStart = {4, 2};
         m.patterns[3].length = 32;
         m.patternList[4] = 2;  // left behind the list's end when the entry is removed again
     }},
    {"repeat position", [](UndoHistory& h, Module& m) {
         h.BeginRepeatPosition();
         m.repeatPosition = 3;
         h.EndRepeatPosition();
     }, 0, {}, {}},
};

TEST_F(UndoHistoryTest, EveryKindIsTakenBackAndDoneAgain) {
    for (const KindCase& c : kKindCases) {
        SCOPED_TRACE(c.name);
        SetUp();
        view = {};
        auto expected = Copy();
        c.record(history, *module);
        auto changed = Copy();
        if (c.leftByUndo) c.leftByUndo(*expected);
        EXPECT_FALSE(history.IsOpen());
        EXPECT_EQ(history.StorePos(), c.slots);
        EXPECT_EQ(history.Entry(0).slots, std::max(c.slots, 1u));

        ASSERT_TRUE(history.Undo(view));
        EXPECT_TRUE(*module == *expected);
        EXPECT_EQ(view.restored, c.undoPosition);
        EXPECT_EQ(view.listPosition, c.undoList);
        EXPECT_EQ(view.fullRedraws, 1);
        EXPECT_FALSE(history.CanUndo());

        view = {};
        ASSERT_TRUE(history.Redo(view));
        EXPECT_TRUE(*module == *changed);
        EXPECT_EQ(view.restored, c.redoPosition);
        EXPECT_EQ(view.listPosition, c.redoList);
        EXPECT_FALSE(history.CanRedo());
    }
}

// The frame that a redone block clear acts on: cursor columns to cell columns,
// cut to the nine cells and to the pattern's lines.
TEST(ClipBlockTest, CutsTheFrameToThePattern) {
    struct Case {
        SelectionFrame frame;
        int length;
        std::optional<std::array<int, 4>> cells;  // first cell, last cell, top, height
    };
    const Case cases[] = {
        {{0, 0, 13, 64}, 64, std::array{0, 8, 0, 64}},
        {{2, 5, 4, 3}, 64, std::array{1, 3, 5, 3}},    // column 2 is channel 0's command cell
        {{-4, -2, 6, 5}, 64, std::array{0, 0, 0, 3}},  // lines above the first are cut off
        {{10, 60, 10, 10}, 64, std::array{6, 8, 60, 4}},
        {{14, 0, 1, 1}, 64, std::nullopt},             // right of the command column
        {{0, 70, 1, 3}, 64, std::nullopt},             // below the pattern's end
    };
    for (const Case& c : cases) {
        auto block = ClipBlock(c.frame, c.length);
        ASSERT_EQ(block.has_value(), c.cells.has_value());
        if (block) {
            EXPECT_EQ((std::array{block->firstCell, block->lastCell, block->top, block->height}), *c.cells);
        }
    }
}

// Each call records one change of line 0 of pattern 0 to the value k.
void RecordLineChange(UndoHistory& history, Module& module, int k) {
    history.BeginLine(0, 0, {});
    module.patterns[0].lines[0].commandParam = static_cast<uint8_t>(k);
    module.patterns[0].lines[0].channelParam[0] = static_cast<uint8_t>(k >> 8);
    history.EndLines();
}

int LineValue(const Module& module) {
    const PatternLine& line = module.patterns[0].lines[0];
    return line.commandParam | line.channelParam[0] << 8;
}

TEST_F(UndoHistoryTest, FullRingDropsTheOldestAndForgetsTheSavedState) {
    for (int k = 1; k <= 1023; ++k) RecordLineChange(history, *module, k);
    EXPECT_EQ(history.Count(), 1023u);
    EXPECT_TRUE(history.SavedKnown());
    RecordLineChange(history, *module, 1024);
    EXPECT_EQ(history.Tail(), 1u);
    EXPECT_EQ(history.Head(), 0u);
    EXPECT_EQ(history.Count(), 1023u);
    EXPECT_FALSE(history.SavedKnown());

    int undone = 0;
    while (history.Undo(view)) ++undone;
    EXPECT_EQ(undone, 1023);
    EXPECT_EQ(LineValue(*module), 1);  // the first change can no longer be taken back
    history.MarkSaved();
    EXPECT_TRUE(history.IsModified());
    history.Reset(*module);
    EXPECT_FALSE(history.IsModified());
}

// Entries of 200 slots: the 328th runs over the end of the store and
// overwrites the first entry's data, the next ones the second's and third's.
TEST_F(UndoHistoryTest, StoreWrapDropsTheEntriesItOverwrites) {
    auto recordRange = [&](int k) {
        history.BeginLines(0, 0, 100, {});
        for (int l = 0; l < 100; ++l) module->patterns[0].lines[l].commandParam = static_cast<uint8_t>(k + l);
        history.EndLines();
    };
    for (int k = 0; k < 327; ++k) recordRange(k);
    EXPECT_EQ(history.Count(), 327u);
    EXPECT_TRUE(history.SavedKnown());
    for (int k = 327; k < 330; ++k) recordRange(k);
    EXPECT_EQ(history.StorePos(), 464u);
    EXPECT_EQ(history.Tail(), 3u);
    EXPECT_EQ(history.Count(), 327u);
    EXPECT_FALSE(history.SavedKnown());

    auto expectRange = [&](int k) {
        for (int l = 0; l < 100; ++l) ASSERT_EQ(module->patterns[0].lines[l].commandParam, static_cast<uint8_t>(k + l));
    };
    ASSERT_TRUE(history.Undo(view) && history.Undo(view));
    expectRange(327);
    ASSERT_TRUE(history.Undo(view));  // its "before" lines lie at the end of the store
    expectRange(326);
    ASSERT_TRUE(history.Redo(view));  // its "after" lines run round to the start
    expectRange(327);
    while (history.Undo(view)) {
    }
    expectRange(2);
}

TEST_F(UndoHistoryTest, SavedStateFollowsUndoAndRedo) {
    EXPECT_FALSE(history.IsModified());
    EXPECT_FALSE(history.Undo(view));
    EXPECT_FALSE(history.Redo(view));
    RecordLineChange(history, *module, 1);
    RecordLineChange(history, *module, 2);
    EXPECT_TRUE(history.IsModified());
    history.MarkSaved();
    EXPECT_FALSE(history.IsModified());
    history.Undo(view);
    EXPECT_TRUE(history.IsModified());
    history.Redo(view);
    EXPECT_FALSE(history.IsModified());
    history.Undo(view);
    history.Undo(view);
    EXPECT_TRUE(history.IsModified());
    RecordLineChange(history, *module, 3);  // a new change discards what was undone
    EXPECT_FALSE(history.CanRedo());
    EXPECT_TRUE(history.IsModified());
    EXPECT_EQ(history.Count(), 1u);
}

// A repeat-position change keeps nothing in the store, so the next change's
// data, written where it began, does not drop it.
TEST_F(UndoHistoryTest, ARepeatPositionChangeSurvivesTheNextChange) {
    history.BeginRepeatPosition();
    module->repeatPosition = 3;
    history.EndRepeatPosition();
    RecordLineChange(history, *module, 5);
    EXPECT_EQ(history.Count(), 2u);
    EXPECT_TRUE(history.SavedKnown());
    ASSERT_TRUE(history.Undo(view) && history.Undo(view));
    EXPECT_EQ(module->repeatPosition, 1);
    EXPECT_FALSE(history.IsModified());
}

TEST_F(UndoHistoryTest, NothingIsTakenBackWhileTheSongPlays) {
    RecordLineChange(history, *module, 7);
    history.Undo(view);
    RecordLineChange(history, *module, 8);
    history.Undo(view);
    playing = true;
    view = {};
    EXPECT_FALSE(history.Undo(view));
    EXPECT_FALSE(history.Redo(view));
    EXPECT_EQ(LineValue(*module), 0);
    EXPECT_EQ(view.fullRedraws, 0);
    EXPECT_EQ(history.Head(), 0u);
    playing = false;
    EXPECT_TRUE(history.Redo(view));
    EXPECT_EQ(LineValue(*module), 8);
}

// Undoing a deletion puts back the header, length, list and repeat position,
// but reads the lines at the history's current store position: here that is
// data an earlier pass round the store left there, pattern 1's own lines.
TEST_F(UndoHistoryTest, DeletedPatternComesBackWithLinesFromTheCurrentStorePosition) {
    module->patterns[1].length = 256;
    for (int k = 0; k < 128; ++k) {  // 512 slots each: slot s holds pattern 1's line s % 256
        history.BeginWholePattern(1, {});
        history.EndWholePattern({});
    }
    ASSERT_EQ(history.StorePos(), 0u);
    EXPECT_TRUE(history.SavedKnown());  // filled exactly: no entry's data was overwritten
    module->patterns[0].name = "Intro";
    module->patterns[0].length = 40;
    auto before = Copy();

    history.BeginDeletePattern(2);
    int shown = DeletePattern(*module, 2);
    history.Close();
    EXPECT_EQ(shown, 0);  // lowered once for each of the two entries removed
    EXPECT_EQ(history.StorePos(), 50u);
    auto deleted = Copy();

    ASSERT_TRUE(history.Undo(view));
    EXPECT_EQ(view.listPosition, 2);
    for (int l = 0; l < 40; ++l) {
        SCOPED_TRACE(l);
        EXPECT_EQ(module->patterns[0].lines[l], module->patterns[1].lines[(60 + l) % 256]);
    }
    module->patterns[0].lines = before->patterns[0].lines;
    EXPECT_TRUE(*module == *before);

    ASSERT_TRUE(history.Redo(view));
    EXPECT_EQ(view.listPosition, 0);
    module->patterns[0].lines = deleted->patterns[0].lines;
    EXPECT_TRUE(*module == *deleted);
}

}  // namespace
}  // namespace sondrel
