#include "edit/command_dispatcher.h"
#include "screens/pattern_view/pattern_rows.h"
#include "screens/pattern_view/pattern_view_drawer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "edit/main_menu.h"
#include "edit/keys/note_keys.h"
#include "edit/tool_test_support.h"
#include "files/export/export_command.h"
#include "screens/main_screen.h"
#include "ui/entry_kinds.h"

namespace sondrel::test {
namespace {

namespace fs = std::filesystem;

constexpr uint16_t kCtrl = 0x0004;

// Answers file requests from a script and takes modules over as the program does.
class FakeHost : public CommandHost {
public:
    FakeHost(Module& module, PatternView& view, UndoHistory& undo) : module_(module), view_(view), undo_(undo) {}
    std::string RequestFile(const std::vector<std::string>&, const std::string& title, bool saveMode,
                            const std::string&) override {
        requests.push_back((saveMode ? "save: " : "load: ") + title);
        return answer;
    }
    void ReplaceModule(std::unique_ptr<Module> fresh) override {
        module_ = std::move(*fresh);
        view_.SetModule(module_);
        undo_.Reset(module_);
        ++replaced;
    }
    void ModuleFileUsed(const std::string& path) override { used.push_back(path); }
    std::string RecentModule(int index) override { return index == 0 ? answer : std::string(); }
    void ShowDialog(ProgramDialog) override { ++dialogs; }
    bool EditMidiExportOptions(MidiExportOptions&) override { return true; }
    ImportOptionsProvider& ImportOptions() override { return imports_; }

    std::string answer;
    std::vector<std::string> requests, used;
    int replaced = 0;
    int dialogs = 0;

private:
    Module& module_;
    PatternView& view_;
    UndoHistory& undo_;
    ImportOptionsProvider imports_;
};

class DispatcherTest : public ToolsTest {
protected:
    DispatcherTest() { dispatcher.SetMenus(&menus); }

    void Key(uint16_t scanCode, uint16_t modifiers = 0, bool repeat = false, bool taken = false) {
        dispatcher.Handle({kEntryKeyDown, PackKeyA(scanCode, 0), PackKeyB(modifiers, repeat, taken)});
    }
    void Menu(int command) { dispatcher.Handle({kEntryMenuCommand, static_cast<uint32_t>(command), 0}); }
    // A note written at the cursor: the module now differs from its saved state.
    void Modify() {
        Key(kScanQ);
        ASSERT_TRUE(undo.IsModified());
    }
    const MenuEntry& MenuItem(int command) { return *FindMenuEntry(menus, command); }

