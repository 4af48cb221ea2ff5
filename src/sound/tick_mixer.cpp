#include "sound/tick_mixer.h"

#include "sound/song_player.h"

namespace sondrel {

uint32_t TickMixer::RenderTick(uint8_t master) { return RenderTickInto(master, nullptr); }

uint32_t TickMixer::RenderTick(uint8_t master, const std::array<int16_t*, 4>& channels) {
    return RenderTickInto(master, &channels);
}

uint32_t TickMixer::RenderTickInto(uint8_t master, const std::array<int16_t*, 4>* channels) {
    song_.Tick();
    notes_.Tick();
    notes_.Chip().RenderTick(master, 0xFF);
    const uint8_t mask = song_.GetChannelMask();
    const auto chipMask = static_cast<uint8_t>(mask | (mask << 4));
    if (channels)
        song_.Chip().RenderTick(master, chipMask, *channels);
    else
        song_.Chip().RenderTick(master, chipMask);
    return song_.Chip().TickBytes();
}

void TickMixer::Take(void* destination, uint32_t bytes) {
    song_.Chip().Read(destination, bytes);
    notes_.Chip().ReadAdd(destination, bytes);
}

void TickMixer::Discard(uint32_t bytes) {
    song_.Chip().Read(nullptr, bytes);
    notes_.Chip().Read(nullptr, bytes);
}

}  // namespace sondrel
