#pragma once
// The pattern list's editing steps, shared by the list commands and by
// undo and redo of them.

#include <cstdint>

#include "model/module.h"

namespace sondrel {

// Moves entries index..length-1 up by one and puts the pattern at index.
void InsertListEntry(Module& module, int index, uint8_t pattern);
// Moves the entries after index down by one; the repeat position stays inside the list.
void RemoveListEntry(Module& module, int index);
// Marks the pattern at the list position unused and removes every entry that
// plays it. Returns the position lowered by one for each removed entry (never below 0).
int DeletePattern(Module& module, int position);

}  // namespace sondrel
