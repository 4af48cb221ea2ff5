#include <gtest/gtest.h>

#include "files/export/song_render.h"
#include "files/export/wav_writer.h"
#include "files/module_test_support.h"
#include "model/exception.h"

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

}  // namespace
}  // namespace sondrel
