// Whole-song render speed against libgme playing our VGM export of the same
// song, for each member of the chip family against the Sega chip, and with
// effects on every line against the plain song. Both sides are timed in the
// same iterations, alternating, on this thread's CPU clock; "vs_libgme" is
// our speed over libgme's, "vs_sega" the chip's over the Sega chip's,
// "vs_plain" the busy song's over the plain one's, "vs_mixed" the time of the
// per-channel stems over the mix's.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

#include "demo_song.h"
#include "files/export/song_render.h"
#include "files/export/vgm_export.h"
#include "sound/sound_chip.h"

#ifdef SONDREL_HAVE_GME
#include <gme/gme.h>
#endif

namespace sondrel {
namespace {

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The demo's pattern list played over and over: one pass of about five minutes.
std::unique_ptr<Module> LongSong() {
    auto module = bench::LoadDemo();
    if (!module) return nullptr;
    const int length = module->patternListLength;
    const int longLength = std::min(length * 8, kMaxPatternList);
    for (int i = length; i < longLength; ++i) module->patternList[i] = module->patternList[i % length];
    module->patternListLength = static_cast<uint16_t>(longLength);
    return module;
}

// One pass of the song into 16-bit stereo, as "sondrel-cli render" makes it
// but without the file; returns the frames made.
uint64_t RenderOurs(Module& module) {
    return RenderSong(module, {}, [](const int16_t* samples, size_t) { benchmark::DoNotOptimize(samples); })
        .frames;
}

// Runs ours() and theirs() alternately in each iteration, first one then the
// other; returns the CPU seconds each took in all, and reports ours as the
// iteration time. When theirs() fails the benchmark stops with that error.
template <typename Ours, typename Theirs>
std::pair<double, double> TimeSideBySide(benchmark::State& state, Ours ours, Theirs theirs, const char* failure) {
    double oursTotal = 0.0;
    double theirsTotal = 0.0;
    bool oursFirst = true;
    for (auto _ : state) {
        // Alternating the order keeps caches and frequency steps from favouring one side.
        double oursNow = 0.0;
        double theirsNow = 0.0;
        for (int side = 0; side < 2; ++side) {
            const double start = ThreadSeconds();
            if ((side == 0) == oursFirst) {
                ours();
                oursNow = ThreadSeconds() - start;
            } else {
                if (!theirs()) {
                    state.SkipWithError(failure);
                    return {0.0, 0.0};
                }
                theirsNow = ThreadSeconds() - start;
            }
        }
        oursFirst = !oursFirst;
        oursTotal += oursNow;
        theirsTotal += theirsNow;
        state.SetIterationTime(oursNow);
    }
    return {oursTotal, theirsTotal};
}

// Renders one song against another in the same iterations: its speed in
// "realtime_x", and in `ratio` the other's time over its own.
void RenderAgainst(benchmark::State& state, Module& song, Module& other, const char* ratio) {
    const uint64_t frames = RenderOurs(song);
    const auto [ours, theirs] = TimeSideBySide(
        state, [&] { benchmark::DoNotOptimize(RenderOurs(song)); },
        [&] { return benchmark::DoNotOptimize(RenderOurs(other)), true; }, "");
    const double audio = static_cast<double>(frames) / kOutputRate * static_cast<double>(state.iterations());
    state.counters["realtime_x"] = audio / ours;
    state.counters[ratio] = theirs / ours;
}

void BM_RenderLongSongPerChip(benchmark::State& state) {
    auto sega = LongSong();
    auto chip = LongSong();
    if (!sega || !chip) {
        state.SkipWithError("demo.sdrltk not found beside the executable or in data/");
        return;
    }
    chip->chipVariant = static_cast<uint8_t>(state.range(0));
    RenderAgainst(state, *chip, *sega, "vs_sega");
    state.SetLabel(kChipVariantNames[chip->chipVariant]);
}
BENCHMARK(BM_RenderLongSongPerChip)
    ->Arg(kVariantSega)
    ->Arg(kVariantGameGear)
    ->Arg(kVariantTi)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1.0);

// The long song with an effect on every channel of every line: vibrato on
// the lead, the bass sliding up and down by turns, chords on the arpeggio
// channel and the drums retriggered.
void AddEffectsEverywhere(Module& module) {
    for (Pattern& pattern : module.patterns) {
        if (!pattern.used) continue;
        for (int line = 0; line < pattern.length; ++line) {
            PatternLine& cells = pattern.lines[line];
            const uint8_t effects[kChannels] = {kEffectVibrato, line % 2 ? kEffectSlideDown : kEffectSlideUp,
                                                kEffectArpeggio, kEffectRetrigger};
            const uint8_t params[kChannels] = {0x24, 1, 0x47, 3};
            for (int c = 0; c < kChannels; ++c) {
                cells.channelCommand[c] = effects[c];
                cells.channelParam[c] = params[c];
            }
        }
    }
}

void BM_RenderLongSongWithEffects(benchmark::State& state) {
    auto plain = LongSong();
    auto busy = LongSong();
    if (!plain || !busy) {
        state.SkipWithError("demo.sdrltk not found beside the executable or in data/");
        return;
    }
    AddEffectsEverywhere(*busy);
    RenderAgainst(state, *busy, *plain, "vs_plain");
}
BENCHMARK(BM_RenderLongSongWithEffects)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1.0);

