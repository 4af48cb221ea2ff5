#include "screens/dialogs/import_dialogs.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "screens/dialog_fixture.h"
#include "ui/widgets/check_box.h"

namespace sondrel {
namespace {

constexpr uint8_t kUnset = kChipSettingUnset;

using ImportDialogsTest = DialogFixture;

std::vector<std::string> MidiLabels() {
    std::vector<std::string> labels;
    for (int half = 0; half < 2; ++half) labels.insert(labels.end(), {"Enable:", "Channel #:", "Instrument #:"});
    for (int line = 0; line < 8; ++line)
        for (int channel : {line + 1, line + 9})
            labels.push_back((channel < 10 ? "MIDI channel  " : "MIDI channel ") + std::to_string(channel));
    labels.push_back("MIDI channels");
    return labels;
}

TEST_F(ImportDialogsTest, EachDialogShowsItsProposalInOrderTidilyAndOkayKeepsIt) {
    const BasicImportValues basic{{0, 1, 2, 3, 4, 5}, {kDivider1x, kChipNtsc}};
    MidiImportValues midi;
    midi.channels[9] = {true, true, 3, 1};
    midi.chip = {kDivider2x, kChipPal};
    const ModImportValues mod{"tune", std::vector<std::string>(31, "a sample name of 22 ch"), {kDivider1x, kChipPal}};
    const VgmImportValues flagged{0, 0x40000000 | 3579545, 9, 16, {kDivider1x, kChipNtsc}};
    const VgmImportValues bare{50, 0, 3, 15, {kDivider2x, kChipPal, kVariantTi}};
    const auto withChip = [](std::vector<std::string> texts, bool variant = false) {
        texts.insert(texts.end(), {"Type:", "NTSC (60Hz)|PAL (50Hz)", "Frequency divider:", "1x|2x"});
        if (variant)
            texts.insert(texts.end(), {"Chip:", "Sega (SMS, Game Gear)|Game Gear (noise panned too)|"
                                                "TI SN76489 (BBC, Tandy, SG-1000)"});
        texts.insert(texts.end(), {"Sound chip", "Okay", "Cancel"});
        return texts;
    };
    const struct {
        std::string title;
        std::function<bool(Requesters&)> runKeepsProposal;
        std::vector<std::string> texts;
    } cases[] = {
        {"Load BAS file", [&](Requesters& r) { return AskBasicImport(r, basic) == basic; },
         withChip({"PLAY: Normal:", "PLAY: Staccato:", "PLAY: Legato:", "SOUND:", "BEEP:", "Pause:", "Instruments"})},
        {"Load MIDI file", [&](Requesters& r) { return AskMidiImport(r, midi) == midi; }, withChip(MidiLabels())},
        {"Load MOD file", [&](Requesters& r) { return AskModImport(r, mod) == mod; },
         withChip({"Name:", "tune", "Sample names:", "31 lines", "MOD file info"})},
        {"Load VGM file", [&](Requesters& r) { return AskVgmImport(r, flagged) == flagged; },
         withChip({"Rate:", "Unknown", "Chip clock:", "3579545 Hz", "Noise channel pattern:", "$0009",
                   "Noise channel width:", "$0010", "VGM file info"}, true)},
        {"Load VGM file", [&](Requesters& r) { return AskVgmImport(r, bare) == bare; },
         withChip({"Rate:", "50 Hz", "Chip clock:", "Unused", "Noise channel pattern:", "$0003",
                   "Noise channel width:", "$000F", "VGM file info"}, true)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.title);
        Then([&] {
            ASSERT_NE(Dialog(), nullptr);
            EXPECT_EQ(Dialog()->Title(), c.title);
            EXPECT_EQ(Texts(), c.texts);
            ExpectTidy();
            QueueKey(TextLine::kKeyEnter);
        });
        EXPECT_TRUE(c.runKeepsProposal(requesters));
        EXPECT_EQ(Dialog(), nullptr);
    }
}

TEST_F(ImportDialogsTest, ChangesComeBackOnOkayOnlyAndMidiRowsWithoutNotesStayAsTheyAre) {
    const BasicImportValues basic{{0, 1, 2, 3, 4, 5}, {kDivider1x, kChipNtsc}};
    const std::optional<BasicImportValues> changed = BasicImportValues{{0, 1, 3, 3, 4, 5}, {kDivider1x, kChipPal}};
    for (const std::string button : {"Cancel", "Okay"}) {
        Then([&] { ClickPlus(After<TextLine>("PLAY: Legato:")); });
        Choose("Type:", kChipPal);
        Then([&] { ClickButton(button); });
        EXPECT_EQ(AskBasicImport(requesters, basic), button == "Okay" ? changed : std::nullopt);
    }

    // The rows stand in two halves; each control must come back to its own channel.
    MidiImportValues midi;
    midi.channels[9] = {true, true, 3, 1};
    midi.channels[12] = {true, true, 2, 2};
    midi.chip = {kDivider1x, kChipNtsc};
    Then([&] {
        CheckBox* silent = After<CheckBox>("MIDI channel  4");
        ASSERT_NE(silent, nullptr);
        EXPECT_FALSE(silent->Enabled());
        ClickOn(silent);
        ClickOn(After<CheckBox>("MIDI channel 13"));
    });
    Then([&] { ClickPlus(After<TextLine>("MIDI channel 10", 3)); });
    Then([&] { ClickPlus(After<TextLine>("MIDI channel 13", 2)); });
    Then([&] { ClickButton("Okay"); });
    const auto chosen = AskMidiImport(requesters, midi);
    ASSERT_TRUE(chosen.has_value());
    MidiImportValues expected = midi;
    expected.channels[9].instrument = 2;
    expected.channels[12] = {true, false, 3, 2};
    EXPECT_EQ(*chosen, expected);
}

TEST_F(ImportDialogsTest, OkayIsRefusedUntilBothChipSettingsAreChosen) {
    // The chip family member is always proposed from the log's noise register.
    const VgmImportValues unset{60, 3579545, 3, 15, {kUnset, kUnset, kVariantTi}};
    const auto refusedOnce = [&] {
        Then([&] { ClickButton("Okay"); });
        // The message runs frames of its own over the dialog.
        Then([&] {
            Window* message = toolkit.FindWindow(kMessageWindowId);
            ASSERT_NE(message, nullptr);
            ASSERT_NE(Dialog(), nullptr);
            const auto* text = dynamic_cast<const MessageText*>(message->Widgets().front().get());
            ASSERT_NE(text, nullptr);
            EXPECT_EQ(text->Lines(), std::vector<std::string>{"All chip settings must be set."});
            ClickWidget(kMessageWindowId, 0);
        });
    };
    Then([&] {
        EXPECT_EQ(After<MenuButton>("Type:")->Choice(), MenuButton::kNoChoice);
        EXPECT_EQ(After<MenuButton>("Frequency divider:")->Choice(), MenuButton::kNoChoice);
        EXPECT_EQ(After<MenuButton>("Chip:")->Choice(), kVariantTi);
    });
    refusedOnce();
    Choose("Type:", kChipPal);
    refusedOnce();
    Choose("Frequency divider:", kDivider2x);
    Choose("Chip:", kVariantGameGear);
    Then([&] { ClickButton("Okay"); });
    const auto chosen = AskVgmImport(requesters, unset);
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(chosen->chip, (ChipSettings{kDivider2x, kChipPal, kVariantGameGear}));
    EXPECT_TRUE(host.script.empty());
}

}  // namespace
}  // namespace sondrel
