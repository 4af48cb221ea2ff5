#include "files/midi_import.h"

#include "files/importers.h"
#include "model/exception.h"

namespace sondrel {

bool ImportMidi(Module&, FILE*, const std::string&, ImportOptionsProvider&) {
    throw Exception("MIDI import is not built yet");
}

}  // namespace sondrel
