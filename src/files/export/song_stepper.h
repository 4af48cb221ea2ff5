#pragma once
// Runs a module's song from its start one frame (one player tick) at a time
// for the exporters, without sound: after each step it reports what the frame
// left in the chip's registers and in the four voices.

#include <cstdint>
#include <memory>

#include "model/module.h"
#include "sound/song_player.h"

namespace sondrel {

// What one chip channel did in the last frame.
struct ChannelFrame {
    bool triggered = false;    // a cell started a note on the channel this frame
    bool notePresent = false;  // ... and the channel plays it as a pitched tone or noise note
    uint8_t note = 255;        // the cell's note value
    uint8_t instrument = 0;
    bool sounding = false;     // the channel is audible
    uint8_t level = 0;         // 0..15, 15 loudest
};

class SongStepper {
public:
    // Attaches a player of its own to the module and starts it at list position 0, line 0.
    explicit SongStepper(Module& module);

    // Back to the start of the song at the module's initial speed.
    void Restart();
    void Step();
    // True after the frame in which the pattern list ran out.
    bool Ended() const { return player_->wrapped != 0 || !player_->Playing(); }
    uint16_t ListPosition() const { return player_->ListPosition(); }

    const SoundChip& Chip() const { return player_->Chip(); }
    ChannelFrame Channel(int channel) const;
    // The MIDI note number that sounds the tone note of a tone channel.
    uint8_t MidiNote(int channel) const;

private:
    Module& module_;
    std::unique_ptr<SongPlayer> player_;
};

}  // namespace sondrel
