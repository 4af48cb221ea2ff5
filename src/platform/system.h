#pragma once
// Small services of the operating system: clipboard text, plain message
// boxes, and the time of day in UTC.

#include <string>

namespace sondrel {

// Plain text on the system clipboard; empty when there is none.
std::string GetClipboardText();
void SetClipboardText(const std::string& text);

// A message box with an empty caption and one OK button. Without a display
// (or with the offscreen and dummy video drivers) the text goes to stderr.
void ShowMessageBox(const std::string& text);

struct UtcTime {
    int year = 1970;
    int month = 1;   // 1..12
    int day = 1;     // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0;
};

UtcTime CurrentUtcTime();

}  // namespace sondrel
