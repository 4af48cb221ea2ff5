#include "edit/keys/midi_entry.h"

#include <algorithm>
#include <mutex>

#include "edit/keys/pattern_editing.h"
#include "sound/song_player.h"

namespace sondrel {

void MidiEntry::NoteOff(EditorContext& context, uint8_t note) {
    std::lock_guard<AudioMutex> lock(context.audioMutex);
    for (auto& slot : slots_)
        if (slot == note) slot = kFreeChordSlot;
}

void MidiEntry::NoteOn(EditorContext& context, uint8_t note) {
    std::lock_guard<AudioMutex> lock(context.audioMutex);
    const bool playing = context.song.Playing();
    SelectionFrame frame = context.view.GetSelection();
    if (playing) frame.y = context.song.Line(), frame.h = 1;

    const int usable = std::min(frame.w, kChordSlots);
    int slot = 0;
    while (slot < usable && slots_[slot] != kFreeChordSlot) ++slot;
    if (slot >= usable) return;
    slots_[slot] = note;

    // With the divider at 2x the chip sounds an octave lower; this keeps the heard pitch.
    const auto value = static_cast<uint8_t>(note + (context.module.frequencyDivider == kDivider2x ? 12 : 0));
    if (frame.x >= kGridLastColumn) return;
    const int channel = frame.x / 3 + slot;
    if (channel >= kChannels) return;

    const bool testMode = context.view.Settings().testMode;
    if (testMode || !playing) PreviewNote(context, channel, value);
    if (testMode) return;
    const uint8_t pattern = playing ? context.song.PatternNumber() : context.view.State().currentPattern;
    WriteNote(context, pattern, frame.y, channel, value, playing ? AfterNote::Stay : AfterNote::StepKeepingColumns);
}

}  // namespace sondrel
