#include "edit/tools/pattern_clipboard.h"

#include "sound/song_player.h"

namespace sondrel {
namespace {

constexpr uint32_t kPasteRedraw = kRedrawGridRows | kRedrawGridState | kRedrawTitle | kRedrawMenus;

Pattern& ShownPattern(const EditorContext& ctx) { return ctx.module.patterns[ctx.view.State().currentPattern]; }

}  // namespace

bool PatternClipboard::Copy(EditorContext& ctx) {
    if (ctx.song.Playing()) return false;
    return CopyFrame(ctx);
}

bool PatternClipboard::CopyFrame(EditorContext& ctx) {
    const Pattern& pattern = ShownPattern(ctx);
    auto block = ClipBlock(ctx.view.GetSelection(), pattern.length);
    if (!block) return false;
    rows_ = block->height;
    columns_ = block->lastCell - block->firstCell + 1;
    for (int r = 0; r < rows_; ++r) {
        for (int i = 0; i < columns_; ++i) cells_[r][i] = ReadCell(pattern.lines[block->top + r], block->firstCell + i);
    }
    hasContent_ = true;
    ctx.view.Invalidate(kRedrawGridRows | kRedrawGridState);
    return true;
}

bool PatternClipboard::Cut(EditorContext& ctx) {
    if (ctx.song.Playing()) return false;
    const uint8_t number = ctx.view.State().currentPattern;
    ctx.undo.BeginWholePattern(number, ctx.view.SaveState());
    CopyFrame(ctx);
    ClearBlock(ctx.module.patterns[number], ctx.view.GetSelection());
    ctx.undo.EndWholePattern(ctx.view.SaveState());
    ctx.view.Invalidate(kPasteRedraw);
    return true;
}

bool PatternClipboard::CanPaste(const EditorContext& ctx) const {
    auto block = ClipBlock(ctx.view.GetSelection(), ShownPattern(ctx).length);
    if (!block) return false;
    for (int i = 0; i < columns_; ++i) {
        const int column = block->firstCell + i;
        if (column >= kCellColumns || CellKindOf(column) != cells_[0][i].kind) return false;
    }
    return true;
}

bool PatternClipboard::Paste(EditorContext& ctx, bool deleteEmpty) {
    if (ctx.song.Playing()) return false;
    if (!hasContent_) {
        ctx.prompts.ShowMessage("Clipboard is not available.");
        return false;
    }
    if (!CanPaste(ctx)) {
        ctx.prompts.ShowMessage("Can't paste the clipboard because the column types do not match.");
        return false;
    }
    const uint8_t number = ctx.view.State().currentPattern;
    Pattern& pattern = ctx.module.patterns[number];
    const ClippedBlock block = *ClipBlock(ctx.view.GetSelection(), pattern.length);
    ctx.undo.BeginWholePattern(number, ctx.view.SaveState());
    for (int r = 0; r < rows_ && block.top + r < pattern.length; ++r) {
        PatternLine& line = pattern.lines[block.top + r];
        for (int i = 0; i < columns_; ++i) {
            const int column = block.firstCell + i;
            const PatternCell& cell = cells_[r][i];
            if (!cell.empty || IsCellEmpty(line, column) || deleteEmpty) WriteCell(line, column, cell);
        }
    }
    ctx.undo.EndWholePattern(ctx.view.SaveState());
    ctx.view.Invalidate(kPasteRedraw);
    return true;
}

}  // namespace sondrel
