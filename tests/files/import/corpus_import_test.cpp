// Real MOD and VGM files written by other programs, from the shared corpus.
#include <gtest/gtest.h>

#include <zlib.h>

#include <cstring>
#include <fstream>
#include <map>
#include <regex>

#include "files/export/vgm_export.h"
#include "files/module_test_support.h"
#include "model/exception.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;
using test::Bytes;

std::vector<fs::path> CorpusFiles(const std::string& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(test::CorpusDir() / folder))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

struct Imported {
    int lines = 0;
    std::map<int, int> sounding;  // tone notes with a volume on channels 0..2, and how often
};

Imported Summarise(const Module& m) {
    Imported result;
    result.lines = static_cast<int>(test::ForEachSongLine(m, [&](long, const PatternLine& line) {
        for (int c = 0; c < kToneChannels; ++c)
            if (line.note[c] <= 155 && line.volume[c] > 0) ++result.sounding[line.note[c]];
    }));
    return result;
}

TEST(CorpusImport, ModFilesImportOrAreRefusedForTheirHeaders) {
    if (test::CorpusDir().empty()) GTEST_SKIP() << "the shared corpus is not here";
    for (const fs::path& path : CorpusFiles("mod")) {
        SCOPED_TRACE(path.filename().string());
        Bytes bytes = test::ReadBytes(path);
        std::string mark(bytes.begin() + 1080, bytes.begin() + 1084);
        bool loopFromStart = false, hasSamples = false;  // a loop from the first word is refused
        for (const unsigned char* field = &bytes[42]; field < &bytes[950]; field += 30) {
            loopFromStart |= field[0] + field[1] > 0 && field[4] + field[5] == 0 && (field[6] << 8) + field[7] > 1;
            hasSamples |= field[0] + field[1] > 0;
        }
        auto module = test::NewModule();
        ImportOptionsProvider defaults;
        bool known = mark == "M.K." || mark == "M!K!" || mark == "4CHN";
        if (!known || loopFromStart) {
            EXPECT_THROW(LoadAnyFile(*module, path.string(), defaults), Exception);
            if (mark != "FLT4") continue;
            // Another tracker's mark on the same layout: the importer itself takes it.
            UniqueFile file = OpenFile(path.string(), "rb");
            ASSERT_TRUE(ImportMod(*module, file.get(), path.string(), defaults));
        } else {
            ASSERT_TRUE(LoadAnyFile(*module, path.string(), defaults));
        }
        Imported imported = Summarise(*module);
        EXPECT_TRUE(imported.lines > 20 * 50 && imported.lines < 5 * 60 * 50) << imported.lines;  // a tune's length
        EXPECT_EQ(imported.sounding.empty(), !hasSamples);
        for (auto [note, count] : imported.sounding)
            EXPECT_TRUE(note >= 48 && note <= 108) << note;  // Amiga periods 856..113 lie in between
    }
}

// The seconds that the corpus manifest gives, counted from the waits when the header disagrees.
double ManifestSeconds(const std::string& name) {
    std::ifstream manifest(test::CorpusDir() / "MANIFEST.tsv");
    static const std::regex kSeconds(R"(; (\d+\.\d) s( \(by waits (\d+\.\d) s\))?;)");
    std::smatch match;
    for (std::string line; std::getline(manifest, line);) {
        if (line.rfind("vgm/" + name + "\t", 0) == 0 && std::regex_search(line, match, kSeconds))
            return std::stod(match[3].matched ? match[3].str() : match[1].str());
    }
    return -1;
}

TEST(CorpusImport, VgmFilesLastAsLongAsTheirWaits) {
    if (test::CorpusDir().empty()) GTEST_SKIP() << "the shared corpus is not here";
    for (const fs::path& path : CorpusFiles("vgm")) {
        SCOPED_TRACE(path.filename().string());
        unsigned char header[64] = {};
        gzFile in = gzopen(path.c_str(), "rb");
        gzread(in, header, sizeof header);
        gzclose(in);
        uint32_t endOffset, clock, rate;
        std::memcpy(&endOffset, header + 4, 4), std::memcpy(&clock, header + 12, 4), std::memcpy(&rate, header + 36, 4);
        auto module = test::NewModule();
        ImportOptionsProvider defaults;
        if (endOffset < 60) {  // the commands end where the header says the file ends
            EXPECT_THROW(LoadAnyFile(*module, path.string(), defaults), Exception);
            continue;
        }
        ASSERT_TRUE(LoadAnyFile(*module, path.string(), defaults));
        Imported imported = Summarise(*module);
        double frames = ManifestSeconds(path.filename().string()) * module->TicksPerSecond();
        ASSERT_GT(frames, 0);
        EXPECT_EQ(module->chipType, rate == 50 ? kChipPal : kChipNtsc);
        if (clock & 0x40000000) {
            // A second chip's writes take two operand bytes here, one in the log, so
            // the commands fall out of step: the import may only end early.
            EXPECT_LE(imported.lines, frames + 1);
            continue;
        }
        EXPECT_NEAR(imported.lines - 1, frames, 0.05 * module->TicksPerSecond() + 1);
        ASSERT_GE(imported.sounding.size(), 2u);
        auto busiest = std::max_element(imported.sounding.begin(), imported.sounding.end(),
                                        [](auto a, auto b) { return a.second < b.second; });
        EXPECT_TRUE(busiest->first >= 48 && busiest->first <= 96) << busiest->first;
    }
}

// The BBC Micro and TI-99/4A logs name the TI chip's 15-bit noise register;
// they import for that chip and export naming it again. The rest are Sega logs.
TEST(CorpusImport, VgmLogsOfTheTiChipImportAndExportForIt) {
    if (test::CorpusDir().empty()) GTEST_SKIP() << "the shared corpus is not here";
    int tiLogs = 0;
    for (const fs::path& path : CorpusFiles("vgm")) {
        SCOPED_TRACE(path.filename().string());
        auto module = test::NewModule();
        ImportOptionsProvider defaults;
        try {
            ASSERT_TRUE(LoadAnyFile(*module, path.string(), defaults));
        } catch (const Exception&) {
            continue;  // a header the importer refuses, as the test above expects
        }
        const std::string name = path.filename().string();
        const bool ti = name.find("_bbc") != std::string::npos || name == "vgmcomp2_5ALF_no-end-marker.VGM";
        EXPECT_EQ(module->chipVariant, ti ? kVariantTi : kVariantSega);
        if (!ti) continue;
        ++tiLogs;
        const Bytes vgm = BuildVgm(*module);
        EXPECT_EQ(vgm[0x28] | vgm[0x29] << 8, 0x0003);
        EXPECT_EQ(vgm[0x2A], 15);
    }
    EXPECT_EQ(tiLogs, 3);
}

}  // namespace
}  // namespace sondrel
