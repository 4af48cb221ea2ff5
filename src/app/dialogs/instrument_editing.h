#pragma once
// The instrument editor as the program runs it: it opens on the current
// instrument with the keys in the edit settings' octave, the keyboard piano
// sounds the instrument as edited on the note player's first tone channel for
// as long as a key is held, and "Okay" puts the edited set into the module as
// one undo entry (none when nothing changed). What "Copy" keeps lasts as long
// as the program runs.

#include <cstdint>
#include <optional>

#include "edit/editor_context.h"
#include "screens/dialogs/instrument_editor.h"

namespace sondrel {

class Requesters;

class InstrumentEditing {
public:
    InstrumentEditing(EditorContext& context, Requesters& requesters);
    InstrumentEditing(const InstrumentEditing&) = delete;
    InstrumentEditing& operator=(const InstrumentEditing&) = delete;

    // Runs the editor until it closes.
    void Run();

private:
    void Preview(const Instrument& instrument, int octave, uint16_t scanCode, bool down);

    EditorContext& context_;
    InstrumentEditor editor_;
    // What the preview voice plays. A voice reads its instrument as it runs,
    // so the copy lives here and changes only under the audio mutex.
    Instrument sounding_;
    std::optional<uint16_t> soundingKey_;
};

}  // namespace sondrel
