#pragma once
// The "Export module" menu command: asks for a file name, stops playback and
// runs the chosen format's exporter. The editor supplies its requesters and
// the playback stop through ExportUserInterface.

#include <string>
#include <vector>

#include "files/export/midi_export.h"
#include "model/module.h"

namespace sondrel {

enum ExportKind : int {
    kExportEsdrltk = 0,
    kExportVgm = 1,
    kExportMidi = 2,
    kExportVgmLooping = 3,  // a VGM log that loops from the repeat position
};

inline constexpr char kExportNotAvailable[] = "This is not available yet.";
// What the user is told when an export's file could not be written.
inline constexpr char kCouldNotWriteVgm[] = "Couldn't write the VGM file.";
inline constexpr char kCouldNotWriteMidi[] = "Couldn't write the MIDI file.";
inline constexpr char kCouldNotWriteWav[] = "Couldn't write the WAV file.";

struct ExportFormat {
    const char* word;       // "ESDRLTK", "VGM", "MID"
    const char* extension;  // ".esdrltk", ".vgm", ".mid"
};

// Throws InternalException for a kind that is not one of the above.
ExportFormat ExportFormatOf(int kind);
// "Export module as VGM"
std::string ExportRequesterTitle(int kind);

class ExportUserInterface : public MidiExportDialog {
public:
    // The file requester in save mode: the chosen path, or empty when cancelled.
    virtual std::string RequestExportFile(const std::vector<std::string>& filters, const std::string& title,
                                          const std::string& defaultExtension) = 0;
    virtual void ShowMessage(const std::string& text) = 0;
    // Stops the song and the previews, under the lock shared with the audio thread.
    virtual void StopPlayback() = 0;
};

// Runs the export of the given kind; true when a file was written. The
// exporters' failures (Exception) reach the caller.
bool RunExportCommand(int kind, Module& module, MidiExportOptions& midiOptions, ExportUserInterface& ui);

}  // namespace sondrel
