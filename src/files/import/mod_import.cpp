#include "files/import/mod_import.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

#include "files/import/importers.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {

namespace {

constexpr int kSampleSlots = 31;
constexpr int kRows = 64;
constexpr int kOrderSlots = 128;
constexpr long kSignatureOffset = 1080;
constexpr long kPatternOffset = 1084;
constexpr size_t kModPatternBytes = 1024;
constexpr double kAmigaClock = 7093789.0;
constexpr int32_t kHalfTick = 32768;  // half an output line in 16.16

// MOD volume 0..63 (after scaling by the sample's peak) to chip volume 0..15.
constexpr std::array<uint8_t, 64> kVolumeTable = {
    0,  1,  2,  2,  3,  3,  4,  4,  5,  5,  6,  6,  7,  7,  8,  8,  8,  9,  9,  9,  10, 10,
    10, 10, 11, 11, 11, 11, 12, 12, 12, 12, 12, 12, 13, 13, 13, 13, 13, 13, 13, 13, 14, 14,
    14, 14, 14, 14, 14, 14, 14, 14, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15};

// Reads what the stream still has; missing bytes leave the buffer as it was.
void ReadInto(FILE* file, void* buffer, size_t bytes) { (void)std::fread(buffer, 1, bytes, file); }

// The bytes up to (not including) the first `stop` byte, keeping only 32..127.
std::string PrintableText(const uint8_t* bytes, size_t size, uint8_t stop) {
    std::string text;
    for (size_t i = 0; i < size && bytes[i] != stop; ++i) {
        if (bytes[i] >= 32 && bytes[i] <= 127) text += static_cast<char>(bytes[i]);
    }
    return text;
}

uint16_t WordCountInBytes(const uint8_t* bytes) {
    // Word counts times two, kept in 16 bits as the sample fields are.
    return static_cast<uint16_t>(((bytes[0] << 8) | bytes[1]) * 2);
}

struct ModSample {
    std::string name;
    uint16_t length = 0;  // bytes, without the two skipped at the start of the data
    int8_t finetune = 0;
    uint8_t volume = 0;
    uint16_t repeatStart = 0;
    uint16_t repeatLength = 0;  // 0: no loop

    // The data as absolute values, and the peak of every block of them, so
    // that the loudest value of a long run is found without visiting it all.
    static constexpr size_t kBlock = 256;
    std::vector<uint8_t> level;
    std::vector<uint8_t> blockPeak;

    void SetData(const std::vector<int8_t>& data) {
        level.resize(data.size());
        for (size_t i = 0; i < data.size(); ++i) level[i] = static_cast<uint8_t>(std::abs(int{data[i]}));
        blockPeak.assign((level.size() + kBlock - 1) / kBlock, 0);
        for (size_t i = 0; i < level.size(); ++i) {
            blockPeak[i / kBlock] = std::max(blockPeak[i / kBlock], level[i]);
        }
    }

