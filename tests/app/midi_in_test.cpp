#include "app/midi_in.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <iterator>
#include <vector>

#include "app/midi_note_entry.h"
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

struct MidiNoteEntryTest : MidiInTest {
    MidiNoteEntryTest() {
        module->NewModule({});
        notes.Init(module->Settings());
    }
    void On(uint8_t note, MidiEntryTarget target = {}) { entry.Handle({kMidiNoteOn, note, 100}, target); }
    void Off(uint8_t note) { entry.Handle({kMidiNoteOff, note, 0}, {}); }

    std::unique_ptr<Module> module = std::make_unique<Module>();
    NotePlayer notes;
    AudioMutex mutex;
    MidiNoteEntry entry{*module, notes, mutex};
};

TEST_F(MidiNoteEntryTest, AChordFillsThreeSlotsFromTheCursorChannelAndAFourthKeyIsIgnored) {
    for (uint8_t note : {60, 64, 67, 72}) On(note);
    EXPECT_EQ(entry.ChordSlots(), (std::array<uint8_t, 3>{60, 64, 67}));
    for (int channel = 0; channel < 3; ++channel) EXPECT_TRUE(notes.GetVoice(channel).active) << channel;
    EXPECT_FALSE(notes.GetVoice(3).active);

    // Releasing the middle key frees its slot for the next key.
    Off(64);
    EXPECT_EQ(entry.ChordSlots()[1], kFreeChordSlot);
    On(72);
    EXPECT_EQ(entry.ChordSlots(), (std::array<uint8_t, 3>{60, 72, 67}));

    // A preview lasts one second of ticks.
    for (int tick = 0; tick < 61; ++tick) notes.Tick();
    EXPECT_FALSE(notes.GetVoice(0).active);

    // Fewer usable slots, and a cursor further right: channels beyond the
    // pattern take the slot but sound nothing.
    MidiNoteEntry narrow(*module, notes, mutex);
    for (uint8_t note : {50, 52, 53}) narrow.Handle({kMidiNoteOn, note, 1}, {.cursorChannel = 3, .slotCount = 2});
    EXPECT_EQ(narrow.ChordSlots(), (std::array<uint8_t, 3>{50, 52, kFreeChordSlot}));
    EXPECT_TRUE(notes.GetVoice(3).active);
}

TEST_F(MidiNoteEntryTest, WithTheDividerAt2xTheNoteSoundsAnOctaveHigher) {
    On(60);
    EXPECT_EQ(notes.GetVoice(0).note, 60);
    Off(60);
    module->frequencyDivider = kDivider2x;
    On(60);
    EXPECT_EQ(notes.GetVoice(0).note, 72);
}

TEST_F(MidiNoteEntryTest, ResetDropsQueuedEventsAndFreesTheSlots) {
    midi->Open(0);
    On(60);
    Send({0x90, 61, 1});
    entry.Reset(*midi);
    EXPECT_TRUE(Drain().empty());
    EXPECT_EQ(entry.ChordSlots()[0], kFreeChordSlot);
}

}  // namespace
}  // namespace sondrel
