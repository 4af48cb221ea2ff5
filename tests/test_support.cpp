#include "test_support.h"

#include <sys/mount.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace sondrel::test {

std::filesystem::path SourceDir() { return SONDREL_SOURCE_DIR; }
std::filesystem::path BinaryDir() { return SONDREL_BINARY_DIR; }

std::filesystem::path CorpusDir() {
    auto dir = SourceDir() / ".." / "shared" / "corpus";
    std::error_code ec;
    if (std::filesystem::is_directory(dir, ec)) return std::filesystem::canonical(dir);
    return {};
}

std::vector<unsigned char> ReadBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot open " + path.string());
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteBytes(const std::filesystem::path& path, const std::vector<unsigned char>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + path.string());
}

int RunCommand(const std::string& commandLine, std::string& output) {
    output.clear();
    FILE* pipe = popen((commandLine + " 2>&1").c_str(), "r");
    if (!pipe) return -1;
    std::array<char, 4096> buffer{};
    size_t got;
    while ((got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) output.append(buffer.data(), got);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

static void SetOrUnset(const char* name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name, value->c_str(), 1);
    } else {
        unsetenv(name);
    }
}

ScopedEnv::ScopedEnv(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* old = std::getenv(name)) saved_ = old;
    SetOrUnset(name, value);
}

ScopedEnv::~ScopedEnv() { SetOrUnset(name_, saved_); }

ScratchDir::ScratchDir() {
    std::random_device rd;
    for (int attempt = 0; attempt < 100; ++attempt) {
        auto candidate = std::filesystem::temp_directory_path() /
                         ("sondrel-test-" + std::to_string(rd()));
        if (std::filesystem::create_directory(candidate)) {
            path_ = candidate;
            return;
        }
    }
    throw std::runtime_error("cannot create a scratch directory");
}

ScratchDir::~ScratchDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
}

SmallDisk::SmallDisk() {
    if (::mount("tmpfs", scratch_.Path().c_str(), "tmpfs", 0, "size=16k") == 0) {
        mounted_ = true;
    } else {
        why_ = std::string("can't mount a small tmpfs here: ") + std::strerror(errno);
    }
}

SmallDisk::~SmallDisk() {
    if (mounted_) ::umount2(scratch_.Path().c_str(), MNT_DETACH);
}

void SmallDisk::Fill() const {
    std::FILE* filler = std::fopen((scratch_.Path() / "filler").c_str(), "ab");
    if (!filler) return;
    std::setvbuf(filler, nullptr, _IONBF, 0);
    const char block[512] = {};
    while (std::fwrite(block, 1, sizeof block, filler) == sizeof block) {
    }
    while (std::fputc(0, filler) != EOF) {
    }
    std::fclose(filler);
}

std::vector<std::string> SmallDisk::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(scratch_.Path()))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace sondrel::test
