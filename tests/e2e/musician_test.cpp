// The built program as a musician drives it: on an X server of the test's
// own, with keys and clicks from xdotool, its preferences, songs and
// screenshots in a scratch folder. Each step waits for what it should
// cause (a window title, a file, a change on screen) for at most
// kStepSeconds.

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "e2e/program_places.h"
#include "e2e/x_session.h"
#include "edit/main_menu.h"
#include "files/module_file.h"
#include "model/notes.h"
#include "platform/gorb.h"
#include "screens/main_screen.h"
#include "screens/pattern_view/pattern_rows.h"
#include "test_support.h"
#include "ui/menu_bar.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;
using e2e::ChildProcess;
using e2e::ShellQuoted;
using e2e::WaitUntil;
using e2e::WindowPicture;

constexpr double kStepSeconds = 10;
constexpr double kStartSeconds = 20;  // a debug build starting beside other builds
constexpr char kCleanTitle[] = "Sondrel  ";
constexpr char kChangedTitle[] = "Sondrel *";

// A screen's pixels as RGB565, from the X server or from a screenshot file.
struct Screen565 {
    int width = 0;
    int height = 0;
    std::vector<uint16_t> pixels;

    // The pixels of rect, row by row.
    std::vector<uint16_t> Region(const Gorb_Rect& rect) const {
        std::vector<uint16_t> region;
        for (int y = rect.y; y < rect.y + rect.h; ++y)
            for (int x = rect.x; x < rect.x + rect.w; ++x) region.push_back(pixels[static_cast<size_t>(y) * width + x]);
        return region;
    }
};

Screen565 FromWindow(const WindowPicture& picture) {
    Screen565 screen{picture.width, picture.height, {}};
    for (uint32_t rgb : picture.rgb) {
        const uint32_t red = rgb >> 19 & 0x1F, green = rgb >> 10 & 0x3F, blue = rgb >> 3 & 0x1F;
        screen.pixels.push_back(static_cast<uint16_t>(red << 11 | green << 5 | blue));
    }
    return screen;
}

Screen565 FromPng(const fs::path& file) {
    auto surface = Gorb_CreateSurface(file);
    surface->Convert();
    Screen565 screen{surface->Width(), surface->Height(), {}};
    const Gorb_Pixels pixels = surface->Lock();
    for (int y = 0; y < screen.height; ++y)
        screen.pixels.insert(screen.pixels.end(), pixels.Row(y), pixels.Row(y) + screen.width);
    surface->Unlock();
    return screen;
}

