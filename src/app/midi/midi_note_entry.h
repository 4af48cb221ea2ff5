#pragma once
// Notes from the MIDI keyboard on the main thread: each event the MIDI-in
// queue hands over goes to the editor's MIDI note entry, which sounds and
// writes it at the frame (or the player's line) with chords over three slots.

#include <array>
#include <cstdint>

#include "app/midi/midi_in.h"
#include "edit/keys/midi_entry.h"

namespace sondrel {

class MidiNoteEntry {
public:
    explicit MidiNoteEntry(EditorContext& context) : context_(context) {}

    // A note-on takes the first free usable slot; a note-off frees its slot.
    void Handle(const MidiEvent& event);
    // Drops every queued event and frees every slot.
    void Reset(MidiIn& midiIn);

    const std::array<uint8_t, kChordSlots>& ChordSlots() const { return entry_.Slots(); }

private:
    EditorContext& context_;
    MidiEntry entry_;
};

}  // namespace sondrel
