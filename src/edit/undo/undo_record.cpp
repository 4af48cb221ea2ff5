// Recording: the "before" half of each kind when its entry opens, the
// "after" half when it closes.

#include <algorithm>
#include <cstdlib>

#include "edit/undo/undo_history.h"
#include "edit/undo/undo_slot.h"

namespace sondrel {


void UndoHistory::BeginLine(uint8_t pattern, int line, const EditorPosition& current) {
    EditorPosition position = current;
    position.anchorLine = position.cursorLine = line;
    BeginLines(pattern, line, 1, position);
    Current().positionAfter = position;
}

void UndoHistory::BeginLines(uint8_t pattern, int first, int count, const EditorPosition& before) {
    UndoEntry& entry = Open(UndoKind::LineRange);
    first = std::clamp(first, 0, kMaxLines - 1);
    count = std::clamp(count, 0, kMaxLines - first);
    entry.pattern = pattern;
    entry.firstLine = static_cast<uint16_t>(first);
    entry.lines = static_cast<uint16_t>(count);
    entry.slots = 2 * static_cast<uint32_t>(count);
    entry.positionBefore = before;
    SaveLines(module_->patterns[pattern], first, count);
}

void UndoHistory::EndLines() {
    const UndoEntry& entry = Current();
    SaveLines(module_->patterns[entry.pattern], entry.firstLine, entry.lines);
    Close();
}

void UndoHistory::EndLines(const EditorPosition& after) {
    Current().positionAfter = after;
    EndLines();
}

void UndoHistory::BeginWholePattern(uint8_t pattern, const EditorPosition& before) {
    UndoEntry& entry = Open(UndoKind::WholePattern);
    const Pattern& source = module_->patterns[pattern];
    entry.pattern = pattern;
    entry.lines = source.length;
    entry.slots = source.length;
    entry.positionBefore = before;
    SaveLines(source, 0, source.length);
}

void UndoHistory::EndWholePattern(const EditorPosition& after) {
    UndoEntry& entry = Current();
    const Pattern& source = module_->patterns[entry.pattern];
    entry.linesAfter = source.length;
    entry.slots += source.length;
    entry.positionAfter = after;
    SaveLines(source, 0, source.length);
    Close();
}

void UndoHistory::BeginBlock(uint8_t pattern, const SelectionFrame& rect, const EditorPosition& frame) {
    UndoEntry& entry = Open(UndoKind::Block);
    int first = std::clamp(std::min(frame.anchorLine, frame.cursorLine), 0, kMaxLines - 1);
    int count = std::clamp(std::abs(frame.anchorLine - frame.cursorLine) + 1, 1, kMaxLines - first);
    entry.pattern = pattern;
    entry.rect = rect;
    entry.firstLine = static_cast<uint16_t>(first);
    entry.lines = static_cast<uint16_t>(count);
    entry.slots = static_cast<uint32_t>(count);
    entry.positionBefore = frame;
    SaveLines(module_->patterns[pattern], first, count);
}

void UndoHistory::BeginListEntry(int position) {
    UndoEntry& entry = Open(UndoKind::PatternListEntry);
    entry.listPosition = static_cast<uint8_t>(position);
    entry.valueBefore = module_->patternList[entry.listPosition];
    entry.slots = 1;
    Advance(1);
}

void UndoHistory::EndListEntry() {
    UndoEntry& entry = Current();
    entry.valueAfter = module_->patternList[entry.listPosition];
    Close();
}

void UndoHistory::BeginListMove(int position, bool up) {
    UndoEntry& entry = Open(UndoKind::PatternListMove);
    entry.listPosition = static_cast<uint8_t>(position);
    entry.valueBefore = up ? 1 : 0;
    entry.slots = 1;
    Advance(1);
}

void UndoHistory::BeginPatternList(int viewPosition) {
    UndoEntry& entry = Open(UndoKind::PatternListWhole);
    entry.listLengthBefore = module_->patternListLength;
    entry.repeatBefore = module_->repeatPosition;
    entry.viewBefore = static_cast<uint8_t>(viewPosition);
    entry.slots = 2 * kListSlots;
    SaveList();
}

void UndoHistory::EndPatternList(int viewPosition) {
    UndoEntry& entry = Current();
    entry.listLengthAfter = module_->patternListLength;
    entry.repeatAfter = module_->repeatPosition;
    entry.viewAfter = static_cast<uint8_t>(viewPosition);
    SaveList();
    Close();
}

void UndoHistory::BeginChangeInstruments(const InstrumentChange& change) {
    UndoEntry& entry = Open(UndoKind::ChangeInstruments);
    entry.params = {change.mode, change.first, change.second, change.channelMask};
}

void UndoHistory::BeginCopyChannels(const ChannelCopy& copy) {
    UndoEntry& entry = Open(UndoKind::CopyChannels);
    entry.params = {copy.first, copy.second, copy.mode, 0};
}

void UndoHistory::AddRecord(uint8_t pattern, int line) {
    UndoEntry& entry = Current();
    const PatternLine& source = module_->patterns[pattern].lines[static_cast<uint8_t>(line)];
    RecordLayout layout = RecordLayoutOf(entry.kind);
    uint8_t* out = At(storePos_).bytes.data() + (entry.records % layout.perSlot) * layout.bytes;
    *out++ = pattern;
    *out++ = static_cast<uint8_t>(line);
    if (entry.kind == UndoKind::ChangeInstruments) {
        std::copy(source.instrument.begin(), source.instrument.end(), out);
    } else {
        ChannelBytes first = SaveChannel(source, entry.params[0]);
        ChannelBytes second = SaveChannel(source, entry.params[1]);
        std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), out));
    }
    if (++entry.records % layout.perSlot == 0) {
        ++entry.slots;
        Advance(1);
    }
}

