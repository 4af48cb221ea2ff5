#include "app/application.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <deque>
#include <functional>
#include <optional>
#include <thread>

#include "edit/main_menu.h"
#include "files/module_file.h"
#include "model/exception.h"
#include "test_support.h"
#include "ui/menu_bar.h"
#include "ui/requesters/requesters.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

// What the fake devices share with the fake platform. Shutdown steps note
// whether the preferences file has been rewritten by then.
struct Machine {
    std::string PreferencesState() const {
        std::error_code error;
        if (!fs::exists(preferencesFile, error)) return " (no preferences)";
        return test::ReadBytes(preferencesFile) == originalPreferences ? " (old preferences)" : " (new preferences)";
    }

    std::vector<std::string> log;
    fs::path preferencesFile;
    std::vector<unsigned char> originalPreferences;
    MidiDevice::Callback midiSend;
    std::array<uint8_t, kSoundBufferBytes> sound{};
    bool soundCreates = true;
};

// A device that plays as fast as the audio thread asks for its cursor.
class FakeSoundBuffer : public SoundBuffer {
public:
    explicit FakeSoundBuffer(Machine& machine) : m_(machine) {}
    bool Create() override { return m_.log.push_back("sound create"), m_.soundCreates; }
    void Release() override { m_.log.push_back("sound release" + m_.PreferencesState()); }
    bool Play() override { return m_.log.push_back("sound play"), playing_ = true; }
    bool GetPlayCursor(uint32_t& position) override {
        if (playing_) cursor_ = (cursor_ + 256) % kSoundBufferBytes;
        position = cursor_;
        return true;
    }
    bool Lock(uint32_t offset, uint32_t bytes, SoundBufferRegions& regions) override {
        regions = SplitRegions(m_.sound.data(), kSoundBufferBytes, offset, bytes);
        return true;
    }
    void Unlock(const SoundBufferRegions&) override {}

private:
    Machine& m_;
    bool playing_ = false;
    uint32_t cursor_ = 0;
};

class FakeMidiDevice : public MidiDevice {
public:
    explicit FakeMidiDevice(Machine& machine) : m_(machine) {}
    bool Open(unsigned deviceId, Callback callback) override {
        m_.midiSend = std::move(callback);
        return m_.log.push_back("midi open " + std::to_string(deviceId)), true;
    }
    void Close() override { m_.log.push_back("midi close" + m_.PreferencesState()), m_.midiSend = nullptr; }

private:
    Machine& m_;
};

// Records what the shell asks of the machine, in order.
class FakePlatform : public AppPlatform, public Machine {
public:
    bool OpenDisplay(bool fullscreen, int scale) override {
        log.push_back(std::string(fullscreen ? "open display fullscreen" : "open display") +
                      (scale ? " scale " + std::to_string(scale) : ""));
        if (displayOpens) screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
        if (scale) windowScale = scale;
        return displayOpens;
    }
    int WindowScale() override { return windowScale; }
    void SetWindowTitle(const std::string& title) override { log.push_back("title " + title); }
    void CloseDisplay() override { log.push_back("close display"), screen.reset(); }
    void UpdateInput() override {}
    bool GetEvent(Gorb_Event& event) override {
        if (events.empty()) return false;
        event = events.front();
        events.pop_front();
        return true;
    }
    uint32_t KeyModifiers() override { return modifiers; }
    uint32_t MouseState(int& x, int& y) override { return x = y = 0, 0u; }
    Gorb_Surface* Screen() override { return screen.get(); }
    void NextFrame() override {
        ++frames;
        if (onFrame) onFrame(frames);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    bool SaveScreenshot(const fs::path& path) override { return log.push_back("screenshot " + path.string()), true; }
    std::unique_ptr<SoundBuffer> CreateSoundBuffer() override { return std::make_unique<FakeSoundBuffer>(*this); }
    std::unique_ptr<MidiDevice> CreateMidiDevice() override { return std::make_unique<FakeMidiDevice>(*this); }
    void ShowMessage(const std::string& text) override { log.push_back("message " + text); }
    UtcTime CurrentTime() override { return {2007, 3, 4, 5, 6, 7}; }
    std::string ClipboardText() override { return clipboard; }
    void SetClipboardText(const std::string& text) override { clipboard = text; }

    bool displayOpens = true;
    int windowScale = 0;  // what the desktop picks when the preferences have no scale
    std::string clipboard;
    uint32_t modifiers = 0;
    std::unique_ptr<Gorb_Surface> screen;
    std::deque<Gorb_Event> events;
    std::function<void(long)> onFrame;
    long frames = 0;
};

AppOptions ExitAfter(long frames, bool playOnStart = false) {
    return {.exitAfterFrames = frames, .playOnStart = playOnStart, .screenshot = {}};
}

struct ApplicationTest : ::testing::Test {
    ApplicationTest() : savedDirectory(fs::current_path()) {
        fs::create_directories(scratch / "program");
        fs::create_directories(scratch / "start");
        fs::copy(test::BinaryDir() / "skins", scratch / "program" / "skins", fs::copy_options::recursive);
        fs::copy_file(test::BinaryDir() / "modfont.png", scratch / "program" / "modfont.png");
        paths = {scratch / "program", scratch / "program", scratch / "start"};
        platform.preferencesFile = scratch / "program" / "sondrel.prefs";
    }
    ~ApplicationTest() override { fs::current_path(savedDirectory); }

