#include "ui/command_queue.h"

#include "ui/entry_kinds.h"

namespace sondrel {

void CommandQueue::PushEntry(uint32_t kind, uint32_t a, uint32_t b) {
    if (kind != kEntryNone) entries_.push_back({kind, a, b});
}

void CommandQueue::PushKey(uint16_t key, uint16_t character, uint16_t modifiers, bool repeat, bool taken) {
    PushEntry(kEntryKeyDown, PackKeyA(key, character), PackKeyB(modifiers, repeat, taken));
}

void CommandQueue::PushKeyUp(uint16_t key, bool taken) { PushEntry(kEntryKeyUp, key, taken ? 1 : 0); }

const QueueEntry* CommandQueue::PopEntry() {
    if (entries_.empty()) return nullptr;
    popped_ = entries_.front();
    entries_.pop_front();
    return &*popped_;
}

void CommandQueue::Clear() {
    entries_.clear();
    popped_.reset();
}

}  // namespace sondrel
