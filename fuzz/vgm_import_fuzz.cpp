// Feeds arbitrary bytes straight to the VGM importer, which opens the file
// through zlib's gzip reader, so plain and compressed inputs are both reached.
// The last byte also picks the chip settings the caller answers with.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "fuzz_input_file.h"
#include "model/exception.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    sondrel::fuzz::InputFile input(data, size, ".vgm");
    if (!input.Written()) return 0;
    static auto module = std::make_unique<sondrel::Module>();
    sondrel::fuzz::ChipChoosingOptions options(size > 0 ? data[size - 1] : 0);
    try {
        sondrel::ImportVgm(*module, input.Path(), options);
    } catch (const sondrel::Exception&) {
        // Refusing a file is the expected outcome for most inputs.
    }
    return 0;
}
