// How many times a second the demo module loads, as the program loads a file
// into its open module: counter "loads_per_s".

#include <benchmark/benchmark.h>

#include <memory>

#include "demo_song.h"
#include "files/module_file.h"

namespace sondrel {
namespace {

void BM_LoadDemoModule(benchmark::State& state) {
    const auto path = bench::DemoPath();
    if (path.empty()) {
        state.SkipWithError("demo.sdrltk not found beside the executable or in data/");
        return;
    }
    auto module = std::make_unique<Module>();
    ImportOptionsProvider defaults;
    for (auto _ : state) {
        if (!LoadAnyFile(*module, path.string(), defaults)) {
            state.SkipWithError("the demo module did not load");
            return;
        }
        benchmark::DoNotOptimize(module->patternListLength);
    }
    state.counters["loads_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_LoadDemoModule)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace sondrel
