// Imports every MIDI file of the shared corpus: files written by others, with
// note timings as another MIDI library reads them (the *.mid.txt sidecars).

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "files/file_stream.h"
#include "files/importers.h"
#include "model/exception.h"
#include "model/notes.h"
#include "test_support.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

struct SidecarNote {
    int pitch;
    double start, end;  // seconds
};

std::vector<SidecarNote> ReadSidecar(const fs::path& path) {
    std::vector<SidecarNote> notes;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        SidecarNote n{};
        if (std::istringstream(line) >> n.pitch >> n.start >> n.end) notes.push_back(n);
    }
    return notes;
}

// File name -> whether the manifest calls the file invalid or malformed.
std::map<std::string, bool> ReadManifest(const fs::path& path) {
    std::map<std::string, bool> invalid;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        std::string file = line.substr(0, line.find('\t'));
        invalid[fs::path(file).filename().string()] =
            line.find("INVALID") != std::string::npos || line.find("MALFORMED") != std::string::npos;
    }
    return invalid;
}

struct Onset {
    int line, note;
};

std::vector<Onset> ToneOnsets(const Module& m) {
    std::vector<Onset> onsets;
    for (int p = 0; p < m.patternListLength; ++p)
        for (int l = 0; l < m.patterns[m.patternList[p]].length; ++l)
            for (int c = 0; c < kToneChannels; ++c)
                if (uint8_t note = m.patterns[m.patternList[p]].lines[l].note[c]; note != kNoteEmpty)
                    onsets.push_back({p * kMaxLines + l, note});
    return onsets;
}

int Folded(int pitch) {
    while (pitch < kFirstPlayableTone) pitch += 12;
    while (pitch > kLastPlayableTone) pitch -= 12;
    return pitch;
}

// Whether a value of the sorted list lies within one of x.
bool WithinOneTick(const std::vector<double>& sorted, double x) {
    auto it = std::lower_bound(sorted.begin(), sorted.end(), x - 1);
    return it != sorted.end() && *it <= x + 1;
}

TEST(MidiCorpusTest, EveryFileImportsHonestlyOrIsRefused) {
    const fs::path dir = test::CorpusDir() / "midi";
    if (test::CorpusDir().empty() || !fs::is_directory(dir)) GTEST_SKIP() << "no shared corpus beside the repository";
    const auto invalid = ReadManifest(test::CorpusDir() / "MANIFEST.tsv");
    int checked = 0;
    for (const auto& entry : fs::directory_iterator(dir)) {
        if (entry.path().extension() != ".mid") continue;
        const std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        ++checked;
        auto module = std::make_unique<Module>();
        ImportOptionsProvider defaults;
        UniqueFile file = OpenFile(entry.path().string(), "rb");
        auto import = [&] { return ImportMidi(*module, file.get(), entry.path().string(), defaults); };
        if (invalid.count(name) && invalid.at(name)) {
            EXPECT_THROW(import(), ParseException);
            continue;
        }
        ASSERT_TRUE(import());
        const std::vector<Onset> onsets = ToneOnsets(*module);
        const int lines = (module->patternListLength - 1) * kMaxLines +
                          module->patterns[module->patternList[module->patternListLength - 1]].length;
        ASSERT_FALSE(onsets.empty());

        const fs::path sidecar = entry.path().string() + ".txt";
        if (!fs::exists(sidecar)) {
            EXPECT_LT(lines, 60 * 60) << "no more than a minute of test notes";
            continue;
        }
        const std::vector<SidecarNote> notes = ReadSidecar(sidecar);
        ASSERT_FALSE(notes.empty());
        double lastEnd = 0;
        for (const SidecarNote& n : notes) lastEnd = std::max(lastEnd, n.end);
        EXPECT_NEAR(lines, lastEnd * 60 + 1, 1.0) << "the song ends when its last note does";

        // Every note starts a note on a chip channel within one tick of its time.
        std::vector<double> onsetLines, endLines;
        for (const Onset& o : onsets) onsetLines.push_back(o.line);
        for (const SidecarNote& n : notes) endLines.push_back(n.end * 60);
        std::sort(endLines.begin(), endLines.end());
        std::string missed, unexplained;
        for (const SidecarNote& n : notes)
            if (!WithinOneTick(onsetLines, n.start * 60)) missed += " " + std::to_string(n.start);
        // And every note in the module plays a note of the file that starts there, or
        // that takes over, still held, when another one ends.
        for (const Onset& o : onsets) {
            bool starts = false, held = false;
            for (const SidecarNote& n : notes) {
                if (Folded(n.pitch) != o.note) continue;
                starts = starts || std::abs(o.line - n.start * 60) <= 1;
                held = held || (o.line >= n.start * 60 - 1 && o.line <= n.end * 60 + 1);
            }
            if (!starts && !(held && WithinOneTick(endLines, o.line)))
                unexplained += " " + std::to_string(o.note) + "@" + std::to_string(o.line);
        }
        EXPECT_EQ(missed.substr(0, 200), "") << "notes of the file (start in seconds) without an onset";
        EXPECT_EQ(unexplained.substr(0, 200), "") << "onsets (note@line) that play no note of the file";
    }
    EXPECT_GT(checked, 0);
}

TEST(MidiCorpusTest, RunningStatusAcrossAMetaEventStillPlaysTheScale) {
    const fs::path path = test::CorpusDir() / "midi" / "jazz_test-running-status-metaevent.mid";
    if (test::CorpusDir().empty() || !fs::exists(path)) GTEST_SKIP() << "no shared corpus beside the repository";
    auto module = std::make_unique<Module>();
    ImportOptionsProvider defaults;
    UniqueFile file = OpenFile(path.string(), "rb");
    ASSERT_TRUE(ImportMidi(*module, file.get(), path.string(), defaults));
    std::vector<int> scale;
    for (const Onset& o : ToneOnsets(*module)) scale.push_back(o.note);
    EXPECT_EQ(scale, (std::vector<int>{60, 62, 64, 65, 67, 69, 71, 72}));
}

}  // namespace
}  // namespace sondrel
