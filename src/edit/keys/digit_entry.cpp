#include "edit/keys/digit_entry.h"

#include <algorithm>

#include "edit/keys/note_keys.h"
#include "edit/keys/value_steps.h"
#include "model/notes.h"
#include "screens/pattern_view/pattern_view.h"

namespace sondrel {

namespace {

constexpr int kColumnsPerChannel = 3;
constexpr int kCommandColumn = kGridLastColumn;

// How a value is typed: its base, how many digits the grid shows of it and
// the largest number that may be typed.
struct Typing {
    int base;
    int digits;
    int largest;
};

Typing TypingOf(TypedValue value) {
    switch (value) {
    case TypedValue::Speed: return {10, 3, 319};  // "31.9", the speed 255
    case TypedValue::Stereo:
    case TypedValue::EffectHex: return {16, 2, 255};
    case TypedValue::EffectDecimal: return {10, 2, kLargestDecimalParam};
    default: return {10, 2, 15};
    }
}

// The top row's and the keypad's digit keys.
std::optional<int> DecimalDigit(uint16_t scanCode) {
    if (scanCode >= 0x02 && scanCode <= 0x0A) return scanCode - 0x01;  // 1..9
    if (scanCode == 0x0B) return 0;
    switch (scanCode) {
    case 0x52: return 0;
    case 0x4F: return 1;
    case 0x50: return 2;
    case 0x51: return 3;
    case 0x4B: return 4;
    case 0x4C: return 5;
    case 0x4D: return 6;
    case 0x47: return 7;
    case 0x48: return 8;
    case 0x49: return 9;
    default: return std::nullopt;
    }
}

// Which letters type hexadecimal digits: those that mean nothing else where
// the value is typed. In the command column A, B, C and F; in a
// channel-command field only F, as A, B and C set channel commands there.
enum class HexLetters : uint8_t { CommandColumn, ChannelCommandField };

// A hexadecimal digit: 0..9, the letters that type themselves, and Shift
// with 0..5 for A..F.
std::optional<int> HexDigit(uint16_t scanCode, bool shift, HexLetters letters) {
    if (const auto digit = DecimalDigit(scanCode)) {
        if (!shift) return digit;
        if (*digit <= 5) return 10 + *digit;
        return std::nullopt;
    }
    if (shift) return std::nullopt;
    if (letters == HexLetters::ChannelCommandField) return scanCode == kScanF ? std::optional<int>(15) : std::nullopt;
    switch (scanCode) {
    case kScanA: return 10;
    case kScanB: return 11;
    case kScanC: return 12;
    case kScanF: return 15;
    default: return std::nullopt;
    }
}

bool ShowsInstrumentAndVolume(uint8_t note) {
    const NoteKind kind = KindOfNote(note);
    return kind != NoteKind::Empty && kind != NoteKind::Invalid;
}

// The speed for ticks times ten plus tenths: the tenths go to the eighth of a
// tick whose shown tenth is the highest not above them, as the grid shows
// an eighth e as the tenth e * 9 / 7.
uint8_t SpeedOf(int number) {
    const int tenths = number % 10;
    int eighths = 0;
    while (eighths < 7 && (eighths + 1) * 9 / 7 <= tenths) ++eighths;
    return static_cast<uint8_t>(std::clamp(number / 10 * 8 + eighths, 8, 255));
}

}  // namespace

std::optional<DigitKey> DigitKeyAt(const PatternLine& line, int column, uint16_t scanCode, uint16_t modifiers) {
    if ((modifiers & kCtrlKeys) != 0 || column < 0 || column > kCommandColumn) return std::nullopt;
    const bool shift = (modifiers & kShiftKeys) != 0;
    const int channel = column / kColumnsPerChannel;
    const auto decimal = [&](TypedValue value) -> std::optional<DigitKey> {
        const auto digit = DecimalDigit(scanCode);
        if (!digit) return std::nullopt;
        return DigitKey{value, *digit};
    };
    if (column == kCommandColumn) {
        if (line.command == kCommandSP && !shift) return decimal(TypedValue::Speed);
        if (line.command != kCommandST) return std::nullopt;
        const auto digit = HexDigit(scanCode, shift, HexLetters::CommandColumn);
        if (!digit) return std::nullopt;
        return DigitKey{TypedValue::Stereo, *digit};
    }
    switch (column % kColumnsPerChannel) {
    case 1:
        if (!ShowsInstrumentAndVolume(line.note[channel])) return std::nullopt;
        return decimal(shift ? TypedValue::Instrument : TypedValue::Volume);
    case 2: {
        const uint8_t command = line.channelCommand[channel];
        if (command == kChannelCommandNone || command > kLastChannelCommand) return std::nullopt;
        if (ChannelParamIsHex(command)) {
            const auto digit = HexDigit(scanCode, shift, HexLetters::ChannelCommandField);
            if (!digit) return std::nullopt;
            return DigitKey{TypedValue::EffectHex, *digit};
        }
        if (shift) return std::nullopt;
        const bool own = command == kChannelCommandPV || command == kChannelCommandVO;
        return decimal(own ? TypedValue::ChannelParam : TypedValue::EffectDecimal);
    }
    default: return std::nullopt;  // the note column keeps the piano
    }
}

bool KeepsNumberGoing(uint16_t scanCode, uint16_t modifiers, int column) {
    switch (scanCode) {
    case 0x2A: case 0x36:  // Shift
    case 0x1D: case 0x9D:  // Ctrl
    case 0x38: case 0xB8:  // Alt
        return true;
    default: break;
    }
    const bool shift = (modifiers & kShiftKeys) != 0;
    // A, B and C set commands in a channel command field, so there they end the number.
    const HexLetters letters = column == kCommandColumn ? HexLetters::CommandColumn : HexLetters::ChannelCommandField;
    return (modifiers & kCtrlKeys) == 0 && HexDigit(scanCode, shift, letters).has_value();
}

uint8_t& TypedByte(PatternLine& line, int column, TypedValue value) {
    const int channel = std::min(column / kColumnsPerChannel, kChannels - 1);
    switch (value) {
    case TypedValue::Volume: return line.volume[channel];
    case TypedValue::Instrument: return line.instrument[channel];
    case TypedValue::ChannelParam:
    case TypedValue::EffectDecimal:
    case TypedValue::EffectHex: return line.channelParam[channel];
    default: return line.commandParam;
    }
}

uint8_t DigitEntry::Type(const DigitTarget& target, uint8_t current, int digit) {
    const Typing typing = TypingOf(target.value);
    if (target_ != target || current != stored_) number_ = 0;
    // The digit comes in on the right; on the left go the digits the field
    // doesn't show and those that would take the number past its largest.
    int kept = 1;
    for (int i = 0; i < typing.digits; ++i) kept *= typing.base;
    const int shifted = number_ * typing.base + digit;
    while (kept > typing.base && shifted % kept > typing.largest) kept /= typing.base;
    number_ = shifted % kept;
    target_ = target;
    stored_ = target.value == TypedValue::Speed ? SpeedOf(number_) : static_cast<uint8_t>(number_);
    return stored_;
}

}  // namespace sondrel
