#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "files/export/song_render.h"
#include "files/export/wav_writer.h"
#include "files/module_test_support.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {
namespace {

using test::Le32;

// Four lines at speed 48, an A on the first.
std::unique_ptr<Module> ShortSong() {
    auto module = test::NewModule();
    module->patterns[0].length = 4;
    test::SetNote(*module, 0, 0, 69);
    return module;
}

TEST(SongRenderTest, OneLoopWritesAWholeSongAsAValidWav) {
    test::ScratchDir dir;
    auto module = ShortSong();
    int reports = 0;
    double last = 0.0;
    SongRenderResult result = RenderSongToWav(*module, dir / "a.wav", {}, [&](double f) {
        EXPECT_GE(f, last);
        last = f;
        ++reports;
    });
    EXPECT_EQ(result.ticks, 4u * 6);
    EXPECT_EQ(result.wraps, 1);
    EXPECT_EQ(result.frames, 4u * 6 * 735);
    EXPECT_DOUBLE_EQ(last, 1.0);
    EXPECT_GE(reports, 2);

    auto bytes = test::ReadBytes(dir / "a.wav");
    ASSERT_EQ(bytes.size(), 44 + result.frames * 4);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "RIFF");
    EXPECT_EQ(Le32(bytes, 4), bytes.size() - 8);
    EXPECT_EQ(std::string(bytes.begin() + 8, bytes.begin() + 16), "WAVEfmt ");
    EXPECT_EQ(Le32(bytes, 24), 44100u);
    EXPECT_EQ(Le32(bytes, 28), 44100u * 4);
    EXPECT_EQ(Le32(bytes, 40), result.frames * 4);
    bool sound = false;
    for (size_t i = 44; i < bytes.size(); ++i) sound |= bytes[i] != 0;
    EXPECT_TRUE(sound);
}

TEST(SongRenderTest, LoopsSecondsAndVolumeLimitsAndRefusals) {
    test::ScratchDir dir;
    auto module = ShortSong();
    EXPECT_EQ(RenderSongToWav(*module, dir / "b.wav", {3, 0.0, 50}).ticks, 3u * 24);
    // Seconds alone: the song keeps looping until the time is up.
    SongRenderResult timed = RenderSongToWav(*module, dir / "c.wav", {0, 2.0, 50});
    EXPECT_EQ(timed.ticks, 120u);
    EXPECT_EQ(timed.wraps, 5);
    EXPECT_DOUBLE_EQ(timed.seconds, 2.0);
    // Both: whichever comes first.
    EXPECT_EQ(RenderSongToWav(*module, dir / "d.wav", {1, 10.0, 50}).ticks, 24u);

    RenderSongToWav(*module, dir / "e.wav", {1, 0.0, 0});
    auto silent = test::ReadBytes(dir / "e.wav");
    for (size_t i = 44; i < silent.size(); ++i) ASSERT_EQ(silent[i], 0) << i;

    module->chipType = kChipPal;
    EXPECT_EQ(RenderSongToWav(*module, dir / "f.wav", {0, 1.0, 50}).frames, 50u * 882);

    // No limit at all, and a directory that does not exist, are refused.
    EXPECT_THROW(RenderSongToWav(*module, "/nonexistent-dir/x.wav", {}), FileIOException);
    EXPECT_THROW(RenderSongToWav(*module, dir / "x.wav", {0, 0.0, 50}), Exception);
}

// All four channels at once, panned apart: tone 0 on the left only, tone 1
// on both sides, tone 2 on the right only.
std::unique_ptr<Module> FourChannelSong() {
    auto module = ShortSong();
    test::SetNote(*module, 0, 1, 64);
    test::SetNote(*module, 1, 2, 52);
    test::SetNote(*module, 2, kNoiseChannel, kFirstNoiseNote + 1);
    module->patterns[0].lines[0].command = kCommandST;
    module->patterns[0].lines[0].commandParam = 0x36;
    return module;
}

struct Rendered {
    std::vector<int16_t> mix;
    std::array<std::vector<int16_t>, 4> stems;
};

Rendered RenderWithStems(Module& module, uint8_t mask) {
    Rendered out;
    SongRenderOptions options;
    options.channelMask = mask;
    options.stems = true;
    RenderSong(
        module, options, [&](const int16_t* b, size_t n) { out.mix.insert(out.mix.end(), b, b + n); }, {},
        [&](int c, const int16_t* b, size_t n) { out.stems[c].insert(out.stems[c].end(), b, b + n); });
    return out;
}

std::vector<int16_t> WrappedSum(const std::array<std::vector<int16_t>, 4>& stems) {
    std::vector<int16_t> sum(stems[0].size());
    for (const auto& stem : stems) {
        for (size_t i = 0; i < sum.size(); ++i)
            sum[i] = static_cast<int16_t>(static_cast<uint16_t>(sum[i]) + static_cast<uint16_t>(stem[i]));
    }
    return sum;
}

bool Silent(const std::vector<int16_t>& samples) {
    return std::all_of(samples.begin(), samples.end(), [](int16_t s) { return s == 0; });
}

