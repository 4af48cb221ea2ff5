#pragma once
// Writing a file so that a failure never costs the file it was meant to
// replace. The data goes to a new temporary file in the target's directory;
// Commit flushes, syncs and closes it, checking each step, and only then
// renames it over the target. Until Commit has succeeded the target is
// untouched, and a writer that is destroyed uncommitted removes its
// temporary file.
//
// A target that is a symbolic link is followed: the file it names is
// replaced and the link stays a link. A replaced file keeps its permission
// bits; a new file gets the usual ones for the user's umask.
//
// Every failure throws FileIOException whose message is the reason as the
// user should read it, such as "No space left on device".

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace sondrel {

class SafeFileWriter {
public:
    // Creates the temporary file. Throws when the target names something
    // other than a regular file, or when its directory can't take a new file.
    explicit SafeFileWriter(const std::filesystem::path& target);
    ~SafeFileWriter();
    SafeFileWriter(const SafeFileWriter&) = delete;
    SafeFileWriter& operator=(const SafeFileWriter&) = delete;

    // The stream to write into (binary); valid until Commit or destruction.
    std::FILE* Stream() const { return stream_; }
    // The file that Commit replaces: the target, or the file its link names.
    const std::filesystem::path& Target() const { return target_; }

    // Writes count bytes, throwing with the reason when they don't all go.
    void Write(const void* data, size_t count);
    // Makes the written data the target's content.
    void Commit();
    // Commits several writers so that all their targets are replaced or none
    // is: every file's data reaches the disk first, and when one rename
    // fails those done before it are undone, old contents included.
    static void CommitAll(const std::vector<SafeFileWriter*>& writers);

private:
    // Flushes, syncs and closes the temporary file; the target is untouched.
    void Finish();
    // Renames the finished temporary file over the target.
    void Replace();
    void Discard() noexcept;

    std::filesystem::path target_;
    std::filesystem::path temporary_;
    std::FILE* stream_ = nullptr;
    bool committed_ = false;
};

// Writes the whole file through a SafeFileWriter.
void ReplaceFileContents(const std::filesystem::path& target, const void* data, size_t count);

// The reason a system call failed, for the user ("No space left on device").
std::string SystemErrorText(int error);

}  // namespace sondrel
