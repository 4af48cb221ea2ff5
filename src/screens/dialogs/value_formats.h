#pragma once
// How the dialogs and the settings panel show values that are not plain
// numbers, and read them back as typed.

#include <cstdint>
#include <string>

#include "ui/widgets/text_line.h"

namespace sondrel {

// A speed in eighths of a tick as ticks and thousandths: 48 " 6.000", 79 " 9.875".
std::string SpeedText(int32_t eighths);
// "6.5" 52, "6" 48, ".125" 1; the nearest eighth, 0 for no digits.
int64_t ReadSpeed(const std::string& text);
// A numeric text line showing and taking speeds in that form.
void ShowAsSpeed(TextLine& line);

// A volume in sixteenths of a volume step as whole steps and sixteenths:
// 255 "15.15", 8 " 0.08", -20 "-1.04". The sixteenths always take two digits,
// so they are not mistaken for a decimal fraction, and a minus takes the place
// of a lone digit's padding, so positive and negative values line up.
std::string SixteenthsText(int32_t sixteenths);
// "15.15" 255, "1.4" 20, "-0.1" -1, "3" 48: the digits after the point count
// sixteenths (15 at most), a minus before the digits makes it negative.
int64_t ReadSixteenths(const std::string& text);
// A numeric text line showing and taking volumes in sixteenths in that form.
void ShowAsSixteenths(TextLine& line);

// A text entry for a text that ends up in the module: at most 255 characters,
// and the digit zero turned into the letter "O" as it is typed, so what is
// seen is what is saved.
void TakeStorableText(TextLine& line);

}  // namespace sondrel
