// Presenting a frame into the window at 1x and at 3x, on SDL's dummy video
// driver (the window's pixels in memory, nothing sent to a display): the
// cost of enlarging the picture. Arguments: the scale, and the screen rows a
// frame changes: all 600 (the worst case: a scrolling pattern changes about
// two thirds of them) or 40 (a typed note: its grid line and the status).
// Time is per presented frame.

#include <SDL.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

#include "platform/gorb.h"
#include "platform/window_presenter.h"

namespace sondrel {
namespace {

void BM_PresentFrame(benchmark::State& state) {
    const int scale = static_cast<int>(state.range(0));
    const int rows = static_cast<int>(state.range(1));
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        state.SkipWithError("no video driver");
        return;
    }
    SDL_Window* window = SDL_CreateWindow("bench", 0, 0, kScreenWidth * scale, kScreenHeight * scale, 0);
    auto screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
    {
        WindowPresenter presenter(window, scale);
        uint16_t shade = 0;
        for (auto _ : state) {
            // A picture unlike the last one in every row.
            Gorb_Pixels pixels = screen->Lock();
            ++shade;
            for (int y = 0; y < rows; ++y) {
                uint16_t* row = pixels.Row(y);
                for (int x = 0; x < kScreenWidth; x += 8) row[x] = static_cast<uint16_t>(shade + x + y);
            }
            screen->Unlock();
            presenter.Present(*screen->Native());
        }
    }
    SDL_DestroyWindow(window);
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
}
BENCHMARK(BM_PresentFrame)->ArgsProduct({{1, 3}, {600, 40}})->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace sondrel
