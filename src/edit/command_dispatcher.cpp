#include "edit/command_dispatcher.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <system_error>

#include "edit/tools/block_operations.h"
#include "edit/tools/list_tools.h"
#include "edit/main_menu.h"
#include "edit/keys/note_keys.h"
#include "edit/keys/pattern_editing.h"
#include "edit/tools/pattern_tools.h"
#include "files/export/export_command.h"
#include "files/module_file.h"
#include "model/exception.h"
#include "screens/main_screen.h"
#include "sound/song_player.h"
#include "ui/entry_kinds.h"

namespace sondrel {

namespace {

constexpr uint16_t kScanF9 = 0x43;
constexpr uint16_t kScanF10 = 0x44;
constexpr uint16_t kScanF11 = 0x57;
constexpr uint16_t kScanF12 = 0x58;
constexpr uint16_t kScanPadMinus = 0x4A;
constexpr uint16_t kScanPadPlus = 0x4E;
constexpr uint16_t kScanDelete = 0xD3;
constexpr int kWheelLines = 16;

const std::vector<std::string> kLoadPatterns{"*.sdrltk", "*.mod", "*.vgm", "*.vgz", "*.mid", "*.midi", "*.bas",
                                             "*.bam"};

}  // namespace

// The export command's questions go to the host and the prompts.
class CommandDispatcher::Exporter : public ExportUserInterface {
public:
    explicit Exporter(CommandDispatcher& dispatcher) : d_(dispatcher) {}
    std::string RequestExportFile(const std::vector<std::string>& filters, const std::string& title,
                                  const std::string& defaultExtension) override {
        return d_.host_.RequestFile(filters, title, true, defaultExtension);
    }
    void ShowMessage(const std::string& text) override { d_.ctx_.prompts.ShowMessage(text); }
    void StopPlayback() override { d_.Stop(); }
    bool EditMidiExportOptions(MidiExportOptions& options) override { return d_.host_.EditMidiExportOptions(options); }

private:
    CommandDispatcher& d_;
};

CommandDispatcher::CommandDispatcher(EditorContext& context, ToolDialogs& dialogs, CommandHost& host)
    : ctx_(context), dialogs_(dialogs), host_(host), exporter_(std::make_unique<Exporter>(*this)) {}

CommandDispatcher::~CommandDispatcher() = default;

void CommandDispatcher::SetMenus(std::vector<MenuTitle>* titles) {
    menus_ = titles;
    RefreshMenus();
}

void CommandDispatcher::BindOptions(EditOptions& options) {
    options_ = &options;
    RefreshMenus();
}

void CommandDispatcher::RefreshMenus() {
    if (menus_ == nullptr) return;
    const auto set = [this](int command, bool enabled, bool checked) {
        if (MenuEntry* entry = FindMenuEntry(*menus_, command)) {
            entry->enabled = enabled;
            entry->checked = checked;
        }
    };
    const bool locked = Playing();
    set(kMenuUndo, ctx_.undo.CanUndo() && !locked, false);
    set(kMenuRedo, ctx_.undo.CanRedo() && !locked, false);
    set(kMenuSaveModule, ctx_.undo.IsModified() || ctx_.module.fileName.empty(), false);
    // The shortcuts shown follow the keys chosen for undo and redo.
    const bool swapped = options_->undoWithCtrlZ;
    if (MenuEntry* undo = FindMenuEntry(*menus_, kMenuUndo)) undo->shortcut = swapped ? "CTRL + z" : "CTRL + y";
    if (MenuEntry* redo = FindMenuEntry(*menus_, kMenuRedo)) redo->shortcut = swapped ? "CTRL + y" : "CTRL + z";
    set(kMenuWrapVolume, true, options_->wrapVolume);
    set(kMenuPasteDelete, true, options_->pasteDeleteNotes);
}

void CommandDispatcher::Handle(const QueueEntry& entry) {
    // Only digits typed one after another make one number: anything else the
    // musician does in between begins a new one.
    const bool digit = entry.kind == kEntryKeyDown &&
                       KeepsNumberGoing(KeyCode(entry.a), KeyModifiers(entry.b), ctx_.view.State().cursorColumn);
    if (!digit && entry.kind != kEntryKeyUp) typing_.Forget();
    switch (entry.kind) {
    case kEntryMenuCommand: MenuCommand(static_cast<int>(entry.a)); break;
    case kEntryButton: ControlButton(static_cast<uint16_t>(entry.a), entry.b); break;
    case kEntryValue:
    case kEntryTextReturn: ControlValue(static_cast<uint16_t>(entry.a), static_cast<int32_t>(entry.b)); break;
    case kEntryToggle:
        if (entry.a == kControlTestMode) {
            ctx_.view.Settings().testMode = entry.b != 0;
            ctx_.view.Invalidate(kRedrawSettings);
        }
        if (entry.a == kControlChannel) SetChannelMask(entry.b);
        break;
    case kEntryMaskSolo:
        if (entry.a == kControlChannel) SoloChannel(static_cast<int>(entry.b));
        break;
    case kEntryListLine: ListLine(static_cast<uint16_t>(entry.a), static_cast<int32_t>(entry.b)); break;
    case kEntryKeyDown: KeyDown(entry.a, entry.b); break;
    case kEntryImage:
        if (entry.a == kControlGrid) GridPoint(entry.b);
        break;
    case kEntryWheelUp:
    case kEntryWheelDown:
    case kEntryWheelWidgetUp:
    case kEntryWheelWidgetDown: {
        const bool widget = entry.kind == kEntryWheelWidgetUp || entry.kind == kEntryWheelWidgetDown;
        if ((widget && entry.a != kControlGrid) || Playing()) break;
        const bool up = entry.kind == kEntryWheelUp || entry.kind == kEntryWheelWidgetUp;
        ctx_.view.ScrollBy(up ? -kWheelLines : kWheelLines);
        ctx_.view.Invalidate(kRedrawGridState | kRedrawGridRows);
        break;
    }
    case kEntryCloseRequest: Quit(); break;
    default: break;
    }
    RefreshMenus();
}

// ---- Menus ----

void CommandDispatcher::MenuCommand(int command) {
    if (command >= kMenuRecentFirst && command <= kMenuRecentLast) return LoadRecent(command - kMenuRecentFirst);
    PatternViewUndo undoView(ctx_.view);
    switch (command) {
    case kMenuNewModule: NewModule(); break;
    case kMenuLoadModule: LoadModule(); break;
    case kMenuSaveModule: SaveModule(); break;
    case kMenuSaveModuleAs: SaveModuleAs(); break;
    case kMenuExportEsdrltk: Export(kExportEsdrltk); break;
    case kMenuExportVgm: Export(kExportVgm); break;
    case kMenuExportMidi: Export(kExportMidi); break;
    case kMenuExportVgmLooping: Export(kExportVgmLooping); break;
    case kMenuPreferences: host_.ShowDialog(ProgramDialog::Preferences); break;
    case kMenuQuit: Quit(); break;
    case kMenuUndo: ctx_.undo.Undo(undoView); break;
    case kMenuRedo: ctx_.undo.Redo(undoView); break;
    case kMenuClear: ClearSelection(ctx_); break;
    case kMenuCut: clipboard_.Cut(ctx_); break;
    case kMenuCopy: clipboard_.Copy(ctx_); break;
    case kMenuPaste: clipboard_.Paste(ctx_, options_->pasteDeleteNotes); break;
    case kMenuDouble: DoubleSelectionLines(ctx_); break;
    case kMenuHalf: HalveSelectionLines(ctx_); break;
    case kMenuChangeInstruments: ChangeInstruments(ctx_, dialogs_); break;
    case kMenuCopyChannels: CopyChannels(ctx_, dialogs_); break;
    case kMenuVolumeGradient: VolumeGradient(ctx_); break;
    case kMenuNoteGradient: NoteGradient(ctx_); break;
    case kMenuWrapVolume: options_->wrapVolume = !options_->wrapVolume; break;
    case kMenuPasteDelete: options_->pasteDeleteNotes = !options_->pasteDeleteNotes; break;
    case kMenuTransposeOctaveUp: TransposeSelection(ctx_, kOctaveUp); break;
    case kMenuTransposeOctaveDown: TransposeSelection(ctx_, kOctaveDown); break;
    case kMenuTransposeNoteUp: TransposeSelection(ctx_, kNoteUp); break;
    case kMenuTransposeNoteDown: TransposeSelection(ctx_, kNoteDown); break;
    case kMenuViewReadme: host_.ShowDialog(ProgramDialog::Readme); break;
    case kMenuProgramInfo: host_.ShowDialog(ProgramDialog::ProgramInfo); break;
    default: break;
    }
}

// ---- The main screen's controls ----

void CommandDispatcher::ControlValue(uint16_t id, int32_t value) {
    EditSettings& settings = ctx_.view.Settings();
    switch (id) {
    case kControlPlay: Play(); break;
    case kControlCursorPlay: CursorPlay(); break;
    case kControlStop: Stop(); break;
    case kControlPatternPlay: PatternPlay(); break;
    case kControlPatternSettings: EditPatternSettings(ctx_, dialogs_); break;
    case kControlPatternResize: ResizePattern(ctx_, dialogs_); break;
    case kControlModuleSettings: EditModuleSettings(ctx_, dialogs_); break;
    case kControlModuleInfo: host_.ShowDialog(ProgramDialog::ModuleInfo); break;
    case kControlEditInstrument: host_.ShowDialog(ProgramDialog::InstrumentEditor); break;
    case kControlListInsert: InsertCurrentPattern(ctx_); break;
    case kControlListRemove: RemoveCurrentEntry(ctx_); break;
    case kControlMakeNew: MakeNewPattern(ctx_, dialogs_); break;
    case kControlDeleteOld: DeleteOldPattern(ctx_); break;
    case kControlOverview: host_.ShowDialog(ProgramDialog::Overview); break;
    case kControlLineStep: settings.lineStep = static_cast<uint8_t>(value); break;
    case kControlSpeed: {
        std::lock_guard<AudioMutex> lock(ctx_.audioMutex);
        ctx_.song.SetSpeed(static_cast<uint8_t>(value));
        break;
    }
    case kControlOctave: settings.octave = static_cast<uint8_t>(value + 2); break;
    case kControlVolume: settings.defaultVolume = static_cast<uint8_t>(value); break;
    default: break;
    }
}

void CommandDispatcher::ControlButton(uint16_t id, uint32_t direction) {
    if (id == kControlListValue) StepUsedPattern(ctx_, direction == 0 ? ListStep::kPrevious : ListStep::kNext);
    if (id == kControlListOrder) MoveListEntry(ctx_, direction == 0 ? ListMove::kUp : ListMove::kDown);
}

void CommandDispatcher::ListLine(uint16_t id, int32_t line) {
    if (line < 0) return;
    if (id == kControlPatternList && line < ctx_.module.patternListLength) {
        ShowListPosition(ctx_.view, line);
        ctx_.view.Invalidate(kRedrawAll);
    }
    if (id == kControlInstrumentList && line < kInstruments) {
        ctx_.view.Settings().currentInstrument = static_cast<uint8_t>(line);
        ctx_.view.Invalidate(kRedrawInstruments);
    }
}

void CommandDispatcher::SetChannelMask(uint32_t mask) {
    // The channel toggles pass the channels that are to sound to the song player.
    std::lock_guard<AudioMutex> lock(ctx_.audioMutex);
    ctx_.song.SetChannelMask(static_cast<uint8_t>((ctx_.song.GetChannelMask() & 0xF0) | (mask & 0x0F)));
    maskBeforeSolo_.reset();  // a channel switched by hand ends the solo
}

void CommandDispatcher::SoloChannel(int channel) {
    if (channel < 0 || channel >= kChannels) return;
    const auto solo = static_cast<uint8_t>(1u << channel);
    {
        std::lock_guard<AudioMutex> lock(ctx_.audioMutex);
        const uint8_t mask = ctx_.song.GetChannelMask();
        uint8_t sounding = solo;
        if ((mask & 0x0F) == solo && maskBeforeSolo_) {
            sounding = *maskBeforeSolo_;
            maskBeforeSolo_.reset();
        } else {
            maskBeforeSolo_ = static_cast<uint8_t>(mask & 0x0F);
        }
        ctx_.song.SetChannelMask(static_cast<uint8_t>((mask & 0xF0) | sounding));
    }
    ctx_.view.Invalidate(kRedrawSettings);  // the channel toggles show the new mask
}

// A click on the grid puts the cursor on the cell under the pointer; moving
// on with the button down selects from there, scrolling at the edges.
void CommandDispatcher::GridPoint(uint32_t point) {
    const GridCell cell = GridCellAt(ImagePointX(point), ImagePointY(point));
    const bool dragged = (point & kImageDragged) != 0;
    if (cell.row < 0 && !dragged) return;  // the header
    const PatternViewState& state = ctx_.view.State();
    // The cursor move keeps the line inside the pattern and scrolls to it.
    const int line = state.topLine + std::min(cell.row, kGridVisibleLines);
    ctx_.view.MoveCursor(dragged ? uint32_t{kGorbShift} : 0u, cell.column - state.cursorColumn, line - state.cursorLine);
    ctx_.view.Invalidate(kRedrawGridState | kRedrawGridRows);
}

// ---- Keys ----

void CommandDispatcher::KeyDown(uint32_t a, uint32_t b) {
    if (KeyTaken(b)) return;
    const KeyPress key = KeyPressOf(a, b);
    if ((key.modifiers & kCtrlKeys) && CtrlKey(key.scanCode, key.repeat)) return;
    // Alt+1 .. Alt+4 solo channels 0 .. 3, as a Shift+click on their toggles does.
    if ((key.modifiers & kAltKeys) && key.scanCode >= 0x02 && key.scanCode <= 0x05) {
        if (!key.repeat) SoloChannel(key.scanCode - 0x02);
        return;
    }
    if (CommonKey(key.scanCode)) return;
    HandlePatternKey(ctx_, key, {options_->wrapVolume, options_->typeDigits}, typing_);
}

bool CommandDispatcher::CtrlKey(uint16_t scanCode, bool repeat) {
    // Cut, copy, paste and the gradients act once for a held key.
    const auto once = [&](int command) {
        if (!repeat) MenuCommand(command);
        return true;
    };
    switch (scanCode) {
    case kScanY: MenuCommand(options_->undoWithCtrlZ ? kMenuRedo : kMenuUndo); return true;
    case kScanZ: MenuCommand(options_->undoWithCtrlZ ? kMenuUndo : kMenuRedo); return true;
    case kScanX: return once(kMenuCut);
    case kScanC: return once(kMenuCopy);
    case kScanV: return once(kMenuPaste);
    case kScanG: return once(kMenuVolumeGradient);
    case kScanF: return once(kMenuNoteGradient);
    case kScanP:
        if (Playing()) Stop();
        else Play();
        return true;
    case kScanS: case kScanB: case kScanN: case kScanM: case kScanComma: case kScanPeriod: case kScanSlash:
        SaveModule();
        return true;
    default: return false;
    }
}

bool CommandDispatcher::CommonKey(uint16_t scanCode) {
    switch (scanCode) {
    case kScanF9: MenuCommand(kMenuTransposeNoteUp); return true;
    case kScanF10: MenuCommand(kMenuTransposeNoteDown); return true;
    case kScanF11: MenuCommand(kMenuTransposeOctaveUp); return true;
    case kScanF12: MenuCommand(kMenuTransposeOctaveDown); return true;
    case kScanPadPlus: StepSelectionDetune(ctx_, 1); return true;
    case kScanPadMinus: StepSelectionDetune(ctx_, -1); return true;
    case kScanDelete: MenuCommand(kMenuClear); return true;
    default: return false;
    }
}

// ---- Files ----

bool CommandDispatcher::ConfirmLosing(const char* question) {
    return !ctx_.undo.IsModified() || ctx_.prompts.AskQuestion(question);
}

bool CommandDispatcher::Quit() {
    if (ConfirmLosing(kConfirmQuit)) quit_ = true;
    return quit_;
}

void CommandDispatcher::NewModule() {
    if (!ConfirmLosing(kConfirmNew)) return;
    auto fresh = std::make_unique<Module>();
    fresh->NewModule({kDivider1x, kChipNtsc});
    NewModuleWithSettings(ctx_, dialogs_, std::move(fresh),
                          [this](std::unique_ptr<Module> module) { host_.ReplaceModule(std::move(module)); });
}

void CommandDispatcher::LoadModule() {
    if (!ConfirmLosing(kConfirmLoad)) return;
    const std::string path = host_.RequestFile(kLoadPatterns, "Load module", false, kModuleExtension);
    if (!path.empty()) LoadFile(path);
}

void CommandDispatcher::LoadRecent(int index) {
    const std::string path = host_.RecentModule(index);
    if (path.empty() || !ConfirmLosing(kConfirmLoad)) return;
    LoadFile(path);
}

bool CommandDispatcher::LoadFile(const std::string& path) {
    std::unique_ptr<Module> fresh;
    try {
        fresh = LoadNewModule(path, host_.ImportOptions());
    } catch (const Exception& error) {
        ctx_.prompts.ShowMessage(WithReason(kCouldNotLoadModule, error));
        return false;
    }
    if (!fresh) return false;
    host_.ReplaceModule(std::move(fresh));
    host_.ModuleFileUsed(path);
    return true;
}

bool CommandDispatcher::SaveModule() {
    const Module& module = ctx_.module;
    if (module.fileName.empty()) return SaveModuleAs();
    std::error_code error;
    if (!module.directory.empty() && !std::filesystem::is_directory(module.directory, error)) {
        ctx_.prompts.ShowMessage(std::string(kCouldNotSaveModule) + "\nThe folder " + module.directory +
                                 " is gone; choose another with \"Save module as...\".");
        return false;
    }
    return SaveTo(RecordedPath(module));
}

bool CommandDispatcher::SaveModuleAs() {
    const std::string path = host_.RequestFile({"*.sdrltk"}, "Save module", true, kModuleExtension);
    return !path.empty() && SaveTo(path);
}

bool CommandDispatcher::SaveTo(const std::string& path) {
    try {
        sondrel::SaveModule(ctx_.module, path);
    } catch (const Exception& error) {
        ctx_.prompts.ShowMessage(WithReason(kCouldNotSaveModule, error));
        return false;
    }
    ctx_.undo.MarkSaved();
    ctx_.view.Invalidate(kRedrawTitle | kRedrawMenus);
    host_.ModuleFileUsed(path);
    return true;
}

void CommandDispatcher::Export(int kind) {
    try {
        RunExportCommand(kind, ctx_.module, midiOptions_, *exporter_);
    } catch (const Exception& error) {
        const char* failed = kind == kExportMidi ? kCouldNotWriteMidi : kCouldNotWriteVgm;
        ctx_.prompts.ShowMessage(WithReason(failed, error));
    }
}

// ---- Playback ----

bool CommandDispatcher::Playing() const {
    std::lock_guard<AudioMutex> lock(ctx_.audioMutex);
    return ctx_.song.Playing();
}

void CommandDispatcher::Play() {
    std::lock_guard<AudioMutex> lock(ctx_.audioMutex);
    ctx_.song.SetSpeed(ctx_.module.initialSpeed);
    ctx_.song.Start(0, 0, false);
    ctx_.view.Invalidate(kRedrawSettings | kRedrawMenus);
}

void CommandDispatcher::CursorPlay() {
    std::lock_guard<AudioMutex> lock(ctx_.audioMutex);
    const PatternViewState& state = ctx_.view.State();
    ctx_.song.Start(static_cast<uint16_t>(state.cursorLine), state.listPosition, false);
    ctx_.view.Invalidate(kRedrawMenus);
}

void CommandDispatcher::PatternPlay() {
    std::lock_guard<AudioMutex> lock(ctx_.audioMutex);
    ctx_.song.Start(0, ctx_.view.State().listPosition, true);
    ctx_.view.Invalidate(kRedrawMenus);
}

void CommandDispatcher::Stop() {
    std::lock_guard<AudioMutex> lock(ctx_.audioMutex);
    const bool wasPlaying = ctx_.song.Playing();
    ctx_.song.Stop();
    // The view stays where the song stopped and lets go of the play marker.
    if (wasPlaying) ctx_.view.RestoreFromPlayer(ctx_.song);
    ctx_.view.Invalidate(kRedrawAll);
}

}  // namespace sondrel
