#include "app/application.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <system_error>

#include "app/command_line.h"
#include "app/editor.h"
#include "app/midi_in.h"
#include "app/midi_note_entry.h"
#include "files/module_file.h"
#include "model/exception.h"
#include "model/notes.h"
#include "model/storable_text.h"
#include "platform/fault_trap.h"
#include "platform/program_dirs.h"
#include "sound/audio_output.h"
#include "sound/song_player.h"
#include "ui/entry_kinds.h"
#include "ui/requesters/requesters.h"
#include "ui/skin/skin_library.h"
#include "ui/toolkit.h"
#include "ui/widgets/text_edit.h"

namespace sondrel {

namespace {

constexpr uint32_t kTitleColour = 0xFFD8DEE9;
constexpr uint32_t kInfoColour = 0xFF8894A8;
// A font the system may have; without it the screen stays plain.
constexpr char kSystemFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr uint16_t kEscapeKey = 1;

long EnvironmentNumber(const char* name) {
    const char* text = std::getenv(name);
    return text ? std::strtol(text, nullptr, 10) : 0;
}

// The current directory is switched before the program touches its files;
// a directory that has gone leaves it where it was.
void ChangeDirectory(const std::filesystem::path& directory) {
    std::error_code ignored;
    std::filesystem::current_path(directory, ignored);
}

// Imports take the options each importer proposes until their dialogs exist.
class ProposedImportOptions : public ImportOptionsProvider {};

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

std::string CrashMessage(const std::string& fileName) {
    return std::string(kProgramTitle) + " has crashed.\nThe current module is saved as " + fileName;
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
    // The program works in its data directory: a relative name is taken from where it started.
    if (const char* screenshot = std::getenv("SONDREL_SCREENSHOT")) {
        std::error_code error;
        options.screenshot = std::filesystem::absolute(screenshot, error);
        if (error) options.screenshot = screenshot;
    }
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
    }
    if (!options_.screenshot.empty() && !platform_.SaveScreenshot(options_.screenshot))
        std::fprintf(stderr, "%s: couldn't write the screenshot %s\n", kProgramTitle, options_.screenshot.c_str());
    ShutDown();
    return 0;
}

bool Application::StartUp() {
    audioMutex_ = std::make_unique<AudioMutex>();
    config_ = std::make_unique<Config>(MakePreferencesConfig(prefs_));

    ChangeDirectory(paths_.dataDirectory);
    try {
        LoadPreferences(*config_, prefs_, PreferencesFile());
    } catch (const Exception&) {
        platform_.ShowMessage(kCouldNotLoadPreferences);
        return false;
    }

    if (!platform_.OpenDisplay(prefs_.fullscreen)) {
        platform_.CloseDisplay();
        return false;
    }
    displayOpen_ = true;
    platform_.SetWindowTitle(kProgramTitle);

    // Every window is drawn from the skin: without it the program can't go on.
    skins_ = std::make_unique<SkinLibrary>(paths_.dataDirectory / "skins");
    try {
        skins_->LoadSkin(kDefaultSkin);
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

void Application::FramePresented(bool insideRequester) {
    ++frames_;
    if (frames_ == options_.faultAfterFrames) std::raise(SIGSEGV);
    if (options_.exitAfterFrames > 0 && frames_ >= options_.exitAfterFrames) {
        // Inside a requester the request goes through its loop, which hands it back here.
        if (insideRequester) toolkit_->Queue().PushEntry(kEntryCloseRequest, 0);
        else RequestClose();
    }
}

void Application::PollInput() { platform_.UpdateInput(); }

void Application::DrawFrame() {
    DrawScreen();
    platform_.NextFrame();
    FramePresented(true);
}

bool Application::HandleCloseRequest() {
    RequestClose();
    return quitRequested_;
}

void Application::RequestClose() {
    // Asking to save a changed module comes with the quit command.
    quitRequested_ = true;
}

bool Application::LoadModule(const std::string& path) {
    ProposedImportOptions options;
    std::unique_ptr<Module> fresh;
    try {
        fresh = LoadNewModule(path, options);
    } catch (const Exception&) {
        platform_.ShowMessage(kCouldNotLoadModule);
        return false;
    }
    if (!fresh) return false;
    std::lock_guard<AudioMutex> lock(*audioMutex_);
    song_->Stop();
    *module_ = std::move(*fresh);
    song_->ReloadSettings();
    notes_->StopAll();
    notes_->ConfigureChip(module_->chipType, module_->frequencyDivider);
    if (editor_) editor_->ModuleReplaced();
    return true;
}

void Application::StartPlaying() {
    std::lock_guard<AudioMutex> lock(*audioMutex_);
    song_->ReloadSettings();
    song_->Start(0, 0, false);
}

void Application::SaveCrashModule(const std::exception& error) {
    // A fault inside a locked section left the audio mutex with us.
    if (audioMutex_ && audioMutex_->HeldByThisThread()) audioMutex_->unlock();
    std::fprintf(stderr, "%s: %s\n", kProgramTitle, error.what());

    const std::string name = CrashFileName(platform_.CurrentTime());
    platform_.ShowMessage(CrashMessage(name));
    ChangeDirectory(paths_.dataDirectory);
    try {
        // The crash save must not be refused for a text the file can't hold.
        MakeModuleTextsStorable(*module_);
        SaveModule(*module_, (paths_.preferencesDirectory / name).string());
    } catch (const Exception& failure) {
        std::fprintf(stderr, "%s: %s\n", kProgramTitle, failure.what());
    }
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
            } catch (const FileIOException&) {
                platform_.ShowMessage(kCouldNotSavePreferences);
            }
        }

        if (midiIn_) midiIn_->Close();
        midiEntry_.reset();
        midiIn_.reset();
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
    // The pattern font, the menus and the main screen's widgets start here.
    // Until then a system font, if there is one, names the program.
    try {
        if (std::filesystem::exists(kSystemFont)) titleFont_ = Gorb_CreateFont(kSystemFont, 40);
    } catch (const Exception&) {
        titleFont_.reset();
    }
}

void Application::UpdateToolkit() { toolkit_->Update(); }

void Application::DispatchCommands() {
    // Every entry of the toolkit's queue goes to the command dispatcher here.
    while (const QueueEntry* entry = toolkit_->PopEntry()) {
        const bool escape = entry->kind == kEntryKeyDown && KeyCode(entry->a) == kEscapeKey && !KeyTaken(entry->b);
        if (entry->kind == kEntryCloseRequest || escape) RequestClose();
    }
}

void Application::EnterMidiNotes() {
    MidiEvent event;
    while (midiIn_->Pop(event)) midiEntry_->Handle(event);
}

void Application::UpdateView(const PlayerFeedback& feedback) {
    // The pattern view follows the player (feedback.follow), redraws what
    // feedback.redrawBits and the commands flagged, and updates itself.
    (void)feedback;
}

void Application::DrawScreen() {
    Gorb_Surface* screen = platform_.Screen();
    if (!screen) return;
    toolkit_->Draw();
    if (!titleFont_ || !toolkit_->Stack().empty()) return;
    const int width = titleFont_->TextWidth(kProgramTitle);
    const int top = screen->Height() / 2 - titleFont_->Height();
    titleFont_->Print(*screen, (screen->Width() - width) / 2, top, kProgramTitle, kTitleColour);

    const std::string name = module_->title.empty() ? RecordedPath(*module_) : module_->title;
    if (name.empty()) return;
    // The module's name below it, when it fits.
    const int nameWidth = titleFont_->TextWidth(name);
    if (nameWidth > screen->Width() - 40) return;
    titleFont_->Print(*screen, (screen->Width() - nameWidth) / 2, top + titleFont_->Height() + 16, name, kInfoColour);
}

void Application::StopToolkit() {
    titleFont_.reset();
    requesters_.reset();
    if (toolkit_) toolkit_->Shutdown();
    toolkit_.reset();
    clipboard_.reset();
    input_.reset();
}

}  // namespace sondrel
