#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "files/module_test_support.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;
using test::Bytes;
using test::NewModule;

class Defaults : public ImportOptionsProvider {};

// Every note class on every channel, every command, a 256-line pattern, a 256-entry
// list, no pattern 0 and strings with two-byte prefixes. Bytes that the file does not
// store for a cell stay 0, as a load gives them.
std::unique_ptr<Module> RichModule() {
    static const uint8_t kNotes[] = {0, 45, 119, 155, 200, kNoteNull, 247, 250, 251, kLastNoiseNote, kNoteEmpty};
    auto owned = NewModule({}, "Title");
    Module& m = *owned;
    m.frequencyDivider = kDivider2x;
    m.chipType = kChipPal;
    m.initialSpeed = 37;
    m.notes = std::string(200, 'n');
    m.patternListLength = kMaxPatternList;
    for (int i = 0; i < kMaxPatternList; ++i) m.patternList[i] = static_cast<uint8_t>(i % 2 ? 2 : 255);
    m.repeatPosition = 255;
    m.patterns[0].used = 0;
    for (int p : {2, 7, 255}) m.CreatePattern(p);
    m.patterns[7] = {.used = 1, .length = 1, .name = std::string(130, 'q'), .tactEnabled = {0, 1},
                     .lines = m.patterns[2].lines};
    m.patterns[255] = {.used = 1, .length = 256, .name = "Long", .tactEnabled = {1, 1}, .tactStart = {3, 5},
                       .tactInterval = {12, 6}, .lines = m.patterns[2].lines};
    for (int p : {2, 255}) {
        for (int l = 0; l < m.patterns[p].length; ++l) {
            PatternLine& line = m.patterns[p].lines[l];
            for (int c = 0; c < kChannels; ++c) {
                uint8_t note = line.note[c] = kNotes[(l * 7 + c * 3 + p) % std::size(kNotes)];
                if (NoteHasInstrument(note)) line.detune[c] = static_cast<int8_t>((l * 13 + c) % 199 - 99);
                if (NoteHasVolume(note)) line.instrument[c] = (l + c) % 16, line.volume[c] = (l * 3 + c) % 16;
                if ((l + c) % 4 == 0) line.channelCommand[c] = l % 15 + 1, line.channelParam[c] = l ^ (c * 77);
            }
            line.command = l % 4;
            if (line.command) line.commandParam = static_cast<uint8_t>(255 - l);
        }
    }
    for (int i = 0; i < kInstruments; ++i) {
        Instrument& in = m.instruments[i];
        in.name = i == 3 ? std::string(128, 'i') : std::string("Inst ") + static_cast<char>('A' + i);
        in.startVolume = static_cast<uint8_t>(255 - i * 9);
        in.delay = {uint8_t(i * 16), 1, 2, 255};
        for (int ph = 0; ph < kEnvelopePhases; ++ph) {
            in.vibratoSpeed[ph] = (i + ph) % 4, in.vibratoStrength[ph] = (i * 5 + ph) % 16;
            in.volumeAdd[ph] = static_cast<int8_t>(i * 17 - ph * 40);
        }
    }
    return owned;
}

void ExpectSameModule(const Module& a, const Module& b) {
    for (int p = 0; p < kPatterns; ++p) EXPECT_TRUE(a.patterns[p] == b.patterns[p]) << "pattern " << p;
    EXPECT_TRUE(a == b);
}

// Offset of a block's data in a saved file.
size_t BlockData(const Bytes& file, const char* id) {
    auto it = std::search(file.begin(), file.end(), id, id + 4);
    EXPECT_NE(it, file.end()) << id;
    return static_cast<size_t>(it - file.begin()) + 8;
}

TEST(ModuleFile, RoundTripKeepsEveryFieldAndEveryByte) {
    test::ScratchDir dir;
    auto saved = RichModule();
    SaveModule(*saved, (dir / "a.sdrltk").string());
    EXPECT_EQ(saved->fileName, "a.sdrltk");
    EXPECT_EQ(RecordedPath(*saved), (dir / "a.sdrltk").string());
    Bytes first = test::ReadBytes(dir / "a.sdrltk");
    EXPECT_EQ(std::string(first.begin(), first.begin() + 12), "SDRLTK-2HEAD");
    EXPECT_EQ(first[20] | first[21] << 8, 256);                          // list length
    EXPECT_EQ(first[BlockData(first, "PATS") + 7 + (6 + 2 + 130)], 0);   // pattern 255 has 256 lines

    Defaults options;
    auto loaded = NewModule();
    ASSERT_TRUE(LoadAnyFile(*loaded, (dir / "a.sdrltk").string(), options));
    ExpectSameModule(*loaded, *saved);
    SaveModule(*loaded, (dir / "b.sdrltk").string());
    EXPECT_EQ(test::ReadBytes(dir / "b.sdrltk"), first);

    // Version 1 has no extension bytes after the 40-byte header and plays at speed 48.
    first[16] = 1;
    first.erase(first.begin() + 16 + 40, first.begin() + 16 + 44);
    test::WriteBytes(dir / "a.sdrltk", first);
    ASSERT_TRUE(LoadAnyFile(*loaded, (dir / "a.sdrltk").string(), options));
    EXPECT_EQ(loaded->initialSpeed, kNewModuleSpeed);
    loaded->initialSpeed = saved->initialSpeed;
    ExpectSameModule(*loaded, *saved);
}

