#pragma once
// The SN76489 model: three square-wave tone channels, one noise channel and
// the Game Gear stereo register, rendered one player tick at a time into a
// small ring of 44100 Hz 16-bit stereo frames.

#include <array>
#include <cstddef>
#include <cstdint>

#include "model/module.h"

namespace sondrel {

constexpr int kOutputRate = 44100;
constexpr uint32_t kChipRingBytes = 4096;  // 1024 stereo frames
constexpr uint32_t kNtscEmulatedClock = 3584160;
constexpr uint32_t kPalEmulatedClock = 3568200;

class SoundChip {
public:
    SoundChip();

    void Reset();
    void ResetBuffer();
    // isPal selects the 50 Hz tick and PAL clock; divider 1 ("2x") halves the
    // tone counters' rate; the variant picks the family member's noise register,
    // its reading of tone period 0 and which channels the stereo byte reaches.
    void Configure(bool isPal, uint8_t divider, uint8_t variant = kVariantSega);

    // One byte as the chip's data bus takes it: latch bytes (bit 7 set) and data bytes.
    void Write(uint8_t byte);
    void SetAttenuation(int channel, uint8_t value);
    void SetTonePeriod(int channel, uint16_t period);
    void SetStereo(uint8_t value) { stereo_ = value; }
    void BeginTick() { noiseWritten_ = 0; }

    // Renders one tick of frames into the ring at master volume 0..255; bit c
    // of channelMask lets channel c sound.
    void RenderTick(uint8_t master, uint8_t channelMask);
    // The same tick, with each channel also rendered on its own into
    // channels[c] (TickBytes() / 2 samples; zeros when the mask or the
    // channel's attenuation silences it). The ring gets exactly what
    // RenderTick puts there: the four added with 16-bit wrap-around.
    void RenderTick(uint8_t master, uint8_t channelMask, const std::array<int16_t*, 4>& channels);
    // Moves bytes out of the ring; a null destination discards them.
    void Read(void* destination, uint32_t bytes);
    // Like Read, but adds each 16-bit sample to the one already there (wrapping).
    void ReadAdd(void* destination, uint32_t bytes);

    // Register read-back.
    uint16_t TonePeriod(int channel) const { return tonePeriod_[channel]; }
    uint8_t Attenuation(int channel) const { return attenuation_[channel]; }
    uint8_t NoiseWhite() const { return noiseWhite_; }
    uint8_t NoiseRate() const { return noiseRate_; }
    uint16_t NoisePeriod() const { return noisePeriod_; }
    uint8_t Stereo() const { return stereo_; }
    uint8_t NoiseWritten() const { return noiseWritten_; }
    uint8_t Latch() const { return latch_; }
    uint16_t Lfsr() const { return lfsr_; }

    uint32_t Step() const { return step_; }
    uint16_t SamplesPerTick() const { return samplesPerTick_; }
    uint32_t TickBytes() const { return samplesPerTick_ * 4u; }
    uint32_t Fill() const { return fill_; }
    uint32_t WritePos() const { return writePos_; }
    uint32_t ReadPos() const { return readPos_; }
    bool IsNtsc() const { return isNtsc_ != 0; }
    uint8_t Variant() const { return variant_; }
    int16_t ToneLevel(int attenuation) const { return toneLevel_[attenuation]; }
    int16_t NoiseLevel(int attenuation) const { return noiseLevel_[attenuation]; }

private:
    void UpdateLevels(uint8_t master);
    void NoiseControl(uint8_t byte);
    // Returns false when no channel sounded: the frames are then all zero.
    // channels, when given, take each channel's run at frame offset `at`.
    bool RenderRun(int16_t* frames, uint32_t frameCount, uint8_t channelMask,
                   const std::array<int16_t*, 4>* channels, uint32_t at);
    // Adds channel c's run to deltas_ unless it is silent; says whether it sounded.
    bool RenderChannel(int c, uint32_t frameCount, uint8_t channelMask);
    void RenderTickInto(uint8_t master, uint8_t channelMask, const std::array<int16_t*, 4>* channels);
    // These add each level change at the frame where it starts to deltas_;
    // RenderRun sums them into frames once all channels have added theirs.
    void RenderTone(int channel, uint32_t frameCount);
    void RenderNoise(uint32_t frameCount);
    // The ten-bit period a counter reloads with: 0 counts as zeroPeriod_.
    uint32_t EffectivePeriod(uint16_t period) const {
        const uint32_t bits = period & 0x3FFu;
        return bits == 0 ? zeroPeriod_ : bits;
    }
    template <typename Edge>
    int32_t WalkEdges(int32_t counter, int32_t reload, uint32_t frameCount, Edge&& edge) const;
    template <typename CopyPiece>
    void Drain(void* destination, uint32_t bytes, CopyPiece copy);

    alignas(16) std::array<int16_t, kChipRingBytes / 2> ring_{};
    // Per frame and side, the change of the summed output from the frame
    // before; one spare frame past a run's end and room to sum in fours.
    alignas(16) std::array<int16_t, (kChipRingBytes / 4 + 4) * 2> deltas_{};
    uint32_t writePos_ = 0;
    uint32_t readPos_ = 0;
    uint32_t fill_ = 0;
    // How many bytes just before writePos_ are known to be zero; the ring
    // size when all of it is. Silence is then neither written nor mixed.
    uint32_t zeroBytes_ = kChipRingBytes;
    uint32_t step_ = 0;
    uint64_t stepReciprocal_ = 0;  // 2^64 / step_, rounded up: division by a multiply
    uint8_t latch_ = 0;
    uint8_t cachedMaster_ = 255;
    std::array<int16_t, 16> toneLevel_{};
    std::array<int16_t, 16> noiseLevel_{};
    uint16_t lfsr_ = 1;
    uint8_t isNtsc_ = 1;
    uint16_t samplesPerTick_ = 735;
    std::array<uint16_t, 3> tonePeriod_{};
    uint16_t noisePeriod_ = 0;
    std::array<uint8_t, 4> attenuation_{};
    uint8_t noiseWhite_ = 0;
    uint8_t noiseRate_ = 0;
    uint8_t stereo_ = 255;
    uint8_t noiseWritten_ = 0;
    std::array<int32_t, 3> counter_{};
    std::array<uint8_t, 3> polarity_{};
    int32_t noiseCounter_ = 0;
    uint8_t noiseToggle_ = 1;
    // What the variant changes.
    uint8_t variant_ = kVariantSega;
    uint8_t noiseTopBit_ = 15;     // where the feedback enters the noise register
    uint8_t noiseTap_ = 3;         // the bit XORed with bit 0 for white noise
    uint16_t zeroPeriod_ = 0;      // what a period register of 0 counts as
    uint8_t noisePanned_ = 0;      // the stereo byte's bits 7 and 3 reach the noise too
    uint8_t stereoForced_ = 0;     // ORed into the stereo byte: 255 on a chip without stereo
};

}  // namespace sondrel
