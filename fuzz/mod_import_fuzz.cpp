// Feeds arbitrary bytes straight to the MOD importer, without the file-type
// detection in front of it, so that any header reaches the checks and the
// replay. The first byte also picks the chip settings the caller answers with.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "files/file_stream.h"
#include "fuzz_input_file.h"
#include "model/exception.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    sondrel::fuzz::InputFile input(data, size, ".mod");
    if (!input.Written()) return 0;
    static auto module = std::make_unique<sondrel::Module>();
    sondrel::fuzz::ChipChoosingOptions options(size > 0 ? data[0] : 0);
    try {
        sondrel::UniqueFile file = sondrel::OpenFile(input.Path(), "rb");
        if (file) sondrel::ImportMod(*module, file.get(), input.Path(), options);
    } catch (const sondrel::Exception&) {
        // Refusing a file is the expected outcome for most inputs.
    }
    return 0;
}
