// One frame of the main screen while the demo song plays: the player moves
// on a line, the pattern view follows it with every redraw bit set (all 32
// grid rows, the header, the lists, the settings and the play marker), and
// the toolkit updates and draws the menu bar and the main window with the
// shipped skin into an offscreen 800 x 600 screen. "fps" is frames per
// second of CPU time; SONDREL_BENCH_PICTURE=FILE.png saves the last frame.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "demo_song.h"
#include "edit/main_menu.h"
#include "move_input.h"
#include "platform/gorb.h"
#include "platform/program_dirs.h"
#include "screens/main_screen.h"
#include "screens/pattern_view/pattern_font.h"
#include "screens/pattern_view/pattern_view_drawer.h"
#include "sound/song_player.h"
#include "ui/menu_bar.h"
#include "ui/skin/skin_library.h"
#include "ui/toolkit.h"

namespace sondrel {
namespace {

// Ticks until the player reaches its next line, starting the song again when it has ended.
void NextLine(SongPlayer& song) {
    if (!song.Playing()) song.Start(0, 0, false);
    song.lineAdvanced = 0;
    for (int tick = 0; tick < 256 && !song.lineAdvanced; ++tick) song.Tick();
}

void BM_MainScreenFrame(benchmark::State& state) {
    const auto module = bench::LoadDemo();
    if (!module) {
        state.SkipWithError("the demo song is missing");
        return;
    }
    const auto data = DataDirectoryFor(ProgramDirectory());
    SkinLibrary skin(data / "skins");
    skin.LoadSkin("default.skin");
    const PatternFont font(data / PatternFont::kFileName);
    auto screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
    bench::MoveInput input;
    Toolkit toolkit(input, [] { return 0.0; });
    toolkit.Init(*screen, &skin);
    DropDownMenuBar menus(MainMenuTitles({}), kScreenWidth, toolkit.Style().font);
    toolkit.SetMenuBar(&menus);
    const PatternViewWidgets widgets = BuildMainScreen(toolkit, kScreenWidth, kScreenHeight, menus.BarHeight());

    SongPlayer song;
    song.Attach(*module);
    song.ReloadSettings();
    PatternView view(*module);
    PatternViewHooks hooks;
    hooks.setTitle = [](const std::string&) {};  // there is no program window to name
    hooks.playerSettings = [&song] { return PlayerSettingsShown{song.GetSpeed(), 0}; };
    PatternViewDrawer drawer(view, widgets, font, hooks);

    for (auto _ : state) {
        NextLine(song);
        view.RestoreFromPlayer(song);
        view.Invalidate(kRedrawAll);
        toolkit.Update();
        while (toolkit.PopEntry() != nullptr) {
        }
        drawer.Update();
        toolkit.Draw();
        benchmark::DoNotOptimize(screen->Lock().pixels);
        screen->Unlock();
    }
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    if (const char* picture = std::getenv("SONDREL_BENCH_PICTURE")) screen->SavePng(picture);
}
BENCHMARK(BM_MainScreenFrame)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace sondrel
