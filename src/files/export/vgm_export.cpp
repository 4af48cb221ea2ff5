#include "files/export/vgm_export.h"

#include <array>

#include "files/safe_file_writer.h"
#include "files/export/song_stepper.h"
#include "model/exception.h"

namespace sondrel {

namespace {

constexpr uint32_t kNtscClock = 3579545;
constexpr uint32_t kPalClock = 3546893;
constexpr uint32_t kVersion = 0x150;
constexpr uint32_t kVersionWithChipFlags = 0x151;
constexpr size_t kHeaderSize = 0x40;
constexpr size_t kEndOffsetField = 0x04;
constexpr size_t kGd3OffsetField = 0x14;
constexpr size_t kSampleCountField = 0x18;
constexpr size_t kLoopOffsetField = 0x1C;
constexpr size_t kLoopSamplesField = 0x20;

constexpr uint8_t kPsgWrite = 0x50;
constexpr uint8_t kStereoWrite = 0x4F;
constexpr uint8_t kWaitNtscFrame = 0x62;
constexpr uint8_t kWaitPalFrame = 0x63;
constexpr uint8_t kEndOfData = 0x66;

constexpr const char* kCreatorName = "Sondrel VGM Exporter";

// How a log names the chip family member it was written for.
struct ChipHeader {
    uint16_t noiseFeedback;
    uint8_t noiseWidth;
    uint8_t flags;  // read from version 1.51 on: 0 means a Sega chip with stereo
    const char* systemName;
};

// SN76489 flag bits of the header.
constexpr uint8_t kFlagZeroIs1024 = 0x01;
constexpr uint8_t kFlagNoStereo = 0x04;

constexpr std::array<ChipHeader, kChipVariants> kChipHeaders = {{
    {9, 16, 0, "Sega Master System / Game Gear"},
    {9, 16, 0, "Sega Game Gear"},
    {3, 15, kFlagZeroIs1024 | kFlagNoStereo, "BBC Model B"},
}};

const ChipHeader& HeaderOf(const Module& module) { return kChipHeaders[module.chipVariant % kChipVariants]; }
bool HasStereo(const Module& module) { return (HeaderOf(module).flags & kFlagNoStereo) == 0; }

// Little-endian appends and patches.
class VgmBuffer {
public:
    void Byte(uint8_t value) { bytes_.push_back(value); }
    void Word(uint16_t value) {
        Byte(static_cast<uint8_t>(value));
        Byte(static_cast<uint8_t>(value >> 8));
    }
    void Long(uint32_t value) {
        Word(static_cast<uint16_t>(value));
        Word(static_cast<uint16_t>(value >> 16));
    }
    void Text(const char* text) {
        for (; *text; ++text) Byte(static_cast<uint8_t>(*text));
    }
    // Each byte of the 8-bit text widened to one 16-bit unit, then a zero unit.
    void WideString(const std::string& text) {
        for (char c : text) Word(static_cast<uint8_t>(c));
        Word(0);
    }
    void Patch(size_t offset, uint32_t value) {
        for (int i = 0; i < 4; ++i) bytes_[offset + i] = static_cast<uint8_t>(value >> (8 * i));
    }
    size_t Size() const { return bytes_.size(); }
    std::vector<uint8_t> Take() { return std::move(bytes_); }

private:
    std::vector<uint8_t> bytes_;
};

uint32_t ChipClock(const Module& module) {
    const uint32_t clock = module.IsPal() ? kPalClock : kNtscClock;
    return module.frequencyDivider == kDivider2x ? clock >> 1 : clock;
}

void WriteHeader(VgmBuffer& out, const Module& module) {
    const ChipHeader& chip = HeaderOf(module);
    out.Text("Vgm ");
    out.Long(0);  // end-of-file offset, patched
    out.Long(chip.flags != 0 ? kVersionWithChipFlags : kVersion);
    out.Long(ChipClock(module));
    out.Long(0);  // YM2413 clock
    out.Long(0);  // GD3 offset, patched
    out.Long(0);  // total samples, patched
    out.Long(0);  // loop offset: no loop
    out.Long(0);  // loop samples
    out.Long(module.IsPal() ? 50 : 60);
    out.Word(chip.noiseFeedback);
    out.Byte(chip.noiseWidth);
    out.Byte(chip.flags);
    out.Long(0);  // YM2612 clock
    out.Long(0);  // YM2151 clock
    out.Long(static_cast<uint32_t>(kHeaderSize - 0x34));
    out.Long(0);
    out.Long(0);
}

struct CommandsWritten {
    uint32_t samples = 0;
    size_t loopOffset = 0;  // where the loop frame's commands begin; 0: no loop
    uint32_t loopSamples = 0;
};

// Plays the song and records each frame's changed registers. With loop, the
// frame in which the repeat position first starts to play is the loop point:
// it writes the whole chip state again, since the end of the song leaves the
// chip as it is there and not as it was at that point.
CommandsWritten WriteCommands(VgmBuffer& out, Module& module, bool loop) {
    const bool pal = module.IsPal();
    const uint32_t frameSamples = pal ? 882 : 735;
    const uint8_t wait = pal ? kWaitPalFrame : kWaitNtscFrame;

    // Values no register holds, so that the first frame writes every register.
    std::array<uint16_t, kToneChannels> periods;
    periods.fill(0xFFFF);
    std::array<uint8_t, kChannels> volumes;
    volumes.fill(255);

    const bool stereo = HasStereo(module);
    SongStepper stepper(module);
    CommandsWritten written;
    bool looped = false;
    for (;;) {
        // The player moves to the next list position at the end of a pattern's
        // last tick, so the repeat position plays from the first tick that
        // begins on it.
        const bool loopFrame = loop && !looped && stepper.ListPosition() == module.repeatPosition;
        stepper.Step();
        const SoundChip& chip = stepper.Chip();
        if (loopFrame) {
            looped = true;
            written.loopOffset = out.Size();
            periods.fill(0xFFFF);
            volumes.fill(255);
        }
        for (int c = 0; c < kChannels; ++c) {
            const uint8_t volume = chip.Attenuation(c);
            if (volume != volumes[c]) {
                volumes[c] = volume;
                out.Byte(kPsgWrite);
                out.Byte(static_cast<uint8_t>(0x90 + c * 32 + volume));
            }
            if (c >= kToneChannels) continue;
            const uint16_t period = chip.TonePeriod(c);
            if (period != periods[c]) {
                periods[c] = period;
                out.Byte(kPsgWrite);
                out.Byte(static_cast<uint8_t>(0x80 + c * 32 + (period & 15)));
                out.Byte(kPsgWrite);
                out.Byte(static_cast<uint8_t>(period >> 4));
            }
        }
        // The stereo register is written in every frame that has a setting,
        // changed or not, and at the loop point whatever it holds.
        if (stereo && (chip.Stereo() < 255 || loopFrame)) {
            out.Byte(kStereoWrite);
            out.Byte(chip.Stereo());
        }
        if (chip.NoiseWritten() || loopFrame) {
            out.Byte(kPsgWrite);
            out.Byte(static_cast<uint8_t>(0xE0 + (chip.NoiseWhite() ? 4 : 0) + chip.NoiseRate()));
        }
        out.Byte(wait);
        written.samples += frameSamples;
        if (looped) written.loopSamples += frameSamples;
        if (stepper.Ended()) break;
    }
    return written;
}

void WriteGd3(VgmBuffer& out, const Module& module) {
    out.Text("Gd3 ");
    out.Long(0x100);
    const size_t lengthField = out.Size();
    out.Long(0);  // length of the strings, patched
    const std::string empty;
    for (const std::string* text : {&module.title, &empty, &empty, &empty}) out.WideString(*text);
    out.WideString(HeaderOf(module).systemName);
    for (const std::string* text : {&empty, &module.author, &empty, &empty}) out.WideString(*text);
    out.WideString(kCreatorName);
    out.WideString(module.notes);
    out.Patch(lengthField, static_cast<uint32_t>(out.Size() - (lengthField + 4)));
}

}  // namespace

std::vector<uint8_t> BuildVgm(Module& module, const VgmExportOptions& options) {
    VgmBuffer out;
    WriteHeader(out, module);
    const CommandsWritten written = WriteCommands(out, module, options.loop);
    out.Byte(kEndOfData);
    out.Patch(kGd3OffsetField, static_cast<uint32_t>(out.Size() - kGd3OffsetField));
    WriteGd3(out, module);
    out.Patch(kSampleCountField, written.samples);
    if (written.loopOffset != 0) {
        out.Patch(kLoopOffsetField, static_cast<uint32_t>(written.loopOffset - kLoopOffsetField));
        out.Patch(kLoopSamplesField, written.loopSamples);
    }
    out.Patch(kEndOffsetField, static_cast<uint32_t>(out.Size() - kEndOffsetField));
    return out.Take();
}

void ExportVgm(Module& module, const std::string& path, const VgmExportOptions& options) {
    const std::vector<uint8_t> bytes = BuildVgm(module, options);
    ReplaceFileContents(path, bytes.data(), bytes.size());
}

}  // namespace sondrel
