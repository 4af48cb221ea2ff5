#include "screens/dialogs/value_formats.h"

#include <algorithm>
#include <cstdio>

#include "model/storable_text.h"

namespace sondrel {

std::string SpeedText(int32_t eighths) {
    char text[16];
    std::snprintf(text, sizeof text, "%2d.%03d", eighths / 8, eighths % 8 * 125);
    return text;
}

int64_t ReadSpeed(const std::string& text) {
    int64_t whole = 0;
    int64_t fraction = 0;  // in thousandths
    int64_t scale = 100;
    bool afterPoint = false;
    for (const char c : text) {
        if (c == '.') {
            afterPoint = true;
        } else if (c >= '0' && c <= '9') {
            if (!afterPoint) {
                whole = whole < 100000 ? whole * 10 + (c - '0') : whole;
            } else if (scale > 0) {
                fraction += (c - '0') * scale;
                scale /= 10;
            }
        }
    }
    return whole * 8 + (fraction * 8 + 500) / 1000;
}

void ShowAsSpeed(TextLine& line) { line.SetNumberFormat(SpeedText, ReadSpeed); }

std::string SixteenthsText(int32_t sixteenths) {
    const int32_t magnitude = sixteenths < 0 ? -sixteenths : sixteenths;
    const char* format = sixteenths >= 0 ? "%2d.%02d" : magnitude < 10 * 16 ? "-%1d.%02d" : "-%2d.%02d";
    char text[24];
    std::snprintf(text, sizeof text, format, magnitude / 16, magnitude % 16);
    return text;
}

int64_t ReadSixteenths(const std::string& text) {
    int64_t whole = 0;
    int64_t sixteenths = 0;
    bool negative = false;
    bool digits = false;
    bool afterPoint = false;
    for (const char c : text) {
        if (c == '-' && !digits && !afterPoint) {
            negative = true;
        } else if (c == '.') {
            afterPoint = true;
        } else if (c >= '0' && c <= '9') {
            digits = true;
            int64_t& part = afterPoint ? sixteenths : whole;
            part = part < 100000 ? part * 10 + (c - '0') : part;
        }
    }
    const int64_t value = whole * 16 + std::min<int64_t>(sixteenths, 15);
    return negative ? -value : value;
}

void ShowAsSixteenths(TextLine& line) { line.SetNumberFormat(SixteenthsText, ReadSixteenths); }

void TakeStorableText(TextLine& line) {
    line.SetFilter([](char c) { return c == '0' ? kZeroStandIn : c; });
}

}  // namespace sondrel
