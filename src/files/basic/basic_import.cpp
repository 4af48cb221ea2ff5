#include "files/basic/basic_import.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <vector>

#include "files/basic/basic_interpreter.h"
#include "files/basic/basic_listing.h"
#include "files/import/importers.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {

namespace {

constexpr size_t kMaxFileBytes = 4 * 1024 * 1024;
constexpr long kMaxTicks = static_cast<long>(kPatterns) * kMaxLines;  // one line per tick
constexpr uint8_t kOneTickPerLine = 8;                                 // "SP" 1.0

std::vector<uint8_t> ReadStream(FILE* file) {
    std::vector<uint8_t> bytes;
    uint8_t buffer[16384];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        bytes.insert(bytes.end(), buffer, buffer + got);
        if (bytes.size() > kMaxFileBytes) throw ParseException("ImportBasic(): File too large");
    }
    if (std::ferror(file)) throw FileIOException("ImportBasic(): Read failed");
    return bytes;
}

using Slot = BasicImportOptions::Slot;

Slot SlotOf(BasicSoundKind kind) {
    switch (kind) {
        case BasicSoundKind::PlayNormal: return BasicImportOptions::kPlayNormal;
        case BasicSoundKind::PlayStaccato: return BasicImportOptions::kPlayStaccato;
        case BasicSoundKind::PlayLegato: return BasicImportOptions::kPlayLegato;
        case BasicSoundKind::Beep: return BasicImportOptions::kBeep;
        case BasicSoundKind::Sound:
        case BasicSoundKind::Noise: break;
    }
    return BasicImportOptions::kSound;
}

constexpr const char* kSlotNames[] = {"PLAY normal", "PLAY staccato", "PLAY legato", "SOUND", "BEEP", "Pause"};

// The note nearest to a frequency that the tone channels can play: sounds
// beyond the chip's range move by whole octaves until they fit.
NoteAndDetune PlayableNote(double frequency, ChipSettings chip) {
    NoteAndDetune note = FrequencyToNote(frequency, chip.frequencyDivider, chip.chipType);
    for (int i = 0; i < 24; ++i) {
        if (note.note < kFirstPlayableTone) frequency *= 2.0;
        else if (note.note > kLastPlayableTone) frequency /= 2.0;
        else break;
        note = FrequencyToNote(frequency, chip.frequencyDivider, chip.chipType);
    }
    return note;
}

class ModuleWriter {
public:
    ModuleWriter(Module& module, const BasicImportOptions& options) : module_(module), options_(options) {}

    void Write(const BasicRunResult& run) {
        rate_ = module_.TicksPerSecond();
        for (int channel = 0; channel < kChannels; ++channel) WriteChannel(run, channel);
        long lines = std::max(1L, lastTick_ + 1);
        int patterns = static_cast<int>((lines + kMaxLines - 1) / kMaxLines);
        for (int p = 0; p < patterns; ++p) {
            if (p > 0) module_.CreatePattern(p);
            module_.patterns[p].length = static_cast<uint16_t>(std::min<long>(kMaxLines, lines - p * kMaxLines));
            module_.patternList[p] = static_cast<uint8_t>(p);
        }
        module_.patternListLength = static_cast<uint16_t>(patterns);
        for (const Cell& cell : cells_) {
            PatternLine& line = module_.patterns[cell.tick / kMaxLines].lines[cell.tick % kMaxLines];
            line.note[cell.channel] = cell.note;
            line.detune[cell.channel] = cell.detune;
            line.instrument[cell.channel] = cell.instrument;
            line.volume[cell.channel] = cell.volume;
        }
        PatternLine& first = module_.patterns[0].lines[0];
        first.command = kCommandSP;
        first.commandParam = kOneTickPerLine;
    }

private:
    struct Cell {
        long tick;
        int channel;
        uint8_t note;
        int8_t detune;
        uint8_t instrument;
        uint8_t volume;
    };

