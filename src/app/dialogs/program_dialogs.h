#pragma once
// The tools' dialogs as the program shows them: each opens its window over
// the main screen and answers the editing tools with what was confirmed.

#include <optional>

#include "edit/tools/tool_dialogs.h"

namespace sondrel {

class Requesters;

class ProgramDialogs : public ToolDialogs {
public:
    // module is the one being edited, for the bounds of its settings.
    ProgramDialogs(Requesters& requesters, const Module& module) : requesters_(requesters), module_(module) {}

    std::optional<PatternSettings> EditPatternSettings(const PatternSettings& current) override;
    std::optional<PatternSettings> NewPatternSettings(const PatternSettings& current) override;
    std::optional<int> ResizePattern(int oldLength) override;
    std::optional<ModuleSettings> EditModuleSettings(const ModuleSettings& current) override;
    std::optional<ModuleSettings> NewModuleSettings(const ModuleSettings& current) override;
    std::optional<ChangeInstrumentsRequest> ChangeInstruments(const Module& module) override;
    std::optional<CopyChannelsRequest> CopyChannels(const Module& module) override;

private:
    Requesters& requesters_;
    const Module& module_;
};

}  // namespace sondrel
