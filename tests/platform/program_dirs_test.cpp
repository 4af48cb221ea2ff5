#include "platform/program_dirs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "test_support.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

// Sets (or, with nullopt, removes) an environment variable for one scope.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        if (value) {
            setenv(name, value->c_str(), 1);
        } else {
            unsetenv(name);
        }
    }
    ~ScopedVariable() {
        if (old_) {
            setenv(name_, old_->c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* name_;
    std::optional<std::string> old_;
};

TEST(ProgramDirs, TheBuildTreeKeepsEverythingBesideTheExecutable) {
    const fs::path expected = fs::canonical("/proc/self/exe").parent_path();
    EXPECT_EQ(fs::canonical(ProgramDirectory()), expected);
    EXPECT_EQ(fs::canonical(DataDirectoryFor(ProgramDirectory())), expected);
    EXPECT_EQ(fs::canonical(PreferencesDirectory()), expected);
    EXPECT_EQ(PreferencesFilePath(), PreferencesDirectory() / "sondrel.prefs");
}

TEST(ProgramDirs, AnInstalledCopyReadsFromShareAndWritesToTheConfigurationDirectory) {
    test::ScratchDir scratch;
    const fs::path prefix = scratch / "prefix";
    fs::create_directories(prefix / "bin");
    fs::create_directories(prefix / "share" / "sondrel");
    const fs::path home = scratch / "home";
    ScopedVariable homeVariable("HOME", home.string());

    // The executable's folder is writable but holds no runtime files.
    {
        ScopedVariable config("XDG_CONFIG_HOME", std::nullopt);
        EXPECT_EQ(DataDirectoryFor(prefix / "bin"), prefix / "share" / "sondrel");
        EXPECT_EQ(PreferencesDirectoryFor(prefix / "bin"), home / ".config" / "sondrel");
        EXPECT_TRUE(fs::is_directory(home / ".config" / "sondrel"));
    }
    {
        ScopedVariable config("XDG_CONFIG_HOME", (scratch / "config").string());
        EXPECT_EQ(PreferencesDirectoryFor(prefix / "bin"), scratch / "config" / "sondrel");
    }
    // A relative configuration home is not one.
    {
        ScopedVariable config("XDG_CONFIG_HOME", "relative");
        EXPECT_EQ(ConfigDirectory(), home / ".config" / "sondrel");
    }

    // Runtime files beside the executable win; a folder without them and
    // without a share folder has no data directory.
    test::WriteBytes(prefix / "bin" / "readme.txt", {});
    EXPECT_EQ(DataDirectoryFor(prefix / "bin"), prefix / "bin");
    EXPECT_EQ(PreferencesDirectoryFor(prefix / "bin"), prefix / "bin");
    EXPECT_EQ(DataDirectoryFor(prefix / "share" / "sondrel"), fs::path());
}

}  // namespace
}  // namespace sondrel
