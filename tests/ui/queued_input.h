#pragma once
// Synthetic toolkit input for tests: queued events, modifiers and a pointer
// that stays at the top left corner.

#include <cstdint>
#include <deque>

#include "ui/toolkit.h"

namespace sondrel {

class QueuedInput : public InputSource {
public:
    bool NextEvent(Gorb_Event& event) override {
        if (events.empty()) return false;
        event = events.front();
        events.pop_front();
        return true;
    }
    uint32_t Modifiers() override { return modifiers; }
    uint32_t MouseState(int& x, int& y) override {
        x = 0;
        y = 0;
        return 0;
    }
    // Queues an event of that type at a pointer position, with a key code.
    void Push(int type, int x = 0, int y = 0, uint16_t key = 0) {
        Gorb_Event event;
        event.type = type;
        event.x = x;
        event.y = y;
        event.key = key;
        events.push_back(event);
    }
    std::deque<Gorb_Event> events;
    uint32_t modifiers = 0;
};

}  // namespace sondrel
