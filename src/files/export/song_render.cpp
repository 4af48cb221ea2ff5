#include "files/export/song_render.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "files/export/wav_writer.h"
#include "model/exception.h"
#include "sound/song_player.h"
#include "sound/song_time.h"
#include "sound/tick_mixer.h"

namespace sondrel {

namespace {

// Ticks gathered before the sink sees them: few, large blocks keep the
// per-call cost (a file write for WAV output) out of the render loop.
constexpr uint32_t kTicksPerBlock = 32;

void RequireALimit(const SongRenderOptions& options) {
    if (options.loops <= 0 && options.seconds <= 0.0)
        throw Exception("Rendering needs a number of loops or a length in seconds.");
}

}  // namespace

SongRenderResult RenderSong(Module& module, const SongRenderOptions& options, const RenderSink& sink,
                            const RenderProgress& progress) {
    RequireALimit(options);
    const uint8_t master = MasterFromVolume(std::clamp(options.volume, 0, 100));

    // The expected length, for the progress report.
    const double rate = module.TicksPerSecond();
    double expectedTicks = options.seconds > 0.0 ? options.seconds * rate : 0.0;
    if (options.loops > 0 && progress) {
        const double songTicks = static_cast<double>(CalculateSongTime(module, 0, 0).totalTicks);
        const double loopTicks = songTicks * options.loops;
        expectedTicks = expectedTicks > 0.0 ? std::min(expectedTicks, loopTicks) : loopTicks;
    }
    const uint64_t tickLimit =
        options.seconds > 0.0 ? static_cast<uint64_t>(options.seconds * rate + 0.5) : UINT64_MAX;

    auto song = std::make_unique<SongPlayer>();
    auto notes = std::make_unique<NotePlayer>();
    song->Attach(module);
    notes->Init(module.Settings());
    song->Start(0, 0, false);
    TickMixer mixer(*song, *notes);

    std::vector<int16_t> block(kTicksPerBlock * song->Chip().TickBytes() / 2);
    size_t filled = 0;
    SongRenderResult result;
    while (result.ticks < tickLimit) {
        const uint32_t bytes = mixer.RenderTick(master);
        if (filled + bytes / 2 > block.size()) {
            sink(block.data(), filled);
            filled = 0;
        }
        mixer.Take(block.data() + filled, bytes);
        filled += bytes / 2;
        ++result.ticks;
        result.frames += bytes / 4;
        if (song->wrapped) ++result.wraps;
        if (options.loops > 0 && result.wraps >= options.loops) break;
        if (progress && expectedTicks > 0.0 && result.ticks % 15 == 0)
            progress(std::min(1.0, static_cast<double>(result.ticks) / expectedTicks));
    }
    if (filled > 0) sink(block.data(), filled);
    if (progress) progress(1.0);
    result.seconds = static_cast<double>(result.frames) / kOutputRate;
    return result;
}

SongRenderResult RenderSongToWav(Module& module, const std::string& path, const SongRenderOptions& options,
                                 const RenderProgress& progress) {
    RequireALimit(options);
    WavWriter wav;
    wav.Open(path, kOutputRate, 2);
    const SongRenderResult result =
        RenderSong(module, options, [&](const int16_t* samples, size_t count) { wav.Write(samples, count); },
                   progress);
    wav.Close();
    return result;
}

}  // namespace sondrel
