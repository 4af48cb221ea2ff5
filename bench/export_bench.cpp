// Export speed for the demo song, reported as song time exported per second
// of CPU in the counter "realtime_x".

#include <benchmark/benchmark.h>

#include "demo_song.h"
#include "files/export/midi_export.h"
#include "files/export/vgm_export.h"
#include "sound/song_time.h"

namespace sondrel {
namespace {

template <typename Export>
void RunExport(benchmark::State& state, Export exportSong) {
    auto module = bench::LoadDemo();
    if (!module) {
        state.SkipWithError("demo.sdrltk not found beside the executable or in data/");
        return;
    }
    const double songSeconds = CalculateSongTime(*module, 0, 0).totalSeconds;
    for (auto _ : state) {
        auto bytes = exportSong(*module);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.counters["realtime_x"] =
        benchmark::Counter(songSeconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_ExportVgmDemo(benchmark::State& state) {
    RunExport(state, [](Module& module) { return BuildVgm(module); });
}
BENCHMARK(BM_ExportVgmDemo);

void BM_ExportMidiDemo(benchmark::State& state) {
    const MidiExportOptions options;
    RunExport(state, [&](Module& module) { return BuildMidi(options, module); });
}
BENCHMARK(BM_ExportMidiDemo);

}  // namespace
}  // namespace sondrel
