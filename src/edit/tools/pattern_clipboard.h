#pragma once
// The program's own clipboard for blocks of pattern cells. One lives for the
// whole run, owned by the program, so that a block copied from one module can
// be pasted into the next; it never reaches the system clipboard.

#include <array>
#include <cstdint>

#include "edit/tools/clipped_block.h"
#include "edit/editor_context.h"
#include "edit/keys/pattern_cell.h"

namespace sondrel {

class PatternClipboard {
public:
    // Fills the clipboard from the frame in the view's pattern; a frame that
    // holds no cell leaves it as it was. Records nothing. Like the other two,
    // it does nothing while the song plays.
    bool Copy(EditorContext& ctx);
    // Copies, then empties the frame's cells, as one whole-pattern undo entry.
    bool Cut(EditorContext& ctx);
    // Whether the held cells' kinds match the columns from the frame's top-left cell on.
    bool CanPaste(const EditorContext& ctx) const;
    // Writes the whole held block at the frame's top-left cell, one
    // whole-pattern undo entry. An empty held cell clears the cell beneath only
    // with deleteEmpty; otherwise it lets the pattern show through.
    bool Paste(EditorContext& ctx, bool deleteEmpty);

    bool HasContent() const { return hasContent_; }
    int Rows() const { return rows_; }
    int Columns() const { return columns_; }
    const PatternCell& Cell(int row, int column) const { return cells_[row][column]; }

private:
    bool CopyFrame(EditorContext& ctx);

    std::array<std::array<PatternCell, kCellColumns>, kMaxLines> cells_{};
    bool hasContent_ = false;
    int32_t rows_ = 0;
    int32_t columns_ = 0;
};

}  // namespace sondrel
