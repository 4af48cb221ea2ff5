#include "cli/cli_common.h"

#include <algorithm>
#include <array>

#include "files/module_file.h"
#include "model/exception.h"

namespace sondrel::cli {

std::vector<Command>& Commands() {
    static std::vector<Command> commands;
    return commands;
}

const std::vector<std::string> kImportOptions = {"--as",      "--chip",    "--divider",        "--variant",
                                                "--channel", "--disable", "--lines-per-beat", "--instruments"};
const std::array<const char*, kChipVariants> kVariantWords = {"sega", "gamegear", "ti"};
const char* const kImportHelp =
    "  --as KIND           read FILE as module, mod, vgm, midi or basic, whatever its\n"
    "                      content or name says (for files detection does not know,\n"
    "                      such as FLT4 modules or listings named .bas)\n"
    "  --chip ntsc|pal     chip type for imported files (default: VGM from its header,\n"
    "                      MOD pal, MIDI and BASIC ntsc)\n"
    "  --divider 1x|2x     frequency divider for imported files (default 1x)\n"
    "  --variant sega|gamegear|ti\n"
    "                      the chip imported files are written for (default: VGM\n"
    "                      from its noise register, TI for a 15-bit one; others sega)\n"
    "MIDI files:\n"
    "  --channel M=C:I     MIDI channel M (1-16) plays on chip channel C (0-3) with\n"
    "                      instrument I (0-15); may be given for several channels\n"
    "  --disable M         leave MIDI channel M (1-16) out; may be repeated\n"
    "  --lines-per-beat N  quantise to N lines per quarter note (1-96), with the speed\n"
    "                      taken from the tempo, instead of one line per tick\n"
    "BASIC listings:\n"
    "  --instruments N,S,L,SOUND,BEEP,PAUSE\n"
    "                      instruments (0-15) for PLAY normal, staccato and legato,\n"
    "                      SOUND, BEEP and pauses (default 0,1,2,3,4,5)\n";


std::vector<std::string> WithImportOptions(std::vector<std::string> options) {
    options.insert(options.end(), kImportOptions.begin(), kImportOptions.end());
    return options;
}

FlagImportOptions::FlagImportOptions(const Arguments& args) {
    if (auto kind = args.Value("--as")) {
        if (*kind == "module") forcedKind_ = FileKind::CurrentModule;
        else if (*kind == "mod") forcedKind_ = FileKind::Mod;
        else if (*kind == "vgm") forcedKind_ = FileKind::Vgm;
        else if (*kind == "midi") forcedKind_ = FileKind::Midi;
        else if (*kind == "basic") forcedKind_ = FileKind::Basic;
        else throw UsageError("--as must be module, mod, vgm, midi or basic, not \"" + *kind + "\"");
    }
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
    if (auto variant = args.Value("--variant")) {
        const auto word = std::find(kVariantWords.begin(), kVariantWords.end(), *variant);
        if (word == kVariantWords.end())
            throw UsageError("--variant must be sega, gamegear or ti, not \"" + *variant + "\"");
        variant_ = static_cast<uint8_t>(word - kVariantWords.begin());
    }
    for (const std::string& route : args.Values("--channel")) {
        const auto eq = route.find('=');
        const auto colon = route.find(':', eq == std::string::npos ? 0 : eq);
        if (eq == std::string::npos || colon == std::string::npos)
            throw UsageError("--channel takes MIDICH=CHIP:INSTRUMENT, not \"" + route + "\"");
        MidiChannelChoice choice;
        choice.enable = true;
        const int midi = ParseWholeNumber(route.substr(0, eq), 1, 16, "--channel");
        choice.chipChannel = static_cast<uint8_t>(ParseWholeNumber(route.substr(eq + 1, colon - eq - 1), 0, 3, "--channel"));
        choice.instrument = static_cast<uint8_t>(ParseWholeNumber(route.substr(colon + 1), 0, 15, "--channel"));
        midiChannels_.emplace_back(midi, choice);
    }
    for (const std::string& channel : args.Values("--disable")) midiDisabled_.push_back(ParseWholeNumber(channel, 1, 16, "--disable"));
    if (auto lines = args.Value("--lines-per-beat")) linesPerBeat_ = ParseWholeNumber(*lines, 1, 96, "--lines-per-beat");
    if (auto list = args.Value("--instruments")) {
        std::array<uint8_t, 6> slots{};
        size_t start = 0;
        for (int i = 0; i < 6; ++i) {
            const size_t comma = list->find(',', start);
            if ((comma == std::string::npos) != (i == 5))
                throw UsageError("--instruments takes six numbers separated by commas, not \"" + *list + "\"");
            slots[i] = static_cast<uint8_t>(ParseWholeNumber(list->substr(start, comma - start), 0, 15, "--instruments"));
            start = comma + 1;
        }
        basicInstruments_ = slots;
    }
}

ChipSettings FlagImportOptions::Chip(ChipSettings proposed) const {
    if (chipType_) proposed.chipType = *chipType_;
    if (divider_) proposed.frequencyDivider = *divider_;
    if (variant_) proposed.variant = *variant_;
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
    for (const auto& [midi, choice] : midiChannels_) {
        MidiChannelChoice& slot = chosen.channels[midi - 1];
        slot.enable = true;
        slot.chipChannel = choice.chipChannel;
        slot.instrument = choice.instrument;
    }
    for (int midi : midiDisabled_) chosen.channels[midi - 1].enable = false;
    if (linesPerBeat_) chosen.linesPerBeat = *linesPerBeat_;
    return chosen;
}

std::optional<BasicImportOptions> FlagImportOptions::ChooseBasicOptions(const BasicImportOptions& proposal) {
    BasicImportOptions chosen = proposal;
    chosen.chip = Chip(proposal.chip);
    if (basicInstruments_) chosen.instruments = *basicInstruments_;
    return chosen;
}

namespace {

std::unique_ptr<Module> Load(const std::string& path, ImportOptionsProvider& options, FileKind kind) {
    std::unique_ptr<Module> module;
    try {
        module = LoadNewModule(path, options, kind);
    } catch (const Exception& e) {
        throw Failure{kCouldNotLoadModule, UserReason(e)};
    }
    if (!module) throw Failure{kCouldNotLoadModule, "the import was cancelled"};
    return module;
}

}  // namespace

std::unique_ptr<Module> LoadOrFail(const std::string& path, ImportOptionsProvider& options) {
    return Load(path, options, FileKind::Unknown);
}

std::unique_ptr<Module> LoadOrFail(const std::string& path, FlagImportOptions& options) {
    return Load(path, options, options.ForcedKind());
}

}  // namespace sondrel::cli
