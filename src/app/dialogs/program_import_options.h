#pragma once
// The program's answers to the importers' questions: each importer's
// proposal is shown in its dialog and the options confirmed there go back to
// the importer. The MIDI export's table is edited the same way.

#include <optional>

#include "files/export/midi_export.h"
#include "files/import/importers.h"

namespace sondrel {

class Requesters;

class ProgramImportOptions : public ImportOptionsProvider {
public:
    explicit ProgramImportOptions(Requesters& requesters) : requesters_(requesters) {}

    std::optional<ModImportOptions> ChooseModOptions(const ModImportOptions& proposal) override;
    std::optional<VgmImportOptions> ChooseVgmOptions(const VgmImportOptions& proposal) override;
    std::optional<MidiImportOptions> ChooseMidiOptions(const MidiImportOptions& proposal) override;
    std::optional<BasicImportOptions> ChooseBasicOptions(const BasicImportOptions& proposal) override;

private:
    Requesters& requesters_;
};

// The "Export MIDI" dialog over the module's instruments; false, with the
// options untouched, when it is cancelled.
class ProgramMidiExportDialog : public MidiExportDialog {
public:
    ProgramMidiExportDialog(Requesters& requesters, const Module& module) : requesters_(requesters), module_(module) {}
    bool EditMidiExportOptions(MidiExportOptions& options) override;

private:
    Requesters& requesters_;
    const Module& module_;
};

}  // namespace sondrel