    // The loudest absolute value at positions from..to-1.
    uint8_t Peak(size_t from, size_t to) const {
        uint8_t peak = 0;
        while (from < to && from % kBlock != 0) peak = std::max(peak, level[from++]);
        for (; to - from >= kBlock; from += kBlock) peak = std::max(peak, blockPeak[from / kBlock]);
        while (from < to) peak = std::max(peak, level[from++]);
        return peak;
    }
};

// Everything read from the file before the caller is asked for options.
struct ModSong {
    std::string name;
    std::array<ModSample, kSampleSlots> samples;
    uint8_t songLength = 0;
    std::array<uint8_t, kOrderSlots> orders{};
    int patternCount = 0;
    std::vector<uint8_t> patterns;  // 64 rows of four 4-byte cells each
    // By chip type: the replay at that tick rate stops at a pattern break
    // beyond the last row before the module is full, so the file is refused.
    std::array<bool, 2> refusedBreak{};
};

int TickRate(uint8_t chipType) { return chipType == kChipPal ? 50 : 60; }

[[noreturn]] void RefuseBreak() { throw Exception("ImportMod(): Pattern break beyond the last row"); }

void ReadSampleRecord(FILE* file, ModSample& sample, bool& invalid) {
    uint8_t name[22] = {};
    uint8_t fields[8] = {};
    ReadInto(file, name, sizeof name);
    ReadInto(file, fields, sizeof fields);
    sample.name = PrintableText(name, sizeof name, 0);
    sample.length = WordCountInBytes(fields);
    if (sample.length != 0) sample.length -= 2;
    sample.finetune = static_cast<int8_t>(static_cast<uint8_t>(fields[2] << 4)) >> 4;
    sample.volume = fields[3];
    sample.repeatStart = WordCountInBytes(fields + 4);
    sample.repeatLength = WordCountInBytes(fields + 6);

    if (sample.volume > 64) invalid = true;
    if (sample.length == 0) return;
    if (sample.repeatStart == 0 && sample.repeatLength == 2) {
        sample.repeatLength = 0;  // the usual mark of a one-shot sample
    } else if (sample.repeatLength != 0) {
        if (sample.repeatStart < 2) invalid = true;
        sample.repeatStart -= 2;  // the loop counts from the data's skipped start
        if (sample.repeatStart + sample.repeatLength > sample.length) invalid = true;
    }
}

void ReadOrders(FILE* file, ModSong& song, bool& invalid) {
    uint8_t bytes[2] = {};
    ReadInto(file, bytes, sizeof bytes);
    song.songLength = bytes[0];
    if (song.songLength == 0 || song.songLength > kOrderSlots) invalid = true;
    ReadInto(file, song.orders.data(), song.orders.size());
    uint8_t highest = 0;
    for (uint8_t entry : song.orders) {
        if (entry >= kOrderSlots) invalid = true;
        highest = std::max(highest, entry);
    }
    song.patternCount = highest + 1;
}

// The sample data start 4 bytes before their usual place: the seek counts the
// patterns from the signature's offset, not from the end of the signature.
void ReadSampleData(FILE* file, ModSong& song) {
    std::fseek(file, kSignatureOffset + static_cast<long>(song.patternCount * kModPatternBytes), SEEK_SET);
    for (ModSample& sample : song.samples) {
        if (sample.length == 0) continue;
        uint8_t skipped[2];
        ReadInto(file, skipped, sizeof skipped);
        std::vector<int8_t> data(sample.length, 0);
        ReadInto(file, data.data(), data.size());
        sample.SetData(data);
    }
}

struct ModChannel {
    int sample = 0;
    int volume = 0;  // 0..64
    int period = 0;
    size_t position = 0;
    bool looping = false;
    bool active = false;
    bool silenced = true;
    int slide = 0;
};

class ModReplay {
public:
    ModReplay(const ModSong& song, int rate)
        : song_(song),
          rate_(rate),
          tempoBase_(static_cast<uint32_t>(rate_) * 3932160u),
          step_(tempoBase_ / (125 * 24)),
          modPattern_(song.orders[0]) {}

