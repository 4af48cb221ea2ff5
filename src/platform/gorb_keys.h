#pragma once
// Keys as the rest of the program knows them: PC keyboard set-1 scan codes
// (Escape 1, Tab 15, Space 57, Z 44), with 0x80 added for the extended keys
// such as the cursor block (Up 0xC8). SDL's scancodes are mapped here.

#include <cstdint>

namespace sondrel {

// 0 for keys that have no set-1 code.
uint16_t ScanCodeFromSdl(int sdlScancode);

// The character of the keys that type a control character and no text:
// Backspace 8, Tab 9, Return and keypad Enter 13, Escape 27; 0 otherwise.
uint16_t ControlCharacter(uint16_t scanCode);

// The one Latin-1 character a piece of UTF-8 text holds, or 0 when it holds
// none, more than one, or one beyond Latin-1.
uint16_t Latin1FromUtf8(const char* text);

}  // namespace sondrel
