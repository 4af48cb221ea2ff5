#include "platform/program_dirs.h"

#include <SDL.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <system_error>

namespace sondrel {

namespace {

namespace fs = std::filesystem;

// Any one of these beside the executable means the program runs from its
// own folder rather than from an installed copy.
constexpr std::array<const char*, 4> kRuntimeFiles = {"demo.sdrltk", "skins", "modfont.png", "readme.txt"};

// Takes an SDL-allocated directory name, frees it, and answers it without
// its trailing separator (empty when SDL could not tell).
fs::path TakeSdlPath(char* text) {
    if (!text) return {};
    fs::path path(text);
    SDL_free(text);
    if (!path.has_filename()) path = path.parent_path();
    return path;
}

bool HoldsRuntimeFiles(const fs::path& directory) {
    std::error_code error;
    for (const char* name : kRuntimeFiles) {
        if (fs::exists(directory / name, error)) return true;
    }
    return false;
}

// An environment variable naming an absolute path; empty otherwise.
fs::path AbsolutePathVariable(const char* name) {
    const char* text = std::getenv(name);
    if (!text) return {};
    fs::path path(text);
    return path.is_absolute() ? path : fs::path();
}

fs::path HomeDirectory() {
    fs::path home = AbsolutePathVariable("HOME");
    if (home.empty()) {
        if (const passwd* user = getpwuid(getuid()); user && user->pw_dir) home = user->pw_dir;
    }
    return home;
}

}  // namespace

fs::path ProgramDirectory() {
    fs::path directory = TakeSdlPath(SDL_GetBasePath());
    if (directory.empty()) {
        std::error_code error;
        directory = fs::current_path(error);
    }
    return directory;
}

fs::path DataDirectoryFor(const fs::path& programDirectory) {
    if (HoldsRuntimeFiles(programDirectory)) return programDirectory;
    const fs::path shared = (programDirectory / ".." / "share" / "sondrel").lexically_normal();
    std::error_code error;
    return fs::is_directory(shared, error) ? shared : fs::path();
}

fs::path ConfigDirectory() {
    fs::path base = AbsolutePathVariable("XDG_CONFIG_HOME");
    if (base.empty()) {
        const fs::path home = HomeDirectory();
        if (home.empty()) return {};
        base = home / ".config";
    }
    const fs::path directory = base / "sondrel";
    std::error_code error;
    fs::create_directories(directory, error);
    return fs::is_directory(directory, error) ? directory : fs::path();
}

fs::path PreferencesDirectoryFor(const fs::path& programDirectory) {
    if (HoldsRuntimeFiles(programDirectory) && access(programDirectory.c_str(), W_OK) == 0) return programDirectory;
    const fs::path config = ConfigDirectory();
    return config.empty() ? programDirectory : config;
}

fs::path PreferencesDirectory() { return PreferencesDirectoryFor(ProgramDirectory()); }

fs::path PreferencesFilePath() { return PreferencesDirectory() / "sondrel.prefs"; }

}  // namespace sondrel