TEST(ModuleFile, OnlyAChipOtherThanTheSegaOneAddsABlockAfterTheLines) {
    test::ScratchDir dir;
    Defaults options;
    const std::string path = (dir / "demo.sdrltk").string();
    // The committed demo song was saved before a module could name its chip: it saves the same.
    auto demo = test::LoadDemo();
    ASSERT_NE(demo, nullptr);
    EXPECT_EQ(demo->chipVariant, kVariantSega);
    SaveModule(*demo, path);
    const Bytes sega = test::ReadBytes(path);
    EXPECT_EQ(sega, test::ReadBytes(test::SourceDir() / "data" / "demo.sdrltk"));

    Bytes withBlock;
    for (uint8_t variant : {kVariantGameGear, kVariantTi}) {
        demo->chipVariant = variant;
        SaveModule(*demo, path);
        withBlock = test::ReadBytes(path);
        // A reader that stops after the lines finds the Sega file in front.
        Bytes expected = sega;
        if (expected.size() % 2) expected.push_back(0);
        const Bytes block = {'C', 'H', 'I', 'P', 2, 0, 0, 0, variant, 0};
        expected.insert(expected.end(), block.begin(), block.end());
        EXPECT_EQ(withBlock, expected);
        auto loaded = NewModule();
        ASSERT_TRUE(LoadAnyFile(*loaded, path, options));
        ExpectSameModule(*loaded, *demo);
    }

    const auto load = [&](const Bytes& bytes) {
        test::WriteBytes(path, bytes);
        auto loaded = NewModule();
        LoadAnyFile(*loaded, path, options);
        return loaded;
    };
    Bytes unknown = withBlock;
    unknown[unknown.size() - 2] = kChipVariants;
    EXPECT_THROW(load(unknown), Exception);
    EXPECT_THROW(load(Bytes(withBlock.begin(), withBlock.end() - 1)), Exception);
    // Other bytes after the lines are still ignored.
    Bytes other = test::Concat({sega, Bytes(sega.size() % 2, 0), {'J', 'U', 'N', 'K', 2, 0, 0, 0, kVariantTi, 0}});
    EXPECT_EQ(load(other)->chipVariant, kVariantSega);
}

TEST(ModuleFile, LinesStoreOnlyWhatTheirNotesAndCommandsAnnounce) {
    test::ScratchDir dir;
    auto m = NewModule();
    m->patterns[0].length = 3;
    m->patterns[0].lines[1] = {.note = {255, 255, 248, 255}, .instrument = {0, 0, 3}, .volume = {0, 0, 9}};
    m->patterns[0].lines[2] = {
            .note = {45, 160, kNoteEmpty, 251}, .detune = {-5}, .instrument = {2}, .volume = {15, 0, 0, 7},
            .channelCommand = {kChannelCommandVO, 0, 0, kChannelCommandPV}, .channelParam = {11, 0, 0, 22},
            .command = kCommandSP, .commandParam = 0x30};
    SaveModule(*m, (dir / "m.sdrltk").string());

    Bytes file = test::ReadBytes(dir / "m.sdrltk");
    size_t patt = BlockData(file, "PATT");
    const Bytes expected = {0x00,                      // empty line
                            0x10, 248, 0x39,           // noise on channel 2: no cell byte
                            0xED, 0x30, 45, 160, 251,  // flags, speed, the present notes
                            0xFB, 0x2F, 0x07,          // cell and nibble byte of 0, nibble byte of 3
                            0x02, 0x10, 11, 22};       // command numbers, then their parameters
    EXPECT_EQ(Bytes(file.begin() + static_cast<long>(patt), file.end()), expected);
    EXPECT_EQ(file[patt - 4] | file[patt - 3] << 8, static_cast<int>(expected.size()));

    auto loaded = NewModule();
    Defaults options;
    ASSERT_TRUE(LoadAnyFile(*loaded, (dir / "m.sdrltk").string(), options));
    ExpectSameModule(*loaded, *m);
}

