#include "edit/keys/note_keys.h"

#include <array>
#include <utility>

#include "model/module.h"

namespace sondrel {

namespace {

// The lower row from Z is the first octave and a third, the upper row from Q
// the next; the backslash doubles the 5 key.
constexpr std::array<std::pair<uint16_t, int>, 38> kPiano{{
    {kScanZ, 0},   {kScanS, 1},          {kScanX, 2},     {kScanD, 3},      {kScanC, 4},     {kScanV, 5},
    {kScanG, 6},   {kScanB, 7},          {kScanH, 8},     {kScanN, 9},      {kScanJ, 10},    {kScanM, 11},
    {kScanComma, 12}, {kScanL, 13},      {kScanPeriod, 14}, {kScanSemicolon, 15}, {kScanSlash, 16},
    {kScanQ, 12},  {kScan2, 13},         {kScanW, 14},    {kScan3, 15},     {kScanE, 16},    {kScanR, 17},
    {kScan5, 18},  {kScanT, 19},         {kScan6, 20},    {kScanY, 21},     {kScan7, 22},    {kScanU, 23},
    {kScanI, 24},  {kScan9, 25},         {kScanO, 26},    {kScan0, 27},     {kScanP, 28},
    {kScanLeftBracket, 29}, {kScanEquals, 30}, {kScanRightBracket, 31}, {kScanBackslash, 18},
}};

// White noise (high, middle, low, clocked by channel 2) on Z to V, periodic
// noise the same way on B to comma.
constexpr std::array<std::pair<uint16_t, uint8_t>, 8> kNoise{{
    {kScanZ, 251}, {kScanX, 252}, {kScanC, 253}, {kScanV, 254},
    {kScanB, 247}, {kScanN, 248}, {kScanM, 249}, {kScanComma, 250},
}};

}  // namespace

std::optional<int> PianoSemitone(uint16_t scanCode) {
    for (const auto& [key, semitone] : kPiano)
        if (key == scanCode) return semitone;
    return std::nullopt;
}

std::optional<uint8_t> ToneNoteOf(uint16_t scanCode, uint16_t modifiers, int octave) {
    if (scanCode == kScanN && (modifiers & kShiftKeys)) return kNullNote;
    const auto semitone = PianoSemitone(scanCode);
    if (!semitone) return std::nullopt;
    const int note = 12 * octave + *semitone;
    if (note < 0 || note >= kToneNotes) return std::nullopt;
    return static_cast<uint8_t>(note);
}

std::optional<uint8_t> NoiseNoteOf(uint16_t scanCode, uint16_t modifiers) {
    if (scanCode == kScanS && (modifiers & kShiftKeys)) return kNullNote;
    for (const auto& [key, note] : kNoise)
        if (key == scanCode) return note;
    return std::nullopt;
}

std::optional<uint8_t> NoteOfKey(int channel, uint16_t scanCode, uint16_t modifiers, int octave) {
    if (channel == kNoiseChannel) return NoiseNoteOf(scanCode, modifiers);
    return ToneNoteOf(scanCode, modifiers, octave);
}

bool IsCtrlCommandKey(uint16_t scanCode) {
    switch (scanCode) {
    case kScanY: case kScanZ: case kScanX: case kScanC: case kScanV: case kScanG: case kScanF: case kScanP:
    case kScanS: case kScanB: case kScanN: case kScanM: case kScanComma: case kScanPeriod: case kScanSlash:
        return true;
    default:
        return false;
    }
}

}  // namespace sondrel
