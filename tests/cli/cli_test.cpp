#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "test_support.h"

namespace sondrel {
namespace {

struct RunResult {
    int exitCode = -1;
    std::string output;  // stdout and stderr together
};

RunResult Cli(const std::string& arguments) {
    RunResult result;
    result.exitCode = test::RunCommand((test::BinaryDir() / "sondrel-cli").string() + " " + arguments, result.output);
    return result;
}

std::string Demo() { return (test::SourceDir() / "data" / "demo.sdrltk").string(); }

TEST(CliTest, InfoDescribesTheDemoSong) {
    RunResult info = Cli("info " + Demo());
    ASSERT_EQ(info.exitCode, 0) << info.output;
    for (const char* part : {"Type:", "NTSC (60Hz)", "Initial speed:              6.0", " sec. (", " min.)"})
        EXPECT_NE(info.output.find(part), std::string::npos) << part;
}

TEST(CliTest, RenderConvertAndTheirFailures) {
    test::ScratchDir dir;
    const std::string wav = (dir / "demo.wav").string();
    RunResult render = Cli("render " + Demo() + " " + wav + " --seconds 2 --volume 80");
    ASSERT_EQ(render.exitCode, 0) << render.output;
    EXPECT_EQ(test::ReadBytes(wav).size(), 44u + 120 * 735 * 4);

    const std::string copy = (dir / "copy.sdrltk").string();
    RunResult convert = Cli("convert " + Demo() + " " + copy);
    ASSERT_EQ(convert.exitCode, 0) << convert.output;
    EXPECT_EQ(test::ReadBytes(copy), test::ReadBytes(Demo()));

    // 31 sample names of 22 letters, one a line, make notes too long for a module: convert says what it changed.
    std::vector<unsigned char> mod(1084 + 1024, 0);
    mod[950] = 1;
    std::memcpy(&mod[1080], "M.K.", 4);
    for (int i = 0; i < 31; ++i) std::memset(&mod[20 + i * 30], 'a', 22);
    mod[20] = '0';
    test::WriteBytes(dir / "names.mod", mod);
    RunResult named = Cli("convert " + (dir / "names.mod").string() + " " + copy);
    ASSERT_EQ(named.exitCode, 0) << named.output;
    EXPECT_NE(named.output.find("note: notes cut to 253 characters (a module file holds at most 255)\n"
                                "note: notes: digit 0 written as the letter O (a module file can't hold it)\n"),
              std::string::npos) << named.output;
    EXPECT_EQ(Cli("info " + copy).exitCode, 0);

    // Files that can't be loaded: the system's message and the reason, exit code 1.
    test::WriteBytes(dir / "junk.txt", {'h', 'e', 'l', 'l', 'o'});
    RunResult junk = Cli("info " + (dir / "junk.txt").string());
    EXPECT_EQ(junk.exitCode, 1);
    EXPECT_NE(junk.output.find("Couldn't load module."), std::string::npos) << junk.output;
    EXPECT_EQ(Cli("render " + (dir / "missing.sdrltk").string() + " " + wav).exitCode, 1);
    RunResult unwritable = Cli("convert " + Demo() + " /nonexistent-dir/x.sdrltk");
    EXPECT_EQ(unwritable.exitCode, 1);
    EXPECT_NE(unwritable.output.find("Couldn't save module."), std::string::npos);
}

// The samples of a WAV file the tool wrote, past its 44-byte header.
std::vector<int16_t> Samples(const std::filesystem::path& wav) {
    const auto bytes = test::ReadBytes(wav);
    std::vector<int16_t> samples(bytes.size() > 44 ? (bytes.size() - 44) / 2 : 0);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<int16_t>(bytes[44 + 2 * i] | bytes[45 + 2 * i] << 8);
    return samples;
}

TEST(CliTest, RenderMutesSolosAndStems) {
    test::ScratchDir dir;
    const std::string render = "render " + Demo() + " ";
    const auto stem = [&](const std::string& name, int c) { return dir / (name + "-ch" + std::to_string(c) + ".wav"); };
    RunResult all = Cli(render + (dir / "all.wav").string() + " --seconds 4 --stems");
    ASSERT_EQ(all.exitCode, 0) << all.output;
    EXPECT_NE(all.output.find("all-ch0.wav to "), std::string::npos) << all.output;
    const std::vector<int16_t> mix = Samples(dir / "all.wav");
    std::vector<int16_t> sum(mix.size());
    for (int c = 0; c < 4; ++c) {
        const std::vector<int16_t> own = Samples(stem("all", c));
        ASSERT_EQ(own.size(), mix.size()) << c;
        for (size_t i = 0; i < sum.size(); ++i) sum[i] = static_cast<int16_t>(sum[i] + own[i]);
    }
    EXPECT_EQ(sum, mix);

    // Muted channels have silent stems; the solo of one channel is its stem.
    ASSERT_EQ(Cli(render + (dir / "muted.wav").string() + " --seconds 4 --stems --mute 1,3").exitCode, 0);
    for (int c : {1, 3}) {
        const std::vector<int16_t> own = Samples(stem("muted", c));
        EXPECT_TRUE(std::all_of(own.begin(), own.end(), [](int16_t s) { return s == 0; })) << c;
    }
    EXPECT_EQ(Samples(stem("muted", 0)), Samples(stem("all", 0)));
    ASSERT_EQ(Cli(render + (dir / "solo.wav").string() + " --seconds 4 --solo 0").exitCode, 0);
    EXPECT_EQ(Samples(dir / "solo.wav"), Samples(stem("all", 0)));
    EXPECT_FALSE(std::filesystem::exists(stem("solo", 0)));

    // A folder where a stem would go: nothing is written and the old mix stays.
    std::filesystem::create_directory(stem("taken", 2));
    test::WriteBytes(dir / "taken.wav", {7});
    RunResult taken = Cli(render + (dir / "taken.wav").string() + " --seconds 1 --stems");
    EXPECT_EQ(taken.exitCode, 1);
    EXPECT_NE(taken.output.find("Couldn't write the WAV file."), std::string::npos) << taken.output;
    EXPECT_EQ(test::ReadBytes(dir / "taken.wav"), (std::vector<unsigned char>{7}));
    for (int c : {0, 1, 3}) EXPECT_FALSE(std::filesystem::exists(stem("taken", c))) << c;

    const std::string out = render + (dir / "x.wav").string();
    for (const char* bad : {" --mute 1 --solo 2", " --mute 4", " --solo", " --mute 1,,2", " --solo 0,", " --stems=1"}) {
        RunResult run = Cli(out + bad);
        EXPECT_EQ(run.exitCode, 2) << bad;
        EXPECT_NE(run.output.find("usage: sondrel-cli render"), std::string::npos) << bad;
    }
    EXPECT_NE(Cli(out + " --mute 1 --solo 2").output.find("--mute and --solo can't be used together"),
              std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(dir / "x.wav"));
}

TEST(CliTest, UsageErrorsAndHelp) {
    test::ScratchDir dir;
    const std::string demo = Demo() + " ";
    const std::string mid = (dir / "demo.mid").string();
    for (const std::string& bad :
         {std::string(), std::string("frobnicate"), std::string("info"), "render " + demo + "x.wav --volume 101",
          "render " + demo + "x.wav --loops", "render " + demo + "x.wav --loops two", "info " + demo + "--chip secam",
          "export-midi " + demo + mid + " --program 0=128", "export-midi " + demo + mid + " --program 5",
          "export-vgm " + demo}) {
        EXPECT_EQ(Cli(bad).exitCode, 2) << bad;
    }
    EXPECT_FALSE(std::filesystem::exists(mid));
    RunResult row = Cli("export-midi " + demo + mid + " --program 48=1");
    EXPECT_EQ(row.exitCode, 2);
    EXPECT_NE(row.output.find("ROW=PROG"), std::string::npos) << row.output;
    // Importer flags are checked even when the file needs no importer.
    EXPECT_EQ(Cli("info " + demo + "--channel 10=3:5 --channel 1=0:0 --disable 2 --lines-per-beat 4"
                  " --instruments 0,1,2,3,4,15 --chip pal --divider 2x").exitCode, 0);
    for (const char* bad : {"--channel 17=0:0", "--channel 1=4:0", "--channel 1=0", "--channel 1=0:16",
                            "--disable 0", "--lines-per-beat 0", "--instruments 1,2,3", "--instruments 1,2,3,4,5,6,7",
                            "--instruments 1,2,3,4,5,x"}) {
        EXPECT_EQ(Cli("info " + demo + bad).exitCode, 2) << bad;
    }
    EXPECT_EQ(Cli("--help").exitCode, 0);
    for (const char* command : {"info", "render", "convert", "export-midi"}) {
        RunResult help = Cli(std::string(command) + " --help");
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_NE(help.output.find("usage: sondrel-cli"), std::string::npos) << command;
    }
    RunResult programs = Cli("export-midi --list-programs");
    ASSERT_EQ(programs.exitCode, 0);
    EXPECT_NE(programs.output.find(" 80  Lead 1 (square)"), std::string::npos) << programs.output;
}

TEST(CliTest, ExportsTheDemoSongAsVgmAndMidiAndReportsFailures) {
    test::ScratchDir dir;
    const std::string vgm = (dir / "demo.vgm").string();
    RunResult run = Cli("export-vgm " + Demo() + " " + vgm);
    ASSERT_EQ(run.exitCode, 0) << run.output;
    auto bytes = test::ReadBytes(vgm);
    ASSERT_GT(bytes.size(), 0x40u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "Vgm ");
    EXPECT_NE(run.output.find("43.20 sec."), std::string::npos) << run.output;

    // Row 0: tone notes of instrument 0 (the lead); row 35: white noise of instrument 3 (the drums).
    const std::string mid = (dir / "demo.mid").string();
    run = Cli("export-midi " + Demo() + " " + mid + " --program 0=5 --program 35=9");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    bytes = test::ReadBytes(mid);
    ASSERT_GT(bytes.size(), 14u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "MThd");
    const std::string text(bytes.begin(), bytes.end());
    // Program changes are written at delta 0.
    EXPECT_NE(text.find(std::string("\x00\xC0\x05", 3)), std::string::npos);
    EXPECT_EQ(text.find(std::string("\x00\xC0\x50", 3)), std::string::npos) << "row 0 kept its default";
    EXPECT_NE(text.find(std::string("\x00\xC3\x09", 3)), std::string::npos);

    run = Cli("export-vgm " + (dir / "missing.sdrltk").string() + " " + vgm);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("Couldn't load module."), std::string::npos) << run.output;
    run = Cli("export-midi " + Demo() + " " + (dir / "no" / "x.mid").string());
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("Couldn't write the MIDI file."), std::string::npos) << run.output;
}