TEST(SongRenderTest, StemsAddUpToTheMixWhateverTheMask) {
    auto module = FourChannelSong();
    std::vector<int16_t> plain;
    RenderSong(*module, {}, [&](const int16_t* b, size_t n) { plain.insert(plain.end(), b, b + n); });

    const Rendered all = RenderWithStems(*module, 0x0F);
    EXPECT_EQ(all.mix, plain);
    EXPECT_EQ(WrappedSum(all.stems), plain);
    for (int c = 0; c < 4; ++c) {
        ASSERT_EQ(all.stems[c].size(), plain.size());
        EXPECT_FALSE(Silent(all.stems[c])) << c;
    }
    // The panning reaches the stems: tone 0 never sounds on the right, tone 2 never on the left.
    for (size_t i = 0; i < plain.size(); i += 2) {
        ASSERT_EQ(all.stems[0][i + 1], 0) << i;
        ASSERT_EQ(all.stems[2][i], 0) << i;
    }

    // Channels 1 and 3 muted: their stems are silent and the mix is the other two.
    const Rendered muted = RenderWithStems(*module, 0x05);
    EXPECT_TRUE(Silent(muted.stems[1]));
    EXPECT_TRUE(Silent(muted.stems[3]));
    EXPECT_EQ(muted.stems[0], all.stems[0]);
    EXPECT_EQ(muted.stems[2], all.stems[2]);
    EXPECT_EQ(WrappedSum(muted.stems), muted.mix);

    // One channel alone, without stems, is that channel's stem.
    for (int c = 0; c < 4; ++c) {
        SongRenderOptions solo;
        solo.channelMask = static_cast<uint8_t>(1 << c);
        std::vector<int16_t> alone;
        RenderSong(*module, solo, [&](const int16_t* b, size_t n) { alone.insert(alone.end(), b, b + n); });
        EXPECT_EQ(alone, all.stems[c]) << c;
    }
}

TEST(SongRenderTest, StemFilesGoBesideTheMix) {
    test::ScratchDir dir;
    auto module = FourChannelSong();
    EXPECT_EQ(StemPath((dir / "song.wav").string(), 2), (dir / "song-ch2.wav").string());
    EXPECT_EQ(StemPath("take", 0), "take-ch0");

    SongRenderOptions options;
    options.stems = true;
    const SongRenderResult result = RenderSongToWav(*module, dir / "song.wav", options);
    const auto mix = test::ReadBytes(dir / "song.wav");
    ASSERT_EQ(mix.size(), 44 + result.frames * 4);
    for (int c = 0; c < 4; ++c) {
        const auto stem = test::ReadBytes(dir / ("song-ch" + std::to_string(c) + ".wav"));
        ASSERT_EQ(stem.size(), mix.size()) << c;
        EXPECT_TRUE(std::equal(stem.begin(), stem.begin() + 44, mix.begin())) << c;  // the same header
    }
}

// The mean distance in frames between the left channel's rises to its
// loudest level, counting only distances near the typical one (each tick
// starts softened, which may hide or fake a rise at its start).
double MeanPulseDistance(const std::vector<int16_t>& stereo) {
    int16_t top = 0;
    for (size_t i = 0; i < stereo.size(); i += 2) top = std::max(top, stereo[i]);
    std::vector<long> distances;
    long last = -1;
    for (size_t i = 2; i < stereo.size(); i += 2) {
        if (stereo[i] != top || stereo[i - 2] == top) continue;
        const long frame = static_cast<long>(i / 2);
        if (last >= 0) distances.push_back(frame - last);
        last = frame;
    }
    if (distances.empty()) return 0.0;
    std::vector<long> sorted = distances;
    std::nth_element(sorted.begin(), sorted.begin() + sorted.size() / 2, sorted.end());
    const double median = static_cast<double>(sorted[sorted.size() / 2]);
    double sum = 0.0;
    int counted = 0;
    for (long d : distances) {
        if (d < median * 0.8 || d > median * 1.2) continue;
        sum += static_cast<double>(d);
        ++counted;
    }
    return counted ? sum / counted : 0.0;
}

TEST(SongRenderTest, TheTiChipsPeriodicNoiseRepeatsAfter15ShiftsWhereTheSegaOnesTakes16) {
    // The same register values, the three fixed rates and the rate of tone 2.
    for (uint8_t note : {uint8_t{kFirstNoiseNote}, uint8_t{kFirstNoiseNote + 2}, uint8_t{kFirstNoiseNote + 3}}) {
        std::array<double, kChipVariants> distance{};
        for (uint8_t variant : {kVariantSega, kVariantTi}) {
            auto module = test::TickPerLine(60, {kDivider1x, kChipNtsc, variant});
            test::SetNote(*module, 0, kNoiseChannel, note);
            test::SetNote(*module, 0, 2, 69);  // tone 2 sets the rate of the last noise note
            module->patterns[0].lines[0].volume[2] = 0;
            std::vector<int16_t> samples;
            RenderSong(*module, {}, [&](const int16_t* block, size_t count) {
                samples.insert(samples.end(), block, block + count);
            });
            distance[variant] = MeanPulseDistance(samples);
            ASSERT_GT(distance[variant], 10.0) << "note " << int{note};
        }
        EXPECT_NEAR(distance[kVariantTi] / distance[kVariantSega], 15.0 / 16.0, 0.003) << "note " << int{note};
    }
}

}  // namespace
}  // namespace sondrel