    void WritePreferences(const std::string& text) {
        platform.originalPreferences.assign(text.begin(), text.end());
        test::WriteBytes(platform.preferencesFile, platform.originalPreferences);
    }
    void PutDemoSong(const std::string& name) {
        fs::copy_file(test::SourceDir() / "data" / "demo.sdrltk", scratch / "start" / name);
    }
    bool SoundWasHeard() const {
        return std::any_of(platform.sound.begin(), platform.sound.end(), [](uint8_t byte) { return byte; });
    }

    fs::path savedDirectory;
    test::ScratchDir scratch;
    AppPaths paths;
    FakePlatform platform;
};

TEST_F(ApplicationTest, StartsUpAndShutsDownInOrder) {
    WritePreferences("midi_in { midi_in_enable = true midi_in_device_id = 3 } appeareance { fullscreen = true }");
    Application app(platform, paths, ExitAfter(3));
    EXPECT_EQ(app.Run("/usr/local/bin/sondrel.bin"), 0);
    EXPECT_EQ(app.Frames(), 3);
    EXPECT_EQ(platform.log, (std::vector<std::string>{"open display fullscreen", "title Sondrel", "midi open 3",
                                                      "sound create", "sound play", "title Sondrel  ",
                                                      "sound release (old preferences)",
                                                      "midi close (new preferences)", "close display"}));
}

// The window's scale: picked by the desktop on the first start and kept in
// the preferences from then on.
TEST_F(ApplicationTest, TheWindowScalePickedOnceIsKept) {
    platform.windowScale = 3;
    {
        Application app(platform, paths, ExitAfter(1));
        EXPECT_EQ(app.Run("sondrel"), 0);
    }
    EXPECT_EQ(platform.log.front(), "open display");
    const auto written = test::ReadBytes(platform.preferencesFile);
    EXPECT_NE(std::string(written.begin(), written.end()).find("window {\n\twindow_scale = 3\n}\n"), std::string::npos);

    platform.windowScale = 1;  // another desktop
    platform.log.clear();
    {
        Application app(platform, paths, ExitAfter(1));
        EXPECT_EQ(app.Run("sondrel"), 0);
    }
    EXPECT_EQ(platform.log.front(), "open display scale 3");
}

TEST_F(ApplicationTest, PreferencesThatCantBeReadOrWritten) {
    // A malformed file: a message, and the program ends before the display opens.
    WritePreferences("appeareance { fullscreen = maybe }");
    {
        Application app(platform, paths);
        EXPECT_EQ(app.Run("sondrel"), 1);
    }
    const std::string fullPath = fs::absolute(platform.preferencesFile).lexically_normal().string();
    EXPECT_EQ(platform.log, (std::vector<std::string>{
                                "message Couldn't load the preferences file (sondrel.prefs).\n" + fullPath +
                                ", line 1: \"fullscreen\" must be true or false, not \"maybe\"\n"
                                "Fix or remove that file; without it Sondrel starts with the default settings."}));
    EXPECT_EQ(platform.PreferencesState(), " (old preferences)");

    // A display that can't be opened ends the program at once, preferences unwritten.
    fs::remove(platform.preferencesFile);
    platform.log.clear();
    platform.displayOpens = false;
    {
        Application app(platform, paths);
        EXPECT_EQ(app.Run("sondrel"), 1);
    }
    EXPECT_EQ(platform.log, (std::vector<std::string>{"open display", "close display"}));
    EXPECT_EQ(platform.PreferencesState(), " (no preferences)");

    // Preferences that can't be saved: a message, and shutdown goes on. No
    // sound device: the program runs silently.
    platform.log.clear();
    platform.displayOpens = true;
    platform.soundCreates = false;
    paths.preferencesDirectory = scratch / "vanishing";
    fs::create_directories(paths.preferencesDirectory);
    platform.onFrame = [&](long) { fs::remove_all(scratch / "vanishing"); };
    {
        Application app(platform, paths, ExitAfter(2));
        EXPECT_EQ(app.Run("sondrel"), 0);
    }
    ASSERT_EQ(platform.log.size(), 6u);
    EXPECT_EQ(platform.log[4].rfind("message Couldn't save the configuration file.\nNo such file or directory", 0), 0u)
        << platform.log[4];
    platform.log.erase(platform.log.begin() + 4);
    EXPECT_EQ(platform.log,
              (std::vector<std::string>{"open display", "title Sondrel", "sound create", "title Sondrel  ", "close display"}));
}

// The preferences and the crash save on a disk that has filled up: each
// failure is told with its reason, and the preferences file stays as it was.
TEST_F(ApplicationTest, AFullDiskKeepsThePreferencesAndTellsTheCrashSaveFailed) {
    test::SmallDisk disk;
    if (!disk.Mounted()) GTEST_SKIP() << disk.Why();
    paths.preferencesDirectory = disk / "";
    platform.preferencesFile = disk / "sondrel.prefs";
    WritePreferences("sound_output { volume = 70 }\n");
    disk.Fill();
    {
        Application app(platform, paths, {.faultAfterFrames = 2, .screenshot = {}});
        EXPECT_EQ(app.Run("sondrel"), kExitAfterCrash);
    }
    const std::string crashName = CrashFileName({2007, 3, 4, 5, 6, 7});
    const std::string crashTold = "message " + CrashSaveFailedMessage(disk / crashName, "");
    EXPECT_EQ(std::count_if(platform.log.begin(), platform.log.end(),
                            [&](const std::string& line) {
                                return line.starts_with(crashTold) && line.ends_with("\nNo space left on device");
                            }),
              1)
        << testing::PrintToString(platform.log);
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(),
                         "message Couldn't save the configuration file.\nNo space left on device"),
              1);
    EXPECT_EQ(platform.PreferencesState(), " (old preferences)");
    EXPECT_EQ(disk.Names(), (std::vector<std::string>{"filler", "sondrel.prefs"}));
}

