#include "files/export/song_render.h"

#include <algorithm>
#include <array>
#include <filesystem>
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
                            const RenderProgress& progress, const ChannelSink& channels) {
    RequireALimit(options);
    if (options.stems && !channels) throw Exception("Rendering stems needs somewhere to put them.");
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
    song->SetChannelMask(options.channelMask);
    TickMixer mixer(*song, *notes);

    const size_t blockSamples = kTicksPerBlock * song->Chip().TickBytes() / 2;
    std::vector<int16_t> block(blockSamples);
    std::vector<int16_t> stems(options.stems ? 4 * blockSamples : 0);
    size_t filled = 0;
    const auto flush = [&] {
        sink(block.data(), filled);
        for (int c = 0; c < 4 && options.stems; ++c) channels(c, stems.data() + c * blockSamples, filled);
        filled = 0;
    };
    SongRenderResult result;
    while (result.ticks < tickLimit) {
        if (filled + song->Chip().TickBytes() / 2 > block.size()) flush();
        uint32_t bytes = 0;
        if (options.stems) {
            int16_t* at = stems.data() + filled;
            bytes = mixer.RenderTick(master, {at, at + blockSamples, at + 2 * blockSamples, at + 3 * blockSamples});
        } else {
            bytes = mixer.RenderTick(master);
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
    if (filled > 0) flush();
    if (progress) progress(1.0);
    result.seconds = static_cast<double>(result.frames) / kOutputRate;
    return result;
}

SongRenderResult RenderSongToWav(Module& module, const std::string& path, const SongRenderOptions& options,
                                 const RenderProgress& progress) {
    RequireALimit(options);
    // Every file is opened before the first sample: a place that can't take
    // one fails the render before any work is done.
    WavWriter wav;
    wav.Open(path, kOutputRate, 2);
    std::array<WavWriter, 4> stems;
    for (int c = 0; c < 4 && options.stems; ++c) stems[c].Open(StemPath(path, c), kOutputRate, 2);
    ChannelSink toStems;
    if (options.stems)
        toStems = [&](int channel, const int16_t* samples, size_t count) { stems[channel].Write(samples, count); };
    const SongRenderResult result = RenderSong(
        module, options, [&](const int16_t* samples, size_t count) { wav.Write(samples, count); }, progress,
        toStems);
    if (options.stems)
        WavWriter::CloseAll({&wav, &stems[0], &stems[1], &stems[2], &stems[3]});
    else
        wav.Close();
    return result;
}

std::string StemPath(const std::string& path, int channel) {
    const std::filesystem::path whole(path);
    const std::string name = whole.stem().string() + "-ch" + std::to_string(channel) + whole.extension().string();
    return (whole.parent_path() / name).string();
}

}  // namespace sondrel
