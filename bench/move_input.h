#pragma once
// Input for the benchmarks' toolkits: pointer moves queued as if the
// platform had them, and no keys or buttons held.

#include "platform/gorb.h"
#include "ui/queued_input.h"

namespace sondrel::bench {

class MoveInput : public QueuedInput {
public:
    void Move(int x, int y) {
        Gorb_Event event;
        event.type = kGorbMouseMove;
        event.x = x;
        event.y = y;
        events.push_back(event);
    }
};

}  // namespace sondrel::bench
