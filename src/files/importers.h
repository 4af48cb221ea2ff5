#pragma once
// Entry points of the importers that turn other kinds of files into a Module,
// and the options their callers supply: dialogs in the editor, flags on the
// command line.
//
// An importer replaces the module it is given with a new one built from the
// file and returns true, returns false when the user cancels its options, and
// throws Exception (or a subclass) on malformed input.

#include <cstdio>
#include <optional>
#include <string>

#include "model/module.h"

namespace sondrel {

class ImportOptionsProvider {
public:
    virtual ~ImportOptionsProvider() = 0;

    // The chip settings for the imported module; nothing means "cancelled".
    // Unless overridden, every import uses NTSC with divider 1x.
    virtual std::optional<ChipSettings> ModSettings() { return ChipSettings{}; }
    virtual std::optional<ChipSettings> VgmSettings() { return ChipSettings{}; }
    virtual std::optional<ChipSettings> MidiSettings() { return ChipSettings{}; }
    virtual std::optional<ChipSettings> BasicSettings() { return ChipSettings{}; }
};

inline ImportOptionsProvider::~ImportOptionsProvider() = default;

// Amiga MOD; the stream is positioned at the start of the file.
bool ImportMod(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options);
// VGM, plain or gzip-compressed; opened by name.
bool ImportVgm(Module& module, const std::string& path, ImportOptionsProvider& options);
// Standard MIDI file; the stream is positioned at the start of the file.
bool ImportMidi(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options);
// BASIC listing, plain or tokenized; the stream is positioned at the start of the file.
bool ImportBasic(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options);

}  // namespace sondrel
