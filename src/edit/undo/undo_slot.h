#pragma once
// Packing module data into the undo store's slots: a whole pattern line a
// slot, a pattern header (six setting bytes and the name length), a name's
// characters, an instrument's name length and parameters, and the pattern
// list 32 bytes a slot. A name longer than a slot is kept cut to its size.

#include <cstdint>
#include <string>

#include "edit/undo/undo_entry.h"
#include "model/module.h"

namespace sondrel {

constexpr int kPatternHeaderBytes = 7;
constexpr int kListBytesPerSlot = 32;
constexpr int kListSlots = kMaxPatternList / kListBytesPerSlot;

// Records of the sweeping tools: pattern, line and the instruments (five a
// slot), or pattern, line and the two channels' kept bytes (three a slot).
struct RecordLayout {
    uint32_t bytes;
    uint32_t perSlot;
};
constexpr RecordLayout RecordLayoutOf(UndoKind kind) {
    return kind == UndoKind::ChangeInstruments ? RecordLayout{6, 5} : RecordLayout{12, 3};
}

void PutLine(UndoSlot& slot, const PatternLine& line);
PatternLine GetLine(const UndoSlot& slot);

// The header at a byte offset in the slot; the name goes in a slot of its own.
void PutHeader(UndoSlot& slot, int offset, const Pattern& pattern);
// Sets the header's settings and returns the name length it holds.
int GetHeader(const UndoSlot& slot, int offset, Pattern& pattern);
void PutName(UndoSlot& slot, const std::string& name);
std::string GetName(const UndoSlot& slot, int length);

// Name length and the twenty parameter bytes.
void PutInstrument(UndoSlot& slot, const Instrument& instrument);
// Sets the parameters and returns the name length.
int GetInstrument(const UndoSlot& slot, Instrument& instrument);

}  // namespace sondrel
