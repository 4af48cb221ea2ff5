#include "sound/sound_chip.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace sondrel {

namespace {

constexpr std::array<int, 16> kBaseLevels = {7590, 5940, 4840, 3850, 3080, 2475, 1980, 1650,
                                             1320, 990,  825,  660,  550,  440,  330,  0};

__extension__ using Wide = unsigned __int128;

// n / d by a multiply with reciprocal = floor(2^64 / d) + 1: exact for every n
// and d below 2^32, as the rounding error stays under 1 / d.
inline uint32_t DivideBy(uint32_t n, uint64_t reciprocal) {
    return static_cast<uint32_t>((static_cast<Wide>(n) * reciprocal) >> 64);
}

// One channel's output through a run, kept as changes: Set(frame, value)
// makes the channel's output value from that frame on, on its enabled sides.
struct DeltaWriter {
    int16_t* deltas;
    int left;
    int right;
    int current = 0;

    void Set(uint32_t frame, int value) {
        const int change = value - current;
        current = value;
        deltas[2 * frame] = static_cast<int16_t>(deltas[2 * frame] + change * left);
        deltas[2 * frame + 1] = static_cast<int16_t>(deltas[2 * frame + 1] + change * right);
    }
};

// frames[i] = deltas[0] + ... + deltas[i] on each side, with 16-bit
// wrap-around, which makes it the wrapped sum of every channel's output.
// The deltas are left zero, up to and including the spare frame past the end.
void SumDeltas(int16_t* deltas, int16_t* frames, uint32_t frameCount) {
    int left = 0;
    int right = 0;
    uint32_t i = 0;
#if defined(__SSE2__)
    // Four frames at a time: each group's running sum on its own, then the
    // total of the groups before it added.
    __m128i carry = _mm_setzero_si128();
    for (; i + 4 <= frameCount; i += 4) {
        auto* at = reinterpret_cast<__m128i*>(deltas + 2 * i);
        __m128i x = _mm_load_si128(at);
        _mm_store_si128(at, _mm_setzero_si128());
        x = _mm_add_epi16(x, _mm_slli_si128(x, 4));
        x = _mm_add_epi16(x, _mm_slli_si128(x, 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(frames + 2 * i), _mm_add_epi16(x, carry));
        carry = _mm_add_epi16(carry, _mm_shuffle_epi32(x, 0xFF));
    }
    left = _mm_extract_epi16(carry, 0);
    right = _mm_extract_epi16(carry, 1);
#endif
    for (; i < frameCount; ++i) {
        left += deltas[2 * i];
        right += deltas[2 * i + 1];
        frames[2 * i] = static_cast<int16_t>(left);
        frames[2 * i + 1] = static_cast<int16_t>(right);
        deltas[2 * i] = deltas[2 * i + 1] = 0;
    }
    deltas[2 * frameCount] = deltas[2 * frameCount + 1] = 0;
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
    if (zeroBytes_ < kChipRingBytes) zeroBytes_ = 0;
}

void SoundChip::Configure(bool isPal, uint8_t divider, uint8_t variant) {
    variant_ = variant;
    const bool ti = variant == kVariantTi;
    noiseTopBit_ = ti ? 14 : 15;
    noiseTap_ = ti ? 1 : 3;
    zeroPeriod_ = ti ? 1024 : 0;
    noisePanned_ = variant == kVariantGameGear ? 1 : 0;
    stereoForced_ = ti ? 255 : 0;
    isNtsc_ = isPal ? 0 : 1;
    samplesPerTick_ = isPal ? 882 : 735;
    const double clock = isPal ? kPalEmulatedClock : kNtscEmulatedClock;
    step_ = static_cast<uint32_t>(clock * 0.25 * 0.25 / 44100.0 * 65536.0);
    if (divider == 1) step_ >>= 1;
    stepReciprocal_ = UINT64_MAX / step_ + 1;  // step_ is far above 1
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

void SoundChip::RenderTick(uint8_t master, uint8_t channelMask) { RenderTickInto(master, channelMask, nullptr); }

void SoundChip::RenderTick(uint8_t master, uint8_t channelMask, const std::array<int16_t*, 4>& channels) {
    RenderTickInto(master, channelMask, &channels);
}

void SoundChip::RenderTickInto(uint8_t master, uint8_t channelMask, const std::array<int16_t*, 4>* channels) {
    if (noiseWritten_) lfsr_ = 1;

    const uint32_t bytes = TickBytes();
    if (fill_ >= kChipRingBytes - bytes) {
        // No room: the newest unread tick makes way for this one.
        const uint32_t dropped = std::min(bytes, fill_);
        writePos_ = (writePos_ - dropped) % kChipRingBytes;
        fill_ -= dropped;
        if (zeroBytes_ < kChipRingBytes) zeroBytes_ -= std::min(dropped, zeroBytes_);
    }

    UpdateLevels(master);
    uint32_t left = bytes;
    while (left > 0) {
        const uint32_t run = std::min(left, kChipRingBytes - writePos_);
        int16_t* frames = ring_.data() + writePos_ / 2;
        const bool sounded = RenderRun(frames, run / 4, channelMask, channels, (bytes - left) / 4);
        zeroBytes_ = sounded ? 0 : std::min(zeroBytes_ + run, kChipRingBytes);
        writePos_ = (writePos_ + run) % kChipRingBytes;
        fill_ += run;
        left -= run;
    }
}

// A channel's counter loses step_ each frame; in the frame where it is no
// longer above 0 an edge falls, and the counter gains reload until it is.
// For each edge within frameCount frames, edge(frame, atEdge, reloads) is
// called with the first frame after the edge (frameCount when it fell in the
// last one) and the counter before the reloads. Returns the counter at the end.
template <typename Edge>
int32_t SoundChip::WalkEdges(int32_t counter, int32_t reload, uint32_t frameCount, Edge&& edge) const {
    const auto step = static_cast<int32_t>(step_);
    uint32_t i = 0;
    for (;;) {
        // Frames until the counter runs out: the edge falls in the k-th frame from now.
        const uint32_t k =
            counter <= 0 ? 1 : DivideBy(static_cast<uint32_t>(counter) + step_ - 1, stepReciprocal_);
        if (k > frameCount - i) return counter - static_cast<int32_t>(frameCount - i) * step;
        counter -= static_cast<int32_t>(k) * step;
        i += k;
        if (counter > -step && reload >= step) break;
        const int32_t atEdge = counter;
        int reloads = 0;
        do {
            counter += reload;
            ++reloads;
        } while (counter <= 0);
        edge(i, atEdge, reloads);
        if (i >= frameCount) return counter;
    }
    // From here each edge takes one reload, and the next edge comes after
    // reload / step frames or one more, as the remainders add up.
    const uint32_t whole = DivideBy(static_cast<uint32_t>(reload), stepReciprocal_);
    const int32_t rest = reload - static_cast<int32_t>(whole) * step;
    int32_t atEdge = counter;
    for (;;) {
        edge(i, atEdge, 1);
        if (i >= frameCount) return atEdge + reload;
        int32_t next = atEdge + rest;
        uint32_t gap = whole;
        if (next > 0) {
            ++gap;
            next -= step;
        }
        if (gap > frameCount - i) return atEdge + reload - static_cast<int32_t>(frameCount - i) * step;
        atEdge = next;
        i += gap;
    }
}

bool SoundChip::RenderChannel(int c, uint32_t frameCount, uint8_t channelMask) {
    if (!(channelMask & (1 << c)) || attenuation_[c] == 15) return false;
    if (c < 3) {
        RenderTone(c, frameCount);
        return true;
    }
    if (EffectivePeriod(noisePeriod_) < 4) return false;
    RenderNoise(frameCount);
    return true;
}

bool SoundChip::RenderRun(int16_t* frames, uint32_t frameCount, uint8_t channelMask,
                          const std::array<int16_t*, 4>* channels, uint32_t at) {
    if (frameCount == 0) return false;
    // The deltas are all zero between runs.
    bool sounding = false;
    if (!channels) {
        for (int c = 0; c < 4; ++c) sounding = RenderChannel(c, frameCount, channelMask) || sounding;
        if (sounding) SumDeltas(deltas_.data(), frames, frameCount);
    } else {
        // Each channel summed on its own, then added into the mix: the
        // deltas add up with wrap-around, so this is the sum RenderTick makes.
        const uint32_t samples = frameCount * 2;
        for (int c = 0; c < 4; ++c) {
            int16_t* own = (*channels)[c] + 2 * at;
            if (!RenderChannel(c, frameCount, channelMask)) {
                std::memset(own, 0, samples * 2);
                continue;
            }
            SumDeltas(deltas_.data(), own, frameCount);
            if (!sounding) {
                std::memcpy(frames, own, samples * 2);
            } else {
                for (uint32_t i = 0; i < samples; ++i)
                    frames[i] = static_cast<int16_t>(static_cast<uint16_t>(frames[i]) + static_cast<uint16_t>(own[i]));
            }
            sounding = true;
        }
    }
    if (!sounding && zeroBytes_ < kChipRingBytes) std::memset(frames, 0, frameCount * 4);
    return sounding;
}

void SoundChip::RenderTone(int c, uint32_t frameCount) {
    const uint32_t period = EffectivePeriod(tonePeriod_[c]);
    const unsigned stereo = stereo_ | stereoForced_;
    if (period < 4) {
        // Too fast to be heard as a tone: the output sits at a constant level.
        // The level follows the noise channel's stereo bits, as the chip tracker always did.
        DeltaWriter out{deltas_.data(), static_cast<int>(stereo >> 7) & 1, static_cast<int>(stereo >> 3) & 1};
        out.Set(0, toneLevel_[attenuation_[c]]);
        return;
    }
    DeltaWriter out{deltas_.data(), static_cast<int>(stereo >> (4 + c)) & 1, static_cast<int>(stereo >> c) & 1};
    unsigned polarity = polarity_[c];  // a local: stores to the deltas could alias the member
    int amp = polarity ? -toneLevel_[attenuation_[c]] : toneLevel_[attenuation_[c]];
    out.Set(0, amp >> 2);  // each run starts softened
    out.Set(1, amp);
    counter_[c] = WalkEdges(counter_[c], static_cast<int32_t>(period << 16), frameCount,
                            [&](uint32_t frame, int32_t atEdge, int reloads) {
        // The frame after an edge carries the edge's position within its frame,
        // then the level holds until the next edge.
        const uint32_t frac = DivideBy(static_cast<uint32_t>(-atEdge) * 256u, stepReciprocal_);
        const int value = ((128 - static_cast<int>(frac)) * amp) >> 7;
        if (reloads & 1) {
            amp = -amp;
            polarity ^= 1;
        }
        if (frame < frameCount) {
            out.Set(frame, value);
            out.Set(frame + 1, amp);
        }
    });
    polarity_[c] = static_cast<uint8_t>(polarity);
}

void SoundChip::RenderNoise(uint32_t frameCount) {
    const int level = noiseLevel_[attenuation_[3]];
    const unsigned stereo = noisePanned_ ? stereo_ : 255u;
    DeltaWriter out{deltas_.data(), static_cast<int>(stereo >> 7) & 1, static_cast<int>(stereo >> 3) & 1};
    out.Set(0, level >> 2);  // until the run's first edge
    // Kept in locals: stores to the deltas could otherwise alias them.
    unsigned lfsr = lfsr_;
    unsigned toggle = noiseToggle_;
    const unsigned white = noiseWhite_ ? 1 : 0;
    const unsigned tap = noiseTap_;
    const unsigned top = noiseTopBit_;
    const auto shift = [&] { lfsr = (lfsr >> 1) | (((lfsr ^ ((lfsr >> tap) & white)) & 1) << top); };
    const auto output = [&] { return static_cast<int>(lfsr & 1) * level; };
    const auto reload = static_cast<int32_t>(EffectivePeriod(noisePeriod_) << 16);

    if (reload <= static_cast<int32_t>(step_)) {
        // An edge may take several reloads; the toggle flips with each.
        noiseCounter_ = WalkEdges(noiseCounter_, reload, frameCount, [&](uint32_t frame, int32_t, int reloads) {
            if (toggle) shift();
            toggle ^= static_cast<unsigned>(reloads & 1);
            if (frame < frameCount) out.Set(frame, output());
        });
    } else {
        // Each edge takes one reload, so the toggle alternates and only every
        // other edge shifts. The shifting edges fall where a counter reloaded
        // with twice the period runs out; the others change nothing but for
        // a first one, which ends the softened start.
        int32_t counter = noiseCounter_;
        const bool waiting = toggle == 0;
        if (waiting) {
            const uint32_t k =
                counter <= 0 ? 1 : DivideBy(static_cast<uint32_t>(counter) + step_ - 1, stepReciprocal_);
            if (k < frameCount) out.Set(k, output());
            counter += reload;
        }
        bool shifted = false;
        counter = WalkEdges(counter, 2 * reload, frameCount, [&](uint32_t frame, int32_t, int) {
            shift();
            shifted = true;
            if (frame < frameCount) out.Set(frame, output());
        });
        // Back to one reload an edge: the edge after the last shift may still be to come.
        if ((waiting || shifted) && counter > reload) {
            counter -= reload;
            toggle = 0;
        } else {
            toggle = 1;
        }
        noiseCounter_ = counter;
    }
    lfsr_ = static_cast<uint16_t>(lfsr);
    noiseToggle_ = static_cast<uint8_t>(toggle);
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
    if (bytes <= fill_ && fill_ <= zeroBytes_) {
        Read(nullptr, bytes);  // adding zeros changes nothing
        return;
    }
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