TEST(ModuleFile, RefusalsAndTruncationLeaveTheModuleUntouched) {
    test::ScratchDir dir;
    auto m = NewModule();
    m->patterns[0].lines[0].note[0] = 45;
    std::string path = (dir / "good.sdrltk").string();
    SaveModule(*m, path);
    const Bytes good = test::ReadBytes(path);
    const size_t inst = BlockData(good, "INST"), pats = BlockData(good, "PATS"), patt = BlockData(good, "PATT");
    ASSERT_EQ(good[patt + 2], 0);  // the cell byte of the first line's note

    const auto sentinel = NewModule({}, "untouched");
    Defaults options;
    auto expectRefused = [&](const Bytes& bytes, const std::string& what) {
        SCOPED_TRACE(what);
        test::WriteBytes(path, bytes);
        auto target = NewModule({}, "untouched");
        EXPECT_THROW(LoadAnyFile(*target, path, options), Exception);
        EXPECT_TRUE(*target == *sentinel);
    };
    const std::tuple<const char*, size_t, unsigned char> patches[] = {
        {"version 3", 16, 3},          {"version 0", 16, 0},           {"repeat == length", 17, 1},
        {"reserved word", 19, 1},      {"list length 257", 21, 1},     {"chip type", 22, 2},
        {"divider", 23, 2},            {"vibrato strength", inst + 5, 16 << 2},
        {"pattern flags", pats + 1, 4}, {"detune 100", patt + 2, 100}, {"detune -100", patt + 2, 0x9C},
        {"block identifier", inst - 5, 'X'},
    };
    for (const auto& [what, offset, value] : patches) {
        Bytes bytes = good;
        bytes[offset] = value;
        expectRefused(bytes, what);
    }
    for (size_t cut = 0; cut < good.size(); cut += (cut < 64 || good.size() - cut < 64) ? 1 : 7) {
        expectRefused(Bytes(good.begin(), good.begin() + static_cast<long>(cut)), "cut at " + std::to_string(cut));
    }
    Bytes legacy = good;
    std::copy_n("SDRLTK  ", 8, legacy.begin());
    expectRefused(legacy, "old raw format");

    EXPECT_THROW(LoadAnyFile(*m, (dir / "absent.sdrltk").string(), options), Exception);
    EXPECT_THROW(SaveModule(*m, (dir / "absent" / "x.sdrltk").string()), Exception);

    // A text that would load back differently is refused before the file is touched.
    SaveModule(*m, path);
    const std::tuple<std::string*, std::string, std::string> badTexts[] = {
        {&m->title, "Take 0", "title: it holds the digit 0"},
        {&m->notes, std::string(300, 'n'), "notes: a text of 300 characters does not load back"},
        {&m->instruments[15].name, std::string(256, 'i'), "instrument 15 name: a text of 256 characters does not load back"},
        {&m->patterns[0].name, std::string(65664, 'p'), "pattern 0 name: a text of 65664 characters does not load back"},
    };
    for (const auto& [text, bad, reason] : badTexts) {
        *text = bad;
        try {
            SaveModule(*m, path);
            ADD_FAILURE() << reason << ": saved";
        } catch (const Exception& e) {
            EXPECT_EQ(e.what(), "SaveModule(): Can't store the " + reason);
        }
        EXPECT_EQ(test::ReadBytes(path), good) << reason;
        text->clear();
    }
}

TEST(ModuleFile, ImportedTextsStayLoadableAndKindsCanBeForced) {
    test::ScratchDir dir;
    // A listing under a lower-case name is unknown to detection, but can be read as BASIC.
    const std::string listing = (dir / "tune0.bas").string();
    const std::string text = "10 REM Song 2000\n20 PLAY \"T120 L4 C D E\"\n";
    test::WriteBytes(listing, test::Text(text));
    Defaults defaults;
    auto module = NewModule();
    ASSERT_TRUE(LoadFileAs(*module, listing, FileKind::Basic, defaults));
    EXPECT_TRUE(module->fileName.empty());
    // Imported texts carry no digit zero (a save would refuse them), so the module loads back whole.
    const std::string saved = (dir / "saved.sdrltk").string();
    SaveModule(*module, saved);
    auto reloaded = NewModule();
    ASSERT_TRUE(LoadAnyFile(*reloaded, saved, defaults));
    reloaded->fileName = module->fileName = "";
    reloaded->directory = module->directory = "";
    EXPECT_EQ(*reloaded, *module);
    EXPECT_THROW(LoadFileAs(*module, listing, FileKind::Unknown, defaults), Exception);
}

