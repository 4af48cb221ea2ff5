#include "model/notes.h"

#include "model/module.h"

#include <cmath>
#include <cstdlib>

namespace sondrel {

namespace {

constexpr const char* kSemitoneNames[12] = {"C ", "C#", "D ", "D#", "E ", "F ",
                                            "F#", "G ", "G#", "A ", "B ", "H "};
constexpr char kOctaveChars[13] = {'=', '-', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '+'};
constexpr const char* kNoiseNames[8] = {"PHi", "PMd", "PLo", "PC2", "WHi", "WMd", "WLo", "WC2"};

// The semitone factors are single-precision values on purpose: the table they
// build is the one every saved module was tuned against.
constexpr float kSemitoneFactors[12] = {1.0f,    1.0595f, 1.1225f, 1.1892f, 1.2599f, 1.3349f,
                                        1.4142f, 1.4983f, 1.5874f, 1.6818f, 1.7818f, 1.8877f};
constexpr double kLowestC = 8.175999641418457;
constexpr double kNtscClockBy32 = 111860.78125;

std::array<uint16_t, 256> BuildTonePeriodTable() {
    std::array<uint16_t, 256> table{};
    for (int n = 0; n <= kLastToneNote; ++n) {
        double octaveFactor = std::ldexp(1.0, n / 12);
        double frequency = octaveFactor * kLowestC * static_cast<double>(kSemitoneFactors[n % 12]);
        table[n] = static_cast<uint16_t>(kNtscClockBy32 / frequency);
    }
    return table;
}

// Adds 0.5 and truncates toward zero, saturating so that absurd inputs stay defined.
long RoundHalfUp(double value) {
    value += 0.5;
    if (!(value > -1e9)) return -1000000000L;
    if (value > 1e9) return 1000000000L;
    return static_cast<long>(value);
}

}  // namespace

NoteKind KindOfNote(uint8_t note) {
    if (note <= kLastToneNote) return NoteKind::Tone;
    if (note < kNoteNull) return NoteKind::Invalid;
    if (note == kNoteNull) return NoteKind::Null;
    if (note <= kLastNoiseNote) return NoteKind::Noise;
    return NoteKind::Empty;
}

std::string NoteName(uint8_t note) {
    switch (KindOfNote(note)) {
        case NoteKind::Tone:
            return std::string(kSemitoneNames[note % 12]) + kOctaveChars[note / 12];
        case NoteKind::Invalid:
            return "???";
        case NoteKind::Null:
            return "Nul";
        case NoteKind::Noise:
            return kNoiseNames[note - kFirstNoiseNote];
        case NoteKind::Empty:
            break;
    }
    return "---";
}

bool NoteHasInstrument(uint8_t note) {
    NoteKind kind = KindOfNote(note);
    return kind == NoteKind::Tone || kind == NoteKind::Null;
}

bool NoteHasVolume(uint8_t note) {
    NoteKind kind = KindOfNote(note);
    return kind == NoteKind::Tone || kind == NoteKind::Null || kind == NoteKind::Noise;
}

bool NotePlaysOnChannel(uint8_t note, int channel) {
    if (channel == 3) return note >= kFirstNoiseNote && note <= kLastNoiseNote;
    return (note >= kFirstPlayableTone && note <= kLastPlayableTone) || note == kNoteNull;
}

const std::array<uint16_t, 256>& TonePeriodTable() {
    static const std::array<uint16_t, 256> table = BuildTonePeriodTable();
    return table;
}

NoteAndDetune PeriodToNote(int period) {
    if (period == 0) return {kNoteNull, 0};
    if (period > 1023) period = 1023;
    const auto& table = TonePeriodTable();
    int best = kFirstPlayableTone;
    int bestDistance = std::abs(period - table[best]);
    for (int n = kFirstPlayableTone; n <= kLastPlayableTone && bestDistance != 0; ++n) {
        int distance = std::abs(period - table[n]);
        if (distance < bestDistance) {
            best = n;
            bestDistance = distance;
        }
    }
    return {static_cast<uint8_t>(best), static_cast<int8_t>(period - table[best])};
}

NoteAndDetune FrequencyToNote(double frequency, uint8_t frequencyDivider, uint8_t chipType) {
    bool halved = frequencyDivider == kDivider2x;
    double reference = halved ? 65.415665 : 130.83133;
    long note = RoundHalfUp(std::log(frequency / reference) / std::log(1.0594631433486938) + 48.0);
    if (note < 0) note = 0;
    if (note > kLastToneNote) note = kLastToneNote;
    double clock = chipType == kChipPal ? kPalChipClock : kNtscChipClock;
    if (halved) clock /= 2.0;
    long detune = RoundHalfUp(clock / 32.0 / frequency - TonePeriod(static_cast<uint8_t>(note)));
    if (detune < -99) detune = -99;
    if (detune > 99) detune = 99;
    return {static_cast<uint8_t>(note), static_cast<int8_t>(detune)};
}

}  // namespace sondrel
