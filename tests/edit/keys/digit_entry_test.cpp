#include "edit/keys/digit_entry.h"

#include <gtest/gtest.h>

#include <vector>

#include "edit/edit_test_support.h"
#include "edit/keys/note_keys.h"
#include "edit/keys/pattern_editing.h"

namespace sondrel {
namespace {

constexpr uint16_t kShift = 1;
constexpr uint16_t kCtrl = 4;
constexpr uint16_t kScan1 = 0x02;
constexpr uint16_t kScan4 = 0x05;
constexpr uint16_t kScan8 = 0x09;

class DigitTypingTest : public test::EditTest {
protected:
    DigitTypingTest() {
        notes.Init(module->Settings());
        PatternLine& line = Line(4);
        line.note[1] = 40;
        line.volume[1] = 9;
        line.channelCommand[1] = kChannelCommandPV;
    }
    bool Key(uint16_t scanCode, uint16_t modifiers = 0, bool typeDigits = true) {
        return HandlePatternKey(ctx, {scanCode, 0, modifiers, false}, {false, typeDigits}, typing);
    }
    // Digits typed one after another at the cell; the byte they leave.
    uint8_t Type(int column, std::vector<uint16_t> keys, uint16_t modifiers = 0) {
        Select(column, 4, 1, 1);
        for (uint16_t key : keys) Key(key, modifiers);
        PatternLine& line = Line(4);
        return column == 12 ? line.commandParam : column == 5 ? line.channelParam[1]
                          : modifiers ? line.instrument[1] : line.volume[1];
    }

    DigitEntry typing;
};

// Each field kind in its base and bounds; digits past the field's largest
// value or its shown digits drop out on the left.
TEST_F(DigitTypingTest, DigitsTypeEachFieldInItsBaseWithinItsBounds) {
    EXPECT_EQ(Type(4, {kScan1, kScan5}), 15);
    EXPECT_EQ(Type(4, {kScan7}), 7);    // 157: 57 is past 15 as well
    EXPECT_EQ(Type(4, {kScan1, kScan6}), 6);
    EXPECT_EQ(Type(4, {0x4B}), 4);      // the keypad's 4
    EXPECT_EQ(Type(4, {kScan1, kScan2}, kShift), 12);
    EXPECT_EQ(Type(5, {kScan0, kScan9}), 9);
    Line(4).command = kCommandSP;      // ticks and tenths: 12.5 is 12 ticks and 4 eighths
    EXPECT_EQ(Type(12, {kScan1, kScan2, kScan5}), 100);
    EXPECT_EQ(Type(12, {kScan3, kScan1, kScan9}), 255);
    EXPECT_EQ(Type(12, {kScan0, kScan0, kScan5}), 8);
    EXPECT_EQ(Type(12, {kScan0, kScan1, kScan4}), 11);
    Line(4).command = kCommandST;      // hexadecimal, letters as themselves or Shift+0..5
    EXPECT_EQ(Type(12, {kScan3, kScanF}), 0x3F);
    EXPECT_EQ(Type(12, {kScan3, kScan4}, kShift), 0xDE);
    EXPECT_EQ(Type(12, {kScanC, kScanA, kScanB}), 0xAB);
    EXPECT_EQ(Type(12, {kScanE}), 0xAC);  // E still steps, D still sets "SP"
    Type(12, {kScanD});
    EXPECT_EQ(Line(4).command, kCommandSP);
}

// A channel command's parameter by its kind: PV and VO up to 15, the
// counting effects up to 99, AR, VI and VS in hexadecimal with F and
// Shift+0..5 for the letters; A, B and C set their commands instead.
TEST_F(DigitTypingTest, ChannelCommandsTakeDigitsByKind) {
    struct Case {
        uint8_t command;
        std::vector<uint16_t> keys;
        uint16_t modifiers;
        uint8_t commandAfter, paramAfter;
    };
    const Case cases[] = {
        {kChannelCommandPV, {kScan1, kScan6}, 0, kChannelCommandPV, 6},
        {kChannelCommandVO, {kScan1, kScan5}, 0, kChannelCommandVO, 15},
        {kEffectSlideUp, {kScan1, kScan2}, 0, kEffectSlideUp, 12},
        {kEffectSlideDown, {kScan9, kScan9}, 0, kEffectSlideDown, 99},
        {kEffectNoteCut, {kScan1, kScan2, kScan3}, 0, kEffectNoteCut, 23},
        {kEffectRetrigger, {0x4C}, 0, kEffectRetrigger, 5},  // the keypad's 5
        {kEffectGlide, {kScan1}, kShift, kEffectGlide, 0},
        {kEffectArpeggio, {kScan3, kScanF}, 0, kEffectArpeggio, 0x3F},
        {kEffectVibrato, {kScan1, kScan2}, kShift, kEffectVibrato, 0xBC},
        {kEffectVolumeSlide, {kScan1, kScan2, kScan3}, 0, kEffectVolumeSlide, 0x23},
        {kEffectVibrato, {kScanA}, 0, kEffectArpeggio, 0x47},
        {kEffectArpeggio, {kScanC}, 0, kEffectNoteCut, 3},
        {kEffectVolumeSlide, {kScanB}, 0, kChannelCommandVO, 9},
        {12, {kScan4}, 0, 12, 0},
    };
    view.Settings().defaultVolume = 9;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "command " << int(c.command) << " first key " << c.keys[0]);
        Line(4).channelCommand[1] = c.command;
        Line(4).channelParam[1] = 0;
        typing.Forget();
        EXPECT_EQ(Type(5, c.keys, c.modifiers), c.paramAfter);
        EXPECT_EQ(Line(4).channelCommand[1], c.commandAfter);
    }
}

