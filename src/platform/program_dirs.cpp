#include "platform/program_dirs.h"

#include <SDL.h>
#include <unistd.h>

#include <string>
#include <system_error>

namespace sondrel {

namespace {

// Takes an SDL-allocated directory name, frees it, and answers it without
// its trailing separator (empty when SDL could not tell).
std::filesystem::path TakeSdlPath(char* text) {
    if (!text) return {};
    std::filesystem::path path(text);
    SDL_free(text);
    if (!path.has_filename()) path = path.parent_path();
    return path;
}

}  // namespace

std::filesystem::path ProgramDirectory() {
    std::filesystem::path directory = TakeSdlPath(SDL_GetBasePath());
    if (directory.empty()) {
        std::error_code error;
        directory = std::filesystem::current_path(error);
    }
    return directory;
}

std::filesystem::path PreferencesDirectoryFor(const std::filesystem::path& programDirectory) {
    std::error_code error;
    if (std::filesystem::is_directory(programDirectory, error) &&
        access(programDirectory.c_str(), W_OK) == 0) {
        return programDirectory;
    }
    std::filesystem::path userDirectory = TakeSdlPath(SDL_GetPrefPath("sondrel", "sondrel"));
    return userDirectory.empty() ? programDirectory : userDirectory;
}

std::filesystem::path PreferencesDirectory() { return PreferencesDirectoryFor(ProgramDirectory()); }

std::filesystem::path PreferencesFilePath() { return PreferencesDirectory() / "sondrel.prefs"; }

}  // namespace sondrel
