// Feeds arbitrary bytes straight to the MIDI file importer, with the options
// it proposes, so that the reader and the conversion are reached without the
// file-type detection in front of them.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "files/file_stream.h"
#include "files/importers.h"
#include "model/exception.h"

namespace {

class AcceptDefaults : public sondrel::ImportOptionsProvider {};

std::string TempPath() {
    auto dir = std::filesystem::temp_directory_path();
    return (dir / ("sondrel-midi-fuzz-" + std::to_string(::getpid()) + ".mid")).string();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = TempPath();
    FILE* out = std::fopen(path.c_str(), "wb");
    if (!out) return 0;
    std::fwrite(data, 1, size, out);
    std::fclose(out);

    static auto module = std::make_unique<sondrel::Module>();
    AcceptDefaults options;
    try {
        sondrel::UniqueFile file = sondrel::OpenFile(path, "rb");
        if (file) sondrel::ImportMidi(*module, file.get(), path, options);
    } catch (const sondrel::Exception&) {
        // Refusing a file is the expected outcome for most inputs.
    }
    std::remove(path.c_str());
    return 0;
}