// Every command that writes, onto a disk that has filled up: exit code 1 with
// the failure and its reason, and the file that was there stays as it was.
TEST(CliTest, WritesOntoAFullDiskFailAndKeepTheOldFile) {
    test::SmallDisk disk;
    if (!disk.Mounted()) GTEST_SKIP() << disk.Why();
    const std::string target = (disk / "song.sdrltk").string();
    ASSERT_EQ(Cli("convert " + Demo() + " " + target).exitCode, 0);
    const auto good = test::ReadBytes(target);
    disk.Fill();
    const struct {
        std::string command;
        const char* failure;
    } cases[] = {
        {"convert " + Demo() + " " + target, "Couldn't save module."},
        {"export-vgm " + Demo() + " " + target, "Couldn't write the VGM file."},
        {"export-midi " + Demo() + " " + target, "Couldn't write the MIDI file."},
        {"render " + Demo() + " " + target + " --seconds 1", "Couldn't write the WAV file."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        const RunResult run = Cli(c.command);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.output.find(c.failure), std::string::npos) << run.output;
        EXPECT_NE(run.output.find("No space left on device"), std::string::npos) << run.output;
        EXPECT_EQ(run.output.find("Saved"), std::string::npos) << run.output;
        EXPECT_EQ(run.output.find("Wrote"), std::string::npos) << run.output;
        EXPECT_EQ(test::ReadBytes(target), good);
    }
    EXPECT_EQ(disk.Names(), (std::vector<std::string>{"filler", "song.sdrltk"}));
}

