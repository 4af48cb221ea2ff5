#include "app/application.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <optional>
#include <system_error>

#include "app/command_line.h"
#include "app/editor.h"
#include "app/dialogs/instrument_editing.h"
#include "app/midi/midi_in.h"
#include "app/midi/midi_note_entry.h"
#include "app/dialogs/program_dialogs.h"
#include "screens/dialogs/info_dialogs.h"
#include "sound/song_time.h"
#include "app/dialogs/program_import_options.h"
#include "edit/main_menu.h"
#include "files/export/export_command.h"
#include "files/module_file.h"
#include "model/exception.h"
#include "model/notes.h"
#include "model/storable_text.h"
#include "platform/fault_trap.h"
#include "platform/program_dirs.h"
#include "screens/main_screen.h"
#include "sound/audio_output.h"
#include "sound/song_player.h"
#include "ui/entry_kinds.h"
#include "ui/menu_bar.h"
#include "ui/requesters/requesters.h"
#include "ui/skin/skin_library.h"
#include "ui/toolkit.h"
#include "ui/widgets/text_edit.h"

namespace sondrel {

namespace {

// The readme beside the program, or a word on where it should be.
std::string ReadmeText(const std::filesystem::path& directory) {
    std::ifstream file(directory / "readme.txt", std::ios::binary);
    if (!file) return "The file readme.txt was not found beside the program.";
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

long EnvironmentNumber(const char* name) {
    const char* text = std::getenv(name);
    return text ? std::strtol(text, nullptr, 10) : 0;
}

// The program works in its data directory: a relative name is taken from where it started.
std::filesystem::path EnvironmentPath(const char* name) {
    const char* text = std::getenv(name);
    if (!text) return {};
    std::error_code error;
    std::filesystem::path path = std::filesystem::absolute(text, error);
    return error ? std::filesystem::path(text) : path;
}

void WriteWallClockTime(const std::filesystem::path& file) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const long long micro = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    char text[32];
    std::snprintf(text, sizeof text, "%lld.%06lld\n", micro / 1000000, micro % 1000000);
    std::ofstream(file) << text;
}

// The current directory is switched before the program touches its files;
// a directory that has gone leaves it where it was.
void ChangeDirectory(const std::filesystem::path& directory) {
    std::error_code ignored;
    std::filesystem::current_path(directory, ignored);
}

// The toolkit reads its input through the shell's platform, so tests can
// script it.
class PlatformInput : public InputSource {
public:
    explicit PlatformInput(AppPlatform& platform) : platform_(platform) {}
    bool NextEvent(Gorb_Event& event) override { return platform_.GetEvent(event); }
    uint32_t Modifiers() override { return platform_.KeyModifiers(); }
    uint32_t MouseState(int& x, int& y) override { return platform_.MouseState(x, y); }

private:
    AppPlatform& platform_;
};

// Text entries cut, copy and paste through the system clipboard.
class PlatformClipboard : public Clipboard {
public:
    explicit PlatformClipboard(AppPlatform& platform) : platform_(platform) {}
    std::string Text() const override { return platform_.ClipboardText(); }
    void SetText(const std::string& text) override { platform_.SetClipboardText(text); }

private:
    AppPlatform& platform_;
};

}  // namespace

std::string CrashFileName(const UtcTime& time) {
    char name[96];
    std::snprintf(name, sizeof name, "crash(%d.%d.%d %d.%d.%d).sdrltk.", time.year, time.month, time.day, time.hour,
                  time.minute, time.second);
    return name;
}

std::filesystem::path CrashFilePath(const std::filesystem::path& folder, const std::string& name) {
    std::filesystem::path path = folder / name;
    std::error_code error;
    for (int counter = 2; std::filesystem::exists(std::filesystem::symlink_status(path, error)); ++counter)
        path = folder / (name + std::to_string(counter));
    return path;
}

std::string CrashMessage(const std::filesystem::path& saved) {
    return std::string(kProgramTitle) + " has crashed.\nThe current module is saved as " + saved.filename().string() +
           "\nin the folder " + saved.parent_path().string() + ".";
}

std::string CrashSaveFailedMessage(const std::filesystem::path& tried, const std::string& reason) {
    return std::string(kProgramTitle) + " has crashed.\nThe current module could not be saved as " + tried.string() +
           ":\n" + reason;
}

std::string PreferencesLoadMessage(const std::string& reason) {
    return std::string(kCouldNotLoadPreferences) + "\n" + reason + "\n" + kPreferencesRemedy;
}

PlayerFeedback TakePlayerFeedback(SongPlayer& song, AudioMutex& audioMutex) {
    std::lock_guard<AudioMutex> lock(audioMutex);
    PlayerFeedback feedback;
    if (song.lineAdvanced) {
        song.lineAdvanced = 0;
        song.linePlayed = 0;
        feedback.follow = true;
        feedback.redrawBits = kRedrawFollowPlayer;
    } else if (song.linePlayed) {
        song.linePlayed = 0;
        feedback.redrawBits = kRedrawPlayedLine;
    }
    return feedback;
}

AppOptions AppOptionsFromEnvironment() {
    AppOptions options;
    options.exitAfterFrames = EnvironmentNumber("SONDREL_EXIT_AFTER_FRAMES");
    options.faultAfterFrames = EnvironmentNumber("SONDREL_FAULT_AFTER_FRAMES");
    options.playOnStart = EnvironmentNumber("SONDREL_PLAY_ON_START") != 0;
    options.screenshot = EnvironmentPath("SONDREL_SCREENSHOT");
    options.firstFrameLog = EnvironmentPath("SONDREL_FIRST_FRAME_LOG");
    return options;
}

AppPaths CurrentAppPaths() {
    AppPaths paths;
    const std::filesystem::path program = ProgramDirectory();
    paths.dataDirectory = DataDirectoryFor(program);
    if (paths.dataDirectory.empty()) {
        std::fprintf(stderr, "%s: the runtime files are neither in %s nor in its ../share/sondrel\n", kProgramTitle,
                     program.c_str());
        paths.dataDirectory = program;
    }
    paths.preferencesDirectory = PreferencesDirectoryFor(program);
    std::error_code error;
    paths.startDirectory = std::filesystem::current_path(error);
    return paths;
}

Application::Application(AppPlatform& platform, AppPaths paths, AppOptions options)
    : platform_(platform), paths_(std::move(paths)), options_(std::move(options)) {}

Application::~Application() = default;

std::filesystem::path Application::PreferencesFile() const {
    return paths_.preferencesDirectory / "sondrel.prefs";
}

int Application::Run(const std::string& commandLine) {
    const std::vector<std::string> arguments = SplitCommandLine(commandLine);
    if (!arguments.empty()) programName_ = ProgramNameFromPath(arguments[0]);
    if (!StartUp()) return 1;
    bool crashed = false;

    try {
        RunTranslatingFaults([&] {
            ChangeDirectory(paths_.dataDirectory);
            if (arguments.size() > 1) {
                ChangeDirectory(paths_.startDirectory);
                LoadModule(arguments[1]);
            }
            if (options_.playOnStart) StartPlaying();
            RunLoop();
        });
    } catch (const std::exception& error) {
        SaveCrashModule(error);
        crashed = true;
    }
    if (!screenshotTaken_) TakeScreenshot();
    ShutDown();
    return crashed ? kExitAfterCrash : 0;
}

bool Application::StartUp() {
    audioMutex_ = std::make_unique<AudioMutex>();
    config_ = std::make_unique<Config>(MakePreferencesConfig(prefs_));

    ChangeDirectory(paths_.dataDirectory);
    try {
        LoadPreferences(*config_, prefs_, PreferencesFile());
    } catch (const Exception& error) {
        platform_.ShowMessage(PreferencesLoadMessage(error.Message()));
        return false;
    }

    if (!platform_.OpenDisplay(prefs_.fullscreen, prefs_.windowScale)) {
        platform_.CloseDisplay();
        return false;
    }
    // The scale picked for this desktop is kept, whatever desktop comes next.
    if (const int scale = platform_.WindowScale()) prefs_.windowScale = static_cast<uint8_t>(scale);
    displayOpen_ = true;
    platform_.SetWindowTitle(kProgramTitle);

    // Every window is drawn from the skin and the pattern grid's characters
    // from the font sheet beside the program: without them it can't go on.
    skins_ = std::make_unique<SkinLibrary>(paths_.dataDirectory / "skins");
    try {
        skins_->LoadSkin(kDefaultSkin);
        patternFont_ = std::make_unique<PatternFont>(paths_.dataDirectory / PatternFont::kFileName);
    } catch (const Exception& error) {
        platform_.ShowMessage(error.Message());
        skins_.reset();
        platform_.CloseDisplay();
        displayOpen_ = false;
        return false;
    }

    StartToolkit();

    module_ = std::make_unique<Module>();
    module_->NewModule({kDivider1x, kChipNtsc});
    song_ = std::make_unique<SongPlayer>();
    notes_ = std::make_unique<NotePlayer>();
    song_->Attach(*module_);
    notes_->Init(module_->Settings());

    midiIn_ = std::make_unique<MidiIn>(platform_.CreateMidiDevice());
    editor_ = std::make_unique<Editor>(*module_, *song_, *notes_, *audioMutex_, *requesters_);
    midiEntry_ = std::make_unique<MidiNoteEntry>(editor_->Context());
    dialogs_ = std::make_unique<ProgramDialogs>(*requesters_, *module_);
    instrumentEditing_ = std::make_unique<InstrumentEditing>(editor_->Context(), *requesters_);
    dispatcher_ = std::make_unique<CommandDispatcher>(editor_->Context(), *dialogs_, static_cast<CommandHost&>(*this));
    dispatcher_->SetMenus(&menuBar_->Titles());
    // The "Edit" menu's options are the preferences' own, so the file keeps what the menu shows.
    dispatcher_->BindOptions(prefs_.editing);
    PatternViewHooks hooks;
    hooks.setTitle = [this](const std::string& title) { platform_.SetWindowTitle(title); };
    hooks.modified = [this] { return editor_->Context().undo.IsModified(); };
    hooks.refreshMenus = [this] { dispatcher_->RefreshMenus(); };
    hooks.playerSettings = [this] {
        std::lock_guard<AudioMutex> lock(*audioMutex_);
        return PlayerSettingsShown{song_->GetSpeed(), song_->GetChannelMask()};
    };
    viewDrawer_ = std::make_unique<PatternViewDrawer>(editor_->Context().view, screenWidgets_, *patternFont_, hooks);
    editor_->Context().view.Invalidate(kRedrawAll);
    if (prefs_.midiInEnable) midiIn_->Open(prefs_.midiInDeviceId);

    TonePeriodTable();

    soundBuffer_ = platform_.CreateSoundBuffer();
    audio_ = std::make_unique<AudioOutput>(*soundBuffer_, *song_, *notes_, *audioMutex_);
    audio_->SetVolume(prefs_.volume);
    audio_->Create();
    audio_->StartThread();
    return true;
}

void Application::RunLoop() {
    while (!quitRequested_) RunFrame();
}

void Application::RunFrame() {
    platform_.UpdateInput();
    UpdateToolkit();
    DispatchCommands();
    EnterMidiNotes();
    UpdateView(TakePlayerFeedback(*song_, *audioMutex_));
    DrawScreen();
    platform_.NextFrame();
    FramePresented(false);
}

void Application::TakeScreenshot() {
    if (options_.screenshot.empty()) return;
    screenshotTaken_ = true;
    if (!platform_.SaveScreenshot(options_.screenshot))
        std::fprintf(stderr, "%s: couldn't write the screenshot %s\n", kProgramTitle, options_.screenshot.c_str());
}

void Application::FramePresented(bool insideRequester) {
    ++frames_;
    if (frames_ == 1 && !options_.firstFrameLog.empty()) WriteWallClockTime(options_.firstFrameLog);
    if (frames_ == options_.faultAfterFrames) std::raise(SIGSEGV);
    // An unattended run's picture is the last frame shown, with any dialog still open on it.
    if (frames_ == options_.exitAfterFrames) TakeScreenshot();
    if (options_.exitAfterFrames > 0 && frames_ >= options_.exitAfterFrames) {
        // Inside a requester the request goes through its loop, which hands it back here.
        // Unattended runs end without asking about changes.
        if (insideRequester) toolkit_->Queue().PushEntry(kEntryCloseRequest, 0);
        else quitRequested_ = true;
    }
}

bool Application::FrameLimitReached() const {
    return options_.exitAfterFrames > 0 && frames_ >= options_.exitAfterFrames;
}

void Application::PollInput() { platform_.UpdateInput(); }

void Application::DrawFrame() {
    DrawScreen();
    platform_.NextFrame();
    FramePresented(true);
}

bool Application::HandleCloseRequest() {
    if (FrameLimitReached()) quitRequested_ = true;
    else RequestClose();
    return quitRequested_;
}

void Application::RequestClose() {
    if (dispatcher_ ? dispatcher_->Quit() : true) quitRequested_ = true;
}

bool Application::LoadModule(const std::string& path) {
    std::unique_ptr<Module> fresh;
    try {
        fresh = LoadNewModule(path, *importOptions_);
    } catch (const Exception& error) {
        platform_.ShowMessage(WithReason(kCouldNotLoadModule, error));
        return false;
    }
    if (!fresh) return false;
    ReplaceModule(std::move(fresh));
    ModuleFileUsed(path);
    return true;
}

// ---- What the command dispatcher needs ----

std::string Application::RequestFile(const std::vector<std::string>& patterns, const std::string& title,
                                     bool saveMode, const std::string& defaultExtension) {
    return requesters_->RequestFile(patterns, title, saveMode, defaultExtension);
}

void Application::ReplaceModule(std::unique_ptr<Module> fresh) {
    std::lock_guard<AudioMutex> lock(*audioMutex_);
    song_->Stop();
    *module_ = std::move(*fresh);
    song_->ReloadSettings();
    notes_->StopAll();
    notes_->ConfigureChip(module_->Settings());
    if (editor_) editor_->ModuleReplaced();
}

void Application::ModuleFileUsed(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (!RecordRecentModule(prefs_, error ? std::filesystem::path(path) : absolute) || !menuBar_) return;
    menuBar_->SetTitles(MainMenuTitles({prefs_.lastModules.begin(), prefs_.lastModules.end()}));
    if (dispatcher_) dispatcher_->RefreshMenus();
}

std::string Application::RecentModule(int index) {
    int seen = 0;
    for (const std::string& path : prefs_.lastModules)
        if (!path.empty() && seen++ == index) return path;
    return {};
}

void Application::ShowDialog(ProgramDialog dialog) {
    switch (dialog) {
    case ProgramDialog::Preferences: EditPreferences(); break;
    case ProgramDialog::Readme: ShowReadme(*requesters_, ReadmeText(paths_.dataDirectory)); break;
    case ProgramDialog::ProgramInfo: ShowProgramInfo(*requesters_); break;
    case ProgramDialog::ModuleInfo: ShowModuleInformation(*requesters_, ModuleInformationNow()); break;
    case ProgramDialog::Overview: ShowPatternOverview(*requesters_, *module_); break;
    case ProgramDialog::InstrumentEditor: instrumentEditing_->Run(); break;
    default: requesters_->ShowMessage(kExportNotAvailable); break;
    }
}

void Application::EditPreferences() {
    const PreferenceValues current{prefs_.fullscreen,
                                   prefs_.volume,
                                   prefs_.midiInEnable,
                                   prefs_.midiInDeviceId,
                                   prefs_.editing.undoWithCtrlZ,
                                   prefs_.editing.typeDigits,
                                   std::max<int>(prefs_.windowScale, 1)};
    const auto chosen = RunPreferences(*requesters_, current);
    if (!chosen || *chosen == current) return;
    prefs_.editing.undoWithCtrlZ = chosen->undoWithCtrlZ;
    prefs_.editing.typeDigits = chosen->typeDigits;
    dispatcher_->RefreshMenus();
    if (chosen->fullscreen != prefs_.fullscreen && platform_.SetFullscreen(chosen->fullscreen))
        prefs_.fullscreen = chosen->fullscreen;
    if (chosen->windowScale != current.windowScale && platform_.SetWindowScale(chosen->windowScale))
        prefs_.windowScale = static_cast<uint8_t>(chosen->windowScale);
    prefs_.volume = static_cast<uint8_t>(chosen->volume);
    audio_->SetVolume(prefs_.volume);
    if (chosen->midiInEnable != prefs_.midiInEnable || chosen->midiInDeviceId != prefs_.midiInDeviceId) {
        prefs_.midiInEnable = chosen->midiInEnable;
        prefs_.midiInDeviceId = static_cast<uint8_t>(chosen->midiInDeviceId);
        midiIn_->Close();
        if (prefs_.midiInEnable) midiIn_->Open(prefs_.midiInDeviceId);
    }
}

ModuleInformation Application::ModuleInformationNow() {
    ModuleInformation information = InformationOf(*module_);
    const PatternViewState& view = editor_->Context().view.State();
    // The song is played through silently on a copy, away from the audio thread.
    auto copy = std::make_unique<Module>(*module_);
    const SongTime time = CalculateSongTime(*copy, static_cast<uint16_t>(view.cursorLine), view.listPosition);
    information.seconds = time.totalSeconds;
    information.secondsAtCursor = time.targetReached ? time.targetSeconds : 0.0;
    return information;
}

bool Application::EditMidiExportOptions(MidiExportOptions& options) {
    return ProgramMidiExportDialog(*requesters_, *module_).EditMidiExportOptions(options);
}

ImportOptionsProvider& Application::ImportOptions() { return *importOptions_; }

void Application::StartPlaying() {
    std::lock_guard<AudioMutex> lock(*audioMutex_);
    song_->ReloadSettings();
    song_->Start(0, 0, false);
}

void Application::SaveCrashModule(const std::exception& error) {
    // A fault inside a locked section left the audio mutex with us.
    if (audioMutex_ && audioMutex_->HeldByThisThread()) audioMutex_->unlock();
    std::fprintf(stderr, "%s: %s\n", kProgramTitle, error.what());

    ChangeDirectory(paths_.dataDirectory);
    const std::filesystem::path path =
        CrashFilePath(paths_.preferencesDirectory, CrashFileName(platform_.CurrentTime()));
    // Saved first: the message tells what really happened, and the file is
    // there even if nobody answers the message.
    std::string message;
    try {
        // The crash save must not be refused for a text the file can't hold.
        MakeModuleTextsStorable(*module_);
        SaveModule(*module_, path.string());
        message = CrashMessage(path);
    } catch (const std::exception& failure) {
        message = CrashSaveFailedMessage(path, UserReason(failure));
    }
    platform_.ShowMessage(message);
}

void Application::ShutDown() {
    try {
        if (audio_) audio_->StopThread();
        audio_.reset();
        soundBuffer_.reset();
        audioMutex_.reset();

        if (config_ && config_->loaded) {
            ChangeDirectory(paths_.dataDirectory);
            try {
                config_->Write(PreferencesFile());
            } catch (const FileIOException& error) {
                platform_.ShowMessage(WithReason(kCouldNotSavePreferences, error));
            }
        }

        if (midiIn_) midiIn_->Close();
        midiEntry_.reset();
        midiIn_.reset();
        dispatcher_.reset();
        instrumentEditing_.reset();
        editor_.reset();
        song_.reset();
        notes_.reset();
        StopToolkit();
        skins_.reset();
        if (displayOpen_) platform_.CloseDisplay();
        displayOpen_ = false;
    } catch (const Exception&) {
        platform_.ShowMessage(kErrorWhileQuitting);
    }
}

// ---- The frame's steps ----

void Application::StartToolkit() {
    input_ = std::make_unique<PlatformInput>(platform_);
    toolkit_ = std::make_unique<Toolkit>(*input_);
    clipboard_ = std::make_unique<PlatformClipboard>(platform_);
    toolkit_->SetClipboard(clipboard_.get());
    if (Gorb_Surface* screen = platform_.Screen()) toolkit_->Init(*screen, skins_.get());
    requesters_ = std::make_unique<Requesters>(*toolkit_, static_cast<RequesterHost&>(*this));
    importOptions_ = std::make_unique<ProgramImportOptions>(*requesters_);
    menuBar_ = std::make_unique<DropDownMenuBar>(
        MainMenuTitles({prefs_.lastModules.begin(), prefs_.lastModules.end()}), kScreenWidth, toolkit_->Style().font);
    toolkit_->SetMenuBar(menuBar_.get());
    screenWidgets_ = BuildMainScreen(*toolkit_, kScreenWidth, kScreenHeight, menuBar_->BarHeight());
}

void Application::UpdateToolkit() { toolkit_->Update(); }

void Application::DispatchCommands() {
    while (const QueueEntry* next = toolkit_->PopEntry()) {
        // A command may run requesters, whose frames take entries from the same queue.
        const QueueEntry entry = *next;
        dispatcher_->Handle(entry);
        if (dispatcher_->QuitRequested()) quitRequested_ = true;
    }
    // The song may have stopped by itself since the last frame.
    dispatcher_->RefreshMenus();
}

void Application::EnterMidiNotes() {
    MidiEvent event;
    while (midiIn_->Pop(event)) midiEntry_->Handle(event);
}

void Application::UpdateView(const PlayerFeedback& feedback) {
    PatternView& view = editor_->Context().view;
    if (feedback.follow) {
        std::lock_guard<AudioMutex> lock(*audioMutex_);
        view.RestoreFromPlayer(*song_);
    }
    view.Invalidate(feedback.redrawBits);
    viewDrawer_->Update();
}

void Application::DrawScreen() {
    Gorb_Surface* screen = platform_.Screen();
    if (!screen) return;
    toolkit_->Draw();
}

void Application::StopToolkit() {
    viewDrawer_.reset();
    dispatcher_.reset();
    dialogs_.reset();
    importOptions_.reset();
    requesters_.reset();
    if (toolkit_) toolkit_->SetMenuBar(nullptr);
    screenWidgets_ = {};
    menuBar_.reset();
    if (toolkit_) toolkit_->Shutdown();
    toolkit_.reset();
    clipboard_.reset();
    input_.reset();
}

}  // namespace sondrel
