#include "sound/sound_chip.h"

#include <algorithm>
#include <cstring>

namespace sondrel {

namespace {

constexpr std::array<int, 16> kBaseLevels = {7590, 5940, 4840, 3850, 3080, 2475, 1980, 1650,
                                             1320, 990,  825,  660,  550,  440,  330,  0};

// Adds value to one frame on the enabled sides, with 16-bit wrap-around.
inline void AddFrame(int16_t* frame, int value, int left, int right) {
    frame[0] = static_cast<int16_t>(frame[0] + value * left);
    frame[1] = static_cast<int16_t>(frame[1] + value * right);
}

// Adds value to count frames on the enabled sides, each case a flat loop
// that compiles to vector adds.
inline void AddSpan(int16_t* frames, uint32_t count, int value, int left, int right) {
    const auto v = static_cast<int16_t>(value);
    if (left && right) {
        for (uint32_t i = 0; i < count * 2; ++i) frames[i] = static_cast<int16_t>(frames[i] + v);
    } else if (left) {
        for (uint32_t i = 0; i < count; ++i) frames[2 * i] = static_cast<int16_t>(frames[2 * i] + v);
    } else if (right) {
        for (uint32_t i = 0; i < count; ++i) frames[2 * i + 1] = static_cast<int16_t>(frames[2 * i + 1] + v);
    }
}

// Frames until the counter expires: the edge falls in the k-th frame from now.
inline uint32_t FramesToEdge(int32_t counter, int32_t step) {
    if (counter <= 0) return 1;
    return (static_cast<uint32_t>(counter) + static_cast<uint32_t>(step) - 1) / static_cast<uint32_t>(step);
}

}  // namespace

SoundChip::SoundChip() {
    Configure(false, 0);
    Reset();
    ResetBuffer();
}

void SoundChip::Reset() {
    counter_.fill(0);
    polarity_.fill(0);
    noiseCounter_ = 0;
    noiseToggle_ = 1;
    lfsr_ = 1;
    latch_ = 0;
    tonePeriod_.fill(0);
    attenuation_.fill(15);
    noiseWhite_ = 0;
    noiseRate_ = 0;
    stereo_ = 255;
    noiseWritten_ = 0;
}

void SoundChip::ResetBuffer() {
    cachedMaster_ = 255;
    writePos_ = 0;
    readPos_ = 0;
    fill_ = 0;
}

void SoundChip::Configure(bool isPal, uint8_t divider) {
    isNtsc_ = isPal ? 0 : 1;
    samplesPerTick_ = isPal ? 882 : 735;
    const double clock = isPal ? kPalEmulatedClock : kNtscEmulatedClock;
    step_ = static_cast<uint32_t>(clock * 0.25 * 0.25 / 44100.0 * 65536.0);
    if (divider == 1) step_ >>= 1;
}

void SoundChip::NoiseControl(uint8_t byte) {
    noiseRate_ = byte & 3;
    noisePeriod_ = noiseRate_ == 3 ? tonePeriod_[2] : static_cast<uint16_t>(1u << (noiseRate_ + 4));
    noiseWhite_ = (byte >> 2) & 1;
    noiseWritten_ = 1;
}

void SoundChip::Write(uint8_t byte) {
    if (byte & 0x80) {
        const int channel = (byte >> 5) & 3;
        if (byte & 0x10) {
            attenuation_[channel] = byte & 15;
            latch_ = static_cast<uint8_t>(channel * 4);
            return;
        }
        latch_ = static_cast<uint8_t>(channel * 4 + 1);
        if (channel == 3) {
            NoiseControl(byte);
            return;
        }
        tonePeriod_[channel] = static_cast<uint16_t>((tonePeriod_[channel] & 0x3F0) | (byte & 15));
    } else {
        const int channel = latch_ >> 2;
        if ((latch_ & 1) == 0) {
            attenuation_[channel] = byte & 15;
            return;
        }
        if (channel == 3) {
            NoiseControl(byte);
            return;
        }
        tonePeriod_[channel] = static_cast<uint16_t>(((byte & 63) << 4) | (tonePeriod_[channel] & 15));
    }
    // Noise at the rate of tone channel 2 follows every write of that period.
    if (latch_ == 2 * 4 + 1 && noiseRate_ == 3) noisePeriod_ = tonePeriod_[2];
}

void SoundChip::SetAttenuation(int channel, uint8_t value) {
    attenuation_[channel & 3] = value & 15;  // the register holds four bits
}

void SoundChip::SetTonePeriod(int channel, uint16_t period) {
    tonePeriod_[channel] = period;
}

void SoundChip::UpdateLevels(uint8_t master) {
    if (master == cachedMaster_) return;
    for (int i = 0; i < 16; ++i) {
        toneLevel_[i] = static_cast<int16_t>(kBaseLevels[i] * master / 160);
        noiseLevel_[i] = static_cast<int16_t>(kBaseLevels[i] * master / 80);
    }
    cachedMaster_ = master;
}

void SoundChip::RenderTick(uint8_t master, uint8_t channelMask) {
    if (noiseWritten_) lfsr_ = 1;

    const uint32_t bytes = TickBytes();
    if (fill_ >= kChipRingBytes - bytes) {
        // No room: the newest unread tick makes way for this one.
        const uint32_t dropped = std::min(bytes, fill_);
        writePos_ = (writePos_ - dropped) % kChipRingBytes;
        fill_ -= dropped;
    }

    UpdateLevels(master);
    uint32_t left = bytes;
    while (left > 0) {
        const uint32_t run = std::min(left, kChipRingBytes - writePos_);
        int16_t* frames = ring_.data() + writePos_ / 2;
        std::memset(frames, 0, run);
        RenderRun(frames, run / 4, channelMask);
        writePos_ = (writePos_ + run) % kChipRingBytes;
        fill_ += run;
        left -= run;
    }
}

void SoundChip::RenderRun(int16_t* frames, uint32_t frameCount, uint8_t channelMask) {
    if (frameCount == 0) return;
    for (int c = 0; c < 3; ++c) {
        if (attenuation_[c] == 15 || !(channelMask & (1 << c))) continue;
        RenderTone(c, frames, frameCount);
    }
    if ((channelMask & 8) && attenuation_[3] != 15) RenderNoise(frames, frameCount);
}

void SoundChip::RenderTone(int c, int16_t* frames, uint32_t frameCount) {
    const uint32_t period = tonePeriod_[c] & 0x3FF;  // the period register is ten bits wide
    if (period < 4) {
        // Too fast to be heard as a tone: the output sits at a constant level.
        // The level follows the noise channel's stereo bits, as the chip tracker always did.
        AddSpan(frames, frameCount, toneLevel_[attenuation_[c]], (stereo_ >> 7) & 1, (stereo_ >> 3) & 1);
        return;
    }
    const int left = (stereo_ >> (4 + c)) & 1;
    const int right = (stereo_ >> c) & 1;
    const int32_t step = static_cast<int32_t>(step_);
    const int32_t reload = static_cast<int32_t>(period << 16);
    int amp = polarity_[c] ? -toneLevel_[attenuation_[c]] : toneLevel_[attenuation_[c]];
    int value = amp >> 2;  // each run starts softened
    int32_t counter = counter_[c];

    uint32_t i = 0;
    while (i < frameCount) {
        const uint32_t k = FramesToEdge(counter, step);
        if (k > frameCount - i) {
            AddFrame(frames + 2 * i, value, left, right);
            AddSpan(frames + 2 * (i + 1), frameCount - i - 1, amp, left, right);
            counter -= static_cast<int32_t>(frameCount - i) * step;
            break;
        }
        AddFrame(frames + 2 * i, value, left, right);
        AddSpan(frames + 2 * (i + 1), k - 1, amp, left, right);
        counter -= static_cast<int32_t>(k) * step;
        // The frame after an edge carries the edge's position within its frame.
        const uint32_t frac = (static_cast<uint32_t>(-counter) * 256u) / static_cast<uint32_t>(step);
        value = ((128 - static_cast<int>(frac)) * amp) >> 7;
        int reloads = 0;
        do {
            counter += reload;
            ++reloads;
        } while (counter <= 0);
        if (reloads & 1) {
            amp = -amp;
            polarity_[c] ^= 1;
        }
        i += k;
    }
    counter_[c] = counter;
}

void SoundChip::RenderNoise(int16_t* frames, uint32_t frameCount) {
    const uint32_t period = noisePeriod_ & 0x3FF;
    if (period < 4) return;
    const int level = noiseLevel_[attenuation_[3]];
    const int32_t step = static_cast<int32_t>(step_);
    const int32_t reload = static_cast<int32_t>(period << 16);
    int value = level >> 2;  // until the run's first edge
    int32_t counter = noiseCounter_;

    uint32_t i = 0;
    while (i < frameCount) {
        const uint32_t k = FramesToEdge(counter, step);
        if (k > frameCount - i) {
            AddSpan(frames + 2 * i, frameCount - i, value, 1, 1);
            counter -= static_cast<int32_t>(frameCount - i) * step;
            break;
        }
        AddSpan(frames + 2 * i, k, value, 1, 1);
        counter -= static_cast<int32_t>(k) * step;
        if (noiseToggle_) {
            const unsigned feedback = noiseWhite_ ? ((lfsr_ ^ (lfsr_ >> 3)) & 1) : (lfsr_ & 1);
            lfsr_ = static_cast<uint16_t>((lfsr_ >> 1) | (feedback << 15));
        }
        int reloads = 0;
        do {
            counter += reload;
            ++reloads;
        } while (counter <= 0);
        if (reloads & 1) noiseToggle_ ^= 1;
        value = (lfsr_ & 1) * level;
        i += k;
    }
    noiseCounter_ = counter;
}

template <typename CopyPiece>
void SoundChip::Drain(void* destination, uint32_t bytes, CopyPiece copy) {
    auto* out = static_cast<uint8_t*>(destination);
    const auto* ring = reinterpret_cast<const uint8_t*>(ring_.data());
    uint32_t left = bytes;
    while (left > 0) {
        // One piece up to the ring's end, then the rest from its start.
        const uint32_t piece = std::min(left, kChipRingBytes - readPos_);
        if (out) {
            copy(out, ring + readPos_, piece);
            out += piece;
        }
        readPos_ = (readPos_ + piece) % kChipRingBytes;
        left -= piece;
    }
    fill_ -= std::min(bytes, fill_);
}

void SoundChip::Read(void* destination, uint32_t bytes) {
    Drain(destination, bytes, [](uint8_t* out, const uint8_t* in, uint32_t n) { std::memcpy(out, in, n); });
}

void SoundChip::ReadAdd(void* destination, uint32_t bytes) {
    Drain(destination, bytes, [](uint8_t* out, const uint8_t* in, uint32_t n) {
        for (uint32_t i = 0; i + 1 < n; i += 2) {
            int16_t mine;
            int16_t theirs;
            std::memcpy(&mine, in + i, 2);
            std::memcpy(&theirs, out + i, 2);
            theirs = static_cast<int16_t>(theirs + mine);
            std::memcpy(out + i, &theirs, 2);
        }
    });
}

}  // namespace sondrel
