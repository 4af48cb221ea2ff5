#pragma once
// Note values of a cell, their names and kinds, the tone period table and the
// conversions that importers use to turn chip periods and frequencies into notes.

#include <array>
#include <cstdint>
#include <string>

namespace sondrel {

constexpr uint8_t kFirstPlayableTone = 45;   // "A 1", period 1016
constexpr uint8_t kLastPlayableTone = 119;   // "H 7", period 14
constexpr uint8_t kLastToneNote = 155;
constexpr uint8_t kNoteNull = 246;           // "Nul": tone period 0
constexpr uint8_t kFirstNoiseNote = 247;     // "PHi"
constexpr uint8_t kLastNoiseNote = 254;      // "WC2"
constexpr uint8_t kNoteEmpty = 255;          // "---"
constexpr int kNoiseNoteToControl = 23;      // noise note - 23 is the chip's noise control byte

enum class NoteKind { Tone, Invalid, Null, Noise, Empty };

NoteKind KindOfNote(uint8_t note);
// The three-character name shown in the pattern grid: "A 1", "Nul", "PHi", "---", "???".
std::string NoteName(uint8_t note);
// Tone notes and "Nul" carry an instrument and a detune.
bool NoteHasInstrument(uint8_t note);
// Tone notes, "Nul" and noise notes carry a volume.
bool NoteHasVolume(uint8_t note);
// Channels 0..2 play tone notes 45..119 and "Nul"; channel 3 plays the noise notes.
bool NotePlaysOnChannel(uint8_t note, int channel);

// 256 ten-bit chip periods by note; 0 for 156..255, so "Nul" plays period 0.
// Built once, the first time it is asked for.
const std::array<uint16_t, 256>& TonePeriodTable();
inline uint16_t TonePeriod(uint8_t note) { return TonePeriodTable()[note]; }

constexpr double kNtscChipClock = 3579545.0;
constexpr double kPalChipClock = 3546893.0;

struct NoteAndDetune {
    uint8_t note = kNoteEmpty;
    int8_t detune = 0;
    bool operator==(const NoteAndDetune&) const = default;
};

// A chip period as the nearest playable note plus the detune that makes it exact.
NoteAndDetune PeriodToNote(int period);
// A frequency as a note and detune for a module with these chip settings.
NoteAndDetune FrequencyToNote(double frequency, uint8_t frequencyDivider, uint8_t chipType);

}  // namespace sondrel
