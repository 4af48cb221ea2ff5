#include "files/mod_import.h"

#include "files/importers.h"
#include "model/exception.h"

namespace sondrel {

bool ImportMod(Module&, FILE*, const std::string&, ImportOptionsProvider&) {
    throw Exception("MOD import is not built yet");
}

}  // namespace sondrel
