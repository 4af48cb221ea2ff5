#pragma once
// The program's command line as one text, split the way the program always
// has: white space separates arguments, a double quote starts an argument
// that runs to the next double quote. There is no escaping.

#include <string>
#include <string_view>
#include <vector>

namespace sondrel {

// Argument 0 is the program path, argument 1 (when there is one) the file to open.
std::vector<std::string> SplitCommandLine(std::string_view text);

// The shell's arguments as one command line: those holding white space, or
// empty ones, are put in double quotes.
std::string JoinCommandLine(int argc, const char* const* argv);

// The program's own name: the file name of its path (after the last "\", or
// failing that the last "/") up to the first ".".
std::string ProgramNameFromPath(std::string_view path);

}  // namespace sondrel
