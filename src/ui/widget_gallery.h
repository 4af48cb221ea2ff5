#pragma once
// A window holding widgets of every kind in their usual states (enabled and
// disabled, on and off, part filled, scrolled, selected), grouped in labelled
// frames, and a set of menus that shows every kind of menu entry. The gallery
// picture, the drawing tests and the toolkit benchmark build their screens
// from it.

#include <vector>

#include "ui/menu_bar.h"

namespace sondrel {

class SkinLibrary;
class Toolkit;
class Window;

// The size of window the gallery is laid out for: the screen below the menu bar.
constexpr int kGalleryWidth = 800;
constexpr int kGalleryHeight = 580;

// Fills window with the gallery's widgets, in window coordinates. Speed
// buttons show the skin's icons when it has any.
void BuildWidgetGallery(Window& window, const SkinLibrary* skin = nullptr);

// Menus with shortcuts, check marks, disabled entries, separators and a submenu.
std::vector<MenuTitle> WidgetGalleryMenus();

// The index of the gallery menu with the most kinds of entry, to show open.
constexpr int kGalleryShowcaseMenu = 1;

// The gallery as a whole screen: its window below a menu bar of the gallery
// menus, on a toolkit started on screen with skin. Keep it while the toolkit
// draws: the toolkit uses its menu bar.
class GalleryScreen {
public:
    GalleryScreen(Toolkit& toolkit, Gorb_Surface& screen, const SkinLibrary& skin);

    DropDownMenuBar& Menus() { return menus_; }
    Window& GalleryWindow() { return *window_; }
    // Opens the showcase menu and, with submenu, its submenu (its last entry) too.
    void OpenShowcaseMenu(bool submenu);

private:
    DropDownMenuBar menus_;
    Window* window_ = nullptr;
};

}  // namespace sondrel
