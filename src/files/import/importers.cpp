#include "files/import/importers.h"

#include <string>

#include "model/exception.h"

namespace sondrel {

void RequireChipSettings(const ChipSettings& chip, const char* importer) {
    if (chip.chipType > kChipPal || chip.frequencyDivider > kDivider2x)
        throw Exception(std::string(importer) + "(): All chip settings must be set.");
}

}  // namespace sondrel
