#include "files/file_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "model/exception.h"

namespace sondrel {

namespace {

const char* WhatItIs(mode_t mode) {
    if (S_ISDIR(mode)) return "It is a folder, not a file";
    if (S_ISFIFO(mode)) return "It is a named pipe, not a file";
    if (S_ISCHR(mode) || S_ISBLK(mode)) return "It is a device, not a file";
    if (S_ISSOCK(mode)) return "It is a socket, not a file";
    return "It is not a regular file";
}

}  // namespace

UniqueFile OpenRegularFile(const std::string& path) {
    struct stat named {};
    if (::stat(path.c_str(), &named) != 0) throw FileIOException(std::strerror(errno));
    if (!S_ISREG(named.st_mode)) throw FileIOException(WhatItIs(named.st_mode));
    // Checked again on what was opened, in case the name changed meanwhile;
    // without O_NONBLOCK a pipe put there would hold the open until a writer came.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) throw FileIOException(std::strerror(errno));
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        const char* reason = S_ISREG(info.st_mode) ? std::strerror(errno) : WhatItIs(info.st_mode);
        ::close(fd);
        throw FileIOException(reason);
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    FILE* file = ::fdopen(fd, "rb");
    if (!file) {
        const int error = errno;
        ::close(fd);
        throw FileIOException(std::strerror(error));
    }
    return UniqueFile(file);
}

}  // namespace sondrel
