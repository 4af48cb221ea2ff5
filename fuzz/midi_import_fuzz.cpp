// Feeds arbitrary bytes straight to the MIDI file importer, without the
// file-type detection in front of it, so that any header reaches the reader
// and the conversion. The input's length picks the chip settings and whether
// the notes are quantised, so both timing paths are reached.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "files/file_stream.h"
#include "fuzz_input_file.h"
#include "model/exception.h"

namespace {

class MidiOptions : public sondrel::ImportOptionsProvider {
public:
    explicit MidiOptions(size_t bits) : bits_(bits) {}
    std::optional<sondrel::MidiImportOptions> ChooseMidiOptions(const sondrel::MidiImportOptions& proposal) override {
        static const int kLinesPerBeat[4] = {0, 0, 4, 96};
        sondrel::MidiImportOptions options = proposal;
        options.chip = {static_cast<uint8_t>(bits_ >> 1 & 1), static_cast<uint8_t>(bits_ & 1)};
        options.linesPerBeat = kLinesPerBeat[bits_ >> 2 & 3];
        return options;
    }

private:
    size_t bits_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    sondrel::fuzz::InputFile input(data, size, ".mid");
    if (!input.Written()) return 0;
    static auto module = std::make_unique<sondrel::Module>();
    MidiOptions options(size);
    try {
        sondrel::UniqueFile file = sondrel::OpenFile(input.Path(), "rb");
        if (file) sondrel::ImportMidi(*module, file.get(), input.Path(), options);
    } catch (const sondrel::Exception&) {
        // Refusing a file is the expected outcome for most inputs.
    }
    return 0;
}
