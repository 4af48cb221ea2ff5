#pragma once
// The dialogs the pattern-list, pattern and module tools ask before they
// change anything. Each returns the values the user confirmed, or nothing
// when the dialog was cancelled. The program implements them with its dialog
// windows; tests answer with fakes.

#include <optional>

#include "model/module.h"
#include "screens/dialogs/tool_dialog_values.h"

namespace sondrel {

PatternSettings SettingsOf(const Pattern& pattern);
ModuleSettings SettingsOf(const Module& module);

class ToolDialogs {
public:
    virtual ~ToolDialogs() = default;
    // "Pattern settings" and "New pattern settings", filled with the current pattern's values.
    virtual std::optional<PatternSettings> EditPatternSettings(const PatternSettings& current) = 0;
    virtual std::optional<PatternSettings> NewPatternSettings(const PatternSettings& current) = 0;
    // The new length for a pattern of oldLength lines.
    virtual std::optional<int> ResizePattern(int oldLength) = 0;
    virtual std::optional<ModuleSettings> EditModuleSettings(const ModuleSettings& current) = 0;
    // "New module settings": the same for a module just made.
    virtual std::optional<ModuleSettings> NewModuleSettings(const ModuleSettings& current) {
        return EditModuleSettings(current);
    }
    // The module is given for its pattern names.
    virtual std::optional<ChangeInstrumentsRequest> ChangeInstruments(const Module& module) = 0;
    virtual std::optional<CopyChannelsRequest> CopyChannels(const Module& module) = 0;
};

}  // namespace sondrel
