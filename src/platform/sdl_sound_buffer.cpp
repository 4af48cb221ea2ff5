#include "platform/sdl_sound_buffer.h"

#include <SDL.h>

#include <algorithm>
#include <chrono>
#include <cstring>

namespace sondrel {

namespace {

// Frames the device asks for at a time: 2048 bytes, well inside the gap the
// audio thread keeps between its writing and the play cursor.
constexpr Uint16 kDeviceFrames = 512;
constexpr int kSampleRate = 44100;
constexpr uint32_t kFrameBytes = 4;

bool IsDummyDriver() {
    const char* driver = SDL_GetCurrentAudioDriver();
    return driver && std::strcmp(driver, "dummy") == 0;
}

}  // namespace

SdlSoundBuffer::~SdlSoundBuffer() { Release(); }

bool SdlSoundBuffer::Create() {
    Release();
    if (!SDL_WasInit(SDL_INIT_AUDIO)) {
        if (SDL_InitSubSystem(SDL_INIT_AUDIO) == 0) startedAudio_ = true;
    }
    if (SDL_GetCurrentAudioDriver() && OpenDevice()) return true;

    // No sound card (or none that opens): play into SDL's silent dummy
    // driver, so the song still runs at its real speed.
    Release();
    if (SDL_AudioInit("dummy") != 0) return false;
    startedDummy_ = true;
    if (OpenDevice()) return true;
    Release();
    return false;
}

bool SdlSoundBuffer::OpenDevice() {
    SDL_AudioSpec wanted{};
    wanted.freq = kSampleRate;
    wanted.format = AUDIO_S16SYS;
    wanted.channels = 2;
    wanted.samples = kDeviceFrames;
    wanted.callback = &SdlSoundBuffer::Callback;
    wanted.userdata = this;
    SDL_AudioSpec obtained{};
    device_ = SDL_OpenAudioDevice(nullptr, 0, &wanted, &obtained, 0);
    if (device_ == 0) return false;
    silent_ = IsDummyDriver();
    data_.fill(0);
    playCursor_ = 0;
    return true;
}

bool SdlSoundBuffer::IsSilent() const { return device_ != 0 && silent_; }

void SdlSoundBuffer::Release() {
    if (device_) {
        if (locked_) SDL_UnlockAudioDevice(device_);
        locked_ = false;
        SDL_CloseAudioDevice(device_);
        device_ = 0;
    }
    if (startedDummy_) {
        SDL_AudioQuit();
        startedDummy_ = false;
    }
    if (startedAudio_) {
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
        startedAudio_ = false;
    }
    silent_ = false;
}

bool SdlSoundBuffer::Play() {
    if (!device_) return false;
    playStart_ = std::chrono::steady_clock::now();
    SDL_PauseAudioDevice(device_, 0);
    return true;
}

bool SdlSoundBuffer::GetPlayCursor(uint32_t& position) {
    if (!device_) return false;
    position = playCursor_.load();
    return true;
}

bool SdlSoundBuffer::Lock(uint32_t offset, uint32_t bytes, SoundBufferRegions& regions) {
    if (!device_ || locked_) return false;
    SDL_LockAudioDevice(device_);
    locked_ = true;
    regions = SplitRegions(data_.data(), kSoundBufferBytes, offset, bytes);
    return true;
}

void SdlSoundBuffer::Unlock(const SoundBufferRegions&) {
    if (!locked_) return;
    locked_ = false;
    SDL_UnlockAudioDevice(device_);
}

void SdlSoundBuffer::Callback(void* self, uint8_t* stream, int length) {
    auto& buffer = *static_cast<SdlSoundBuffer*>(self);
    if (buffer.silent_) {
        // The dummy driver calls about as often as a card would, but its
        // sleeps drift; the cursor follows the clock instead, so it moves at
        // exactly 44100 frames a second.
        const auto elapsed = std::chrono::steady_clock::now() - buffer.playStart_;
        const auto frames = std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed).count() * kSampleRate /
                            1'000'000'000;
        buffer.playCursor_.store(static_cast<uint32_t>(frames * kFrameBytes % kSoundBufferBytes));
        return;
    }
    uint32_t cursor = buffer.playCursor_.load();
    auto left = static_cast<uint32_t>(length);
    while (left > 0) {
        const uint32_t piece = std::min(left, kSoundBufferBytes - cursor);
        std::memcpy(stream, buffer.data_.data() + cursor, piece);
        stream += piece;
        left -= piece;
        cursor = (cursor + piece) % kSoundBufferBytes;
    }
    buffer.playCursor_.store(cursor);
}

}  // namespace sondrel
