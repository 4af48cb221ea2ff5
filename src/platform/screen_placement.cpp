#include "platform/screen_placement.h"

#include <algorithm>

namespace sondrel {

namespace {

// Division rounding towards minus infinity: a pixel left of the screen by
// less than a scale is still outside it.
int FloorDivide(int value, int divisor) { return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor); }

ScreenPoint Unplaced(const ScreenPlacement& placement, int x, int y) {
    return {FloorDivide(x - placement.x, placement.scale), FloorDivide(y - placement.y, placement.scale)};
}

}  // namespace

int LargestScaleWithin(int screenWidth, int screenHeight, int areaWidth, int areaHeight, int maxScale) {
    int scale = std::max(kMinWindowScale, maxScale);
    while (scale > kMinWindowScale && (screenWidth * scale > areaWidth || screenHeight * scale > areaHeight)) --scale;
    return scale;
}

ScreenPlacement PlaceScreen(int screenWidth, int screenHeight, int windowWidth, int windowHeight, int maxScale) {
    const int scale = LargestScaleWithin(screenWidth, screenHeight, windowWidth, windowHeight, maxScale);
    return {screenWidth, screenHeight, scale, (windowWidth - screenWidth * scale) / 2,
            (windowHeight - screenHeight * scale) / 2};
}

std::optional<ScreenPoint> ScreenPixelAt(const ScreenPlacement& placement, int x, int y) {
    const ScreenPoint point = Unplaced(placement, x, y);
    if (point.x < 0 || point.y < 0 || point.x >= placement.screenWidth || point.y >= placement.screenHeight)
        return std::nullopt;
    return point;
}

ScreenPoint NearestScreenPixel(const ScreenPlacement& placement, int x, int y) {
    const ScreenPoint point = Unplaced(placement, x, y);
    return {std::clamp(point.x, 0, std::max(0, placement.screenWidth - 1)),
            std::clamp(point.y, 0, std::max(0, placement.screenHeight - 1))};
}

}  // namespace sondrel
