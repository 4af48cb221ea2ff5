#pragma once
// Every kind of command queue entry, with what its two words carry. This is
// the contract between the toolkit, which makes the entries, and the command
// dispatcher, which reads them. Kind 0 is never queued.

#include <cstdint>

namespace sondrel {

enum EntryKind : uint32_t {
    kEntryNone = 0,
    kEntryMenuCommand = 1,   // a: the chosen menu entry's command number (0-38), b: 0
    kEntryButton = 2,        // a: speed button id, b: its direction (0 or 1; a pair of arrows shares one id)
    kEntryValue = 4,         // a: widget id, b: its value; a push button was let go over itself (b: 0),
                             // a text entry lost the focus or a held widget was let go
    kEntryWheelWidgetUp = 10,    // a: widget id, b: 0; the wheel turned (not negatively) over a scrolling widget
    kEntryWheelWidgetDown = 11,  // a: widget id, b: 0; the same for a negative turn
    kEntryWindowClose = 12,  // a: window id, b: 0; the window's close box was clicked (or Escape in a requester)
    kEntryKeyDown = 13,      // see PackKeyA/PackKeyB below
    kEntryKeyUp = 14,        // a: key code, b: 1 when a widget took the key
    kEntryWheelDown = 15,    // a: wheel delta, b: 0; no window took a negative turn
    kEntryWheelUp = 16,      // a: wheel delta, b: 0; no window took a turn that was not negative
    kEntryCloseRequest = 20, // a: 0, b: 0; the user asked to close the main window

    // Notifications; a is the widget id.
    kEntryListActivate = 3,  // a list line was double-clicked (or Return pressed on it); b: line number
    kEntryToggle = 5,        // check box or check button toggled; b: 1 on, 0 off
    kEntryChoice = 6,        // select box, select button or menu button chose; b: the choice's index
    kEntryTextReturn = 7,    // Return in a one-line text entry; b: its value (numeric mode) or 0
    kEntryTextChanged = 8,   // a one-line text entry's text was edited; b: its length
    kEntryTextField = 9,     // multi-line text field edited; b: line count
    kEntryListLine = 18,     // list line selected; b: line number
    kEntryImage = 19,        // owner-drawn image clicked; b: x in the low 16 bits, y in bits 16-30,
                             // bit 31 (kImageDragged) set while the pointer moves on with the button down
    kEntryMaskSolo = 21,     // Shift+click on a toggle that is one bit of a mask; b: its bit. The
                             // toggles are left as they were: the receiver sets the mask it wants
};

constexpr uint32_t kImageDragged = 1u << 31;
constexpr uint32_t PackImagePoint(int x, int y, bool dragged) {
    return (static_cast<uint32_t>(x) & 0xFFFF) | ((static_cast<uint32_t>(y) & 0x7FFF) << 16) |
           (dragged ? kImageDragged : 0u);
}
constexpr int ImagePointX(uint32_t b) { return static_cast<int>(b & 0xFFFF); }
constexpr int ImagePointY(uint32_t b) { return static_cast<int>((b >> 16) & 0x7FFF); }

// Key entries pack two 16-bit halves into a (key code low, character high)
// and modifiers, repeat flag and taken flag into b (low 16 bits, then a byte
// each).
constexpr uint32_t PackKeyA(uint16_t key, uint16_t character) {
    return static_cast<uint32_t>(key) | (static_cast<uint32_t>(character) << 16);
}
constexpr uint32_t PackKeyB(uint16_t modifiers, bool repeat, bool taken) {
    return static_cast<uint32_t>(modifiers) | (repeat ? 1u << 16 : 0u) | (taken ? 1u << 24 : 0u);
}
constexpr uint16_t KeyCode(uint32_t a) { return static_cast<uint16_t>(a & 0xFFFF); }
constexpr uint16_t KeyCharacter(uint32_t a) { return static_cast<uint16_t>(a >> 16); }
constexpr uint16_t KeyModifiers(uint32_t b) { return static_cast<uint16_t>(b & 0xFFFF); }
constexpr bool KeyRepeat(uint32_t b) { return ((b >> 16) & 0xFF) != 0; }
constexpr bool KeyTaken(uint32_t b) { return ((b >> 24) & 0xFF) != 0; }

}  // namespace sondrel
