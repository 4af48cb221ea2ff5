#pragma once
// Helpers shared by the test programs: where the repository and the shared
// corpus are, and scratch directories that clean up after themselves.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace sondrel::test {

std::filesystem::path SourceDir();
std::filesystem::path BinaryDir();

// ../shared/corpus beside the repository, or an empty path when it is absent.
std::filesystem::path CorpusDir();

std::vector<unsigned char> ReadBytes(const std::filesystem::path& path);
void WriteBytes(const std::filesystem::path& path, const std::vector<unsigned char>& bytes);

// Runs a shell command line; returns its exit code (-1 when it did not exit
// normally) with its standard output and error together in output.
int RunCommand(const std::string& commandLine, std::string& output);

// Sets (or, with nullopt, removes) an environment variable for one scope.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::optional<std::string>& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    const char* name_;
    std::optional<std::string> saved_;
};

// A fresh directory below the system's temporary directory, removed on destruction.
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// A 16 KiB tmpfs mounted on a scratch directory for the life of the object,
// to see what writes do when the disk fills up. Mounting needs privileges
// the test may lack: Mounted() tells, and Why() says what went wrong.
class SmallDisk {
public:
    SmallDisk();
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool Mounted() const { return mounted_; }
    const std::string& Why() const { return why_; }
    std::filesystem::path operator/(const std::string& name) const { return scratch_ / name; }
    // Takes every free block with a file named "filler".
    void Fill() const;
    // The names in the disk's root, sorted.
    std::vector<std::string> Names() const;

private:
    ScratchDir scratch_;
    bool mounted_ = false;
    std::string why_;
};

}  // namespace sondrel::test
