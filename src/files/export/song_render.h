#pragma once
// Plays a song from its start through the song player and its chip, mixed as
// the audio output mixes it, into a 44100 Hz 16-bit stereo WAV file.

#include <cstdint>
#include <functional>
#include <string>

#include "model/module.h"

namespace sondrel {

struct SongRenderOptions {
    int loops = 1;          // stop after the song wrapped this many times; 0: no limit
    double seconds = 0.0;   // stop after this much audio; 0: no limit
    int volume = 50;        // the volume preference, 0..100
};

struct SongRenderResult {
    uint64_t ticks = 0;
    uint64_t frames = 0;
    int wraps = 0;
    double seconds = 0.0;
};

// progress receives the fraction done, 0..1, a few times a second of audio.
using RenderProgress = std::function<void(double fraction)>;

SongRenderResult RenderSongToWav(Module& module, const std::string& path, const SongRenderOptions& options,
                                 const RenderProgress& progress = {});

}  // namespace sondrel
