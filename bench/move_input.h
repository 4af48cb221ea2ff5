#pragma once
// Input for the benchmarks' toolkits: pointer moves queued as if the
// platform had them, and no keys or buttons held.

#include <deque>

#include "platform/gorb.h"
#include "ui/toolkit.h"

namespace sondrel::bench {

class MoveInput : public InputSource {
public:
    bool NextEvent(Gorb_Event& event) override {
        if (events.empty()) return false;
        event = events.front();
        events.pop_front();
        return true;
    }
    uint32_t Modifiers() override { return 0; }
    uint32_t MouseState(int& x, int& y) override { return x = y = 0, 0u; }

    void Move(int x, int y) {
        Gorb_Event event;
        event.type = kGorbMouseMove;
        event.x = x;
        event.y = y;
        events.push_back(event);
    }

    std::deque<Gorb_Event> events;
};

}  // namespace sondrel::bench
