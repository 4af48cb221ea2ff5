#include "sound/song_time.h"

#include <cstdio>
#include <memory>

#include "sound/song_player.h"

namespace sondrel {

namespace {
// A song always wraps: even speed 255 plays every line of 256 full patterns
// in two million ticks. The limit only guards against a broken module.
constexpr uint64_t kTickLimit = 200'000'000;
}  // namespace

SongTime CalculateSongTime(Module& module, uint16_t targetLine, uint16_t targetListPosition) {
    auto player = std::make_unique<SongPlayer>();
    player->Attach(module);
    player->Start(0, 0, false);

    SongTime result;
    uint64_t ticks = 0;
    while (ticks < kTickLimit) {
        if (!result.targetReached && player->Line() == targetLine &&
            player->ListPosition() == targetListPosition) {
            result.targetReached = true;
            result.targetSeconds = static_cast<double>(ticks);
        }
        player->Tick();
        ++ticks;
        if (player->wrapped || !player->Playing()) break;
    }
    const double rate = module.IsPal() ? 50.0 : 60.0;
    result.totalTicks = ticks;
    result.totalSeconds = static_cast<double>(ticks) / rate;
    result.targetSeconds /= rate;
    return result;
}

std::string FormatSongTime(double seconds) {
    const int whole = static_cast<int>(seconds);
    char text[64];
    std::snprintf(text, sizeof text, "%.2f sec. (%d:%02d min.)", seconds, whole / 60, whole % 60);
    return text;
}

}  // namespace sondrel