TEST_F(ApplicationTest, ASkinThatCantBeLoadedShowsTheLoadersMessageAndEnds) {
    // A skin lacking the keys the widgets need, then no skin at all.
    const fs::path skin = scratch / "program" / "skins" / "default.skin";
    const std::string empty = "<skin name=\"bare\" author=\"\" picture=\"default.png\">\n</skin>\n";
    test::WriteBytes(skin, std::vector<unsigned char>(empty.begin(), empty.end()));
    const std::string shown = fs::absolute(skin).lexically_normal().string();
    const std::string missingWindow = "message Skin item name not found\nskit_data_.name: BWINDOW\nin " + shown;
    const std::string missingFile = "message Load(): Couldn't open file\n" + shown + " (No such file or directory)";
    for (const std::string& message : {missingWindow, missingFile}) {
        platform.log.clear();
        Application app(platform, paths);
        EXPECT_EQ(app.Run("sondrel"), 1);
        EXPECT_EQ(platform.log, (std::vector<std::string>{"open display", "title Sondrel", message, "close display"}));
        fs::remove(skin);
    }
}

TEST_F(ApplicationTest, TheFileOnTheCommandLineOpensFromTheStartDirectory) {
    PutDemoSong("my song.sdrltk");
    {
        Application app(platform, paths, ExitAfter(1));
        EXPECT_EQ(app.Run("sondrel \"my song.sdrltk\""), 0);
        EXPECT_EQ(app.CurrentModule().title, "Four Corners");
        EXPECT_EQ(app.CurrentModule().fileName, "my song.sdrltk");
    }
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "message Couldn't load module."), 0);

    // Unquoted, the name ends at the blank: "my" can't be loaded and the new module stays.
    platform.log.clear();
    Application app(platform, paths, ExitAfter(1));
    EXPECT_EQ(app.Run("sondrel my song.sdrltk"), 0);
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(),
                         "message Couldn't load module.\nNo such file or directory"),
              1);
    EXPECT_EQ(app.CurrentModule().title, "");
}