std::string TextOf(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class MusicianTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string found;
        if (test::RunCommand("command -v xvfb-run && command -v xdotool", found) != 0)
            GTEST_SKIP() << "xvfb-run or xdotool is missing";
        // The last resort against a hang: the test program ends, and its X server and program with it.
        alarm(120);
        e2e::CopyProgram(app);
        x = std::make_unique<e2e::XSession>(dir.Path(), XScreen());
        ASSERT_TRUE(x->Ready()) << TextOf(dir / "xvfb.log");
    }

    void TearDown() override { alarm(0); }
    // The X server's screen.
    virtual std::string XScreen() const { return "1024x768x24"; }

    // The program in its scratch folder, playing into SDL's silent dummy
    // driver, which keeps the pace of a real sound card. (The X and display
    // libraries keep allocations a sanitizer build's leak checker would count
    // against the program.)
    std::unique_ptr<ChildProcess> Start(const std::string& arguments, const std::string& environment = "") {
        return std::make_unique<ChildProcess>(
            "cd " + ShellQuoted(app.string()) + " && exec env -u SDL_VIDEODRIVER ASAN_OPTIONS=detect_leaks=0 SDL_AUDIODRIVER=dummy " +
            "HOME=" + ShellQuoted(dir.Path().string()) + " XDG_CONFIG_HOME=" +
            ShellQuoted((dir / "config").string()) + " " + environment + " timeout -k 2 60 ./sondrel " + arguments +
            " >> " + ShellQuoted((dir / "program.log").string()) + " 2>&1");
    }

    // Waits for the program's first frame, which sets the window title, and gives the window the keyboard.
    // (The window found earlier may still be replaced by one the renderer needs.)
    void WaitForMainScreen(unsigned long& window) {
        window = x->FindWindow(std::string("^") + kCleanTitle + "$", kStartSeconds);
        ASSERT_NE(window, 0u) << "no window\n" << Log();
        ASSERT_TRUE(x->Xdotool("windowfocus --sync " + std::to_string(window))) << "no keyboard focus";
    }

    bool TitleBecomes(unsigned long window, const std::string& title) {
        return WaitUntil([&] { return x->WindowName(window) == title; }, kStepSeconds);
    }

    bool ClickAt(unsigned long window, Point at) {
        return x->Xdotool("mousemove --sync --window " + std::to_string(window) + " " + std::to_string(at.x) + " " +
                          std::to_string(at.y) + " click 1");
    }
    // File > "Load module..." and the file's path typed into the requester.
    void LoadThroughRequester(unsigned long window, const fs::path& file) {
        const auto before = Settled(window);
        ASSERT_TRUE(before);
        ASSERT_TRUE(ChooseFileMenu(window, "Load module..."));
        ASSERT_TRUE(RequesterOpens(window, *before)) << "no file requester";
        ASSERT_TRUE(Type(file.string()));
        ASSERT_TRUE(Keys("Return"));
    }
    // Ctrl+S with the name typed into the requester (which adds the module
    // extension); then File > "Quit...", which asks nothing once all is saved.
    void SaveAndQuit(unsigned long window, ChildProcess& program, const fs::path& name) {
        const auto before = Settled(window);
        ASSERT_TRUE(before);
        ASSERT_TRUE(Keys("ctrl+s"));
        ASSERT_TRUE(RequesterOpens(window, *before)) << "no file requester";
        ASSERT_TRUE(Type(name.string()));
        ASSERT_TRUE(Keys("Return"));
        ASSERT_TRUE(TitleBecomes(window, kCleanTitle)) << "not saved";
        ASSERT_TRUE(ChooseFileMenu(window, "Quit..."));
        ASSERT_EQ(program.Wait(kStepSeconds), 0) << Log();
    }
    bool Keys(const std::string& keys) { return x->Xdotool("key --delay 40 " + keys); }
    bool Type(const std::string& text) { return x->Xdotool("type --delay 20 " + ShellQuoted(text)); }

    bool ChooseFileMenu(unsigned long window, const std::string& text) { return e2e::ChooseFileMenu(*x, window, text); }

    std::optional<Screen565> Look(unsigned long window) {
        const auto picture = x->Capture(window);
        if (!picture) return std::nullopt;
        return FromWindow(*picture);
    }

    // The window once two looks a tenth of a second apart agree.
    std::optional<Screen565> Settled(unsigned long window) {
        std::optional<Screen565> last = Look(window);
        std::optional<Screen565> now;
        WaitUntil(
            [&] {
                usleep(100000);
                now = Look(window);
                const bool same = now && last && now->pixels == last->pixels;
                last = now;
                return same;
            },
            kStepSeconds);
        return now;
    }

    // Waits until rect shows something else than it did in before.
    bool Changes(unsigned long window, const Screen565& before, const Gorb_Rect& rect) {
        return WaitUntil(
            [&] {
                const auto now = Look(window);
                return now && now->Region(rect) != before.Region(rect);
            },
            kStepSeconds);
    }

    // Requesters open over the middle of the screen.
    bool RequesterOpens(unsigned long window, const Screen565& before) {
        return Changes(window, before, {kScreenWidth / 2 - 20, kScreenHeight / 2 - 10, 40, 20});
    }

    // The cells of one grid row, from the first channel to the right edge (the line number left out).
    Gorb_Rect GridRow(int row) const {
        const int left = kGridTextX + RowPixelX(kNoteField);
        return {grid.x + left, grid.y + kGridHeaderHeight + row * kGridRowHeight, grid.w - left, kGridRowHeight};
    }

    // The last frame of an unattended run of the program.
    Screen565 Screenshot(const std::string& arguments, const std::string& name) {
        auto program =
            Start(arguments, "SONDREL_EXIT_AFTER_FRAMES=20 SONDREL_SCREENSHOT=" + ShellQuoted((dir / name).string()));
        EXPECT_EQ(program->Wait(kStepSeconds), 0) << TextOf(dir / "program.log");
        return FromPng(dir / name);
    }

    std::string Log() { return TextOf(dir / "program.log"); }

    test::ScratchDir dir;
    fs::path app = dir / "app";
    std::unique_ptr<e2e::XSession> x;
    // The main screen's grid where the program puts it below its menu bar.
    const Gorb_Rect grid = e2e::MainScreenControl(kControlGrid);
};

