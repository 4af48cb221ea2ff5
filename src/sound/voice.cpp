#include "sound/voice.h"

#include <algorithm>

#include "model/notes.h"
#include "sound/sound_chip.h"

namespace sondrel {

namespace {

constexpr int8_t kWaves[4][32] = {
    {0, 7, 13, 18, 22, 25, 27, 28, 28, 27, 25, 22, 18, 13, 7, 0,
     0, -7, -13, -18, -22, -25, -27, -28, -28, -27, -25, -22, -18, -13, -7, 0},
    {4, 16, 24, 28, 28, 24, 16, 4, -4, -16, -24, -28, -28, -24, -16, -4,
     4, 16, 24, 28, 28, 24, 16, 4, -4, -16, -24, -28, -28, -24, -16, -4},
    {10, 28, 28, 10, -10, -28, -28, -10, 10, 28, 28, 10, -10, -28, -28, -10,
     10, 28, 28, 10, -10, -28, -28, -10, 10, 28, 28, 10, -10, -28, -28, -10},
    {0, 28, 0, -28, 0, 28, 0, -28, 0, 28, 0, -28, 0, 28, 0, -28,
     0, 28, 0, -28, 0, 28, 0, -28, 0, 28, 0, -28, 0, 28, 0, -28},
};
constexpr int kStrengths[16] = {0, 1, 2, 3, 4, 5, 6, 7, 9, 11, 14, 17, 21, 25, 30, 35};

}  // namespace

VibratoTable::VibratoTable() {
    for (int w = 0; w < 4; ++w)
        for (int s = 0; s < 16; ++s)
            for (int p = 0; p < 256; ++p)
                values_[w][s][p] = static_cast<int16_t>(kWaves[w][p % 32] * kStrengths[s] / 28);
}

const VibratoTable& VibratoTable::Get() {
    static const VibratoTable table;
    return table;
}

void Voice::Start(const Instrument& inst, uint8_t index, uint8_t noteVolume, uint8_t noteValue,
                  int8_t noteDetune, uint32_t ticks) {
    instrument = &inst;
    instrumentIndex = index;
    volume = noteVolume;
    note = noteValue;
    detune = noteDetune;
    ticksLeft = ticks;
    phase = 0;
    delayCount = inst.delay[0];
    vibratoPos = 0;
    envelope = inst.startVolume;
    volumeAdd = inst.volumeAdd[0];
    vibratoStrength = inst.vibratoStrength[0];
    vibratoSpeed = inst.vibratoSpeed[0];
    newNote = 1;
    active = 1;
    started = 0;
    slide = 0;
    effectPeriod = 0;
}

uint8_t Voice::SoundingNote() const {
    return effectPeriod != 0 ? PeriodToNote(effectPeriod - detune).note : note;
}

bool Voice::Restart() {
    if (!active || instrument == nullptr) return false;
    Start(*instrument, instrumentIndex, volume, note, detune, ticksLeft);
    return true;
}

namespace {

// The pitch a slide may reach: from the lowest playable note's period to the highest.
constexpr int kHighestSlidPeriod = 1023;

bool SlidesOn(uint8_t note) { return note <= kLastToneNote; }

}  // namespace

void Voice::Slide(int units) {
    if (!SlidesOn(note)) return;
    const int base = TonePeriod(note) + detune;
    const int lowest = TonePeriod(kLastPlayableTone);
    slide = static_cast<int16_t>(std::clamp(base + slide + units, lowest, kHighestSlidPeriod) - base);
}

void Voice::GlideBy(int units) {
    slide = static_cast<int16_t>(slide > 0 ? std::max(0, slide - units) : std::min(0, slide + units));
}

void Voice::GlideTo(uint8_t noteValue, int8_t noteDetune) {
    const int from = TonePeriod(note) + detune + slide;
    note = noteValue;
    detune = noteDetune;
    slide = static_cast<int16_t>(from - (TonePeriod(note) + detune));
}

int Voice::EffectivePeriod() const {
    // Chords reaching past the highest playable note stop there.
    const auto sounding = static_cast<uint8_t>(std::min<int>(note + arpeggio, kLastPlayableTone));
    return TonePeriod(sounding) + detune + slide;
}

void Voice::Update(SoundChip& chip, int channel, uint8_t pitchOffset) {
    started = 0;
    if (newNote) {
        started = 1;
        if (!NotePlaysOnChannel(note, channel)) active = 0;
    }

    if (active) {
        if (channel < kToneChannels) {
            basePeriod = static_cast<uint16_t>(TonePeriod(note) + detune);
            uint16_t period = basePeriod;
            effectPeriod = 0;
            if ((arpeggio | slide) != 0 && SlidesOn(note)) {
                period = static_cast<uint16_t>(EffectivePeriod());
                effectPeriod = period;
            }
            const auto vibrato = static_cast<uint8_t>(
                effectVibrato ? VibratoTable::Get().At(0, effectVibratoDepth, effectVibratoPos)
                              : VibratoTable::Get().At(vibratoSpeed, vibratoStrength, vibratoPos));
            vibratoOffset = static_cast<int8_t>(static_cast<uint8_t>(vibrato + pitchOffset));
            chip.SetTonePeriod(channel, static_cast<uint16_t>((period + vibratoOffset) & 0x3FF));
        } else if (newNote) {
            chip.Write(static_cast<uint8_t>(note - kNoiseNoteToControl));
            vibratoOffset = 0;
        }

        int level = volume + (envelope >> 4) - 15;
        if (level < 0) level = 0;
        if (level > 15) level = 15;  // a "VO" parameter above 15 plays at full volume
        outputVolume = static_cast<uint8_t>(level);
        chip.SetAttenuation(channel, static_cast<uint8_t>(15 - outputVolume));

        vibratoPos = (vibratoPos + 1) & 127;
        envelope = static_cast<uint8_t>(envelope + volumeAdd);

        const uint8_t before = delayCount--;
        if (before == 1) {
            ++phase;
            volumeAdd = instrument->volumeAdd[phase];
            vibratoStrength = instrument->vibratoStrength[phase];
            vibratoSpeed = instrument->vibratoSpeed[phase];
            if (phase == 4) {
                // The last phase holds: it is entered again every 256 ticks.
                delayCount = 0;
                phase = 3;
            } else {
                delayCount = instrument->delay[phase];
            }
        }
    } else {
        chip.SetAttenuation(channel, 15);
    }

    const uint32_t ticksBefore = ticksLeft--;
    if (ticksBefore == 1) active = 0;
    newNote = 0;
}

}  // namespace sondrel
