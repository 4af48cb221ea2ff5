#pragma once
// The looping sound buffer on an SDL audio device (44100 Hz, 16-bit stereo):
// the device's callback plays the buffer round and round and moves the play
// cursor on. When no sound card opens, or SDL_AUDIODRIVER=dummy asks for it,
// the buffer plays silently into SDL's dummy driver, its cursor still moving
// at the real rate, so playback runs exactly as with speakers.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>

#include "sound/sound_buffer.h"

namespace sondrel {

class SdlSoundBuffer : public SoundBuffer {
public:
    SdlSoundBuffer() = default;
    ~SdlSoundBuffer() override;
    SdlSoundBuffer(const SdlSoundBuffer&) = delete;
    SdlSoundBuffer& operator=(const SdlSoundBuffer&) = delete;

    bool Create() override;
    void Release() override;
    bool Play() override;
    bool GetPlayCursor(uint32_t& position) override;
    // Holds the device's lock until Unlock, so the callback never reads a
    // piece while it is written.
    bool Lock(uint32_t offset, uint32_t bytes, SoundBufferRegions& regions) override;
    void Unlock(const SoundBufferRegions& written) override;

    // Whether the open device is SDL's dummy driver (nothing is heard).
    bool IsSilent() const;

private:
    bool OpenDevice();
    static void Callback(void* self, uint8_t* stream, int length);

    uint32_t device_ = 0;
    bool startedAudio_ = false;
    bool startedDummy_ = false;
    bool silent_ = false;
    bool locked_ = false;
    std::chrono::steady_clock::time_point playStart_{};
    std::atomic<uint32_t> playCursor_{0};
    std::array<uint8_t, kSoundBufferBytes> data_{};
};

}  // namespace sondrel
