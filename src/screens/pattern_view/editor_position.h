#pragma once
// Where the editor stood: the pattern view's selection and pattern-list
// position. The view saves and restores it; the undo history keeps one from
// before and one from after each change so that taking a change back (or
// doing it again) shows it where it was made.

#include <cstdint>

namespace sondrel {

struct EditorPosition {
    int32_t anchorColumn = 0;
    int32_t anchorLine = 0;
    int32_t cursorColumn = 0;
    int32_t cursorLine = 0;
    uint8_t listPosition = 0;

    friend bool operator==(const EditorPosition&, const EditorPosition&) = default;
};

}  // namespace sondrel