// What can't be read says why: a missing file, one the user may not read,
// and things that are not files, refused at once rather than waited on.
TEST(CliTest, FilesThatCantBeReadSayWhy) {
    test::ScratchDir dir;
    ASSERT_EQ(std::system(("mkfifo " + (dir / "pipe.sdrltk").string()).c_str()), 0);
    std::filesystem::copy_file(Demo(), dir / "private.sdrltk");
    std::filesystem::permissions(dir / "private.sdrltk", std::filesystem::perms::owner_write);
    std::filesystem::permissions(dir.Path(), std::filesystem::perms(0755));
    const struct {
        std::string file;
        const char* reason;
    } cases[] = {
        {(dir / "missing.sdrltk").string(), "No such file or directory"},
        {(dir / "pipe.sdrltk").string(), "It is a named pipe, not a file"},
        {dir.Path().string(), "It is a folder, not a file"},
    };
    for (const auto& c : cases) {
        const RunResult run = Cli("info " + c.file);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.output.find(std::string("Couldn't load module.\n  ") + c.reason), std::string::npos)
            << run.output;
    }
    // Only a user other than root can be refused a file.
    RunResult denied;
    if (geteuid() == 0) {
        denied.exitCode = test::RunCommand("setpriv --reuid=nobody --regid=nogroup --clear-groups " +
                                               (test::BinaryDir() / "sondrel-cli").string() + " info " +
                                               (dir / "private.sdrltk").string(),
                                           denied.output);
    } else {
        denied = Cli("info " + (dir / "private.sdrltk").string());
    }
    EXPECT_EQ(denied.exitCode, 1);
    EXPECT_NE(denied.output.find("Couldn't load module.\n  Permission denied"), std::string::npos) << denied.output;
}

}  // namespace
}  // namespace sondrel
