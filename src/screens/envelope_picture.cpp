#include "screens/envelope_picture.h"

#include <algorithm>
#include <vector>

#include "sound/sound_chip.h"
#include "sound/voice.h"
#include "ui/painter.h"

namespace sondrel {

namespace {

constexpr uint32_t kBackground = 0xFF101820;  // ARGB
constexpr uint32_t kGrid = 0xFF1E2A38;
constexpr uint32_t kQuietest = 0xFF2F6F68;
constexpr uint32_t kLoudest = 0xFF234A4C;
constexpr uint32_t kLevelTop = 0xFF8FD0C4;
constexpr uint32_t kPhaseLine = 0xFF8A7A40;

constexpr uint8_t kPictureNote = 60;  // a tone every tone channel plays
constexpr uint8_t kFullVolume = 15;
constexpr int kLevels = 15;
constexpr int kShortestTail = 8;  // ticks of the last phase shown at least

// A delay of 0 lasts 256 ticks: the counter runs down through the whole byte.
int PhaseTicks(uint8_t delay) { return delay == 0 ? 256 : delay; }

int TimedTicks(const Instrument& instrument) {
    int ticks = 0;
    for (uint8_t delay : instrument.delay) ticks += PhaseTicks(delay);
    return ticks;
}

}  // namespace

int EnvelopePictureTicks(const Instrument& instrument) {
    const int timed = TimedTicks(instrument);
    return timed + std::max(timed / 4, kShortestTail);
}

void DrawEnvelopePicture(Gorb_Surface& surface, const Gorb_Rect& where, const Instrument& instrument) {
    const Gorb_Rect area = Intersect(where, {0, 0, surface.Width(), surface.Height()});
    if (area.w <= 0 || area.h <= 0) return;
    const int bottom = area.y + area.h;
    const auto height = [&](int level) { return level * (area.h - 1) / kLevels; };

    surface.FillRect(area, surface.FindPixel(kBackground));
    const uint32_t grid = surface.FindPixel(kGrid);
    for (int level = 0; level <= kLevels; level += 5)
        surface.FillRect({area.x, bottom - 1 - height(level), area.w, 1}, grid);

    // The quietest and loudest level heard in each column.
    const int ticks = EnvelopePictureTicks(instrument);
    std::vector<int> quietest(static_cast<size_t>(area.w), kLevels);
    std::vector<int> loudest(static_cast<size_t>(area.w), 0);
    SoundChip chip;
    Voice voice;
    voice.Start(instrument, 0, kFullVolume, kPictureNote, 0, kPlayForever);
    for (int tick = 0; tick < ticks; ++tick) {
        voice.Update(chip, 0, 0);
        const int first = tick * area.w / ticks;
        const int end = std::max(first + 1, (tick + 1) * area.w / ticks);
        for (int column = first; column < end && column < area.w; ++column) {
            quietest[column] = std::min<int>(quietest[column], voice.outputVolume);
            loudest[column] = std::max<int>(loudest[column], voice.outputVolume);
        }
    }

    const uint32_t solid = surface.FindPixel(kQuietest);
    const uint32_t light = surface.FindPixel(kLoudest);
    const uint32_t top = surface.FindPixel(kLevelTop);
    for (int column = 0; column < area.w; ++column) {
        const int x = area.x + column;
        const int low = height(quietest[column]);
        const int high = height(loudest[column]);
        if (high == 0) continue;
        surface.FillRect({x, bottom - high, 1, high - low}, light);
        surface.FillRect({x, bottom - low, 1, low}, solid);
        surface.FillRect({x, bottom - high, 1, 1}, top);
    }

    // Dotted lines where phases 1 to 4 begin.
    const uint32_t phase = surface.FindPixel(kPhaseLine);
    int start = 0;
    for (uint8_t delay : instrument.delay) {
        start += PhaseTicks(delay);
        const int x = area.x + start * area.w / ticks;
        for (int y = area.y; y < bottom && x < area.x + area.w; y += 2) surface.FillRect({x, y, 1, 1}, phase);
    }
}

}  // namespace sondrel
