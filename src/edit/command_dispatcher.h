#pragma once
// The command dispatcher: reads every entry of the toolkit's queue (menu
// commands, buttons and values of the main screen, list selections, keys,
// the wheel and the close request) and turns each into an editing command,
// a file command, a playback command, a dialog or a change of an editor
// setting. Losing changes (new, load, recent modules, quit) is confirmed
// first; file failures are told with the module file's messages.

#include <memory>
#include <string>
#include <vector>

#include "edit/edit_options.h"
#include "edit/editor_context.h"
#include "edit/keys/digit_entry.h"
#include "edit/tools/pattern_clipboard.h"
#include "edit/tools/tool_dialogs.h"
#include "files/export/midi_export.h"
#include "files/import/importers.h"
#include "ui/command_queue.h"
#include "ui/menu_bar.h"

namespace sondrel {

inline constexpr char kConfirmNew[] =
    "The current module has been changed.\nDo you really want to create a new module?";
inline constexpr char kConfirmLoad[] =
    "The current module has been changed.\nDo you really want to load a new module?";
inline constexpr char kConfirmQuit[] = "The current module has been changed.\nDo you really want to quit?";

// The dialogs and windows of the program that the dispatcher opens but does
// not own. Each returns when its dialog has closed.
enum class ProgramDialog { Preferences, Readme, ProgramInfo, ModuleInfo, Overview, InstrumentEditor };

// What the dispatcher needs of the program around it; the program answers
// with its requesters and dialogs, tests with fakes.
class CommandHost {
public:
    virtual ~CommandHost() = default;
    // The file requester: the chosen path, or empty when cancelled.
    virtual std::string RequestFile(const std::vector<std::string>& patterns, const std::string& title,
                                    bool saveMode, const std::string& defaultExtension) = 0;
    // Takes a created or loaded module over in place of the current one:
    // stops the song, binds the players, the view and the history to it.
    virtual void ReplaceModule(std::unique_ptr<Module> fresh) = 0;
    // A module was loaded from or saved to path (for the recent modules).
    virtual void ModuleFileUsed(const std::string& path) = 0;
    // The recent module behind menu command 9 + index; empty when none.
    virtual std::string RecentModule(int index) = 0;
    virtual void ShowDialog(ProgramDialog dialog) = 0;
    // The "Export MIDI" table; false when cancelled.
    virtual bool EditMidiExportOptions(MidiExportOptions& options) = 0;
    // How imports ask for their options.
    virtual ImportOptionsProvider& ImportOptions() = 0;
};

class CommandDispatcher {
public:
    CommandDispatcher(EditorContext& context, ToolDialogs& dialogs, CommandHost& host);
    ~CommandDispatcher();
    CommandDispatcher(const CommandDispatcher&) = delete;
    CommandDispatcher& operator=(const CommandDispatcher&) = delete;

    // The menu tree whose entries are greyed and checked to match the editor.
    void SetMenus(std::vector<MenuTitle>* titles);
    // Handles one queue entry, then brings the menus up to date.
    void Handle(const QueueEntry& entry);
    // Undo, Redo and Save greyed when they can't act; the options' check marks.
    void RefreshMenus();

    // The quit command and the close request: asks first when the module
    // has changed; true (and the quit flag set) when the program is to end.
    bool Quit();
    bool QuitRequested() const { return quit_; }

    // Loads or imports the file into a fresh module and has the host take it
    // over; on failure says "Couldn't load module." and keeps the current one.
    bool LoadFile(const std::string& path);
    // Saves to the module's own file, asking for a name when it has none.
    bool SaveModule();
    bool SaveModuleAs();

    // The options the commands follow and the menus show. The dispatcher
    // keeps a set of its own until it is bound to the program's, which it
    // then reads and toggles in place; they must outlive the dispatcher.
    void BindOptions(EditOptions& options);
    const EditOptions& Options() const { return *options_; }
    PatternClipboard& Clipboard() { return clipboard_; }

private:
    class Exporter;

    void MenuCommand(int command);
    void ControlValue(uint16_t id, int32_t value);
    void ControlButton(uint16_t id, uint32_t direction);
    void ListLine(uint16_t id, int32_t line);
    void KeyDown(uint32_t a, uint32_t b);
    void GridPoint(uint32_t point);
    // The Ctrl commands; false for a key that is none of them.
    bool CtrlKey(uint16_t scanCode, bool repeat);
    // Keys that mean the same with and without Ctrl; false for others.
    bool CommonKey(uint16_t scanCode);

    // Asks before losing changes; true when the command may go on.
    bool ConfirmLosing(const char* question);
    void NewModule();
    void LoadModule();
    void LoadRecent(int index);
    void Export(int kind);
    bool SaveTo(const std::string& path);

    void Play();
    void CursorPlay();
    void PatternPlay();
    void Stop();
    bool Playing() const;
    void SetChannelMask(uint32_t mask);
    // Only this channel sounds; soloing the soloed channel again brings the
    // channels back that sounded before.
    void SoloChannel(int channel);

    EditorContext& ctx_;
    std::optional<uint8_t> maskBeforeSolo_;
    ToolDialogs& dialogs_;
    CommandHost& host_;
    std::vector<MenuTitle>* menus_ = nullptr;
    PatternClipboard clipboard_;
    MidiExportOptions midiOptions_;
    std::unique_ptr<Exporter> exporter_;
    DigitEntry typing_;  // the number being typed with the digit keys
    EditOptions ownOptions_;
    EditOptions* options_ = &ownOptions_;
    bool quit_ = false;
};

}  // namespace sondrel
