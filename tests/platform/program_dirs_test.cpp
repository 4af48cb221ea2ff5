#include "platform/program_dirs.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "test_support.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

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
    test::ScopedEnv homeVariable("HOME", home.string());

    // The executable's folder is writable but holds no runtime files.
    {
        test::ScopedEnv config("XDG_CONFIG_HOME", std::nullopt);
        EXPECT_EQ(DataDirectoryFor(prefix / "bin"), prefix / "share" / "sondrel");
        EXPECT_EQ(PreferencesDirectoryFor(prefix / "bin"), home / ".config" / "sondrel");
        EXPECT_TRUE(fs::is_directory(home / ".config" / "sondrel"));
    }
    {
        test::ScopedEnv config("XDG_CONFIG_HOME", (scratch / "config").string());
        EXPECT_EQ(PreferencesDirectoryFor(prefix / "bin"), scratch / "config" / "sondrel");
    }
    // A relative configuration home is not one.
    {
        test::ScopedEnv config("XDG_CONFIG_HOME", "relative");
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