    FakeHost host{*module, view, undo};
    std::vector<MenuTitle> menus = MainMenuTitles();
    CommandDispatcher dispatcher{ctx, dialogs, host};
};

TEST_F(DispatcherTest, CtrlKeysUndoRedoSaveAndActOnceWhileLettersAloneEnterNotes) {
    // Y and Z alone are notes; with Ctrl, Y takes the note back and Z puts it in again.
    Key(kScanY);
    const uint8_t entered = Line(0).note[0];
    EXPECT_NE(entered, kEmptyNote);
    Key(kScanY, kCtrl);
    EXPECT_EQ(Line(0).note[0], kEmptyNote);
    Key(kScanZ, kCtrl);
    EXPECT_EQ(Line(0).note[0], entered);

    // Ctrl with S, B, N, M, comma, period or slash saves; N alone enters a note.
    for (uint16_t key : {kScanS, kScanB, kScanN, kScanM, kScanComma, kScanPeriod, kScanSlash}) Key(key, kCtrl);
    EXPECT_EQ(host.requests, std::vector<std::string>(7, "save: Save module"));
    const auto beforeN = Snapshot();
    Key(kScanN);
    EXPECT_EQ(host.requests.size(), 7u);
    EXPECT_FALSE(*module == *beforeN);

    // Copy and the gradients ignore a held key's repeats; F alone does nothing.
    Key(kScanC, kCtrl, true);
    EXPECT_FALSE(dispatcher.Clipboard().HasContent());
    Key(kScanC, kCtrl);
    EXPECT_TRUE(dispatcher.Clipboard().HasContent());
    const auto before = Snapshot();
    Key(kScanF);
    Key(kScanF, kCtrl, true);
    Key(kScanG, kCtrl, true);
    EXPECT_TRUE(prompts.messages.empty());
    EXPECT_TRUE(*module == *before);
    Key(kScanF, kCtrl);  // a one-line frame: the gradient says why it can't
    EXPECT_EQ(prompts.messages.size(), 1u);

    // A key a widget took, and Escape, do nothing here.
    Key(kScanQ, 0, false, true);
    Key(0x01);
    EXPECT_TRUE(*module == *before);
    EXPECT_FALSE(dispatcher.QuitRequested());

    // Ctrl+P plays, and stops what plays.
    Key(kScanP, kCtrl);
    EXPECT_TRUE(song.Playing());
    Key(kScanP, kCtrl);
    EXPECT_FALSE(song.Playing());
}

TEST_F(DispatcherTest, LosingChangesIsConfirmedAndNoAbandonsTheCommand) {
    struct Case {
        int command;
        const char* question;
    };
    const Case cases[] = {{kMenuNewModule, kConfirmNew},
                          {kMenuLoadModule, kConfirmLoad},
                          {kMenuRecentFirst, kConfirmLoad},
                          {kMenuQuit, kConfirmQuit}};
    host.answer = (test::SourceDir() / "data" / "demo.sdrltk").string();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.command);
        prompts.questions.clear();
        host.replaced = 0;
        Modify();
        prompts.answers = {false};
        Menu(c.command);
        EXPECT_EQ(prompts.questions, std::vector<std::string>{c.question});
        EXPECT_EQ(host.replaced, 0);
        EXPECT_FALSE(dispatcher.QuitRequested());

        prompts.answers = {true};
        Menu(c.command);
        if (c.command == kMenuQuit) EXPECT_TRUE(dispatcher.QuitRequested());
        else EXPECT_EQ(host.replaced, c.command == kMenuNewModule ? 0 : 1);
    }

    // "New module settings" cancelled after "Yes": the song stays as it was,
    // changes and all. Answered, the new module replaces it.
    Modify();
    const Module before = *module;
    prompts.answers = {true};
    Menu(kMenuNewModule);
    EXPECT_EQ(*module, before);
    EXPECT_TRUE(undo.IsModified());
    EXPECT_EQ(host.replaced, 0);
    dialogs.moduleSettings = SettingsOf(Module{});
    dialogs.moduleSettings->title = "Fresh";
    prompts.answers = {true};
    Menu(kMenuNewModule);
    EXPECT_EQ(host.replaced, 1);
    EXPECT_EQ(module->title, "Fresh");
    EXPECT_EQ(module->patternListLength, 1);
    // A loaded module is not modified: loading again asks nothing.
    prompts.answers = {true};
    Menu(kMenuLoadModule);
    prompts.questions.clear();
    Menu(kMenuLoadModule);
    EXPECT_TRUE(prompts.questions.empty());
    EXPECT_EQ(module->title, "Four Corners");
}

