#pragma once
// Plays a song from its start through the song player and its chip, mixed as
// the audio output mixes it, into 44100 Hz 16-bit stereo: into a WAV file, or
// into any receiver of sample blocks.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "model/module.h"

namespace sondrel {

struct SongRenderOptions {
    int loops = 1;          // stop after the song wrapped this many times; 0: no limit
    double seconds = 0.0;   // stop after this much audio; 0: no limit
    int volume = 50;        // the volume preference, 0..100
    uint8_t channelMask = 0x0F;  // bit c lets chip channel c sound
    // Each channel is also rendered on its own, beside the mix: a channel
    // the mask silences gives silence. The four add up, with 16-bit
    // wrap-around as the chip mixes, to the mix.
    bool stems = false;
};

struct SongRenderResult {
    uint64_t ticks = 0;
    uint64_t frames = 0;
    int wraps = 0;
    double seconds = 0.0;
};

// progress receives the fraction done, 0..1, a few times a second of audio.
using RenderProgress = std::function<void(double fraction)>;
// Receives the audio in order, in blocks of interleaved left/right samples.
using RenderSink = std::function<void(const int16_t* samples, size_t count)>;
// With stems: receives channel c's audio, in blocks matching the mix's.
using ChannelSink = std::function<void(int channel, const int16_t* samples, size_t count)>;

SongRenderResult RenderSong(Module& module, const SongRenderOptions& options, const RenderSink& sink,
                            const RenderProgress& progress = {}, const ChannelSink& channels = {});

// With stems, channel c goes to StemPath(path, c) as well; either all the
// files are written or none is.
SongRenderResult RenderSongToWav(Module& module, const std::string& path, const SongRenderOptions& options,
                                 const RenderProgress& progress = {});

// Where channel c's stem of a render to path goes: "song.wav" gives "song-ch0.wav".
std::string StemPath(const std::string& path, int channel);

}  // namespace sondrel
