#pragma once
// What taking a change back (or doing it again) asks of the pattern view:
// show the change where it was made and repaint. The editor implements it
// over the real view; tests use a recording fake.

#include "screens/pattern_view/editor_position.h"

namespace sondrel {

class UndoView {
public:
    virtual ~UndoView() = default;
    // Puts back the selection and the pattern-list position (and with it the pattern shown).
    virtual void RestoreState(const EditorPosition& position) = 0;
    // Moves the pattern list's view to a position; the pattern shown follows the list.
    virtual void SetListPosition(int position) = 0;
    // Repaints pattern lines first..last (either end may lie outside the pattern).
    virtual void RedrawLines(int first, int last) = 0;
    // Repaints everything: grid, lists, title and menu states.
    virtual void RedrawAll() = 0;
};

}  // namespace sondrel
