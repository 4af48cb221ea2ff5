#include "files/module_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>

#include "files/file_stream.h"
#include "files/iff_parser.h"
#include "files/iff_writer.h"
#include "files/safe_file_writer.h"
#include "model/exception.h"
#include "model/notes.h"
#include "model/storable_text.h"

namespace sondrel {

namespace {

constexpr uint8_t kFormatVersion = 2;
constexpr uint32_t kHeadSize = 40;
constexpr uint32_t kHeadExtensionSize = 4;
constexpr uint32_t kPresenceOffset = 8;
constexpr uint32_t kInstrumentRecordSize = 15;
constexpr uint32_t kPatternRecordSize = 6;
constexpr int kMaxDetune = 99;
// The block after the pattern lines that names a chip other than the Sega
// one; files of the Sega chip don't have it, so they read as they always did.
constexpr char kChipBlock[] = "CHIP";

// Flag byte of a stored line.
constexpr uint8_t kLineCommandMask = 0x03;
constexpr uint8_t kLineNoteBit0 = 0x04;  // channel c's note present: kLineNoteBit0 << c
constexpr uint8_t kLineCommands01 = 0x40;
constexpr uint8_t kLineCommands23 = 0x80;

constexpr char kLegacyMagic[] = "SDRLTK  ";
constexpr long kModSignatureOffset = 1080;
constexpr std::array<const char*, 3> kModSignatures = {"M.K.", "M!K!", "4CHN"};
constexpr uint8_t kMidiHeader[8] = {'M', 'T', 'h', 'd', 0, 0, 0, 6};

bool PatternPresent(const uint8_t* bitmap, int pattern) { return (bitmap[pattern >> 3] >> (pattern & 7)) & 1; }

void SplitPath(const std::string& path, std::string& directory, std::string& fileName) {
    size_t separator = path.find_last_of("/\\");
    if (separator == std::string::npos) {
        directory.clear();
        fileName = path;
        return;
    }
    directory = path.substr(0, std::max<size_t>(separator, 1));
    fileName = path.substr(separator + 1);
}

// ---- Saving ----

void WriteHead(IFFWriter& writer, const Module& module) {
    uint8_t head[kHeadSize] = {};
    head[0] = kFormatVersion;
    head[1] = module.repeatPosition;
    head[4] = static_cast<uint8_t>(module.patternListLength & 0xFF);
    head[5] = static_cast<uint8_t>(module.patternListLength >> 8);
    head[6] = module.chipType;
    head[7] = module.frequencyDivider;
    for (int p = 0; p < kPatterns; ++p) {
        if (module.patterns[p].used) head[kPresenceOffset + (p >> 3)] |= static_cast<uint8_t>(1 << (p & 7));
    }
    uint8_t extension[kHeadExtensionSize] = {module.initialSpeed, 0, 0, 0};
    writer.StartBlock("HEAD");
    writer.WriteData(head, sizeof head);
    writer.WriteData(extension, sizeof extension);
    writer.WriteData(module.patternList.data(), std::min<uint32_t>(module.patternListLength, kMaxPatternList));
    writer.EndBlock();
}

void WriteInfo(IFFWriter& writer, const Module& module) {
    writer.StartBlock("INFO");
    writer.WriteString(module.title);
    writer.WriteString(module.author);
    writer.WriteString(module.notes);
    writer.EndBlock();
}

void WriteInstruments(IFFWriter& writer, const Module& module) {
    writer.StartBlock("INST");
    for (const Instrument& instrument : module.instruments) {
        uint8_t record[kInstrumentRecordSize];
        record[0] = instrument.startVolume;
        std::copy(instrument.delay.begin(), instrument.delay.end(), record + 1);
        for (int i = 0; i < kEnvelopePhases; ++i) {
            record[5 + i] = static_cast<uint8_t>(instrument.vibratoStrength[i] * 4 + instrument.vibratoSpeed[i]);
            record[10 + i] = static_cast<uint8_t>(instrument.volumeAdd[i]);
        }
        writer.WriteData(record, sizeof record);
        writer.WriteString(instrument.name);
    }
    writer.EndBlock();
}

void WritePatternHeaders(IFFWriter& writer, const Module& module) {
    writer.StartBlock("PATS");
    for (const Pattern& pattern : module.patterns) {
        if (!pattern.used) continue;
        uint8_t record[kPatternRecordSize] = {
            static_cast<uint8_t>(pattern.length & 0xFF),
            static_cast<uint8_t>((pattern.tactEnabled[0] ? 1 : 0) | (pattern.tactEnabled[1] ? 2 : 0)),
            pattern.tactStart[0],
            pattern.tactInterval[0],
            pattern.tactStart[1],
            pattern.tactInterval[1],
        };
        writer.WriteData(record, sizeof record);
        writer.WriteString(pattern.name);
    }
    writer.EndBlock();
}

// Packs a line into out (at most 20 bytes) and returns the number of bytes used.
uint32_t EncodeLine(const PatternLine& line, uint8_t* out) {
    uint32_t n = 1;
    uint8_t flags = line.command & kLineCommandMask;
    if (flags) out[n++] = line.commandParam;
    for (int c = 0; c < kChannels; ++c) {
        if (line.note[c] == kNoteEmpty) continue;
        flags |= static_cast<uint8_t>(kLineNoteBit0 << c);
        out[n++] = line.note[c];
    }
    for (int c = 0; c < kChannels; ++c) {
        if (NoteHasInstrument(line.note[c])) out[n++] = static_cast<uint8_t>(line.detune[c]);
        if (NoteHasVolume(line.note[c])) out[n++] = static_cast<uint8_t>(line.instrument[c] * 16 + line.volume[c]);
    }
    if (line.channelCommand[0] || line.channelCommand[1]) {
        flags |= kLineCommands01;
        out[n++] = static_cast<uint8_t>(line.channelCommand[1] * 16 + line.channelCommand[0]);
    }
    if (line.channelCommand[2] || line.channelCommand[3]) {
        flags |= kLineCommands23;
        out[n++] = static_cast<uint8_t>(line.channelCommand[3] * 16 + line.channelCommand[2]);
    }
    for (int c = 0; c < kChannels; ++c) {
        if (line.channelCommand[c]) out[n++] = line.channelParam[c];
    }
    out[0] = flags;
    return n;
}

void WritePatternLines(IFFWriter& writer, const Module& module) {
    writer.StartBlock("PATT");
    for (const Pattern& pattern : module.patterns) {
        if (!pattern.used) continue;
        for (int l = 0; l < pattern.length && l < kMaxLines; ++l) {
            uint8_t packed[20];
            writer.WriteData(packed, EncodeLine(pattern.lines[l], packed));
        }
    }
    writer.EndBlock();
}

void WriteChip(IFFWriter& writer, const Module& module) {
    if (module.chipVariant == kVariantSega) return;
    writer.StartBlock(kChipBlock);
    const uint8_t record[2] = {module.chipVariant, 0};
    writer.WriteData(record, sizeof record);
    writer.EndBlock();
}

// ---- Loading ----

[[noreturn]] void Refuse(const char* what) { throw Exception(std::string("LoadModuleFile(): ") + what); }

uint8_t ReadByte(IFFParser& parser) {
    uint8_t value;
    parser.ReadData(&value, 1);
    return value;
}

// Reads HEAD and resets the module to the file's chip settings; returns the presence bitmap.
std::array<uint8_t, kPatterns / 8> ReadHead(IFFParser& parser, Module& module) {
    parser.MatchBlockStart("HEAD");
    uint8_t head[kHeadSize];
    parser.ReadData(head, sizeof head);
    uint8_t version = head[0];
    uint8_t repeatPosition = head[1];
    uint16_t reserved = static_cast<uint16_t>(head[2] | head[3] << 8);
    uint16_t listLength = static_cast<uint16_t>(head[4] | head[5] << 8);
    ChipSettings settings{head[7], head[6]};
    if (version == 0 || version > kFormatVersion) Refuse("Unknown format version");
    if (repeatPosition >= listLength) Refuse("Repeat position beyond the pattern list");
    if (listLength > kMaxPatternList) Refuse("Pattern list too long");
    if (settings.chipType > kChipPal || settings.frequencyDivider > kDivider2x) Refuse("Bad chip settings");
    if (reserved != 0) Refuse("Reserved header bytes set");

    uint8_t initialSpeed = kNewModuleSpeed;
    if (version >= 2) {
        uint8_t extension[kHeadExtensionSize];
        parser.ReadData(extension, sizeof extension);
        initialSpeed = extension[0];
    }
    module.NewModule(settings);
    module.patternListLength = listLength;
    parser.ReadData(module.patternList.data(), listLength);
    module.repeatPosition = repeatPosition;
    module.initialSpeed = initialSpeed;

    std::array<uint8_t, kPatterns / 8> presence;
    std::memcpy(presence.data(), head + kPresenceOffset, presence.size());
    return presence;
}

void ReadInfo(IFFParser& parser, Module& module) {
    parser.MatchBlockStart("INFO");
    parser.ReadString(module.title);
    parser.ReadString(module.author);
    parser.ReadString(module.notes);
}

void ReadInstruments(IFFParser& parser, Module& module) {
    parser.MatchBlockStart("INST");
    for (Instrument& instrument : module.instruments) {
        uint8_t record[kInstrumentRecordSize];
        parser.ReadData(record, sizeof record);
        instrument.startVolume = record[0];
        std::copy(record + 1, record + 5, instrument.delay.begin());
        for (int i = 0; i < kEnvelopePhases; ++i) {
            instrument.vibratoSpeed[i] = record[5 + i] & 3;
            instrument.vibratoStrength[i] = record[5 + i] >> 2;
            if (instrument.vibratoStrength[i] > 15) Refuse("Vibrato strength out of range");
            instrument.volumeAdd[i] = static_cast<int8_t>(record[10 + i]);
        }
        parser.ReadString(instrument.name);
    }
}

void ReadPatternHeaders(IFFParser& parser, Module& module, const uint8_t* presence) {
    parser.MatchBlockStart("PATS");
    for (int p = 0; p < kPatterns; ++p) {
        if (!PatternPresent(presence, p)) {
            // The fresh module's pattern 0 counts only when the file has it.
            module.patterns[p].used = 0;
            continue;
        }
        module.CreatePattern(p);
        Pattern& pattern = module.patterns[p];
        uint8_t record[kPatternRecordSize];
        parser.ReadData(record, sizeof record);
        pattern.length = record[0] == 0 ? kMaxLines : record[0];
        if (record[1] >= 4) Refuse("Bad pattern flags");
        pattern.tactEnabled = {static_cast<uint8_t>(record[1] & 1), static_cast<uint8_t>(record[1] >> 1)};
        pattern.tactStart = {record[2], record[4]};
        pattern.tactInterval = {record[3], record[5]};
        parser.ReadString(pattern.name);
    }
}

PatternLine DecodeLine(IFFParser& parser) {
    PatternLine line{};
    line.Clear();
    uint8_t flags = ReadByte(parser);
    line.command = flags & kLineCommandMask;
    if (line.command) line.commandParam = ReadByte(parser);
    for (int c = 0; c < kChannels; ++c) {
        if (flags & (kLineNoteBit0 << c)) line.note[c] = ReadByte(parser);
    }
    for (int c = 0; c < kChannels; ++c) {
        if (NoteHasInstrument(line.note[c])) {
            line.detune[c] = static_cast<int8_t>(ReadByte(parser));
            if (line.detune[c] < -kMaxDetune || line.detune[c] > kMaxDetune) Refuse("Detune out of range");
        }
        if (NoteHasVolume(line.note[c])) {
            uint8_t nibbles = ReadByte(parser);
            line.instrument[c] = nibbles >> 4;
            line.volume[c] = nibbles & 15;
        }
    }
    if (flags & kLineCommands01) {
        uint8_t commands = ReadByte(parser);
        line.channelCommand[0] = commands & 15;
        line.channelCommand[1] = commands >> 4;
    }
    if (flags & kLineCommands23) {
        uint8_t commands = ReadByte(parser);
        line.channelCommand[2] = commands & 15;
        line.channelCommand[3] = commands >> 4;
    }
    for (int c = 0; c < kChannels; ++c) {
        if (line.channelCommand[c]) line.channelParam[c] = ReadByte(parser);
    }
    return line;
}

void ReadPatternLines(IFFParser& parser, Module& module) {
    parser.MatchBlockStart("PATT");
    for (Pattern& pattern : module.patterns) {
        if (!pattern.used) continue;
        for (int l = 0; l < pattern.length; ++l) pattern.lines[l] = DecodeLine(parser);
    }
}

// The chip block, when one follows the lines; anything else there is ignored.
void ReadChip(IFFParser& parser, Module& module) {
    const uint32_t start = parser.Position();
    const std::optional<BlockHeader> header = parser.TryReadBlockHeader();
    if (!header || std::memcmp(header->id.data(), kChipBlock, 4) != 0) {
        parser.RestorePosition(start);
        return;
    }
    uint8_t record[2];
    if (!parser.TryReadNextBytes(record, sizeof record)) Refuse("Chip block cut short");
    if (record[0] >= kChipVariants) Refuse("Unknown chip variant");
    module.chipVariant = record[0];
}

}  // namespace

std::string RecordedPath(const Module& module) {
    if (module.fileName.empty()) return {};
    if (module.directory.empty()) return module.fileName;
    if (module.directory.back() == '/' || module.directory.back() == '\\') return module.directory + module.fileName;
    return module.directory + '/' + module.fileName;
}

void SaveModule(Module& module, const std::string& path) {
    // Checked before the file is opened: a module that would not load back
    // never replaces a good file.
    ForEachText(module, [](const std::string& field, const std::string& text) {
        const std::string reason = WhyStringWontReadBack(text);
        if (!reason.empty()) throw Exception("SaveModule(): Can't store the " + field + ": " + reason);
    });
    SafeFileWriter file(path);
    file.Write(kModuleMagic, 8);
    IFFWriter writer;
    writer.Attach(file.Stream());
    WriteHead(writer, module);
    WriteInfo(writer, module);
    WriteInstruments(writer, module);
    WritePatternHeaders(writer, module);
    WritePatternLines(writer, module);
    WriteChip(writer, module);
    writer.Close();
    file.Commit();
    SplitPath(path, module.directory, module.fileName);
}

void LoadModuleFile(Module& module, FILE* file) {
    IFFParser parser;
    parser.Open(file);
    std::array<uint8_t, kPatterns / 8> presence = ReadHead(parser, module);
    ReadInfo(parser, module);
    ReadInstruments(parser, module);
    ReadPatternHeaders(parser, module, presence.data());
    ReadPatternLines(parser, module);
    ReadChip(parser, module);
    // Whatever follows is ignored.
    parser.Close();
}

FileKind DetectFileKind(FILE* file, const std::string& path) {
    long length = StreamLength(file);
    if (length < 4) throw Exception("DetectFileKind(): File too short");
    uint8_t start[8] = {};
    std::fseek(file, 0, SEEK_SET);
    if (std::fread(start, 1, length < 8 ? 4 : 8, file) < 4) throw FileIOException("DetectFileKind(): Can't read");

    // Later tests win over earlier ones.
    FileKind kind = FileKind::Unknown;
    char signature[4];
    if (length >= kModSignatureOffset + 4 && std::fseek(file, kModSignatureOffset, SEEK_SET) == 0 &&
        std::fread(signature, 1, 4, file) == 4) {
        for (const char* mod : kModSignatures) {
            if (std::memcmp(signature, mod, 4) == 0) kind = FileKind::Mod;
        }
    }
    if ((start[0] == 0x1F && start[1] == 0x8B) || std::memcmp(start, "Vgm ", 4) == 0) kind = FileKind::Vgm;
    if (std::memcmp(start, kLegacyMagic, 8) == 0) kind = FileKind::LegacyModule;
    if (std::memcmp(start, kModuleMagic, 8) == 0) kind = FileKind::CurrentModule;
    if (std::memcmp(start, kMidiHeader, 8) == 0) kind = FileKind::Midi;
    if (kind != FileKind::Unknown) return kind;

    // Only the exact upper-case extensions count: "x.bas" is not a listing.
    std::string directory, fileName;
    SplitPath(path, directory, fileName);
    size_t point = fileName.rfind('.');
    if (point != std::string::npos) {
        std::string extension = fileName.substr(point + 1);
        if (extension == "BAS" || extension == "BAM") return FileKind::Basic;
    }
    return FileKind::Unknown;
}

FileKind DetectFileKind(const std::string& path) {
    return DetectFileKind(OpenRegularFile(path).get(), path);
}

namespace {

std::unique_ptr<Module> LoadOpenFile(UniqueFile file, const std::string& path, FileKind kind,
                                     ImportOptionsProvider& options) {
    std::fseek(file.get(), 0, SEEK_SET);
    auto fresh = std::make_unique<Module>();
    bool loaded = false;
    switch (kind) {
        case FileKind::CurrentModule:
            std::fseek(file.get(), 8, SEEK_SET);
            LoadModuleFile(*fresh, file.get());
            loaded = true;
            break;
        case FileKind::LegacyModule:
            throw Exception("LoadAnyFile(): Modules of the old raw format can't be loaded");
        case FileKind::Mod:
            loaded = ImportMod(*fresh, file.get(), path, options);
            break;
        case FileKind::Vgm:
            // The importer opens the file itself: it may be gzip-compressed.
            file.reset();
            loaded = ImportVgm(*fresh, path, options);
            break;
        case FileKind::Midi:
            loaded = ImportMidi(*fresh, file.get(), path, options);
            break;
        case FileKind::Basic:
            loaded = ImportBasic(*fresh, file.get(), path, options);
            break;
        case FileKind::Unknown:
            throw Exception("LoadAnyFile(): Unknown file type");
    }
    if (!loaded) return nullptr;
    if (kind == FileKind::CurrentModule) {
        SplitPath(path, fresh->directory, fresh->fileName);
    } else {
        fresh->directory.clear();
        fresh->fileName.clear();
        options.TextsChanged(MakeModuleTextsStorable(*fresh));
    }
    return fresh;
}

// Opens the file and loads it as the kind given or, with detect, as the kind its content says.
std::unique_ptr<Module> OpenAndLoad(const std::string& path, FileKind kind, bool detect,
                                    ImportOptionsProvider& options) {
    UniqueFile file = OpenRegularFile(path);
    if (detect) kind = DetectFileKind(file.get(), path);
    return LoadOpenFile(std::move(file), path, kind, options);
}

bool MoveInto(Module& module, std::unique_ptr<Module> loaded) {
    if (!loaded) return false;
    module = std::move(*loaded);
    return true;
}

}  // namespace

bool LoadFileAs(Module& module, const std::string& path, FileKind kind, ImportOptionsProvider& options) {
    return MoveInto(module, OpenAndLoad(path, kind, false, options));
}

bool LoadAnyFile(Module& module, const std::string& path, ImportOptionsProvider& options) {
    return MoveInto(module, OpenAndLoad(path, FileKind::Unknown, true, options));
}

std::unique_ptr<Module> LoadNewModule(const std::string& path, ImportOptionsProvider& options, FileKind kind) {
    return OpenAndLoad(path, kind, kind == FileKind::Unknown, options);
}

}  // namespace sondrel
