// Feeds arbitrary bytes straight to the BASIC importer, as a file of any name:
// listings, tokenized programs and junk reach the reader, the interpreter and
// the module writer. The first byte also picks the chip settings and whether
// the instrument slots are shared, so every rate and divider is reached.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "files/file_stream.h"
#include "fuzz_input_file.h"
#include "model/exception.h"

namespace {

class Options : public sondrel::ImportOptionsProvider {
public:
    explicit Options(uint8_t bits) : bits_(bits) {}
    std::optional<sondrel::BasicImportOptions> ChooseBasicOptions(
        const sondrel::BasicImportOptions& proposal) override {
        sondrel::BasicImportOptions chosen = proposal;
        chosen.chip = {static_cast<uint8_t>(bits_ >> 1 & 1), static_cast<uint8_t>(bits_ & 1)};
        if (bits_ & 4) chosen.instruments = {15, 15, 15, 15, 15, 15};
        return chosen;
    }

private:
    uint8_t bits_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    sondrel::fuzz::InputFile input(data, size, ".BAS");
    if (!input.Written()) return 0;
    static auto module = std::make_unique<sondrel::Module>();
    Options options(size > 0 ? data[0] : 0);
    try {
        sondrel::UniqueFile file = sondrel::OpenFile(input.Path(), "rb");
        if (file) sondrel::ImportBasic(*module, file.get(), input.Path(), options);
    } catch (const sondrel::Exception&) {
        // Refusing a file is the expected outcome for most inputs.
    }
    return 0;
}
