#pragma once
// What the file requester lists for a directory: its subdirectories, the
// files that match the caller's name patterns and the places to jump to
// (the root and the home directory), at most kMaxDirectoryLines lines.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace sondrel {

constexpr std::size_t kMaxDirectoryLines = 1024;

enum class DirectoryLineType : uint8_t { Directory, File, Drive };

struct DirectoryLine {
    std::string name;  // a name in the directory; for a drive, its whole path
    DirectoryLineType type = DirectoryLineType::File;
    std::uintmax_t size = 0;  // files only

    bool operator==(const DirectoryLine&) const = default;
};

// a before b: byte by byte with only a-z folded to upper case; a name that
// is the beginning of another comes first.
bool NameBefore(const std::string& a, const std::string& b);
// Sorts lines[first, end) by name with a bubble sort (stable, as the
// requester has always ordered equal names).
void BubbleSortByName(std::vector<DirectoryLine>& lines, std::size_t first = 0);
// name matches the shell pattern, letters compared without regard to case.
bool MatchesPattern(const std::string& name, const std::string& pattern);

// The drive lines: the root and the home directory (when there is one).
std::vector<DirectoryLine> DriveLines();

// The subdirectories of directory but "." and "..", sorted; then for each
// pattern in turn the files that match it (each file once), sorted; then the
// drives, unsorted. Names beyond kMaxDirectoryLines are left out. An
// unreadable directory lists only the drives.
std::vector<DirectoryLine> ListDirectory(const std::filesystem::path& directory,
                                         const std::vector<std::string>& patterns);

}  // namespace sondrel
