#pragma once
// The editor's one undo and redo history. A ring of 1024 entries describes
// the changes; a ring-shaped store of 65536 slots keeps copies of the module
// data from before and after each of them. Editing commands open an entry
// before they change the module and close it after. When the ring is full, or
// the store runs round onto the data of old entries, the oldest entries are
// dropped silently; from then on the module counts as modified until the
// next reset, since the saved state can no longer be told.

#include <cstdint>
#include <functional>
#include <vector>

#include "edit/tools/channel_tools.h"
#include "edit/undo/undo_entry.h"
#include "edit/undo/undo_view.h"
#include "model/module.h"

namespace sondrel {

class UndoHistory {
public:
    static constexpr uint32_t kEntries = 1024;
    static constexpr uint32_t kSlots = 65536;
    // True while edits are locked out (the song plays); undo and redo then do nothing.
    using EditLock = std::function<bool()>;

    explicit UndoHistory(EditLock editLocked = {});
    UndoHistory(const UndoHistory&) = delete;
    UndoHistory& operator=(const UndoHistory&) = delete;

    // Binds the history to the module and empties it; the module counts as saved.
    void Reset(Module& module);

    // Lines of one pattern. The single-line form shows the position with
    // anchor and cursor on the line, before and after alike; close it with
    // the bare EndLines().
    void BeginLine(uint8_t pattern, int line, const EditorPosition& current);
    void BeginLines(uint8_t pattern, int first, int count, const EditorPosition& before);
    void EndLines();
    void EndLines(const EditorPosition& after);
    // A whole pattern, whose length may change in between.
    void BeginWholePattern(uint8_t pattern, const EditorPosition& before);
    void EndWholePattern(const EditorPosition& after);
    // The lines under the frame (the position before is the frame); redo clears
    // the rectangle again. Closed by Close().
    void BeginBlock(uint8_t pattern, const SelectionFrame& rect, const EditorPosition& frame);
    // One pattern-list entry.
    void BeginListEntry(int position);
    void EndListEntry();
    // An entry moved up (swapped with the one before) or down. Closed by Close().
    void BeginListMove(int position, bool up);
    // The whole pattern list with its length, repeat position and the view's list position.
    void BeginPatternList(int viewPosition);
    void EndPatternList(int viewPosition);
    // The two sweeping tools: AddRecord keeps a line as it is before the tool changes it.
    void BeginChangeInstruments(const InstrumentChange& change);
    void BeginCopyChannels(const ChannelCopy& copy);
    void AddRecord(uint8_t pattern, int line);
    void EndRecords();
    // A pattern's settings and name.
    void BeginPatternSettings(uint8_t pattern);
    void EndPatternSettings();
    // All sixteen instruments.
    void BeginInstruments();
    void EndInstruments();
    // A new pattern placed into the list at the position.
    void BeginNewPattern(int position);
    void EndNewPattern();
    // The pattern at the list position, its lines and the whole list, before deleting it. Closed by Close().
    void BeginDeletePattern(int position);
    // The repeat position.
    void BeginRepeatPosition();
    void EndRepeatPosition();
    void Close();

    // Take back the newest change in force / do the next undone one again;
    // false when there is none or edits are locked out.
    bool Undo(UndoView& view);
    bool Redo(UndoView& view);
    bool CanUndo() const { return head_ != tail_; }
    bool CanRedo() const { return head_ != ((tail_ + count_) & (kEntries - 1)); }
    bool IsModified() const { return savedKnown_ == 0 || head_ != savedHead_; }
    void MarkSaved() { savedHead_ = head_; }

    uint32_t Head() const { return head_; }
    uint32_t Tail() const { return tail_; }
    uint32_t Count() const { return count_; }
    uint32_t StorePos() const { return storePos_; }
    bool SavedKnown() const { return savedKnown_ != 0; }
    bool IsOpen() const { return open_ != 0; }
    const UndoEntry& Entry(uint32_t index) const { return entries_[index & (kEntries - 1)]; }
    const UndoSlot& Slot(uint32_t index) const { return store_[index & (kSlots - 1)]; }

private:
    Module& Bound() const;
    UndoEntry& Open(UndoKind kind);
    UndoEntry& Current() { return entries_[(head_ - 1) & (kEntries - 1)]; }
    UndoSlot& At(uint32_t index) { return store_[index & (kSlots - 1)]; }
    // Counts n slots written at storePos and drops the old entries whose data they overwrote.
    void Advance(uint32_t n);
    void SaveLines(const Pattern& pattern, int first, int count);
    void LoadLines(Pattern& pattern, int first, int count, uint32_t from) const;
    void SaveList();
    void LoadList(uint32_t from);
    void SaveInstruments();
    void LoadInstruments(uint32_t from);

    void Apply(const UndoEntry& entry, bool redo, UndoView& view);
    void RecreatePattern(const UndoEntry& entry, uint16_t length);
    // Where the index-th line record of an instrument change or channel copy lies in the store.
    const uint8_t* Record(const UndoEntry& entry, uint32_t index) const;
    void RestoreLineRecords(const UndoEntry& entry);
    void RestorePatternHeader(uint8_t pattern, uint32_t headerSlot, int offset, uint32_t nameSlot);

    Module* module_ = nullptr;
    EditLock editLocked_;
    std::vector<UndoEntry> entries_;
    std::vector<UndoSlot> store_;
    uint8_t savedKnown_ = 1;
    uint32_t savedHead_ = 0;
    uint8_t open_ = 0;
    uint32_t storePos_ = 0;
    uint32_t tail_ = 0;
    uint32_t head_ = 0;
    uint32_t count_ = 0;
};

}  // namespace sondrel
