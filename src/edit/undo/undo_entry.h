#pragma once
// The undo history's fixed-size records: one entry per recorded change, and
// the 36-byte slots of module data that entries keep in the history's store.

#include <array>
#include <cstdint>

#include "screens/pattern_view/selection_frame.h"
#include "screens/pattern_view/editor_position.h"

namespace sondrel {

enum class UndoKind : uint8_t {
    LineRange = 0,         // lines of one pattern, before and after
    WholePattern = 1,      // all lines of a pattern with its old and new length
    Block = 2,             // the framed lines; the block is cleared again on redo
    PatternListEntry = 3,  // one pattern-list entry's old and new pattern
    PatternListMove = 4,   // an entry moved up or down
    PatternListWhole = 5,  // the whole list with its length and repeat position
    ChangeInstruments = 6, // one record of instruments per changed line
    CopyChannels = 7,      // one record of the two channels per changed line
    PatternSettings = 8,   // a pattern's header and name
    Instruments = 9,       // all 16 instruments
    NewPattern = 10,       // a pattern made and put into the list
    DeletePattern = 11,    // a pattern removed from the list and freed
    RepeatPosition = 12,   // the repeat position
};

constexpr int kUndoSlotBytes = 36;

struct UndoSlot {
    std::array<uint8_t, kUndoSlotBytes> bytes{};
};

// Fields a kind does not use are ignored.
struct UndoEntry {
    UndoKind kind = UndoKind::LineRange;
    uint32_t storeStart = 0;
    uint32_t slots = 0;
    uint8_t pattern = 0;
    uint16_t firstLine = 0;
    uint16_t lines = 0;       // line count (0, 2), old length (1), the deleted pattern's length (11)
    uint16_t linesAfter = 0;  // new length (1, 10)
    uint8_t listPosition = 0;
    uint8_t valueBefore = 0;  // old pattern number (3), direction 1 = up (4), old repeat position (12)
    uint8_t valueAfter = 0;   // new pattern number (3), new repeat position (12)
    uint16_t listLengthBefore = 0;
    uint16_t listLengthAfter = 0;
    uint8_t repeatBefore = 0;
    uint8_t repeatAfter = 0;
    uint8_t viewBefore = 0;   // the view's list position (5)
    uint8_t viewAfter = 0;
    std::array<uint8_t, 4> params{};  // the tool's mode, instruments or channels and mask (6, 7)
    uint32_t records = 0;             // records written (6, 7)
    SelectionFrame rect;
    EditorPosition positionBefore;
    EditorPosition positionAfter;
};

}  // namespace sondrel
