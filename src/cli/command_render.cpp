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

// "1,3" as a channel mask (bits 1 and 3).
uint8_t ChannelList(const std::string& text, const std::string& option) {
    uint8_t mask = 0;
    size_t start = 0;
    for (;;) {
        const size_t comma = text.find(',', start);
        const std::string part = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        if (part.empty()) throw UsageError(option + " takes channels 0-3 separated by commas, such as 1,3");
        mask = static_cast<uint8_t>(mask | 1 << ParseWholeNumber(part, 0, 3, option));
        if (comma == std::string::npos) return mask;
        start = comma + 1;
    }
}

uint8_t ChannelMask(const Arguments& args) {
    if (args.Has("--mute") && args.Has("--solo"))
        throw UsageError("--mute and --solo can't be used together: --solo silences the channels it leaves out");
    if (args.Has("--solo")) return ChannelList(*args.Value("--solo"), "--solo");
    if (args.Has("--mute")) return static_cast<uint8_t>(0x0F & ~ChannelList(*args.Value("--mute"), "--mute"));
    return 0x0F;
}

int Render(const std::vector<std::string>& argv) {
    Arguments args(argv, WithImportOptions({"--loops", "--seconds", "--volume", "--mute", "--solo"}), {"--stems"});
    if (args.Positional().size() != 2) throw UsageError("render takes a file and an output WAV file");
    SongRenderOptions options;
    options.seconds = args.Double("--seconds", 0.0, 0.0, 24.0 * 3600.0);
    // A time limit alone lets the song loop until the time is up.
    const int defaultLoops = args.Has("--seconds") ? 0 : 1;
    options.loops = args.Int("--loops", defaultLoops, args.Has("--seconds") ? 0 : 1, 10000);
    options.volume = args.Int("--volume", 50, 0, 100);
    options.channelMask = ChannelMask(args);
    options.stems = args.Has("--stems");
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
    const std::string& out = args.Positional()[1];
    const std::string written =
        options.stems ? out + " and its stems " + StemPath(out, 0) + " to " + StemPath(out, 3) : out;
    std::printf("Wrote %s: %s, %d loop%s\n", written.c_str(), FormatSongTime(result.seconds).c_str(), result.wraps,
                result.wraps == 1 ? "" : "s");
    return kExitOk;
}

const CommandRegistration kRender(
    {"render", "play a song into a 44100 Hz 16-bit stereo WAV file",
     "usage: sondrel-cli render FILE OUT.wav [--loops N] [--seconds S] [--volume 0-100]\n"
     "                          [--mute C,C | --solo C,C] [--stems]\n"
     "Plays FILE from its start until the song has wrapped N times (default 1)\n"
     "or S seconds have passed, whichever comes first; with --seconds alone the\n"
     "song loops until the time is up. --volume is the output volume (default 50).\n"
     "--mute silences the chip channels listed (0-2 tone, 3 noise), --solo lets\n"
     "only those sound; not both. --stems also writes each channel on its own\n"
     "beside OUT.wav: OUT-ch0.wav to OUT-ch3.wav, which add up to the mix; the\n"
     "five files are written all together or, on a failure, none of them.\n",
     Render, 20});

}  // namespace
}  // namespace sondrel::cli
