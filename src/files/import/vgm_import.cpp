#include "files/import/vgm_import.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "files/import/importers.h"
#include "model/exception.h"
#include "model/notes.h"
#include "sound/sound_chip.h"

namespace sondrel {

namespace {

constexpr size_t kHeaderBytes = 0x40;
constexpr uint32_t kPalClock = 3546893;
constexpr uint32_t kClockFlags = 0xC0000000;  // dual-chip and variant bits above the clock
constexpr int kNtscFrame = 735;
constexpr int kPalFrame = 882;
constexpr uint32_t kModuleLines = kPatterns * kMaxLines;

struct GzCloser {
    void operator()(gzFile file) const { gzclose(file); }
};
using UniqueGzFile = std::unique_ptr<gzFile_s, GzCloser>;

uint16_t Le16(const uint8_t* bytes) { return static_cast<uint16_t>(bytes[0] | bytes[1] << 8); }
uint32_t Le32(const uint8_t* bytes) { return Le16(bytes) | static_cast<uint32_t>(Le16(bytes + 2)) << 16; }

// The TI parts (BBC Micro, SG-1000, Tandy) log a 15-bit noise register
// tapped at bits 0 and 1; everything else is read as the Sega chip.
uint8_t VariantOfNoise(uint16_t pattern, uint8_t width) {
    return width == 15 || pattern == 0x0003 ? kVariantTi : kVariantSega;
}

// Reads at most `limit` bytes, in pieces, stopping where the stream ends.
std::vector<uint8_t> ReadCommandData(gzFile file, uint64_t limit) {
    constexpr size_t kPiece = 1 << 16;
    std::vector<uint8_t> data;
    while (data.size() < limit) {
        size_t old = data.size();
        size_t want = static_cast<size_t>(std::min<uint64_t>(limit - old, kPiece));
        data.resize(old + want);
        int got = gzread(file, data.data() + old, static_cast<unsigned>(want));
        data.resize(old + static_cast<size_t>(std::max(got, 0)));
        if (got < static_cast<int>(want)) break;
    }
    return data;
}

// The operand bytes of the commands that are read past without a meaning here.
size_t IgnoredOperands(uint8_t command) {
    if (command >= 0x30 && command <= 0x4E) return 2;
    if (command >= 0x51 && command <= 0x54) return 2;
    if (command >= 0x55 && command <= 0x5F) return 3;
    if (command >= 0xA0 && command <= 0xBF) return 3;
    if (command >= 0xC0 && command <= 0xDF) return 4;
    if (command >= 0xE0) return 5;
    return 0;
}

// Turns the decoding chip's state into one line per frame of waited samples.
class VgmFrameWriter {
public:
    VgmFrameWriter(Module& module, bool isPal) : module_(module), frameLength_(isPal ? kPalFrame : kNtscFrame) {
        chip_.Reset();
        chip_.Configure(isPal, module.frequencyDivider, module.chipVariant);
        RememberRegisters();

        Pattern& first = module_.patterns[0];
        first.length = 1;
        PatternLine& line = first.lines[0];
        line.note = {kNoteNull, kNoteNull, kNoteNull, kFirstNoiseNote + 6};  // "WLo" on the noise channel
        line.detune.fill(0);
        line.instrument.fill(0);
        line.volume.fill(0);
    }

    SoundChip& Chip() { return chip_; }
    void Wait(int samples) { pendingSamples_ += samples; }
    // The module has no room for another line.
    bool Full() const { return lineCounter_ == kModuleLines; }

    void AfterCommand() {
        module_.initialSpeed = 8;
        while (pendingSamples_ >= frameLength_ && !Full()) EmitFrame();
    }

    void Finish() {
        if (Full()) return;  // the last pattern was given all its lines when it filled
        module_.patterns[lineCounter_ / kMaxLines].length = static_cast<uint16_t>(lineCounter_ % kMaxLines + 1);
    }

private:
    void RememberRegisters() {
        for (int c = 0; c < kToneChannels; ++c) previousPeriod_[c] = chip_.TonePeriod(c);
        for (int c = 0; c < kChannels; ++c) previousAttenuation_[c] = chip_.Attenuation(c);
    }

    void EmitFrame() {
        pendingSamples_ -= frameLength_;
        std::array<bool, kChannels> changed{};
        for (int c = 0; c < kToneChannels; ++c) {
            changed[c] = chip_.Attenuation(c) != previousAttenuation_[c] || chip_.TonePeriod(c) != previousPeriod_[c];
        }
        changed[kNoiseChannel] = chip_.NoiseWritten() != 0;
        chip_.BeginTick();  // the noise flag now covers the next frame only
        bool noiseVolume = !changed[kNoiseChannel] && chip_.Attenuation(kNoiseChannel) != previousAttenuation_[kNoiseChannel];
        RememberRegisters();

        PatternLine& line = module_.patterns[lineCounter_ / kMaxLines].lines[lineCounter_ % kMaxLines];
        for (int c = 0; c < kChannels; ++c) {
            if (!changed[c]) continue;
            line.volume[c] = static_cast<uint8_t>(15 - chip_.Attenuation(c));
            line.instrument[c] = 0;
            if (c < kToneChannels) {
                NoteAndDetune tone = PeriodToNote(chip_.TonePeriod(c));
                line.note[c] = tone.note;
                line.detune[c] = tone.detune;
            } else {
                line.note[c] = static_cast<uint8_t>(kFirstNoiseNote + chip_.NoiseRate() + (chip_.NoiseWhite() ? 4 : 0));
                line.detune[c] = 0;
            }
        }
        if (noiseVolume) {
            line.channelCommand[kNoiseChannel] = kChannelCommandVO;
            line.channelParam[kNoiseChannel] = static_cast<uint8_t>(15 - chip_.Attenuation(kNoiseChannel));
        }
        if (chip_.Stereo() != lastStereo_) {
            line.command = kCommandST;
            line.commandParam = chip_.Stereo();
            lastStereo_ = chip_.Stereo();
        }

        ++lineCounter_;
        if (lineCounter_ % kMaxLines != 0) return;
        int filled = static_cast<int>(lineCounter_ / kMaxLines) - 1;
        module_.patterns[filled].length = kMaxLines;
        if (Full()) return;
        int next = filled + 1;
        module_.CreatePattern(next);
        module_.patterns[next].length = 1;
        module_.patternList[module_.patternListLength++] = static_cast<uint8_t>(next);
    }

