#pragma once
// Where the program's files live. The runtime files (the demo song, "skins",
// "modfont.png", "readme.txt") sit beside the executable in a build tree or a
// copied folder, and in <prefix>/share/sondrel once installed. "sondrel.prefs"
// and crash saves stay beside the executable in the first case when that
// folder can be written to, and go to the user's configuration directory
// otherwise. None of this needs SDL_Init.

#include <filesystem>

namespace sondrel {

// The directory of the running executable.
std::filesystem::path ProgramDirectory();

// Where the runtime files are: programDirectory when it holds any of them,
// else programDirectory/../share/sondrel when that folder exists; empty when
// neither does.
std::filesystem::path DataDirectoryFor(const std::filesystem::path& programDirectory);

// $XDG_CONFIG_HOME/sondrel, or ~/.config/sondrel when that variable is unset
// or not an absolute path; created when missing. Empty when it can't be made.
std::filesystem::path ConfigDirectory();

// programDirectory when it holds the runtime files and is writable, otherwise
// ConfigDirectory() (programDirectory when there is no configuration
// directory either).
std::filesystem::path PreferencesDirectoryFor(const std::filesystem::path& programDirectory);

// PreferencesDirectoryFor(ProgramDirectory()).
std::filesystem::path PreferencesDirectory();

// PreferencesDirectory() / "sondrel.prefs".
std::filesystem::path PreferencesFilePath();

}  // namespace sondrel