    // Plays the song until it ends, the module is full or a pattern break
    // beyond the last row stops it; returns false for the last. The lines go
    // into `module` when one is given; without one only the timing is followed.
    bool Run(Module* module) {
        module_ = module;
        int produced = 0;
        int current = 0;
        uint8_t line = 0;
        while (!ended_ && !invalid_) {
            if (line == 0) {
                if (produced == kPatterns) break;
                if (produced > 0 && module_) {
                    module_->CreatePattern(produced);
                    module_->patternList[produced] = static_cast<uint8_t>(produced);
                    module_->patternListLength = static_cast<uint16_t>(produced + 1);
                }
                current = produced++;
            }
            PatternLine* out = nullptr;
            if (module_) {
                module_->patterns[current].length = static_cast<uint16_t>(line + 1);
                out = &module_->patterns[current].lines[line];
            }
            for (int half = 0; half < 2; ++half) {
                if (timer_ < 1) {
                    if (tickCounter_ == 0) {
                        ReadRow();
                        tickCounter_ = speed_;
                    }
                    timer_ += static_cast<int32_t>(step_);
                }
                if (half == 0 && out) WriteCells(*out);
                timer_ -= kHalfTick;
                if (timer_ < 1) EndTick();
            }
            ++line;
        }
        return !invalid_;
    }

private:
    void ReadRow() {
        if (row_ >= kRows) return;  // only after a refused break, as the replay stops
        const uint8_t* cell = &song_.patterns[modPattern_ * kModPatternBytes + static_cast<size_t>(row_) * 16];
        for (int c = 0; c < kChannels; ++c, cell += 4) {
            ModChannel& ch = channels_[c];
            int sampleNumber = (cell[0] & 0xF0) | (cell[2] >> 4);
            int period = ((cell[0] & 0x0F) << 8) | cell[1];
            int effect = cell[2] & 0x0F;
            int param = cell[3];
            int hi = param >> 4;
            int lo = param & 0x0F;
            ch.slide = 0;
            if (period != 0) {
                // A note without a sample number restarts the previous sample.
                if (sampleNumber != 0) ch.sample = std::min(sampleNumber, kSampleSlots) - 1;
                const ModSample& sample = song_.samples[ch.sample];
                ch.position = 0;
                ch.volume = sample.volume;
                ch.period = period;
                ch.looping = false;
                ch.silenced = false;
                ch.active = sample.length != 0;
            }
            switch (effect) {
                case 0xA:
                    ch.slide = hi != 0 ? hi : -lo;
                    break;
                case 0xC:
                    ch.volume = std::min(param, 64);
                    break;
                case 0xD:
                    breakRow_ = hi * 10 + lo;
                    breakPending_ = true;
                    if (breakRow_ >= kRows) invalid_ = true;
                    break;
                case 0xF:
                    if (param > 32) {
                        step_ = tempoBase_ / static_cast<uint32_t>(param * 24);
                    } else {
                        speed_ = param != 0 ? param : 1;
                    }
                    break;
                default:
                    break;
            }
        }
    }

    void EndTick() {
        for (ModChannel& ch : channels_) ch.volume = std::clamp(ch.volume + ch.slide, 0, 64);
        if (--tickCounter_ != 0) return;
        ++row_;
        if (breakPending_) {
            row_ = breakRow_;
            breakPending_ = false;
        } else if (row_ < kRows) {
            return;
        } else {
            row_ = 0;
        }
        ++orderPosition_;
        if (orderPosition_ < song_.songLength) {
            modPattern_ = song_.orders[orderPosition_];
        } else {
            ended_ = true;
        }
    }

    // Plays `count` sample values and returns the loudest of them.
    static uint8_t PlayValues(ModChannel& ch, const ModSample& sample, long count) {
        uint8_t peak = 0;
        while (count > 0) {
            if (!ch.looping) {
                size_t take = std::min<size_t>(static_cast<size_t>(count), sample.length - ch.position);
                peak = std::max(peak, sample.Peak(ch.position, ch.position + take));
                ch.position += take;
                count -= static_cast<long>(take);
                if (ch.position < sample.length) continue;
                if (sample.repeatLength == 0) {
                    ch.active = false;
                    break;
                }
                ch.position = sample.repeatStart;
                ch.looping = true;
            } else {
                size_t loopEnd = size_t{sample.repeatStart} + sample.repeatLength;
                if (count >= sample.repeatLength) {
                    // Whole turns of the loop visit every value and end where they began.
                    peak = std::max(peak, sample.Peak(sample.repeatStart, loopEnd));
                    count %= sample.repeatLength;
                    continue;
                }
                size_t take = std::min<size_t>(static_cast<size_t>(count), loopEnd - ch.position);
                peak = std::max(peak, sample.Peak(ch.position, ch.position + take));
                ch.position += take;
                count -= static_cast<long>(take);
                if (ch.position == loopEnd) ch.position = sample.repeatStart;
            }
        }
        return peak;
    }

