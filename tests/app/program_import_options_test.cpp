#include "app/program_import_options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "files/module_file.h"
#include "files/module_test_support.h"
#include "model/notes.h"
#include "screens/dialog_fixture.h"
#include "test_support.h"
#include "ui/widgets/list_box.h"

namespace sondrel {
namespace {

using ProgramDialogsTest = DialogFixture;

TEST_F(ProgramDialogsTest, ABasicListingIsImportedWithTheInstrumentAndChipChosenInItsDialog) {
    test::ScratchDir dir;
    const std::string path = (dir / "TUNE.BAS").string();
    test::WriteBytes(path, test::Text("10 PLAY \"CDE\"\n"));
    Then([&] {
        ASSERT_NE(Dialog(), nullptr);
        EXPECT_EQ(Dialog()->Title(), "Load BAS file");
        for (int i = 0; i < 4; ++i) ClickPlus(After<TextLine>("PLAY: Normal:"));
    });
    Choose("Type:", kChipPal);
    Then([&] { ClickButton("Okay"); });
    ProgramImportOptions options(requesters);
    const std::unique_ptr<Module> module = LoadNewModule(path, options);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->chipType, kChipPal);
    const PatternLine& first = module->patterns[0].lines[0];
    const int channel = static_cast<int>(std::find_if(first.note.begin(), first.note.end(),
                                                      [](uint8_t note) { return note < kNoteNull; }) -
                                         first.note.begin());
    ASSERT_LT(channel, kChannels);
    EXPECT_EQ(first.instrument[channel], 4);
}

// The table opens on the defaults of each kind of row; a program picked for
// the selected row is the one the file plays, and a cancel writes nothing.
TEST_F(ProgramDialogsTest, TheExportTableShowsTheDefaultsAndAPickedProgramReachesTheFile) {
    auto module = test::TickPerLine(4);
    test::SetNote(*module, 0, 0, 60);
    test::ScratchDir dir;
    const std::string path = (dir / "song.mid").string();
    MidiExportOptions options;
    ProgramMidiExportDialog dialog(requesters, *module);

    Then([&] { QueueKey(TextLine::kKeyEscape); });
    EXPECT_FALSE(ExportMidi(options, *module, path, dialog));
    EXPECT_FALSE(std::filesystem::exists(path));

    ListBox* rows = nullptr;
    ListBox* names = nullptr;
    int picked = -1;
    Then([&] {
        ASSERT_NE(Dialog(), nullptr);
        EXPECT_EQ(Dialog()->Title(), "Export MIDI");
        ExpectTidy();
        const std::vector<ListBox*> lists = All<ListBox>();
        ASSERT_EQ(lists.size(), 2u);
        rows = lists[0];
        names = lists[1];
        EXPECT_EQ(rows->LineCount(), 48);
        EXPECT_EQ(names->LineCount(), 128);
        EXPECT_EQ(names->Current(), 80);
        toolkit.Focus(Dialog(), rows);
        for (int i = 0; i < 16; ++i) QueueKey(kKeyDown);
    });
    Then([&] {
        EXPECT_EQ(names->Current(), 81);
        for (int i = 0; i < 16; ++i) QueueKey(kKeyDown);
    });
    Then([&] {
        EXPECT_EQ(names->Current(), 117);
        QueueKey(kKeyHome);
    });
    Then([&] {
        EXPECT_EQ(rows->Current(), 0);
        const Gorb_Rect& r = names->Rect();
        const Point middle{r.x + r.w / 2, r.y + r.h / 2};
        picked = names->LineAt(middle);
        EXPECT_NE(picked, 80);
        ClickAt(kDialogWindowId, middle);
    });
    Then([&] { ClickButton("Okay"); });
    ASSERT_TRUE(ExportMidi(options, *module, path, dialog));
    EXPECT_EQ(options.programs[0], picked);
    const test::Bytes file = test::ReadBytes(path);
    const test::Bytes change = {0xC0, static_cast<uint8_t>(picked)};
    EXPECT_NE(std::search(file.begin(), file.end(), change.begin(), change.end()), file.end());
}

}  // namespace
}  // namespace sondrel
