#include "edit/tools/list_tools.h"

#include <algorithm>
#include <utility>

#include "edit/tools/pattern_list.h"
#include "edit/tools/pattern_tools.h"
#include "sound/song_player.h"

namespace sondrel {

void ShowListPosition(PatternView& view, int position) {
    view.SetListPosition(static_cast<uint8_t>(position));
    view.ClampSelection();
    view.ClampTop();
    view.EnsureListPositionVisible();
    view.Invalidate(kRedrawAll);
}

bool InsertCurrentPattern(EditorContext& ctx) {
    if (ctx.song.Playing()) return false;
    if (ctx.module.patternListLength >= kMaxPatternList) {
        ctx.prompts.ShowMessage("The maximum song length has already been reached.");
        return false;
    }
    int p = ctx.view.State().listPosition;
    ctx.undo.BeginPatternList(p);
    InsertListEntry(ctx.module, p + 1, ctx.view.State().currentPattern);
    ShowListPosition(ctx.view, p + 1);
    ctx.undo.EndPatternList(p + 1);
    return true;
}

bool RemoveCurrentEntry(EditorContext& ctx) {
    if (ctx.song.Playing()) return false;
    if (ctx.module.patternListLength < 2) {
        ctx.prompts.ShowMessage("Can't remove the last pattern from the pattern list.");
        return false;
    }
    int p = ctx.view.State().listPosition;
    ctx.undo.BeginPatternList(p);
    RemoveListEntry(ctx.module, p);
    int shown = std::min(p, ctx.module.patternListLength - 1);
    ShowListPosition(ctx.view, shown);
    ctx.undo.EndPatternList(shown);
    return true;
}

// The search wraps round the pattern numbers and gives up when it comes back
// to where it started, leaving the entry as it was (but still recorded).
bool StepUsedPattern(EditorContext& ctx, ListStep step) {
    if (ctx.song.Playing()) return false;
    int p = ctx.view.State().listPosition;
    uint8_t& entry = ctx.module.patternList[p];
    ctx.undo.BeginListEntry(p);
    const uint8_t start = entry;
    for (uint8_t n = start;;) {
        n = static_cast<uint8_t>(step == ListStep::kNext ? n + 1 : n - 1);
        if (n == start) break;
        if (ctx.module.patterns[n].used) {
            entry = n;
            break;
        }
    }
    ctx.undo.EndListEntry();
    ShowListPosition(ctx.view, p);
    return true;
}

bool MoveListEntry(EditorContext& ctx, ListMove move) {
    if (ctx.song.Playing()) return false;
    int p = ctx.view.State().listPosition;
    bool up = move == ListMove::kUp;
    int other = up ? p - 1 : p + 1;
    if (other < 0 || other >= ctx.module.patternListLength) return false;
    ctx.undo.BeginListMove(p, up);
    std::swap(ctx.module.patternList[p], ctx.module.patternList[other]);
    ctx.undo.Close();
    ShowListPosition(ctx.view, other);
    return true;
}

bool MakeNewPattern(EditorContext& ctx, ToolDialogs& dialogs) {
    if (ctx.song.Playing()) return false;
    std::optional<uint8_t> fresh = ctx.module.FindFreePattern();
    if (!fresh) {
        ctx.prompts.ShowMessage("The maximum number of patterns has been already reached.");
        return false;
    }
    if (ctx.module.patternListLength >= kMaxPatternList) {
        ctx.prompts.ShowMessage("The maximum song length has been already reached.");
        return false;
    }
    auto settings = dialogs.NewPatternSettings(SettingsOf(ctx.view.CurrentPattern()));
    if (!settings) return false;
    int at = ctx.view.State().listPosition + 1;
    Pattern& pattern = ctx.module.patterns[*fresh];
    ctx.undo.BeginNewPattern(at);
    ctx.module.CreatePattern(*fresh);
    InsertListEntry(ctx.module, at, *fresh);
    ApplyPatternSettings(pattern, *settings);
    SetPatternLength(pattern, settings->length);
    ctx.undo.EndNewPattern();
    ShowListPosition(ctx.view, at);
    return true;
}

bool DeleteOldPattern(EditorContext& ctx) {
    if (ctx.song.Playing()) return false;
    if (ctx.module.CountInList(ctx.view.State().currentPattern) >= ctx.module.patternListLength) {
        ctx.prompts.ShowMessage("This pattern can't be deleted, because it's the only one left in the pattern list");
        return false;
    }
    if (!ctx.prompts.AskQuestion("Do you really want to delete this pattern?")) return false;
    int p = ctx.view.State().listPosition;
    ctx.undo.BeginDeletePattern(p);
    int lowered = DeletePattern(ctx.module, p);
    ctx.undo.Close();
    ShowListPosition(ctx.view, lowered);
    return true;
}

}  // namespace sondrel
