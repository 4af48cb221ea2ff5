#pragma once
// The importers that turn other kinds of files into a Module, and the options
// their callers supply: dialogs in the editor, flags on the command line.
//
// An importer reads the file, proposes its options (what it learned of the
// file and the defaults) to the caller, and with the options chosen replaces
// the module it is given and returns true. It returns false, leaving the
// module untouched, when the caller declines, and throws Exception (or a
// subclass) on malformed input.

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

}  // namespace sondrel
