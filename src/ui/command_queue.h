#pragma once
// The first-in-first-out queue of user commands. The toolkit appends entries
// as input arrives; the main loop takes them out once a frame and hands each
// to the command dispatcher. Kinds are named in ui/entry_kinds.h.

#include <cstdint>
#include <deque>
#include <optional>

namespace sondrel {

struct QueueEntry {
    uint32_t kind = 0;
    uint32_t a = 0;
    uint32_t b = 0;

    bool operator==(const QueueEntry&) const = default;
};

class CommandQueue {
public:
    // Entries of kind 0 are not queued.
    void PushEntry(uint32_t kind, uint32_t a) { PushEntry(kind, a, 0); }
    void PushEntry(uint32_t kind, uint32_t a, uint32_t b);
    // A key pressed (kind 13): key code and character, modifiers, repeat and taken flags.
    void PushKey(uint16_t key, uint16_t character, uint16_t modifiers, bool repeat, bool taken);
    // A key released (kind 14).
    void PushKeyUp(uint16_t key, bool taken);

    // The oldest entry, or null when the queue is empty. The entry stays
    // valid until the next call that returns one: popping frees the entry
    // the previous pop returned, popping an empty queue frees nothing.
    const QueueEntry* PopEntry();

    std::size_t Size() const { return entries_.size(); }
    bool Empty() const { return entries_.empty(); }
    // Drops every queued entry and the last popped one.
    void Clear();

private:
    std::deque<QueueEntry> entries_;
    std::optional<QueueEntry> popped_;
};

}  // namespace sondrel
