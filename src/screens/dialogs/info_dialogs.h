#pragma once
// The dialogs that show things rather than edit the song: the module's
// information, the pattern overview, the readme and the program's own
// information, and the preferences.

#include <optional>
#include <string>

#include "model/module.h"

namespace sondrel {

class Requesters;

// What "Module information" shows.
struct ModuleInformation {
    std::string fileName;
    std::string directory;
    int songLength = 0;        // pattern list entries
    int patterns = 0;          // patterns in use
    int unusedPatterns = 0;    // patterns in use that the list never plays
    double seconds = 0;        // until the song returns to its repeat position
    double secondsAtCursor = 0;
};

// The preferences the "Preferences" dialog edits.
struct PreferenceValues {
    bool fullscreen = false;
    int volume = 50;  // 0..100
    bool midiInEnable = false;
    int midiInDeviceId = 0;
    bool undoWithCtrlZ = false;  // "Editing": Ctrl+Z undoes, Ctrl+Y redoes
    bool typeDigits = false;     // "Editing": digit keys type values in the pattern
    int windowScale = 1;         // "Window": 1 to 4
    bool operator==(const PreferenceValues&) const = default;
};

inline constexpr char kProgramInfoText[] = "\n Sondrel\nVersion 2.00\n\n A music tracker for the SN76489 sound chip";
inline constexpr char kLibrariesText[] =
    "\n This program includes the following\n libraries made by other people:\nlibpng\nFreeType\nZLib \n";

// The module's patterns in use, with how many list entries play each.
ModuleInformation InformationOf(const Module& module);

void ShowModuleInformation(Requesters& requesters, const ModuleInformation& information);
void ShowPatternOverview(Requesters& requesters, const Module& module);
// "Readme.txt" with the text of the readme file, read-only.
void ShowReadme(Requesters& requesters, const std::string& text);
void ShowProgramInfo(Requesters& requesters);
std::optional<PreferenceValues> RunPreferences(Requesters& requesters, const PreferenceValues& current);

}  // namespace sondrel
