#pragma once
// The editing options the musician chooses: "Wrap volume" and "Paste: Delete"
// in the "Edit" menu's "Options", the key choices in the "Preferences"
// dialog. The program keeps them in its preferences file.

namespace sondrel {

struct EditOptions {
    bool wrapVolume = false;        // volume steps wrap round 0..15 instead of stopping
    bool pasteDeleteNotes = true;   // empty clipboard cells clear the cells beneath
    bool undoWithCtrlZ = false;     // Ctrl+Z undoes and Ctrl+Y redoes, not the other way round
    bool typeDigits = false;        // digit keys type values into the pattern's value fields
};

}  // namespace sondrel
