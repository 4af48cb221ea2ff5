#include "model/module.h"

#include "model/notes.h"

namespace sondrel {

void PatternLine::Clear() {
    note.fill(kNoteEmpty);
    channelCommand.fill(kChannelCommandNone);
    command = kCommandNone;
}

int Pattern::TactOf(int line) const {
    for (int t = 0; t < 2; ++t) {
        if (!tactEnabled[t] || line < tactStart[t] || tactInterval[t] == 0) continue;
        if ((line - tactStart[t]) % tactInterval[t] == 0) return t;
    }
    return -1;
}

void Module::NewModule(ChipSettings settings) {
    fileName.clear();
    directory.clear();
    frequencyDivider = settings.frequencyDivider;
    chipType = settings.chipType;
    for (auto& pattern : patterns) pattern.used = 0;
    patternList.fill(0);
    patternListLength = 1;
    repeatPosition = 0;
    initialSpeed = kNewModuleSpeed;
    CreatePattern(0);
    title.clear();
    author.clear();
    notes.clear();
    for (int i = 0; i < kInstruments; ++i) ResetInstrument(i);
}

void Module::CreatePattern(int number) {
    Pattern& pattern = patterns[static_cast<uint8_t>(number)];
    pattern.used = 1;
    pattern.length = kNewPatternLength;
    pattern.name.clear();
    pattern.tactEnabled = {0, 0};
    pattern.tactStart = {0, 0};
    pattern.tactInterval = {16, 8};
    for (auto& line : pattern.lines) line.Clear();
}

std::optional<uint8_t> Module::FindFreePattern() const {
    for (int i = 0; i < kPatterns; ++i) {
        if (!patterns[i].used) return static_cast<uint8_t>(i);
    }
    return std::nullopt;
}

int Module::CountInList(int patternNumber) const {
    int count = 0;
    for (int i = 0; i < patternListLength && i < kMaxPatternList; ++i) {
        if (patternList[i] == patternNumber) ++count;
    }
    return count;
}

void Module::ResetInstrument(int number) {
    instruments[static_cast<size_t>(number) & (kInstruments - 1)] = Instrument{};
}

}  // namespace sondrel
