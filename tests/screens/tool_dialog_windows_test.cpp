#include "screens/dialogs/tool_dialog_windows.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

#include "screens/dialog_fixture.h"
#include "screens/dialogs/dialog_form.h"
#include "screens/dialogs/import_dialogs.h"
#include "screens/dialogs/info_dialogs.h"
#include "screens/dialogs/instrument_editor.h"
#include "screens/dialogs/midi_export_dialog.h"
#include "screens/dialogs/value_formats.h"
#include "screens/dialog_fixture.h"
#include "ui/requesters/message_text.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/menu_button.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text_field.h"

namespace sondrel {
namespace {

TEST_F(ToolDialogTest, ModuleSettingsShowTheValuesAndOnlyOkayGivesTheChangedOnes) {
    ModuleSettings current;
    current.title = "Song";
    current.initialSpeed = 79;
    current.repeatPosition = 2;
    Then([&] {
        EXPECT_EQ(Dialog()->Title(), "Module settings");
        EXPECT_EQ(Labels(), (std::vector<std::string>{"Title:", "Author:", "Notes:", "Type:", "Frequency divider:",
                                                      "Chip:", "Repeat position:", "Initial speed:"}));
        EXPECT_EQ(Field<MenuButton>("Chip:").Choices(),
                  (std::vector<std::string>{"Sega (SMS, Game Gear)", "Game Gear (noise panned too)",
                                            "TI SN76489 (BBC, Tandy, SG-1000)"}));
        EXPECT_EQ(Field<MenuButton>("Chip:").Choice(), kVariantSega);
        Field<MenuButton>("Chip:").SetChoice(kVariantTi);
        EXPECT_EQ(Field<TextLine>("Initial speed:").Text(), " 9.875");
        EXPECT_EQ(Field<MenuButton>("Type:").Choices(), (std::vector<std::string>{"NTSC (60Hz)", "PAL (50Hz)"}));
        // What the module file can't keep is changed as it is typed.
        TypeInto(Field<TextLine>("Title:"), " 2000");
        Field<MenuButton>("Type:").SetChoice(1);
        Field<TextLine>("Initial speed:").SetText("6.5");
        Field<TextLine>("Repeat position:").SetText("9");  // past the list's end
    });
    Then([&] { Press("Okay"); });
    const auto chosen = RunModuleSettings(requesters, current, 4, false);
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(chosen->title, "Song 2OOO");
    EXPECT_EQ(chosen->chipType, kChipPal);
    EXPECT_EQ(chosen->chipVariant, kVariantTi);
    EXPECT_EQ(chosen->initialSpeed, 52);
    EXPECT_EQ(chosen->repeatPosition, 3);

    Then([&] {
        EXPECT_EQ(Dialog()->Title(), "New module settings");
        TypeInto(Field<TextLine>("Title:"), "x");
        Press("Cancel");
    });
    EXPECT_FALSE(RunModuleSettings(requesters, current, 4, true).has_value());
    EXPECT_EQ(toolkit.FindWindow(kDialogWindowId), nullptr);
}

TEST_F(ToolDialogTest, PatternSettingsTakeTheLengthOnlyForANewPatternAndEscapeCancels) {
    PatternSettings current;
    current.name = "Verse";
    current.length = 32;
    Then([&] {
        EXPECT_EQ(Dialog()->Title(), "Pattern settings");
        EXPECT_EQ(Labels(), (std::vector<std::string>{"Name:", "Length:", "32", "Start line:", "Number of lines:",
                                                      "Start line:", "Number of lines:"}));
        Press("Main tact:");
        Field<TextLine>("Start line:", 0).SetNumber(4);
        Field<TextLine>("Number of lines:", 1).SetNumber(3);
        QueueKey(kKeyReturn);  // Return confirms
    });
    auto chosen = RunPatternSettings(requesters, current, false);
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(chosen->length, 32);
    EXPECT_EQ(chosen->tactEnabled[0], 1);
    EXPECT_EQ(chosen->tactStart[0], 4);
    EXPECT_EQ(chosen->tactInterval[1], 3);

    Then([&] {
        EXPECT_EQ(Dialog()->Title(), "New pattern settings");
        Field<TextLine>("Length:").SetText("300");
        Press("Okay");
    });
    chosen = RunPatternSettings(requesters, current, true);
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(chosen->length, 256);

    Then([&] { QueueKey(kKeyEscape); });
    EXPECT_FALSE(RunPatternSettings(requesters, current, false).has_value());
    Then([&] {
        EXPECT_EQ(Field<TextLine>("New length:").Value(), 40);
        Field<TextLine>("New length:").SetText("0");
        Press("Okay");
    });
    EXPECT_EQ(RunPatternResize(requesters, 40), 1);
}

// A typed name stops at what undo can bring back; a longer name from a file
// stays whole unless it is edited.
TEST_F(ToolDialogTest, PatternNamesTakeNoMoreThanUndoKeeps) {
    const std::string longest(kLongestPatternName, 'n');
    for (const bool newPattern : {false, true}) {
        Then([&] {
            TextLine& name = Field<TextLine>("Name:");
            EXPECT_EQ(name.MaxLength(), kLongestPatternName);
            name.SetText("");
            TypeInto(name, longest + "x");
        });
        Then([&] {
            EXPECT_EQ(Field<TextLine>("Name:").Text(), longest);
            Press("Okay");
        });
        const auto chosen = RunPatternSettings(requesters, {}, newPattern);
        ASSERT_TRUE(chosen.has_value());
        EXPECT_EQ(chosen->name, longest);
    }

    PatternSettings loaded;
    loaded.name = longest + "ABC";
    Then([&] { Press("Okay"); });
    EXPECT_EQ(RunPatternSettings(requesters, loaded, false)->name, loaded.name);
    Then([&] {
        TypeInto(Field<TextLine>("Name:"), "");
        QueueKey(TextLine::kKeyBackspace);
    });
    Then([&] { Press("Okay"); });
    EXPECT_EQ(RunPatternSettings(requesters, loaded, false)->name, longest.substr(1));
}

// The sweeping tools show their fields in this order, the list of patterns
// last; the overview's columns keep their headings whole.
TEST_F(ToolDialogTest, ToolDialogsShowTheirFieldsInOrder) {
    Module module;
    module.NewModule({kDivider1x, kChipNtsc});
    const std::vector<std::string> top{"Select all", "Start line:", "End line:", "Change all lines|Use line range"};
    const auto with = [&](std::vector<std::string> rest) {
        rest.insert(rest.begin(), top.begin(), top.end());
        rest.insert(rest.end(), {"1 lines", "Apply", "Cancel"});
        return rest;
    };
    Then([&] {
        EXPECT_EQ(Texts(), with({"Channel 0", "Channel 1", "Channel 2", "Channel 3", "Toggle all", "Channel mask",
                                 "Instrument #1:", "Instrument #2:",
                                 "Change #1 to #2|Exchange #1 and #2|Change all to #2"}));
        ExpectTidy();
        QueueKey(kKeyEscape);
    });
    RunChangeInstruments(requesters, module);
    Then([&] {
        EXPECT_EQ(Texts(), with({"Channel #1:", "Channel #2:", "Copy #1 to #2|Exchange #1 and #2"}));
        ExpectTidy();
        QueueKey(kKeyEscape);
    });
    RunCopyChannels(requesters, module);

    Then([&] {
        const ListBox& list = *All<ListBox>().front();
        std::vector<std::string> titles;
        for (const ListColumn& column : list.Columns()) {
            titles.push_back(column.title);
            EXPECT_LE(MeasureText(column.title, toolkit.Style().font) + 4, column.width) << column.title;
        }
        EXPECT_EQ(titles, (std::vector<std::string>{"Name", "Length", "Used"}));
        QueueKey(kKeyEscape);
    });
    ShowPatternOverview(requesters, module);
}

TEST_F(ToolDialogTest, SweepingToolsGiveTheChosenPatternsLinesAndChannels) {
    Module module;
    module.NewModule({kDivider1x, kChipNtsc});
    module.CreatePattern(3);
    module.patterns[3].name = "Chorus";
    Then([&] {
        EXPECT_EQ(Dialog()->Title(), "Change instruments");
        Press("Toggle all");
        Press("Channel 2");  // back on
    });
    Then([&] {
        auto& list = *All<ListBox>().front();
        ASSERT_EQ(list.LineCount(), 2);
        list.Select(1);  // pattern 3 alone
        Field<TextLine>("Instrument #2:").SetNumber(7);
        Press("Apply");
    });
    auto change = RunChangeInstruments(requesters, module);
    ASSERT_TRUE(change.has_value());
    EXPECT_EQ(change->change.channelMask, 0x04);
    EXPECT_EQ(change->change.second, 7);
    EXPECT_EQ(change->patterns.count(), 1u);
    EXPECT_TRUE(change->patterns.test(3));
    EXPECT_EQ(change->endLine, kMaxLines - 1);

    Then([&] {
        auto& list = *All<ListBox>().front();
        list.Select(0);
        Press("Select all");
    });
    Then([&] {
        for (const auto& widget : Dialog()->Widgets())
            if (auto* choice = dynamic_cast<MenuButton*>(widget.get()); choice && choice->Choices().size() == 2 &&
                                                                        choice->Choices()[1] == "Use line range")
                choice->SetChoice(1);
        Field<TextLine>("Start line:").SetNumber(20);
        Field<TextLine>("End line:").SetNumber(10);
        Field<TextLine>("Channel #1:").SetNumber(4);
        Press("Apply");
    });
    const auto copy = RunCopyChannels(requesters, module);
    ASSERT_TRUE(copy.has_value());
    EXPECT_EQ(copy->patterns.count(), 2u);
    EXPECT_EQ(copy->startLine, 10);
    EXPECT_EQ(copy->endLine, 20);
    EXPECT_EQ(copy->copy.first, kCommandChannel);
}

TEST(ValueFormatsTest, SpeedsReadBackToTheNearestEighth) {
    EXPECT_EQ(SpeedText(48), " 6.000");
    EXPECT_EQ(SpeedText(79), " 9.875");
    EXPECT_EQ(SpeedText(255), "31.875");
    for (const auto& [text, eighths] : {std::pair{"6.5", 52}, std::pair{"6", 48}, std::pair{".125", 1},
                                        std::pair{" 9.875", 79}, std::pair{"1.06", 8}, std::pair{"", 0}})
        EXPECT_EQ(ReadSpeed(text), eighths) << text;
}

}  // namespace
}  // namespace sondrel