TEST_F(MusicianTest, TypesNotesUndoesRedoesPlaysSavesAndQuitsThroughTheMenu) {
    auto program = Start("");
    unsigned long window = 0;
    ASSERT_NO_FATAL_FAILURE(WaitForMainScreen(window));

    // Channel 0 gets C, D and E on lines 0 to 2 and, two lines further down,
    // G on line 5; three columns to the right channel 1 gets F on line 6.
    // Undoing the F and redoing it brings it back.
    ASSERT_TRUE(Keys("q w e Down Down t Right Right Right r ctrl+y ctrl+z"));
    ASSERT_TRUE(TitleBecomes(window, kChangedTitle));

    // Playing shows the play marker moving over the grid, line after line,
    // with no sound card; then stop.
    auto before = Settled(window);
    ASSERT_TRUE(before);
    ASSERT_TRUE(Keys("ctrl+p"));
    EXPECT_TRUE(Changes(window, *before, grid)) << "the song didn't start";
    const auto playing = Look(window);
    ASSERT_TRUE(playing);
    EXPECT_TRUE(Changes(window, *playing, grid)) << "the song didn't go on";
    ASSERT_TRUE(Keys("ctrl+p"));

    // Back in edit mode a B on line 7 of channel 1 is entered and undone.
    ASSERT_TRUE(Keys("Home Down Down Down Down Down Down Down u ctrl+y"));

    ASSERT_NO_FATAL_FAILURE(SaveAndQuit(window, *program, dir / "song"));

    const fs::path song = dir / "song.sdrltk";
    ImportOptionsProvider options;
    const auto module = LoadNewModule(song.string(), options);
    ASSERT_TRUE(module);
    const std::map<std::pair<int, int>, uint8_t> typed{
        {{0, 0}, 48}, {{1, 0}, 50}, {{2, 0}, 52}, {{5, 0}, 55}, {{6, 1}, 53}};
    const Pattern& pattern = module->patterns[0];
    for (int line = 0; line < pattern.length; ++line)
        for (int channel = 0; channel < kChannels; ++channel) {
            const auto note = typed.find({line, channel});
            EXPECT_EQ(pattern.lines[line].note[channel], note == typed.end() ? kNoteEmpty : note->second)
                << "line " << line << ", channel " << channel;
        }

    // Opened again, the grid differs from a new module's in the rows typed in and nowhere else.
    const Screen565 shown = Screenshot(ShellQuoted(song.string()), "song.png");
    const Screen565 fresh = Screenshot("", "new.png");
    ASSERT_EQ(std::pair(shown.width, shown.height), std::pair(kScreenWidth, kScreenHeight));
    ASSERT_EQ(std::pair(fresh.width, fresh.height), std::pair(kScreenWidth, kScreenHeight));
    const std::set<int> filled{0, 1, 2, 5, 6};
    for (int row = 0; row < kGridVisibleLines; ++row)
        EXPECT_EQ(shown.Region(GridRow(row)) != fresh.Region(GridRow(row)), filled.count(row) == 1) << "row " << row;
}

