#pragma once
// The main menu bar's tree: "File", "Edit" and "Help", each entry with the
// command number its menu entry carries to the command dispatcher.

#include <string>
#include <vector>

#include "ui/menu_bar.h"

namespace sondrel {

enum MenuCommand : int {
    kMenuNewModule = 0,
    kMenuLoadModule = 1,
    kMenuSaveModule = 2,
    kMenuSaveModuleAs = 3,
    kMenuExportEsdrltk = 4,
    kMenuExportVgm = 5,
    kMenuExportMidi = 6,
    kMenuPreferences = 7,
    kMenuQuit = 8,
    kMenuRecentFirst = 9,   // the recent modules, newest first
    kMenuRecentLast = 18,
    kMenuUndo = 19,
    kMenuRedo = 20,
    kMenuClear = 21,
    kMenuCut = 22,
    kMenuCopy = 23,
    kMenuPaste = 24,
    kMenuDouble = 25,
    kMenuHalf = 26,
    kMenuChangeInstruments = 27,
    kMenuCopyChannels = 28,
    kMenuVolumeGradient = 29,
    kMenuNoteGradient = 30,
    kMenuWrapVolume = 31,
    kMenuPasteDelete = 32,
    kMenuTransposeOctaveUp = 33,
    kMenuTransposeOctaveDown = 34,
    kMenuTransposeNoteUp = 35,
    kMenuTransposeNoteDown = 36,
    kMenuViewReadme = 37,
    kMenuProgramInfo = 38,
    kMenuExportVgmLooping = 39,  // after the described commands: a VGM that loops from the repeat position
};

// The whole tree; recentModules (at most ten, newest first, empty ones
// skipped) follow "Quit..." as commands 9 onwards.
std::vector<MenuTitle> MainMenuTitles(const std::vector<std::string>& recentModules = {});

// The entry with the command anywhere in the tree, submenus included; null when there is none.
MenuEntry* FindMenuEntry(std::vector<MenuTitle>& titles, int command);

}  // namespace sondrel
