// Draws every kind of widget with the shipped skin onto an 800 x 600 screen,
// with the gallery's showcase menu and its submenu open, and saves it as a
// PNG: a picture to look over after changing the toolkit or the skin.
//
//   widget-gallery OUT.png

#include <cstdio>

#include "model/exception.h"
#include "platform/gorb.h"
#include "ui/skin/skin_library.h"
#include "ui/toolkit.h"
#include "ui/widget_gallery.h"

namespace sondrel {
namespace {

class NoInput : public InputSource {
public:
    bool NextEvent(Gorb_Event&) override { return false; }
    uint32_t Modifiers() override { return 0; }
    uint32_t MouseState(int& x, int& y) override {
        x = 0;
        y = 0;
        return 0;
    }
};

}  // namespace
}  // namespace sondrel

int main(int argc, char** argv) {
    using namespace sondrel;
    if (argc != 2) {
        std::fprintf(stderr, "usage: widget-gallery OUT.png\n");
        return 2;
    }
    try {
        SkinLibrary skin;  // bin/skins beside this program
        skin.LoadSkin("default.skin");
        auto screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
        NoInput input;
        Toolkit toolkit(input, [] { return 0.0; });
        GalleryScreen gallery(toolkit, *screen, skin);
        gallery.OpenShowcaseMenu(true);
        toolkit.Draw();
        if (!screen->SavePng(argv[1])) {
            std::fprintf(stderr, "widget-gallery: could not write %s\n", argv[1]);
            return 1;
        }
    } catch (const Exception& error) {
        std::fprintf(stderr, "widget-gallery: %s\n", error.Message().c_str());
        return 1;
    }
    return 0;
}
