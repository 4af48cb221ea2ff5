#include "files/export/export_command.h"

#include "files/export/vgm_export.h"
#include "model/exception.h"

namespace sondrel {

ExportFormat ExportFormatOf(int kind) {
    switch (kind) {
        case kExportEsdrltk:
            return {"ESDRLTK", ".esdrltk"};
        case kExportVgm:
        case kExportVgmLooping:
            return {"VGM", kVgmExtension};
        case kExportMidi:
            return {"MID", kMidiExtension};
        default:
            throw InternalException("ExportFormatOf(): Unknown export kind");
    }
}

std::string ExportRequesterTitle(int kind) { return std::string("Export module as ") + ExportFormatOf(kind).word; }

bool RunExportCommand(int kind, Module& module, MidiExportOptions& midiOptions, ExportUserInterface& ui) {
    const ExportFormat format = ExportFormatOf(kind);
    // The compact replay format has no exporter yet.
    if (kind == kExportEsdrltk) {
        ui.ShowMessage(kExportNotAvailable);
        return false;
    }
    const std::string path = ui.RequestExportFile({std::string("*") + format.extension}, ExportRequesterTitle(kind),
                                                  format.extension);
    if (path.empty()) return false;
    ui.StopPlayback();
    if (kind == kExportVgm || kind == kExportVgmLooping) {
        VgmExportOptions options;
        options.loop = kind == kExportVgmLooping;
        ExportVgm(module, path, options);
        return true;
    }
    return ExportMidi(midiOptions, module, path, ui);
}

}  // namespace sondrel