    Module& module_;
    SoundChip chip_;
    const int frameLength_;
    int32_t pendingSamples_ = 0;  // waited and not yet turned into lines
    uint32_t lineCounter_ = 0;
    uint8_t lastStereo_ = 255;
    std::array<uint16_t, kToneChannels> previousPeriod_{};
    std::array<uint8_t, kChannels> previousAttenuation_{};
};

// Runs the commands until the data ends, an end command or a full module.
void PlayCommands(const std::vector<uint8_t>& data, VgmFrameWriter& writer) {
    size_t pos = 0;
    while (pos < data.size() && !writer.Full()) {
        const uint8_t command = data[pos++];
        const size_t left = data.size() - pos;
        const uint8_t* operand = data.data() + pos;
        size_t operands = 0;
        if (command == 0x66) break;
        if (command == 0x4F || command == 0x50) {
            if (left < 1) break;
            if (command == 0x4F) {
                writer.Chip().SetStereo(operand[0]);
            } else {
                writer.Chip().Write(operand[0]);
            }
            operands = 1;
        } else if (command == 0x61) {
            if (left < 2) break;
            writer.Wait(Le16(operand));
            operands = 2;
        } else if (command == 0x62) {
            writer.Wait(kNtscFrame);
        } else if (command == 0x63) {
            writer.Wait(kPalFrame);
        } else if (command == 0x67) {
            // 0x67 0x66 type size32, then the block itself.
            if (left < 6) break;
            operands = 6 + static_cast<size_t>(Le32(operand + 2));
        } else if (command >= 0x70 && command <= 0x7F) {
            writer.Wait((command & 0x0F) + 1);
        } else if (command >= 0x80 && command <= 0x8F) {
            writer.Wait(command & 0x0F);
        } else {
            operands = IgnoredOperands(command);
        }
        if (operands > left) break;
        pos += operands;
        writer.AfterCommand();
    }
    writer.Finish();
}

// What the header and the command data of a log hold.
struct VgmLog {
    VgmImportOptions proposal;
    std::vector<uint8_t> commands;
};

VgmLog ReadVgm(const std::string& path) {
    UniqueGzFile file(gzopen(path.c_str(), "rb"));
    if (!file) throw FileIOException("ImportVgm(): Can't open file");
    uint8_t start[8] = {};
    gzread(file.get(), start, sizeof start);
    if (std::memcmp(start, "Vgm ", 4) != 0) throw ParseException("ImportVgm(): Not a VGM file");

    uint8_t header[kHeaderBytes] = {};
    gzseek(file.get(), 0, SEEK_SET);
    gzread(file.get(), header, sizeof header);
    const uint32_t endOffset = Le32(header + 0x04);
    VgmLog log;
    VgmImportOptions& proposal = log.proposal;
    proposal.chipClock = Le32(header + 0x0C);
    proposal.rate = Le32(header + 0x24);
    proposal.noisePattern = Le16(header + 0x28);
    proposal.noiseWidth = header[0x2A];
    if (proposal.noisePattern == 0) proposal.noisePattern = 9;
    if (proposal.noiseWidth == 0) proposal.noiseWidth = 16;
    bool palLog = proposal.rate == 50 || (proposal.chipClock & ~kClockFlags) == kPalClock;
    proposal.chip = {kDivider1x, palLog ? kChipPal : kChipNtsc, VariantOfNoise(proposal.noisePattern, proposal.noiseWidth)};

    // The commands are read from the end of the 64-byte header to the end
    // that the header gives, whatever it says about where the data begin.
    const int64_t dataLength = int64_t{endOffset} - 60;
    if (dataLength < 0) throw Exception("ImportVgm(): The header leaves no room for command data");
    log.commands = ReadCommandData(file.get(), static_cast<uint64_t>(dataLength));
    return log;
}

}  // namespace

bool ImportVgm(Module& module, const std::string& path, ImportOptionsProvider& options) {
    const VgmLog log = ReadVgm(path);

    std::optional<VgmImportOptions> chosen = options.ChooseVgmOptions(log.proposal);
    if (!chosen) return false;
    RequireChipSettings(chosen->chip, "ImportVgm");

    module.NewModule(chosen->chip);
    VgmFrameWriter writer(module, module.IsPal());
    PlayCommands(log.commands, writer);
    return true;
}

}  // namespace sondrel