// Saving rebuilds the recent entries of the File menu: with a menu hanging
// open, every save key saves and the open menu goes on being drawn and used.
TEST_F(MusicianTest, SavesWithEverySaveKeyWhileAMenuIsOpen) {
    const fs::path song = dir / "song.sdrltk";
    fs::copy_file(test::SourceDir() / "data" / "demo.sdrltk", song);
    auto program = Start(ShellQuoted(song.string()));
    unsigned long window = 0;
    ASSERT_NO_FATAL_FAILURE(WaitForMainScreen(window));
    DropDownMenuBar bar(MainMenuTitles({}), kScreenWidth);
    const std::vector<std::string> saveKeys{"ctrl+s", "ctrl+b", "ctrl+n", "ctrl+m", "ctrl+comma", "ctrl+period",
                                            "ctrl+slash"};
    for (size_t i = 0; i < saveKeys.size(); ++i) {
        SCOPED_TRACE(saveKeys[i]);
        ASSERT_TRUE(Keys("q"));
        ASSERT_TRUE(TitleBecomes(window, kChangedTitle));
        const Gorb_Rect title = bar.TitleRect(static_cast<int>(i % 2));
        ASSERT_TRUE(ClickAt(window, {title.x + title.w / 2 - 3, title.h / 2}));
        ASSERT_TRUE(Keys(saveKeys[i]));
        ASSERT_TRUE(TitleBecomes(window, kCleanTitle)) << "not saved\n" << Log();
        // The open menu is drawn for a few frames after the save and still takes the keyboard.
        ASSERT_TRUE(Keys("Down Down Escape Escape"));
        ASSERT_TRUE(Settled(window)) << Log();
        ASSERT_FALSE(program->Wait(0.2)) << "the program ended\n" << Log();
    }
    for (const auto& entry : fs::directory_iterator(app))
        EXPECT_EQ(entry.path().filename().string().rfind("crash(", 0), std::string::npos) << entry.path();
    ImportOptionsProvider options;
    const auto module = LoadNewModule(song.string(), options);
    ASSERT_TRUE(module);
    EXPECT_EQ(module->title, "Four Corners");
    ASSERT_TRUE(ChooseFileMenu(window, "Quit...")) << Log();
    ASSERT_EQ(program->Wait(kStepSeconds), 0) << Log();
}

TEST_F(MusicianTest, LoadsAModuleThroughTheFileRequesterAndAsksBeforeClosingWithChanges) {
    fs::create_directories(dir / "songs");
    const fs::path song = dir / "songs" / "corners.sdrltk";
    fs::copy_file(test::SourceDir() / "data" / "demo.sdrltk", song);
    const Screen565 expected = Screenshot(ShellQuoted(song.string()), "corners.png");

    auto program = Start("");
    unsigned long window = 0;
    ASSERT_NO_FATAL_FAILURE(WaitForMainScreen(window));
    ASSERT_NO_FATAL_FAILURE(LoadThroughRequester(window, song));
    auto before = Settled(window);
    // The grid shows the module as it does when the program starts on it.
    EXPECT_TRUE(WaitUntil(
        [&] {
            const auto now = Look(window);
            return now && now->Region(grid) == expected.Region(grid);
        },
        kStepSeconds))
        << "the loaded module isn't shown";

    // A note changes the module: the close box asks, and Return answers with the focused "Yes".
    ASSERT_TRUE(Keys("q"));
    ASSERT_TRUE(TitleBecomes(window, kChangedTitle));
    before = Settled(window);
    ASSERT_TRUE(before);
    ASSERT_TRUE(x->CloseWindow(window));
    ASSERT_TRUE(RequesterOpens(window, *before)) << "quitting didn't ask";
    ASSERT_TRUE(Keys("Return"));
    ASSERT_EQ(program->Wait(kStepSeconds), 0) << Log();

    EXPECT_EQ(test::ReadBytes(song), test::ReadBytes(test::SourceDir() / "data" / "demo.sdrltk"));
    // The loaded module joined the recent modules kept in the preferences.
    EXPECT_NE(TextOf(app / "sondrel.prefs").find(song.string()), std::string::npos);
}

