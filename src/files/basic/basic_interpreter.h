#pragma once
// Runs the parts of a BASIC program that make music and collects the sounds
// it makes, with their times. Runs PLAY, SOUND, BEEP and NOISE, string and
// number variables, FOR/NEXT, GOSUB/RETURN, GOTO, ON ... GOTO/GOSUB, IF and
// END; every other statement is passed over. A statement that BASIC would
// refuse, or that depends on what cannot be known without running the
// machine (input, random numbers, arrays), is skipped. The work is bounded:
// a program that loops for ever plays once through.

#include <cstdint>
#include <vector>

#include "files/basic/basic_listing.h"

namespace sondrel {

enum class BasicSoundKind : uint8_t { PlayNormal, PlayStaccato, PlayLegato, Sound, Beep, Noise };

struct BasicSound {
    int channel = 0;          // tone channels 0..2, noise channel 3
    double start = 0.0;       // seconds from the program's start
    double end = 0.0;         // when the sound stops
    double frequency = 0.0;   // Hz, on the tone channels
    uint8_t noiseSource = 0;  // 0..7 on the noise channel: the chip's noise control bits
    uint8_t volume = 15;      // 0..15
    BasicSoundKind kind = BasicSoundKind::PlayNormal;
};

struct BasicRunLimits {
    double maxSeconds = 3600.0;  // no sound starts later than this
    long maxSteps = 1000000;     // statements and music commands
};

struct BasicRunResult {
    std::vector<BasicSound> sounds;  // in the order the program made them
    bool limitReached = false;       // the program was cut short by a limit
    // Numbers of the lines with a statement that was skipped because BASIC would
    // refuse it or because it depends on values that cannot be known.
    std::vector<int> skippedLines;
};

BasicRunResult RunBasicProgram(const std::vector<BasicLine>& program, const BasicRunLimits& limits = {});

}  // namespace sondrel
