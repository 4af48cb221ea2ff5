#pragma once
// Input from a queue instead of the platform: events handed to the toolkit in
// the order they were queued, with the modifiers set beside them. Tests,
// benchmarks and scripted runs drive a toolkit through it.

#include <cstdint>
#include <deque>

#include "platform/gorb.h"
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

    std::deque<Gorb_Event> events;
    uint32_t modifiers = 0;
};

}  // namespace sondrel
