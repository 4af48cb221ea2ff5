#pragma once
// The importers that turn other kinds of files into a Module, and the options
// their callers supply: dialogs in the editor, flags on the command line.
//
// Every importer works in the same four steps:
//   read   the whole input into a plain record of what was learned; every
//          refusal of malformed input is thrown here, before anything else
//          (one that hangs on an option, as a MOD's on its tick rate, is
//          decided here and thrown as soon as that option is chosen);
//   ask    the caller, proposing options (what was learned and the defaults);
//   fill   the module it is given (NewModule, then the song), which no
//          longer fails for anything in the file;
//   report by returning true; the module file's loader then tells the caller
//          which texts it changed.
// An importer returns false, leaving the module untouched, when the caller
// declines, and throws Exception (or a subclass), again leaving the module
// untouched, on malformed input or options left unset.

#include <optional>
#include <vector>

#include "files/basic/basic_import.h"
#include "files/import/midi_import.h"
#include "files/import/mod_import.h"
#include "files/import/vgm_import.h"
#include "model/storable_text.h"

namespace sondrel {

class ImportOptionsProvider {
public:
    virtual ~ImportOptionsProvider() = default;

    // Each returns the options as chosen, or nothing when the user cancels.
    // Unless overridden, the proposal is taken as it stands.
    virtual std::optional<ModImportOptions> ChooseModOptions(const ModImportOptions& proposal) { return proposal; }
    virtual std::optional<VgmImportOptions> ChooseVgmOptions(const VgmImportOptions& proposal) { return proposal; }
    virtual std::optional<MidiImportOptions> ChooseMidiOptions(const MidiImportOptions& proposal) { return proposal; }
    virtual std::optional<BasicImportOptions> ChooseBasicOptions(const BasicImportOptions& proposal) {
        return proposal;
    }

    // Told after an import which of its texts were changed so that the
    // module file can hold them; called with an empty list when none were.
    virtual void TextsChanged(const std::vector<TextChange>& /*changes*/) {}
};

// Throws "<importer>(): All chip settings must be set." when the caller left
// the chip type or the frequency divider unchosen.
void RequireChipSettings(const ChipSettings& chip, const char* importer);

}  // namespace sondrel
