#include "screens/dialogs/value_formats.h"

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

void TakeStorableText(TextLine& line) {
    line.SetFilter([](char c) { return c == '0' ? kZeroStandIn : c; });
}

}  // namespace sondrel
