#include "app/application.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <deque>
#include <functional>
#include <thread>

#include "files/module_file.h"
#include "model/exception.h"
#include "sound/song_player.h"
#include "test_support.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

class FakePlatform;

// A device that plays as fast as the audio thread asks for its cursor.
class FakeSoundBuffer : public SoundBuffer {
public:
    explicit FakeSoundBuffer(FakePlatform& platform) : platform_(platform) {}
    bool Create() override;
    void Release() override;
    bool Play() override;
    bool GetPlayCursor(uint32_t& position) override {
        if (playing_) cursor_ = (cursor_ + 256) % kSoundBufferBytes;
        position = cursor_;
        return true;
    }
    bool Lock(uint32_t offset, uint32_t bytes, SoundBufferRegions& regions) override;
    void Unlock(const SoundBufferRegions&) override {}

private:
    FakePlatform& platform_;
    bool playing_ = false;
    uint32_t cursor_ = 0;
};

class FakeMidiDevice : public MidiDevice {
public:
    explicit FakeMidiDevice(FakePlatform& platform) : platform_(platform) {}
    bool Open(unsigned deviceId, Callback callback) override;
    void Close() override;

private:
    FakePlatform& platform_;
};

// Records what the shell asks of the machine, in order. Shutdown steps note
// whether the preferences file has been rewritten by then.
class FakePlatform : public AppPlatform {
public:
    bool OpenDisplay(bool fullscreen) override {
        log.push_back(fullscreen ? "open display fullscreen" : "open display");
        if (displayOpens) screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
        return displayOpens;
    }
    void SetWindowTitle(const std::string& title) override { log.push_back("title " + title); }
    void CloseDisplay() override {
        log.push_back("close display");
        screen.reset();
    }
    void UpdateInput() override {}
    bool GetEvent(Gorb_Event& event) override {
        if (events.empty()) return false;
        event = events.front();
        events.pop_front();
        return true;
    }
    Gorb_Surface* Screen() override { return screen.get(); }
    void NextFrame() override {
        ++frames;
        if (onFrame) onFrame(frames);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    bool SaveScreenshot(const fs::path& path) override {
        log.push_back("screenshot " + path.string());
        return true;
    }
    std::unique_ptr<SoundBuffer> CreateSoundBuffer() override { return std::make_unique<FakeSoundBuffer>(*this); }
    std::unique_ptr<MidiDevice> CreateMidiDevice() override { return std::make_unique<FakeMidiDevice>(*this); }
    void ShowMessage(const std::string& text) override { log.push_back("message " + text); }
    UtcTime CurrentTime() override { return {2007, 3, 4, 5, 6, 7}; }

    std::string PreferencesState() const {
        std::error_code error;
        if (!fs::exists(preferencesFile, error)) return " (no preferences)";
        return test::ReadBytes(preferencesFile) == originalPreferences ? " (old preferences)" : " (new preferences)";
    }

    std::vector<std::string> log;
    bool displayOpens = true;
    std::unique_ptr<Gorb_Surface> screen;
    std::deque<Gorb_Event> events;
    std::function<void(long)> onFrame;
    long frames = 0;
    fs::path preferencesFile;
    std::vector<unsigned char> originalPreferences;
    MidiDevice::Callback midiSend;
    std::array<uint8_t, kSoundBufferBytes> sound{};
    bool soundCreates = true;
};

bool FakeSoundBuffer::Create() {
    platform_.log.push_back("sound create");
    return platform_.soundCreates;
}

void FakeSoundBuffer::Release() { platform_.log.push_back("sound release" + platform_.PreferencesState()); }

bool FakeSoundBuffer::Play() {
    platform_.log.push_back("sound play");
    playing_ = true;
    return true;
}

bool FakeSoundBuffer::Lock(uint32_t offset, uint32_t bytes, SoundBufferRegions& regions) {
    regions = SplitRegions(platform_.sound.data(), kSoundBufferBytes, offset, bytes);
    return true;
}

bool FakeMidiDevice::Open(unsigned deviceId, Callback callback) {
    platform_.log.push_back("midi open " + std::to_string(deviceId));
    platform_.midiSend = std::move(callback);
    return true;
}

void FakeMidiDevice::Close() {
    platform_.log.push_back("midi close" + platform_.PreferencesState());
    platform_.midiSend = nullptr;
}

AppOptions ExitAfter(long frames, bool playOnStart = false) {
    AppOptions options;
    options.exitAfterFrames = frames;
    options.playOnStart = playOnStart;
    return options;
}

struct ApplicationTest : ::testing::Test {
    ApplicationTest() : savedDirectory(fs::current_path()) {
        fs::create_directories(scratch / "program");
        fs::create_directories(scratch / "start");
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
        for (uint8_t byte : platform.sound)
            if (byte) return true;
        return false;
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
    EXPECT_EQ(app.ProgramName(), "sondrel");
    EXPECT_EQ(platform.log, (std::vector<std::string>{"open display fullscreen", "title Sondrel", "midi open 3",
                                                      "sound create", "sound play",
                                                      "sound release (old preferences)",
                                                      "midi close (new preferences)", "close display"}));
    // A new module: NTSC, divider 1x.
    EXPECT_EQ(app.CurrentModule().chipType, kChipNtsc);
    EXPECT_EQ(app.CurrentModule().frequencyDivider, kDivider1x);
    EXPECT_EQ(app.CurrentModule().patternListLength, 1);
}

TEST_F(ApplicationTest, PreferencesThatCantBeReadOrWritten) {
    // A malformed file: a message, and the program ends before the display opens.
    WritePreferences("appeareance { fullscreen = maybe }");
    {
        Application app(platform, paths);
        EXPECT_EQ(app.Run("sondrel"), 1);
    }
    EXPECT_EQ(platform.log, (std::vector<std::string>{"message Couldn't load the preferences file (sondrel.prefs)."}));
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
    EXPECT_EQ(platform.log, (std::vector<std::string>{"open display", "title Sondrel", "sound create",
                                                      "message Couldn't save the configuration file.",
                                                      "close display"}));
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
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), "message Couldn't load module."), 1);
    EXPECT_EQ(app.CurrentModule().title, "");
}

