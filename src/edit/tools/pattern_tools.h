#pragma once
// The commands that change a pattern or the module as a whole: pattern
// settings, pattern resize, module settings, and the two tools that sweep
// many patterns at once, changing instruments and copying channels. Each
// records one undo entry. All but the pattern and module settings do nothing
// while the song plays; the dialog-driven ones return false when cancelled.

#include <functional>
#include <memory>

#include "edit/editor_context.h"
#include "edit/tools/tool_dialogs.h"

namespace sondrel {

// Sets the pattern's length; lines it gains are emptied (notes, channel
// commands and command), their other bytes kept.
void SetPatternLength(Pattern& pattern, int length);
// The name and tact settings; the length is left to SetPatternLength.
void ApplyPatternSettings(Pattern& pattern, const PatternSettings& settings);

bool EditPatternSettings(EditorContext& ctx, ToolDialogs& dialogs);
bool ResizePattern(EditorContext& ctx, ToolDialogs& dialogs);
// Stops the song first and applies the settings under the audio mutex; only
// the repeat position can be taken back.
bool EditModuleSettings(EditorContext& ctx, ToolDialogs& dialogs);
// "New module settings" for a module made but not yet the edited one. With
// the answer, replace(fresh) makes it the edited module and the settings are
// applied to it; after Cancel the edited module is left as it was.
bool NewModuleWithSettings(EditorContext& ctx, ToolDialogs& dialogs, std::unique_ptr<Module> fresh,
                           const std::function<void(std::unique_ptr<Module>)>& replace);

bool ChangeInstruments(EditorContext& ctx, ToolDialogs& dialogs);
bool CopyChannels(EditorContext& ctx, ToolDialogs& dialogs);
// The sweeps themselves. Lines past a pattern's length are changed as well.
void ApplyChangeInstruments(EditorContext& ctx, const ChangeInstrumentsRequest& request);
void ApplyCopyChannels(EditorContext& ctx, const CopyChannelsRequest& request);

}  // namespace sondrel
