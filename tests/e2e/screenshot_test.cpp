// Pictures of what a musician sees first: the main screen with the demo
// song, the file requester in a folder of long and underscored names, and
// the instrument editor. They are written as PNG files into the folder that
// SONDREL_SCREENSHOT_DIR names (the test's scratch folder without it), for
// people to look at; each is also checked for what it must show.

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "e2e/program_places.h"
#include "e2e/x_session.h"
#include "platform/gorb.h"
#include "screens/main_screen.h"
#include "test_support.h"
#include "ui/painter.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;
using e2e::ShellQuoted;
using e2e::WaitUntil;
using e2e::WindowPicture;

constexpr double kWaitSeconds = 10;
constexpr char kUnderscored[] = "Alex_Kidd_in_Miracle_World_-_Main_Theme.vgm";
constexpr char kSpaced[] = "Alex Kidd in Miracle World - Main Theme.vgm";  // the same name without underscores

std::string Log(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The rows of rect where the two pictures differ, and how many pixels differ in each.
std::vector<std::pair<int, int>> DifferingRows(const WindowPicture& a, const WindowPicture& b, const Gorb_Rect& rect) {
    std::vector<std::pair<int, int>> rows;
    for (int y = rect.y; y < rect.y + rect.h; ++y) {
        int count = 0;
        for (int x = rect.x; x < rect.x + rect.w; ++x) count += a.At(x, y) != b.At(x, y);
        if (count > 0) rows.emplace_back(y, count);
    }
    return rows;
}

class ScreenshotTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string found;
        if (test::RunCommand("command -v xvfb-run && command -v xdotool", found) != 0)
            GTEST_SKIP() << "xvfb-run or xdotool is missing";
        alarm(90);
        const char* wanted = std::getenv("SONDREL_SCREENSHOT_DIR");
        shots = wanted != nullptr && *wanted != '\0' ? fs::path(wanted) : dir.Path();
        fs::create_directories(shots);
        e2e::CopyProgram(app);
        fs::copy_file(test::SourceDir() / "data" / "demo.sdrltk", dir / "demo.sdrltk");
        // The folder the requester opens in: the program starts there.
        fs::create_directories(files / "gypsy_jigs");
        for (const char* name : {kUnderscored, "a_very_long_module_name_that_does_not_fit_the_row.sdrltk",
                                 "pygmy_polka.sdrltk", "gap_year.mod", "Quiet.sdrltk"})
            std::ofstream(files / name) << "x";
        x = std::make_unique<e2e::XSession>(dir.Path());
        ASSERT_TRUE(x->Ready()) << Log(dir / "xvfb.log");
    }
    void TearDown() override { alarm(0); }

    WindowPicture Shot(const std::string& name) {
        std::optional<WindowPicture> picture;
        // Two looks a tenth of a second apart that agree: the frame has settled.
        WaitUntil(
            [&] {
                const auto first = x->Capture(window);
                usleep(100000);
                picture = x->Capture(window);
                return first && picture && first->rgb == picture->rgb;
            },
            kWaitSeconds);
        EXPECT_TRUE(picture) << name;
        if (!picture) return {};
        auto surface = Gorb_CreateSurface(picture->width, picture->height);
        const Gorb_Pixels pixels = surface->Lock();
        for (int y = 0; y < picture->height; ++y)
            for (int yx = 0; yx < picture->width; ++yx) pixels.Row(y)[yx] = Rgb565(picture->At(yx, y));
        surface->Unlock();
        EXPECT_TRUE(surface->SavePng(shots / name)) << shots / name;
        return *picture;
    }
    // Waits until the window shows something else than before in rect.
    bool ChangesFrom(const WindowPicture& before, const Gorb_Rect& rect) {
        return WaitUntil(
            [&] {
                const auto now = x->Capture(window);
                return now && !DifferingRows(before, *now, rect).empty();
            },
            kWaitSeconds);
    }
    bool Click(int atX, int atY) {
        return x->Xdotool("mousemove --sync --window " + std::to_string(window) + " " + std::to_string(atX) + " " +
                          std::to_string(atY) + " click 1");
    }

    test::ScratchDir dir;
    fs::path app = dir / "app";
    fs::path files = dir / "files";
    fs::path shots;
    std::unique_ptr<e2e::XSession> x;
    unsigned long window = 0;
};

