#pragma once
// The menu bar across the top of the screen and the drop-down menus hanging
// from it. A press on a title opens its menu; while the button stays down the
// menus follow the pointer, and letting go over an enabled entry queues a
// menu command entry with the entry's command number. Letting go on the bar
// leaves the menu open, so it can also be worked with separate clicks.
// A click anywhere else closes it.
//
// An open menu also takes the keyboard: Up and Down move the highlight over
// the enabled entries of the deepest highlighted menu (wrapping round), Right
// opens the highlighted entry's submenu or else moves to the next title, Left
// closes a submenu or else moves to the previous title, Return (or the keypad
// Enter) chooses the highlighted entry as a click would, and Escape closes one
// level.
//
// An open menu remembers where it hangs (the title, and for a submenu the
// entry of the menu above) by position, never by address: the titles may be
// replaced at any time, even while a menu is open, and the open menus then
// follow the new entries or close where those are gone.

#include <string>
#include <vector>

#include "ui/toolkit.h"

namespace sondrel {

struct MenuEntry {
    std::string text;
    int command = -1;       // queued when chosen; entries with a submenu have none
    std::string shortcut;   // shown at the right, e.g. "Ctrl+S"
    bool separator = false;
    bool enabled = true;
    bool checked = false;
    std::vector<MenuEntry> submenu;
};

struct MenuTitle {
    std::string text;
    std::vector<MenuEntry> entries;
};

MenuEntry MenuSeparator();

class DropDownMenuBar : public MenuBar {
public:
    static constexpr int kBarHeight = 20;
    static constexpr int kTitleTextX = 8;
    static constexpr int kTitleSpacing = 12;
    static constexpr int kEntryHeight = 18;
    static constexpr int kSeparatorHeight = 6;
    static constexpr int kMarkColumn = 18;   // check mark at the left, submenu arrow at the right
    static constexpr int kShortcutGap = 24;
    static constexpr int kMinMenuWidth = 80;

    // font measures the texts; without one every character counts as 7 pixels.
    DropDownMenuBar(std::vector<MenuTitle> titles, int screenWidth, const Gorb_Font* font = nullptr);

    const std::vector<MenuTitle>& Titles() const { return titles_; }
    // For changing entries' flags (enabled, checked) in place; a change that
    // adds or removes entries goes through SetTitles so open menus are laid
    // out again.
    std::vector<MenuTitle>& Titles() { return titles_; }
    // Replaces every title and entry. Open menus stay open on the same title
    // and entries where the new titles still have them, with their sizes
    // measured again; the rest close.
    void SetTitles(std::vector<MenuTitle> titles);
    // The open title's index, -1 when every menu is closed.
    int OpenTitle() const { return openTitle_; }
    // The highlighted entry of an open menu level, -1 when none is.
    int Highlighted(int level) const { return open_[static_cast<size_t>(level)].hovered; }
    // How many menus hang open: the title's menu and its open submenus.
    int OpenDepth() const { return static_cast<int>(open_.size()); }
    Gorb_Rect BarRect() const { return {0, 0, screenWidth_, kBarHeight}; }
    Gorb_Rect TitleRect(int title) const;
    // The screen rectangle of an open menu level, and of an entry in it.
    Gorb_Rect MenuRect(int level) const { return open_[static_cast<size_t>(level)].rect; }
    Gorb_Rect EntryRect(int level, int entry) const;

    bool Contains(Point screen) const override;
    void Press(Point screen) override;
    void Follow(Point screen) override;
    void Choose(Point screen, CommandQueue& queue) override;
    void Close() override;
    int BarHeight() const override { return kBarHeight; }
    bool KeyPress(uint16_t key, CommandQueue& queue) override;
    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    struct OpenMenu {
        int parentEntry = -1;  // the entry of the level above whose submenu this is; -1 at level 0
        Gorb_Rect rect{};
        int hovered = -1;
    };

    int TextWidth(const std::string& text) const;
    // The entries shown at an open level, found from the title down; empty
    // when the titles no longer have them.
    const std::vector<MenuEntry>& EntriesOf(int level) const;
    // The entry at an open level, nullptr when there is none at that place.
    const MenuEntry* EntryOf(int level, int entry) const;
    int TitleAt(Point screen) const;
    // The deepest open level containing p and the entry under p there (-1 on none).
    bool EntryAt(Point screen, int& level, int& entry) const;
    void OpenTitleMenu(int title);
    void OpenLevel(int parentEntry, int x, int y, int flipX);
    // Opens the submenu of the highlighted entry of level, beside it.
    void OpenSubmenu(int level);
    // The level the keys work on: the deepest one with a highlighted entry.
    int KeyLevel() const;
    // Moves the highlight of level to the next enabled entry in step's
    // direction (1 or -1), wrapping, and closes the menus below it.
    void StepHighlight(int level, int step);
    void OpenNeighbourTitle(int step);
    // Closes every menu and queues the entry's command when it can be chosen.
    void ChooseEntry(int level, int entry, CommandQueue& queue);
    void DrawMenu(Painter& painter, const DrawStyle& style, const OpenMenu& menu) const;
    void DrawEntry(Painter& painter, const DrawStyle& style, const MenuEntry& entry, const Gorb_Rect& rect,
                   bool hovered) const;

    std::vector<MenuTitle> titles_;
    int screenWidth_;
    const Gorb_Font* font_;
    int openTitle_ = -1;
    std::vector<OpenMenu> open_;
};

}  // namespace sondrel
