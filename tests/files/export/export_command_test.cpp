#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "files/export/export_command.h"
#include "files/export/vgm_export.h"
#include "files/module_test_support.h"
#include "model/exception.h"

namespace sondrel {
namespace {

// Answers the requesters from a script and records what was asked, in order.
class FakeExportUi : public ExportUserInterface {
public:
    std::string RequestExportFile(const std::vector<std::string>& filters, const std::string& title,
                                  const std::string& defaultExtension) override {
        calls.push_back("file:" + title + ":" + defaultExtension + ":" + (filters.empty() ? "" : filters[0]));
        return path;
    }
    void ShowMessage(const std::string& text) override { calls.push_back("message:" + text); }
    void StopPlayback() override { calls.push_back("stop"); }
    bool EditMidiExportOptions(MidiExportOptions& options) override {
        calls.push_back("midi options");
        options.programs[0] = 12;
        return acceptMidiOptions;
    }

    std::string path;
    bool acceptMidiOptions = true;
    std::vector<std::string> calls;
};

class ExportCommandTest : public ::testing::Test {
protected:
    ExportCommandTest() { test::SetNote(*module, 0, 0, 60); }
    // Runs the command and hands back what it asked, clearing the record.
    std::vector<std::string> Run(int kind, bool written) {
        EXPECT_EQ(RunExportCommand(kind, *module, options, ui), written);
        return std::exchange(ui.calls, {});
    }

    test::ScratchDir dir;
    std::unique_ptr<Module> module = test::TickPerLine(2);
    MidiExportOptions options;
    FakeExportUi ui;
};

using Calls = std::vector<std::string>;

TEST_F(ExportCommandTest, CompactFormatIsNotAvailableAndVgmAsksStopsAndWrites) {
    ui.path = (dir / "song.esdrltk").string();
    EXPECT_EQ(Run(kExportEsdrltk, false), Calls{"message:This is not available yet."});

    // Cancelled requester: playback goes on and nothing is written.
    ui.path.clear();
    EXPECT_EQ(Run(kExportVgm, false), Calls{"file:Export module as VGM:.vgm:*.vgm"});

    ui.path = (dir / "song.vgm").string();
    EXPECT_EQ(Run(kExportVgm, true), (Calls{"file:Export module as VGM:.vgm:*.vgm", "stop"}));
    EXPECT_EQ(test::ReadBytes(ui.path), BuildVgm(*module));
    // The looping entry asks the same and writes the log with its loop point.
    ui.path = (dir / "looping.vgm").string();
    EXPECT_EQ(Run(kExportVgmLooping, true), (Calls{"file:Export module as VGM:.vgm:*.vgm", "stop"}));
    VgmExportOptions looping;
    looping.loop = true;
    EXPECT_EQ(test::ReadBytes(ui.path), BuildVgm(*module, looping));
    EXPECT_NE(BuildVgm(*module, looping), BuildVgm(*module));

    // The exporter's failure reaches the caller.
    ui.path = (dir / "missing" / "song.vgm").string();
    EXPECT_THROW(RunExportCommand(kExportVgm, *module, options, ui), Exception);
}

TEST_F(ExportCommandTest, MidiShowsItsOptionsAfterTheNameAndKeepsThem) {
    ui.path = (dir / "song.mid").string();
    ui.acceptMidiOptions = false;
    EXPECT_EQ(Run(kExportMidi, false), (Calls{"file:Export module as MID:.mid:*.mid", "stop", "midi options"}));
    EXPECT_FALSE(std::filesystem::exists(ui.path));

    ui.acceptMidiOptions = true;
    Run(kExportMidi, true);
    EXPECT_EQ(options.programs[0], 12);  // the table keeps the choice for the next export
    EXPECT_EQ(test::ReadBytes(ui.path), BuildMidi(options, *module));
}

}  // namespace
}  // namespace sondrel