TEST_F(MusicianTest, ImportsAModAnswersItsDialogPlaysSavesAndUndoesAnInstrumentEdit) {
    const fs::path corpus = test::CorpusDir();
    if (corpus.empty()) GTEST_SKIP() << "the shared corpus is not beside the sources";
    const fs::path corpusMod = corpus / "mod" / "tecnoballz_high-score.mod";
    const fs::path mod = dir / "high-score.mod";
    fs::copy_file(corpusMod, mod);

    auto program = Start("");
    unsigned long window = 0;
    ASSERT_NO_FATAL_FAILURE(WaitForMainScreen(window));
    ASSERT_NO_FATAL_FAILURE(LoadThroughRequester(window, mod));
    // The MOD's dialog comes over the requester; Return takes its "Okay".
    auto before = Settled(window);
    ASSERT_TRUE(before);
    ASSERT_TRUE(Keys("Return"));
    ASSERT_TRUE(Changes(window, *before, grid)) << "the MOD wasn't loaded";

    before = Settled(window);
    ASSERT_TRUE(before);
    ASSERT_TRUE(Keys("ctrl+p"));
    EXPECT_TRUE(Changes(window, *before, grid)) << "the song didn't start";
    ASSERT_TRUE(Keys("ctrl+p"));

    before = Settled(window);
    ASSERT_TRUE(before);
    ASSERT_TRUE(ChooseFileMenu(window, "Save module as..."));
    ASSERT_TRUE(RequesterOpens(window, *before)) << "no file requester";
    ASSERT_TRUE(Type((dir / "imported").string()));
    ASSERT_TRUE(Keys("Return"));
    const fs::path saved = dir / "imported.sdrltk";
    ASSERT_TRUE(WaitUntil([&] { return fs::exists(saved) && fs::file_size(saved) > 0; }, kStepSeconds));
    ASSERT_TRUE(TitleBecomes(window, kCleanTitle));

    // The instrument editor: a new start volume, "Okay", and the change is
    // one step of undo. The 520 x 544 editor stands in the middle of the
    // screen with its start volume field and its "Okay" where given here.
    before = Settled(window);
    ASSERT_TRUE(before);
    const Gorb_Rect edit = e2e::MainScreenControl(kControlEditInstrument);
    ASSERT_TRUE(ClickAt(window, {edit.x + edit.w / 2, edit.y + edit.h / 2}));
    ASSERT_TRUE(RequesterOpens(window, *before)) << "no instrument editor";
    ASSERT_TRUE(ClickAt(window, {275, 324}));
    ASSERT_TRUE(Keys("End BackSpace BackSpace BackSpace BackSpace BackSpace BackSpace 8"));
    ASSERT_TRUE(ClickAt(window, {516, 549}));
    ASSERT_TRUE(TitleBecomes(window, kChangedTitle)) << "the instrument edit changed nothing";
    ASSERT_TRUE(Keys("ctrl+y"));
    ASSERT_TRUE(TitleBecomes(window, kCleanTitle)) << "undo didn't take the edit back";

    ASSERT_TRUE(ChooseFileMenu(window, "Quit..."));
    ASSERT_EQ(program->Wait(kStepSeconds), 0) << Log();
    ImportOptionsProvider options;
    const auto module = LoadNewModule(saved.string(), options);
    ASSERT_TRUE(module);
    EXPECT_GT(module->patternListLength, 1);
}

// With both key options on in the preferences file: the digits type the
// volume after a note, Ctrl+Z undoes the last digit and Ctrl+Y redoes it.
TEST_F(MusicianTest, TypesAVolumeWithDigitsAndUndoesWithCtrlZWhenThePreferencesSaySo) {
    const std::string prefs = "keys { undo_with_ctrl_z = true type_values_with_digits = true }\n";
    std::ofstream(app / "sondrel.prefs") << prefs;
    auto program = Start("");
    unsigned long window = 0;
    ASSERT_NO_FATAL_FAILURE(WaitForMainScreen(window));

    // A note on line 0 (the cursor goes on to line 1); 0 and 7 on line 1's
    // volume make nothing (no note there), 1 and 2 on line 0's make 12; undo
    // and redo leave 12, one more undo the 1.
    ASSERT_TRUE(Keys("q Right 0 7 Up 1 2 ctrl+z ctrl+y ctrl+z"));
    ASSERT_TRUE(TitleBecomes(window, kChangedTitle));
    ASSERT_NO_FATAL_FAILURE(SaveAndQuit(window, *program, dir / "song"));

    ImportOptionsProvider options;
    const auto module = LoadNewModule((dir / "song.sdrltk").string(), options);
    ASSERT_TRUE(module);
    EXPECT_EQ(module->patterns[0].lines[0].note[0], 48);
    EXPECT_EQ(module->patterns[0].lines[0].volume[0], 1);
    EXPECT_EQ(module->patterns[0].lines[1].note[0], kNoteEmpty);
    const std::string kept = TextOf(app / "sondrel.prefs");
    EXPECT_NE(kept.find("undo_with_ctrl_z        = true"), std::string::npos) << kept;
    EXPECT_NE(kept.find("type_values_with_digits = true"), std::string::npos) << kept;
}

