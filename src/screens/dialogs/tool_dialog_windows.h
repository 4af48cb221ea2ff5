#pragma once
// The dialogs of the pattern, module and channel tools. Each opens over the
// main screen, shows the values it is given and returns what the user
// confirmed, or nothing for "Cancel", Escape or the close box (and when a
// dialog is open already).

#include <optional>

#include "model/module.h"
#include "screens/dialogs/tool_dialog_values.h"

namespace sondrel {

class Requesters;

// "Pattern settings", or "New pattern settings" for a pattern about to be made.
std::optional<PatternSettings> RunPatternSettings(Requesters& requesters, const PatternSettings& current,
                                                  bool newPattern);
// "Pattern resize": the new length for a pattern of oldLength lines.
std::optional<int> RunPatternResize(Requesters& requesters, int oldLength);
// "Module settings", or "New module settings" for a module just made.
// listLength bounds the repeat position.
std::optional<ModuleSettings> RunModuleSettings(Requesters& requesters, const ModuleSettings& current,
                                                int listLength, bool newModule);
// "Change instruments" and "Copy channels" over the module's patterns; the
// patterns in use are listed and all of them chosen at first.
std::optional<ChangeInstrumentsRequest> RunChangeInstruments(Requesters& requesters, const Module& module);
std::optional<CopyChannelsRequest> RunCopyChannels(Requesters& requesters, const Module& module);

}  // namespace sondrel