// The long song's four stems, each channel on its own beside the mix, against
// the mix alone; "vs_mixed" is the stems' time over the mix's.
void BM_RenderLongSongStems(benchmark::State& state) {
    auto module = LongSong();
    if (!module) {
        state.SkipWithError("demo.sdrltk not found beside the executable or in data/");
        return;
    }
    SongRenderOptions stems;
    stems.stems = true;
    const auto renderStems = [&] {
        return RenderSong(
                   *module, stems, [](const int16_t* samples, size_t) { benchmark::DoNotOptimize(samples); }, {},
                   [](int, const int16_t* samples, size_t) { benchmark::DoNotOptimize(samples); })
            .frames;
    };
    const uint64_t frames = renderStems();
    const auto [ours, theirs] = TimeSideBySide(
        state, [&] { benchmark::DoNotOptimize(renderStems()); },
        [&] { return benchmark::DoNotOptimize(RenderOurs(*module)), true; }, "");
    const double audio = static_cast<double>(frames) / kOutputRate * static_cast<double>(state.iterations());
    state.counters["realtime_x"] = audio / ours;
    state.counters["vs_mixed"] = ours / theirs;
}
BENCHMARK(BM_RenderLongSongStems)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1.0);

#ifdef SONDREL_HAVE_GME

// The same number of frames of the exported log, streamed as a player does.
bool PlayInGme(const std::vector<uint8_t>& vgm, uint64_t frames) {
    constexpr uint64_t kChunkFrames = 4096;
    Music_Emu* emu = nullptr;
    if (gme_open_data(vgm.data(), static_cast<long>(vgm.size()), &emu, kOutputRate)) return false;
    // Plain playback: no fade at the logged length, no silence look-ahead.
    gme_set_autoload_playback_limit(emu, 0);
    gme_ignore_silence(emu, 1);
    bool ok = gme_start_track(emu, 0) == nullptr;
    std::vector<short> chunk(kChunkFrames * 2);
    for (uint64_t done = 0; ok && done < frames; done += kChunkFrames) {
        const auto count = static_cast<int>(std::min(kChunkFrames, frames - done) * 2);
        ok = gme_play(emu, count, chunk.data()) == nullptr;
        benchmark::DoNotOptimize(chunk.data());
    }
    gme_delete(emu);
    return ok;
}

void BM_RenderLongSongVsLibgme(benchmark::State& state) {
    auto module = LongSong();
    if (!module) {
        state.SkipWithError("demo.sdrltk not found beside the executable or in data/");
        return;
    }
    const std::vector<uint8_t> vgm = BuildVgm(*module);
    const uint64_t frames = RenderOurs(*module);
    const auto [ours, theirs] = TimeSideBySide(
        state, [&] { benchmark::DoNotOptimize(RenderOurs(*module)); }, [&] { return PlayInGme(vgm, frames); },
        "libgme refused the exported song");
    if (ours == 0.0) return;
    const double audio = static_cast<double>(frames) / kOutputRate * static_cast<double>(state.iterations());
    state.counters["realtime_x"] = audio / ours;
    state.counters["libgme_realtime_x"] = audio / theirs;
    state.counters["vs_libgme"] = theirs / ours;
}
BENCHMARK(BM_RenderLongSongVsLibgme)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2.0);

#endif

}  // namespace
}  // namespace sondrel