TEST_F(ApplicationTest, AnExceptionOrAFaultInTheLoopSavesTheModuleAndShutsDown) {
    PutDemoSong("song.sdrltk");
    const std::string crashName = "crash(2007.3.4 5.6.7).sdrltk.";
    const std::string crashMessage = "message Sondrel has crashed.\nThe current module is saved as " + crashName;
    platform.onFrame = [](long frame) {
        if (frame == 2) throw InternalException("broken");
    };
    {
        AppOptions options;
        options.screenshot = "last.png";
        Application app(platform, paths, options);
        EXPECT_EQ(app.Run("sondrel song.sdrltk"), 0);
        EXPECT_EQ(app.Frames(), 1);
    }
    ASSERT_GE(platform.log.size(), 4u);
    EXPECT_EQ(platform.log[platform.log.size() - 4], crashMessage);
    EXPECT_EQ(platform.log[platform.log.size() - 3], "screenshot last.png");
    EXPECT_EQ(platform.log.back(), "close display");
    auto saved = std::make_unique<Module>();
    ImportOptionsProvider options;
    ASSERT_TRUE(LoadAnyFile(*saved, (paths.preferencesDirectory / crashName).string(), options));
    EXPECT_EQ(saved->title, "Four Corners");

    // A hardware fault takes the same way out.
    fs::remove(paths.preferencesDirectory / crashName);
    platform.log.clear();
    platform.onFrame = nullptr;
    AppOptions faulting;
    faulting.faultAfterFrames = 3;
    Application app(platform, paths, faulting);
    EXPECT_EQ(app.Run("sondrel"), 0);
    EXPECT_EQ(std::count(platform.log.begin(), platform.log.end(), crashMessage), 1);
    EXPECT_TRUE(fs::exists(paths.preferencesDirectory / crashName));
    EXPECT_EQ(platform.log.back(), "close display");
}

TEST_F(ApplicationTest, EscapeOrTheCloseBoxEndsTheLoop) {
    platform.events.push_back({.type = kGorbKeyDown, .key = 57});
    platform.events.push_back({.type = kGorbKeyDown, .key = 1});
    Application app(platform, paths);
    EXPECT_EQ(app.Run("sondrel"), 0);
    EXPECT_EQ(app.Frames(), 1);

    platform.frames = 0;
    platform.onFrame = [&](long frame) {
        if (frame == 4) platform.events.push_back({.type = kGorbCloseRequest});
    };
    Application again(platform, paths);
    EXPECT_EQ(again.Run("sondrel"), 0);
    EXPECT_EQ(again.Frames(), 5);
}

TEST_F(ApplicationTest, TheSongIsHeardWhenStartedAndMidiNotesArePreviewed) {
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
}

TEST(PlayerFeedback, LineFlagsBecomeRedrawRequestsAndAreCleared) {
    auto module = std::make_unique<Module>();
    module->NewModule({});
    SongPlayer song;
    song.Attach(*module);
    AudioMutex mutex;

    song.lineAdvanced = 1;
    song.linePlayed = 1;
    PlayerFeedback feedback = TakePlayerFeedback(song, mutex);
    EXPECT_TRUE(feedback.follow);
    EXPECT_EQ(feedback.redrawBits, 27u);
    EXPECT_EQ(song.lineAdvanced, 0);
    EXPECT_EQ(song.linePlayed, 0);

    song.linePlayed = 1;
    feedback = TakePlayerFeedback(song, mutex);
    EXPECT_FALSE(feedback.follow);
    EXPECT_EQ(feedback.redrawBits, 16u);
    EXPECT_EQ(song.linePlayed, 0);

    feedback = TakePlayerFeedback(song, mutex);
    EXPECT_FALSE(feedback.follow);
    EXPECT_EQ(feedback.redrawBits, 0u);
}

}  // namespace
}  // namespace sondrel
