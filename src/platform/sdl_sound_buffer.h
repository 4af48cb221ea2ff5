#pragma once
// The looping sound buffer on an SDL audio device (44100 Hz, 16-bit stereo):
// the device's callback plays the buffer round and round and moves the play
// cursor on. With no device, or the dummy audio driver, Create fails and the
// program stays silent.

#include <array>
#include <atomic>
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

private:
    static void Callback(void* self, uint8_t* stream, int length);

    uint32_t device_ = 0;
    bool startedAudio_ = false;
    bool locked_ = false;
    std::atomic<uint32_t> playCursor_{0};
    std::array<uint8_t, kSoundBufferBytes> data_{};
};

}  // namespace sondrel
