// Imports every MIDI file of the shared corpus: files written by others, with
// note timings as another MIDI library reads them (the *.mid.txt sidecars).

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "files/module_test_support.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

struct Onset { double line; int note; };
struct FileNote { double start, end; int note; };  // in lines; the note folded into the tone range

// The sidecar's "pitch start end" lines, times in seconds; the releases also sorted on their own.
void ReadSidecar(const fs::path& path, std::vector<FileNote>& notes, std::vector<double>& ends) {
    std::ifstream in(path);
    std::string text;
    double start, end;
    int pitch;
    while (std::getline(in, text)) {
        if (!(std::istringstream(text) >> pitch >> start >> end)) continue;
        while (pitch < kFirstPlayableTone) pitch += 12;
        while (pitch > kLastPlayableTone) pitch -= 12;
        notes.push_back({start * 60, end * 60, pitch});
        ends.push_back(end * 60);
    }
    std::sort(ends.begin(), ends.end());
}

bool WithinOneTick(const std::vector<double>& sorted, double line) {
    auto it = std::lower_bound(sorted.begin(), sorted.end(), line - 1);
    return it != sorted.end() && *it <= line + 1;
}

TEST(MidiCorpusTest, EveryFileImportsWithItsTimingOrIsRefused) {
    const fs::path dir = test::CorpusDir() / "midi";
    if (test::CorpusDir().empty() || !fs::is_directory(dir)) GTEST_SKIP() << "no shared corpus beside the repository";
    std::ifstream manifest(test::CorpusDir() / "MANIFEST.tsv");
    std::string invalid, row;  // the manifest's rows for files it calls invalid or malformed
    while (std::getline(manifest, row))
        if (row.find("INVALID") != std::string::npos || row.find("MALFORMED") != std::string::npos) invalid += row;

    for (const auto& entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() != ".mid") continue;
        SCOPED_TRACE(name);
        auto module = test::NewModule();
        ImportOptionsProvider defaults;
        UniqueFile file = OpenFile(entry.path().string(), "rb");
        if (invalid.find("midi/" + name + "\t") != std::string::npos) {
            EXPECT_THROW(ImportMidi(*module, file.get(), name, defaults), ParseException);
            continue;
        }
        ASSERT_TRUE(ImportMidi(*module, file.get(), name, defaults));
        std::vector<Onset> onsets;  // on the tone channels
        std::vector<double> onsetLines;
        const long lines = test::ForEachSongLine(*module, [&](long line, const PatternLine& cells) {
            for (int c = 0; c < kToneChannels; ++c)
                if (cells.note[c] != kNoteEmpty) onsets.push_back({double(line), cells.note[c]}), onsetLines.push_back(line);
        });
        if (name == "jazz_test-running-status-metaevent.mid") {
            std::string scale;
            for (const Onset& o : onsets) scale += std::to_string(o.note) + " ";
            EXPECT_EQ(scale, "60 62 64 65 67 69 71 72 ");
        }
        std::vector<FileNote> notes;
        std::vector<double> ends;
        ReadSidecar(entry.path().string() + ".txt", notes, ends);
        if (notes.empty()) {
            EXPECT_TRUE(!onsets.empty() && lines < 60 * 60) << "a few notes, less than a minute";
            continue;
        }
        EXPECT_NEAR(lines, ends.back() + 1, 1.0) << "the song ends when its last note does";

        // Every note of the file starts a note within one tick of its time; every note of the
        // module starts with a note of the file or takes over, still held, when another ends.
        std::string missed, unexplained;
        for (const FileNote& n : notes)
            if (!WithinOneTick(onsetLines, n.start)) missed += " " + std::to_string(n.start / 60);
        for (const Onset& o : onsets) {
            const bool takesOver = WithinOneTick(ends, o.line);
            bool explained = false;
            for (const FileNote& n : notes)
                explained = explained || (n.note == o.note && (std::abs(o.line - n.start) <= 1 ||
                                                               (takesOver && o.line >= n.start && o.line <= n.end + 1)));
            if (!explained) unexplained += " " + std::to_string(o.note) + "@" + std::to_string(int(o.line));
        }
        EXPECT_EQ(missed.substr(0, 200), "") << "notes of the file (start in seconds) without an onset";
        EXPECT_EQ(unexplained.substr(0, 200), "") << "onsets (note@line) that play no note of the file";
    }
}

}  // namespace
}  // namespace sondrel
