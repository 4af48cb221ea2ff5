#pragma once
// The pixels of part of a surface, row by row, for tests that check whether
// drawing changed anything.

#include <cstdint>
#include <vector>

#include "platform/gorb.h"

namespace sondrel {

inline std::vector<uint16_t> SurfacePixels(Gorb_Surface& surface, const Gorb_Rect& rect) {
    std::vector<uint16_t> out;
    const Gorb_Pixels pixels = surface.Lock();
    for (int y = rect.y; y < rect.y + rect.h; ++y)
        out.insert(out.end(), pixels.Row(y) + rect.x, pixels.Row(y) + rect.x + rect.w);
    surface.Unlock();
    return out;
}

}  // namespace sondrel
