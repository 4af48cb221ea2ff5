#pragma once
// The program's skeleton: start-up in a fixed order, the frame loop that
// feeds input, MIDI-in notes and player feedback to the editor, the crash
// save when an exception (or a hardware fault) escapes the loop, and
// shutdown in a fixed order.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "app/app_platform.h"
#include "app/preferences.h"
#include "edit/command_dispatcher.h"
#include "model/module.h"
#include "screens/pattern_view/pattern_font.h"
#include "screens/pattern_view/pattern_view_drawer.h"
#include "screens/pattern_view/pattern_view_widgets.h"
#include "sound/audio_mutex.h"
#include "ui/requesters/requester_host.h"

namespace sondrel {

class AudioOutput;
class Editor;
class MidiIn;
class MidiNoteEntry;
class NotePlayer;
class SkinLibrary;
class SongPlayer;
class Toolkit;
class InputSource;
class Requesters;
class Clipboard;
class DropDownMenuBar;
class ProgramDialogs;
struct ModuleInformation;
class ProgramImportOptions;
class InstrumentEditing;

inline constexpr char kProgramTitle[] = "Sondrel";
inline constexpr char kCouldNotLoadPreferences[] = "Couldn't load the preferences file (sondrel.prefs).";
inline constexpr char kPreferencesRemedy[] =
    "Fix or remove that file; without it Sondrel starts with the default settings.";
inline constexpr char kDefaultSkin[] = "default.skin";  // in the runtime files' "skins" folder
inline constexpr char kCouldNotSavePreferences[] = "Couldn't save the configuration file.";
inline constexpr char kErrorWhileQuitting[] =
    "An error occured while quitting.\nThis shouldn't happen.\nPlease report this to Harvelt.";

// "crash(2007.3.4 5.6.7).sdrltk." for 2007-03-04 05:06:07: no leading zeros,
// and the full stop after the extension belongs to the name.
std::string CrashFileName(const UtcTime& time);
// Where the crash save goes in folder: the name, or when a file of that name
// is there already (a second fault in the same second), the name followed by
// 2, 3 and so on.
std::filesystem::path CrashFilePath(const std::filesystem::path& folder, const std::string& name);
// What the user is told after the crash save, with the folder it went to.
std::string CrashMessage(const std::filesystem::path& saved);
std::string CrashSaveFailedMessage(const std::filesystem::path& tried, const std::string& reason);

// Run's exit status after a fault or an exception that ended the loop.
constexpr int kExitAfterCrash = 3;
// What the user is told when the preferences file can't be loaded: the first
// line, then the reason (which names the file and the line) and the remedy.
std::string PreferencesLoadMessage(const std::string& reason);

// Pattern view redraw requests that follow the player.
constexpr uint32_t kRedrawFollowPlayer = 27;
constexpr uint32_t kRedrawPlayedLine = 16;

struct PlayerFeedback {
    bool follow = false;      // move the cursor to the player's line and list position
    uint32_t redrawBits = 0;  // 0 when nothing happened
};

// Takes and clears the song player's line flags under the audio mutex.
PlayerFeedback TakePlayerFeedback(SongPlayer& song, AudioMutex& audioMutex);

// Behaviour chosen from outside, for running the program unattended.
struct AppOptions {
    long exitAfterFrames = 0;   // SONDREL_EXIT_AFTER_FRAMES: close after this many frames
    long faultAfterFrames = 0;  // SONDREL_FAULT_AFTER_FRAMES: raise SIGSEGV in this frame
    bool playOnStart = false;   // SONDREL_PLAY_ON_START=1: play the song at once
    std::filesystem::path screenshot;  // SONDREL_SCREENSHOT: the last frame as PNG
    // SONDREL_FIRST_FRAME_LOG: gets the wall-clock time the first frame was
    // presented, in seconds since 1970 to the microsecond.
    std::filesystem::path firstFrameLog{};
};
AppOptions AppOptionsFromEnvironment();

struct AppPaths {
    std::filesystem::path dataDirectory;         // the runtime files; the current directory while running
    std::filesystem::path preferencesDirectory;  // "sondrel.prefs" and crash files
    std::filesystem::path startDirectory;        // command-line files are relative to it
};
// The running program's directories and the current directory. Says on
// stderr when the runtime files can't be found.
AppPaths CurrentAppPaths();

class Application : private RequesterHost, private CommandHost {
public:
    Application(AppPlatform& platform, AppPaths paths, AppOptions options = {});
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // The whole run; the program's exit status.
    int Run(const std::string& commandLine);