namespace sondrel {
namespace {

TEST_F(ToolDialogTest, PreferencesAndModuleInformationShowWhatTheyAreGiven) {
    const PreferenceValues current{false, 50, true, 3, false, false, 2};
    Then([&] {
        EXPECT_EQ(Dialog()->Title(), "Preferences");
        EXPECT_EQ(Labels(), (std::vector<std::string>{"Fullscreen:", "Volume:", "Enable MIDI-in:", "MIDI-in Device ID:",
                                                      "Window scale:"}));
        // The window's scale is the last group, a choice of its four sizes.
        EXPECT_EQ(Field<MenuButton>("Window scale:").Choices(), (std::vector<std::string>{"1x", "2x", "3x", "4x"}));
        EXPECT_EQ(Field<MenuButton>("Window scale:").Choice(), 1);
        Field<MenuButton>("Window scale:").SetChoice(2);
        ClickWidget(kDialogWindowId, Field<CheckBox>("Fullscreen:").Id());
        Field<TextLine>("Volume:").SetText("101");
        Press("Undo with Ctrl+Z, redo with Ctrl+Y");
        Press("Type values with digits");
    });
    Then([&] { Press("Okay"); });
    EXPECT_EQ(RunPreferences(requesters, current), (PreferenceValues{true, 100, true, 3, true, true, 3}));
    Then([&] { Press("Cancel"); });
    EXPECT_FALSE(RunPreferences(requesters, current).has_value());

    Module module;
    module.NewModule({kDivider1x, kChipNtsc});
    module.CreatePattern(5);  // made but never in the list
    const ModuleInformation information = InformationOf(module);
    EXPECT_EQ(information.patterns, 2);
    EXPECT_EQ(information.unusedPatterns, 1);
    Then([&] {
        EXPECT_EQ(Field<MessageText>("Time:").Lines()[0], "12.50 sec. (0:12 min.)");
        Press("Close");
    });
    ShowModuleInformation(requesters, {"song.sdrltk", "/music", 1, 2, 1, 12.5, 0});
}

}  // namespace
}  // namespace sondrel

