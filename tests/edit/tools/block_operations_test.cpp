#include "edit/tools/block_operations.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "edit/tools/clipped_block.h"
#include "edit/edit_test_support.h"
#include "edit/keys/pattern_cell.h"

namespace sondrel::test {
namespace {

using Operation = std::function<bool(EditorContext&)>;

struct NoteCell {
    int line;
    int channel;
    uint8_t note;
    int8_t detune = 0;
    uint8_t volume = 0;
};

class BlockOperationsTest : public EditTest {
protected:
    // A fresh pattern 0, every byte at its default, and an empty history.
    void Restart() {
        module->patterns[0] = Pattern{};
        module->CreatePattern(0);
        undo.Reset(*module);
        prompts.messages.clear();
    }
    void Put(const std::vector<NoteCell>& cells) {
        for (const NoteCell& c : cells) {
            Line(c.line).note[c.channel] = c.note;
            Line(c.line).detune[c.channel] = c.detune;
            Line(c.line).volume[c.channel] = c.volume;
        }
    }
};

// The gradients' messages in their order of precedence, and what they write
// when no message stops them.
TEST_F(BlockOperationsTest, GradientsShowTheWinningMessageOrInterpolate) {
    const Operation volume = VolumeGradient, note = NoteGradient;
    struct Case {
        const char* name;
        Operation run;
        SelectionFrame frame;
        std::vector<NoteCell> cells;
        std::string message;
        std::vector<uint8_t> volumes = {};  // channel 0's lines 0.. afterwards
        std::vector<uint8_t> notes = {};
    };
    const Case cases[] = {
        {"volume 15 to 0 over 5 lines, an empty note keeps its volume", volume, {0, 0, 1, 5},
         {{0, 0, 60, 0, 15}, {1, 0, 61, 0, 9}, {2, 0, 255, 0, 9}, {3, 0, 63, 0, 9}, {4, 0, 64, 0, 0}},
         "", {15, 12, 9, 4, 0}},
        {"3 lines change only the middle", volume, {1, 4, 1, 3},
         {{3, 0, 60, 0, 1}, {4, 0, 246, 0, 2}, {5, 0, 60, 0, 9}, {6, 0, 247, 0, 8}, {7, 0, 60, 0, 1}},
         "", {0, 0, 0, 1, 2, 5, 8, 1}},
        {"2 lines", volume, {0, 0, 1, 2}, {{0, 0, 60}, {1, 0, 60}},
         "The selection frame must be heigher than 2 lines."},
        {"2 lines, no start note: the volume message wins", volume, {0, 0, 1, 2}, {{1, 0, 60}},
         "The start note has no volume."},
        {"two channels", volume, {0, 0, 4, 3}, {{0, 0, 60}, {2, 0, 60}},
         "The selection frame musn't include more than one channel."},
        {"command column", volume, {12, 0, 1, 3}, {}, "The command column has no volumes."},
        {"start note invalid", volume, {0, 0, 1, 3}, {{0, 0, 200}, {2, 0, 60}}, "The start note has no volume."},
        {"end note empty", volume, {0, 0, 1, 3}, {{0, 0, 251}}, "The end note has no volume."},
        {"notes 48 to 60", note, {0, 0, 1, 5}, {{0, 0, 48}, {1, 0, 1}, {2, 0, 255}, {3, 0, 1}, {4, 0, 60}},
         "", {}, {48, 51, 255, 57, 60}},
        {"noise up the table", note, {0, 0, 1, 4}, {{0, 0, 251}, {1, 0, 1}, {2, 0, 1}, {3, 0, 254}},
         "", {}, {251, 252, 253, 254}},
        {"empty ends empty the notes between", note, {0, 0, 1, 4}, {{1, 0, 50}, {2, 0, 246}},
         "", {}, {255, 255, 255, 255}},
        {"tone to noise on 2 lines: the type message wins", note, {0, 0, 1, 2}, {{0, 0, 60}, {1, 0, 250}},
         "Can't interpolate between different tone types."},
        {"two channels of one type", note, {0, 0, 4, 3}, {{0, 0, 60}, {2, 0, 70}},
         "The selection frame musn't include more than one channel."},
        {"null-notes", note, {0, 0, 1, 3}, {{0, 0, 246}, {2, 0, 246}}, "Can't interpolate between null-notes."},
        {"command column has no tones", note, {12, 0, 1, 3}, {}, "The command column has no tones."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Restart();
        Put(c.cells);
        Select(c.frame.x, c.frame.y, c.frame.w, c.frame.h);
        const auto before = Snapshot();
        const bool changed = c.run(ctx);
        if (!c.message.empty()) {
            EXPECT_FALSE(changed);
            EXPECT_EQ(prompts.messages, std::vector<std::string>{c.message});
            EXPECT_TRUE(*module == *before);
            EXPECT_FALSE(undo.CanUndo());
            continue;
        }
        EXPECT_TRUE(changed);
        EXPECT_TRUE(prompts.messages.empty());
        for (size_t l = 0; l < c.volumes.size(); ++l) EXPECT_EQ(Line(static_cast<int>(l)).volume[0], c.volumes[l]);
        for (size_t l = 0; l < c.notes.size(); ++l) EXPECT_EQ(Line(static_cast<int>(l)).note[0], c.notes[l]);
        ExpectUndoAndRedo(*before, *Snapshot());
    }
}

// Transpose and the detune step go over the frame's lines top to bottom and
// channels left to right; an octave step scaled by the first note stays scaled.
TEST_F(BlockOperationsTest, NoteStepsMoveNotesWithinTheirRange) {
    auto transpose = [](TransposeStep step) -> Operation {
        return [step](EditorContext& ctx) { return TransposeSelection(ctx, step); };
    };
    auto detune = [](int delta) -> Operation {
        return [delta](EditorContext& ctx) { return StepSelectionDetune(ctx, delta); };
    };
    struct Case {
        const char* name;
        Operation run;
        std::vector<NoteCell> cells;
        std::vector<NoteCell> expected;
    };
    const Case cases[] = {
        {"+note", transpose(kNoteUp),
         {{0, 0, 155}, {0, 1, 60}, {0, 2, 200}, {0, 3, 252}, {1, 0, 246}, {1, 3, 251}, {2, 2, 250}},
         {{0, 0, 155}, {0, 1, 61}, {0, 2, 200}, {0, 3, 251}, {1, 0, 246}, {1, 3, 251}, {2, 2, 249}}},
        {"-octave", transpose(kOctaveDown), {{0, 0, 5}, {0, 3, 251}, {1, 3, 247}},
         {{0, 0, 0}, {0, 3, 254}, {1, 3, 250}}},
        {"+octave on noise", transpose(kOctaveUp), {{0, 3, 251}}, {{0, 3, 251}}},
        {"+octave, noise first: tone notes move by 4", transpose(kOctaveUp),
         {{0, 3, 254}, {1, 0, 60}, {1, 3, 254}}, {{0, 3, 251}, {1, 0, 64}, {1, 3, 251}}},
        {"+octave, tone first: noise notes move by 12", transpose(kOctaveUp),
         {{0, 0, 60}, {0, 3, 250}, {1, 1, 70}, {1, 2, 254}}, {{0, 0, 72}, {0, 3, 247}, {1, 1, 82}, {1, 2, 251}}},
        {"detune +", detune(1),
         {{0, 0, 60, 99}, {0, 1, 246, -5}, {0, 2, 251, 3}, {0, 3, 255, 3}, {1, 0, 200, 3}},
         {{0, 0, 60, 99}, {0, 1, 246, -4}, {0, 2, 251, 3}, {0, 3, 255, 3}, {1, 0, 200, 3}}},
        {"detune -", detune(-1), {{0, 0, 60, -99}, {1, 3, 0, 0}}, {{0, 0, 60, -99}, {1, 3, 0, -1}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Restart();
        Put(c.cells);
        Line(1).command = kCommandSP;
        Select(0, 0, kGridColumns, 3);  // the command column is passed over
        const auto before = Snapshot();
        EXPECT_TRUE(c.run(ctx));
        for (const NoteCell& e : c.expected) {
            EXPECT_EQ(Line(e.line).note[e.channel], e.note) << "line " << e.line << " channel " << e.channel;
            EXPECT_EQ(Line(e.line).detune[e.channel], e.detune) << "line " << e.line << " channel " << e.channel;
        }
        EXPECT_EQ(Line(1).command, kCommandSP);
        ExpectUndoAndRedo(*before, *Snapshot());
    }
}

// Double and Half take the frame's columns as cell columns directly. Each
// case gives, per line of an 8-line pattern, which old line the framed cells
// now hold (-1: emptied); the cells outside the frame stay.
TEST_F(BlockOperationsTest, DoubleAndHalfMoveLinesUpToThePatternEnd) {
    const Operation dbl = DoubleSelectionLines, half = HalveSelectionLines;
    struct Case {
        const char* name;
        Operation run;
        SelectionFrame frame;
        std::vector<int> emptyLines;  // emptied in the framed columns before
        std::vector<int> sources;
        SelectionFrame after;
    };
    const Case cases[] = {
        {"double in the middle", dbl, {0, 1, 2, 2}, {}, {0, 1, -1, 2, -1, 3, 4, 5}, {0, 1, 2, 4}},
        {"double reaching the end", dbl, {7, 5, 3, 3}, {}, {0, 1, 2, 3, 4, 5, -1, 6}, {7, 5, 3, 3}},
        {"half reaching the end", half, {0, 4, 2, 4}, {4}, {0, 1, 2, 3, 5, 6, -1, -1}, {0, 4, 2, 2}},
        {"half of 5 lines halves 4", half, {0, 0, 1, 5}, {2}, {0, 3, 4, 5, 6, 7, -1, -1}, {0, 0, 1, 3}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Fill(8);
        const int lastColumn = std::min(c.frame.x + c.frame.w - 1, kCellColumns - 1);
        for (int l : c.emptyLines) {
            for (int col = c.frame.x; col <= lastColumn; ++col) ClearCell(Line(l), col);
        }
        undo.Reset(*module);
        Select(c.frame.x, c.frame.y, c.frame.w, c.frame.h);
        const auto before = Snapshot();
        auto expected = Snapshot();
        for (int l = 0; l < 8; ++l) {
            for (int col = c.frame.x; col <= lastColumn; ++col) {
                const int s = c.sources[l];
                PatternCell cell = s < 0 ? EmptyCellOf(col) : ReadCell(before->patterns[0].lines[s], col);
                WriteCell(expected->patterns[0].lines[l], col, cell);
            }
        }
        EXPECT_TRUE(c.run(ctx));
        EXPECT_TRUE(Shown() == expected->patterns[0]);
        EXPECT_EQ(view.GetSelection(), c.after);
        ExpectUndoAndRedo(*before, *expected);
    }
}

TEST_F(BlockOperationsTest, ClearEmptiesTheFramedCellsOnly) {
    Fill(64);
    Select(2, 62, 4, 10);  // channel 0's command cell to channel 1's command cell, cut at the end
    const auto before = Snapshot();
    EXPECT_TRUE(ClearSelection(ctx));
    auto expected = Snapshot();
    for (int l = 62; l < 64; ++l) {
        const PatternLine& was = before->patterns[0].lines[l];
        PatternLine line = was;
        line.channelCommand[0] = line.channelCommand[1] = 0;
        line.note[1] = 255;
        EXPECT_EQ(Line(l), line) << l;
    }
    EXPECT_EQ(Line(61), before->patterns[0].lines[61]);
    ExpectUndoAndRedo(*before, *expected);

    Select(0, 64, 13, 2);  // below the end: nothing, silently
    EXPECT_FALSE(ClearSelection(ctx));
    EXPECT_TRUE(prompts.messages.empty());
}

// Every operation is one undo entry, and none works while the song plays.
TEST_F(BlockOperationsTest, EveryOperationIsOneEntryAndLockedDuringPlay) {
    const std::pair<const char*, Operation> operations[] = {
        {"clear", ClearSelection},
        {"transpose", [](EditorContext& c) { return TransposeSelection(c, kOctaveUp); }},
        {"detune", [](EditorContext& c) { return StepSelectionDetune(c, -1); }},
        {"volume gradient", VolumeGradient},
        {"note gradient", NoteGradient},
        {"double", DoubleSelectionLines},
        {"half", HalveSelectionLines},
    };
    for (const auto& [name, run] : operations) {
        SCOPED_TRACE(name);
        Fill(64);
        Select(3, 10, 1, 6);
        const uint32_t head = undo.Head();
        song.Start(0, 0, false);
        EXPECT_FALSE(run(ctx));
        song.Stop();
        EXPECT_EQ(undo.Head(), head);
        EXPECT_TRUE(run(ctx));
        EXPECT_EQ(undo.Head(), head + 1);
    }
}

}  // namespace
}  // namespace sondrel::test
