#include "edit/tools/pattern_list.h"

#include <algorithm>

namespace sondrel {

void InsertListEntry(Module& module, int index, uint8_t pattern) {
    auto& list = module.patternList;
    int length = module.patternListLength;
    for (int i = std::min(length, kMaxPatternList - 1); i > index; --i) list[i] = list[i - 1];
    list[index] = pattern;
    module.patternListLength = static_cast<uint16_t>(std::min(length + 1, kMaxPatternList));
}

void RemoveListEntry(Module& module, int index) {
    auto& list = module.patternList;
    int length = module.patternListLength;
    for (int i = index; i + 1 < length; ++i) list[i] = list[i + 1];
    module.patternListLength = static_cast<uint16_t>(length - 1);
    int lastEntry = std::max(length - 2, 0);
    module.repeatPosition = static_cast<uint8_t>(std::min<int>(module.repeatPosition, lastEntry));
}

int DeletePattern(Module& module, int position) {
    uint8_t pattern = module.patternList[position];
    module.patterns[pattern].used = 0;
    int i = 0;
    while (i < module.patternListLength) {
        if (module.patternList[i] != pattern) {
            ++i;
            continue;
        }
        RemoveListEntry(module, i);
        if (position > 0) --position;
    }
    return position;
}

}  // namespace sondrel
