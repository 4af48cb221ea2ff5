#include "app/command_line.h"

#include <gtest/gtest.h>

#include "app/application.h"

namespace sondrel {
namespace {

using Arguments = std::vector<std::string>;

TEST(CommandLine, SplitsOnWhiteSpaceWithQuotesAndNoEscapes) {
    EXPECT_EQ(SplitCommandLine("sondrel \"my song.sdrltk\""), (Arguments{"sondrel", "my song.sdrltk"}));
    EXPECT_EQ(SplitCommandLine("sondrel my song.sdrltk"), (Arguments{"sondrel", "my", "song.sdrltk"}));
    EXPECT_EQ(SplitCommandLine(" \t\r\n\v\fa\tb  "), (Arguments{"a", "b"}));
    EXPECT_EQ(SplitCommandLine(""), Arguments{});
    // A lone quote at the end gives no argument; an unclosed one runs to the end.
    EXPECT_EQ(SplitCommandLine("sondrel \""), (Arguments{"sondrel"}));
    EXPECT_EQ(SplitCommandLine("sondrel \"open end"), (Arguments{"sondrel", "open end"}));
    // Quotes inside an unquoted argument stay; a closing quote ends the argument.
    EXPECT_EQ(SplitCommandLine("a\"b c"), (Arguments{"a\"b", "c"}));
    EXPECT_EQ(SplitCommandLine("\"my song\".sdrltk"), (Arguments{"my song", ".sdrltk"}));
    EXPECT_EQ(SplitCommandLine("\"\" x"), (Arguments{"", "x"}));
}

TEST(CommandLine, TheShellsArgumentsSurviveJoiningAndSplitting) {
    const char* argv[] = {"/usr/bin/sondrel", "my song.sdrltk", "", "plain"};
    const std::string line = JoinCommandLine(4, argv);
    EXPECT_EQ(line, "/usr/bin/sondrel \"my song.sdrltk\" \"\" plain");
    EXPECT_EQ(SplitCommandLine(line), (Arguments{"/usr/bin/sondrel", "my song.sdrltk", "", "plain"}));
}

TEST(CommandLine, ProgramNameIsTheFileNameUpToItsFirstDot) {
    EXPECT_EQ(ProgramNameFromPath("C:\\Programs\\Sondrel\\sondrel.exe"), "sondrel");
    EXPECT_EQ(ProgramNameFromPath("/opt/my.tools/sondrel"), "sondrel");
    EXPECT_EQ(ProgramNameFromPath("./sondrel.debug.bin"), "sondrel");
    EXPECT_EQ(ProgramNameFromPath("sondrel"), "sondrel");
    // A backslash wins over later slashes.
    EXPECT_EQ(ProgramNameFromPath("a\\b/c.d"), "b/c");
}

TEST(CrashSave, FileNameAndMessage) {
    EXPECT_EQ(CrashFileName({2007, 3, 4, 5, 6, 7}), "crash(2007.3.4 5.6.7).sdrltk.");
    EXPECT_EQ(CrashMessage("/home/me/crash(2007.3.4 5.6.7).sdrltk."),
              "Sondrel has crashed.\nThe current module is saved as crash(2007.3.4 5.6.7).sdrltk.\n"
              "in the folder /home/me.");
}

}  // namespace
}  // namespace sondrel
