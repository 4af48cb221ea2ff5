#pragma once
// The block selection as the editing operations take it: the rectangle of
// grid cells between the cursor and the anchor, whichever corner is which.

#include <cstdint>

namespace sondrel {

struct SelectionFrame {
    int32_t x = 0;  // lowest column, 0..12
    int32_t y = 0;  // lowest line
    int32_t w = 1;  // columns; 1 is the cursor's column alone
    int32_t h = 1;  // lines

    friend bool operator==(const SelectionFrame&, const SelectionFrame&) = default;
};

}  // namespace sondrel
