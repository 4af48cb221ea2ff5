// The built program itself, run headless in a scratch copy of its directory
// so that its preferences and crash files land there.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <regex>
#include <string>

#include "files/module_file.h"
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
    }

    ProgramRun Run(const std::string& environment, const std::string& arguments = "") {
        const std::string command = "cd '" + dir.Path().string() +
                                    "' && env SDL_VIDEODRIVER=offscreen SDL_AUDIODRIVER=dummy " + environment +
                                    " ./sondrel " + arguments + " 2>&1";
        ProgramRun run;
        FILE* pipe = popen(command.c_str(), "r");
        if (!pipe) return run;
        std::array<char, 4096> buffer{};
        size_t got;
        while ((got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) run.output.append(buffer.data(), got);
        const int status = pclose(pipe);
        run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return run;
    }

    test::ScratchDir dir;
};

TEST_F(ProgramTest, RunsHeadlessForAFewHundredFramesAndQuitsCleanly) {
    const ProgramRun run =
        Run("SONDREL_EXIT_AFTER_FRAMES=300 SONDREL_SCREENSHOT=shot.png SONDREL_PLAY_ON_START=1", "demo.sdrltk");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    // Quitting wrote the preferences beside the program.
    EXPECT_TRUE(fs::exists(dir / "sondrel.prefs"));

    auto shot = Gorb_CreateSurface(dir / "shot.png");
    EXPECT_EQ(shot->Width(), kScreenWidth);
    EXPECT_EQ(shot->Height(), kScreenHeight);
    shot->Convert();
    // The calm background fills the corners.
    const uint16_t corner = shot->Lock().Row(0)[0];
    shot->Unlock();
    EXPECT_EQ(corner, shot->FindPixel(0xFF1C2433));
}

TEST_F(ProgramTest, AFaultInTheLoopLeavesALoadableCrashFileNamedByTheUtcTime) {
    const std::time_t before = std::time(nullptr);
    const ProgramRun run = Run("SONDREL_FAULT_AFTER_FRAMES=10", "demo.sdrltk");
    const std::time_t after = std::time(nullptr);
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("Sondrel has crashed.\nThe current module is saved as crash("), std::string::npos)
        << run.output;

    const std::regex pattern(R"(crash\((\d+)\.(\d+)\.(\d+) (\d+)\.(\d+)\.(\d+)\)\.sdrltk\.)");
    int found = 0;
    for (const auto& entry : fs::directory_iterator(dir.Path())) {
        const std::string name = entry.path().filename().string();
        std::smatch parts;
        if (!std::regex_match(name, parts, pattern)) continue;
        ++found;
        std::tm time{};
        time.tm_year = std::stoi(parts[1]) - 1900;
        time.tm_mon = std::stoi(parts[2]) - 1;
        time.tm_mday = std::stoi(parts[3]);
        time.tm_hour = std::stoi(parts[4]);
        time.tm_min = std::stoi(parts[5]);
        time.tm_sec = std::stoi(parts[6]);
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

}  // namespace
}  // namespace sondrel
