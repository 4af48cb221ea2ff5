#pragma once
// What the tool dialogs show and give back: a pattern's settings, the
// module's settings, and the requests of the two tools that sweep many
// patterns (changing instruments, copying channels).

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>

#include "model/module.h"

namespace sondrel {

enum InstrumentChangeMode : uint8_t { kChangeFirstToSecond = 0, kExchangeInstruments = 1, kChangeAllToSecond = 2 };
enum ChannelCopyMode : uint8_t { kCopyFirstToSecond = 0, kExchangeChannels = 1 };
constexpr int kCommandChannel = 4;  // the command column counts as a fifth channel when copying

struct InstrumentChange {
    uint8_t mode = kChangeFirstToSecond;
    uint8_t first = 0;
    uint8_t second = 0;
    uint8_t channelMask = 0x0F;
};

struct ChannelCopy {
    uint8_t first = 0;  // 0..3, or 4 for the command column
    uint8_t second = 0;
    uint8_t mode = kCopyFirstToSecond;
};

// The longest pattern name the dialogs take: the undo history keeps a name in
// one 36-byte slot, and a longer one would come back cut after an undo.
constexpr std::size_t kLongestPatternName = 36;

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
    uint8_t chipVariant = kVariantSega;
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

}  // namespace sondrel
