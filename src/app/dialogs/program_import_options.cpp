#include "app/dialogs/program_import_options.h"

#include "files/general_midi.h"
#include "screens/dialogs/import_dialogs.h"
#include "screens/dialogs/midi_export_dialog.h"

namespace sondrel {

static_assert(kMidiExportRows == MidiExportOptions::kRows);
static_assert(kMidiChannels == std::tuple_size_v<decltype(MidiImportOptions::channels)>);

std::optional<ModImportOptions> ProgramImportOptions::ChooseModOptions(const ModImportOptions& proposal) {
    const auto chosen = AskModImport(requesters_, {proposal.name, proposal.sampleNames, proposal.chip});
    if (!chosen) return std::nullopt;
    ModImportOptions options = proposal;
    options.chip = chosen->chip;
    return options;
}

std::optional<VgmImportOptions> ProgramImportOptions::ChooseVgmOptions(const VgmImportOptions& proposal) {
    const auto chosen = AskVgmImport(
        requesters_, {proposal.rate, proposal.chipClock, proposal.noisePattern, proposal.noiseWidth, proposal.chip});
    if (!chosen) return std::nullopt;
    VgmImportOptions options = proposal;
    options.chip = chosen->chip;
    return options;
}

std::optional<MidiImportOptions> ProgramImportOptions::ChooseMidiOptions(const MidiImportOptions& proposal) {
    MidiImportValues values;
    for (int channel = 0; channel < kMidiChannels; ++channel) {
        const MidiChannelChoice& choice = proposal.channels[channel];
        values.channels[channel] = {choice.hasNotes, choice.enable, choice.chipChannel, choice.instrument};
    }
    values.chip = proposal.chip;
    const auto chosen = AskMidiImport(requesters_, values);
    if (!chosen) return std::nullopt;
    MidiImportOptions options = proposal;
    for (int channel = 0; channel < kMidiChannels; ++channel) {
        const MidiChannelRow& row = chosen->channels[channel];
        options.channels[channel] = {row.hasNotes, row.enable, row.chipChannel, row.instrument};
    }
    options.chip = chosen->chip;
    return options;
}

std::optional<BasicImportOptions> ProgramImportOptions::ChooseBasicOptions(const BasicImportOptions& proposal) {
    const auto chosen = AskBasicImport(requesters_, {proposal.instruments, proposal.chip});
    if (!chosen) return std::nullopt;
    BasicImportOptions options = proposal;
    options.instruments = chosen->instruments;
    options.chip = chosen->chip;
    return options;
}

bool ProgramMidiExportDialog::EditMidiExportOptions(MidiExportOptions& options) {
    MidiExportTable table;
    table.programs = options.programs;
    for (int i = 0; i < kInstruments; ++i) table.instrumentNames[i] = module_.instruments[i].name;
    const auto& names = GeneralMidiProgramNames();
    table.programNames.assign(names.begin(), names.end());
    const auto chosen = EditMidiExportTable(requesters_, table);
    if (!chosen) return false;
    options.programs = *chosen;
    return true;
}

}  // namespace sondrel
