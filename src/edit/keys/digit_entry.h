#pragma once
// Typing values with the digit keys (the "Type values with digits" option):
// which value of a pattern field a key types a digit into, and the
// calculator that takes the digits typed one after another into that value.
//
// The instrument/volume field takes the volume from the digits and the
// instrument from Shift with the digits; a channel command its parameter,
// in decimal for "PV", "VO" and the effects that count (slides, glide, cut,
// delay, retrigger), in hexadecimal for AR, VI and VS, with F typed as
// itself and every one of A to F as Shift with 0 to 5 (A, B, C, D and E set
// or step commands there); the "SP" command its speed as the grid shows it,
// in ticks and tenths ("1", "2", "5" for 12.5); the "ST" command its value
// in hexadecimal, with A, B, C and F typed as themselves and, since D and E
// have meanings of their own there, every one of A to F also as Shift with
// 0 to 5. A field that shows no value (no note, no command, a command of no
// meaning) takes no digits.
//
// A digit shifts into the number typed so far from the right, like a
// calculator: the digits on the left that the field doesn't show, or that
// would take the number past the field's largest value, drop out. So typing
// a value with as many digits as the field shows (leading zeros included)
// always gives it, whatever was typed before: at most three keys for any
// value. A new place, or a value changed by other means since, begins a new
// number.

#include <cstdint>
#include <optional>

#include "model/module.h"

namespace sondrel {

// ChannelParam is the parameter of "PV" and "VO" (0..15); EffectDecimal and
// EffectHex those of the effects with a decimal (0..99) or hexadecimal one.
enum class TypedValue : uint8_t { Volume, Instrument, ChannelParam, Speed, Stereo, EffectDecimal, EffectHex };

struct DigitKey {
    TypedValue value = TypedValue::Volume;
    int digit = 0;  // 0..15
};

// What the key types at this cursor column (0..12) of the line, or nothing:
// no digit key, a key with Ctrl, a note column or a field without a value.
std::optional<DigitKey> DigitKeyAt(const PatternLine& line, int column, uint16_t scanCode, uint16_t modifiers);
// Whether the number being typed goes on across this key: a key that types a
// digit into some field, or a modifier key pressed on the way to one (Shift
// for the instrument and the hexadecimal letters), with the cursor in this
// column. Any other key begins a new number.
bool KeepsNumberGoing(uint16_t scanCode, uint16_t modifiers, int column);

// The byte of the line that holds the typed value of the column.
uint8_t& TypedByte(PatternLine& line, int column, TypedValue value);

// Where digits are being typed: the same place again continues the number.
struct DigitTarget {
    uint8_t pattern = 0;
    int line = 0;
    int column = 0;
    TypedValue value = TypedValue::Volume;
    bool operator==(const DigitTarget&) const = default;
};

class DigitEntry {
public:
    // The byte to store after the digit is typed at the target, whose byte
    // holds current. The number goes on from the digits typed before only
    // when they were typed at the same target and its byte still holds what
    // they gave.
    uint8_t Type(const DigitTarget& target, uint8_t current, int digit);
    // The next digit begins a new number.
    void Forget() { target_.reset(); }

private:
    std::optional<DigitTarget> target_;
    int number_ = 0;  // as typed: for the speed, ticks times ten plus tenths
    uint8_t stored_ = 0;
};

}  // namespace sondrel
