// Random runs of editing commands with undo and redo mixed in: taking every
// change back must give the module it started as, doing them all again the
// module it ended as, both as a whole and as the bytes of its saved file.
//
// Left out because undo knowingly does not restore them: deleting a pattern
// (its lines come back from the history's current store position), making a
// new pattern (the freed pattern keeps its settings), lengthening a pattern
// (only the old length's lines are kept), changing instruments where only
// cells with an empty note change (their lines are not recorded) and the
// detune under a channel copy (not recorded). Channel copies therefore run only in the mix that never
// sets a detune. The byte table below shows which of these still save the
// same file.

#include <gtest/gtest.h>

#include <array>
#include <bitset>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "edit/tools/block_operations.h"
#include "edit/tools/list_tools.h"
#include "edit/keys/note_keys.h"
#include "edit/tools/pattern_clipboard.h"
#include "edit/keys/pattern_editing.h"
#include "edit/tools/pattern_tools.h"
#include "edit/tool_test_support.h"

namespace sondrel {
namespace {

// Keys the runs press: notes on tone and noise channels, value steps, command
// keys, Return and Backspace, cursor movement and the octave keys.
constexpr std::array<uint16_t, 28> kKeys = {
    kScanZ, kScanS, kScanX, kScanC, kScanV, kScanB, kScanN, kScanM, kScanComma, kScanQ,
    kScan2, kScanW, kScanE, kScanI, kScanD, kScanY, kScanLeftBracket, kScanReturn, kScanBackspace, kScanSpace,
    kScanUp, kScanDown, kScanLeft, kScanRight, kScanPageDown, kScanHome, kScanF1, kScanF8,
};
constexpr std::array<TransposeStep, 4> kTransposeSteps = {kOctaveDown, kNoteDown, kNoteUp, kOctaveUp};
constexpr int kUsedPatterns = 4;

// The seed of the runs: SONDREL_EDIT_SEED when it is set, so that a failing
// seed can be replayed, otherwise a fixed one.
uint32_t Seed() {
    const char* text = std::getenv("SONDREL_EDIT_SEED");
    return text ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : 20240611u;
}

class RandomEditsTest : public test::ToolsTest {
protected:
    // Four used patterns of different lengths and contents, played in a list of five.
    void Start(bool detunes) {
        for (int p = 0; p < kUsedPatterns; ++p) {
            FillPattern(module->patterns[p], 64 - 8 * p, p);
            if (!detunes)
                for (PatternLine& line : module->patterns[p].lines) line.detune.fill(0);
        }
        SetList({0, 1, 2, 3, 1});
        clipboard = {};  // a block held from an earlier run may carry detunes
        notes.Init(module->Settings());
    }

    int Random(int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng); }
    bool Chance(int percent) { return Random(0, 99) < percent; }
    int Length() { return Shown().length; }
    void RandomFrame() {
        int x = Random(0, kGridColumns - 1);
        int y = Random(0, Length() - 1);
        Select(x, y, Random(1, kGridColumns - x), Random(1, std::min(16, Length() - y)));
    }
    std::bitset<kPatterns> RandomPatterns() {
        std::bitset<kPatterns> chosen;
        for (int p = 0; p < kUsedPatterns; ++p) chosen[p] = Chance(50);
        return chosen;
    }

    // Whether the change would touch a line only through cells with an empty
    // note: such a line is changed without being recorded.
    bool ChangesUnrecordedLines(const ChangeInstrumentsRequest& request) const {
        for (int p = 0; p < kUsedPatterns; ++p) {
            for (int l = request.startLine; request.patterns[p] && l <= request.endLine; ++l) {
                PatternLine line = module->patterns[p].lines[l];
                if (ChangeMatchesLine(line, request.change)) continue;
                ChangeLineInstruments(line, request.change);
                if (!(line == module->patterns[p].lines[l])) return true;
            }
        }
        return false;
    }

