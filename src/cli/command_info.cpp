// sondrel-cli info: what the "Module information" dialog tells, on the terminal.

#include <cstdio>
#include <string>
#include <vector>

#include "cli/cli_common.h"
#include "files/module_file.h"
#include "model/exception.h"
#include "sound/song_time.h"

namespace sondrel::cli {
namespace {

std::string SpeedText(uint8_t speed) {
    return std::to_string(speed >> 3) + "." + std::to_string((speed & 7) * 9 / 7);
}

std::vector<std::string> WithImportOptions(std::vector<std::string> options) {
    options.insert(options.end(), kImportOptions.begin(), kImportOptions.end());
    return options;
}

int Info(const std::vector<std::string>& argv) {
    Arguments args(argv, WithImportOptions({}), {});
    if (args.Positional().size() != 1) throw UsageError("info takes one file");
    FlagImportOptions imports(args);
    auto module = LoadOrFail(args.Positional()[0], imports);

    int existing = 0;
    int unused = 0;
    for (int p = 0; p < kPatterns; ++p) {
        if (!module->patterns[p].used) continue;
        ++existing;
        if (module->CountInList(p) == 0) ++unused;
    }
    const SongTime time = CalculateSongTime(*module, 0, 0);
    auto row = [](const char* label, const std::string& value) {
        std::printf("%-28s%s\n", label, value.c_str());
    };
    row("Filename:", module->fileName);
    row("Directory:", module->directory);
    row("Title:", module->title);
    row("Author:", module->author);
    row("Type:", module->IsPal() ? "PAL (50Hz)" : "NTSC (60Hz)");
    row("Frequency divider:", module->frequencyDivider == kDivider2x ? "2x" : "1x");
    row("Chip:", kChipVariantNames[module->chipVariant % kChipVariants]);
    row("Initial speed:", SpeedText(module->initialSpeed));
    row("Song length:", std::to_string(module->patternListLength));
    row("Repeat position:", std::to_string(module->repeatPosition));
    row("Number of patterns:", std::to_string(existing));
    row("Number of unused patterns:", std::to_string(unused));
    row("Time:", FormatSongTime(time.totalSeconds));
    return kExitOk;
}

const CommandRegistration kInfo({"info", "show a module's title, chip, speed, patterns and song time",
                                 "usage: sondrel-cli info FILE [--chip ntsc|pal] [--divider 1x|2x] [--variant V]\n"
                                 "Loads FILE (a module or any importable file) and describes it.\n",
                                 Info, 10});

}  // namespace
}  // namespace sondrel::cli
