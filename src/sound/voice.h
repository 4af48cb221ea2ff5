#pragma once
// One channel's note with its instrument envelope and vibrato, advanced one
// tick at a time into a SoundChip's registers.

#include <array>
#include <cstdint>
#include <limits>

#include "model/module.h"

namespace sondrel {

class SoundChip;

constexpr uint32_t kPlayForever = std::numeric_limits<uint32_t>::max();

// Vibrato offsets by waveform (0..3), strength (0..15) and position (0..255).
class VibratoTable {
public:
    static const VibratoTable& Get();
    int16_t At(int wave, int strength, int position) const {
        return values_[wave & 3][strength & 15][position & 255];
    }

private:
    VibratoTable();
    std::array<std::array<std::array<int16_t, 256>, 16>, 4> values_{};
};

class Voice {
public:
    void Start(const Instrument& instrument, uint8_t instrumentIndex, uint8_t volume, uint8_t note,
               int8_t detune, uint32_t ticks);
    void Stop() { active = 0; }
    void SetVolume(uint8_t value) { volume = value; }
    // The sounding note from its start again, envelope and all, for the
    // ticks it has left; false when nothing sounds.
    bool Restart();
    // Moves the pitch by units of the tone period (negative: higher), kept
    // within the playable periods; a new note takes it back.
    void Slide(int units);
    // Moves the slide towards none by at most units: the pitch glides to the note.
    void GlideBy(int units);
    // The note and detune now sound from the pitch sounding so far, which
    // the slide keeps until a glide takes it to them.
    void GlideTo(uint8_t noteValue, int8_t noteDetune);
    // One tick on chip channel `channel`; pitchOffset is added to the vibrato offset.
    void Update(SoundChip& chip, int channel, uint8_t pitchOffset);

    uint8_t volume = 0;
    uint8_t phase = 0;
    uint8_t delayCount = 0;
    uint8_t vibratoStrength = 0;
    uint8_t vibratoSpeed = 0;
    uint8_t vibratoPos = 0;
    uint8_t envelope = 0;
    int8_t volumeAdd = 0;
    uint8_t note = 255;
    uint8_t instrumentIndex = 0;
    uint8_t outputVolume = 0;
    int8_t vibratoOffset = 0;
    int8_t detune = 0;
    uint16_t basePeriod = 0;
    uint32_t ticksLeft = 0;
    uint8_t newNote = 0;
    uint8_t started = 0;
    uint8_t active = 0;
    const Instrument* instrument = nullptr;

    // What the channel's effects add, tick by tick (all none without them).
    int16_t slide = 0;          // period units on top of the note's period
    uint8_t arpeggio = 0;       // semitones on top of the note, this tick
    uint8_t effectVibrato = 0;  // the effect's vibrato replaces the instrument's, this tick
    uint8_t effectVibratoDepth = 0;
    uint8_t effectVibratoPos = 0;
    // The period the effects made of the note in the last update, before
    // vibrato; 0 when they left the note's own.
    uint16_t effectPeriod = 0;

    // The note nearest to the pitch the effects make (the note itself without them).
    uint8_t SoundingNote() const;

private:
    // The period of the note with its detune, slide and arpeggio, before vibrato.
    int EffectivePeriod() const;
};

}  // namespace sondrel
