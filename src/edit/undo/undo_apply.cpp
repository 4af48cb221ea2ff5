// Taking an entry back and doing it again, kind by kind.

#include <algorithm>
#include <utility>

#include "edit/tools/clipped_block.h"
#include "edit/tools/pattern_list.h"
#include "edit/undo/undo_history.h"
#include "edit/undo/undo_slot.h"

namespace sondrel {

namespace {

// The frame's lines widened by one on each side.
void RedrawAround(UndoView& view, const EditorPosition& position) {
    view.RedrawLines(std::min(position.anchorLine, position.cursorLine) - 1,
                     std::max(position.anchorLine, position.cursorLine) + 1);
}

void SwapMovedEntries(Module& module, const UndoEntry& entry) {
    int p = entry.listPosition;
    int other = entry.valueBefore ? p - 1 : p + 1;
    if (other < 0 || other >= kMaxPatternList) return;
    std::swap(module.patternList[p], module.patternList[other]);
}

InstrumentChange SavedChange(const UndoEntry& entry) {
    return {entry.params[0], entry.params[1], entry.params[2], entry.params[3]};
}

ChannelCopy SavedCopy(const UndoEntry& entry) {
    return {entry.params[0], entry.params[1], entry.params[2]};
}

}  // namespace

void UndoHistory::RestorePatternHeader(uint8_t pattern, uint32_t headerSlot, int offset, uint32_t nameSlot) {
    Pattern& target = module_->patterns[pattern];
    int nameLength = GetHeader(Slot(headerSlot), offset, target);
    target.name = GetName(Slot(nameSlot), nameLength);
}

const uint8_t* UndoHistory::Record(const UndoEntry& entry, uint32_t index) const {
    RecordLayout layout = RecordLayoutOf(entry.kind);
    return Slot(entry.storeStart + index / layout.perSlot).bytes.data() + (index % layout.perSlot) * layout.bytes;
}

// Writes the kept bytes of every record back into its line, in recorded order.
void UndoHistory::RestoreLineRecords(const UndoEntry& entry) {
    for (uint32_t r = 0; r < entry.records; ++r) {
        const uint8_t* in = Record(entry, r);
        PatternLine& line = module_->patterns[in[0]].lines[in[1]];
        if (entry.kind == UndoKind::ChangeInstruments) {
            std::copy(in + 2, in + 2 + kChannels, line.instrument.begin());
            continue;
        }
        ChannelBytes first, second;
        std::copy(in + 2, in + 7, first.begin());
        std::copy(in + 7, in + 12, second.begin());
        RestoreChannel(line, entry.params[0], first);
        RestoreChannel(line, entry.params[1], second);
    }
}

// Redo takes the same steps as undo with the "after" data, except where it
// performs the change again: block clears, instrument changes, channel
// copies, moves and the making and deleting of patterns.
void UndoHistory::Apply(const UndoEntry& entry, bool redo, UndoView& view) {
    Module& module = *module_;
    Pattern& pattern = module.patterns[entry.pattern];
    const EditorPosition& position = redo ? entry.positionAfter : entry.positionBefore;
    switch (entry.kind) {
    case UndoKind::LineRange:
        LoadLines(pattern, entry.firstLine, entry.lines, entry.storeStart + (redo ? entry.lines : 0));
        view.RestoreState(position);
        view.RedrawLines(entry.firstLine - 1, entry.firstLine + entry.lines);
        break;
    case UndoKind::WholePattern:
        pattern.length = redo ? entry.linesAfter : entry.lines;
        LoadLines(pattern, 0, pattern.length, entry.storeStart + (redo ? entry.lines : 0));
        view.RestoreState(position);
        RedrawAround(view, position);
        break;
    case UndoKind::Block:
        if (redo) {
            ClearBlock(pattern, entry.rect);
        } else {
            LoadLines(pattern, entry.firstLine, entry.lines, entry.storeStart);
        }
        view.RestoreState(entry.positionBefore);
        view.RedrawLines(entry.firstLine, entry.firstLine + entry.lines - 1);
        break;
    case UndoKind::PatternListEntry:
        module.patternList[entry.listPosition] = redo ? entry.valueAfter : entry.valueBefore;
        view.SetListPosition(entry.listPosition);
        break;
    case UndoKind::PatternListMove: {
        SwapMovedEntries(module, entry);
        int movedTo = entry.valueBefore ? entry.listPosition - 1 : entry.listPosition + 1;
        view.SetListPosition(redo ? movedTo : entry.listPosition);
        break;
    }
    case UndoKind::PatternListWhole:
        module.patternListLength = redo ? entry.listLengthAfter : entry.listLengthBefore;
        module.repeatPosition = redo ? entry.repeatAfter : entry.repeatBefore;
        LoadList(entry.storeStart + (redo ? kListSlots : 0));
        view.SetListPosition(redo ? entry.viewAfter : entry.viewBefore);
        break;
    case UndoKind::ChangeInstruments:
        if (!redo) {
            RestoreLineRecords(entry);
            break;
        }
        for (uint32_t r = 0; r < entry.records; ++r) {
            const uint8_t* in = Record(entry, r);
            ChangeLineInstruments(module.patterns[in[0]].lines[in[1]], SavedChange(entry));
        }
        break;
    case UndoKind::CopyChannels:
        RestoreLineRecords(entry);
        for (uint32_t r = 0; redo && r < entry.records; ++r) {
            const uint8_t* in = Record(entry, r);
            PatternLine& line = module.patterns[in[0]].lines[in[1]];
            if (!ChannelsEmpty(line, SavedCopy(entry))) CopyLineChannels(line, SavedCopy(entry));
        }
        break;
    case UndoKind::PatternSettings:
        RestorePatternHeader(entry.pattern, entry.storeStart, redo ? kPatternHeaderBytes : 0,
                             entry.storeStart + (redo ? 2 : 1));
        break;
    case UndoKind::Instruments:
        LoadInstruments(entry.storeStart + (redo ? 2 * kInstruments : 0));
        break;
    case UndoKind::NewPattern:
        if (redo) {
            RecreatePattern(entry, entry.linesAfter);
            InsertListEntry(module, entry.listPosition, entry.pattern);
            view.SetListPosition(entry.listPosition);
        } else {
            view.SetListPosition(DeletePattern(module, entry.listPosition));
        }
        break;
    case UndoKind::DeletePattern:
        if (redo) {
            view.SetListPosition(DeletePattern(module, entry.listPosition));
            break;
        }
        RecreatePattern(entry, entry.lines);
        LoadList(entry.storeStart + 2);
        // The lines are read at the history's current store position, not at
        // the entry's own data: the header, length and list come back, the
        // lines in general do not. Kept so on purpose.
        LoadLines(pattern, 0, entry.lines, storePos_ + 2 + kListSlots);
        module.patternListLength = entry.listLengthBefore;
        module.repeatPosition = entry.repeatBefore;
        view.SetListPosition(entry.listPosition);
        break;
    case UndoKind::RepeatPosition:
        module.repeatPosition = redo ? entry.valueAfter : entry.valueBefore;
        break;
    }
}

// Marks the entry's pattern used again with the header and name kept at the entry's start.
void UndoHistory::RecreatePattern(const UndoEntry& entry, uint16_t length) {
    module_->CreatePattern(entry.pattern);
    RestorePatternHeader(entry.pattern, entry.storeStart, 0, entry.storeStart + 1);
    module_->patterns[entry.pattern].length = length;
}

}  // namespace sondrel