TEST_F(DigitTypingTest, AnyValueTakesAsManyKeysAsTheFieldShowsDigitsWhateverWasTypedBefore) {
    for (int before = -1; before < 16; ++before) {
        for (int value = 0; value < 256; ++value) {
            const auto type = [&](TypedValue kind, std::vector<int> digits) {
                DigitEntry entry;
                uint8_t stored = 0;
                if (before >= 0) digits.insert(digits.begin(), before % 10);
                for (int digit : digits) stored = entry.Type({0, 0, 0, kind}, stored, digit);
                return stored;
            };
            EXPECT_EQ(type(TypedValue::Stereo, {value / 16, value % 16}), value) << before;
            EXPECT_EQ(type(TypedValue::EffectHex, {value / 16, value % 16}), value) << before;
            if (value < 100) {
                EXPECT_EQ(type(TypedValue::EffectDecimal, {value / 10, value % 10}), value) << before;
            }
            if (value < 16) {
                EXPECT_EQ(type(TypedValue::Volume, {value / 10, value % 10}), value) << before;
            }
            // The speed as the grid shows it: ticks, then the eighths as tenths.
            const int ticks = value / 8, tenths = value % 8 * 9 / 7;
            if (value >= 8) {
                EXPECT_EQ(type(TypedValue::Speed, {ticks / 10, ticks % 10, tenths}), value) << before;
            }
        }
    }
}

TEST_F(DigitTypingTest, EachDigitIsOneUndoStepAndFieldsWithoutValuesOrTheOptionOffTakeNone) {
    const auto before = Snapshot();
    Type(4, {kScan1, kScan5});
    EXPECT_EQ(undo.Head(), 2u);
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_EQ(Line(4).volume[1], 1);
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_TRUE(*module == *before);
    EXPECT_EQ(Type(4, {kScan2}), 2) << "the undone value is not the one typed: a new number";

    // No note, no channel command, no command, Ctrl held, the option off.
    const auto unchanged = Snapshot();
    const uint32_t head = undo.Head();
    const struct {
        int column;
        uint16_t modifiers;
        bool typeDigits;
    } idle[] = {{1, 0, true}, {8, 0, true}, {12, 0, true}, {4, kCtrl, true}, {4, 0, false}, {4, kShift, false}};
    for (const auto& c : idle) {
        Select(c.column, 4, 1, 1);
        EXPECT_FALSE(Key(kScan8, c.modifiers, c.typeDigits)) << c.column;
    }
    EXPECT_TRUE(*module == *unchanged);
    EXPECT_EQ(undo.Head(), head);

    // Note fields keep the piano; a larger frame only steps.
    Type(3, {kScan2});
    EXPECT_EQ(Line(4).note[1], 3 * 12 + 13);
    Select(4, 4, 1, 2);
    EXPECT_FALSE(Key(kScan8));
}

}  // namespace
}  // namespace sondrel
