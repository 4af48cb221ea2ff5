#include "app/midi/midi_note_entry.h"

namespace sondrel {

void MidiNoteEntry::Handle(const MidiEvent& event) {
    if (event.kind == kMidiNoteOn) entry_.NoteOn(context_, event.note);
    else if (event.kind == kMidiNoteOff) entry_.NoteOff(context_, event.note);
}

void MidiNoteEntry::Reset(MidiIn& midiIn) {
    MidiEvent ignored;
    while (midiIn.Pop(ignored)) {
    }
    entry_.FreeSlots();
    midiIn.Clear();
}

}  // namespace sondrel
