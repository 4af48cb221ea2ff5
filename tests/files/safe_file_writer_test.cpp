#include "files/safe_file_writer.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <memory>
#include <string>
#include <vector>
#include <functional>

#include "files/export/midi_export.h"
#include "files/export/song_render.h"
#include "files/export/vgm_export.h"
#include "files/file_stream.h"
#include "files/module_file.h"
#include "files/module_test_support.h"
#include "model/exception.h"
#include "test_support.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

// The failure's reason as the user is shown it, "" when nothing was thrown.
std::string FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Exception& e) {
        return UserReason(e);
    }
    return "";
}

mode_t ModeOf(const fs::path& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 07777;
}

// Every writer the program has, each onto a disk that has filled up while a
// good module sits on it: the module stays byte for byte, no temporary file
// is left behind, and the reason names the full disk.
TEST(SafeFileWriterTest, AFullDiskLeavesTheOldFileAsItWasAndSaysWhy) {
    test::SmallDisk disk;
    if (!disk.Mounted()) GTEST_SKIP() << disk.Why();
    auto demo = test::LoadDemo();
    ASSERT_TRUE(demo);
    const fs::path song = disk / "song.sdrltk";
    SaveModule(*demo, song.string());
    const auto good = test::ReadBytes(song);
    ASSERT_GT(good.size(), 1000u);
    disk.Fill();
    const std::vector<std::string> names = disk.Names();

    // A bigger song: its data can't all reach the disk.
    demo->notes = std::string(250, 'n');
    for (int p = 0; p < 4; ++p) demo->patterns[p] = demo->patterns[0], demo->patterns[p].used = true;
    MidiExportOptions midi;
    const struct {
        const char* what;
        std::function<void()> write;
    } writers[] = {
        {"module", [&] { SaveModule(*demo, song.string()); }},
        {"VGM", [&] { ExportVgm(*demo, song.string()); }},
        {"MIDI", [&] { WriteMidiFile(midi, *demo, song.string()); }},
        {"WAV", [&] { RenderSongToWav(*demo, song.string(), {1, 0.0, 50}); }},
        {"bytes", [&] { ReplaceFileContents(song, good.data(), good.size()); }},
    };
    for (const auto& writer : writers) {
        SCOPED_TRACE(writer.what);
        const std::string reason = FailureOf(writer.write);
        EXPECT_TRUE(reason.ends_with("No space left on device")) << reason;
        EXPECT_EQ(test::ReadBytes(song), good);
        EXPECT_EQ(disk.Names(), names);
    }
    // With room again the same save goes through.
    fs::remove(disk / "filler");
    EXPECT_EQ(FailureOf([&] { SaveModule(*demo, song.string()); }), "");
    EXPECT_NE(test::ReadBytes(song), good);
    EXPECT_EQ(disk.Names(), std::vector<std::string>{"song.sdrltk"});
}

TEST(SafeFileWriterTest, ALinkStaysALinkAndTheReplacedFileKeepsItsPermissions) {
    test::ScratchDir dir;
    test::WriteBytes(dir / "real", {1, 2, 3});
    fs::permissions(dir / "real", fs::perms(0640));
    fs::create_symlink("real", dir / "link");
    fs::create_symlink("link", dir / "chain");
    ReplaceFileContents(dir / "chain", "abcd", 4);
    EXPECT_TRUE(fs::is_symlink(dir / "chain"));
    EXPECT_TRUE(fs::is_symlink(dir / "link"));
    EXPECT_EQ(test::ReadBytes(dir / "real"), (std::vector<unsigned char>{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(ModeOf(dir / "real"), 0640u);

    // A link to a file not there yet makes the file; a new file gets the umask's bits.
    fs::create_symlink("later", dir / "dangling");
    const mode_t mask = ::umask(027);
    ReplaceFileContents(dir / "dangling", "x", 1);
    ReplaceFileContents(dir / "new", "x", 1);
    ::umask(mask);
    EXPECT_TRUE(fs::is_symlink(dir / "dangling"));
    EXPECT_EQ(test::ReadBytes(dir / "later"), std::vector<unsigned char>{'x'});
    EXPECT_EQ(ModeOf(dir / "new"), 0640u);

    // Dropped before Commit, a writer leaves nothing and the target is untouched.
    {
        SafeFileWriter writer(dir / "real");
        writer.Write("zz", 2);
    }
    EXPECT_EQ(test::ReadBytes(dir / "real").size(), 4u);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.Path()), fs::directory_iterator()), 6);
}

// Loading refuses anything but a regular file before reading from it, so a
// named pipe with no writer doesn't hang the load; saving never replaces one.
TEST(SafeFileWriterTest, OnlyRegularFilesAreLoadedOrReplaced) {
    test::ScratchDir dir;
    ASSERT_EQ(::mkfifo((dir / "pipe.sdrltk").c_str(), 0600), 0);
    fs::create_directory(dir / "folder.sdrltk");
    ImportOptionsProvider options;
    const struct {
        fs::path path;
        std::string reason;
    } cases[] = {
        {dir / "pipe.sdrltk", "It is a named pipe, not a file"},
        {dir / "folder.sdrltk", "It is a folder, not a file"},
        {"/dev/null", "It is a device, not a file"},
        {dir / "missing.sdrltk", "No such file or directory"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(FailureOf([&] { LoadNewModule(c.path.string(), options); }), c.reason);
        EXPECT_EQ(FailureOf([&] { DetectFileKind(c.path.string()); }), c.reason);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    }
    Module module;
    EXPECT_NE(FailureOf([&] { SaveModule(module, (dir / "pipe.sdrltk").string()); }), "");
    EXPECT_NE(FailureOf([&] { SaveModule(module, (dir / "folder.sdrltk").string()); }), "");
    EXPECT_TRUE(fs::is_fifo(dir / "pipe.sdrltk"));
    EXPECT_TRUE(fs::is_directory(dir / "folder.sdrltk"));
}

// Files committed together: when a later one can't take its place, the ones
// already replaced get their old contents back, new ones go, and no
// temporary or kept copy is left.
TEST(SafeFileWriterTest, FilesCommittedTogetherAllAppearOrNone) {
    test::ScratchDir dir;
    test::WriteBytes(dir / "a", {1});
    const auto commit = [&](const std::vector<std::string>& names) {
        std::vector<std::unique_ptr<SafeFileWriter>> writers;
        std::vector<SafeFileWriter*> all;
        for (const std::string& name : names) {
            writers.push_back(std::make_unique<SafeFileWriter>(dir / name));
            writers.back()->Write(name.data(), name.size());
            all.push_back(writers.back().get());
        }
        // What stands at the last name by the time of the commit is a folder.
        fs::create_directory(dir / names.back());
        return FailureOf([&] { SafeFileWriter::CommitAll(all); });
    };
    EXPECT_NE(commit({"a", "b", "c"}), "");
    EXPECT_EQ(test::ReadBytes(dir / "a"), (test::Bytes{1}));
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir.Path())) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"a", "c"}));

    fs::remove(dir / "c");
    std::vector<std::unique_ptr<SafeFileWriter>> writers;
    for (const char* name : {"a", "b"}) {
        writers.push_back(std::make_unique<SafeFileWriter>(dir / name));
        writers.back()->Write(name, 1);
    }
    SafeFileWriter::CommitAll({writers[0].get(), writers[1].get()});
    EXPECT_EQ(test::ReadBytes(dir / "a"), (test::Bytes{'a'}));
    EXPECT_EQ(test::ReadBytes(dir / "b"), (test::Bytes{'b'}));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.Path()), fs::directory_iterator()), 2);
}

}  // namespace
}  // namespace sondrel
