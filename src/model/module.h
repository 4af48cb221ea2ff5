#pragma once
// The one song the tracker edits. Every pattern, line and instrument slot
// exists at all times; "used" flags and lengths say which of them count, so a
// whole Module copies as a plain value.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace sondrel {

constexpr int kChannels = 4;           // tone 0, 1, 2 and noise 3
constexpr int kToneChannels = 3;
constexpr int kNoiseChannel = 3;
constexpr int kPatterns = 256;
constexpr int kMaxLines = 256;
constexpr int kNewPatternLength = 64;
constexpr int kMaxPatternList = 256;
constexpr int kInstruments = 16;
constexpr int kEnvelopePhases = 5;     // phases 0..3 have a delay, phase 4 lasts for ever
constexpr uint8_t kNewModuleSpeed = 48;  // eighths of a tick per line: 6 ticks

// Chip setting values; 255 marks a setting not chosen yet.
enum ChipType : uint8_t { kChipNtsc = 0, kChipPal = 1 };
enum FrequencyDivider : uint8_t { kDivider1x = 0, kDivider2x = 1 };
constexpr uint8_t kChipSettingUnset = 255;

// Which member of the chip family the music is written for. The Sega chips
// (Master System, Game Gear) have a 16-bit noise register tapped at bits 0
// and 3 and hold a constant level at tone period 0; the Game Gear also pans
// the noise; the TI parts (BBC Micro, Tandy, SG-1000) have a 15-bit register
// tapped at bits 0 and 1, read tone period 0 as 1024 and have no stereo.
enum ChipVariant : uint8_t { kVariantSega = 0, kVariantGameGear = 1, kVariantTi = 2 };
constexpr int kChipVariants = 3;
// As the "Chip:" choice names them.
inline constexpr std::array<const char*, kChipVariants> kChipVariantNames = {
    "Sega (SMS, Game Gear)", "Game Gear (noise panned too)", "TI SN76489 (BBC, Tandy, SG-1000)"};

struct ChipSettings {
    uint8_t frequencyDivider = kDivider1x;
    uint8_t chipType = kChipNtsc;
    uint8_t variant = kVariantSega;
    bool operator==(const ChipSettings&) const = default;
};

// Channel commands and command-column commands. From 3 on the channel
// commands are effects that act tick by tick while their line plays
// (sound/channel_effects.h); 12..15 mean nothing.
enum ChannelCommand : uint8_t {
    kChannelCommandNone = 0,
    kChannelCommandPV = 1,
    kChannelCommandVO = 2,
    kEffectArpeggio = 3,     // "AR" xy: note, note + x, note + y semitones, a tick each
    kEffectSlideUp = 4,      // "SU" speed: period units a tick, kept until the next note
    kEffectSlideDown = 5,    // "SD" speed
    kEffectGlide = 6,        // "GL" speed: to the line's note without restarting it
    kEffectVibrato = 7,      // "VI" xy: speed x, depth y, in place of the instrument's
    kEffectVolumeSlide = 8,  // "VS" xy: volume up x or down y a tick
    kEffectNoteCut = 9,      // "NC" ticks: silent after so many ticks of the line
    kEffectNoteDelay = 10,   // "ND" ticks: the line's note starts so many ticks late
    kEffectRetrigger = 11,   // "RT" ticks: the note starts again every so many ticks
};
constexpr uint8_t kLastChannelCommand = kEffectRetrigger;
// The two-letter text of a channel command: "--" for none, "??" for 12..15.
const char* ChannelCommandText(uint8_t command);
// Whether the parameter reads as two hexadecimal digits x and y (AR, VI, VS)
// rather than as a decimal number.
bool ChannelParamIsHex(uint8_t command);
// Whether the command does anything on the noise channel: "PV" and the pitch
// effects don't, as the noise has no pitch of its own.
bool ChannelCommandActsOnNoise(uint8_t command);
enum LineCommand : uint8_t { kCommandNone = 0, kCommandSP = 1, kCommandST = 2 };

struct PatternLine {
    std::array<uint8_t, kChannels> note{};
    std::array<int8_t, kChannels> detune{};
    std::array<uint8_t, kChannels> instrument{};
    std::array<uint8_t, kChannels> volume{};
    std::array<uint8_t, kChannels> channelCommand{};
    std::array<uint8_t, kChannels> channelParam{};
    uint8_t command = 0;
    uint8_t commandParam = 0;

    // All notes empty, no channel commands, no command; other bytes are kept.
    void Clear();
    bool operator==(const PatternLine&) const = default;
};

struct Pattern {
    uint8_t used = 0;
    uint16_t length = kNewPatternLength;
    std::string name;
    std::array<uint8_t, 2> tactEnabled{};
    std::array<uint8_t, 2> tactStart{};
    std::array<uint8_t, 2> tactInterval{16, 8};
    std::array<PatternLine, kMaxLines> lines{};

    // 0 for the main tact, 1 for the secondary one, -1 when the line is no tact line.
    int TactOf(int line) const;
    bool operator==(const Pattern&) const = default;
};

struct Instrument {
    std::string name;
    uint8_t startVolume = 255;  // sixteenths of a volume step; 255 is full
    std::array<uint8_t, 4> delay{8, 8, 8, 8};
    std::array<uint8_t, kEnvelopePhases> vibratoSpeed{};
    std::array<uint8_t, kEnvelopePhases> vibratoStrength{};
    std::array<int8_t, kEnvelopePhases> volumeAdd{};

    // Back to what every instrument of a new module holds: no name, full
    // start volume, four phases of 8 ticks, no vibrato, no volume adds.
    void Reset() { *this = Instrument{}; }
    bool operator==(const Instrument&) const = default;
};

struct Module {
    std::string fileName;
    std::string directory;
    uint8_t initialSpeed = kNewModuleSpeed;
    uint8_t frequencyDivider = kDivider1x;
    uint8_t chipType = kChipNtsc;
    uint8_t chipVariant = kVariantSega;
    std::array<Pattern, kPatterns> patterns{};
    std::array<uint8_t, kMaxPatternList> patternList{};
    uint16_t patternListLength = 1;
    uint8_t repeatPosition = 0;
    std::string title;
    std::string author;
    std::string notes;
    std::array<Instrument, kInstruments> instruments{};

    ChipSettings Settings() const { return {frequencyDivider, chipType, chipVariant}; }
    bool IsPal() const { return chipType == kChipPal; }
    int TicksPerSecond() const { return IsPal() ? 50 : 60; }

    // Empties the module: one 64-line pattern 0, pattern list "0", speed 6.0,
    // reset instruments, no texts; the chip settings come from the caller.
    void NewModule(ChipSettings settings);
    void CreatePattern(int number);
    // The lowest-numbered pattern not in use.
    std::optional<uint8_t> FindFreePattern() const;
    // How many of the counted pattern-list entries play this pattern.
    int CountInList(int patternNumber) const;
    void ResetInstrument(int number);

    bool operator==(const Module&) const = default;

    // A module takes almost 2 MB: each one gets memory of its own that the
    // system may back with one large page instead of hundreds of small ones,
    // and the last one freed is kept for the next.
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;
};

}  // namespace sondrel
