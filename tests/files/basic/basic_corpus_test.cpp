// Imports the BASIC listings of the shared corpus, written by others, and
// checks what an honest import of each must give.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "files/basic/basic_interpreter.h"
#include "files/basic/basic_listing.h"
#include "files/module_test_support.h"
#include "model/notes.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

fs::path BasicCorpus() {
    fs::path corpus = test::CorpusDir();
    return corpus.empty() ? fs::path() : corpus / "bas";
}

struct Shape {
    double seconds = 0.0;
    int lowest = 255, highest = -1;  // tone notes
    int distinct = 0;
    std::set<int> channels;
};

Shape ShapeOf(const Module& m) {
    Shape shape;
    std::set<int> notes;
    const long ticks = test::ForEachSongLine(m, [&](long, const PatternLine& line) {
        for (int c = 0; c < kChannels; ++c) {
            if (line.note[c] == kNoteEmpty || line.note[c] == kNoteNull) continue;
            shape.channels.insert(c);
            if (c == kNoiseChannel) continue;
            notes.insert(line.note[c]);
            shape.lowest = std::min<int>(shape.lowest, line.note[c]);
            shape.highest = std::max<int>(shape.highest, line.note[c]);
        }
    });
    shape.distinct = static_cast<int>(notes.size());
    shape.seconds = static_cast<double>(ticks) / m.TicksPerSecond();
    return shape;
}

TEST(BasicCorpus, EveryListingImports) {
    fs::path dir = BasicCorpus();
    if (dir.empty() || !fs::is_directory(dir)) GTEST_SKIP() << "the shared corpus (../shared/corpus/bas) is absent";

    // What each program must give; the syntax tests and the program whose songs
    // are chained in from other files make little or no music.
    struct Expected { double minSeconds, maxSeconds; size_t voices; };
    const std::map<std::string, Expected> expected = {
        {"IBM_MUSIC.BAS", {0.0, 1.0, 0}},  // the tunes live in files it chains to
        {"pcbasic_SOUND_syntax_TEST.BAS", {0.0, 1.0, 0}},
        {"pcbasic_PLAY_syntax_TEST.BAS", {1.0, 30.0, 1}},
        {"pcbasic_more_mml_TEST.BAS", {0.5, 10.0, 1}},
        {"peatsoft_MAGDALEN.BAS", {90.0, 240.0, 1}},
        {"qb_JUKEBOX.BAS", {30.0, 120.0, 1}},  // all three tunes: which one is chosen can't be known
        {"tandy_AMADEUS1.BAS", {45.0, 180.0, 3}},
        {"tandy_HALLE.BAS", {45.0, 180.0, 3}},
        {"tandy_JOY.BAS", {45.0, 180.0, 3}},
        {"tandy_Blues.bas", {30.0, 120.0, 3}},
    };
    for (const auto& [name, want] : expected) {
        SCOPED_TRACE(name);
        auto module = test::NewModule();
        ImportOptionsProvider defaults;
        ASSERT_NO_THROW(ASSERT_TRUE(test::ImportBytes(FileKind::Basic, *module, test::ReadBytes(dir / name), defaults, name)));
        Shape shape = ShapeOf(*module);
        EXPECT_GE(shape.seconds, want.minSeconds);
        EXPECT_LE(shape.seconds, want.maxSeconds);
        EXPECT_EQ(shape.channels.size(), want.voices);
        if (want.maxSeconds > 30.0) {
            // Real tunes: a melody's worth of notes, within the chip's range, a few octaves wide.
            EXPECT_GE(shape.distinct, 8);
            EXPECT_GE(shape.lowest, kFirstPlayableTone);
            EXPECT_LE(shape.highest, kLastPlayableTone);
            EXPECT_LE(shape.highest - shape.lowest, 5 * 12);
            EXPECT_EQ(module->notes.find("cut short"), std::string::npos) << module->notes;
        }
    }
}

// The line numbers of an "ERR ERL" list written by the syntax test itself.
std::set<int> RefusedLines(const fs::path& path) {
    std::set<int> lines;
    std::ifstream in(path);
    int error, line;
    while (in >> error >> line) lines.insert(line);
    return lines;
}

// The syntax tests come with the lines that GW-BASIC itself refuses: the
// statements the import skips must be the same ones.
TEST(BasicCorpus, SkipsTheStatementsBasicRefuses) {
    fs::path dir = BasicCorpus();
    if (dir.empty() || !fs::is_directory(dir)) GTEST_SKIP() << "the shared corpus (../shared/corpus/bas) is absent";
    struct Case { const char* test; const char* output; std::set<int> ignored; };  // ignored: known differences
    const Case cases[] = {
        // VARPTR$ pointers and array elements are not followed: those strings are skipped.
        {"pcbasic_PLAY_syntax_TEST.BAS", "pcbasic_PLAY_syntax_OUTPUT.TXT", {270, 273, 275, 277, 300, 310}},
        {"pcbasic_more_mml_TEST.BAS", "pcbasic_more_mml_OUTPUT.TXT", {}},
        // Plain GW-BASIC refuses the three-voice machines' forms (a volume after the
        // duration, SOUND ON/OFF/STOP), which the import takes.
        {"pcbasic_SOUND_syntax_TEST.BAS", "pcbasic_SOUND_syntax_OUTPUT.TXT", {80, 90, 180, 370, 380, 390}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.test);
        if (!fs::exists(dir / c.test) || !fs::exists(dir / c.output)) continue;
        auto bytes = test::ReadBytes(dir / c.test);
        BasicRunResult run = RunBasicProgram(ReadBasicProgram(std::vector<uint8_t>(bytes.begin(), bytes.end())));
        std::set<int> skipped(run.skippedLines.begin(), run.skippedLines.end());
        std::set<int> refused = RefusedLines(dir / c.output);
        for (int line : c.ignored) skipped.erase(line), refused.erase(line);
        EXPECT_EQ(skipped, refused);
    }
}

}  // namespace
}  // namespace sondrel
