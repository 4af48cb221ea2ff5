#include "edit/keys/pattern_editing.h"

#include <algorithm>
#include <mutex>

#include "edit/tools/clipped_block.h"
#include "edit/keys/note_keys.h"
#include "edit/keys/value_steps.h"
#include "sound/song_player.h"
#include "ui/entry_kinds.h"

namespace sondrel {

namespace {

constexpr uint32_t kRedrawCursor = kRedrawGridState;
constexpr uint32_t kRedrawChange = kRedrawGridRows | kRedrawGridState | kRedrawTitle | kRedrawMenus;
constexpr int kPageLines = 32;
constexpr int kHomeEndLines = 256;

bool Locked(const EditorContext& context) { return context.song.Playing(); }

uint8_t CurrentPattern(const EditorContext& context) { return context.view.State().currentPattern; }

Pattern& PatternOf(EditorContext& context) { return context.module.patterns[CurrentPattern(context)]; }

bool IsSingleCell(const SelectionFrame& frame) { return frame.w == 1 && frame.h == 1; }

// Records the lines under the frame, changes them under the audio mutex and closes the entry.
template <typename Change>
void ChangeFrameLines(EditorContext& context, const SelectionFrame& frame, Change change) {
    const auto block = ClipBlock(frame, PatternOf(context).length);
    if (!block) return;
    context.undo.BeginLines(CurrentPattern(context), block->top, block->height, context.view.SaveState());
    {
        std::lock_guard<AudioMutex> lock(context.audioMutex);
        change(PatternOf(context));
    }
    context.undo.EndLines(context.view.SaveState());
    context.view.Invalidate(kRedrawChange);
}

// E, W and Q step parameters, V and I volumes and instruments; false for other keys.
bool StepKey(EditorContext& context, const SelectionFrame& frame, uint16_t scanCode, bool down, bool wrapVolume) {
    switch (scanCode) {
    case kScanE:
    case kScanW:
    case kScanQ: {
        const StepSize size = scanCode == kScanE ? StepSize::One : scanCode == kScanW ? StepSize::Middle : StepSize::Large;
        ChangeFrameLines(context, frame, [&](Pattern& pattern) { StepValues(pattern, frame, size, down); });
        return true;
    }
    case kScanV:
        ChangeFrameLines(context, frame, [&](Pattern& pattern) { StepVolumes(pattern, frame, down, wrapVolume); });
        return true;
    case kScanI:
        ChangeFrameLines(context, frame, [&](Pattern& pattern) { StepInstruments(pattern, frame, down); });
        return true;
    default:
        return false;
    }
}

// The channel command a key sets in a channel-command field, with the
// parameter it starts from ("VO" takes the current volume instead).
struct ChannelCommandKey {
    uint16_t scanCode;
    uint8_t command;
    uint8_t param;
};
constexpr ChannelCommandKey kChannelCommandKeys[] = {
    {kScanLeftBracket, kChannelCommandPV, 0},
    {kScanB, kChannelCommandVO, 0},
    {kScanA, kEffectArpeggio, 0x47},  // a major chord: up 4 and 7 semitones
    {kScanU, kEffectSlideUp, 2},
    {kScanD, kEffectSlideDown, 2},
    {kScanG, kEffectGlide, 4},
    {kScanV, kEffectVibrato, 0x46},
    {kScanS, kEffectVolumeSlide, 0x01},  // down a volume step a tick
    {kScanC, kEffectNoteCut, 3},
    {kScanL, kEffectNoteDelay, 3},
    {kScanR, kEffectRetrigger, 3},
};

// In a channel-command field [, B and the effect letters set a channel
// command; in the command column D and Y set a line command.
bool SetCommandKey(EditorContext& context, int column, int line, uint16_t scanCode) {
    auto set = [&](auto write) {
        ChangeFrameLines(context, {column, line, 1, 1}, [&](Pattern& pattern) { write(pattern.lines[line]); });
        return true;
    };
    if (column < kGridLastColumn) {
        const int channel = column / 3;
        const uint8_t volume = context.view.Settings().defaultVolume;
        for (const ChannelCommandKey& key : kChannelCommandKeys) {
            if (key.scanCode != scanCode) continue;
            const uint8_t param = key.command == kChannelCommandVO ? volume : key.param;
            return set([&](PatternLine& l) { l.channelCommand[channel] = key.command, l.channelParam[channel] = param; });
        }
        return false;
    }
    if (scanCode == kScanD) return set([&](PatternLine& l) { l.command = kCommandSP, l.commandParam = 8; });
    if (scanCode == kScanY) return set([&](PatternLine& l) { l.command = kCommandST, l.commandParam = 255; });
    return false;
}

// A digit typed into the value at the cursor, recorded as a step is.
bool TypeDigit(EditorContext& context, const SelectionFrame& frame, uint16_t modifiers, uint16_t scanCode,
               DigitEntry& typing) {
    Pattern& pattern = PatternOf(context);
    if (frame.y < 0 || frame.y >= pattern.length) return false;
    const auto key = DigitKeyAt(pattern.lines[frame.y], frame.x, scanCode, modifiers);
    if (!key) return false;
    const DigitTarget target{CurrentPattern(context), frame.y, frame.x, key->value};
    const uint8_t value = typing.Type(target, TypedByte(pattern.lines[frame.y], frame.x, key->value), key->digit);
    ChangeFrameLines(context, frame, [&](Pattern& p) { TypedByte(p.lines[frame.y], frame.x, key->value) = value; });
    return true;
}

// A note key while the song plays: any field of a channel enters the note on
// the line the player is at, and the cursor stays.
bool PlayingNoteKey(EditorContext& context, uint16_t modifiers, uint16_t scanCode) {
    const int column = context.view.State().cursorColumn;
    if (column >= kGridLastColumn) return PianoSemitone(scanCode).has_value();
    const int channel = column / 3;
    const auto note = NoteOfKey(channel, scanCode, modifiers, context.view.Settings().octave);
    if (!note) return PianoSemitone(scanCode).has_value();
    std::lock_guard<AudioMutex> lock(context.audioMutex);
    if (context.view.Settings().testMode) {
        PreviewNote(context, channel, *note);
        return true;
    }
    WriteNote(context, context.song.PatternNumber(), context.song.Line(), channel, *note, AfterNote::Stay);
    return true;
}

// The cell columns Return and Backspace move: whole channels (note and
// channel-command cell) unless only the frame's cells are asked for.
struct CellRange {
    int first = 0;
    int last = 0;
};
CellRange MovedCells(const SelectionFrame& frame, bool onlyFrameCells) {
    CellRange range{CellColumnOf(std::clamp(frame.x, 0, kGridLastColumn)),
                    CellColumnOf(std::clamp(frame.x + frame.w - 1, 0, kGridLastColumn))};
    if (!onlyFrameCells) {
        if (range.first < kCommandCellColumn) range.first &= ~1;
        if (range.last < kCommandCellColumn) range.last |= 1;
    }
    return range;
}

void CopyCells(PatternLine& to, const PatternLine& from, CellRange cells) {
    for (int cell = cells.first; cell <= cells.last; ++cell) {
        const int c = cell / 2;
        if (cell == kCommandCellColumn) {
            to.command = from.command;
            to.commandParam = from.commandParam;
        } else if (cell % 2 == 0) {
            to.note[c] = from.note[c];
            to.detune[c] = from.detune[c];
            to.instrument[c] = from.instrument[c];
            to.volume[c] = from.volume[c];
        } else {
            to.channelCommand[c] = from.channelCommand[c];
            to.channelParam[c] = from.channelParam[c];
        }
    }
}

void ClearCells(PatternLine& line, CellRange cells) {
    for (int cell = cells.first; cell <= cells.last; ++cell) ClearCell(line, cell);
}

// Records the whole pattern around a change of its lines made under the audio mutex.
template <typename Change>
void ChangeWholePattern(EditorContext& context, Change change) {
    context.undo.BeginWholePattern(CurrentPattern(context), context.view.SaveState());
    {
        std::lock_guard<AudioMutex> lock(context.audioMutex);
        change(PatternOf(context));
    }
    context.undo.EndWholePattern(context.view.SaveState());
    context.view.Invalidate(kRedrawChange);
}

}  // namespace

KeyPress KeyPressOf(uint32_t a, uint32_t b) {
    return {KeyCode(a), KeyCharacter(a), KeyModifiers(b), KeyRepeat(b)};
}

void MoveCursor(EditorContext& context, bool shift, int dColumns, int dLines) {
    if (Locked(context)) return;
    context.view.MoveCursor(shift ? kShiftKeys : 0, dColumns, dLines);
    context.view.Invalidate(kRedrawCursor);
}

void SpaceKey(EditorContext& context, bool shift) {
    if (Locked(context)) return;
    if (shift) context.view.SelectAllLines();
    else context.view.MoveCursor(0, 0, context.view.Settings().lineStep);
    context.view.Invalidate(kRedrawCursor);
}

void PreviewNote(EditorContext& context, int channel, uint8_t note, const PatternLine* line) {
    const EditSettings& settings = context.view.Settings();
    const uint8_t effect = line ? line->channelCommand[channel] : uint8_t{kChannelCommandNone};
    const uint8_t param = line ? line->channelParam[channel] : 0;
    context.notes.StartVoice(channel, context.module.instruments[settings.currentInstrument % kInstruments],
                             settings.defaultVolume, note, 0, static_cast<uint32_t>(context.module.TicksPerSecond()),
                             effect, param);
}

void WriteNote(EditorContext& context, uint8_t pattern, int line, int channel, uint8_t note, AfterNote after) {
    EditSettings& settings = context.view.Settings();
    context.undo.BeginLine(pattern, line, context.view.SaveState());
    Pattern& target = context.module.patterns[pattern];
    if (line >= 0 && line < target.length && channel >= 0 && channel < kChannels) {
        PatternLine& cells = target.lines[line];
        cells.note[channel] = note;
        cells.detune[channel] = 0;
        cells.instrument[channel] = settings.currentInstrument;
        cells.volume[channel] = settings.defaultVolume;
    }
    if (after == AfterNote::StepCursor) context.view.MoveCursor(0, 0, settings.lineStep);
    if (after == AfterNote::StepKeepingColumns) context.view.SetCursorLine(settings.lineStep);
    context.undo.EndLines();
    context.view.Invalidate(kRedrawChange);
}

bool EditKey(EditorContext& context, uint16_t modifiers, uint16_t scanCode, const PatternKeyOptions& options,
             DigitEntry& typing) {
    if (Locked(context)) return PlayingNoteKey(context, modifiers, scanCode);
    const bool down = (modifiers & kShiftKeys) != 0;
    const SelectionFrame frame = context.view.GetSelection();
    if (!IsSingleCell(frame)) return StepKey(context, frame, scanCode, down, options.wrapVolume);
    if (options.typeDigits && TypeDigit(context, frame, modifiers, scanCode, typing)) return true;

    const int column = frame.x;
    const int line = frame.y;
    if (column < kGridLastColumn && column % 3 == 0) {
        const int channel = column / 3;
        const auto note = NoteOfKey(channel, scanCode, modifiers, context.view.Settings().octave);
        if (!note) return PianoSemitone(scanCode).has_value();
        std::lock_guard<AudioMutex> lock(context.audioMutex);
        // The note sounds with the effect its line already holds.
        const Pattern& pattern = context.module.patterns[CurrentPattern(context)];
        PreviewNote(context, channel, *note, line < pattern.length ? &pattern.lines[line] : nullptr);
        if (!context.view.Settings().testMode)
            WriteNote(context, CurrentPattern(context), line, channel, *note, AfterNote::StepCursor);
        return true;
    }
    if (column < kGridLastColumn && column % 3 == 1) {
        if (scanCode != kScanV && scanCode != kScanI) return false;
        return StepKey(context, frame, scanCode, down, options.wrapVolume);
    }
    if (scanCode == kScanE || scanCode == kScanW || scanCode == kScanQ)
        return StepKey(context, frame, scanCode, down, options.wrapVolume);
    return SetCommandKey(context, column, line, scanCode);
}

void InsertLine(EditorContext& context, bool shift) {
    const SelectionFrame frame = context.view.GetSelection();
    const CellRange cells = MovedCells(frame, shift);
    const int first = std::max(frame.y, 0);
    ChangeWholePattern(context, [&](Pattern& pattern) {
        for (int line = std::min<int>(pattern.length, kMaxLines) - 1; line > first; --line)
            CopyCells(pattern.lines[line], pattern.lines[line - 1], cells);
        if (first < pattern.length) ClearCells(pattern.lines[first], cells);
    });
}

void DeleteLine(EditorContext& context, bool shift) {
    const SelectionFrame frame = context.view.GetSelection();
    if (frame.y <= 0) return;
    const CellRange cells = MovedCells(frame, shift);
    ChangeWholePattern(context, [&](Pattern& pattern) {
        // Past the end a line reads as cleared, keeping the other bytes of the cell read before it.
        PatternLine carried = pattern.lines[frame.y - 1];
        for (int line = frame.y - 1; line < pattern.length; ++line) {
            if (line + 1 < pattern.length) CopyCells(carried, pattern.lines[line + 1], cells);
            else ClearCells(carried, cells);
            CopyCells(pattern.lines[line], carried, cells);
        }
    });
    context.view.MoveCursor(0, 0, -1);
}

bool HandlePatternKey(EditorContext& context, const KeyPress& key, const PatternKeyOptions& options) {
    DigitEntry typing;
    return HandlePatternKey(context, key, options, typing);
}

bool HandlePatternKey(EditorContext& context, const KeyPress& key, const PatternKeyOptions& options,
                      DigitEntry& typing) {
    const bool shift = (key.modifiers & kShiftKeys) != 0;
    switch (key.scanCode) {
    case kScanUp: MoveCursor(context, shift, 0, -1); return true;
    case kScanDown: MoveCursor(context, shift, 0, 1); return true;
    case kScanLeft: MoveCursor(context, shift, -1, 0); return true;
    case kScanRight: MoveCursor(context, shift, 1, 0); return true;
    case kScanPageUp: MoveCursor(context, shift, 0, -kPageLines); return true;
    case kScanPageDown: MoveCursor(context, shift, 0, kPageLines); return true;
    case kScanHome: MoveCursor(context, shift, 0, -kHomeEndLines); return true;
    case kScanEnd: MoveCursor(context, shift, 0, kHomeEndLines); return true;
    case kScanSpace: SpaceKey(context, shift); return true;
    case kScanReturn: InsertLine(context, shift); return true;
    case kScanBackspace: DeleteLine(context, shift); return true;
    default: break;
    }
    if (key.scanCode >= kScanF1 && key.scanCode <= kScanF8) {
        context.view.Settings().octave = static_cast<uint8_t>(3 + key.scanCode - kScanF1);
        context.view.Invalidate(kRedrawSettings);
        return true;
    }
    if ((key.modifiers & kCtrlKeys) && IsCtrlCommandKey(key.scanCode)) return false;
    return EditKey(context, key.modifiers, key.scanCode, options, typing);
}

}  // namespace sondrel
