#include "edit/main_menu.h"

#include <filesystem>
#include <utility>

namespace sondrel {

namespace {

MenuEntry Item(std::string text, int command, std::string shortcut = {}) {
    MenuEntry entry;
    entry.text = std::move(text);
    entry.command = command;
    entry.shortcut = std::move(shortcut);
    return entry;
}

MenuEntry Submenu(std::string text, std::vector<MenuEntry> entries) {
    MenuEntry entry;
    entry.text = std::move(text);
    entry.submenu = std::move(entries);
    return entry;
}

MenuEntry* FindIn(std::vector<MenuEntry>& entries, int command) {
    for (MenuEntry& entry : entries) {
        if (!entry.separator && entry.submenu.empty() && entry.command == command) return &entry;
        if (MenuEntry* found = FindIn(entry.submenu, command)) return found;
    }
    return nullptr;
}

}  // namespace

std::vector<MenuTitle> MainMenuTitles(const std::vector<std::string>& recentModules) {
    std::vector<MenuEntry> file{
        Item("New module...", kMenuNewModule),
        MenuSeparator(),
        Item("Load module...", kMenuLoadModule),
        Item("Save module", kMenuSaveModule),
        Item("Save module as...", kMenuSaveModuleAs),
        Submenu("Export module", {Item("ESDRLTK...", kMenuExportEsdrltk), MenuSeparator(),
                                  Item("VGM...", kMenuExportVgm), Item("MID...", kMenuExportMidi),
                                  Item("VGM, looping...", kMenuExportVgmLooping)}),
        MenuSeparator(),
        Item("Preferences", kMenuPreferences),
        MenuSeparator(),
        Item("Quit...", kMenuQuit),
    };
    int command = kMenuRecentFirst;
    for (const std::string& path : recentModules) {
        if (command > kMenuRecentLast) break;
        if (path.empty()) continue;
        file.push_back(Item(std::filesystem::path(path).filename().string(), command++));
    }

    std::vector<MenuEntry> edit{
        Item("Undo", kMenuUndo, "CTRL + y"),
        Item("Redo", kMenuRedo, "CTRL + z"),
        MenuSeparator(),
        Item("Clear", kMenuClear, "Del"),
        Item("Cut", kMenuCut, "CTRL + x"),
        Item("Copy", kMenuCopy, "CTRL + c"),
        Item("Paste", kMenuPaste, "CTRL + v"),
        MenuSeparator(),
        Submenu("Transpose", {Item("Transpose +Note", kMenuTransposeNoteUp, "F9"),
                              Item("Transpose -Note", kMenuTransposeNoteDown, "F10"),
                              Item("Transpose +Oct", kMenuTransposeOctaveUp, "F11"),
                              Item("Transpose -Oct", kMenuTransposeOctaveDown, "F12")}),
        Submenu("Gradient", {Item("Volume gradient", kMenuVolumeGradient, "CTRL + g"),
                             Item("Note gradient", kMenuNoteGradient, "CTRL + f")}),
        Item("Double", kMenuDouble),
        Item("Half", kMenuHalf),
        Item("Change instruments...", kMenuChangeInstruments),
        Item("Copy channels...", kMenuCopyChannels),
        MenuSeparator(),
        Submenu("Options", {Item("Wrap volume", kMenuWrapVolume), Item("Paste: Delete", kMenuPasteDelete)}),
    };

    std::vector<MenuEntry> help{Item("View readme.txt", kMenuViewReadme), MenuSeparator(),
                                Item("Program info", kMenuProgramInfo)};
    return {{"File", std::move(file)}, {"Edit", std::move(edit)}, {"Help", std::move(help)}};
}

MenuEntry* FindMenuEntry(std::vector<MenuTitle>& titles, int command) {
    for (MenuTitle& title : titles)
        if (MenuEntry* found = FindIn(title.entries, command)) return found;
    return nullptr;
}

}  // namespace sondrel