TEST_F(DispatcherTest, FilesThatFailAreToldAndASaveMarksTheModuleSaved) {
    scratch.emplace();
    host.answer = (*scratch / "missing.sdrltk").string();
    Menu(kMenuLoadModule);
    EXPECT_EQ(prompts.messages, std::vector<std::string>{std::string(kCouldNotLoadModule) +
                                                         "\nNo such file or directory"});
    EXPECT_EQ(host.replaced, 0);

    Modify();
    host.answer = (*scratch / "no such folder" / "song.sdrltk").string();
    Menu(kMenuSaveModuleAs);
    EXPECT_EQ(prompts.messages.back().rfind(std::string(kCouldNotSaveModule) + "\nNo such file or directory", 0), 0u)
        << prompts.messages.back();
    EXPECT_TRUE(undo.IsModified());

    // Saved under a name, the module keeps it: "Save module" asks for none.
    host.answer = (*scratch / "song.sdrltk").string();
    Menu(kMenuSaveModuleAs);
    EXPECT_FALSE(undo.IsModified());
    EXPECT_TRUE(fs::exists(*scratch / "song.sdrltk"));
    Modify();
    host.requests.clear();
    Key(kScanS, kCtrl);
    EXPECT_TRUE(host.requests.empty());
    EXPECT_FALSE(undo.IsModified());

    // Its folder gone, the module can't be saved where it came from.
    module->directory = (*scratch / "gone").string();
    Modify();
    Menu(kMenuSaveModule);
    EXPECT_EQ(prompts.messages.back().rfind(std::string(kCouldNotSaveModule) + "\nThe folder ", 0), 0u);
    EXPECT_TRUE(undo.IsModified());

    // A full disk: the save and the exports are refused with the reason and
    // the file on the disk stays; the module is still unsaved.
    if (test::SmallDisk disk; disk.Mounted()) {
        const fs::path target = disk / "song.sdrltk";
        host.answer = target.string();
        Menu(kMenuSaveModuleAs);
        ASSERT_FALSE(undo.IsModified());
        const auto good = test::ReadBytes(target);
        disk.Fill();
        for (int command : {kMenuSaveModuleAs, kMenuExportVgm, kMenuExportMidi}) {
            Modify();
            prompts.messages.clear();
            Menu(command);
            ASSERT_EQ(prompts.messages.size(), 1u) << command;
            EXPECT_TRUE(prompts.messages[0].ends_with("\nNo space left on device")) << prompts.messages[0];
            EXPECT_TRUE(undo.IsModified());
            EXPECT_EQ(test::ReadBytes(target), good);
        }
        EXPECT_TRUE(prompts.messages[0].starts_with(kCouldNotWriteMidi));
    }

    // Exports ask under their format's title; the compact replay format only says it isn't there.
    host.requests.clear();
    host.answer = (*scratch / "song.vgm").string();
    Menu(kMenuExportVgm);
    Menu(kMenuExportEsdrltk);
    EXPECT_EQ(host.requests, std::vector<std::string>{"save: Export module as VGM"});
    EXPECT_TRUE(fs::exists(*scratch / "song.vgm"));
    EXPECT_EQ(prompts.messages.back(), kExportNotAvailable);
}

TEST_F(DispatcherTest, MenusShowWhatCanAct) {
    EXPECT_FALSE(MenuItem(kMenuUndo).enabled);
    EXPECT_FALSE(MenuItem(kMenuRedo).enabled);
    Modify();
    EXPECT_TRUE(MenuItem(kMenuUndo).enabled);
    dispatcher.Handle({kEntryValue, kControlPlay, 0});
    EXPECT_FALSE(MenuItem(kMenuUndo).enabled);
    view.RestoreFromPlayer(song);  // the frame loop follows the song
    ASSERT_TRUE(view.State().followPlay);
    dispatcher.Handle({kEntryValue, kControlStop, 0});
    EXPECT_FALSE(view.State().followPlay) << "the play marker stays after stopping";
    Menu(kMenuUndo);
    EXPECT_FALSE(MenuItem(kMenuUndo).enabled);
    EXPECT_TRUE(MenuItem(kMenuRedo).enabled);
}

