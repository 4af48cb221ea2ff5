#pragma once
// Small helpers around C streams shared by the file readers and writers.

#include <cstdio>
#include <memory>
#include <string>

namespace sondrel {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
// A stream that is closed when it goes out of scope.
using UniqueFile = std::unique_ptr<FILE, FileCloser>;

inline UniqueFile OpenFile(const std::string& path, const char* mode) {
    return UniqueFile(std::fopen(path.c_str(), mode));
}

// Opens a file the user named, for binary reading. Only a regular file is
// opened: a folder, a named pipe or a device is refused before anything is
// read from it, so nothing waits on a pipe that never delivers. Throws
// FileIOException with the reason as the user reads it ("No such file or
// directory", "Permission denied", "It is a folder, not a file").
UniqueFile OpenRegularFile(const std::string& path);

// The stream's length in bytes; the position is left where it was.
inline long StreamLength(FILE* file) {
    long here = std::ftell(file);
    std::fseek(file, 0, SEEK_END);
    long end = std::ftell(file);
    std::fseek(file, here, SEEK_SET);
    return end < 0 ? 0 : end;
}

}  // namespace sondrel
