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

// The stream's length in bytes; the position is left where it was.
inline long StreamLength(FILE* file) {
    long here = std::ftell(file);
    std::fseek(file, 0, SEEK_END);
    long end = std::ftell(file);
    std::fseek(file, here, SEEK_SET);
    return end < 0 ? 0 : end;
}

}  // namespace sondrel
