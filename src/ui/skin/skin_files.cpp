#include "ui/skin/skin_files.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <system_error>

#include "model/exception.h"

namespace sondrel {

std::string ShownPath(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(path, error);
    return (error ? path : full).lexically_normal().string();
}

std::string ReadSkinText(const std::filesystem::path& path) {
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        const std::string reason = errno != 0 ? std::strerror(errno) : "it can't be opened";
        throw FileIOException("Load(): Couldn't open file\n" + ShownPath(path) + " (" + reason + ")");
    }
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

namespace {

std::string InFile(std::string message, const std::filesystem::path& file, int line) {
    // Some messages end their last line themselves.
    if (!message.ends_with('\n')) message += '\n';
    message += "in " + ShownPath(file);
    if (line > 0) message += ", line " + std::to_string(line);
    return message;
}

}  // namespace

void RethrowInFile(const std::filesystem::path& file, int line) {
    try {
        throw;
    } catch (const ParseException& e) {
        throw ParseException(InFile(e.Message(), file, line));
    } catch (const FileIOException& e) {
        throw FileIOException(InFile(e.Message(), file, line));
    } catch (const LibraryLoadException& e) {
        throw LibraryLoadException(InFile(e.Message(), file, line));
    } catch (const InternalException& e) {
        throw InternalException(InFile(e.Message(), file, line));
    } catch (const Exception& e) {
        throw Exception(InFile(e.Message(), file, line));
    }
}

}  // namespace sondrel