// Bound options are toggled in place and followed; here paste, and the undo
// keys with the menu's shortcut texts.
TEST_F(DispatcherTest, BoundOptionsDecidePasteAndWhichOfCtrlYAndCtrlZUndoes) {
    EditOptions bound{.pasteDeleteNotes = false};
    dispatcher.BindOptions(bound);
    EXPECT_FALSE(MenuItem(kMenuPasteDelete).checked);
    Key(kScanQ);         // a note on line 0, the cursor on to line 1
    Key(kScanC, kCtrl);  // line 1's empty note cell
    Select(0, 0, 1, 1);
    Key(kScanV, kCtrl);
    EXPECT_NE(Line(0).note[0], kEmptyNote) << "the note shows through";
    Menu(kMenuPasteDelete);
    EXPECT_TRUE(bound.pasteDeleteNotes);
    Key(kScanV, kCtrl);
    EXPECT_EQ(Line(0).note[0], kEmptyNote);

    for (const bool ctrlZUndoes : {false, true}) {
        bound.undoWithCtrlZ = ctrlZUndoes;
        dispatcher.RefreshMenus();
        EXPECT_EQ(MenuItem(kMenuUndo).shortcut, ctrlZUndoes ? "CTRL + z" : "CTRL + y");
        EXPECT_EQ(MenuItem(kMenuRedo).shortcut, ctrlZUndoes ? "CTRL + y" : "CTRL + z");
        Key(ctrlZUndoes ? kScanZ : kScanY, kCtrl);
        EXPECT_NE(Line(0).note[0], kEmptyNote) << ctrlZUndoes;
        Key(ctrlZUndoes ? kScanY : kScanZ, kCtrl);
        EXPECT_EQ(Line(0).note[0], kEmptyNote) << ctrlZUndoes;
    }
}

// Digits make one number only while nothing but Shift comes between them.
TEST_F(DispatcherTest, TypedDigitsGoOnAsOneNumberUntilAnythingElseHappens) {
    EditOptions options{.typeDigits = true};
    dispatcher.BindOptions(options);
    Line(0).note[0] = 40;
    Select(1, 0, 1, 1);
    const auto type = [&](std::vector<uint16_t> keys, uint16_t modifiers = 0) {
        for (uint16_t key : keys) {
            Key(key, modifiers);
            dispatcher.Handle({kEntryKeyUp, key, 0});
        }
    };
    constexpr uint16_t kScan1 = 0x02, kLeftShift = 0x2A;
    type({kScan1, kScan5});
    EXPECT_EQ(Line(0).volume[0], 15);
    type({kScan1, kScanDown, kScanUp, kScan5});
    EXPECT_EQ(Line(0).volume[0], 5);
    type({kScan1});
    Menu(kMenuWrapVolume);
    type({kScan2});
    EXPECT_EQ(Line(0).volume[0], 2);
    type({kLeftShift, kScan1, kLeftShift, kScan2}, 1);
    EXPECT_EQ(Line(0).instrument[0], 12);

    // In a channel command field A sets the arpeggio (47, as typed): the
    // number starts again after it, while F types a digit like the others.
    Select(2, 0, 1, 1);
    Line(0).channelCommand[0] = kEffectArpeggio;
    constexpr uint16_t kScan4 = 0x05, kScan7 = 0x08, kScan3 = 0x04;
    type({kScan4, kScan7, kScanA, kScan1});
    EXPECT_EQ(Line(0).channelParam[0], 0x01);
    type({kScanF, kScan3});
    EXPECT_EQ(Line(0).channelParam[0], 0xF3);
    Select(1, 0, 1, 1);
    options.typeDigits = false;  // off: the digits do nothing on this field
    type({kScan9});
    EXPECT_EQ(Line(0).volume[0], 2);
}