void UndoHistory::EndRecords() {
    UndoEntry& entry = Current();
    if (entry.records % RecordLayoutOf(entry.kind).perSlot != 0 || entry.records == 0) {
        ++entry.slots;
        Advance(1);
    }
    Close();
}

void UndoHistory::BeginPatternSettings(uint8_t pattern) {
    UndoEntry& entry = Open(UndoKind::PatternSettings);
    const Pattern& source = module_->patterns[pattern];
    entry.pattern = pattern;
    entry.slots = 3;
    PutHeader(At(storePos_), 0, source);
    PutName(At(storePos_ + 1), source.name);
    Advance(2);
}

void UndoHistory::EndPatternSettings() {
    const UndoEntry& entry = Current();
    const Pattern& source = module_->patterns[entry.pattern];
    PutHeader(At(entry.storeStart), kPatternHeaderBytes, source);
    PutName(At(storePos_), source.name);
    Advance(1);
    Close();
}

void UndoHistory::BeginInstruments() {
    Open(UndoKind::Instruments).slots = 4 * kInstruments;
    SaveInstruments();
}

void UndoHistory::EndInstruments() {
    SaveInstruments();
    Close();
}

void UndoHistory::BeginNewPattern(int position) {
    UndoEntry& entry = Open(UndoKind::NewPattern);
    entry.listPosition = static_cast<uint8_t>(position);
    entry.slots = 2;
}

void UndoHistory::EndNewPattern() {
    UndoEntry& entry = Current();
    entry.pattern = module_->patternList[entry.listPosition];
    const Pattern& created = module_->patterns[entry.pattern];
    entry.linesAfter = created.length;
    PutHeader(At(storePos_), 0, created);
    PutName(At(storePos_ + 1), created.name);
    Advance(2);
    Close();
}

void UndoHistory::BeginDeletePattern(int position) {
    UndoEntry& entry = Open(UndoKind::DeletePattern);
    entry.listPosition = static_cast<uint8_t>(position);
    entry.pattern = module_->patternList[entry.listPosition];
    entry.repeatBefore = module_->repeatPosition;
    entry.listLengthBefore = module_->patternListLength;
    const Pattern& doomed = module_->patterns[entry.pattern];
    entry.lines = doomed.length;
    entry.slots = 2 + kListSlots + doomed.length;
    PutHeader(At(storePos_), 0, doomed);
    PutName(At(storePos_ + 1), doomed.name);
    Advance(2);
    SaveList();
    SaveLines(doomed, 0, doomed.length);
}

void UndoHistory::BeginRepeatPosition() {
    UndoEntry& entry = Open(UndoKind::RepeatPosition);
    entry.valueBefore = module_->repeatPosition;
    entry.slots = 1;  // counted, though nothing goes into the store
}

void UndoHistory::EndRepeatPosition() {
    Current().valueAfter = module_->repeatPosition;
    Close();
}

}  // namespace sondrel
