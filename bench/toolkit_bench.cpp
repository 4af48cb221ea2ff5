// One frame of the widget toolkit on a full screen: the widget gallery (about
// 60 widgets of every kind, drawn with the shipped skin) under a menu bar with
// a menu open. Each iteration runs one Update with two pointer moves over the
// menu and the widgets, then one Draw. "fps" is frames per second of CPU time.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

#include "move_input.h"
#include "platform/gorb.h"
#include "platform/program_dirs.h"
#include "ui/skin/skin_library.h"
#include "ui/toolkit.h"
#include "ui/widget_gallery.h"

namespace sondrel {
namespace {

void BM_ToolkitFrame(benchmark::State& state) {
    SkinLibrary skin(DataDirectoryFor(ProgramDirectory()) / "skins");
    skin.LoadSkin("default.skin");
    auto screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
    bench::MoveInput input;
    Toolkit toolkit(input, [] { return 0.0; });
    GalleryScreen gallery(toolkit, *screen, skin);
    gallery.OpenShowcaseMenu(false);
    const Gorb_Rect entry = gallery.Menus().EntryRect(0, 0);

    int frame = 0;
    for (auto _ : state) {
        // Along the open menu's first entry, then across the list and the buttons.
        input.Move(entry.x + 4 + frame % 32, entry.y + entry.h / 2);
        input.Move(300 + frame % 400, 200 + frame % 300);
        toolkit.Update();
        while (toolkit.PopEntry() != nullptr) {
        }
        toolkit.Draw();
        benchmark::DoNotOptimize(screen->Lock().pixels);
        screen->Unlock();
        ++frame;
    }
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["widgets"] = static_cast<double>(gallery.GalleryWindow().Widgets().size());
    if (const char* picture = std::getenv("SONDREL_BENCH_PICTURE")) screen->SavePng(picture);
}
BENCHMARK(BM_ToolkitFrame)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace sondrel
