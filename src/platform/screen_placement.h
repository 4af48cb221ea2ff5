#pragma once
// Where the screen sits in the window: every screen pixel is a square of
// scale x scale window pixels, and a window bigger than that shows the
// screen centred between black borders. The pointer maps back through the
// same placement, so that a click lands on the pixel drawn under it.

#include <optional>

namespace sondrel {

struct ScreenPoint {
    int x = 0;
    int y = 0;
    bool operator==(const ScreenPoint&) const = default;
};

struct ScreenPlacement {
    int screenWidth = 0;
    int screenHeight = 0;
    int scale = 1;
    int x = 0;  // the screen's top left corner in the window; negative when
    int y = 0;  // the window is too small for even the unscaled screen
    bool operator==(const ScreenPlacement&) const = default;
};

// The scales a window shows the screen at.
constexpr int kMinWindowScale = 1;
constexpr int kMaxWindowScale = 4;

// The largest scale, kMinWindowScale to maxScale, at which the whole screen
// fits into area pixels; kMinWindowScale when none does.
int LargestScaleWithin(int screenWidth, int screenHeight, int areaWidth, int areaHeight,
                       int maxScale = kMaxWindowScale);

// The screen at the largest scale up to maxScale that fits the window, centred.
ScreenPlacement PlaceScreen(int screenWidth, int screenHeight, int windowWidth, int windowHeight, int maxScale);

// The screen pixel under window pixel (x, y); none on the borders.
std::optional<ScreenPoint> ScreenPixelAt(const ScreenPlacement& placement, int x, int y);
// The same, but a pixel on the borders goes to the nearest screen pixel: a
// drag that leaves the screen goes on along its edge.
ScreenPoint NearestScreenPixel(const ScreenPlacement& placement, int x, int y);

}  // namespace sondrel
