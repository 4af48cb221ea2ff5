#pragma once
// The effects of the channel commands from "AR" to "RT", run by the song
// player tick by tick. One rule holds for all of them: an effect acts on
// every tick of the line that holds it, from the tick the line starts on
// until the next line starts. What it leaves behind is only what it changed
// in the voice: the pitch a slide reached (until the next note) and the
// volume a volume slide reached (until the next note or "VO").
//
// A parameter of 0 continues with the channel's last parameter of the same
// effect, except for "NC" (cut at once) and "ND" (no delay). The pitch
// effects (AR, SU, SD, GL, VI) do nothing on the noise channel.

#include <array>
#include <cstdint>

#include "model/module.h"
#include "model/notes.h"
#include "sound/voice.h"

namespace sondrel {

class ChannelEffects {
public:
    // Playback starts: no effect runs and no parameter is remembered.
    void Reset();
    // The channel's effect ends, and a note it held back won't start.
    void Clear(int channel) { running_[channel] = {}; }

    // A line starts on the channel, before its note would start with the
    // cell's instrument for so many ticks. Returns true when the effect takes
    // care of the note: a glide to it, or a delay.
    bool BeginLine(int channel, const PatternLine& cells, Voice& voice, const Instrument& instrument,
                   uint32_t ticks = kPlayForever);

    // One tick of the channel's effect, before the voice's update.
    void Tick(int channel, Voice& voice);

private:
    // A note held back by "ND" until its tick comes.
    struct HeldNote {
        const Instrument* instrument = nullptr;
        uint8_t instrumentIndex = 0;
        uint8_t volume = 0;
        uint8_t note = kNoteEmpty;
        int8_t detune = 0;
        uint32_t ticks = kPlayForever;
    };
    struct Running {
        uint8_t command = kChannelCommandNone;
        uint8_t param = 0;
        uint16_t tick = 0;  // ticks of the line so far
        uint8_t vibratoPos = 0;
        uint8_t arpeggioStep = 0;  // 0..5, a multiple of both step counts
        bool holding = false;
        HeldNote held;
    };

    std::array<Running, kChannels> running_{};
    std::array<std::array<uint8_t, kLastChannelCommand + 1>, kChannels> lastParam_{};
};

}  // namespace sondrel
