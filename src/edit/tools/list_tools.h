#pragma once
// The pattern-list commands: inserting and removing entries, stepping an
// entry through the used patterns, moving an entry, and making and deleting
// patterns. Each records one undo entry and does nothing while the song
// plays; each returns whether it changed the module.

#include "edit/editor_context.h"
#include "edit/tools/tool_dialogs.h"

namespace sondrel {

enum class ListStep { kNext, kPrevious };
enum class ListMove { kUp, kDown };

// Shows the pattern at the list position, keeping the selection inside it.
void ShowListPosition(PatternView& view, int position);

// Puts the current pattern once more right after the current entry.
bool InsertCurrentPattern(EditorContext& ctx);
bool RemoveCurrentEntry(EditorContext& ctx);
bool StepUsedPattern(EditorContext& ctx, ListStep step);
bool MoveListEntry(EditorContext& ctx, ListMove move);
// A free pattern set up through the "New pattern settings" dialog, placed after the current entry.
bool MakeNewPattern(EditorContext& ctx, ToolDialogs& dialogs);
// Asks first; removes the current pattern and every list entry that plays it.
bool DeleteOldPattern(EditorContext& ctx);

}  // namespace sondrel
