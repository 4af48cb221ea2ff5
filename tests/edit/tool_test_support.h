#pragma once
// What the pattern-list and pattern tool tests add to the editing fixture:
// dialogs that answer what a test set (nothing: cancelled) and keep what they
// were shown, and setting up a pattern list.

#include <optional>
#include <vector>

#include "edit/edit_test_support.h"
#include "edit/tools/tool_dialogs.h"

namespace sondrel::test {

class FakeToolDialogs : public ToolDialogs {
public:
    std::optional<PatternSettings> EditPatternSettings(const PatternSettings&) override { return patternSettings; }
    std::optional<PatternSettings> NewPatternSettings(const PatternSettings& current) override {
        shownNewPattern = current;
        return newPatternSettings;
    }
    std::optional<int> ResizePattern(int oldLength) override {
        shownLength = oldLength;
        return newLength;
    }
    std::optional<ModuleSettings> EditModuleSettings(const ModuleSettings& current) override {
        shownModule = current;
        return moduleSettings;
    }
    std::optional<ChangeInstrumentsRequest> ChangeInstruments(const Module&) override { return changeInstruments; }
    std::optional<CopyChannelsRequest> CopyChannels(const Module&) override { return copyChannels; }

    std::optional<PatternSettings> patternSettings, newPatternSettings, shownNewPattern;
    std::optional<int> newLength, shownLength;
    std::optional<ModuleSettings> moduleSettings, shownModule;
    std::optional<ChangeInstrumentsRequest> changeInstruments;
    std::optional<CopyChannelsRequest> copyChannels;
};

class ToolsTest : public EditTest {
protected:
    // Marks the patterns used, sets the list (repeat position 0), empties the
    // history and puts the view at its start.
    void SetList(const std::vector<uint8_t>& entries) {
        for (size_t i = 0; i < entries.size(); ++i) {
            module->patterns[entries[i]].used = 1;
            module->patternList[i] = entries[i];
        }
        module->patternListLength = static_cast<uint16_t>(entries.size());
        module->repeatPosition = 0;
        undo.Reset(*module);
        view.SetModule(*module);
    }
    std::vector<uint8_t> List() const {
        return {module->patternList.begin(), module->patternList.begin() + module->patternListLength};
    }

    FakeToolDialogs dialogs;
};

}  // namespace sondrel::test
