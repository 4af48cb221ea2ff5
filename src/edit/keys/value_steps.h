#pragma once
// Stepping the values of the cells under a frame: volumes and instruments of
// the instrument/volume fields, and the parameters of channel commands and
// line commands.

#include <cstdint>

#include "model/module.h"
#include "screens/pattern_view/selection_frame.h"

namespace sondrel {

// E steps by one, W by the middle step, Q by the large step; Shift steps down.
enum class StepSize : uint8_t { One = 0, Middle = 1, Large = 2 };

// The largest decimal parameter of an effect that keys step or type to (two
// digits on the grid); "PV" and "VO" keep to 0..15.
constexpr int kLargestDecimalParam = 99;

// "PV" is limited to 0..15 and "VO" wraps there, stepped by 1 and 10; the
// decimal effects are limited to 0..99, stepped the same way; the hex effects
// (like "ST" in the command column) step their two digits apart, wrapping
// each within itself. The large step changes none of these.
uint8_t StepChannelParam(uint8_t channelCommand, uint8_t param, StepSize size, bool down);
uint8_t StepCommandParam(uint8_t command, uint8_t param, StepSize size, bool down);

// Volume (+1 or -1; limited to 0..15, or taken modulo 16 with wrap) and
// instrument (modulo 16) of every instrument/volume field under the frame.
void StepVolumes(Pattern& pattern, const SelectionFrame& frame, bool down, bool wrap);
void StepInstruments(Pattern& pattern, const SelectionFrame& frame, bool down);
// The parameter of every channel-command and command cell under the frame;
// note cells are not touched.
void StepValues(Pattern& pattern, const SelectionFrame& frame, StepSize size, bool down);

}  // namespace sondrel
