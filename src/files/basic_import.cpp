#include "files/basic_import.h"

#include "files/importers.h"
#include "model/exception.h"

namespace sondrel {

bool ImportBasic(Module&, FILE*, const std::string&, ImportOptionsProvider&) {
    throw Exception("BASIC import is not built yet");
}

}  // namespace sondrel
