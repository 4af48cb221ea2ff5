#pragma once
// The keys of pattern editing by their PC scan codes (set 1, 0x80 added for
// the extended keys, as the toolkit's key entries carry them), the two-row
// keyboard piano and the noise channel's key table.

#include <cstdint>
#include <optional>

namespace sondrel {

// Modifier bits of a key entry: either Shift key, either Control key, either Alt key.
constexpr uint16_t kShiftKeys = 0x0003;
constexpr uint16_t kCtrlKeys = 0x000C;
constexpr uint16_t kAltKeys = 0x0030;

enum ScanCode : uint16_t {
    kScan2 = 0x03, kScan3 = 0x04, kScan5 = 0x06, kScan6 = 0x07, kScan7 = 0x08, kScan9 = 0x0A, kScan0 = 0x0B,
    kScanEquals = 0x0D, kScanBackspace = 0x0E,
    kScanQ = 0x10, kScanW = 0x11, kScanE = 0x12, kScanR = 0x13, kScanT = 0x14, kScanY = 0x15, kScanU = 0x16,
    kScanI = 0x17, kScanO = 0x18, kScanP = 0x19, kScanLeftBracket = 0x1A, kScanRightBracket = 0x1B,
    kScanReturn = 0x1C, kScanA = 0x1E,  // A plays no note
    kScanS = 0x1F, kScanD = 0x20, kScanF = 0x21, kScanG = 0x22, kScanH = 0x23, kScanJ = 0x24, kScanL = 0x26,
    kScanSemicolon = 0x27, kScanBackslash = 0x2B,
    kScanZ = 0x2C, kScanX = 0x2D, kScanC = 0x2E, kScanV = 0x2F, kScanB = 0x30, kScanN = 0x31, kScanM = 0x32,
    kScanComma = 0x33, kScanPeriod = 0x34, kScanSlash = 0x35,
    kScanSpace = 0x39, kScanF1 = 0x3B, kScanF8 = 0x42,
    kScanHome = 0xC7, kScanUp = 0xC8, kScanPageUp = 0xC9, kScanLeft = 0xCB, kScanRight = 0xCD, kScanEnd = 0xCF,
    kScanDown = 0xD0, kScanPageDown = 0xD1,
};

constexpr uint8_t kNullNote = 246;
constexpr uint8_t kEmptyNote = 255;
constexpr int kToneNotes = 156;  // tone notes are 0..155

// The semitone a piano key stands for (0..31 over two and a half octaves),
// or nothing for a key that plays no note.
std::optional<int> PianoSemitone(uint16_t scanCode);
// The note a key enters on a tone channel at octave o: 12·o + semitone, the
// null-note for Shift+N; nothing for other keys or a note past the tone range.
std::optional<uint8_t> ToneNoteOf(uint16_t scanCode, uint16_t modifiers, int octave);
// The noise setting a key enters on the noise channel (Shift+S the null-note).
std::optional<uint8_t> NoiseNoteOf(uint16_t scanCode, uint16_t modifiers);
// The note a key enters on a channel (0..3).
std::optional<uint8_t> NoteOfKey(int channel, uint16_t scanCode, uint16_t modifiers, int octave);

// Keys that with Ctrl held start a command of their own instead of a note.
bool IsCtrlCommandKey(uint16_t scanCode);

}  // namespace sondrel
