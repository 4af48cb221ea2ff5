#pragma once
// How long a song plays before its pattern list wraps, and when it reaches a
// given position: the figures of the "Module information" dialog.

#include <cstdint>
#include <string>

#include "model/module.h"

namespace sondrel {

struct SongTime {
    double totalSeconds = 0.0;   // until the first return to the repeat position
    double targetSeconds = 0.0;  // until the target line and list position were first reached
    bool targetReached = false;
    uint64_t totalTicks = 0;
};

// Plays the song silently from its start at its initial speed.
SongTime CalculateSongTime(Module& module, uint16_t targetLine, uint16_t targetListPosition);

// "12.50 sec. (0:12 min.)"
std::string FormatSongTime(double seconds);

}  // namespace sondrel
