// The build installed into a scratch prefix, both programs run from there:
// they find their runtime files in share/sondrel and the tracker keeps its
// preferences in the user's configuration directory, not in the install tree.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "test_support.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

std::set<fs::path> FilesBelow(const fs::path& root) {
    std::set<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        if (!entry.is_directory()) files.insert(fs::relative(entry.path(), root));
    return files;
}

std::string Quoted(const fs::path& path) { return "'" + path.string() + "'"; }

TEST(Install, BothProgramsRunFromTheInstalledTreeAndLeaveItAsInstalled) {
    test::ScratchDir scratch;
    const fs::path prefix = scratch / "prefix";
    std::string output;
    const auto run = [&output](const std::string& command) { return test::RunCommand(command, output); };
    ASSERT_EQ(run(Quoted(SONDREL_CMAKE_COMMAND) + " --install " + Quoted(SONDREL_BUILD_DIR) + " --prefix " +
                  Quoted(prefix)),
              0)
        << output;

    std::set<fs::path> expected = {"bin/sondrel", "bin/sondrel-cli", "share/applications/sondrel.desktop",
                                   "share/icons/hicolor/64x64/apps/sondrel.png", "share/man/man1/sondrel-cli.1",
                                   "share/sondrel/skins/fonts/DejaVuSans.ttf"};
    for (const fs::path& file : FilesBelow(test::SourceDir() / "data")) expected.insert("share/sondrel" / file);
    const std::set<fs::path> installed = FilesBelow(prefix);
    for (const fs::path& file : expected) EXPECT_TRUE(installed.count(file)) << file << " was not installed";
    EXPECT_EQ(run("desktop-file-validate " + Quoted(prefix / "share/applications/sondrel.desktop")), 0) << output;

    // Run from elsewhere, so that only the executable's place can lead to the files.
    const fs::path elsewhere = scratch / "elsewhere";
    fs::create_directories(elsewhere);
    const std::string cd = "cd " + Quoted(elsewhere) + " && ";
    ASSERT_EQ(run(cd + Quoted(prefix / "bin/sondrel-cli") + " info " + Quoted(prefix / "share/sondrel/demo.sdrltk")),
              0)
        << output;
    EXPECT_NE(output.find("Four Corners"), std::string::npos) << output;

    const fs::path config = scratch / "config";
    ASSERT_EQ(run(cd + "env HOME=" + Quoted(scratch / "home") + " XDG_CONFIG_HOME=" + Quoted(config) +
                  " SDL_VIDEODRIVER=offscreen SDL_AUDIODRIVER=dummy ASAN_OPTIONS=detect_leaks=0"
                  " SONDREL_EXIT_AFTER_FRAMES=30 SONDREL_SCREENSHOT=shot.png " + Quoted(prefix / "bin/sondrel")),
              0)
        << output;
    EXPECT_EQ(output.find("runtime files"), std::string::npos) << output;
    EXPECT_TRUE(fs::exists(config / "sondrel" / "sondrel.prefs"));
    // A relative screenshot name is taken from where the program started.
    EXPECT_TRUE(fs::exists(elsewhere / "shot.png"));
    EXPECT_EQ(FilesBelow(prefix), installed);
}

}  // namespace
}  // namespace sondrel
