// The built program itself, run headless in a scratch copy of its directory
// so that its preferences and crash files land there.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <string>

#include "files/module_file.h"
#include "files/export/song_render.h"
#include "platform/gorb.h"
#include "test_support.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

struct ProgramRun {
    int exitCode = -1;
    std::string output;
};

class ProgramTest : public ::testing::Test {
protected:
    void SetUp() override {
        const fs::path built = test::BinaryDir() / "sondrel";
        ASSERT_TRUE(fs::exists(built)) << built << " is missing: build the sondrel target first";
        fs::copy_file(built, dir / "sondrel");
        fs::copy_file(test::SourceDir() / "data" / "demo.sdrltk", dir / "demo.sdrltk");
        fs::copy(test::BinaryDir() / "skins", dir / "skins", fs::copy_options::recursive);
        fs::copy_file(test::BinaryDir() / "modfont.png", dir / "modfont.png");
    }

    ProgramRun Run(const std::string& environment, const std::string& arguments = "") {
        ProgramRun run;
        run.exitCode = test::RunCommand("cd '" + dir.Path().string() +
                                            "' && env SDL_VIDEODRIVER=dummy SDL_AUDIODRIVER=dummy " + environment +
                                            " ./sondrel " + arguments,
                                        run.output);
        return run;
    }

    test::ScratchDir dir;
};

// The disk audio driver plays into a file in real time: the song started at
// start-up must come out as the offline renderer plays it.
TEST_F(ProgramTest, RunsHeadlessPlayingTheSongToTheSoundDeviceAndQuitsCleanly) {
    // The offscreen driver's GL libraries keep allocations the leak checker
    // would count against the program.
    const ProgramRun run = Run("SDL_VIDEODRIVER=offscreen ASAN_OPTIONS=detect_leaks=0 SONDREL_EXIT_AFTER_FRAMES=300 "
                               "SONDREL_SCREENSHOT=shot.png SONDREL_PLAY_ON_START=1 "
                               "SDL_AUDIODRIVER=disk SDL_DISKAUDIOFILE=out.raw",
                               "demo.sdrltk");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    // Quitting wrote the preferences beside the program.
    EXPECT_TRUE(fs::exists(dir / "sondrel.prefs"));

    auto shot = Gorb_CreateSurface(dir / "shot.png");
    EXPECT_EQ(shot->Width(), kScreenWidth);
    EXPECT_EQ(shot->Height(), kScreenHeight);
    shot->Convert();
    // The menu bar and the main screen cover the calm background from corner to corner.
    Gorb_Pixels pixels = shot->Lock();
    const uint16_t corners[] = {pixels.Row(0)[0], pixels.Row(kScreenHeight - 1)[kScreenWidth - 1]};
    shot->Unlock();
    for (uint16_t corner : corners) EXPECT_NE(corner, shot->FindPixel(0xFF1C2433));

    if (!fs::exists(dir / "out.raw")) GTEST_SKIP() << "SDL has no disk audio driver";
    const auto raw = test::ReadBytes(dir / "out.raw");

    auto module = std::make_unique<Module>();
    ImportOptionsProvider options;
    ASSERT_TRUE(LoadAnyFile(*module, (dir / "demo.sdrltk").string(), options));
    SongRenderOptions render;
    render.seconds = 1.0;
    RenderSongToWav(*module, (dir / "reference.wav").string(), render);
    const auto wav = test::ReadBytes(dir / "reference.wav");

    // The device's output is silent until the song's first sample.
    std::vector<int16_t> heard(raw.size() / 2);
    std::memcpy(heard.data(), raw.data(), heard.size() * 2);
    std::vector<int16_t> expected((wav.size() - 44) / 2);
    std::memcpy(expected.data(), wav.data() + 44, expected.size() * 2);
    const auto start = std::find_if(heard.begin(), heard.end(), [](int16_t sample) { return sample != 0; });
    ASSERT_NE(start, heard.end()) << "nothing was heard";
    ASSERT_EQ(expected.front(), *start);
    const size_t compared = std::min<size_t>(expected.size(), heard.end() - start);
    ASSERT_GT(compared, 44100u);  // more than half a second
    size_t same = 0;
    for (size_t i = 0; i < compared; ++i) same += start[i] == expected[i];
    // Only the chip's edge blend where a tick wraps round its ring may differ.
    EXPECT_GT(same, compared * 97 / 100) << same << " of " << compared;
}

TEST_F(ProgramTest, AFaultInTheLoopLeavesALoadableCrashFileNamedByTheUtcTime) {
    const std::time_t before = std::time(nullptr);
    const ProgramRun run = Run("SONDREL_FAULT_AFTER_FRAMES=10", "demo.sdrltk");
    const std::time_t after = std::time(nullptr);
    ASSERT_EQ(run.exitCode, 3) << run.output;
    EXPECT_NE(run.output.find("Sondrel has crashed.\nThe current module is saved as crash("), std::string::npos)
        << run.output;

    int found = 0;
    for (const auto& entry : fs::directory_iterator(dir.Path())) {
        const std::string name = entry.path().filename().string();
        std::tm time{};
        const char* rest = strptime(name.c_str(), "crash(%Y.%m.%d %H.%M.%S", &time);
        if (!rest || std::string(rest) != ").sdrltk.") continue;
        ++found;
        const std::time_t written = timegm(&time);
        EXPECT_GE(written, before) << name;
        EXPECT_LE(written, after) << name;

        auto module = std::make_unique<Module>();
        ImportOptionsProvider options;
        ASSERT_TRUE(LoadAnyFile(*module, entry.path().string(), options)) << name;
        EXPECT_EQ(module->title, "Four Corners");
    }
    EXPECT_EQ(found, 1);
    // Shutdown still ran after the crash save.
    EXPECT_TRUE(fs::exists(dir / "sondrel.prefs"));
}

// A named pipe on the command line is refused at once, not waited on, and
// the program starts on a new module.
TEST_F(ProgramTest, APipeOnTheCommandLineIsRefusedAndTheProgramStarts) {
    ASSERT_EQ(::mkfifo((dir / "pipe.sdrltk").c_str(), 0600), 0);
    const auto start = std::chrono::steady_clock::now();
    const ProgramRun run = Run("SONDREL_EXIT_AFTER_FRAMES=3", "pipe.sdrltk");
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("Couldn't load module.\nIt is a named pipe, not a file"), std::string::npos) << run.output;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
}  // namespace sondrel
