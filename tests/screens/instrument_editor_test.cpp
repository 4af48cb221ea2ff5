#include "screens/dialogs/instrument_editor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "screens/dialog_fixture.h"
#include "screens/dialogs/value_formats.h"
#include "ui/widgets/image.h"

namespace sondrel {
namespace {

constexpr uint16_t kKeyZ = 0x2C;

struct PreviewCall {
    Instrument instrument;
    int octave;
    uint16_t key;
    bool down;
};

class InstrumentEditorTest : public ToolDialogTest {
protected:
    InstrumentEditorTest() {
        set[2] = {"Lead", 200, {1, 2, 3, 0}, {3, 2, 1, 0, 3}, {15, 1, 2, 3, 4}, {-3, 4, -128, 127, 0}};
        set[5].name = "Pad";
    }
    TextLine& Number(const std::string& label, int column = 0) { return Field<TextLine>(label, 0, column); }
    Image& Picture() { return dynamic_cast<Image&>(*Dialog()->Widgets()[1]); }
    std::vector<uint16_t> PicturePixels() {
        return SurfacePixels(Picture().Surface(), {0, 0, Picture().Rect().w, Picture().Rect().h});
    }

    InstrumentSet set{};
    std::vector<PreviewCall> calls;
    InstrumentEditor editor{requesters, [this](const Instrument& instrument, int octave, uint16_t key, bool down) {
                                calls.push_back({instrument, octave, key, down});
                            }};
};

TEST(ValueFormatsTest, SixteenthsShowAsStepsAndSixteenthsAndReadBack) {
    for (const auto& [sixteenths, text] : {std::pair{255, "15.15"}, std::pair{8, " 0.08"}, std::pair{127, " 7.15"},
                                           std::pair{-1, "-0.01"}, std::pair{-128, "-8.00"}, std::pair{-160, "-10.00"}})
        EXPECT_EQ(SixteenthsText(sixteenths), text) << sixteenths;
    for (int value = -160; value <= 255; ++value) ASSERT_EQ(ReadSixteenths(SixteenthsText(value)), value);
    for (const auto& [text, sixteenths] : {std::pair{"1.4", 20}, std::pair{"3", 48}, std::pair{"-0.1", -1},
                                           std::pair{".5", 5}, std::pair{"0.99", 15}, std::pair{"", 0}})
        EXPECT_EQ(ReadSixteenths(text), sixteenths) << text;
}

TEST_F(InstrumentEditorTest, ShowsTheChosenInstrumentAndOkayGivesTheSetAsTyped) {
    std::vector<uint16_t> picture;
    Then([&] {
        EXPECT_EQ(Dialog()->Title(), "Instrument Editor");
        // The fields in their order; the piano's hint only after them.
        const std::vector<std::string> labels = Labels();
        ASSERT_GE(labels.size(), 8u);
        EXPECT_EQ(std::vector<std::string>(labels.begin(), labels.begin() + 7),
                  (std::vector<std::string>{"Name:", "Start volume:", "Delay:", "Volume add:", "Vib. spd.:",
                                            "Vib. str.:", "Octave:"}));
        EXPECT_NE(labels[7].find("Z to M"), std::string::npos);
        EXPECT_EQ(Field<TextLine>("Name:").Text(), "Lead");
        EXPECT_EQ(Number("Start volume:").Text(), "12.08");
        EXPECT_EQ(Number("Volume add:", 2).Text(), "-8.00");
        EXPECT_FALSE(Labelled("Paste").Enabled());  // nothing copied yet
        picture = PicturePixels();
        TypeInto(Field<TextLine>("Name:"), " 20");
    });
    Then([&] {
        Number("Start volume:").SetText("");
        TypeInto(Number("Start volume:"), "-3.4");  // no minus in a range from 0
        Number("Volume add:", 4).SetText("-1.4");
        Number("Vib. spd.:", 1).SetText("9");
    });
    Then([&] {
        EXPECT_NE(PicturePixels(), picture);  // redrawn as typed
        Press("Okay");
    });
    auto edited = editor.Run(set, 2, 4);
    ASSERT_TRUE(edited.has_value());
    Instrument expected = set[2];
    expected.name = "Lead 2O";
    expected.startVolume = 3 * 16 + 4;
    expected.volumeAdd[4] = -20;
    expected.vibratoSpeed[1] = 3;
    EXPECT_EQ((*edited)[2], expected);
    (*edited)[2] = set[2];
    EXPECT_EQ(*edited, set);  // and nothing else
}

TEST_F(InstrumentEditorTest, PianoKeysPreviewTheInstrumentAsEditedUnlessAFieldTakesThem) {
    Then([&] {
        Number("Start volume:").SetText("1.01");
        Number("Octave:").SetNumber(5);  // octave 7, as the main screen's slider counts
        QueueKey(kKeyZ, 'z');
    });
    Then([&] {
        ASSERT_EQ(calls.size(), 2u);
        Instrument expected = set[2];
        expected.startVolume = 17;
        EXPECT_EQ(calls[0].instrument, expected);
        EXPECT_EQ(calls[0].octave, 7);
        EXPECT_EQ(calls[0].key, kKeyZ);
        EXPECT_TRUE(calls[0].down);
        EXPECT_FALSE(calls[1].down);
        TypeInto(Field<TextLine>("Name:"), "z");  // typed, not played
    });
    Then([&] {
        EXPECT_EQ(calls.size(), 2u);
        // Return leaves the field (and doesn't yet close the editor), so the keys play again.
        QueueKey(TextLine::kKeyEnter, '\r');
    });
    Then([&] {
        ASSERT_NE(Dialog(), nullptr);
        EXPECT_EQ(Dialog()->Focus(), nullptr);
        EXPECT_EQ(Field<TextLine>("Name:").Text(), "Leadz");
        Queue(kGorbKeyDown, {}, kKeyZ, 'z');
    });
    Then([&] { Press("Cancel"); });  // with the key still down
    EXPECT_FALSE(editor.Run(set, 2, 3).has_value());
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_TRUE(calls[2].down);
    EXPECT_FALSE(calls[3].down);  // the key is let go when the editor closes
}

TEST_F(InstrumentEditorTest, CopyPasteAndResetActOnTheShownInstrumentOnly) {
    Then([&] { Press("Copy"); });
    Then([&] { ClickLine(*Dialog()->Widgets()[0], 5); });
    Then([&] { Press("Paste"); });
    Then([&] { Press("Reset..."); });
    Then([&] { ClickWidget(kMessageWindowId, 1); });  // "No"
    Then([&] { Press("Okay"); });
    auto edited = editor.Run(set, 2, 3);
    ASSERT_TRUE(edited.has_value());
    Instrument pasted = set[2];
    pasted.name = "Pad";  // the sound, not the name
    EXPECT_EQ((*edited)[5], pasted);
    EXPECT_EQ((*edited)[2], set[2]);

    // The copy outlives the editor's window; "Yes" resets.
    Then([&] { Press("Paste"); });
    Then([&] { ClickLine(*Dialog()->Widgets()[0], 2); });
    Then([&] { Press("Reset..."); });
    Then([&] { ClickWidget(kMessageWindowId, 0); });  // "Yes"
    Then([&] { Press("Okay"); });
    edited = editor.Run(set, 7, 3);
    ASSERT_TRUE(edited.has_value());
    pasted.name.clear();
    EXPECT_EQ((*edited)[7], pasted);
    EXPECT_EQ((*edited)[2], Instrument{});
}

}  // namespace
}  // namespace sondrel