    // One command, chosen at random, as the user would give it; it may change
    // nothing or be refused.
    void RandomCommand(bool detunes) {
        switch (Random(0, 9)) {
        case 0:
        case 1:
        case 2:
            if (Chance(30)) RandomFrame();
            HandlePatternKey(ctx, {kKeys[Random(0, kKeys.size() - 1)], 0, static_cast<uint16_t>(Chance(25)), false});
            break;
        case 3: {
            RandomFrame();
            const std::array<std::function<bool()>, 9> blocks = {
                [&] { return ClearSelection(ctx); },
                [&] { return TransposeSelection(ctx, kTransposeSteps[Random(0, 3)]); },
                [&] { return detunes && StepSelectionDetune(ctx, Chance(50) ? 1 : -1); },
                [&] { return VolumeGradient(ctx); },
                [&] { return NoteGradient(ctx); },
                [&] { return DoubleSelectionLines(ctx); },
                [&] { return HalveSelectionLines(ctx); },
                [&] { return clipboard.Copy(ctx); },
                [&] { return clipboard.Cut(ctx); },
            };
            blocks[Random(0, blocks.size() - 1)]();
            break;
        }
        case 4:
            RandomFrame();
            clipboard.Paste(ctx, Chance(50));
            break;
        case 5: {
            const std::array<std::function<bool()>, 6> lists = {
                [&] { return InsertCurrentPattern(ctx); },
                [&] { return RemoveCurrentEntry(ctx); },
                [&] { return StepUsedPattern(ctx, Chance(50) ? ListStep::kNext : ListStep::kPrevious); },
                [&] { return MoveListEntry(ctx, Chance(50) ? ListMove::kUp : ListMove::kDown); },
                [&] { return ShowListPosition(view, Random(0, module->patternListLength - 1)), false; },
                [&] { return ShowListPosition(view, Random(0, module->patternListLength - 1)), false; },
            };
            lists[Random(0, lists.size() - 1)]();
            break;
        }
        case 6: {
            PatternSettings settings{std::string(Random(0, 12), static_cast<char>('A' + Random(0, 25)))};
            settings.tactEnabled = {static_cast<uint8_t>(Random(0, 1)), static_cast<uint8_t>(Random(0, 1))};
            settings.tactStart = {static_cast<uint8_t>(Random(0, 15)), static_cast<uint8_t>(Random(0, 7))};
            settings.tactInterval = {static_cast<uint8_t>(Random(1, 32)), static_cast<uint8_t>(Random(1, 16))};
            dialogs.patternSettings = settings;
            EditPatternSettings(ctx, dialogs);
            break;
        }
        case 7:
            dialogs.newLength = Random(std::max(8, Length() - 4), Length());  // never longer
            ResizePattern(ctx, dialogs);
            break;
        case 8: {
            int first = Random(0, 63);
            if (detunes || Chance(50)) {
                InstrumentChange change{static_cast<uint8_t>(Random(0, 2)), static_cast<uint8_t>(Random(0, 15)),
                                        static_cast<uint8_t>(Random(0, 15)), static_cast<uint8_t>(Random(0, 15))};
                ChangeInstrumentsRequest request{change, first, first + Random(0, 20), RandomPatterns()};
                if (ChangesUnrecordedLines(request)) break;
                dialogs.changeInstruments = request;
                ChangeInstruments(ctx, dialogs);
            } else {
                ChannelCopy copy{static_cast<uint8_t>(Random(0, 4)), static_cast<uint8_t>(Random(0, 4)),
                                 static_cast<uint8_t>(Random(0, 1))};
                dialogs.copyChannels = CopyChannelsRequest{copy, first, first + Random(0, 20), RandomPatterns()};
                CopyChannels(ctx, dialogs);
            }
            break;
        }
        default: {
            ModuleSettings settings = SettingsOf(*module);  // only the repeat position is undone
            settings.repeatPosition = static_cast<uint8_t>(Random(0, module->patternListLength - 1));
            dialogs.moduleSettings = settings;
            EditModuleSettings(ctx, dialogs);
            break;
        }
        }
    }

    // Runs commands with undo and redo mixed in until `entries` changes are
    // in force, then checks that undoing all gives back the start and redoing
    // all the end, in memory and in the saved file.
    void Run(uint32_t seed, bool detunes, int steps) {
        SCOPED_TRACE(testing::Message() << "seed " << seed << (detunes ? " with detunes" : " with channel copies"));
        rng.seed(seed);
        Start(detunes);
        const auto start = Snapshot();
        const auto startBytes = SavedBytes(*start);
        for (int step = 0; step < steps; ++step) {
            int roll = Random(0, 99);
            if (roll < 20) undo.Undo(undoView);
            else if (roll < 30) undo.Redo(undoView);
            else RandomCommand(detunes);
            ASSERT_FALSE(undo.IsOpen());
        }
        // Nothing was dropped, so everything can still be taken back.
        ASSERT_TRUE(undo.SavedKnown());
        ASSERT_LT(undo.Count(), UndoHistory::kEntries - 1);
        while (undo.Redo(undoView)) {
        }
        const auto end = Snapshot();
        const auto endBytes = SavedBytes(*end);

        while (undo.Undo(undoView)) {
        }
        EXPECT_TRUE(*module == *start) << "undo all";
        EXPECT_EQ(SavedBytes(*module), startBytes) << "undo all";
        EXPECT_FALSE(undo.IsModified());
        while (undo.Redo(undoView)) {
        }
        EXPECT_TRUE(*module == *end) << "redo all";
        EXPECT_EQ(SavedBytes(*module), endBytes) << "redo all";
        EXPECT_TRUE(undo.IsModified());
    }

