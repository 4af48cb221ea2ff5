#pragma once
// Editing the shown pattern from the computer keyboard: cursor and frame
// movement, notes from the two-row piano (the noise table on channel 3), the
// octave keys, volume, instrument and parameter steps, setting channel
// commands and commands, and inserting and deleting lines. Every change is
// recorded in the undo history and made under the audio mutex. While the song
// plays, cursor keys do nothing and notes go to the line being played.

#include <cstdint>

#include "edit/editor_context.h"
#include "edit/keys/digit_entry.h"
#include "screens/pattern_view/selection_frame.h"

namespace sondrel {

// A key as the toolkit's key entries carry it.
struct KeyPress {
    uint16_t scanCode = 0;
    uint16_t character = 0;
    uint16_t modifiers = 0;
    bool repeat = false;
};
// From a key-down entry's two words.
KeyPress KeyPressOf(uint32_t a, uint32_t b);

// Options of the dispatcher that the steps read.
struct PatternKeyOptions {
    bool wrapVolume = false;
    bool typeDigits = false;  // digit keys type values at the cursor (see digit_entry.h)
};

// Does what the key means to the pattern; false for a key pattern editing
// leaves to others (the Ctrl commands among them). Digits typed one after
// another go on with the number in typing; without it each begins afresh.
bool HandlePatternKey(EditorContext& context, const KeyPress& key, const PatternKeyOptions& options = {});
bool HandlePatternKey(EditorContext& context, const KeyPress& key, const PatternKeyOptions& options,
                      DigitEntry& typing);

// Arrow and paging keys: with Shift the anchor stays and the frame grows.
void MoveCursor(EditorContext& context, bool shift, int dColumns, int dLines);
// Space: down by the line step; with Shift the frame spans every line.
void SpaceKey(EditorContext& context, bool shift);
// Note and value keys at the cursor, or value keys over a larger frame.
// False when the key is none of them.
bool EditKey(EditorContext& context, uint16_t modifiers, uint16_t scanCode, const PatternKeyOptions& options,
             DigitEntry& typing);
// Return and Backspace: whole channels of the frame, or with Shift only its
// cells. Deleting removes the line above the frame and needs one there.
void InsertLine(EditorContext& context, bool shift);
void DeleteLine(EditorContext& context, bool shift);

// ---- Shared with MIDI note entry ----

// Sounds a note on the note player with the current instrument and volume for
// one second, with the channel's effect in line when one is given; the
// caller holds the audio mutex.
void PreviewNote(EditorContext& context, int channel, uint8_t note, const PatternLine* line = nullptr);
// Where the cursor goes after a note was written.
enum class AfterNote : uint8_t { Stay, StepCursor, StepKeepingColumns };
// Records the line and writes the note with the current instrument and volume
// (a line past the pattern's end, or a channel past 3, is left alone).
void WriteNote(EditorContext& context, uint8_t pattern, int line, int channel, uint8_t note, AfterNote after);

}  // namespace sondrel