TEST(FileDetection, FirstBytesDecideAndLaterTestsWin) {
    auto at1080 = [](const std::string& start, const std::string& signature) {
        Bytes bytes(1084, 0);
        std::copy(start.begin(), start.end(), bytes.begin());
        std::copy(signature.begin(), signature.end(), bytes.begin() + 1080);
        return bytes;
    };
    const Bytes basic = {'1', '0', ' ', 'P'};
    const std::tuple<std::string, Bytes, FileKind> cases[] = {
        {"a.mod", at1080("", "M.K."), FileKind::Mod},        {"b.mod", at1080("", "M!K!"), FileKind::Mod},
        {"c.mod", at1080("", "4CHN"), FileKind::Mod},        {"d.mod", at1080("", "6CHN"), FileKind::Unknown},
        {"e.vgm", at1080("Vgm ", "M.K."), FileKind::Vgm},    {"f.vgm", {0x1F, 0x8B, 8, 0}, FileKind::Vgm},
        {"g.BAS", {'V', 'g', 'm', ' '}, FileKind::Vgm},      {"h", at1080("SDRLTK  ", ""), FileKind::LegacyModule},
        {"i", at1080("SDRLTK-2", ""), FileKind::CurrentModule}, {"j", at1080("SDRLTK-3", ""), FileKind::Unknown},
        {"k.BAS", {'M', 'T', 'h', 'd', 0, 0, 0, 6}, FileKind::Midi},
        {"l.mid", {'M', 'T', 'h', 'd', 0, 0, 0, 7}, FileKind::Unknown},
        {"m.mid", {'M', 'T', 'h', 'd', 0, 0}, FileKind::Unknown},
        {"n.BAS", basic, FileKind::Basic},                   {"o.BAM", basic, FileKind::Basic},
        {"p.bas", basic, FileKind::Unknown},                 {"BAS", basic, FileKind::Unknown},
    };
    test::ScratchDir dir;
    for (const auto& [name, bytes, kind] : cases) {
        test::WriteBytes(dir / name, bytes);
        EXPECT_EQ(DetectFileKind((dir / name).string()), kind) << name;
    }
    test::WriteBytes(dir / "short.BAS", {'V', 'g', 'm'});
    EXPECT_THROW(DetectFileKind((dir / "short.BAS").string()), Exception);
}

TEST(FileDetection, CorpusFilesAreClassifiedAndRefusedCleanly) {
    fs::path corpus = test::CorpusDir();
    if (corpus.empty()) GTEST_SKIP() << "the shared corpus is not present";
    auto expectedKind = [](const fs::path& relative) {
        std::string group = relative.begin()->string(), name = relative.filename().string();
        std::string extension = relative.extension().string();
        if (relative.parent_path().filename() == "negative") return FileKind::Unknown;
        if (group == "vgm") return FileKind::Vgm;
        // Only the 4-channel signatures make a MOD; FLT4 and signature-less files are not taken.
        if (group == "mod") return name.find("FLT4") == name.npos && name.find("15-") == name.npos ? FileKind::Mod
                                                                                                  : FileKind::Unknown;
        if (group == "midi" && extension == ".mid") return FileKind::Midi;
        if (group == "bas" && extension == ".BAS") return FileKind::Basic;
        return FileKind::Unknown;
    };
    const auto sentinel = NewModule({}, "untouched");
    Defaults options;
    test::ScratchDir dir;
    const std::string saved = (dir / "saved.sdrltk").string();
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(corpus)) {
        if (!entry.is_regular_file()) continue;
        fs::path relative = fs::relative(entry.path(), corpus);
        FileKind expected = expectedKind(relative);
        EXPECT_EQ(DetectFileKind(entry.path().string()), expected) << relative;
        auto target = NewModule({}, "untouched");
        try {
            LoadAnyFile(*target, entry.path().string(), options);
        } catch (const Exception&) {
            EXPECT_TRUE(*target == *sentinel) << relative;
            ++files;
            continue;
        }
        EXPECT_NE(expected, FileKind::Unknown) << relative << " loaded";
        // Whatever loads saves as a module that loads back the same.
        SaveModule(*target, saved);
        auto reloaded = NewModule();
        ASSERT_TRUE(LoadAnyFile(*reloaded, saved, options)) << relative;
        EXPECT_TRUE(*reloaded == *target) << relative;
        ++files;
    }
    EXPECT_GT(files, 30);
}

}  // namespace
}  // namespace sondrel
