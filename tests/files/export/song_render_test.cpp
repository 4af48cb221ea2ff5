#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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