TEST_F(ApplicationTest, AnExceptionOrAFaultInTheLoopSavesTheModuleAndShutsDown) {
    PutDemoSong("song.sdrltk");
    const std::string crashName = "crash(2007.3.4 5.6.7).sdrltk.";
    const std::string crashMessage = "message " + CrashMessage(paths.preferencesDirectory / crashName);
    Application* running = nullptr;
    // Texts the module file can't hold don't stop the crash save.
    platform.onFrame = [&running](long frame) {
        if (frame != 2) return;
        running->CurrentModule().title += " 0";
        running->CurrentModule().notes.assign(300, 'n');
        throw InternalException("broken");
    };
    {
        Application app(platform, paths, {.screenshot = "last.png"});
        running = &app;
        EXPECT_EQ(app.Run("sondrel song.sdrltk"), kExitAfterCrash);
        EXPECT_EQ(app.Frames(), 1);
    }
    ASSERT_GE(platform.log.size(), 4u);
    EXPECT_EQ(platform.log[platform.log.size() - 4], crashMessage);
    EXPECT_EQ(platform.log[platform.log.size() - 3], "screenshot last.png");
    EXPECT_EQ(platform.log.back(), "close display");
    auto saved = std::make_unique<Module>();
    ImportOptionsProvider options;
    ASSERT_TRUE(LoadAnyFile(*saved, (paths.preferencesDirectory / crashName).string(), options));
    EXPECT_EQ(saved->title, "Four Corners O");
    EXPECT_EQ(saved->notes, std::string(255, 'n'));

    // A hardware fault takes the same way out; in the same second it does not
    // replace the first crash file but counts on from its name.
    const auto firstCrash = test::ReadBytes(paths.preferencesDirectory / crashName);
    platform.log.clear();
    platform.onFrame = nullptr;
    {
        Application app(platform, paths, {.faultAfterFrames = 3, .screenshot = {}});
        EXPECT_EQ(app.Run("sondrel"), kExitAfterCrash);
    }
    const fs::path second = paths.preferencesDirectory / (crashName + "2");
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "message " + CrashMessage(second)), 1);
    EXPECT_TRUE(fs::exists(second));
    EXPECT_EQ(test::ReadBytes(paths.preferencesDirectory / crashName), firstCrash);
    EXPECT_EQ(platform.log.back(), "close display");

    // A crash file that can't be written is not reported as saved.
    platform.log.clear();
    AppPaths gone = paths;
    gone.preferencesDirectory /= "gone";
    {
        Application app(platform, gone, {.faultAfterFrames = 3, .screenshot = {}});
        EXPECT_EQ(app.Run("sondrel"), kExitAfterCrash);
    }
    const std::string failed = "message " + CrashSaveFailedMessage(gone.preferencesDirectory / crashName,
                                                                   "No such file or directory");
    EXPECT_EQ(std::count_if(platform.log.begin(), platform.log.end(),
                            [&](const std::string& line) { return line.rfind(failed, 0) == 0; }),
              1);
}