TEST_F(ScreenshotTest, MainScreenFileRequesterAndInstrumentEditor) {
    e2e::ChildProcess program(
        "cd " + ShellQuoted(files.string()) + " && exec env -u SDL_VIDEODRIVER ASAN_OPTIONS=detect_leaks=0 " +
        "SDL_AUDIODRIVER=dummy HOME=" + ShellQuoted(dir.Path().string()) + " XDG_CONFIG_HOME=" +
        ShellQuoted((dir / "config").string()) + " timeout -k 2 60 " + ShellQuoted((app / "sondrel").string()) + " " +
        ShellQuoted((dir / "demo.sdrltk").string()) + " >> " + ShellQuoted((dir / "program.log").string()) + " 2>&1");
    window = x->FindWindow("^Sondrel  $", 20);
    ASSERT_NE(window, 0u) << Log(dir / "program.log");
    ASSERT_TRUE(x->Xdotool("windowfocus --sync " + std::to_string(window)));

    // (a) The main screen with the demo song: the octave slider has its number beside it.
    const WindowPicture main = Shot("main_screen.png");
    ASSERT_EQ(main.width, kScreenWidth);
    const Gorb_Rect slider = e2e::MainScreenControl(kControlOctave);
    int octaveInk = 0;
    const int right = slider.x + slider.w;
    for (int y = slider.y; y < slider.y + slider.h; ++y)
        for (int px = right + 1; px < right + 18; ++px) octaveInk += main.At(px, y) != main.At(right + 1, slider.y);
    EXPECT_GT(octaveInk, 5) << "no number beside the octave slider";

    // (b) The file requester, opened from the File menu where the program started.
    ASSERT_TRUE(e2e::ChooseFileMenu(*x, window, "Load module..."));
    const Gorb_Rect requester{kScreenWidth / 4, kScreenHeight / 6, kScreenWidth / 2, kScreenHeight * 2 / 3};
    const Gorb_Rect listed{requester.x + 10, requester.y + 50, requester.w - 20, requester.h / 2};
    ASSERT_TRUE(ChangesFrom(main, requester)) << "no file requester";
    const WindowPicture underscored = Shot("file_requester.png");

    // The same name with blanks for underscores, listed again: the rows that
    // change reach below the letters, where only the underscores are.
    fs::rename(files / kUnderscored, files / kSpaced);
    // "Reload", the middle one of the five buttons at the bottom.
    ASSERT_TRUE(Click(requester.x + requester.w / 2, requester.y + requester.h - 19));
    ASSERT_TRUE(ChangesFrom(underscored, listed));
    const WindowPicture spaced = Shot("file_requester_without_underscores.png");
    const auto rows = DifferingRows(underscored, spaced, listed);
    ASSERT_FALSE(rows.empty());
    ASSERT_LE(rows.back().first - rows.front().first, 16) << "more than the one list row changed";
    // Five underscores of several pixels each on the bottom row that differs.
    EXPECT_GE(rows.back().second, 15) << "the underscores are not shown";
    ASSERT_TRUE(x->Xdotool("key --delay 40 Escape"));

    // (c) The instrument editor, from the main screen's Edit button.
    const Gorb_Rect edit = e2e::MainScreenControl(kControlEditInstrument);
    ASSERT_TRUE(ChangesFrom(spaced, listed)) << "the requester did not close";
    ASSERT_TRUE(Click(edit.x + edit.w / 2, edit.y + edit.h / 2));
    ASSERT_TRUE(ChangesFrom(main, {0, 40, kScreenWidth, kScreenHeight / 2})) << "no instrument editor";
    Shot("instrument_editor.png");
    ASSERT_TRUE(x->Xdotool("key --delay 40 Escape"));
}

}  // namespace
}  // namespace sondrel
