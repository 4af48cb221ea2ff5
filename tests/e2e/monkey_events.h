#pragma once
// The random input of the monkey test: batches of keys, clicks, drags and
// wheel turns for one xdotool run each, weighted so that menus get opened
// and their entries chosen, dialogs get worked and closed, and the file
// requester gets names typed and confirmed.

#include <cstdint>
#include <string>

namespace sondrel::e2e {

struct MonkeyBatch {
    std::string xdotool;       // the arguments of one xdotool run
    bool closeWindow = false;  // then the window is asked to close, as by its close box
    int events = 0;            // key presses, clicks, wheel turns and pointer moves
};

// A batch depends on nothing but the seed and its number, so that a storm
// replays from its first batch up to any other.
MonkeyBatch MakeMonkeyBatch(uint64_t seed, int batch, unsigned long window);

}  // namespace sondrel::e2e