TEST_F(ApplicationTest, EscapeKeepsTheProgramRunningAndTheCloseBoxAsksBeforeLosingChanges) {
    // Unchanged, the module goes at once; Escape at the start did nothing.
    platform.events.push_back({.type = kGorbKeyDown, .key = 1});
    platform.onFrame = [&](long frame) {
        if (frame == 4) platform.events.push_back({.type = kGorbCloseRequest});
    };
    {
        Application app(platform, paths);
        EXPECT_EQ(app.Run("sondrel"), 0);
        EXPECT_EQ(app.Frames(), 5);
    }

    // A note typed first: the close box asks, and Return on "Yes" quits.
    platform.frames = 0;
    platform.events.push_back({.type = kGorbKeyDown, .key = 0x10});
    platform.onFrame = [&](long frame) {
        if (frame == 4) platform.events.push_back({.type = kGorbCloseRequest});
        if (frame == 7) platform.events.push_back({.type = kGorbKeyDown, .key = 0x1C});
    };
    Application app(platform, paths);
    EXPECT_EQ(app.Run("sondrel"), 0);
    EXPECT_NE(app.CurrentModule().patterns[0].lines[0].note[0], 255);
    EXPECT_EQ(app.Frames(), 8);
}

TEST_F(ApplicationTest, RequestersRunFramesOfTheirOwnAndPassOnACloseRequest) {
    // A question answered with Return (its first button has the focus) leaves the program running.
    std::optional<bool> answer;
    {
        Application app(platform, paths, ExitAfter(8));
        platform.onFrame = [&](long frame) {
            if (frame == 2) answer = app.Requests().AskQuestion("Really?", "Yes", "No");
            if (frame == 4) platform.events.push_back({.type = kGorbKeyDown, .key = 0x1C});
        };
        EXPECT_EQ(app.Run("sondrel"), 0);
        EXPECT_EQ(app.Frames(), 8);
    }
    EXPECT_EQ(answer, true);

    // The window's close box while a question is open ends the question and the program.
    platform.frames = 0;
    answer.reset();
    Application app(platform, paths);
    platform.onFrame = [&](long frame) {
        if (frame == 2) answer = app.Requests().AskQuestion("Really?", "Yes", "No");
        if (frame == 5) platform.events.push_back({.type = kGorbCloseRequest});
    };
    EXPECT_EQ(app.Run("sondrel"), 0);
    EXPECT_EQ(answer, false);
    EXPECT_EQ(app.Frames(), 5);
}

TEST_F(ApplicationTest, TextEntriesPasteFromTheSystemClipboard) {
    // A name pasted into the file requester with Ctrl+V and taken with Return.
    platform.clipboard = "pasted";
    std::string chosen;
    Application app(platform, paths, ExitAfter(12));
    platform.onFrame = [&](long frame) {
        if (frame == 2) chosen = app.Requests().RequestFile({"*.sdrltk"}, "Save module as...", true, ".sdrltk");
        if (frame == 4) {
            platform.modifiers = kGorbLeftCtrl;
            platform.events.push_back({.type = kGorbKeyDown, .key = 0x2F});
        }
        if (frame == 5) {
            platform.modifiers = 0;
            platform.events.push_back({.type = kGorbKeyDown, .key = 0x1C});
        }
    };
    EXPECT_EQ(app.Run("sondrel"), 0);
    EXPECT_EQ(fs::path(chosen), fs::weakly_canonical(scratch / "program" / "pasted.sdrltk"));
}

