#pragma once
// Pieces shared by the importer fuzzers: the input bytes as a file of this
// process's own, and a caller that answers the options with chosen chip settings.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "files/import/importers.h"

namespace sondrel::fuzz {

// Written on construction, removed on destruction.
class InputFile {
public:
    InputFile(const uint8_t* data, size_t size, const std::string& extension)
        : path_((std::filesystem::temp_directory_path() /
                 ("sondrel-fuzz-input-" + std::to_string(::getpid()) + extension)).string()) {
        FILE* out = std::fopen(path_.c_str(), "wb");
        if (!out) return;
        written_ = std::fwrite(data, 1, size, out) == size;
        written_ = std::fclose(out) == 0 && written_;
    }
    ~InputFile() { std::remove(path_.c_str()); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const std::string& Path() const { return path_; }
    bool Written() const { return written_; }

private:
    std::string path_;
    bool written_ = false;
};

// Bit 0 picks PAL, bit 1 the 2x divider, so both rates and dividers are reached.
class ChipChoosingOptions : public ImportOptionsProvider {
public:
    explicit ChipChoosingOptions(uint8_t bits)
        : chip_{static_cast<uint8_t>(bits >> 1 & 1), static_cast<uint8_t>(bits & 1)} {}
    std::optional<ModImportOptions> ChooseModOptions(const ModImportOptions& proposal) override {
        return Chosen(proposal);
    }
    std::optional<VgmImportOptions> ChooseVgmOptions(const VgmImportOptions& proposal) override {
        return Chosen(proposal);
    }

private:
    template <typename Options>
    Options Chosen(Options options) const {
        options.chip = chip_;
        return options;
    }
    ChipSettings chip_;
};

}  // namespace sondrel::fuzz
