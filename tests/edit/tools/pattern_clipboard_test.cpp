#include "edit/tools/pattern_clipboard.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "edit/edit_test_support.h"
#include "edit/tools/block_operations.h"

namespace sondrel::test {
namespace {

const char* const kNoClipboard = "Clipboard is not available.";
const char* const kWrongKinds = "Can't paste the clipboard because the column types do not match.";

class PatternClipboardTest : public EditTest {
protected:
    void Copy(int x, int y, int w, int h) {
        Select(x, y, w, h);
        ASSERT_TRUE(clipboard.Copy(ctx));
    }
    PatternClipboard clipboard;
};

// A refused paste shows its message, changes nothing and records nothing.
TEST_F(PatternClipboardTest, PasteNeedsAClipboardWithMatchingColumnKinds) {
    Fill(64);
    Select(0, 0, 1, 1);
    EXPECT_FALSE(clipboard.Paste(ctx, true));
    EXPECT_EQ(prompts.messages, std::vector<std::string>{kNoClipboard});

    struct Case {
        const char* name;
        SelectionFrame copied, target;
        bool fits;
    };
    const Case cases[] = {
        {"note cells onto channel-command cells", {0, 0, 1, 3}, {2, 5, 1, 1}, false},
        {"channels 2 and 3 from channel 3 on run into the command cell", {6, 0, 6, 3}, {9, 5, 1, 1}, false},
        {"channels 2 and 3 onto channels 1 and 2", {6, 0, 6, 3}, {4, 5, 1, 1}, true},
        {"the command cell onto a channel-command cell", {12, 0, 1, 2}, {11, 5, 1, 1}, false},
        {"the command cell onto itself", {12, 0, 1, 2}, {12, 5, 1, 1}, true},
        {"below the pattern's end", {0, 0, 1, 3}, {0, 64, 1, 1}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        prompts.messages.clear();
        undo.Reset(*module);
        Copy(c.copied.x, c.copied.y, c.copied.w, c.copied.h);
        Select(c.target.x, c.target.y, c.target.w, c.target.h);
        EXPECT_EQ(clipboard.CanPaste(ctx), c.fits);
        const auto before = Snapshot();
        EXPECT_EQ(clipboard.Paste(ctx, false), c.fits);
        EXPECT_EQ(undo.CanUndo(), c.fits);
        if (c.fits) continue;
        EXPECT_EQ(prompts.messages, std::vector<std::string>{kWrongKinds});
        EXPECT_TRUE(*module == *before);
    }
}

// The clipboard outlives the module it was filled from; a block pasted near
// the end of a 256-line pattern loses the rows that do not fit.
TEST_F(PatternClipboardTest, PasteAtLine250KeepsTheRowsThatFit) {
    Fill(64);
    Copy(0, 0, kGridColumns, 10);
    const auto source = Snapshot();
    module->NewModule({});
    view.SetModule(*module);
    undo.Reset(*module);
    Shown().length = kMaxLines;
    Select(0, 250, 1, 1);
    const auto before = Snapshot();
    ASSERT_TRUE(clipboard.Paste(ctx, false));
    for (int l = 0; l < kMaxLines; ++l) {
        const PatternLine& expected = l < 250 ? before->patterns[0].lines[l] : source->patterns[0].lines[l - 250];
        EXPECT_EQ(Line(l), expected) << l;
    }
    ExpectUndoAndRedo(*before, *Snapshot());
}

// Empty held cells clear what lies beneath only with "Paste: Delete"; full
// ones always overwrite, and empty targets always take the held cell.
TEST_F(PatternClipboardTest, EmptyCellsShowThroughUnlessDeleting) {
    struct Case {
        bool deleteEmpty;
        std::vector<uint8_t> notes;  // channel 0, lines 10..13 afterwards
    };
    const Case cases[] = {{false, {60, 71, 255, 255}}, {true, {60, 255, 255, 255}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.deleteEmpty);
        module->CreatePattern(0);
        Line(0).note[0] = 60;  // held: 60, empty, empty
        Line(10).note[0] = 70;
        Line(11).note[0] = 71;  // lines 12 and 13 empty
        Copy(0, 0, 1, 3);
        Select(0, 10, 1, 1);
        ASSERT_TRUE(clipboard.Paste(ctx, c.deleteEmpty));
        EXPECT_EQ((std::vector<uint8_t>{Line(10).note[0], Line(11).note[0], Line(12).note[0], Line(13).note[0]}),
                  c.notes);
    }

    // An all-empty block over notes with deleting off changes nothing, but is still recorded.
    Copy(0, 20, 3, 4);
    Fill(64);
    Select(0, 0, 1, 1);
    const auto before = Snapshot();
    const uint32_t head = undo.Head();
    ASSERT_TRUE(clipboard.Paste(ctx, false));
    EXPECT_TRUE(*module == *before);
    EXPECT_EQ(undo.Head(), head + 1);
}

TEST_F(PatternClipboardTest, CutCopiesThenClearsAsOneEntry) {
    Fill(64);
    const auto before = Snapshot();
    Select(3, 4, 2, 3);  // channel 1's note cell, lines 4..6
    ASSERT_TRUE(clipboard.Cut(ctx));
    for (int l = 4; l < 7; ++l) {
        EXPECT_EQ(Line(l).note[1], 255);
        EXPECT_EQ(clipboard.Cell(l - 4, 0).bytes[0], before->patterns[0].lines[l].note[1]);
    }
    EXPECT_EQ(clipboard.Rows(), 3);
    EXPECT_EQ(clipboard.Columns(), 1);
    ExpectUndoAndRedo(*before, *Snapshot());

    // While the song plays none of the three does anything: the clipboard keeps what it had.
    song.Start(0, 0, false);
    Select(3, 0, 1, 1);
    EXPECT_FALSE(clipboard.Cut(ctx));
    EXPECT_FALSE(clipboard.Copy(ctx));
    EXPECT_FALSE(clipboard.Paste(ctx, true));
    EXPECT_EQ(clipboard.Rows(), 3);
}

// Effect cells go whole through copy and paste, are cleared like any
// channel command, come back with undo, and the transposition leaves them be.
TEST_F(PatternClipboardTest, EffectCellsTravelWholeAsPVAndVODo) {
    module->CreatePattern(0);
    Line(2).note[0] = 60;
    Line(2).channelCommand = {kEffectArpeggio, kEffectSlideUp, kEffectVibrato, kEffectRetrigger};
    Line(2).channelParam = {0x47, 2, 0x46, 3};
    Line(3).channelCommand = {kEffectVolumeSlide, kEffectNoteCut, kEffectNoteDelay, kEffectGlide};
    Line(3).channelParam = {0x0F, 99, 3, 4};
    Copy(0, 2, kGridLastColumn, 2);  // the four channels, not the command column
    Select(0, 20, 1, 1);
    auto before = Snapshot();
    ASSERT_TRUE(clipboard.Paste(ctx, false));
    EXPECT_EQ(Line(20), Line(2));
    EXPECT_EQ(Line(21), Line(3));
    ExpectUndoAndRedo(*before, *Snapshot());

    Select(0, 20, kGridLastColumn, 2);
    ASSERT_TRUE(TransposeSelection(ctx, kNoteUp));
    EXPECT_EQ(Line(20).note[0], 61);
    EXPECT_EQ(Line(20).channelCommand, Line(2).channelCommand);
    EXPECT_EQ(Line(20).channelParam, Line(2).channelParam);

    before = Snapshot();
    Select(2, 20, 1, 2);  // channel 0's channel-command cells
    ASSERT_TRUE(ClearSelection(ctx));
    EXPECT_EQ(Line(20).channelCommand[0], kChannelCommandNone);
    EXPECT_EQ(Line(21).channelCommand[0], kChannelCommandNone);
    EXPECT_EQ(Line(20).channelParam[0], 0x47);  // only the command byte goes
    EXPECT_EQ(Line(20).channelCommand[1], kEffectSlideUp);
    ExpectUndoAndRedo(*before, *Snapshot());

    // An effect is a full cell: an empty one pasted over it clears it only
    // with "Paste: Delete".
    Copy(5, 40, 1, 1);
    Select(5, 20, 1, 1);
    ASSERT_TRUE(clipboard.Paste(ctx, false));
    EXPECT_EQ(Line(20).channelCommand[1], kEffectSlideUp);
    ASSERT_TRUE(clipboard.Paste(ctx, true));
    EXPECT_EQ(Line(20).channelCommand[1], kChannelCommandNone);
}

}  // namespace
}  // namespace sondrel::test