TEST_F(ApplicationTest, TheSongIsHeardWhenStartedAndMidiNotesAreSoundedAndWritten) {
    PutDemoSong("song.sdrltk");
    {
        Application app(platform, paths, ExitAfter(40));
        app.Run("sondrel song.sdrltk");
    }
    EXPECT_FALSE(SoundWasHeard());

    Application playing(platform, paths, ExitAfter(40, true));
    playing.Run("sondrel song.sdrltk");
    EXPECT_TRUE(SoundWasHeard());

    platform.sound.fill(0);
    WritePreferences("midi_in { midi_in_enable = true }");
    platform.frames = 0;
    platform.onFrame = [&](long frame) {
        const uint8_t noteOn[] = {0x90, 69, 100};
        if (frame == 2 && platform.midiSend) platform.midiSend(noteOn, 3);
    };
    Application midi(platform, paths, ExitAfter(40));
    midi.Run("sondrel");
    EXPECT_TRUE(SoundWasHeard());
    EXPECT_EQ(midi.CurrentModule().patterns[0].lines[0].note[0], 69);
}

// The editing options are the preferences file's: the check marks of "Edit" >
// "Options", what they do and the undo shortcut start as the file says, and a
// toggle in the menu is in the file after quitting.
TEST_F(ApplicationTest, EditOptionsComeFromThePreferencesFileAndGoBackToIt) {
    // What the menu shows: the two check marks and Undo's shortcut.
    std::vector<std::string> shown;
    const auto look = [&](Application& app) {
        auto& titles = app.MainMenu().Titles();
        shown.push_back(std::string(FindMenuEntry(titles, kMenuWrapVolume)->checked ? "wrap, " : "") +
                        (FindMenuEntry(titles, kMenuPasteDelete)->checked ? "delete, " : "") +
                        FindMenuEntry(titles, kMenuUndo)->shortcut);
    };
    const auto at = [](const Gorb_Rect& r, int type) { return Gorb_Event{.type = type, .x = r.x + 4, .y = r.y + 4}; };
    const auto click = [&](const Gorb_Rect& r) {
        platform.events.push_back(at(r, kGorbButton1Down));
        platform.events.push_back(at(r, kGorbButton1Up));
    };
    {
        Application app(platform, paths, ExitAfter(1));
        platform.onFrame = [&](long) { look(app); };
        app.Run("sondrel");
    }

    WritePreferences("editing { wrap_volume = true paste_delete_notes = false } keys { undo_with_ctrl_z = true }");
    platform.frames = 0;
    Application app(platform, paths, ExitAfter(8));
    platform.onFrame = [&](long frame) {
        DropDownMenuBar& menu = app.MainMenu();
        if (frame == 1) {
            look(app);
            // A note, then V on its volume (15): wrap volume takes it round to 0.
            for (uint16_t key : {0x10, 0xC8, 0xCD, 0x2F}) platform.events.push_back({.type = kGorbKeyDown, .key = key});
        }
        // Edit > Options > "Wrap volume" with the mouse.
        const auto& edit = menu.Titles()[1].entries;
        const auto options = std::find_if(edit.begin(), edit.end(), [](auto& e) { return e.text == "Options"; });
        if (frame == 2) click(menu.TitleRect(1));
        if (frame == 3) platform.events.push_back(at(menu.EntryRect(0, int(options - edit.begin())), kGorbMouseMove));
        if (frame == 4) click(menu.EntryRect(1, 0));
        if (frame == 6) look(app);
    };
    EXPECT_EQ(app.Run("sondrel"), 0);
    EXPECT_EQ(shown, (std::vector<std::string>{"delete, CTRL + y", "wrap, CTRL + z", "CTRL + z"}));
    EXPECT_EQ(app.CurrentModule().patterns[0].lines[0].volume[0], 0);
    const auto bytes = test::ReadBytes(platform.preferencesFile);
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_NE(text.find("\twrap_volume        = false\n\tpaste_delete_notes = false\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace sondrel
