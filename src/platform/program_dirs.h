#pragma once
// Where the program's own files live: the executable's directory holds
// "sondrel.prefs", "skins", "modfont.png" and "readme.txt". When that
// directory can't be written to (an installed copy), the preferences go to
// the user's own data directory instead. None of this needs SDL_Init.

#include <filesystem>

namespace sondrel {

// The directory of the running executable.
std::filesystem::path ProgramDirectory();

// programDirectory itself when it is writable, otherwise the user's data
// directory for the program (created when missing).
std::filesystem::path PreferencesDirectoryFor(const std::filesystem::path& programDirectory);

// PreferencesDirectoryFor(ProgramDirectory()).
std::filesystem::path PreferencesDirectory();

// PreferencesDirectory() / "sondrel.prefs".
std::filesystem::path PreferencesFilePath();

}  // namespace sondrel
