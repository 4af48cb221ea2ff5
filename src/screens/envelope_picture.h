#pragma once
// The picture of an instrument's loudness over time that the instrument
// editor and the main screen's instrument preview show: a full-volume note
// played through a voice exactly as the player runs it (start volume, then
// each phase's volume add for its delay, the last phase for ever), its output
// level 0-15 drawn as bars from the bottom, with dotted lines where the
// phases change.
//
// The time scale fits the four timed phases and a quarter as much of the last
// one into the width. When several ticks share a column, the column shows the
// quietest of them as a solid bar and the loudest as a lighter one above it,
// so a level that wraps within a column is not hidden.

#include "model/module.h"
#include "platform/gorb.h"

namespace sondrel {

// How many ticks the picture of this instrument spans.
int EnvelopePictureTicks(const Instrument& instrument);

// Paints area of surface (clipped to it) with the picture.
void DrawEnvelopePicture(Gorb_Surface& surface, const Gorb_Rect& area, const Instrument& instrument);

}  // namespace sondrel
