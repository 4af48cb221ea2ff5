#include "files/vgm_import.h"

#include "files/importers.h"
#include "model/exception.h"

namespace sondrel {

bool ImportVgm(Module&, const std::string&, ImportOptionsProvider&) {
    throw Exception("VGM import is not built yet");
}

}  // namespace sondrel
