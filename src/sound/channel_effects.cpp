#include "sound/channel_effects.h"

#include <algorithm>

#include "model/notes.h"

namespace sondrel {

namespace {

constexpr int kLoudest = 15;

int High(uint8_t param) { return param >> 4; }
int Low(uint8_t param) { return param & 15; }

// The glide's start and end must both be tones the channel plays.
bool Glides(const Voice& voice, uint8_t note, int channel) {
    return voice.active && voice.note <= kLastToneNote && note <= kLastToneNote &&
           NotePlaysOnChannel(voice.note, channel) && NotePlaysOnChannel(note, channel);
}

}  // namespace

void ChannelEffects::Reset() {
    running_ = {};
    for (auto& last : lastParam_) last.fill(0);
}

bool ChannelEffects::BeginLine(int channel, const PatternLine& cells, Voice& voice, const Instrument& instrument,
                               uint32_t ticks) {
    Running& run = running_[channel];
    const uint8_t previous = run.command;
    const uint8_t command = cells.channelCommand[channel];
    run.tick = 0;
    run.holding = false;
    if (command < kEffectArpeggio || command > kLastChannelCommand ||
        (channel == kNoiseChannel && !ChannelCommandActsOnNoise(command))) {
        run.command = kChannelCommandNone;
        return false;
    }
    uint8_t param = cells.channelParam[channel];
    const bool zeroMeansNow = command == kEffectNoteCut || command == kEffectNoteDelay;
    if (param == 0 && !zeroMeansNow) param = lastParam_[channel][command];
    lastParam_[channel][command] = param;
    run.command = command;
    run.param = param;
    // Vibrato and arpeggio run on over lines that go on with them.
    if (command == kEffectVibrato && previous != kEffectVibrato) run.vibratoPos = 0;
    if (command == kEffectArpeggio && previous != kEffectArpeggio) run.arpeggioStep = 0;

    const uint8_t note = cells.note[channel];
    if (note == kNoteEmpty) return false;
    if (command == kEffectNoteDelay && param > 0) {
        const uint8_t index = cells.instrument[channel] & (kInstruments - 1);
        run.held = {&instrument, index, cells.volume[channel], note, cells.detune[channel], ticks};
        run.holding = true;
        return true;
    }
    if (command == kEffectGlide && Glides(voice, note, channel)) {
        voice.GlideTo(note, cells.detune[channel]);
        voice.SetVolume(cells.volume[channel]);
        return true;
    }
    return false;
}

void ChannelEffects::Tick(int channel, Voice& voice) {
    Running& run = running_[channel];
    voice.arpeggio = 0;
    voice.effectVibrato = 0;
    const uint8_t param = run.param;
    switch (run.command) {
    case kEffectArpeggio: {
        const int x = High(param), y = Low(param);
        const int steps = x != 0 && y != 0 ? 3 : 2;
        const int step = run.arpeggioStep % steps;
        run.arpeggioStep = static_cast<uint8_t>((run.arpeggioStep + 1) % 6);
        voice.arpeggio = static_cast<uint8_t>(step == 0 ? 0 : step == 1 ? (x != 0 ? x : y) : y);
        break;
    }
    case kEffectSlideUp: voice.Slide(-param); break;
    case kEffectSlideDown: voice.Slide(param); break;
    case kEffectGlide: voice.GlideBy(param); break;
    case kEffectVibrato:
        voice.effectVibrato = 1;
        voice.effectVibratoDepth = static_cast<uint8_t>(Low(param));
        voice.effectVibratoPos = run.vibratoPos;
        run.vibratoPos = static_cast<uint8_t>(run.vibratoPos + High(param));
        break;
    case kEffectVolumeSlide: {
        const int volume = std::min<int>(voice.volume, kLoudest);
        voice.SetVolume(static_cast<uint8_t>(
            High(param) != 0 ? std::min(volume + High(param), kLoudest) : std::max(volume - Low(param), 0)));
        break;
    }
    case kEffectNoteCut:
        if (run.tick == param) voice.Stop();
        break;
    case kEffectNoteDelay:
        if (run.holding && run.tick == param) {
            const HeldNote& held = run.held;
            voice.Start(*held.instrument, held.instrumentIndex, held.volume, held.note, held.detune, held.ticks);
            run.holding = false;
        }
        break;
    case kEffectRetrigger:
        if (param != 0 && run.tick != 0 && run.tick % param == 0) voice.Restart();
        break;
    default: break;
    }
    if (run.tick < UINT16_MAX) ++run.tick;
}

}  // namespace sondrel
