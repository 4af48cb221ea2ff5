#include "screens/envelope_picture.h"

#include <gtest/gtest.h>

#include <memory>

namespace sondrel {
namespace {

constexpr uint32_t kBarTop = 0xFF8FD0C4;  // the colour of each column's loudest level
constexpr uint32_t kWrapBand = 0xFF234A4C;  // between a column's quietest and loudest level

// The level whose bar top is drawn in column x of a surface 16 pixels high
// (a level a pixel), 0 for a column without a bar.
int LevelAt(Gorb_Surface& surface, int x) {
    const auto top = static_cast<uint16_t>(surface.FindPixel(kBarTop));
    const Gorb_Pixels pixels = surface.Lock();
    int level = 0;
    for (int y = 0; y < surface.Height() && level == 0; ++y)
        if (pixels.Row(y)[x] == top) level = surface.Height() - y;
    surface.Unlock();
    return level;
}

TEST(EnvelopePictureTest, ColumnsShowTheLevelsTheVoicePlaysWithWrapsInsideAColumn) {
    // Four phases of 4 ticks (steady, falling a step a tick, steady, rising),
    // then a last phase whose +1.00 a tick wraps the level from 15 to 0:
    // 16 + 8 ticks, a column each.
    Instrument instrument;
    instrument.delay = {4, 4, 4, 4};
    instrument.volumeAdd = {0, -16, 0, 16, 16};
    ASSERT_EQ(EnvelopePictureTicks(instrument), 24);
    const auto surface = Gorb_CreateSurface(24, 16);
    DrawEnvelopePicture(*surface, {0, 0, 24, 16}, instrument);
    const int expected[24] = {15, 15, 15, 15, 15, 14, 13, 12, 11, 11, 11, 11,
                              11, 12, 13, 14, 15, 0,  1,  2,  3,  4,  5,  6};
    for (int x = 0; x < 24; ++x) {
        if (x % 4 == 0) continue;  // the phase lines stand there
        EXPECT_EQ(LevelAt(*surface, x), expected[x]) << "tick " << x;
    }

    // A delay of 0 lasts 256 ticks; squeezed into 20 columns each one holds
    // the wrapping levels from 0 to 15, drawn as a band up to a top at 15.
    instrument.delay = {0, 1, 1, 1};
    instrument.volumeAdd = {16, 0, 0, 0, 0};
    const auto narrow = Gorb_CreateSurface(20, 16);
    DrawEnvelopePicture(*narrow, {0, 0, 20, 16}, instrument);
    EXPECT_EQ(LevelAt(*narrow, 5), 15);
    const Gorb_Pixels pixels = narrow->Lock();
    EXPECT_EQ(pixels.Row(15)[5], static_cast<uint16_t>(narrow->FindPixel(kWrapBand)));
    narrow->Unlock();
}

}  // namespace
}  // namespace sondrel
