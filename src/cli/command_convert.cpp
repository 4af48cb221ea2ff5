// sondrel-cli convert: any loadable file saved as a module.

#include <cstdio>
#include <string>
#include <vector>

#include "cli/cli_common.h"
#include "files/module_file.h"
#include "model/exception.h"
#include "model/storable_text.h"

namespace sondrel::cli {
namespace {

int Convert(const std::vector<std::string>& argv) {
    Arguments args(argv, WithImportOptions({}), {});
    if (args.Positional().size() != 2) throw UsageError("convert takes a file and an output module file");
    FlagImportOptions imports(args);
    auto module = LoadOrFail(args.Positional()[0], imports);
    for (const TextChange& change : imports.TextChanges()) std::fprintf(stderr, "note: %s\n", Describe(change).c_str());
    try {
        SaveModule(*module, args.Positional()[1]);
    } catch (const Exception& e) {
        throw Failure{kCouldNotSaveModule, UserReason(e)};
    }
    std::printf("Saved %s\n", args.Positional()[1].c_str());
    return kExitOk;
}

const CommandRegistration kConvert({"convert", "load any loadable file and save it as a module",
                                    "usage: sondrel-cli convert FILE OUT.sdrltk [--chip ntsc|pal] [--divider 1x|2x] [--variant V]\n"
                                    "Texts a module file can't hold (over 255 characters, the digit 0) are\n"
                                    "changed on the way in; each change is noted on stderr.\n",
                                    Convert, 30});

}  // namespace
}  // namespace sondrel::cli
