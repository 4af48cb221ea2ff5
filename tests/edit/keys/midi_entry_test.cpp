#include "edit/keys/midi_entry.h"

#include <gtest/gtest.h>

#include <array>

#include "edit/edit_test_support.h"

namespace sondrel {
namespace {

using Slots = std::array<uint8_t, kChordSlots>;

class MidiEntryTest : public test::EditTest {
protected:
    MidiEntryTest() { notes.Init(module->Settings()); }

    void On(uint8_t note) { entry.NoteOn(ctx, note); }
    void Off(uint8_t note) { entry.NoteOff(ctx, note); }

    MidiEntry entry;
};

TEST_F(MidiEntryTest, AChordFillsThreeChannelsAndAFourthKeyWaitsForAFreeSlot) {
    view.Settings().lineStep = 0;
    view.Settings().currentInstrument = 2;
    view.Settings().defaultVolume = 11;
    Select(3, 8, 4, 1);  // channels 1 and 2, three slots
    for (uint8_t note : {60, 64, 67}) On(note);
    EXPECT_EQ(entry.Slots(), (Slots{60, 64, 67}));
    EXPECT_EQ(Line(8).note, (std::array<uint8_t, 4>{255, 60, 64, 67}));
    EXPECT_EQ(Line(8).instrument[3], 2);
    EXPECT_EQ(Line(8).volume[2], 11);
    EXPECT_TRUE(notes.GetVoice(3).active);

    const auto held = Snapshot();
    const uint32_t head = undo.Head();
    On(72);
    EXPECT_EQ(entry.Slots(), (Slots{60, 64, 67}));
    EXPECT_EQ(undo.Head(), head);
    EXPECT_TRUE(*module == *held);

    // Releasing the middle key frees its slot for the next one.
    Off(64);
    On(72);
    EXPECT_EQ(entry.Slots(), (Slots{60, 72, 67}));
    EXPECT_EQ(Line(8).note[2], 72);
    ExpectUndoAndRedo(*held, *Snapshot());

    // The cursor alone has one slot; past channel 3 a slot is taken but nothing written.
    entry.FreeSlots();
    Select(9, 8, 1, 1);
    On(50);
    On(51);
    EXPECT_EQ(entry.Slots(), (Slots{50, kFreeChordSlot, kFreeChordSlot}));
    entry.FreeSlots();
    Select(6, 9, 7, 1);
    for (uint8_t note : {40, 41, 42}) On(note);
    EXPECT_EQ(entry.Slots(), (Slots{40, 41, 42}));
    EXPECT_EQ(Line(9).note, (std::array<uint8_t, 4>{255, 255, 40, 41}));
    EXPECT_EQ(Line(9).command, kCommandNone);
    entry.FreeSlots();
    const auto before = Snapshot();
    Select(12, 9, 1, 1);
    On(43);
    EXPECT_TRUE(*module == *before);
}

TEST_F(MidiEntryTest, StoppedPlayingAndTestModeDecideWhereTheNoteGoes) {
    // Stopped: sounded, written at the frame's line and the cursor steps down
    // keeping the frame's columns; with the divider at 2x an octave higher.
    module->frequencyDivider = kDivider2x;
    view.Settings().lineStep = 2;
    Select(0, 4, 3, 1);
    On(60);
    EXPECT_EQ(Line(4).note[0], 72);
    EXPECT_EQ(notes.GetVoice(0).note, 72);
    EXPECT_EQ(view.GetSelection(), (SelectionFrame{0, 6, 3, 1}));
    Off(60);

    // Test mode only sounds it.
    const auto before = Snapshot();
    const uint32_t head = undo.Head();
    view.Settings().testMode = true;
    On(61);
    EXPECT_EQ(notes.GetVoice(0).note, 73);
    EXPECT_EQ(undo.Head(), head);
    EXPECT_TRUE(*module == *before);
    Off(61);

    // Playing: at the player's line, nothing sounded, the cursor stays.
    view.Settings().testMode = false;
    notes.StopAll();
    song.Start(30, 0, false);
    On(62);
    EXPECT_EQ(Line(30).note[0], 74);
    EXPECT_EQ(Line(6).note[0], 255);
    EXPECT_FALSE(notes.GetVoice(0).active);
    EXPECT_EQ(view.GetSelection(), (SelectionFrame{0, 6, 3, 1}));
    song.Stop();
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_TRUE(*module == *before);
}

}  // namespace
}  // namespace sondrel
