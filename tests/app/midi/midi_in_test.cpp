#include "app/midi/midi_in.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

#include "app/midi/midi_note_entry.h"
#include "edit/editor_context.h"
#include "sound/song_player.h"

namespace sondrel {
namespace {

// A device that opens as told and lets the test play messages into the callback.
class FakeMidiDevice : public MidiDevice {
public:
    explicit FakeMidiDevice(int& closes) : closes(closes) {}
    bool Open(unsigned deviceId, Callback callback) override {
        openedId = static_cast<int>(deviceId);
        if (opens) send = std::move(callback);
        return opens;
    }
    void Close() override {
        ++closes;
        send = nullptr;
    }

    bool opens = true;
    int openedId = -1;
    int& closes;  // outlives the device
    Callback send;
};

struct MidiInTest : ::testing::Test {
    MidiInTest() {
        auto owned = std::make_unique<FakeMidiDevice>(closes);
        device = owned.get();
        midi = std::make_unique<MidiIn>(std::move(owned));
    }

    void Send(std::initializer_list<uint8_t> bytes) {
        device->send(std::data(bytes), bytes.size());
    }

    std::vector<MidiEvent> Drain() {
        std::vector<MidiEvent> events;
        for (MidiEvent event; midi->Pop(event);) events.push_back(event);
        return events;
    }

    int closes = 0;
    FakeMidiDevice* device;
    std::unique_ptr<MidiIn> midi;
};

TEST_F(MidiInTest, KeepsChannelOneNotesOnceEachWithVelocityZeroAsNoteOff) {
    midi->Open(5);
    ASSERT_TRUE(midi->Opened());
    EXPECT_EQ(device->openedId, 5);

    Send({0x90, 60, 100});
    Send({0x90, 60, 90});   // repeated note-on of a held key
    Send({0x91, 62, 100});  // channel 2
    Send({0x9F, 63, 100});  // channel 16
    Send({0xB0, 7, 100});   // a controller
    Send({0x80, 61, 0});    // release of a key that isn't down
    Send({0x90, 60, 0});    // note-on with velocity 0 ends the note
    Send({0x80, 60, 64});   // already released
    Send({0x90, 60, 70});   // and now it may sound again
    Send({0x80, 60, 64});
    Send({0xF8});           // a clock tick
    EXPECT_EQ(Drain(), (std::vector<MidiEvent>{{kMidiNoteOn, 60, 100},
                                               {kMidiNoteOff, 60, 0},
                                               {kMidiNoteOn, 60, 70},
                                               {kMidiNoteOff, 60, 64}}));
}

TEST_F(MidiInTest, AFullQueueDropsAndClearEmptiesIt) {
    midi->Open(0);
    for (uint8_t note = 0; note < 40; ++note) Send({0x90, note, 1});
    std::vector<MidiEvent> events = Drain();
    ASSERT_EQ(events.size(), 32u);
    EXPECT_EQ(events.front().note, 0);
    EXPECT_EQ(events.back().note, 31);

    // The ring wraps: the order holds across its end.
    for (uint8_t note = 0; note < 20; ++note) Send({0x80, note, 0});
    EXPECT_EQ(Drain().size(), 20u);
    for (uint8_t note = 20; note < 40; ++note) Send({0x80, note, 0});
    events = Drain();
    ASSERT_EQ(events.size(), 20u);
    EXPECT_EQ(events.front().note, 20);
    // Keys whose note-on was dropped were still seen going down.
    EXPECT_EQ(events.back().note, 39);

    Send({0x90, 1, 1});
    midi->Clear();
    EXPECT_TRUE(Drain().empty());
}

TEST_F(MidiInTest, ADeviceThatFailsLeavesMidiInOffAndReopeningStartsClean) {
    device->opens = false;
    midi->Open(9);
    EXPECT_FALSE(midi->Opened());
    midi->Close();
    EXPECT_EQ(closes, 0);

    device->opens = true;
    midi->Open(1);
    Send({0x90, 60, 1});
    midi->Open(1);  // closes first; held keys and the queue are forgotten
    EXPECT_EQ(closes, 1);
    Send({0x90, 60, 1});
    EXPECT_EQ(Drain().size(), 1u);
    midi.reset();
    EXPECT_EQ(closes, 2);
}

struct NoPrompts : EditPrompts {
    void ShowMessage(const std::string&) override {}
    bool AskQuestion(const std::string&) override { return false; }
};

struct MidiNoteEntryTest : MidiInTest {
    MidiNoteEntryTest() {
        module->NewModule({});
        view.SetModule(*module);
        undo.Reset(*module);
        song.Attach(*module);
        notes.Init(module->Settings());
        view.SetSelection({0, 0, 3, 1});
    }
    void On(uint8_t note) { entry.Handle({kMidiNoteOn, note, 100}); }
    void Off(uint8_t note) { entry.Handle({kMidiNoteOff, note, 0}); }
    const PatternLine& Line(int line) const { return module->patterns[0].lines[line]; }

    std::unique_ptr<Module> module = std::make_unique<Module>();
    PatternView view{*module};
    SongPlayer song;
    NotePlayer notes;
    AudioMutex mutex;
    NoPrompts prompts;
    UndoHistory undo{[this] { return song.Playing(); }};
    EditorContext context{*module, view, undo, song, notes, mutex, prompts};
    MidiNoteEntry entry{context};
};

TEST_F(MidiNoteEntryTest, KeysFromTheQueueAreWrittenAsAChordAndResetForgetsThem) {
    view.Settings().lineStep = 0;
    midi->Open(0);
    for (uint8_t note : {60, 64, 67, 72}) Send({0x90, note, 100});
    Send({0x80, 64, 0});
    Send({0x90, 62, 100});
    for (MidiEvent event; midi->Pop(event);) entry.Handle(event);
    EXPECT_EQ(entry.ChordSlots(), (std::array<uint8_t, 3>{60, 62, 67}));
    EXPECT_EQ(Line(0).note, (std::array<uint8_t, 4>{60, 62, 67, 255}));
    EXPECT_TRUE(notes.GetVoice(2).active);
    EXPECT_TRUE(undo.CanUndo());

    Send({0x90, 61, 1});
    entry.Reset(*midi);
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(entry.ChordSlots(), (std::array<uint8_t, 3>{kFreeChordSlot, kFreeChordSlot, kFreeChordSlot}));
}

}  // namespace
}  // namespace sondrel
