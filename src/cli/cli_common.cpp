#include "cli/cli_common.h"

#include "files/module_file.h"
#include "model/exception.h"

namespace sondrel::cli {

std::vector<Command>& Commands() {
    static std::vector<Command> commands;
    return commands;
}

const std::vector<std::string> kImportOptions = {"--chip", "--divider"};
const char* const kImportHelp =
    "  --chip ntsc|pal     chip type for imported files (default: VGM from its header,\n"
    "                      MOD pal, MIDI and BASIC ntsc)\n"
    "  --divider 1x|2x     frequency divider for imported files (default 1x)\n";

std::vector<std::string> WithImportOptions(std::vector<std::string> options) {
    options.insert(options.end(), kImportOptions.begin(), kImportOptions.end());
    return options;
}

FlagImportOptions::FlagImportOptions(const Arguments& args) {
    if (auto chip = args.Value("--chip")) {
        if (*chip == "ntsc" || *chip == "NTSC") chipType_ = kChipNtsc;
        else if (*chip == "pal" || *chip == "PAL") chipType_ = kChipPal;
        else throw UsageError("--chip must be ntsc or pal, not \"" + *chip + "\"");
    }
    if (auto divider = args.Value("--divider")) {
        if (*divider == "1x" || *divider == "1") divider_ = kDivider1x;
        else if (*divider == "2x" || *divider == "2") divider_ = kDivider2x;
        else throw UsageError("--divider must be 1x or 2x, not \"" + *divider + "\"");
    }
}

ChipSettings FlagImportOptions::Chip(ChipSettings proposed) const {
    if (chipType_) proposed.chipType = *chipType_;
    if (divider_) proposed.frequencyDivider = *divider_;
    return proposed;
}

std::optional<ModImportOptions> FlagImportOptions::ChooseModOptions(const ModImportOptions& proposal) {
    ModImportOptions chosen = proposal;
    chosen.chip = Chip(proposal.chip);
    return chosen;
}

std::optional<VgmImportOptions> FlagImportOptions::ChooseVgmOptions(const VgmImportOptions& proposal) {
    VgmImportOptions chosen = proposal;
    chosen.chip = Chip(proposal.chip);
    return chosen;
}

std::optional<MidiImportOptions> FlagImportOptions::ChooseMidiOptions(const MidiImportOptions& proposal) {
    MidiImportOptions chosen = proposal;
    chosen.chip = Chip(proposal.chip);
    return chosen;
}

std::optional<BasicImportOptions> FlagImportOptions::ChooseBasicOptions(const BasicImportOptions& proposal) {
    BasicImportOptions chosen = proposal;
    chosen.chip = Chip(proposal.chip);
    return chosen;
}

std::unique_ptr<Module> LoadOrFail(const std::string& path, ImportOptionsProvider& options) {
    auto module = std::make_unique<Module>();
    module->NewModule({});
    try {
        if (!LoadAnyFile(*module, path, options)) throw Failure{kCouldNotLoadModule, "the import was cancelled"};
    } catch (const Exception& e) {
        throw Failure{kCouldNotLoadModule, e.what()};
    }
    return module;
}

}  // namespace sondrel::cli
