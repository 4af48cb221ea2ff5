#pragma once
// The dialogs the pattern-list, pattern and module tools ask before they
// change anything. Each returns the values the user confirmed, or nothing
// when the dialog was cancelled. The program implements them with its dialog
// windows; tests answer with fakes.

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <string>

#include "edit/channel_tools.h"
#include "model/module.h"

namespace sondrel {

// A pattern's header and length as the pattern settings dialog shows them.
struct PatternSettings {
    std::string name;
    uint16_t length = kNewPatternLength;
    std::array<uint8_t, 2> tactEnabled{};  // main tact, then secondary tact
    std::array<uint8_t, 2> tactStart{};
    std::array<uint8_t, 2> tactInterval{16, 8};
};

// The module's own settings, edited as a working copy.
struct ModuleSettings {
    std::string title;
    std::string author;
    std::string notes;
    uint8_t chipType = kChipNtsc;
    uint8_t frequencyDivider = kDivider1x;
    uint8_t repeatPosition = 0;
    uint8_t initialSpeed = kNewModuleSpeed;
};

// Changing instruments over the chosen patterns' lines startLine..endLine.
struct ChangeInstrumentsRequest {
    InstrumentChange change;
    int startLine = 0;
    int endLine = kMaxLines - 1;
    std::bitset<kPatterns> patterns;
};

// Copying or exchanging two channels over the chosen patterns' lines startLine..endLine.
struct CopyChannelsRequest {
    ChannelCopy copy;
    int startLine = 0;
    int endLine = kMaxLines - 1;
    std::bitset<kPatterns> patterns;
};

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
    // The module is given for its pattern names.
    virtual std::optional<ChangeInstrumentsRequest> ChangeInstruments(const Module& module) = 0;
    virtual std::optional<CopyChannelsRequest> CopyChannels(const Module& module) = 0;
};

}  // namespace sondrel
