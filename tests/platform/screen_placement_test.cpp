#include "platform/screen_placement.h"

#include <gtest/gtest.h>

#include <optional>

namespace sondrel {
namespace {

TEST(ScreenPlacement, LargestScaleThatFitsAnArea) {
    EXPECT_EQ(LargestScaleWithin(800, 600, 1024, 768), 1);
    EXPECT_EQ(LargestScaleWithin(800, 600, 1920, 1040), 1);  // a full-HD desktop less its panel: 1200 too tall
    EXPECT_EQ(LargestScaleWithin(800, 600, 1600, 1200), 2);
    EXPECT_EQ(LargestScaleWithin(800, 600, 2560, 1400), 2);
    EXPECT_EQ(LargestScaleWithin(800, 600, 3840, 2100), 3);
    EXPECT_EQ(LargestScaleWithin(800, 600, 7680, 4320), 4);  // never more than 4
    EXPECT_EQ(LargestScaleWithin(800, 600, 640, 480), 1);    // never less than 1
    EXPECT_EQ(LargestScaleWithin(800, 600, 7680, 4320, 2), 2);
}

TEST(ScreenPlacement, APixelOfTheWindowAtThreeTimesGoesBackToItsScreenPixel) {
    const ScreenPlacement placement = PlaceScreen(800, 600, 2400, 1800, 3);
    EXPECT_EQ(placement, (ScreenPlacement{800, 600, 3, 0, 0}));
    // All nine window pixels of a screen pixel, and its neighbours.
    for (int dy = 0; dy < 3; ++dy) {
        for (int dx = 0; dx < 3; ++dx) {
            EXPECT_EQ(ScreenPixelAt(placement, 3 * 123 + dx, 3 * 45 + dy), (ScreenPoint{123, 45}));
        }
    }
    EXPECT_EQ(ScreenPixelAt(placement, 3 * 123 - 1, 3 * 45), (ScreenPoint{122, 45}));
    EXPECT_EQ(ScreenPixelAt(placement, 3 * 123 + 3, 3 * 45 + 3), (ScreenPoint{124, 46}));
    EXPECT_EQ(ScreenPixelAt(placement, 0, 0), (ScreenPoint{0, 0}));
    EXPECT_EQ(ScreenPixelAt(placement, 2399, 1799), (ScreenPoint{799, 599}));
    EXPECT_EQ(ScreenPixelAt(placement, 2400, 1799), std::nullopt);
    EXPECT_EQ(ScreenPixelAt(placement, -1, 0), std::nullopt);
}

TEST(ScreenPlacement, TheWholeDisplayCentresTheScreenBetweenBordersThatTakeNoClicks) {
    // 2560 x 1440 takes the screen twice over (1600 x 1200): 480 and 120 pixels of border.
    const ScreenPlacement placement = PlaceScreen(800, 600, 2560, 1440, 4);
    EXPECT_EQ(placement, (ScreenPlacement{800, 600, 2, 480, 120}));
    EXPECT_EQ(ScreenPixelAt(placement, 480, 120), (ScreenPoint{0, 0}));
    EXPECT_EQ(ScreenPixelAt(placement, 481, 121), (ScreenPoint{0, 0}));
    EXPECT_EQ(ScreenPixelAt(placement, 480 + 2 * 400 + 1, 120 + 2 * 300), (ScreenPoint{400, 300}));
    EXPECT_EQ(ScreenPixelAt(placement, 2079, 1319), (ScreenPoint{799, 599}));
    for (const auto& [x, y] : {std::pair(479, 500), std::pair(1000, 119), std::pair(2080, 500), std::pair(1000, 1320),
                               std::pair(0, 0), std::pair(2559, 1439)})
        EXPECT_EQ(ScreenPixelAt(placement, x, y), std::nullopt) << x << "," << y;
    // A drag over the borders stays on the screen's nearest edge.
    EXPECT_EQ(NearestScreenPixel(placement, 478, 119), (ScreenPoint{0, 0}));
    EXPECT_EQ(NearestScreenPixel(placement, 2500, 700), (ScreenPoint{799, 290}));

    // At 3x on an uneven display, with odd borders.
    const ScreenPlacement three = PlaceScreen(800, 600, 2405, 1803, 4);
    EXPECT_EQ(three, (ScreenPlacement{800, 600, 3, 2, 1}));
    EXPECT_EQ(ScreenPixelAt(three, 1, 1), std::nullopt);
    EXPECT_EQ(ScreenPixelAt(three, 2, 1), (ScreenPoint{0, 0}));
    EXPECT_EQ(ScreenPixelAt(three, 2 + 3 * 799 + 2, 1 + 3 * 599 + 2), (ScreenPoint{799, 599}));
    EXPECT_EQ(ScreenPixelAt(three, 2 + 3 * 800, 1), std::nullopt);
}

TEST(ScreenPlacement, AWindowTooSmallShowsTheMiddleOfTheScreenUnscaled) {
    const ScreenPlacement placement = PlaceScreen(800, 600, 700, 600, 2);
    EXPECT_EQ(placement, (ScreenPlacement{800, 600, 1, -50, 0}));
    EXPECT_EQ(ScreenPixelAt(placement, 0, 0), (ScreenPoint{50, 0}));
    EXPECT_EQ(ScreenPixelAt(placement, 699, 599), (ScreenPoint{749, 599}));
}

}  // namespace
}  // namespace sondrel