namespace sondrel {
namespace {

// Every dialog opens inside the screen with nothing on top of anything else;
// its picture goes to the temporary folder's sondrel_dialogs, to look at.
TEST_F(ToolDialogTest, EveryDialogIsTidyAndItsPictureIsSaved) {
    const std::filesystem::path pictures = std::filesystem::temp_directory_path() / "sondrel_dialogs";
    std::filesystem::create_directories(pictures);
    Module module;
    module.NewModule({kDivider1x, kChipNtsc});
    MidiExportTable table;
    table.programNames.assign(128, "Program");
    InstrumentEditor editor(requesters);
    const std::function<void()> dialogs[] = {
        [&] { RunPatternSettings(requesters, {}, true); },
        [&] { RunPatternResize(requesters, 64); },
        [&] { RunModuleSettings(requesters, {}, 1, true); },
        [&] { RunChangeInstruments(requesters, module); },
        [&] { RunCopyChannels(requesters, module); },
        [&] { ShowModuleInformation(requesters, InformationOf(module)); },
        [&] { ShowPatternOverview(requesters, module); },
        [&] { ShowReadme(requesters, "Sondrel\n\nA readme."); },
        [&] { ShowProgramInfo(requesters); },
        [&] { RunPreferences(requesters, {}); },
        [&] { editor.Run(module.instruments, 0, 3); },
        [&] { AskBasicImport(requesters, {}); },
        [&] { AskMidiImport(requesters, {}); },
        [&] { AskModImport(requesters, {}); },
        [&] { AskVgmImport(requesters, {}); },
        [&] { EditMidiExportTable(requesters, table); },
    };
    for (const auto& open : dialogs) {
        Then([&] {
            ASSERT_NE(Dialog(), nullptr);
            SCOPED_TRACE(Dialog()->Title());
            ExpectTidy();
            toolkit.Draw();
            EXPECT_TRUE(screen->SavePng(pictures / (Dialog()->Title() + ".png")));
            QueueKey(kKeyEscape);
        });
        open();
        EXPECT_EQ(Dialog(), nullptr);
    }
}

}  // namespace
}  // namespace sondrel
