#include "edit/keys/digit_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "edit/edit_test_support.h"
#include "edit/keys/note_keys.h"
#include "edit/keys/pattern_editing.h"

namespace sondrel {
namespace {

constexpr uint16_t kShift = 1;
constexpr uint16_t kCtrl = 4;
constexpr uint16_t kScanA = 0x1E;
constexpr uint16_t kScan1 = 0x02;
constexpr uint16_t kScan4 = 0x05;
constexpr uint16_t kScan8 = 0x09;
constexpr uint16_t kScanPad4 = 0x4B;

class DigitTypingTest : public test::EditTest {
protected:
    DigitTypingTest() {
        notes.Init(module->Settings());
        PatternLine& line = Line(4);
        line.note[1] = 40;
        line.instrument[1] = 3;
        line.volume[1] = 9;
        line.channelCommand[1] = kChannelCommandPV;
        line.channelParam[1] = 2;
    }

    bool Key(uint16_t scanCode, uint16_t modifiers = 0, bool typeDigits = true) {
        return HandlePatternKey(ctx, {scanCode, 0, modifiers, false}, {false, typeDigits}, typing);
    }
    // Digits typed one after another at the cell.
    void Type(int column, int line, const std::vector<uint16_t>& keys, uint16_t modifiers = 0) {
        Select(column, line, 1, 1);
        for (uint16_t key : keys) Key(key, modifiers);
    }

