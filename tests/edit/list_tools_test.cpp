#include "edit/list_tools.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "edit/tool_test_support.h"

namespace sondrel {
namespace {

class ListToolsTest : public test::ToolsTest {};

std::vector<uint8_t> Filled(int entries) { return std::vector<uint8_t>(entries, 1); }

// A list command at list position p: what the list and view are afterwards,
// the message shown instead, and that undo puts the list back.
struct ListCase {
    const char* name;
    std::vector<uint8_t> list;
    int position;
    std::function<bool(EditorContext&)> command;
    std::vector<uint8_t> after;  // empty: the list stays as it was
    int positionAfter;
    std::string message;
    std::optional<int> repeatAfter = {};  // the repeat position starts on the last entry
};

const std::vector<ListCase> kListCases = {
    {"insert into one entry", {4}, 0, InsertCurrentPattern, {4, 4}, 1, ""},
    {"insert at the end", {0, 1, 2}, 2, InsertCurrentPattern, {0, 1, 2, 2}, 3, ""},
    {"insert at the start", {0, 1, 2}, 0, InsertCurrentPattern, {0, 0, 1, 2}, 1, ""},
    {"insert into 256 entries", Filled(256), 100, InsertCurrentPattern, {}, 100,
     "The maximum song length has already been reached."},
    {"insert into 255 entries", Filled(255), 254, InsertCurrentPattern, Filled(256), 255, ""},
    {"remove the first", {0, 1, 2}, 0, RemoveCurrentEntry, {1, 2}, 0, ""},
    {"remove the last at the repeat position", {0, 1, 2}, 2, RemoveCurrentEntry, {0, 1}, 1, "", 1},
    {"remove the only entry", {3}, 0, RemoveCurrentEntry, {}, 0,
     "Can't remove the last pattern from the pattern list."},
    {"remove from 256 entries", Filled(256), 255, RemoveCurrentEntry, Filled(255), 254, "", 254},
    {"move up", {0, 1, 2}, 1, [](EditorContext& c) { return MoveListEntry(c, ListMove::kUp); }, {1, 0, 2}, 0, ""},
    {"move up at 0", {0, 1, 2}, 0, [](EditorContext& c) { return MoveListEntry(c, ListMove::kUp); }, {}, 0, ""},
    {"move down at the end", {0, 1, 2}, 2, [](EditorContext& c) { return MoveListEntry(c, ListMove::kDown); },
     {}, 2, ""},
    {"move down", {0, 1, 2}, 1, [](EditorContext& c) { return MoveListEntry(c, ListMove::kDown); }, {0, 2, 1}, 2,
     ""},
    // Used patterns are 0, 1, 2 and 7 here.
    {"next used wraps", {7, 1, 2}, 0, [](EditorContext& c) { return StepUsedPattern(c, ListStep::kNext); },
     {0, 1, 2}, 0, ""},
    {"previous used skips unused", {7, 1, 2}, 0,
     [](EditorContext& c) { return StepUsedPattern(c, ListStep::kPrevious); }, {2, 1, 2}, 0, ""},
};

TEST_F(ListToolsTest, CommandsChangeTheListAndUndoPutsItBack) {
    for (const ListCase& c : kListCases) {
        SCOPED_TRACE(c.name);
        module->NewModule({});
        prompts.messages.clear();
        SetList(c.list);
        module->repeatPosition = static_cast<uint8_t>(c.list.size() - 1);
        module->patterns[0].used = 1;
        view.SetListPosition(static_cast<uint8_t>(c.position));
        const auto before = std::make_unique<Module>(*module);

        bool changed = c.command(ctx);

        EXPECT_EQ(changed, !c.after.empty());
        EXPECT_EQ(List(), c.after.empty() ? c.list : c.after);
        EXPECT_EQ(view.State().listPosition, c.positionAfter);
        EXPECT_EQ(view.State().currentPattern, module->patternList[c.positionAfter]);
        if (c.repeatAfter) {
            EXPECT_EQ(module->repeatPosition, *c.repeatAfter);
        }
        EXPECT_EQ(prompts.messages, c.message.empty() ? std::vector<std::string>{}
                                                             : std::vector<std::string>{c.message});
        EXPECT_EQ(undo.CanUndo(), changed);
        if (changed) {
            EXPECT_TRUE(undo.Undo(undoView));
            EXPECT_TRUE(*before == *module);
            EXPECT_EQ(view.State().listPosition, c.position);
        }
    }
}

TEST_F(ListToolsTest, NothingChangesWhileTheSongPlays) {
    SetList({0, 0, 0});
    song.Start(0, 0, false);
    dialogs.newPatternSettings = PatternSettings{};
    EXPECT_FALSE(InsertCurrentPattern(ctx));
    EXPECT_FALSE(RemoveCurrentEntry(ctx));
    EXPECT_FALSE(MakeNewPattern(ctx, dialogs));
    EXPECT_FALSE(dialogs.shownNewPattern);
    EXPECT_FALSE(DeleteOldPattern(ctx));
    EXPECT_TRUE(prompts.questions.empty());
    EXPECT_EQ(List(), (std::vector<uint8_t>{0, 0, 0}));
}

TEST_F(ListToolsTest, DeletingAPatternLowersThePositionForEveryEntryRemoved) {
    SetList({2, 0, 1, 0, 1, 2, 0});
    view.SetListPosition(5);
    prompts.answers = {false, true};
    EXPECT_FALSE(DeleteOldPattern(ctx));
    EXPECT_EQ(prompts.questions, std::vector<std::string>{"Do you really want to delete this pattern?"});

    EXPECT_TRUE(DeleteOldPattern(ctx));
    EXPECT_EQ(List(), (std::vector<uint8_t>{0, 1, 0, 1, 0}));
    EXPECT_EQ(view.State().listPosition, 3);
    EXPECT_FALSE(module->patterns[2].used);

    // Undo brings back the pattern, its place in the list and the position.
    undo.Undo(undoView);
    EXPECT_EQ(List(), (std::vector<uint8_t>{2, 0, 1, 0, 1, 2, 0}));
    EXPECT_TRUE(module->patterns[2].used);
    EXPECT_EQ(view.State().listPosition, 5);
}

TEST_F(ListToolsTest, APatternFillingTheWholeListIsNotDeleted) {
    SetList({1, 1});
    EXPECT_FALSE(DeleteOldPattern(ctx));
    EXPECT_EQ(prompts.messages,
              std::vector<std::string>{"This pattern can't be deleted, because it's the only one left in the pattern list"});
    EXPECT_TRUE(prompts.questions.empty());
    EXPECT_FALSE(undo.CanUndo());
}

TEST_F(ListToolsTest, MakeNewTakesTheLowestFreePatternAfterTheCurrentEntry) {
    SetList({0, 1, 3});
    Pattern& current = module->patterns[1];
    current.name = "Chorus";
    current.length = 48;
    current.tactEnabled = {1, 0};
    view.SetListPosition(1);

    EXPECT_FALSE(MakeNewPattern(ctx, dialogs));  // cancelled
    ASSERT_TRUE(dialogs.shownNewPattern);
    EXPECT_EQ(dialogs.shownNewPattern->name, "Chorus");
    EXPECT_EQ(dialogs.shownNewPattern->length, 48);
    EXPECT_FALSE(undo.CanUndo());

    dialogs.newPatternSettings = PatternSettings{"Bridge", 100, {0, 1}, {0, 4}, {16, 6}};
    module->patterns[2].lines[80].note[0] = 60;  // left over from an earlier use
    EXPECT_TRUE(MakeNewPattern(ctx, dialogs));
    EXPECT_EQ(List(), (std::vector<uint8_t>{0, 1, 2, 3}));
    EXPECT_EQ(view.State().listPosition, 2);
    const Pattern& made = module->patterns[2];
    EXPECT_TRUE(made.used);
    EXPECT_EQ(made.name, "Bridge");
    EXPECT_EQ(made.length, 100);
    EXPECT_EQ(made.tactStart[1], 4);
    EXPECT_EQ(made.tactInterval[1], 6);
    EXPECT_EQ(made.lines[80].note[0], 255);

    undo.Undo(undoView);
    EXPECT_EQ(List(), (std::vector<uint8_t>{0, 1, 3}));
    EXPECT_FALSE(module->patterns[2].used);
    undo.Redo(undoView);
    EXPECT_EQ(List(), (std::vector<uint8_t>{0, 1, 2, 3}));
    EXPECT_EQ(module->patterns[2].name, "Bridge");
    EXPECT_EQ(module->patterns[2].length, 100);
}

TEST_F(ListToolsTest, MakeNewStopsWhenNoPatternIsFreeOrTheListIsFull) {
    dialogs.newPatternSettings = PatternSettings{};
    SetList({0});
    for (Pattern& pattern : module->patterns) pattern.used = 1;
    EXPECT_FALSE(MakeNewPattern(ctx, dialogs));
    EXPECT_EQ(prompts.messages, std::vector<std::string>{"The maximum number of patterns has been already reached."});

    prompts.messages.clear();
    module->NewModule({});
    SetList(Filled(256));
    EXPECT_FALSE(MakeNewPattern(ctx, dialogs));
    EXPECT_EQ(prompts.messages, std::vector<std::string>{"The maximum song length has been already reached."});
    EXPECT_FALSE(dialogs.shownNewPattern);
    EXPECT_FALSE(undo.CanUndo());
}

}  // namespace
}  // namespace sondrel