// A note with an arpeggio ("A" in its channel command field), then
// "Module settings" > "Chip:" picks the TI chip; the saved module keeps both.
// The dialog stands in the middle of the screen with its chip choice, the
// choice's third line and "Okay" where given here.
TEST_F(MusicianTest, WritesAnArpeggioChoosesTheTiChipAndSavesBoth) {
    auto program = Start("");
    unsigned long window = 0;
    ASSERT_NO_FATAL_FAILURE(WaitForMainScreen(window));
    ASSERT_TRUE(Keys("q Up Right Right a"));
    auto before = Settled(window);
    ASSERT_TRUE(before);
    const Gorb_Rect settings = e2e::MainScreenControl(kControlModuleSettings);
    ASSERT_TRUE(ClickAt(window, {settings.x + settings.w / 2, settings.y + settings.h / 2}));
    ASSERT_TRUE(RequesterOpens(window, *before)) << "no module settings";
    before = Settled(window);
    ASSERT_TRUE(before);
    ASSERT_TRUE(ClickAt(window, {465, 365}));
    ASSERT_TRUE(Changes(window, *before, {340, 380, 250, 50})) << "the chip choice didn't open";
    ASSERT_TRUE(ClickAt(window, {465, 422}));
    ASSERT_TRUE(Settled(window));
    ASSERT_TRUE(ClickAt(window, {466, 458}));
    ASSERT_NO_FATAL_FAILURE(SaveAndQuit(window, *program, dir / "song"));

    ImportOptionsProvider options;
    const auto module = LoadNewModule((dir / "song.sdrltk").string(), options);
    ASSERT_TRUE(module);
    EXPECT_EQ(module->chipVariant, kVariantTi);
    const PatternLine& line = module->patterns[0].lines[0];
    EXPECT_EQ(line.note[0], 48);
    EXPECT_EQ(line.channelCommand[0], kEffectArpeggio);
    EXPECT_EQ(line.channelParam[0], 0x47);
}

// A desktop big enough for the window at twice the size.
class ScaledWindowTest : public MusicianTest {
protected:
    std::string XScreen() const override { return "1700x1300x24"; }
};

TEST_F(ScaledWindowTest, TheWindowAtTwiceTheSizeHasSquarePixelsAndTakesClicksAtTheirDoubledPlace) {
    std::ofstream(app / "sondrel.prefs") << "window { window_scale = 2 }\n";
    auto program = Start("");
    unsigned long window = 0;
    ASSERT_NO_FATAL_FAILURE(WaitForMainScreen(window));
    auto before = Settled(window);
    ASSERT_TRUE(before);
    ASSERT_EQ(std::pair(before->width, before->height), std::pair(1600, 1200));
    // Every screen pixel is a 2 x 2 square of one colour, and the screen is all there.
    int uneven = 0;
    for (int y = 0; y < 1200; y += 2) {
        for (int x = 0; x < 1600; x += 2) {
            const auto at = [&](int dx, int dy) { return before->pixels[(y + dy) * 1600 + x + dx]; };
            uneven += at(1, 0) != at(0, 0) || at(0, 1) != at(0, 0) || at(1, 1) != at(0, 0);
        }
    }
    EXPECT_EQ(uneven, 0);
    const Gorb_Rect settings = e2e::MainScreenControl(kControlModuleSettings);
    EXPECT_NE(before->Region({2 * settings.x, 2 * settings.y, 2 * settings.w, 2 * settings.h}),
              std::vector<uint16_t>(4 * settings.w * settings.h, before->pixels[0]));

    // "Module settings" where it shows, twice as far from the corner.
    ASSERT_TRUE(ClickAt(window, {2 * settings.x + settings.w, 2 * settings.y + settings.h}));
    const Gorb_Rect middle{kScreenWidth - 40, kScreenHeight - 20, 80, 40};
    ASSERT_TRUE(Changes(window, *before, middle)) << "no module settings";
    // The close box ends the dialog and the program; the scale stays in the preferences.
    ASSERT_TRUE(x->CloseWindow(window));
    ASSERT_EQ(program->Wait(kStepSeconds), 0) << Log();
    EXPECT_NE(TextOf(app / "sondrel.prefs").find("window_scale = 2"), std::string::npos);
}

}  // namespace
}  // namespace sondrel