    std::mt19937 rng;
    PatternClipboard clipboard;
};

TEST_F(RandomEditsTest, UndoingEverythingGivesBackTheStartAndRedoingItTheEnd) {
    const uint32_t seed = Seed();
    for (bool detunes : {true, false}) {
        Run(seed, detunes, 2000);
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(undo.Count(), 100u);  // the run really recorded changes
}

// More changes than the history holds: the oldest are dropped, the module
// counts as modified even when saved, and what remains still undoes and
// redoes whole.
TEST_F(RandomEditsTest, OverflowingTheHistoryKeepsTheModuleModified) {
    const uint32_t seed = Seed();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    rng.seed(seed);
    Start(true);
    while (undo.SavedKnown()) RandomCommand(true);
    const auto end = Snapshot();
    while (undo.Undo(undoView)) {
    }
    undo.MarkSaved();
    EXPECT_TRUE(undo.IsModified());
    while (undo.Redo(undoView)) {
    }
    EXPECT_TRUE(*module == *end);
    EXPECT_TRUE(undo.IsModified());
}

// Each block operation and tool, done and undone, saves the same file byte
// for byte. Lengthening a pattern and making a new one are here too: what
// they leave behind (lines past the end, the freed pattern's settings) is
// nothing the file holds.
TEST_F(RandomEditsTest, UndoSavesTheSameFileForEveryOperation) {
    auto key = [&](uint16_t scanCode) { return HandlePatternKey(ctx, {scanCode, 0, 0, false}); };
    struct Case {
        const char* name;
        SelectionFrame frame;
        std::function<bool()> run;
    };
    const SelectionFrame block{0, 4, 13, 12}, channel{3, 4, 3, 12}, cell{6, 9, 1, 1};
    const std::vector<Case> cases = {
        {"clear", block, [&] { return ClearSelection(ctx); }},
        {"transpose", block, [&] { return TransposeSelection(ctx, kOctaveUp); }},
        {"detune", block, [&] { return StepSelectionDetune(ctx, -1); }},
        {"volume gradient", channel, [&] { return VolumeGradient(ctx); }},
        {"note gradient", channel, [&] { return NoteGradient(ctx); }},
        {"double", block, [&] { return DoubleSelectionLines(ctx); }},
        {"halve", block, [&] { return HalveSelectionLines(ctx); }},
        {"cut", block, [&] { return clipboard.Cut(ctx); }},
        {"paste", cell, [&] {
             Select(0, 30, 5, 5);
             clipboard.Copy(ctx);
             Select(3, 9, 1, 1);
             return clipboard.Paste(ctx, true);
         }},
        {"note", cell, [&] { return key(kScanC); }},
        {"volume step", block, [&] { return key(kScanV); }},
        {"insert line", block, [&] { return key(kScanReturn); }},
        {"delete line", block, [&] { return key(kScanBackspace); }},
        {"insert list entry", cell, [&] { return InsertCurrentPattern(ctx); }},
        {"remove list entry", cell, [&] { return RemoveCurrentEntry(ctx); }},
        {"next used pattern", cell, [&] { return StepUsedPattern(ctx, ListStep::kNext); }},
        {"move list entry", cell, [&] { return MoveListEntry(ctx, ListMove::kDown); }},
        {"pattern settings", cell, [&] {
             dialogs.patternSettings = PatternSettings{"Verse", 64, {1, 1}, {2, 3}, {12, 6}};
             return EditPatternSettings(ctx, dialogs);
         }},
        {"shorten", cell, [&] { return dialogs.newLength = 20, ResizePattern(ctx, dialogs); }},
        {"lengthen", cell, [&] { return dialogs.newLength = 200, ResizePattern(ctx, dialogs); }},
        {"new pattern", cell, [&] {
             dialogs.newPatternSettings = PatternSettings{"Bridge", 32, {1, 0}, {4, 0}, {8, 8}};
             return MakeNewPattern(ctx, dialogs);
         }},
        {"change instruments", cell, [&] {
             dialogs.changeInstruments = ChangeInstrumentsRequest{{kExchangeInstruments, 1, 2, 0x0F}, 0, 255, std::bitset<kPatterns>{0b1111}};
             return ChangeInstruments(ctx, dialogs);
         }},
        {"exchange channels", cell, [&] {
             dialogs.copyChannels = CopyChannelsRequest{{0, 3, kExchangeChannels}, 10, 40, std::bitset<kPatterns>{0b0010}};
             return CopyChannels(ctx, dialogs);
         }},
        {"repeat position", cell, [&] {
             ModuleSettings settings = SettingsOf(*module);
             settings.repeatPosition = 3;
             dialogs.moduleSettings = settings;
             return EditModuleSettings(ctx, dialogs);
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Start(false);  // the detune is not kept by channel copies
        Select(c.frame.x, c.frame.y, c.frame.w, c.frame.h);
        const auto before = SavedBytes(*module);
        ASSERT_TRUE(c.run());
        ASSERT_NE(SavedBytes(*module), before) << "the operation changed nothing";
        ASSERT_TRUE(undo.Undo(undoView));
        EXPECT_EQ(SavedBytes(*module), before);
    }
}

}  // namespace
}  // namespace sondrel
