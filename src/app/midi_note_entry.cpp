#include "app/midi_note_entry.h"

#include <algorithm>
#include <mutex>

#include "sound/song_player.h"

namespace sondrel {

void MidiNoteEntry::Handle(const MidiEvent& event, const MidiEntryTarget& target) {
    std::lock_guard<AudioMutex> lock(audioMutex_);
    if (event.kind == kMidiNoteOff) {
        for (auto& slot : chordSlots_)
            if (slot == event.note) slot = kFreeChordSlot;
        return;
    }
    if (event.kind != kMidiNoteOn) return;

    const int usable = std::clamp(target.slotCount, 0, kChordSlots);
    int slot = 0;
    while (slot < usable && chordSlots_[slot] != kFreeChordSlot) ++slot;
    if (slot == usable) return;  // every slot is held
    chordSlots_[slot] = event.note;

    // With the divider at 2x the chip sounds an octave lower; this keeps the heard pitch.
    const int note = event.note + (module_.frequencyDivider == kDivider2x ? 12 : 0);
    const int channel = target.cursorChannel + slot;
    if (channel < 0 || channel >= kChannels) return;
    // Writing the note into the pattern while the song plays belongs to pattern
    // editing; until then every note is a preview.
    notes_.StartVoice(channel, module_.instruments[target.instrument & (kInstruments - 1)], target.volume,
                      static_cast<uint8_t>(note), 0, static_cast<uint32_t>(module_.TicksPerSecond()));
}

void MidiNoteEntry::Reset(MidiIn& midiIn) {
    MidiEvent ignored;
    while (midiIn.Pop(ignored)) {
    }
    chordSlots_.fill(kFreeChordSlot);
    midiIn.Clear();
}

}  // namespace sondrel
