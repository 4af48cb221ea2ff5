#include "ui/requesters/directory_listing.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "test_support.h"

namespace sondrel {
namespace {

std::vector<std::string> Names(const std::vector<DirectoryLine>& lines) {
    std::vector<std::string> names;
    for (const DirectoryLine& line : lines) names.push_back(line.name);
    return names;
}

void Touch(const std::filesystem::path& path, const std::string& content = {}) { std::ofstream(path) << content; }

TEST(DirectoryListingTest, SortsWithLettersFoldedAndPrefixesFirst) {
    std::vector<DirectoryLine> lines;
    for (const char* name : {"b", "A", "a2", "B1", "_x", "Zeta", "[", "a"}) lines.push_back({name});
    BubbleSortByName(lines);
    // Only a-z fold: "_" (0x5F) and "[" (0x5B) sort by their own bytes among the capitals.
    EXPECT_EQ(Names(lines), (std::vector<std::string>{"A", "a", "a2", "b", "B1", "Zeta", "[", "_x"}));
}

TEST(DirectoryListingTest, ListsDirectoriesThenMatchingFilesThenDrives) {
    const test::ScratchDir dir;
    std::filesystem::create_directory(dir / "beta");
    std::filesystem::create_directory(dir / "Alpha");
    Touch(dir / "tune.MOD", "1234");
    Touch(dir / "song.sdrltk", "12");
    Touch(dir / "notes.txt");
    // "*.mod" and "*.MOD" both match tune.MOD: it is listed once.
    const auto lines = ListDirectory(dir.Path(), {"*.sdrltk", "*.mod", "*.MOD"});
    const auto drives = DriveLines();
    ASSERT_EQ(lines.size(), 4 + drives.size());
    EXPECT_EQ(lines[0], (DirectoryLine{"Alpha", DirectoryLineType::Directory, 0}));
    EXPECT_EQ(lines[1], (DirectoryLine{"beta", DirectoryLineType::Directory, 0}));
    EXPECT_EQ(lines[2], (DirectoryLine{"song.sdrltk", DirectoryLineType::File, 2}));
    EXPECT_EQ(lines[3], (DirectoryLine{"tune.MOD", DirectoryLineType::File, 4}));
    EXPECT_EQ(std::vector(lines.begin() + 4, lines.end()), drives);
    EXPECT_EQ(drives.front().name, "/");

    // A directory that can't be read still offers the way out.
    EXPECT_EQ(ListDirectory(dir / "missing", {"*"}), drives);
}

TEST(DirectoryListingTest, StopsAtTheLineLimitBeforeTheDrives) {
    const test::ScratchDir dir;
    for (int i = 0; i < 1500; ++i) Touch(dir / ("f" + std::to_string(i) + ".sdrltk"));
    const auto lines = ListDirectory(dir.Path(), {"*.sdrltk"});
    ASSERT_EQ(lines.size(), kMaxDirectoryLines);
    EXPECT_EQ(lines.back().type, DirectoryLineType::File);
    for (std::size_t i = 1; i < lines.size(); ++i) ASSERT_FALSE(NameBefore(lines[i].name, lines[i - 1].name));
}

}  // namespace
}  // namespace sondrel
