#include <gtest/gtest.h>

#include <random>
#include <tuple>
#include <vector>

#include "sound/sound_chip.h"

namespace sondrel {
namespace {

constexpr int kBase[16] = {7590, 5940, 4840, 3850, 3080, 2475, 1980, 1650,
                           1320, 990,  825,  660,  550,  440,  330,  0};

// A frame-by-frame model of the chip's output, written as plainly as the
// hardware behaves, against which the span renderer is checked bit for bit.
// It reads the registers from the chip under test and keeps its own counters.
struct ReferenceChip {
    int variant = kVariantSega;
    int32_t counter[3] = {0, 0, 0};
    int polarity[3] = {0, 0, 0};
    int32_t noiseCounter = 0;
    int noiseToggle = 1;
    uint16_t lfsr = 1;

    std::vector<int16_t> RenderTick(const SoundChip& chip, int master, uint8_t mask) {
        if (chip.NoiseWritten()) lfsr = 1;
        const uint32_t bytes = chip.TickBytes();
        uint32_t pos = chip.Fill() >= kChipRingBytes - bytes ? 0 : chip.WritePos();
        std::vector<int16_t> out(bytes / 2, 0);
        uint32_t done = 0;
        while (done < bytes) {
            uint32_t run = std::min(bytes - done, kChipRingBytes - pos);
            RenderRun(chip, master, mask, out.data() + done / 2, run / 4);
            done += run;
            pos = (pos + run) % kChipRingBytes;
        }
        return out;
    }

