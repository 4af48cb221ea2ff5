// sondrel-cli render: a song into a WAV file.

#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "cli/cli_common.h"
#include "files/export/export_command.h"
#include "files/export/song_render.h"
#include "model/exception.h"
#include "sound/song_time.h"

namespace sondrel::cli {
namespace {

void DrawProgress(double fraction) {
    const int width = 40;
    const int filled = static_cast<int>(fraction * width + 0.5);
    std::fprintf(stderr, "\rRendering [%s%s] %3d%%", std::string(filled, '#').c_str(),
                 std::string(width - filled, '.').c_str(), static_cast<int>(fraction * 100 + 0.5));
    if (fraction >= 1.0) std::fputc('\n', stderr);
    std::fflush(stderr);
}

int Render(const std::vector<std::string>& argv) {
    Arguments args(argv, WithImportOptions({"--loops", "--seconds", "--volume"}), {});
    if (args.Positional().size() != 2) throw UsageError("render takes a file and an output WAV file");
    SongRenderOptions options;
    options.seconds = args.Double("--seconds", 0.0, 0.0, 24.0 * 3600.0);
    // A time limit alone lets the song loop until the time is up.
    const int defaultLoops = args.Has("--seconds") ? 0 : 1;
    options.loops = args.Int("--loops", defaultLoops, args.Has("--seconds") ? 0 : 1, 10000);
    options.volume = args.Int("--volume", 50, 0, 100);
    if (options.loops == 0 && options.seconds <= 0.0)
        throw UsageError("--seconds must be above 0 when --loops is 0");
    FlagImportOptions imports(args);
    auto module = LoadOrFail(args.Positional()[0], imports);

    RenderProgress progress;
    if (isatty(STDERR_FILENO)) progress = DrawProgress;
    SongRenderResult result;
    try {
        result = RenderSongToWav(*module, args.Positional()[1], options, progress);
    } catch (const Exception& e) {
        throw Failure{kCouldNotWriteWav, UserReason(e)};
    }
    std::printf("Wrote %s: %s, %d loop%s\n", args.Positional()[1].c_str(), FormatSongTime(result.seconds).c_str(),
                result.wraps, result.wraps == 1 ? "" : "s");
    return kExitOk;
}

const CommandRegistration kRender(
    {"render", "play a song into a 44100 Hz 16-bit stereo WAV file",
     "usage: sondrel-cli render FILE OUT.wav [--loops N] [--seconds S] [--volume 0-100]\n"
     "Plays FILE from its start until the song has wrapped N times (default 1)\n"
     "or S seconds have passed, whichever comes first; with --seconds alone the\n"
     "song loops until the time is up. --volume is the output volume (default 50).\n",
     Render, 20});

}  // namespace
}  // namespace sondrel::cli
