#include "app/dialogs/program_dialogs.h"

#include "screens/dialogs/tool_dialog_windows.h"

namespace sondrel {

std::optional<PatternSettings> ProgramDialogs::EditPatternSettings(const PatternSettings& current) {
    return RunPatternSettings(requesters_, current, false);
}

std::optional<PatternSettings> ProgramDialogs::NewPatternSettings(const PatternSettings& current) {
    return RunPatternSettings(requesters_, current, true);
}

std::optional<int> ProgramDialogs::ResizePattern(int oldLength) { return RunPatternResize(requesters_, oldLength); }

std::optional<ModuleSettings> ProgramDialogs::EditModuleSettings(const ModuleSettings& current) {
    return RunModuleSettings(requesters_, current, module_.patternListLength, false);
}

std::optional<ModuleSettings> ProgramDialogs::NewModuleSettings(const ModuleSettings& current) {
    return RunModuleSettings(requesters_, current, module_.patternListLength, true);
}

std::optional<ChangeInstrumentsRequest> ProgramDialogs::ChangeInstruments(const Module& module) {
    return RunChangeInstruments(requesters_, module);
}

std::optional<CopyChannelsRequest> ProgramDialogs::CopyChannels(const Module& module) {
    return RunCopyChannels(requesters_, module);
}

}  // namespace sondrel
