#pragma once
// Commands that change every cell inside the pattern view's selection frame
// at once, in the pattern it shows. Each does nothing while the song plays,
// records one undo entry when it changes something, asks the view to redraw
// and returns whether it changed anything. Failures are told through the
// context's prompts.

#include <cstdint>

#include "edit/editor_context.h"

namespace sondrel {

// Sound classes of a note byte, as the gradients and the detune step judge them.
enum ToneType : uint8_t {
    kToneEmpty = 0,      // 255
    kToneNote = 1,       // 0..155
    kTonePeriodic = 2,   // 247..250
    kToneWhite = 3,      // 251..254
    kToneNull = 4,       // 246
    kToneInvalid = 5,    // 156..245
};
ToneType ToneTypeOf(uint8_t note);

// Transpose steps; an octave step moves tone notes by 12 and noise notes by 4.
enum TransposeStep : int { kOctaveDown = -2, kNoteDown = -1, kNoteUp = 1, kOctaveUp = 2 };

// Empties every cell of the frame.
bool ClearSelection(EditorContext& ctx);
// Moves the frame's notes. For noise notes a step up lowers the value. The
// first note that scales an octave step scales it for the rest of the run, so
// an octave over a noise note moves later tone notes by 4, and over a tone
// note moves later noise notes by 12.
bool TransposeSelection(EditorContext& ctx, TransposeStep step);
// Adds delta (+1 or -1) to the detune of every tone note and null-note, within -99..99.
bool StepSelectionDetune(EditorContext& ctx, int delta);
// Interpolate volumes or notes of one channel between the frame's first and last line.
bool VolumeGradient(EditorContext& ctx);
bool NoteGradient(EditorContext& ctx);
// Stretch the frame's lines over twice as many (pushing the lines below down)
// or squeeze them into half as many (pulling the lines below up).
bool DoubleSelectionLines(EditorContext& ctx);
bool HalveSelectionLines(EditorContext& ctx);

}  // namespace sondrel
