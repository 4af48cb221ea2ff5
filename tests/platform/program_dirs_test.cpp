#include "platform/program_dirs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "test_support.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

TEST(ProgramDirs, ProgramDirectoryIsTheExecutablesDirectory) {
    const fs::path expected = fs::canonical("/proc/self/exe").parent_path();
    EXPECT_EQ(fs::canonical(ProgramDirectory()), expected);
    // The build directory is writable, so the preferences stay beside the program.
    EXPECT_EQ(fs::canonical(PreferencesDirectory()), expected);
    EXPECT_EQ(PreferencesFilePath(), PreferencesDirectory() / "sondrel.prefs");
}

TEST(ProgramDirs, UnusableProgramDirectoryFallsBackToTheUsersDataDirectory) {
    test::ScratchDir home;
    const char* old = std::getenv("XDG_DATA_HOME");
    const std::string saved = old ? old : "";
    setenv("XDG_DATA_HOME", home.Path().c_str(), 1);
    const fs::path chosen = PreferencesDirectoryFor(home / "no such directory");
    if (old) {
        setenv("XDG_DATA_HOME", saved.c_str(), 1);
    } else {
        unsetenv("XDG_DATA_HOME");
    }
    EXPECT_EQ(chosen, home / "sondrel" / "sondrel");
    EXPECT_TRUE(fs::is_directory(chosen));
}

}  // namespace
}  // namespace sondrel
