#include "edit/tools/list_tools.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "edit/tool_test_support.h"

namespace sondrel {
namespace {

class ListToolsTest : public test::ToolsTest {};

std::vector<uint8_t> Filled(int entries) { return std::vector<uint8_t>(entries, 1); }
bool Up(EditorContext& c) { return MoveListEntry(c, ListMove::kUp); }
bool Down(EditorContext& c) { return MoveListEntry(c, ListMove::kDown); }
bool Next(EditorContext& c) { return StepUsedPattern(c, ListStep::kNext); }
bool Previous(EditorContext& c) { return StepUsedPattern(c, ListStep::kPrevious); }

// A list command at a list position, with the repeat position on the last
// entry and every question answered yes: the list, position and repeat
// position afterwards, or the message shown instead.
struct ListCase {
    const char* name;
    std::vector<uint8_t> list;
    int position;
    std::function<bool(EditorContext&)> command;
    std::vector<uint8_t> after;  // empty: the list stays as it was
    int positionAfter;
    int repeatAfter;
    std::string message = "";
};

const std::vector<ListCase> kListCases = {
    {"insert into one entry", {4}, 0, InsertCurrentPattern, {4, 4}, 1, 0},
    {"insert at the end", {0, 1, 2}, 2, InsertCurrentPattern, {0, 1, 2, 2}, 3, 2},
    {"insert into 255 entries", Filled(255), 254, InsertCurrentPattern, Filled(256), 255, 254},
    {"insert into 256 entries", Filled(256), 100, InsertCurrentPattern, {}, 100, 255,
     "The maximum song length has already been reached."},
    {"remove the first", {0, 1, 2}, 0, RemoveCurrentEntry, {1, 2}, 0, 1},
    {"remove the last, at the repeat position", {0, 1, 2}, 2, RemoveCurrentEntry, {0, 1}, 1, 1},
    {"remove from 256 entries", Filled(256), 255, RemoveCurrentEntry, Filled(255), 254, 254},
    {"remove the only entry", {3}, 0, RemoveCurrentEntry, {}, 0, 0,
     "Can't remove the last pattern from the pattern list."},
    {"move up", {0, 1, 2}, 1, Up, {1, 0, 2}, 0, 2},
    {"move up at 0", {0, 1, 2}, 0, Up, {}, 0, 2},
    {"move down", {0, 1, 2}, 1, Down, {0, 2, 1}, 2, 2},
    {"move down at the end", {0, 1, 2}, 2, Down, {}, 2, 2},
    // The used patterns are 0, 1, 2 and 7.
    {"next used wraps round", {7, 1, 2}, 0, Next, {0, 1, 2}, 0, 2},
    {"previous used skips unused", {7, 1, 2}, 0, Previous, {2, 1, 2}, 0, 2},
    {"delete a pattern at 0 and 5 from 5", {2, 0, 1, 0, 1, 2, 0}, 5, DeleteOldPattern, {0, 1, 0, 1, 0}, 3, 4},
    {"delete a pattern at 0 and 1 from 1", {2, 2, 0}, 1, DeleteOldPattern, {0}, 0, 0},
    {"delete the pattern filling the list", {1, 1}, 1, DeleteOldPattern, {}, 1, 1,
     "This pattern can't be deleted, because it's the only one left in the pattern list"},
};

TEST_F(ListToolsTest, CommandsChangeTheListAndUndoPutsItBack) {
    for (const ListCase& c : kListCases) {
        SCOPED_TRACE(c.name);
        module->NewModule({});
        SetList(c.list);
        module->repeatPosition = static_cast<uint8_t>(c.list.size() - 1);
        view.SetListPosition(static_cast<uint8_t>(c.position));
        prompts.messages.clear();
        prompts.answers = {true};
        const auto before = Snapshot();

        bool changed = c.command(ctx);
        EXPECT_EQ(changed, !c.after.empty());
        EXPECT_EQ(List(), c.after.empty() ? c.list : c.after);
        EXPECT_EQ(view.State().listPosition, c.positionAfter);
        EXPECT_EQ(view.State().currentPattern, module->patternList[c.positionAfter]);
        EXPECT_EQ(module->repeatPosition, c.repeatAfter);
        EXPECT_EQ(prompts.messages, c.message.empty() ? std::vector<std::string>{} : std::vector{c.message});
        EXPECT_EQ(undo.CanUndo(), changed);
        if (changed) {
            undo.Undo(undoView);
            // Taking back a deletion brings back the pattern but not its lines.
            Pattern& current = before->patterns[c.list[c.position]];
            current.lines = module->patterns[c.list[c.position]].lines;
            EXPECT_TRUE(*before == *module);
            EXPECT_EQ(view.State().listPosition, c.position);
        }
    }
}

TEST_F(ListToolsTest, MakeNewTakesTheLowestFreePatternAfterTheCurrentEntry) {
    SetList({0, 1, 3});
    module->patterns[1].name = "Chorus";
    module->patterns[1].length = 48;
    view.SetListPosition(1);
    EXPECT_FALSE(MakeNewPattern(ctx, dialogs));  // cancelled
    EXPECT_EQ(dialogs.shownNewPattern->name, "Chorus");
    EXPECT_EQ(dialogs.shownNewPattern->length, 48);
    EXPECT_FALSE(undo.CanUndo());

    dialogs.newPatternSettings = PatternSettings{"Bridge", 100, {0, 1}, {0, 4}, {16, 6}};
    module->patterns[2].lines[80].note[0] = 60;  // left over from an earlier use
    const auto before = Snapshot();
    ASSERT_TRUE(MakeNewPattern(ctx, dialogs));
    EXPECT_EQ(List(), (std::vector<uint8_t>{0, 1, 2, 3}));
    EXPECT_EQ(view.State().listPosition, 2);
    const Pattern& made = module->patterns[2];
    EXPECT_TRUE(made.used && made.name == "Bridge" && made.length == 100 && made.tactStart[1] == 4);
    EXPECT_EQ(made.lines[80].note[0], 255);
    undo.Undo(undoView);
    EXPECT_EQ(List(), (std::vector<uint8_t>{0, 1, 3}));
    EXPECT_FALSE(module->patterns[2].used);
    undo.Redo(undoView);
    EXPECT_TRUE(made.used && made.name == "Bridge" && made.length == 100 && made.tactStart[1] == 4);
    EXPECT_EQ(List(), (std::vector<uint8_t>{0, 1, 2, 3}));
}

TEST_F(ListToolsTest, MakeNewStopsWhenNoPatternIsFreeOrTheListIsFull) {
    dialogs.newPatternSettings = PatternSettings{};
    for (Pattern& pattern : module->patterns) pattern.used = 1;
    EXPECT_FALSE(MakeNewPattern(ctx, dialogs));
    module->NewModule({});
    SetList(Filled(256));
    EXPECT_FALSE(MakeNewPattern(ctx, dialogs));
    EXPECT_EQ(prompts.messages, (std::vector<std::string>{"The maximum number of patterns has been already reached.",
                                                           "The maximum song length has been already reached."}));
    EXPECT_FALSE(dialogs.shownNewPattern || undo.CanUndo());
}

}  // namespace
}  // namespace sondrel
