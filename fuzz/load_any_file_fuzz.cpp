// Feeds arbitrary bytes to the file-type detection and every loader behind it.
// When the first byte is odd the file gets an upper-case ".BAS" name, so that
// the extension test is reached as well.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "files/module_file.h"
#include "fuzz_input_file.h"
#include "model/exception.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    sondrel::fuzz::InputFile input(data, size, size > 0 && (data[0] & 1) ? ".BAS" : ".dat");
    if (!input.Written()) return 0;
    static auto module = std::make_unique<sondrel::Module>();
    sondrel::fuzz::ChipChoosingOptions options(size > 1 ? data[1] : 0);
    try {
        sondrel::LoadAnyFile(*module, input.Path(), options);
    } catch (const sondrel::Exception&) {
        // Refusing a file is the expected outcome for most inputs.
    }
    return 0;
}