    DigitEntry typing;
};

// Every field kind in its base and within its bounds; a digit past the
// field's largest value or after all its digits begins a new number.
TEST_F(DigitTypingTest, DigitsTypeEachFieldInItsBaseWithinItsBounds) {
    Type(4, 4, {kScan1, kScan5});
    EXPECT_EQ(Line(4).volume[1], 15);
    Type(4, 4, {kScan7});
    EXPECT_EQ(Line(4).volume[1], 7);
    Type(4, 4, {kScan1, kScan6});  // 16 is past 15: the 1 drops out
    EXPECT_EQ(Line(4).volume[1], 6);
    Type(4, 4, {kScan1});  // 61 too
    EXPECT_EQ(Line(4).volume[1], 1);
    Type(4, 4, {kScan2, kScan3});  // 12, then 123 keeps no more than 3
    EXPECT_EQ(Line(4).volume[1], 3);
    Type(4, 4, {kScanPad4});
    EXPECT_EQ(Line(4).volume[1], 4);
    // Shift with the digits types the instrument.
    Type(4, 4, {kScan1, kScan2}, kShift);
    EXPECT_EQ(Line(4).instrument[1], 12);
    EXPECT_EQ(Line(4).volume[1], 4);

    // A channel command's parameter, 0..15 for "PV" and "VO".
    Type(5, 4, {kScan0, kScan9});
    EXPECT_EQ(Line(4).channelParam[1], 9);
    Line(4).channelCommand[1] = kChannelCommandVO;
    Type(5, 4, {kScan1, kScan3});
    EXPECT_EQ(Line(4).channelParam[1], 13);

    // "SP" in ticks and tenths as shown: 12.5 is 12 ticks and 4 eighths.
    Line(4).command = kCommandSP;
    const struct {
        std::vector<uint16_t> keys;
        uint8_t speed;
    } speeds[] = {{{kScan1, kScan2, kScan5}, 100}, {{kScan3, kScan1, kScan9}, 255}, {{kScan0, kScan6, kScan0}, 48},
                  {{kScan0, kScan0, kScan5}, 8},   {{kScan0, kScan1, kScan4}, 11},  {{kScan3, kScan2}, 26}};
    for (const auto& s : speeds) {
        Type(12, 4, s.keys);
        EXPECT_EQ(Line(4).commandParam, s.speed) << "keys " << s.keys.size();
    }

    // "ST" in hexadecimal: A, B, C and F as themselves, every letter as Shift with 0..5.
    Line(4).command = kCommandST;
    Type(12, 4, {kScan3, kScanF});
    EXPECT_EQ(Line(4).commandParam, 0x3F);
    Type(12, 4, {kScan3, kScan4}, kShift);
    EXPECT_EQ(Line(4).commandParam, 0xDE);
    Type(12, 4, {kScanC, kScanA, kScanB});
    EXPECT_EQ(Line(4).commandParam, 0xAB);
    // D and E keep their meanings there: D sets "SP", E steps.
    Type(12, 4, {kScanE});
    EXPECT_EQ(Line(4).commandParam, 0xAC);
    Type(12, 4, {kScanD});
    EXPECT_EQ(Line(4).command, kCommandSP);
    EXPECT_EQ(Line(4).commandParam, 8);
}

TEST_F(DigitTypingTest, AnyValueTakesAsManyKeysAsTheFieldShowsDigitsWhateverWasTypedBefore) {
    const DigitTarget volume{0, 0, 1, TypedValue::Volume};
    const DigitTarget speed{0, 0, 12, TypedValue::Speed};
    const DigitTarget stereo{0, 0, 12, TypedValue::Stereo};
    for (int before = -1; before < 16; ++before) {
        for (int value = 0; value < 256; ++value) {
            DigitEntry entry;
            uint8_t stored = 0;
            const auto type = [&](const DigitTarget& target, std::vector<int> digits) {
                if (before >= 0) stored = entry.Type(target, stored, before % 10);
                for (int digit : digits) stored = entry.Type(target, stored, digit);
                return stored;
            };
            if (value < 16) {
                EXPECT_EQ(type(volume, {value / 10, value % 10}), value) << before;
            }
            EXPECT_EQ(type(stereo, {value / 16, value % 16}), value) << before;
            // The speed as the grid shows it: ticks, then the eighths as tenths.
            const int ticks = value / 8, tenths = value % 8 * 9 / 7;
            if (value >= 8) {
                EXPECT_EQ(type(speed, {ticks / 10, ticks % 10, tenths}), value) << before;
            }
        }
    }
}

TEST_F(DigitTypingTest, EachDigitIsOneUndoStepAndFieldsWithoutValuesOrTheOptionOffTakeNone) {
    const auto before = Snapshot();
    Type(4, 4, {kScan1});
    const auto afterOne = Snapshot();
    Key(kScan5);
    EXPECT_EQ(Line(4).volume[1], 15);
    EXPECT_EQ(undo.Head(), 2u);
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_TRUE(*module == *afterOne);
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_TRUE(*module == *before);
    ASSERT_TRUE(undo.Redo(undoView));
    EXPECT_EQ(Line(4).volume[1], 1);
    // The undone value is not the one typed: the next digit starts afresh.
    ASSERT_TRUE(undo.Undo(undoView));
    Key(kScan2);
    EXPECT_EQ(Line(4).volume[1], 2);

    // No note, no channel command, no command, Ctrl held, the option off:
    // the digits do what they did before (nothing here), recording nothing.
    const auto unchanged = Snapshot();
    const uint32_t head = undo.Head();
    Line(4).channelCommand[1] = kChannelCommandNone;
    const struct {
        int column;
        uint16_t modifiers;
        bool typeDigits;
    } idle[] = {{1, 0, true}, {5, 0, true}, {12, 0, true}, {4, kCtrl, true}, {4, 0, false}, {4, kShift, false}};
    for (const auto& c : idle) {
        Line(4).channelCommand[1] = c.column == 5 ? kChannelCommandNone : kChannelCommandPV;
        Select(c.column, 4, 1, 1);
        EXPECT_FALSE(Key(kScan8, c.modifiers, c.typeDigits)) << c.column;
    }
    Line(4).channelCommand[1] = kChannelCommandPV;
    EXPECT_TRUE(*module == *unchanged);
    EXPECT_EQ(undo.Head(), head);

    // Note fields keep the piano; a larger frame only steps.
    Type(3, 4, {kScan2});
    EXPECT_EQ(Line(4).note[1], 3 * 12 + 13);
    Select(4, 4, 1, 2);
    EXPECT_FALSE(Key(kScan8));
}

}  // namespace
}  // namespace sondrel
