// sondrel-cli export-vgm: a song as a VGM log for the module's chip.

#include <cstdio>
#include <string>
#include <vector>

#include "cli/cli_common.h"
#include "files/export/export_command.h"
#include "files/export/vgm_export.h"
#include "model/exception.h"
#include "sound/song_time.h"

namespace sondrel::cli {
namespace {

int ExportVgmCommand(const std::vector<std::string>& argv) {
    Arguments args(argv, WithImportOptions({}), {"--loop"});
    if (args.Positional().size() != 2) throw UsageError("export-vgm takes a file and an output VGM file");
    FlagImportOptions imports(args);
    auto module = LoadOrFail(args.Positional()[0], imports);
    try {
        VgmExportOptions options;
        options.loop = args.Has("--loop");
        ExportVgm(*module, args.Positional()[1], options);
    } catch (const Exception& e) {
        throw Failure{kCouldNotWriteVgm, UserReason(e)};
    }
    const SongTime time = CalculateSongTime(*module, 0, 0);
    std::printf("Wrote %s: %s, %llu frames\n", args.Positional()[1].c_str(), FormatSongTime(time.totalSeconds).c_str(),
                static_cast<unsigned long long>(time.totalTicks));
    return kExitOk;
}

const CommandRegistration kExportVgm(
    {"export-vgm", "play a song once into a VGM log for the SN76489",
     "usage: sondrel-cli export-vgm FILE OUT.vgm [--loop]\n"
     "Plays FILE from its start until the pattern list runs out and writes the\n"
     "chip's register writes frame by frame, with a GD3 tag holding the title,\n"
     "author and notes. The log has no loop point unless --loop is given:\n"
     "  --loop   loop from the repeat position: players go back to the frame in\n"
     "           which it first starts to play, where the log writes the whole\n"
     "           chip state again.\n"
     "The header names the chip the module is written for (\"Chip:\" in its\n"
     "settings, --variant for imported files):\n"
     "  sega      Sega Master System / Game Gear: VGM 1.50, noise feedback 9,\n"
     "            16-bit register (the default)\n"
     "  gamegear  the same header, GD3 system \"Sega Game Gear\"; players pan the\n"
     "            noise with the stereo byte\n"
     "  ti        TI SN76489 of the BBC Micro, Tandy and SG-1000: VGM 1.51, noise\n"
     "            feedback 3, 15-bit register, flags: period 0 is 1024, no\n"
     "            stereo; GD3 system \"BBC Model B\"\n",
     ExportVgmCommand, 40});

}  // namespace
}  // namespace sondrel::cli
