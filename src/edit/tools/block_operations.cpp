#include "edit/tools/block_operations.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>

#include "edit/tools/clipped_block.h"
#include "edit/keys/pattern_cell.h"
#include "sound/song_player.h"

namespace sondrel {
namespace {

constexpr uint32_t kBlockRedraw = kRedrawGridRows | kRedrawGridState | kRedrawTitle | kRedrawMenus;

const char* const kTooShort = "The selection frame must be heigher than 2 lines.";
const char* const kManyChannels = "The selection frame musn't include more than one channel.";
const char* const kNoStartVolume = "The start note has no volume.";
const char* const kNoEndVolume = "The end note has no volume.";

// A clipped frame in channel columns 0..4 (4 is the command column).
struct ChannelBlock {
    int top = 0;
    int height = 0;
    int firstChannel = 0;
    int channels = 0;
};

std::optional<ChannelBlock> ClipChannels(const SelectionFrame& frame, int patternLength) {
    auto cells = ClipBlock(frame, patternLength);
    if (!cells) return std::nullopt;
    return ChannelBlock{cells->top, cells->height, cells->firstCell / 2,
                        cells->lastCell / 2 - cells->firstCell / 2 + 1};
}

bool HasVolume(ToneType type) { return type >= kToneNote && type <= kToneNull; }
bool TakesDetune(ToneType type) { return type == kToneNote || type == kToneNull; }

uint8_t PatternNumber(const EditorContext& ctx) { return ctx.view.State().currentPattern; }

// Runs change over the tone channels of the clipped frame's lines inside
// one line-range entry, holding the audio mutex while the lines change.
template <typename Change>
bool ChangeChannelNotes(EditorContext& ctx, Change change) {
    if (ctx.song.Playing()) return false;
    const uint8_t number = PatternNumber(ctx);
    Pattern& pattern = ctx.module.patterns[number];
    auto block = ClipChannels(ctx.view.GetSelection(), pattern.length);
    if (!block) return false;
    ctx.undo.BeginLines(number, block->top, block->height, ctx.view.SaveState());
    {
        std::lock_guard lock(ctx.audioMutex);
        const int lastChannel = std::min(block->firstChannel + block->channels, kChannels);
        for (int l = block->top; l < block->top + block->height; ++l) {
            for (int c = block->firstChannel; c < lastChannel; ++c) change(pattern.lines[l], c);
        }
    }
    ctx.undo.EndLines(ctx.view.SaveState());
    ctx.view.Invalidate(kBlockRedraw);
    return true;
}

// Moves a note by step within [low, high], scaling an octave step by octave
// the first time one is met; the scaled step stays for the rest of the run.
uint8_t StepNote(int note, int& step, int octave, int sign, int low, int high) {
    if (std::abs(step) == 2) step *= octave;
    return static_cast<uint8_t>(std::clamp(note + sign * step, low, high));
}

// What the gradients read from the frame.
struct Gradient {
    int top = 0;
    int height = 0;
    int channel = 0;   // the first channel column; 4 is the command column
    int channels = 0;
    uint8_t startNote = 255;
    uint8_t endNote = 255;
};

std::optional<Gradient> GradientFrame(const EditorContext& ctx) {
    const Pattern& pattern = ctx.module.patterns[PatternNumber(ctx)];
    auto block = ClipChannels(ctx.view.GetSelection(), pattern.length);
    if (!block) return std::nullopt;
    Gradient g{block->top, block->height, block->firstChannel, block->channels};
    if (g.channel < kChannels) {
        g.startNote = pattern.lines[g.top].note[g.channel];
        g.endNote = pattern.lines[g.top + g.height - 1].note[g.channel];
    }
    return g;
}

// The message about the frame itself; the tests on the notes that follow may replace it.
std::string FrameMessage(const Gradient& g, const char* commandColumn) {
    if (g.height <= 2) return kTooShort;
    if (g.channels > 1) return kManyChannels;
    if (g.channel == kChannels) return commandColumn;
    return {};
}

// Sets the inner lines' values (volume or note) where the line's note is not
// empty, going in a straight line from start to end.
template <typename Field>
bool Interpolate(EditorContext& ctx, const Gradient& g, const std::string& message, Field field) {
    if (!message.empty()) {
        ctx.prompts.ShowMessage(message);
        return false;
    }
    const uint8_t number = PatternNumber(ctx);
    Pattern& pattern = ctx.module.patterns[number];
    const int32_t start = field(pattern.lines[g.top]);
    const int32_t end = field(pattern.lines[g.top + g.height - 1]);
    ctx.undo.BeginLines(number, g.top, g.height, ctx.view.SaveState());
    for (int i = 1; i <= g.height - 2; ++i) {
        PatternLine& line = pattern.lines[g.top + i];
        if (line.note[g.channel] == 255) continue;
        field(line) = static_cast<uint8_t>(start + (end - start) * i / (g.height - 1));
    }
    ctx.undo.EndLines(ctx.view.SaveState());
    ctx.view.Invalidate(kBlockRedraw);
    return true;
}

// The frame's x and w taken directly as cell columns, for Double and Half.
struct DirectColumns {
    int first = 0;
    int last = -1;
};

DirectColumns DirectColumnsOf(const SelectionFrame& frame) {
    return {std::max(frame.x, 0), std::min(frame.x + frame.w - 1, kCellColumns - 1)};
}

bool InPattern(const Pattern& pattern, int line) { return line >= 0 && line < pattern.length; }

PatternCell CellAt(const Pattern& pattern, int line, int column) {
    return InPattern(pattern, line) ? ReadCell(pattern.lines[line], column) : EmptyCellOf(column);
}

// Copies the columns' cells of one line to another; a line past the end reads as empty.
void CopyCells(Pattern& pattern, int from, int to, const DirectColumns& columns) {
    if (!InPattern(pattern, to)) return;
    for (int col = columns.first; col <= columns.last; ++col) {
        WriteCell(pattern.lines[to], col, CellAt(pattern, from, col));
    }
}

// Runs change between a whole-pattern entry's begin and end; the view then
// scales its frame to the changed lines.
template <typename Change>
bool ChangeWholePattern(EditorContext& ctx, Change change, void (PatternView::*scale)()) {
    if (ctx.song.Playing()) return false;
    const uint8_t number = PatternNumber(ctx);
    const SelectionFrame frame = ctx.view.GetSelection();
    ctx.undo.BeginWholePattern(number, ctx.view.SaveState());
    change(ctx.module.patterns[number], frame, DirectColumnsOf(frame));
    (ctx.view.*scale)();
    ctx.undo.EndWholePattern(ctx.view.SaveState());
    ctx.view.Invalidate(kBlockRedraw);
    return true;
}

}  // namespace

ToneType ToneTypeOf(uint8_t note) {
    if (note <= 155) return kToneNote;
    if (note <= 245) return kToneInvalid;
    if (note == 246) return kToneNull;
    if (note <= 250) return kTonePeriodic;
    if (note <= 254) return kToneWhite;
    return kToneEmpty;
}

bool ClearSelection(EditorContext& ctx) {
    if (ctx.song.Playing()) return false;
    const uint8_t number = PatternNumber(ctx);
    Pattern& pattern = ctx.module.patterns[number];
    const SelectionFrame frame = ctx.view.GetSelection();
    if (!ClipBlock(frame, pattern.length)) return false;
    ctx.undo.BeginBlock(number, frame, ctx.view.SaveState());
    {
        std::lock_guard lock(ctx.audioMutex);
        ClearBlock(pattern, frame);
    }
    ctx.undo.Close();
    ctx.view.Invalidate(kBlockRedraw);
    return true;
}

bool TransposeSelection(EditorContext& ctx, TransposeStep step) {
    int delta = step;
    return ChangeChannelNotes(ctx, [&delta](PatternLine& line, int c) {
        const uint8_t note = line.note[c];
        switch (ToneTypeOf(note)) {
        case kToneNote: line.note[c] = StepNote(note, delta, 6, 1, 0, 155); break;
        case kTonePeriodic: line.note[c] = StepNote(note, delta, 2, -1, 247, 250); break;
        case kToneWhite: line.note[c] = StepNote(note, delta, 2, -1, 251, 254); break;
        default: break;
        }
    });
}

bool StepSelectionDetune(EditorContext& ctx, int delta) {
    return ChangeChannelNotes(ctx, [delta](PatternLine& line, int c) {
        if (!TakesDetune(ToneTypeOf(line.note[c]))) return;
        line.detune[c] = static_cast<int8_t>(std::clamp(line.detune[c] + delta, -99, 99));
    });
}

bool VolumeGradient(EditorContext& ctx) {
    if (ctx.song.Playing()) return false;
    auto g = GradientFrame(ctx);
    if (!g) return false;
    std::string message = FrameMessage(*g, "The command column has no volumes.");
    // A note without a volume overrides every message about the frame.
    if (g->channel < kChannels) {
        if (!HasVolume(ToneTypeOf(g->startNote))) {
            message = kNoStartVolume;
        } else if (!HasVolume(ToneTypeOf(g->endNote))) {
            message = kNoEndVolume;
        }
    }
    const int c = g->channel;
    return Interpolate(ctx, *g, message, [c](PatternLine& line) -> uint8_t& { return line.volume[c]; });
}

bool NoteGradient(EditorContext& ctx) {
    if (ctx.song.Playing()) return false;
    auto g = GradientFrame(ctx);
    if (!g) return false;
    std::string message = FrameMessage(*g, "The command column has no tones.");
    // An empty top or bottom note is judged by its tone type like any other:
    // it matches only another empty note, and then the notes between are emptied.
    if (g->channel < kChannels) {
        const ToneType start = ToneTypeOf(g->startNote);
        if (start != ToneTypeOf(g->endNote)) {
            message = "Can't interpolate between different tone types.";
        } else if (start == kToneNull) {
            message = "Can't interpolate between null-notes.";
        }
    }
    const int c = g->channel;
    return Interpolate(ctx, *g, message, [c](PatternLine& line) -> uint8_t& { return line.note[c]; });
}

bool DoubleSelectionLines(EditorContext& ctx) {
    return ChangeWholePattern(
        ctx,
        [](Pattern& pattern, const SelectionFrame& frame, const DirectColumns& columns) {
            const int last = frame.y + frame.h - 1;
            for (int l = kMaxLines; l > last; --l) CopyCells(pattern, l, l + frame.h, columns);
            for (int s = last; s >= frame.y; --s) {
                const int t = frame.y + 2 * (s - frame.y);
                if (InPattern(pattern, s)) CopyCells(pattern, s, t, columns);
                if (!InPattern(pattern, t + 1)) continue;
                for (int col = columns.first; col <= columns.last; ++col) ClearCell(pattern.lines[t + 1], col);
            }
        },
        &PatternView::DoubleSelection);
}

bool HalveSelectionLines(EditorContext& ctx) {
    return ChangeWholePattern(
        ctx,
        [](Pattern& pattern, const SelectionFrame& frame, const DirectColumns& columns) {
            const int half = frame.h / 2;
            for (int d = frame.y; d < frame.y + half; ++d) {
                const int s = frame.y + 2 * (d - frame.y);
                if (!InPattern(pattern, d)) continue;
                for (int col = columns.first; col <= columns.last; ++col) {
                    PatternCell cell = CellAt(pattern, s, col);
                    if (cell.empty) cell = CellAt(pattern, s + 1, col);
                    WriteCell(pattern.lines[d], col, cell);
                }
            }
            for (int l = frame.y + half; l < pattern.length; ++l) CopyCells(pattern, l + half, l, columns);
        },
        &PatternView::HalveSelection);
}

}  // namespace sondrel