    // The module load routine: reads or imports the file into a fresh module
    // and takes it over; on failure shows "Couldn't load module." and keeps
    // the current one.
    bool LoadModule(const std::string& path);
    // The close request (the window's close box): asks first when the
    // module has changed.
    void RequestClose();

    // The message, question and file requesters over the main screen; each
    // runs frames of its own until answered.
    Requesters& Requests() { return *requesters_; }

    Module& CurrentModule() { return *module_; }
    // The main screen's widgets, for the pattern view to fill.
    const PatternViewWidgets& ScreenWidgets() const { return screenWidgets_; }
    DropDownMenuBar& MainMenu() { return *menuBar_; }
    const Preferences& Prefs() const { return prefs_; }
    const std::string& ProgramName() const { return programName_; }
    long Frames() const { return frames_; }

private:
    bool StartUp();
    void RunLoop();
    void RunFrame();
    void SaveCrashModule(const std::exception& error);
    void ShutDown();

    // The frame's steps that later parts of the editor take over.
    void StartToolkit();
    void UpdateToolkit();
    void DispatchCommands();
    void EnterMidiNotes();
    void UpdateView(const PlayerFeedback& feedback);
    void DrawScreen();
    void StopToolkit();

    void StartPlaying();
    // Counts a presented frame; the unattended frame limit closes the program.
    void FramePresented(bool insideRequester);
    bool FrameLimitReached() const;

    // What a requester's frames need of the main loop.
    void PollInput() override;
    void DrawFrame() override;
    bool HandleCloseRequest() override;
    std::filesystem::path PreferencesFile() const;

    // What the command dispatcher needs of the program.
    std::string RequestFile(const std::vector<std::string>& patterns, const std::string& title, bool saveMode,
                            const std::string& defaultExtension) override;
    void ReplaceModule(std::unique_ptr<Module> fresh) override;
    void ModuleFileUsed(const std::string& path) override;
    std::string RecentModule(int index) override;
    void ShowDialog(ProgramDialog dialog) override;
    void TakeScreenshot();
    void EditPreferences();
    ModuleInformation ModuleInformationNow();
    bool EditMidiExportOptions(MidiExportOptions& options) override;
    ImportOptionsProvider& ImportOptions() override;

    AppPlatform& platform_;
    AppPaths paths_;
    AppOptions options_;
    std::string programName_ = "sondrel";

    std::unique_ptr<AudioMutex> audioMutex_;
    Preferences prefs_;
    std::unique_ptr<Config> config_;
    bool displayOpen_ = false;
    std::unique_ptr<Module> module_;
    std::unique_ptr<SongPlayer> song_;
    std::unique_ptr<NotePlayer> notes_;
    std::unique_ptr<Editor> editor_;
    std::unique_ptr<MidiIn> midiIn_;
    std::unique_ptr<MidiNoteEntry> midiEntry_;
    std::unique_ptr<SoundBuffer> soundBuffer_;
    std::unique_ptr<AudioOutput> audio_;
    std::unique_ptr<SkinLibrary> skins_;
    std::unique_ptr<InputSource> input_;
    std::unique_ptr<Clipboard> clipboard_;
    std::unique_ptr<Toolkit> toolkit_;
    std::unique_ptr<Requesters> requesters_;
    std::unique_ptr<DropDownMenuBar> menuBar_;
    PatternViewWidgets screenWidgets_;
    std::unique_ptr<ProgramDialogs> dialogs_;
    std::unique_ptr<InstrumentEditing> instrumentEditing_;
    std::unique_ptr<CommandDispatcher> dispatcher_;
    std::unique_ptr<PatternFont> patternFont_;
    std::unique_ptr<PatternViewDrawer> viewDrawer_;
    std::unique_ptr<ProgramImportOptions> importOptions_;
    bool quitRequested_ = false;
    long frames_ = 0;
    bool screenshotTaken_ = false;
};

}  // namespace sondrel
