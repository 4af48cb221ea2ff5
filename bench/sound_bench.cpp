// Rendering speed of the sound engine, reported as a multiple of real time:
// seconds of audio rendered per second of CPU, in the counter "realtime_x".

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "model/notes.h"
#include "sound/song_player.h"
#include "sound/sound_chip.h"
#include "sound/tick_mixer.h"

namespace sondrel {
namespace {

void ReportRealTime(benchmark::State& state, double secondsPerIteration) {
    state.counters["realtime_x"] =
        benchmark::Counter(secondsPerIteration * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate);
}

// One chip with all four channels sounding; args: the three tone periods' base.
void BM_ChipRenderTick(benchmark::State& state) {
    SoundChip chip;
    const int base = static_cast<int>(state.range(0));
    for (int c = 0; c < 3; ++c) {
        const int period = base + 37 * c;
        chip.Write(static_cast<uint8_t>(0x80 | (c << 5) | (period & 15)));
        chip.Write(static_cast<uint8_t>(period >> 4));
        chip.Write(static_cast<uint8_t>(0x90 | (c << 5) | (c + 1)));
    }
    chip.Write(0xE4);
    chip.Write(0xF2);
    std::vector<int16_t> out(chip.TickBytes() / 2);
    for (auto _ : state) {
        chip.BeginTick();
        chip.RenderTick(60, 0xFF);
        chip.Read(out.data(), chip.TickBytes());
        benchmark::DoNotOptimize(out.data());
    }
    ReportRealTime(state, 1.0 / 60.0);
}
BENCHMARK(BM_ChipRenderTick)->Arg(40)->Arg(254)->Arg(700);

// A busy module: notes on every line of all four channels, envelopes,
// vibrato and pitch variation, played by the song player through its chip
// and mixed with a sounding note player as the audio output does.
std::unique_ptr<Module> BusyModule() {
    auto module = std::make_unique<Module>();
    module->NewModule({});
    for (int i = 0; i < 4; ++i) {
        Instrument& inst = module->instruments[i];
        inst.startVolume = 255;
        inst.delay = {3, 6, 12, 24};
        inst.volumeAdd = {-4, -2, -1, 0, -1};
        inst.vibratoSpeed = {0, 1, 2, 3, 1};
        inst.vibratoStrength = {2, 4, 6, 8, 3};
    }
    Pattern& pattern = module->patterns[0];
    for (int l = 0; l < pattern.length; ++l) {
        PatternLine& line = pattern.lines[l];
        for (int c = 0; c < 3; ++c) {
            line.note[c] = static_cast<uint8_t>(48 + (l * 7 + c * 5) % 60);
            line.instrument[c] = static_cast<uint8_t>(c);
            line.volume[c] = static_cast<uint8_t>(15 - c);
        }
        line.note[3] = static_cast<uint8_t>(kFirstNoiseNote + l % 8);
        line.volume[3] = 12;
        if (l % 4 == 0) {
            line.channelCommand[0] = kChannelCommandPV;
            line.channelParam[0] = static_cast<uint8_t>(l % 3);
        }
    }
    pattern.lines[0].command = kCommandST;
    pattern.lines[0].commandParam = 0xF7;
    module->initialSpeed = 16;
    return module;
}

void BM_SongPlayerBusyModule(benchmark::State& state) {
    auto module = BusyModule();
    auto song = std::make_unique<SongPlayer>();
    auto notes = std::make_unique<NotePlayer>();
    song->Attach(*module);
    notes->Init(module->Settings());
    notes->StartVoice(0, module->instruments[1], 15, 64, 0, kPlayForever);
    song->Start(0, 0, false);
    TickMixer mixer(*song, *notes);
    std::vector<int16_t> out(735 * 2);
    for (auto _ : state) {
        const uint32_t bytes = mixer.RenderTick(60);
        mixer.Take(out.data(), bytes);
        benchmark::DoNotOptimize(out.data());
    }
    ReportRealTime(state, 1.0 / 60.0);
}
BENCHMARK(BM_SongPlayerBusyModule);

}  // namespace
}  // namespace sondrel
