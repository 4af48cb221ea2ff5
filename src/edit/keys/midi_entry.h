#pragma once
// Notes from a MIDI keyboard into the pattern. A chord spreads over up to
// three neighbouring channels from the frame's first channel: each slot is
// held by one key until it is released, and a key finding every usable slot
// held is ignored. A stopped song gets the note sounded and written at the
// frame's first line with the cursor stepping down; a playing song gets it
// written at the player's line; test mode only sounds it.

#include <array>
#include <cstdint>

#include "edit/editor_context.h"

namespace sondrel {

constexpr int kChordSlots = 3;
constexpr uint8_t kFreeChordSlot = 255;

class MidiEntry {
public:
    // Both take the audio mutex for the whole event.
    void NoteOn(EditorContext& context, uint8_t note);
    void NoteOff(EditorContext& context, uint8_t note);
    void FreeSlots() { slots_.fill(kFreeChordSlot); }

    const std::array<uint8_t, kChordSlots>& Slots() const { return slots_; }

private:
    std::array<uint8_t, kChordSlots> slots_{kFreeChordSlot, kFreeChordSlot, kFreeChordSlot};
};

}  // namespace sondrel
