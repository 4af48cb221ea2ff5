#include "files/safe_file_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>

#include "model/exception.h"

namespace sondrel {

namespace fs = std::filesystem;

namespace {

// The process's umask, read without changing it (umask() would, for every thread).
mode_t CurrentUmask() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("Umask:", 0) == 0) return static_cast<mode_t>(std::stoul(line.substr(6), nullptr, 8));
    }
    return 022;
}

[[noreturn]] void Fail(int error, const std::string& context = {}) {
    std::string reason = SystemErrorText(error);
    if (!context.empty()) reason += " (" + context + ")";
    throw FileIOException(reason);
}

// The file a save to `target` really writes: a symbolic link (or a chain of
// them) is followed to the file it names, which need not exist yet.
fs::path ResolveLinks(const fs::path& target) {
    constexpr int kMostLinks = 40;  // as the system allows in one path
    fs::path path = target;
    for (int followed = 0; followed <= kMostLinks; ++followed) {
        std::error_code error;
        if (!fs::is_symlink(fs::symlink_status(path, error))) return path;
        const fs::path next = fs::read_symlink(path, error);
        if (error) Fail(error.value(), "can't follow the link " + path.string());
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    Fail(ELOOP, "can't follow the link " + target.string());
}

}  // namespace

std::string SystemErrorText(int error) { return std::strerror(error); }

void ReplaceFileContents(const fs::path& target, const void* data, size_t count) {
    SafeFileWriter writer(target);
    writer.Write(data, count);
    writer.Commit();
}

SafeFileWriter::SafeFileWriter(const fs::path& target) : target_(ResolveLinks(target)) {
    struct stat existing {};
    const bool exists = ::stat(target_.c_str(), &existing) == 0;
    if (exists && S_ISDIR(existing.st_mode)) throw FileIOException(target_.string() + " is a folder, not a file");
    if (exists && !S_ISREG(existing.st_mode)) throw FileIOException(target_.string() + " is not a regular file");

    const fs::path directory = target_.has_parent_path() ? target_.parent_path() : fs::path(".");
    std::string pattern = (directory / ("." + target_.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0) Fail(errno, "can't create a file in " + directory.string());
    temporary_ = pattern;
    // mkstemp makes the file private; give it the bits the target has, or would get.
    const mode_t mode = exists ? (existing.st_mode & 07777) : (0666 & ~CurrentUmask());
    if (::fchmod(fd, mode) != 0 || (exists && ::fchown(fd, existing.st_uid, existing.st_gid) != 0 && errno != EPERM)) {
        const int error = errno;
        ::close(fd);
        ::unlink(temporary_.c_str());
        Fail(error);
    }
    stream_ = ::fdopen(fd, "wb");
    if (!stream_) {
        const int error = errno;
        ::close(fd);
        ::unlink(temporary_.c_str());
        Fail(error);
    }
}

SafeFileWriter::~SafeFileWriter() {
    if (!committed_) Discard();
}

void SafeFileWriter::Discard() noexcept {
    if (stream_) std::fclose(stream_);
    stream_ = nullptr;
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
    temporary_.clear();
}

void SafeFileWriter::Write(const void* data, size_t count) {
    if (!stream_) throw FileIOException("The file is closed already");
    if (count > 0 && std::fwrite(data, 1, count, stream_) != count) Fail(errno);
}

void SafeFileWriter::Finish() {
    if (!stream_) throw FileIOException("The file is closed already");
    // A failed write the caller did not check still fails the save here.
    if (std::ferror(stream_)) {
        Discard();
        throw FileIOException("The data could not all be written");
    }
    int error = 0;
    if (std::fflush(stream_) != 0 || ::fsync(fileno(stream_)) != 0) error = errno;
    const int closed = std::fclose(stream_);
    stream_ = nullptr;
    if (error == 0 && closed != 0) error = errno;
    if (error != 0) {
        Discard();
        Fail(error);
    }
}

void SafeFileWriter::Replace() {
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
        const int error = errno;
        Discard();
        Fail(error, "can't replace " + target_.string());
    }
    temporary_.clear();
    committed_ = true;
    // The rename itself reaches the disk with the directory; a failure here
    // loses nothing that was there before, so it is not reported.
    const fs::path directory = target_.has_parent_path() ? target_.parent_path() : fs::path(".");
    const int dirFd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0) {
        (void)::fsync(dirFd);
        ::close(dirFd);
    }
}

void SafeFileWriter::Commit() {
    Finish();
    Replace();
}

void SafeFileWriter::CommitAll(const std::vector<SafeFileWriter*>& writers) {
    for (SafeFileWriter* writer : writers) writer->Finish();
    // Each file about to be replaced keeps a second name, beside its
    // temporary one, until every new file is in place.
    std::vector<fs::path> kept(writers.size());
    const auto dropKept = [&] {
        for (const fs::path& path : kept) {
            if (!path.empty()) ::unlink(path.c_str());
        }
    };
    for (size_t i = 0; i < writers.size(); ++i) {
        const SafeFileWriter& writer = *writers[i];
        if (::access(writer.target_.c_str(), F_OK) != 0) continue;
        const fs::path keep = writer.temporary_.string() + ".old";
        if (::link(writer.target_.c_str(), keep.c_str()) != 0) {
            const int error = errno;
            dropKept();
            Fail(error, "can't keep " + writer.target_.string() + " while replacing it");
        }
        kept[i] = keep;
    }
    for (size_t i = 0; i < writers.size(); ++i) {
        try {
            writers[i]->Replace();
        } catch (const FileIOException&) {
            for (size_t j = 0; j < i; ++j) {
                const fs::path& target = writers[j]->target_;
                // Should the old file fail to come back, it stays under its second name.
                if (kept[j].empty())
                    ::unlink(target.c_str());
                else
                    (void)::rename(kept[j].c_str(), target.c_str());
                kept[j].clear();
            }
            dropKept();
            throw;
        }
    }
    dropKept();
}

}  // namespace sondrel
