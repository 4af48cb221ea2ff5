#pragma once
// Mouse and keyboard input for widget tests, sent through the toolkit one
// event per update, and a clipboard that keeps its text in memory.

#include <cstdint>
#include <string>
#include <vector>

#include "ui/entry_kinds.h"
#include "ui/queued_input.h"
#include "ui/toolkit.h"
#include "ui/widgets/text_edit.h"

namespace sondrel {

class FakeClipboard : public Clipboard {
public:
    std::string Text() const override { return text; }
    void SetText(const std::string& value) override { text = value; }
    std::string text;
};

// A keystroke: its key code, the character it types and the modifiers held.
struct Stroke {
    uint16_t key;
    uint16_t character = 0;
    uint32_t modifiers = 0;
};

inline Stroke Type(char c) { return {0x10, static_cast<uint16_t>(c)}; }
inline Stroke Ctrl(uint16_t key) { return {key, 0, kGorbLeftCtrl}; }
inline Stroke Shift(uint16_t key) { return {key, 0, kGorbLeftShift}; }

struct WidgetEvents {
    QueuedInput& input;
    Toolkit& toolkit;
    // The entries other than keys that Keys popped on its way.
    std::vector<QueueEntry> popped = {};

    void Mouse(int type, int x, int y, uint32_t modifiers = 0) {
        Gorb_Event event;
        event.type = type;
        event.x = x;
        event.y = y;
        input.events.push_back(event);
        input.modifiers = modifiers;
        toolkit.Update();
    }
    void Click(int x, int y, uint32_t modifiers = 0) {
        Mouse(kGorbButton1Down, x, y, modifiers);
        Mouse(kGorbButton1Up, x, y, modifiers);
    }
    // Presses each stroke; true when the focused widget took every one.
    bool Keys(const std::vector<Stroke>& strokes) {
        bool allTaken = true;
        for (const Stroke& s : strokes) {
            Gorb_Event event;
            event.type = kGorbKeyDown;
            event.key = s.key;
            event.character = s.character;
            input.modifiers = s.modifiers;
            input.events.push_back(event);
            toolkit.Update();
            while (const QueueEntry* entry = toolkit.PopEntry()) {
                if (entry->kind == kEntryKeyDown) allTaken = allTaken && KeyTaken(entry->b);
                else if (entry->kind != kEntryKeyUp) popped.push_back(*entry);
            }
        }
        input.modifiers = 0;
        return allTaken;
    }
    // The entries other than keys queued since the last call.
    std::vector<QueueEntry> Drain() {
        std::vector<QueueEntry> out;
        out.swap(popped);
        while (const QueueEntry* entry = toolkit.PopEntry())
            if (entry->kind != kEntryKeyDown && entry->kind != kEntryKeyUp) out.push_back(*entry);
        return out;
    }
};

}  // namespace sondrel