TEST_F(DispatcherTest, ControlsSetTheEditorAndTheWheelScrollsTheGrid) {
    Fill(128);
    dispatcher.Handle({kEntryValue, kControlOctave, 4});
    dispatcher.Handle({kEntryTextReturn, kControlLineStep, 3});
    dispatcher.Handle({kEntryValue, kControlVolume, 9});
    dispatcher.Handle({kEntryValue, kControlSpeed, 40});
    dispatcher.Handle({kEntryToggle, kControlTestMode, 1});
    dispatcher.Handle({kEntryListLine, kControlInstrumentList, 5});
    const EditSettings& settings = view.Settings();
    EXPECT_EQ(settings.octave, 6);
    EXPECT_EQ(settings.lineStep, 3);
    EXPECT_EQ(settings.defaultVolume, 9);
    EXPECT_TRUE(settings.testMode);
    EXPECT_EQ(settings.currentInstrument, 5);
    EXPECT_EQ(song.GetSpeed(), 40);

    dispatcher.Handle({kEntryToggle, kControlChannel, 0x0B});
    EXPECT_EQ(song.GetChannelMask(), 0xFB);
    dispatcher.Handle({kEntryToggle, kControlChannel, 0x0F});
    EXPECT_EQ(song.GetChannelMask(), 0xFF);

    // Solo: Shift+click on a channel toggle or Alt+1..4; the same again
    // brings the channels back that sounded, unless one was switched by hand.
    dispatcher.Handle({kEntryToggle, kControlChannel, 0x0D});
    dispatcher.Handle({kEntryMaskSolo, kControlChannel, 2});
    EXPECT_EQ(song.GetChannelMask(), 0xF4);
    dispatcher.Handle({kEntryMaskSolo, kControlChannel, 2});
    EXPECT_EQ(song.GetChannelMask(), 0xFD);
    Key(0x03, kAltKeys);  // Alt+2: channel 1
    EXPECT_EQ(song.GetChannelMask(), 0xF2);
    Key(0x05, kAltKeys);  // Alt+4: channel 3, and channel 1 alone is what it brings back
    EXPECT_EQ(song.GetChannelMask(), 0xF8);
    Key(0x05, kAltKeys);
    EXPECT_EQ(song.GetChannelMask(), 0xF2);
    dispatcher.Handle({kEntryToggle, kControlChannel, 0x03});
    Key(0x02, kAltKeys);
    EXPECT_EQ(song.GetChannelMask(), 0xF1);
    dispatcher.Handle({kEntryToggle, kControlChannel, 0x01});  // by hand: the solo is over
    Key(0x02, kAltKeys);
    EXPECT_EQ(song.GetChannelMask(), 0xF1);

    // A click on the grid puts the cursor on the cell; a drag selects from it,
    // and a drag below the last row scrolls on.
    const auto grid = [&](int column, int row, bool dragged) {
        const PixelSpan span = CursorColumnSpan(column);
        const int y = kGridHeaderHeight + row * kGridRowHeight + 5;
        dispatcher.Handle({kEntryImage, kControlGrid, PackImagePoint(kGridTextX + span.x + span.w / 2, y, dragged)});
    };
    grid(4, 3, false);
    EXPECT_EQ(view.GetSelection(), (SelectionFrame{4, 3, 1, 1}));
    grid(12, 5, true);
    EXPECT_EQ(view.GetSelection(), (SelectionFrame{4, 3, 9, 3}));
    grid(0, 40, true);
    EXPECT_EQ(view.State().cursorLine, 32);
    EXPECT_EQ(view.State().topLine, 1);
    dispatcher.Handle({kEntryImage, kControlGrid, PackImagePoint(100, 3, false)});  // the header
    EXPECT_EQ(view.State().cursorLine, 32);
    view.ScrollTo(0);

    dispatcher.Handle({kEntryWheelDown, static_cast<uint32_t>(-1), 0});
    dispatcher.Handle({kEntryWheelDown, static_cast<uint32_t>(-1), 0});
    EXPECT_EQ(view.State().topLine, 32);
    dispatcher.Handle({kEntryWheelUp, 1, 0});
    EXPECT_EQ(view.State().topLine, 16);
    dispatcher.Handle({kEntryValue, kControlPlay, 0});
    dispatcher.Handle({kEntryWheelUp, 1, 0});
    EXPECT_EQ(view.State().topLine, 16);
}

}  // namespace
}  // namespace sondrel::test
