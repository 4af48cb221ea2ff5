#pragma once
// The looping output buffer that the audio thread keeps filled: 16384 bytes
// of 44100 Hz 16-bit stereo, played round and round by the sound device while
// a play cursor moves through it. The device behind it lives in the platform
// layer; the sound code only sees this interface.

#include <cstdint>

namespace sondrel {

constexpr uint32_t kSoundBufferBytes = 16384;  // 4096 frames, about 93 ms
constexpr uint32_t kSoundBytesPerFrame = 4;    // 2 channels of 16 bits

// Up to two pieces of the buffer: a locked span that runs past the end wraps
// round to the start.
struct SoundBufferRegions {
    uint8_t* first = nullptr;
    uint32_t firstBytes = 0;
    uint8_t* second = nullptr;
    uint32_t secondBytes = 0;
};

class SoundBuffer {
public:
    virtual ~SoundBuffer() = default;

    // Opens the device with its looping buffer; false leaves the program silent.
    virtual bool Create() = 0;
    // Stops playback and closes the device; Create may follow again.
    virtual void Release() = 0;
    // Starts looping playback.
    virtual bool Play() = 0;
    // The byte offset (0..16383) the device plays next; false when it can't tell.
    virtual bool GetPlayCursor(uint32_t& position) = 0;
    // Gives access to bytes at offset; false when the buffer can't be locked.
    virtual bool Lock(uint32_t offset, uint32_t bytes, SoundBufferRegions& regions) = 0;
    // Hands back what Lock gave, with the lengths actually written.
    virtual void Unlock(const SoundBufferRegions& written) = 0;
};

// Splits `bytes` at `offset` of a looping buffer into its one or two pieces.
inline SoundBufferRegions SplitRegions(uint8_t* buffer, uint32_t size, uint32_t offset, uint32_t bytes) {
    SoundBufferRegions regions;
    offset %= size;
    if (bytes > size) bytes = size;
    regions.first = buffer + offset;
    regions.firstBytes = bytes <= size - offset ? bytes : size - offset;
    if (regions.firstBytes < bytes) {
        regions.second = buffer;
        regions.secondBytes = bytes - regions.firstBytes;
    }
    return regions;
}

}  // namespace sondrel
