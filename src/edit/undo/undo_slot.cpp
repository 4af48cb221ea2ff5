#include "edit/undo/undo_slot.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "screens/dialogs/tool_dialog_values.h"

namespace sondrel {

static_assert(std::is_trivially_copyable_v<PatternLine> && sizeof(PatternLine) <= kUndoSlotBytes,
              "a pattern line must fit one undo slot");
static_assert(kLongestPatternName <= kUndoSlotBytes, "a pattern name the dialogs take must fit one undo slot");

void PutLine(UndoSlot& slot, const PatternLine& line) {
    std::memcpy(slot.bytes.data(), &line, sizeof line);
}

PatternLine GetLine(const UndoSlot& slot) {
    PatternLine line;
    std::memcpy(&line, slot.bytes.data(), sizeof line);
    return line;
}

void PutHeader(UndoSlot& slot, int offset, const Pattern& pattern) {
    uint8_t* out = slot.bytes.data() + offset;
    for (int t = 0; t < 2; ++t) {
        out[t] = pattern.tactEnabled[t];
        out[2 + t] = pattern.tactStart[t];
        out[4 + t] = pattern.tactInterval[t];
    }
    out[6] = static_cast<uint8_t>(std::min<size_t>(pattern.name.size(), kUndoSlotBytes));
}

int GetHeader(const UndoSlot& slot, int offset, Pattern& pattern) {
    const uint8_t* in = slot.bytes.data() + offset;
    for (int t = 0; t < 2; ++t) {
        pattern.tactEnabled[t] = in[t];
        pattern.tactStart[t] = in[2 + t];
        pattern.tactInterval[t] = in[4 + t];
    }
    return in[6];
}

void PutName(UndoSlot& slot, const std::string& name) {
    size_t length = std::min<size_t>(name.size(), kUndoSlotBytes);
    std::memcpy(slot.bytes.data(), name.data(), length);
}

std::string GetName(const UndoSlot& slot, int length) {
    length = std::clamp(length, 0, kUndoSlotBytes);
    return std::string(reinterpret_cast<const char*>(slot.bytes.data()), static_cast<size_t>(length));
}

void PutInstrument(UndoSlot& slot, const Instrument& instrument) {
    uint8_t* out = slot.bytes.data();
    *out++ = static_cast<uint8_t>(std::min<size_t>(instrument.name.size(), kUndoSlotBytes));
    *out++ = instrument.startVolume;
    out = std::copy(instrument.delay.begin(), instrument.delay.end(), out);
    out = std::copy(instrument.vibratoSpeed.begin(), instrument.vibratoSpeed.end(), out);
    out = std::copy(instrument.vibratoStrength.begin(), instrument.vibratoStrength.end(), out);
    for (int8_t add : instrument.volumeAdd) *out++ = static_cast<uint8_t>(add);
}

int GetInstrument(const UndoSlot& slot, Instrument& instrument) {
    const uint8_t* in = slot.bytes.data() + 1;
    instrument.startVolume = *in++;
    for (auto& value : instrument.delay) value = *in++;
    for (auto& value : instrument.vibratoSpeed) value = *in++;
    for (auto& value : instrument.vibratoStrength) value = *in++;
    for (auto& value : instrument.volumeAdd) value = static_cast<int8_t>(*in++);
    return slot.bytes[0];
}

}  // namespace sondrel
