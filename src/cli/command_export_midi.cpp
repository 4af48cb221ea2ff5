// sondrel-cli export-midi: a song as a standard MIDI file.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "cli/cli_common.h"
#include "files/export/export_command.h"
#include "files/general_midi.h"
#include "files/export/midi_export.h"
#include "model/exception.h"

namespace sondrel::cli {
namespace {

[[noreturn]] void BadProgram(const std::string& given) {
    throw UsageError("--program takes ROW=PROG with ROW 0-47 and PROG 0-127, not \"" + given + "\"");
}

// A part of ROW=PROG in [low, high]; anything else is the same usage error.
int ParseInRange(const std::string& text, int low, int high, const std::string& given) {
    try {
        return ParseWholeNumber(text, low, high, "--program");
    } catch (const UsageError&) {
        BadProgram(given);
    }
}

void ListPrograms() {
    const auto& names = GeneralMidiProgramNames();
    for (int i = 0; i < kGeneralMidiPrograms; ++i) std::printf("%3d  %s\n", i, names[i]);
}

int ExportMidiCommand(const std::vector<std::string>& argv) {
    Arguments args(argv, WithImportOptions({"--program"}), {"--list-programs"});
    if (args.Has("--list-programs")) {
        ListPrograms();
        return kExitOk;
    }
    if (args.Positional().size() != 2) throw UsageError("export-midi takes a file and an output MIDI file");
    MidiExportOptions options;
    for (const std::string& given : args.Values("--program")) {
        const auto eq = given.find('=');
        if (eq == std::string::npos) BadProgram(given);
        const int row = ParseInRange(given.substr(0, eq), 0, MidiExportOptions::kRows - 1, given);
        options.programs[row] = static_cast<uint8_t>(ParseInRange(given.substr(eq + 1), 0, 127, given));
    }
    FlagImportOptions imports(args);
    auto module = LoadOrFail(args.Positional()[0], imports);
    try {
        WriteMidiFile(options, *module, args.Positional()[1]);
    } catch (const Exception& e) {
        throw Failure{kCouldNotWriteMidi, UserReason(e)};
    }
    std::printf("Wrote %s\n", args.Positional()[1].c_str());
    return kExitOk;
}

const CommandRegistration kExportMidi(
    {"export-midi", "play a song once into a standard MIDI file",
     "usage: sondrel-cli export-midi FILE OUT.mid [--program ROW=PROG]... [--list-programs]\n"
     "Plays FILE from its start until the pattern list runs out and writes a\n"
     "format 1 MIDI file: a track with the texts and tempo, then one track per\n"
     "chip channel (MIDI channels 1-4), 8 MIDI ticks a frame.\n"
     "  --program ROW=PROG  play the notes of table row ROW with General MIDI\n"
     "                      program PROG (0-127, as --list-programs numbers them);\n"
     "                      may be repeated. Rows: 0-15 tone notes of instrument\n"
     "                      0-15 (default 80), 16-31 periodic noise notes by\n"
     "                      instrument (default 81), 32-47 white noise notes by\n"
     "                      instrument (default 117)\n"
     "  --list-programs     print the 128 General MIDI program names and stop\n",
     ExportMidiCommand, 41});

}  // namespace
}  // namespace sondrel::cli
