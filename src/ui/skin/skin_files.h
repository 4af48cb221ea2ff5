#pragma once
// The skin's text files (the skin file and its theme files): reading them
// whole, and naming them in failures. A failure gains a line that gives the
// file's full path and, where one applies, the line in it where reading went
// wrong; a theme's failure names the theme file and then the skin file that
// includes it.

#include <filesystem>
#include <string>

namespace sondrel {

// The file's whole text. Throws FileIOException "Load(): Couldn't open file"
// with the full path and the reason on the next line.
std::string ReadSkinText(const std::filesystem::path& path);

// The full path as the messages show it.
std::string ShownPath(const std::filesystem::path& path);

// Only inside a catch block: throws the exception in flight again, of the
// same kind, its message followed by a line "in FULL PATH, line N" (without
// ", line N" when line is 0).
[[noreturn]] void RethrowInFile(const std::filesystem::path& file, int line = 0);

}  // namespace sondrel
