#include "ui/requesters/directory_listing.h"

#include <fnmatch.h>

#include <cstdlib>
#include <set>
#include <system_error>
#include <utility>

namespace sondrel {
namespace {

unsigned char Folded(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 'a' && byte <= 'z' ? static_cast<unsigned char>(byte - 'a' + 'A') : byte;
}

bool Full(const std::vector<DirectoryLine>& lines) { return lines.size() >= kMaxDirectoryLines; }

}  // namespace

bool NameBefore(const std::string& a, const std::string& b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        const unsigned char x = Folded(a[i]);
        const unsigned char y = Folded(b[i]);
        if (x != y) return x < y;
    }
    return a.size() < b.size();
}

void BubbleSortByName(std::vector<DirectoryLine>& lines, std::size_t first) {
    if (lines.size() < first + 2) return;
    for (std::size_t end = lines.size(); end > first + 1; --end) {
        bool swapped = false;
        for (std::size_t i = first; i + 1 < end; ++i)
            if (NameBefore(lines[i + 1].name, lines[i].name)) {
                std::swap(lines[i], lines[i + 1]);
                swapped = true;
            }
        if (!swapped) return;
    }
}

bool MatchesPattern(const std::string& name, const std::string& pattern) {
    return fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0;
}

std::vector<DirectoryLine> DriveLines() {
    std::vector<DirectoryLine> drives{{"/", DirectoryLineType::Drive, 0}};
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home != '\0' && std::string(home) != "/")
        drives.push_back({home, DirectoryLineType::Drive, 0});
    return drives;
}

std::vector<DirectoryLine> ListDirectory(const std::filesystem::path& directory,
                                         const std::vector<std::string>& patterns) {
    namespace fs = std::filesystem;
    std::vector<DirectoryLine> lines;
    std::vector<std::pair<std::string, std::uintmax_t>> files;
    std::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error)) {
        std::error_code ignored;
        const std::string name = it->path().filename().string();
        if (it->is_directory(ignored)) {
            if (!Full(lines)) lines.push_back({name, DirectoryLineType::Directory, 0});
        } else if (it->is_regular_file(ignored)) {
            files.emplace_back(name, it->file_size(ignored));
        }
    }
    BubbleSortByName(lines);

    const std::size_t firstFile = lines.size();
    std::set<std::string> listed;
    for (const std::string& pattern : patterns)
        for (const auto& [name, size] : files) {
            if (Full(lines)) break;
            if (MatchesPattern(name, pattern) && listed.insert(name).second)
                lines.push_back({name, DirectoryLineType::File, size});
        }
    BubbleSortByName(lines, firstFile);

    for (DirectoryLine& drive : DriveLines())
        if (!Full(lines)) lines.push_back(std::move(drive));
    return lines;
}

}  // namespace sondrel
