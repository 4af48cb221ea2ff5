#include <gtest/gtest.h>

#include <string>

#include "test_support.h"

namespace sondrel {
namespace {

// Runs sondrel-cli with the arguments; returns the exit code and puts stdout and stderr into output.
int RunCli(const std::string& arguments, const test::ScratchDir&, std::string& output) {
    return test::RunCommand((test::BinaryDir() / "sondrel-cli").string() + " " + arguments, output);
}

const std::string kDemo = (test::SourceDir() / "data" / "demo.sdrltk").string();

TEST(ExportCliTest, ExportsTheDemoSongAsVgmAndMidi) {
    test::ScratchDir dir;
    std::string output;
    const std::string vgm = (dir / "demo.vgm").string();
    ASSERT_EQ(RunCli("export-vgm " + kDemo + " " + vgm, dir, output), 0) << output;
    auto bytes = test::ReadBytes(vgm);
    ASSERT_GT(bytes.size(), 0x40u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "Vgm ");
    EXPECT_NE(output.find("37.33 sec."), std::string::npos) << output;

    // Row 0: tone notes of instrument 0 (the lead); row 35: white noise of instrument 3 (the drums).
    const std::string mid = (dir / "demo.mid").string();
    ASSERT_EQ(RunCli("export-midi " + kDemo + " " + mid + " --program 0=5 --program 35=9", dir, output), 0) << output;
    bytes = test::ReadBytes(mid);
    ASSERT_GT(bytes.size(), 14u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "MThd");
    const std::string text(bytes.begin(), bytes.end());
    // Program changes are written at delta 0.
    EXPECT_NE(text.find(std::string("\x00\xC0\x05", 3)), std::string::npos);
    EXPECT_EQ(text.find(std::string("\x00\xC0\x50", 3)), std::string::npos) << "row 0 kept its default";
    EXPECT_NE(text.find(std::string("\x00\xC3\x09", 3)), std::string::npos);
}

TEST(ExportCliTest, UsageErrorsAndFailures) {
    test::ScratchDir dir;
    std::string output;
    const std::string mid = (dir / "demo.mid").string();
    EXPECT_EQ(RunCli("export-midi " + kDemo + " " + mid + " --program 48=1", dir, output), 2);
    EXPECT_NE(output.find("ROW=PROG"), std::string::npos) << output;
    EXPECT_EQ(RunCli("export-midi " + kDemo + " " + mid + " --program 0=128", dir, output), 2);
    EXPECT_EQ(RunCli("export-midi " + kDemo + " " + mid + " --program 5", dir, output), 2);
    EXPECT_EQ(RunCli("export-vgm " + kDemo, dir, output), 2);
    EXPECT_FALSE(std::filesystem::exists(mid));

    EXPECT_EQ(RunCli("export-vgm " + (dir / "missing.sdrltk").string() + " " + mid, dir, output), 1);
    EXPECT_NE(output.find("Couldn't load module."), std::string::npos) << output;
    EXPECT_EQ(RunCli("export-midi " + kDemo + " " + (dir / "no" / "x.mid").string(), dir, output), 1);
    EXPECT_NE(output.find("Couldn't write the MIDI file."), std::string::npos) << output;

    ASSERT_EQ(RunCli("export-midi --help", dir, output), 0);
    EXPECT_NE(output.find("ROW"), std::string::npos);
    EXPECT_NE(output.find("PROG"), std::string::npos);
    ASSERT_EQ(RunCli("export-midi --list-programs", dir, output), 0);
    EXPECT_NE(output.find(" 80  Lead 1 (square)"), std::string::npos) << output;
}

}  // namespace
}  // namespace sondrel
