#include "app/dialogs/instrument_editing.h"

#include <gtest/gtest.h>

#include <memory>

#include "edit/edit_test_support.h"
#include "screens/dialog_fixture.h"

namespace sondrel {
namespace {

constexpr uint16_t kKeyZ = 0x2C;  // the piano's lowest C

// The editor over a module of its own, opened from the program's side.
class InstrumentEditingTest : public ToolDialogTest {
protected:
    InstrumentEditingTest() {
        module->NewModule({});
        module->instruments[4].name = "Bell";
        module->instruments[4].volumeAdd = {-2, 1, 0, 0, -1};
        view.SetModule(*module);
        view.Settings().currentInstrument = 4;
        view.Settings().octave = 5;
        undo.Reset(*module);
        notes.Init(module->Settings());
    }

    std::unique_ptr<Module> module = std::make_unique<Module>();
    PatternView view{*module};
    SongPlayer song;
    NotePlayer notes;
    AudioMutex audioMutex;
    test::ScriptedPrompts prompts;
    UndoHistory undo{[this] { return song.Playing(); }};
    PatternViewUndo undoView{view};
    EditorContext ctx{*module, view, undo, song, notes, audioMutex, prompts};
    InstrumentEditing editing{ctx, requesters};
};

TEST_F(InstrumentEditingTest, OkayPutsTheWholeEditedSetInAsOneUndoEntry) {
    const auto before = std::make_unique<Module>(*module);
    Then([&] {
        EXPECT_EQ(Field<TextLine>("Name:").Text(), "Bell");  // the current instrument first
        Field<TextLine>("Start volume:").SetText("3.03");
        ClickLine(*Dialog()->Widgets()[0], 9);
    });
    Then([&] {
        Field<TextLine>("Name:").SetText("Chime");
        Field<TextLine>("Delay:", 0, 2).SetText("0");
        Press("Okay");
    });
    editing.Run();
    EXPECT_EQ(module->instruments[4].startVolume, 51);
    EXPECT_EQ(module->instruments[9].name, "Chime");
    EXPECT_EQ(module->instruments[9].delay[2], 0);
    EXPECT_TRUE(undo.IsModified());
    const auto after = std::make_unique<Module>(*module);

    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_TRUE(*module == *before);
    EXPECT_FALSE(undo.CanUndo());
    ASSERT_TRUE(undo.Redo(undoView));
    EXPECT_TRUE(*module == *after);
}

TEST_F(InstrumentEditingTest, KeysSoundTheEditedInstrumentAndCancelLeavesModuleAndHistoryAlone) {
    const auto before = std::make_unique<Module>(*module);
    Then([&] {
        Field<TextLine>("Start volume:").SetText("8.00");
        Queue(kGorbKeyDown, {}, kKeyZ, 'z');
    });
    Then([&] {
        const Voice& voice = notes.GetVoice(0);
        EXPECT_TRUE(voice.active);
        EXPECT_EQ(voice.note, 5 * 12);
        ASSERT_NE(voice.instrument, nullptr);
        EXPECT_EQ(voice.instrument->startVolume, 128);  // not yet the module's
        Queue(kGorbKeyUp, {}, kKeyZ);
    });
    Then([&] {
        EXPECT_FALSE(notes.GetVoice(0).active);
        Press("Cancel");
    });
    editing.Run();
    EXPECT_TRUE(*module == *before);
    EXPECT_FALSE(undo.CanUndo());
    EXPECT_FALSE(undo.IsModified());
}

}  // namespace
}  // namespace sondrel