    // Times become ticks by rounding each one on its own, so lengths never drift.
    long Tick(double seconds) const {
        double ticks = seconds * rate_;
        if (!(ticks < static_cast<double>(kMaxTicks))) return kMaxTicks;
        return std::max(0L, std::lround(ticks + 1e-9));
    }

    void Put(long tick, int channel, NoteAndDetune note, uint8_t instrument, uint8_t volume) {
        if (tick >= kMaxTicks) return;
        cells_.push_back({tick, channel, note.note, note.detune, static_cast<uint8_t>(instrument & 15), volume});
        lastTick_ = std::max(lastTick_, tick);
    }

    void Silence(long tick, int channel) {
        Put(tick, channel, {kNoteNull, 0}, options_.instruments[BasicImportOptions::kPause], 0);
    }

    void WriteChannel(const BasicRunResult& run, int channel) {
        long silenceAt = -1;  // where the sounding note ends
        for (const BasicSound& sound : run.sounds) {
            if (sound.channel != channel) continue;
            long start = Tick(sound.start);
            if (start >= kMaxTicks) break;
            long end = std::max(Tick(sound.end), start + 1);
            if (silenceAt >= 0 && silenceAt < start) Silence(silenceAt, channel);
            NoteAndDetune note = channel == kNoiseChannel
                                     ? NoteAndDetune{static_cast<uint8_t>(kFirstNoiseNote + (sound.noiseSource & 7)), 0}
                                     : PlayableNote(sound.frequency, module_.Settings());
            Put(start, channel, note, options_.instruments[SlotOf(sound.kind)], sound.volume);
            silenceAt = end;
        }
        if (silenceAt >= 0) Silence(silenceAt, channel);
    }

    Module& module_;
    const BasicImportOptions& options_;
    int rate_ = 60;
    long lastTick_ = -1;
    std::vector<Cell> cells_;
};

void NameInstruments(Module& module, const BasicImportOptions& options) {
    for (int slot = 0; slot < static_cast<int>(options.instruments.size()); ++slot) {
        std::string& name = module.instruments[options.instruments[slot] & 15].name;
        if (!name.empty()) name += "/";
        name += kSlotNames[slot];
    }
}

std::string Summary(const BasicRunResult& run) {
    std::array<bool, kChannels> used{};
    for (const BasicSound& sound : run.sounds) used[sound.channel] = true;
    std::string text = "Imported from a BASIC listing: " + std::to_string(run.sounds.size()) + " sounds";
    int channels = static_cast<int>(std::count(used.begin(), used.end(), true));
    if (channels > 1) text += " on " + std::to_string(channels) + " channels";
    text += ".";
    if (run.limitReached) text += " The program ran too long and was cut short.";
    if (!run.skippedLines.empty()) {
        text += " Statements skipped on line";
        text += run.skippedLines.size() == 1 ? " " : "s ";
        constexpr size_t kListed = 12;
        for (size_t i = 0; i < run.skippedLines.size() && i < kListed; ++i)
            text += (i ? ", " : "") + std::to_string(run.skippedLines[i]);
        text += run.skippedLines.size() > kListed ? " ..." : ".";
    }
    return text;
}

}  // namespace

bool ImportBasic(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& options) {
    std::vector<BasicLine> program = ReadBasicProgram(ReadStream(file));

    std::optional<BasicImportOptions> chosen = options.ChooseBasicOptions(BasicImportOptions{});
    if (!chosen) return false;
    RequireChipSettings(chosen->chip, "ImportBasic");

    module.NewModule(chosen->chip);
    BasicRunLimits limits;
    limits.maxSeconds = static_cast<double>(kMaxTicks) / module.TicksPerSecond();
    BasicRunResult run = RunBasicProgram(program, limits);

    module.title = std::filesystem::path(path).stem().string();
    module.notes = Summary(run);
    NameInstruments(module, *chosen);
    ModuleWriter(module, *chosen).Write(run);
    return true;
}

}  // namespace sondrel
