#pragma once
// One tick of output from the two players: both tick, both chips render, and
// the note player's samples are mixed onto the song's. The audio thread and
// the offline renderer share these rules.

#include <array>
#include <cstdint>

namespace sondrel {

class SongPlayer;
class NotePlayer;

// The volume preference 0..100 as the chips' master volume 0..120.
constexpr uint8_t MasterFromVolume(int volumePreference) {
    return static_cast<uint8_t>(volumePreference * 120 / 100);
}

class TickMixer {
public:
    TickMixer(SongPlayer& song, NotePlayer& notes) : song_(song), notes_(notes) {}

    // Advances both players by one tick and renders it; returns the bytes now waiting.
    uint32_t RenderTick(uint8_t master);
    // The same, with each song channel also rendered on its own into
    // channels[c] (SoundChip::RenderTick); the ring's mix is unchanged.
    uint32_t RenderTick(uint8_t master, const std::array<int16_t*, 4>& channels);
    // Copies the song's samples with the note player's added; both rings move alike.
    void Take(void* destination, uint32_t bytes);
    // Drops bytes from both rings.
    void Discard(uint32_t bytes);

private:
    uint32_t RenderTickInto(uint8_t master, const std::array<int16_t*, 4>* channels);

    SongPlayer& song_;
    NotePlayer& notes_;
};

}  // namespace sondrel
