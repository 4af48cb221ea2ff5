#include "files/importers.h"

#include "model/exception.h"

namespace sondrel {

bool ImportMod(Module&, FILE*, const std::string&, ImportOptionsProvider&) {
    throw Exception("MOD import is not built yet");
}

bool ImportVgm(Module&, const std::string&, ImportOptionsProvider&) {
    throw Exception("VGM import is not built yet");
}

bool ImportMidi(Module&, FILE*, const std::string&, ImportOptionsProvider&) {
    throw Exception("MIDI import is not built yet");
}

bool ImportBasic(Module&, FILE*, const std::string&, ImportOptionsProvider&) {
    throw Exception("BASIC import is not built yet");
}

}  // namespace sondrel
