#include "edit/undo/undo_history.h"

#include <utility>

#include "edit/undo/undo_slot.h"
#include "model/exception.h"

namespace sondrel {

namespace {
constexpr uint32_t kRingMask = UndoHistory::kEntries - 1;
constexpr uint32_t kStoreMask = UndoHistory::kSlots - 1;
}  // namespace

UndoHistory::UndoHistory(EditLock editLocked)
    : editLocked_(std::move(editLocked)), entries_(kEntries), store_(kSlots) {}

void UndoHistory::Reset(Module& module) {
    module_ = &module;
    storePos_ = tail_ = head_ = count_ = 0;
    savedKnown_ = 1;
    savedHead_ = 0;
    open_ = 0;
}

Module& UndoHistory::Bound() const {
    if (!module_) throw InternalException("UndoHistory: no module bound");
    return *module_;
}

UndoEntry& UndoHistory::Open(UndoKind kind) {
    Bound();
    uint32_t newHead = (head_ + 1) & kRingMask;
    if (newHead == tail_) {
        tail_ = (tail_ + 1) & kRingMask;
        savedKnown_ = 0;
    }
    head_ = newHead;
    // Every undone entry beyond the new one is discarded here.
    count_ = (head_ - tail_) & kRingMask;
    open_ = 1;
    UndoEntry& entry = Current();
    entry = UndoEntry{};
    entry.kind = kind;
    entry.storeStart = storePos_;
    return entry;
}

void UndoHistory::Close() {
    open_ = 0;
}

void UndoHistory::Advance(uint32_t n) {
    // The oldest entries come first in the store; stop at the first one whose
    // data begins beyond what was just written. The entry being written stays.
    // A repeat-position entry keeps nothing in the store: it goes only with the
    // entry after it, so it is judged by the first later entry that keeps data.
    while (count_ > 1) {
        uint32_t keeper = tail_;
        while (entries_[keeper].kind == UndoKind::RepeatPosition && keeper != ((head_ - 1) & kRingMask))
            keeper = (keeper + 1) & kRingMask;
        if (keeper == ((head_ - 1) & kRingMask)) break;
        uint32_t start = entries_[keeper].storeStart;
        if (start < storePos_) start += kSlots;
        if (storePos_ + n <= start) break;
        tail_ = (tail_ + 1) & kRingMask;
        --count_;
        savedKnown_ = 0;
    }
    storePos_ = (storePos_ + n) & kStoreMask;
}

void UndoHistory::SaveLines(const Pattern& pattern, int first, int count) {
    for (int i = 0; i < count; ++i) PutLine(At(storePos_ + static_cast<uint32_t>(i)), pattern.lines[first + i]);
    Advance(static_cast<uint32_t>(count));
}

void UndoHistory::LoadLines(Pattern& pattern, int first, int count, uint32_t from) const {
    for (int i = 0; i < count; ++i) pattern.lines[first + i] = GetLine(Slot(from + static_cast<uint32_t>(i)));
}

void UndoHistory::SaveList() {
    const auto& list = module_->patternList;
    for (int i = 0; i < kMaxPatternList; ++i) {
        At(storePos_ + static_cast<uint32_t>(i / kListBytesPerSlot)).bytes[i % kListBytesPerSlot] = list[i];
    }
    Advance(kListSlots);
}

void UndoHistory::LoadList(uint32_t from) {
    auto& list = module_->patternList;
    for (int i = 0; i < kMaxPatternList; ++i) {
        list[i] = Slot(from + static_cast<uint32_t>(i / kListBytesPerSlot)).bytes[i % kListBytesPerSlot];
    }
}

void UndoHistory::SaveInstruments() {
    for (uint32_t i = 0; i < kInstruments; ++i) {
        const Instrument& instrument = module_->instruments[i];
        PutInstrument(At(storePos_ + 2 * i), instrument);
        PutName(At(storePos_ + 2 * i + 1), instrument.name);
    }
    Advance(2 * kInstruments);
}

void UndoHistory::LoadInstruments(uint32_t from) {
    for (uint32_t i = 0; i < kInstruments; ++i) {
        Instrument& instrument = module_->instruments[i];
        int nameLength = GetInstrument(Slot(from + 2 * i), instrument);
        instrument.name = GetName(Slot(from + 2 * i + 1), nameLength);
    }
}

bool UndoHistory::Undo(UndoView& view) {
    if (!CanUndo() || (editLocked_ && editLocked_())) return false;
    const UndoEntry& entry = Current();
    Apply(entry, false, view);
    head_ = (head_ - 1) & kRingMask;
    view.RedrawAll();
    return true;
}

bool UndoHistory::Redo(UndoView& view) {
    if (!CanRedo() || (editLocked_ && editLocked_())) return false;
    const UndoEntry& entry = entries_[head_];
    Apply(entry, true, view);
    head_ = (head_ + 1) & kRingMask;
    view.RedrawAll();
    return true;
}

}  // namespace sondrel