    void RenderRun(const SoundChip& chip, int master, uint8_t mask, int16_t* f, uint32_t frames) {
        const int32_t step = static_cast<int32_t>(chip.Step());
        const bool ti = variant == kVariantTi;
        // The TI parts have no stereo register and count a period of 0 as 1024.
        const int stereo = ti ? 255 : chip.Stereo();
        const auto period = [&](int bits) { return (bits & 0x3FF) == 0 && ti ? 1024 : bits & 0x3FF; };
        for (int c = 0; c < 3; ++c) {
            int att = chip.Attenuation(c);
            if (att == 15 || !(mask & (1 << c)) || frames == 0) continue;
            int level = kBase[att] * master / 160;
            int32_t p = period(chip.TonePeriod(c));
            if (p < 4) {
                for (uint32_t i = 0; i < frames; ++i) {
                    if (stereo & 0x80) f[2 * i] = static_cast<int16_t>(f[2 * i] + level);
                    if (stereo & 0x08) f[2 * i + 1] = static_cast<int16_t>(f[2 * i + 1] + level);
                }
                continue;
            }
            int amp = polarity[c] ? -level : level;
            int value = amp >> 2;
            for (uint32_t i = 0; i < frames; ++i) {
                if (stereo & (1 << (4 + c))) f[2 * i] = static_cast<int16_t>(f[2 * i] + value);
                if (stereo & (1 << c)) f[2 * i + 1] = static_cast<int16_t>(f[2 * i + 1] + value);
                value = amp;
                counter[c] -= step;
                if (counter[c] <= 0) {
                    uint32_t frac = (static_cast<uint32_t>(-counter[c]) * 256u) / static_cast<uint32_t>(step);
                    value = ((128 - static_cast<int>(frac)) * amp) >> 7;
                    int n = 0;
                    while (counter[c] <= 0) {
                        counter[c] += p << 16;
                        ++n;
                    }
                    if (n & 1) {
                        amp = -amp;
                        polarity[c] ^= 1;
                    }
                }
            }
        }
        int att = chip.Attenuation(3);
        int32_t p = period(chip.NoisePeriod());
        if (!(mask & 8) || att == 15 || p < 4) return;
        int level = kBase[att] * master / 80;
        int value = level >> 2;
        // Only the Game Gear pans the noise.
        const int noiseStereo = variant == kVariantGameGear ? stereo : 255;
        for (uint32_t i = 0; i < frames; ++i) {
            if (noiseStereo & 0x80) f[2 * i] = static_cast<int16_t>(f[2 * i] + value);
            if (noiseStereo & 0x08) f[2 * i + 1] = static_cast<int16_t>(f[2 * i + 1] + value);
            noiseCounter -= step;
            if (noiseCounter <= 0) {
                if (noiseToggle) {
                    // Sega: 16 bits, white taps at 0 and 3; TI: 15 bits, taps at 0 and 1.
                    const int tap = ti ? 1 : 3;
                    int fb = chip.NoiseWhite() ? ((lfsr ^ (lfsr >> tap)) & 1) : (lfsr & 1);
                    lfsr = static_cast<uint16_t>((lfsr >> 1) | (fb << (ti ? 14 : 15)));
                }
                int n = 0;
                while (noiseCounter <= 0) {
                    noiseCounter += p << 16;
                    ++n;
                }
                if (n & 1) noiseToggle ^= 1;
                value = (lfsr & 1) * level;
            }
        }
    }
};

std::vector<int16_t> TakeTick(SoundChip& chip) {
    std::vector<int16_t> out(chip.TickBytes() / 2);
    chip.Read(out.data(), chip.TickBytes());
    return out;
}

// Renders `ticks` ticks and returns the interleaved samples.
std::vector<int16_t> Render(SoundChip& chip, int ticks, uint8_t master = 60, uint8_t mask = 0xFF) {
    std::vector<int16_t> all;
    for (int t = 0; t < ticks; ++t) {
        chip.BeginTick();
        chip.RenderTick(master, mask);
        auto tick = TakeTick(chip);
        all.insert(all.end(), tick.begin(), tick.end());
    }
    return all;
}

// Counts upward crossings from <= 0 to > 0 on one side (0 = left, 1 = right).
int RisingEdges(const std::vector<int16_t>& samples, int side) {
    int edges = 0;
    for (size_t i = 2 + side; i < samples.size(); i += 2) {
        if (samples[i - 2] <= 0 && samples[i] > 0) ++edges;
    }
    return edges;
}

void SetTone(SoundChip& chip, int channel, int period, int attenuation) {
    chip.Write(static_cast<uint8_t>(0x80 | (channel << 5) | (period & 15)));
    chip.Write(static_cast<uint8_t>((period >> 4) & 63));
    chip.Write(static_cast<uint8_t>(0x90 | (channel << 5) | attenuation));
}

TEST(SoundChipTest, RegisterAndNoiseControlWritesAsTheDataBusTakesThem) {
    SoundChip chip;
    chip.Write(0x80 | 0x0E);
    chip.Write(0x3F);
    EXPECT_EQ(chip.TonePeriod(0), 0x3FE);
    chip.Write(0x01);  // a data byte replaces the high six bits only
    EXPECT_EQ(chip.TonePeriod(0), 0x01E);

    SetTone(chip, 1, 300, 4);
    SetTone(chip, 2, 500, 5);
    chip.Write(0xF2);
    EXPECT_EQ(chip.Attenuation(3), 2);
    chip.Write(0x07);  // data byte after an attenuation latch sets the attenuation
    EXPECT_EQ(chip.Attenuation(3), 7);
    for (uint8_t silence : {0x9F, 0xBF, 0xDF, 0xFF}) chip.Write(silence);
    for (int c = 0; c < 4; ++c) EXPECT_EQ(chip.Attenuation(c), 15);
    EXPECT_EQ(chip.TonePeriod(1), 300);

    // Noise control, and the rate that follows tone 2.
    chip.SetTonePeriod(2, 0);
    chip.Write(0xE5);
    EXPECT_EQ(std::tuple(chip.NoiseRate(), chip.NoiseWhite(), chip.NoisePeriod(), chip.NoiseWritten()),
              std::tuple(1, 1, 32, 1));
    chip.BeginTick();
    EXPECT_EQ(chip.NoiseWritten(), 0);
    chip.Write(0x02);  // data byte while the noise register is latched
    EXPECT_EQ(std::tuple(chip.NoiseRate(), chip.NoiseWhite(), chip.NoisePeriod()), std::tuple(2, 0, 64));

    chip.Write(0xE3);
    EXPECT_EQ(chip.NoisePeriod(), 0);  // tone 2 is still 0
    chip.Write(0xC5);
    EXPECT_EQ(chip.NoisePeriod(), 5);
    chip.Write(0x02);
    EXPECT_EQ(chip.NoisePeriod(), 0x25);
    chip.SetTonePeriod(2, 400);  // the players' direct setter leaves the noise alone
    EXPECT_EQ(chip.NoisePeriod(), 0x25);
    chip.Write(0xA7);  // tone 1 writes do not touch it either
    EXPECT_EQ(chip.NoisePeriod(), 0x25);
}

TEST(SoundChipTest, ToneSoundsAtClockOver32TimesPeriod) {
    for (auto [pal, divider, period] : {std::tuple{false, 0, 254}, {false, 0, 100}, {true, 0, 508},
                                        {false, 1, 254}, {true, 1, 40}}) {
        SoundChip chip;
        chip.Configure(pal, static_cast<uint8_t>(divider));
        SetTone(chip, 0, period, 0);
        auto samples = Render(chip, pal ? 50 : 60);  // one second
        double clock = pal ? kPalEmulatedClock : kNtscEmulatedClock;
        double expected = clock / (32.0 * period) / (divider ? 2 : 1);
        EXPECT_NEAR(RisingEdges(samples, 0), expected, 1.5) << "period " << period;
        EXPECT_NEAR(RisingEdges(samples, 1), expected, 1.5) << "period " << period;
    }
}

TEST(SoundChipTest, PeriodicAndWhiteNoiseDiffer) {
    // Periodic noise at the high rate: one pulse per 16 shifts, 437.5 pulses a second.
    SoundChip periodic;
    periodic.Write(0xE0);
    periodic.Write(0xF0);
    auto p = Render(periodic, 60);
    // Each tick opens at a quarter level until the first edge, so count only
    // full pulses rising straight from silence; a few straddle tick starts.
    int pulses = 0;
    for (size_t i = 2; i < p.size(); i += 2)
        if (p[i - 2] == 0 && p[i] == 5692) ++pulses;
    EXPECT_NEAR(pulses, 3584160.0 / (32 * 16) / 16, 8);
    for (size_t i = 0; i < p.size(); i += 2) ASSERT_EQ(p[i], p[i + 1]);

    // White noise: the register's taps make runs irregular and far more frequent.
    SoundChip white;
    white.Write(0xE4);
    white.Write(0xF0);
    auto w = Render(white, 60);
    EXPECT_GT(RisingEdges(w, 0), 1000);
    EXPECT_NE(p, w);
}

TEST(SoundChipTest, FullRingDropsTheUnreadTick) {
    for (bool pal : {false, true}) {
        SoundChip chip;
        chip.Configure(pal, 0);
        SetTone(chip, 0, 100, 0);
        const uint32_t tick = chip.TickBytes();
        chip.RenderTick(60, 0xFF);
        EXPECT_EQ(chip.Fill(), tick);
        chip.RenderTick(60, 0xFF);
        chip.RenderTick(60, 0xFF);
        EXPECT_EQ(chip.Fill(), tick);
        EXPECT_LE(chip.Fill(), kChipRingBytes);
        // Partly read: the rest of that tick gives way.
        chip.Read(nullptr, 1024);
        chip.RenderTick(60, 0xFF);
        EXPECT_EQ(chip.Fill(), tick);
        EXPECT_EQ((chip.ReadPos() + chip.Fill()) % kChipRingBytes, chip.WritePos());
    }
}

TEST(SoundChipTest, ReadAddMixesWithWrapAround) {
    SoundChip chip;
    SetTone(chip, 0, 0, 0);  // constant 2846 left and right
    chip.RenderTick(60, 0xFF);
    std::vector<int16_t> out(8, 0);
    out[0] = 32000;
    out[1] = -5;
    chip.ReadAdd(out.data(), 16);
    EXPECT_EQ(out[0], static_cast<int16_t>(32000 + 2846));
    EXPECT_EQ(out[1], 2841);
    EXPECT_EQ(out[7], 2846);
    EXPECT_EQ(chip.Fill(), chip.TickBytes() - 16);
    EXPECT_EQ(chip.ReadPos(), 16u);

    // Silent ticks between sounding ones read as zeros and add nothing; the
    // sounding ones still add. Even ticks are copied, odd ones added.
    SoundChip quiet;
    for (int tick = 0; tick < 12; ++tick) {
        const bool sounding = tick % 4 == 2 || tick == 7;
        SetTone(quiet, 1, 0, sounding ? 0 : 15);
        quiet.RenderTick(60, 0xFF);
        if (tick == 3) quiet.RenderTick(60, 0xFF);  // a tick left unread, then dropped for the next
        std::vector<int16_t> mixed(quiet.TickBytes() / 2, 7);
        if (tick % 2) {
            quiet.ReadAdd(mixed.data(), quiet.TickBytes());
        } else {
            quiet.Read(mixed.data(), quiet.TickBytes());
        }
        const int base = tick % 2 ? 7 : 0;
        for (int16_t sample : mixed) ASSERT_EQ(sample, sounding ? base + 2846 : base) << "tick " << tick;
    }
}

TEST(SoundChipTest, MatchesTheFrameByFrameModelUnderRandomWrites) {
    std::mt19937 random(20261122);
    for (int config = 0; config < 4 * kChipVariants; ++config) {
        SoundChip chip;
        const auto variant = static_cast<uint8_t>(config / 4);
        chip.Configure(config & 1, static_cast<uint8_t>((config >> 1) & 1), variant);
        ReferenceChip reference;
        reference.variant = variant;
        for (int tick = 0; tick < 400; ++tick) {
            chip.BeginTick();
            int writes = random() % 6;
            for (int w = 0; w < writes; ++w) {
                int channel = random() % 4;
                switch (random() % 5) {
                    case 0: SetTone(chip, channel, random() % 1024, random() % 16); break;
                    case 1: SetTone(chip, channel, random() % 8, random() % 16); break;
                    case 2: chip.Write(static_cast<uint8_t>(0xE0 | (random() % 8))); break;
                    case 3: chip.Write(static_cast<uint8_t>(random() % 256)); break;
                    default: chip.SetStereo(static_cast<uint8_t>(random())); break;
                }
            }
            uint8_t master = random() % 8 == 0 ? static_cast<uint8_t>(random()) : 60;
            uint8_t mask = random() % 4 == 0 ? static_cast<uint8_t>(random() % 16) : 0xFF;
            auto expected = reference.RenderTick(chip, master, mask);
            chip.RenderTick(master, mask);
            ASSERT_EQ(TakeTick(chip), expected) << "config " << config << " tick " << tick;
            ASSERT_EQ(chip.Lfsr(), reference.lfsr);
        }
    }
}

}  // namespace
}  // namespace sondrel
