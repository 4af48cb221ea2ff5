#include "app/command_line.h"

namespace sondrel {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

}  // namespace

std::vector<std::string> SplitCommandLine(std::string_view text) {
    std::vector<std::string> arguments;
    std::size_t at = 0;
    for (;;) {
        while (at < text.size() && IsBlank(text[at])) ++at;
        if (at >= text.size()) break;
        if (text[at] == '"') {
            ++at;
            // A quote at the very end ends the line without an argument.
            if (at >= text.size()) break;
            const std::size_t quote = text.find('"', at);
            const std::size_t end = quote == std::string_view::npos ? text.size() : quote;
            arguments.emplace_back(text.substr(at, end - at));
            at = end + 1;
        } else {
            const std::size_t start = at;
            while (at < text.size() && !IsBlank(text[at])) ++at;
            arguments.emplace_back(text.substr(start, at - start));
            ++at;
        }
    }
    return arguments;
}

std::string JoinCommandLine(int argc, const char* const* argv) {
    std::string line;
    for (int i = 0; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (i > 0) line += ' ';
        bool blank = argument.empty();
        for (char c : argument) blank = blank || IsBlank(c);
        if (blank) {
            line += '"';
            line += argument;
            line += '"';
        } else {
            line += argument;
        }
    }
    return line;
}

std::string ProgramNameFromPath(std::string_view path) {
    std::size_t slash = path.rfind('\\');
    if (slash == std::string_view::npos) slash = path.rfind('/');
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    return std::string(name.substr(0, name.find('.')));
}

}  // namespace sondrel
