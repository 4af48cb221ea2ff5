#pragma once
// Notes from the MIDI keyboard on the main thread. A chord spreads over
// neighbouring channels: up to three slots, counted from the cursor's
// channel, each held by one key until it is released.

#include <array>
#include <cstdint>

#include "app/midi_in.h"
#include "model/module.h"
#include "sound/audio_mutex.h"

namespace sondrel {

class NotePlayer;

constexpr int kChordSlots = 3;
constexpr uint8_t kFreeChordSlot = 255;

// What the editor tells note entry about where notes go.
struct MidiEntryTarget {
    int cursorChannel = 0;
    int slotCount = kChordSlots;  // capped at 3
    uint8_t instrument = 0;
    uint8_t volume = 15;
};

class MidiNoteEntry {
public:
    MidiNoteEntry(Module& module, NotePlayer& notes, AudioMutex& audioMutex)
        : module_(module), notes_(notes), audioMutex_(audioMutex) {}

    // A note-on takes the first free slot and sounds on the note player for
    // one second on the slot's channel; a note-off frees its slot.
    void Handle(const MidiEvent& event, const MidiEntryTarget& target);
    // Drops every queued event and frees every slot.
    void Reset(MidiIn& midiIn);

    const std::array<uint8_t, kChordSlots>& ChordSlots() const { return chordSlots_; }

private:
    Module& module_;
    NotePlayer& notes_;
    AudioMutex& audioMutex_;
    std::array<uint8_t, kChordSlots> chordSlots_{kFreeChordSlot, kFreeChordSlot, kFreeChordSlot};
};

}  // namespace sondrel
