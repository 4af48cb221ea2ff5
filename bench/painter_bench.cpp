// One frame of a busy screen through the painter: about 60 widgets' worth of
// panels, skinned buttons with captions, labels, selection overlays and
// marker frames on the 800 x 600 screen surface. "fps" is frames per second
// of CPU time.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/gorb.h"
#include "ui/painter.h"

namespace sondrel {
namespace {

constexpr char kSystemFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr uint32_t kKey = 0xFF00FF;

// A 12 x 12 rounded button face with transparent corners and 3-pixel borders.
std::unique_ptr<Gorb_Texture> ButtonTexture() {
    auto surface = Gorb_CreateSurface(12, 12);
    Gorb_Pixels pixels = surface->Lock();
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 12; ++x) {
            const bool corner = (x == 0 || x == 11) && (y == 0 || y == 11);
            const bool edge = x < 2 || y < 2 || x > 9 || y > 9;
            pixels.Row(y)[x] = Rgb565(corner ? kKey : edge ? 0x8090A0 : 0x405060 + y * 0x040404);
        }
    }
    surface->Unlock();
    surface->Convert(kGorbFormatRgb565, kGorbConvertColourKey, kKey);
    return Gorb_CreateTexture(*surface);
}

void PaintFrame(Painter& painter, const Gorb_Texture& button, const Gorb_Font* font) {
    const StretchSource face{{0, 0, 12, 12}, 3, 3, 3, 3};
    painter.Fill({0, 0, kScreenWidth, kScreenHeight}, 0x202830);
    for (int i = 0; i < 12; ++i) {  // panels
        const Gorb_Rect panel{(i % 4) * 200 + 4, (i / 4) * 150 + 4, 192, 142};
        painter.Fill(panel, 0x303848);
        painter.Bevel(panel, 0x607080, 0x101418);
    }
    for (int i = 0; i < 16; ++i) {  // buttons with captions
        Painter::Scope scope(painter, {(i % 8) * 100 + 8, (i / 8) * 150 + 110, 90, 24});
        painter.DrawStretched(button, face, {0, 0, 90, 24});
        if (font) painter.TextIn(*font, {0, 0, 90, 24}, "Button", 0xFFFFFF, TextAlign::Centre);
    }
    for (int i = 0; i < 12; ++i) {  // labels, half of them too long for their place
        const Gorb_Rect place{(i % 4) * 200 + 10, (i / 4) * 150 + 12, 120, 18};
        if (font)
            painter.TextIn(*font, place, i % 2 ? "Channel 1 volume envelope" : "Tone", 0xE0E0E0, TextAlign::Left,
                           TextFit::Ellipsis);
    }
    for (int i = 0; i < 8; ++i) {  // selection overlays and their marker frames
        const Gorb_Rect selection{(i % 4) * 200 + 10, (i / 4) * 150 + 40, 180, 60};
        painter.FillAlpha(selection, 0x604080FF);
        painter.Marker(selection, 0xFFFF00, i % 2 ? MarkerStyle::Dotted : MarkerStyle::Solid);
    }
    for (int i = 0; i < 4; ++i) {  // sunken fields
        const Gorb_Rect field{i * 200 + 10, 460, 180, 20};
        painter.Bevel(field, 0x607080, 0x101418, BevelStyle::Sunken);
        if (font) painter.TextIn(*font, field, "C-4 0F 00", 0xA0FFA0, TextAlign::Right);
    }
}

void BM_PaintFrame(benchmark::State& state) {
    auto screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
    const auto button = ButtonTexture();
    std::unique_ptr<Gorb_Font> font;
    if (std::filesystem::exists(kSystemFont)) font = Gorb_CreateFont(kSystemFont, 13);
    Painter painter(*screen);
    for (auto _ : state) {
        PaintFrame(painter, *button, font.get());
        benchmark::DoNotOptimize(screen->Lock().pixels);
        screen->Unlock();
    }
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    if (!font) state.SetLabel("no system font: text left out");
    if (const char* picture = std::getenv("SONDREL_BENCH_PICTURE")) screen->SavePng(picture);
}
BENCHMARK(BM_PaintFrame)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace sondrel