    void WriteCells(PatternLine& line) {
        for (int c = 0; c < kChannels; ++c) {
            ModChannel& ch = channels_[c];
            int peak = 0;
            if (ch.active) {
                long count = static_cast<long>(kAmigaClock / (ch.period * 2.0) / rate_);
                peak = PlayValues(ch, song_.samples[ch.sample], count);
            }
            uint8_t volume = kVolumeTable[(peak * ch.volume * 63) >> 13];
            if (volume == 0 && ch.silenced) continue;
            // An inactive channel keeps the pitch of its last note.
            float frequency = static_cast<float>(kAmigaClock) / (static_cast<float>(ch.period) * 32.0f);
            NoteAndDetune tone = FrequencyToNote(frequency, module_->frequencyDivider, module_->chipType);
            line.note[c] = tone.note;
            line.detune[c] = volume != 0 ? tone.detune : 0;
            line.instrument[c] = 0;
            line.volume[c] = volume;
            if (volume == 0) ch.silenced = true;
        }
    }

    const ModSong& song_;
    Module* module_ = nullptr;
    const int rate_;
    const uint32_t tempoBase_;
    uint32_t step_;  // output lines per MOD tick, 16.16
    int32_t timer_ = 0;
    int speed_ = 6;
    int tickCounter_ = 0;
    int row_ = 0;
    int orderPosition_ = 0;
    size_t modPattern_;
    bool breakPending_ = false;
    int breakRow_ = 0;
    bool ended_ = false;
    bool invalid_ = false;
    std::array<ModChannel, kChannels> channels_{};
};

std::unique_ptr<ModSong> ReadMod(FILE* file) {
    auto song = std::make_unique<ModSong>();
    std::fseek(file, 0, SEEK_SET);
    uint8_t name[20] = {};
    ReadInto(file, name, sizeof name);
    // The name ends at the digit zero as well as at the end of its field.
    song->name = PrintableText(name, sizeof name, '0');
    bool invalid = false;
    for (ModSample& sample : song->samples) ReadSampleRecord(file, sample, invalid);
    ReadOrders(file, *song, invalid);
    if (invalid) throw Exception("ImportMod(): Invalid MOD header");
    ReadSampleData(file, *song);
    song->patterns.assign(song->patternCount * kModPatternBytes, 0);
    std::fseek(file, kPatternOffset, SEEK_SET);
    ReadInto(file, song->patterns.data(), song->patterns.size());

    // How far the replay gets depends on the tick rate, which is chosen later:
    // a file refused at both rates is refused now, one refused at a single
    // rate once that rate is chosen.
    for (uint8_t chipType : {kChipNtsc, kChipPal}) {
        song->refusedBreak[chipType] = !ModReplay(*song, TickRate(chipType)).Run(nullptr);
    }
    if (song->refusedBreak[kChipNtsc] && song->refusedBreak[kChipPal]) RefuseBreak();
    return song;
}

}  // namespace

bool ImportMod(Module& module, FILE* file, const std::string&, ImportOptionsProvider& options) {
    const std::unique_ptr<ModSong> song = ReadMod(file);

    ModImportOptions proposal;
    proposal.name = song->name;
    for (const ModSample& sample : song->samples) proposal.sampleNames.push_back(sample.name);
    std::optional<ModImportOptions> chosen = options.ChooseModOptions(proposal);
    if (!chosen) return false;
    RequireChipSettings(chosen->chip, "ImportMod");
    if (song->refusedBreak[chosen->chip.chipType]) RefuseBreak();

    module.NewModule(chosen->chip);
    module.title = song->name;
    // One sample name a line: when the notes are cut to what a module file
    // holds, they keep whole names.
    std::string sampleText;
    for (const ModSample& sample : song->samples) sampleText += sample.name + "\n";
    module.notes = sampleText;

    PatternLine& first = module.patterns[0].lines[0];
    first.note = {kNoteNull, kNoteNull, kNoteNull, kFirstNoiseNote + 6};  // "WLo" on the noise channel
    first.detune.fill(0);
    first.instrument.fill(0);
    first.volume.fill(0);

    // At this tick rate the replay meets no refused break: that was settled above.
    ModReplay(*song, TickRate(module.chipType)).Run(&module);
    first.command = kCommandSP;
    first.commandParam = 8;  // one tick per line
    return true;
}

}  // namespace sondrel
