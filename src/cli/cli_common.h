#pragma once
// What the headless tool's subcommands share: how they register, report
// failures, load files and take the importers' options from flags.

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/cli_options.h"
#include "files/import/importers.h"
#include "files/module_file.h"
#include "model/module.h"
#include "model/storable_text.h"

namespace sondrel::cli {

constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

// A failure the user is told about: the system's message, then why. Exit code 1.
struct Failure {
    std::string message;
    std::string reason;
};

struct Command {
    std::string name;
    std::string summary;
    std::string usage;  // shown by --help and after a usage error
    std::function<int(const std::vector<std::string>&)> run;
    int order = 100;    // place in the overview
};

// Each command file registers its commands with a static CommandRegistration.
std::vector<Command>& Commands();
struct CommandRegistration {
    explicit CommandRegistration(Command command) { Commands().push_back(std::move(command)); }
};

// The options every command that loads a file accepts, and their help lines.
extern const std::vector<std::string> kImportOptions;
extern const char* const kImportHelp;
std::vector<std::string> WithImportOptions(std::vector<std::string> options);

// Importers ask the caller for their options; here they come from the flags.
// Chip flags override what the importer proposes; without them its defaults stand.
class FlagImportOptions : public ImportOptionsProvider {
public:
    explicit FlagImportOptions(const Arguments& args);
    std::optional<ModImportOptions> ChooseModOptions(const ModImportOptions& proposal) override;
    std::optional<VgmImportOptions> ChooseVgmOptions(const VgmImportOptions& proposal) override;
    std::optional<MidiImportOptions> ChooseMidiOptions(const MidiImportOptions& proposal) override;
    std::optional<BasicImportOptions> ChooseBasicOptions(const BasicImportOptions& proposal) override;
    void TextsChanged(const std::vector<TextChange>& changes) override { textChanges_ = changes; }

    // What the last import changed in the texts so that the module file holds them.
    const std::vector<TextChange>& TextChanges() const { return textChanges_; }

    // The kind named by --as, or Unknown to let the file's content decide.
    FileKind ForcedKind() const { return forcedKind_; }

protected:
    ChipSettings Chip(ChipSettings proposed) const;

    FileKind forcedKind_ = FileKind::Unknown;

    std::optional<uint8_t> chipType_;
    std::optional<uint8_t> divider_;
    std::optional<uint8_t> variant_;
    // MIDI: channel 1..16 -> (chip channel, instrument); channels switched off; quantisation.
    std::vector<std::pair<int, MidiChannelChoice>> midiChannels_;
    std::vector<int> midiDisabled_;
    std::optional<int> linesPerBeat_;
    // BASIC: the six instrument slots.
    std::optional<std::array<uint8_t, 6>> basicInstruments_;

    std::vector<TextChange> textChanges_;
};

// Loads any loadable file into a new module; a failure becomes "Couldn't load module.".
// With "--as KIND" among the arguments the file is read as that kind, whatever its content says.
std::unique_ptr<Module> LoadOrFail(const std::string& path, ImportOptionsProvider& options);
std::unique_ptr<Module> LoadOrFail(const std::string& path, FlagImportOptions& options);

}  // namespace sondrel::cli
