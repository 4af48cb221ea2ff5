#pragma once
// The 128 General MIDI programs, for choosing the sound of each instrument
// when a module is exported as a MIDI file.

#include <array>

namespace sondrel {

constexpr int kGeneralMidiPrograms = 128;

// Program names by program number 0..127 ("Acoustic Grand Piano" ... "Gunshot").
const std::array<const char*, kGeneralMidiPrograms>& GeneralMidiProgramNames();

}  // namespace sondrel
