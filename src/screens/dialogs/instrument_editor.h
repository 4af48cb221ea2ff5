#pragma once
// "Instrument Editor": a working copy of the module's sixteen instruments,
// one of them in the fields at a time (the list beside the envelope picture
// chooses which), given back whole for "Okay".
//
// The fields: the name (up to 32 characters, typed as the module file keeps
// it); the start volume and the volume adds in sixteenths of a volume step,
// shown as whole steps and sixteenths (see SixteenthsText); the four phase
// delays in ticks; the vibrato speed and strength of each of the five
// phases; the octave that the keyboard piano plays in, counted as the main
// screen's octave slider counts. "Copy" keeps the shown instrument's sound
// (everything but its name) for as long as the editor lives, "Paste" gives
// it to the shown instrument, "Reset..." asks and then makes the shown
// instrument a new one.
//
// While the editor is open, a key that no field takes goes to the preview
// with the shown instrument as it stands in the fields, once when it goes
// down and once when it comes up (at the latest when the editor closes).

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

#include "model/module.h"

namespace sondrel {

class Requesters;

using InstrumentSet = std::array<Instrument, kInstruments>;

// scanCode is the key's code as key entries carry it; octave is the edit
// settings' octave (a key's note is 12 * octave + its semitone).
using InstrumentPreview = std::function<void(const Instrument& instrument, int octave, uint16_t scanCode, bool down)>;

class InstrumentEditor {
public:
    static constexpr std::size_t kLongestName = 32;

    explicit InstrumentEditor(Requesters& requesters, InstrumentPreview preview = {})
        : requesters_(requesters), preview_(std::move(preview)) {}

    // Opens the editor on instrument `shown` of the set, the keys playing in
    // `octave`; the edited set for "Okay", nothing for "Cancel", Escape, the
    // close box, or when a dialog is open already.
    std::optional<InstrumentSet> Run(const InstrumentSet& instruments, int shown, int octave);

private:
    Requesters& requesters_;
    InstrumentPreview preview_;
    std::optional<Instrument> copied_;
};

}  // namespace sondrel
