// Feeds arbitrary bytes to the file-type detection and every loader behind it.
// The bytes go to a temporary file; when the first byte is odd the file gets
// an upper-case ".BAS" name, so that the extension test is reached as well.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "files/module_file.h"
#include "model/exception.h"

namespace {

class AcceptDefaults : public sondrel::ImportOptionsProvider {};

std::string TempPath(bool basicName) {
    auto dir = std::filesystem::temp_directory_path();
    std::string name = "sondrel-fuzz-" + std::to_string(::getpid()) + (basicName ? ".BAS" : ".dat");
    return (dir / name).string();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string path = TempPath(size > 0 && (data[0] & 1));
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    static sondrel::Module module;
    AcceptDefaults options;
    try {
        sondrel::LoadAnyFile(module, path, options);
    } catch (const sondrel::Exception&) {
        // Refusing a file is the expected outcome for most inputs.
    }
    std::remove(path.c_str());
    return 0;
}
