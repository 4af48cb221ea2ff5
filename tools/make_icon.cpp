// make-icon: draws the program's icon, a square-wave glyph on a dark rounded
// tile, and writes it as an RGBA PNG. The results are committed below
// desktop/icons/, one folder per size as the desktop's icon theme lays them out.
//
// usage: make-icon SIZE OUT.png

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "png_writer.h"

namespace {

struct Colour {
    float r, g, b, a;
};

struct Point {
    float x, y;
};

// The picture is drawn on a 64-unit square and scaled to the output size.
constexpr float kUnits = 64.0f;
constexpr Colour kTileTop{0.165f, 0.212f, 0.294f, 1.0f};     // #2A364B
constexpr Colour kTileBottom{0.094f, 0.122f, 0.173f, 1.0f};  // #181F2C
constexpr Colour kTileEdge{0.290f, 0.353f, 0.459f, 1.0f};    // #4A5A75
constexpr Colour kWave{0.561f, 0.816f, 0.769f, 1.0f};        // #8FD0C4
constexpr Colour kBaseline{0.345f, 0.408f, 0.518f, 1.0f};    // #586884

// Signed distance to a rounded square centred in the picture: negative inside.
float RoundedTileDistance(Point p, float half, float radius) {
    const float qx = std::fabs(p.x - kUnits / 2) - (half - radius);
    const float qy = std::fabs(p.y - kUnits / 2) - (half - radius);
    const float outside = std::hypot(std::max(qx, 0.0f), std::max(qy, 0.0f));
    return outside + std::min(std::max(qx, qy), 0.0f) - radius;
}

float SegmentDistance(Point p, Point a, Point b) {
    const float dx = b.x - a.x, dy = b.y - a.y;
    const float length2 = dx * dx + dy * dy;
    float t = length2 > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / length2 : 0.0f;
    t = std::clamp(t, 0.0f, 1.0f);
    return std::hypot(p.x - (a.x + t * dx), p.y - (a.y + t * dy));
}

float PolylineDistance(Point p, const std::vector<Point>& line) {
    float best = 1e9f;
    for (size_t i = 1; i < line.size(); ++i) best = std::min(best, SegmentDistance(p, line[i - 1], line[i]));
    return best;
}

// Two and a half periods of a square wave across the tile, starting low.
std::vector<Point> SquareWave() {
    constexpr float kLeft = 13, kRight = 51, kHigh = 22, kLow = 40;
    constexpr int kHalfPeriods = 5;
    const float step = (kRight - kLeft) / kHalfPeriods;
    std::vector<Point> line{{kLeft, kLow}};
    float y = kLow;
    for (int i = 1; i <= kHalfPeriods; ++i) {
        const float x = kLeft + step * i;
        line.push_back({x, y});
        if (i < kHalfPeriods) {
            y = y == kLow ? kHigh : kLow;
            line.push_back({x, y});
        }
    }
    return line;
}

// Coverage of a shape from its signed distance, antialiased over one output pixel.
float Coverage(float distance, float pixel) { return std::clamp(0.5f - distance / pixel, 0.0f, 1.0f); }

Colour Mix(Colour below, Colour above, float amount) {
    const float a = above.a * amount;
    return {below.r + (above.r - below.r) * a, below.g + (above.g - below.g) * a,
            below.b + (above.b - below.b) * a, below.a + (1.0f - below.a) * a};
}

std::vector<uint8_t> Draw(int size) {
    const float pixel = kUnits / static_cast<float>(size);
    const std::vector<Point> wave = SquareWave();
    std::vector<uint8_t> rgba(static_cast<size_t>(size) * size * 4);
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            const Point p{(column + 0.5f) * pixel, (row + 0.5f) * pixel};
            const float tile = RoundedTileDistance(p, 29.0f, 11.0f);
            const float shade = std::clamp((p.y - 3.0f) / 58.0f, 0.0f, 1.0f);
            Colour colour{kTileTop.r + (kTileBottom.r - kTileTop.r) * shade,
                          kTileTop.g + (kTileBottom.g - kTileTop.g) * shade,
                          kTileTop.b + (kTileBottom.b - kTileTop.b) * shade, 1.0f};
            // A thin lighter rim just inside the tile's edge.
            colour = Mix(colour, kTileEdge, Coverage(std::fabs(tile + 0.75f) - 0.75f, pixel) * 0.8f);

            // The wave's middle line, faint, between the high and low levels.
            const float baseline = std::fabs(p.y - 31.0f) - 0.5f;
            if (p.x > 10.0f && p.x < 54.0f) colour = Mix(colour, kBaseline, Coverage(baseline, pixel) * 0.6f);

            // The wave, with a soft glow around it.
            const float distance = PolylineDistance(p, wave);
            const float glow = std::exp(-(distance * distance) / 18.0f) * 0.35f;
            colour = Mix(colour, kWave, glow);
            colour = Mix(colour, kWave, Coverage(distance - 2.25f, pixel));

            colour.a = Coverage(tile, pixel);
            uint8_t* out = &rgba[(static_cast<size_t>(row) * size + column) * 4];
            const std::array<float, 4> channels{colour.r, colour.g, colour.b, colour.a};
            for (int i = 0; i < 4; ++i)
                out[i] = static_cast<uint8_t>(std::lround(std::clamp(channels[i], 0.0f, 1.0f) * 255.0f));
        }
    }
    return rgba;
}

}  // namespace

int main(int argc, char** argv) {
    const int size = argc == 3 ? std::atoi(argv[1]) : 0;
    if (size < 16 || size > 1024) {
        std::fprintf(stderr, "usage: make-icon SIZE OUT.png   (SIZE from 16 to 1024)\n");
        return 2;
    }
    std::vector<uint8_t> png;
    if (!sondrel::tools::EncodePng(size, size, Draw(size), png)) {
        std::fprintf(stderr, "make-icon: couldn't compress the picture\n");
        return 1;
    }
    if (!sondrel::tools::WriteFileBytes(argv[2], png)) {
        std::fprintf(stderr, "make-icon: couldn't write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
