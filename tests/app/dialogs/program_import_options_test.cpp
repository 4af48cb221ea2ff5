#include "app/dialogs/program_import_options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "files/module_test_support.h"
#include "screens/dialog_fixture.h"
#include "test_support.h"
#include "ui/widgets/list_box.h"

namespace sondrel {
namespace {

using ProgramDialogsTest = DialogFixture;

// The table opens on the defaults of each kind of row; a program picked for
// the selected row is the one the file plays.
TEST_F(ProgramDialogsTest, TheExportTableShowsTheDefaultsAndAPickedProgramReachesTheFile) {
    auto module = test::TickPerLine(4);
    test::SetNote(*module, 0, 0, 60);
    test::ScratchDir dir;
    const std::string path = (dir / "song.mid").string();
    MidiExportOptions options;
    ProgramMidiExportDialog dialog(requesters, *module);

    ListBox* rows = nullptr;
    ListBox* names = nullptr;
    int picked = -1;
    Then([&] {
        ASSERT_NE(Dialog(), nullptr);
        EXPECT_EQ(Texts(), (std::vector<std::string>{"48 lines", "128 lines", "Okay", "Cancel"}));
        ExpectTidy();
        rows = All<ListBox>()[0];
        names = All<ListBox>()[1];
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
