#include "test_support.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>

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

}  // namespace sondrel::test
