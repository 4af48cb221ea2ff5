#include "e2e/program_places.h"

#include <algorithm>

#include "edit/main_menu.h"
#include "screens/main_screen.h"
#include "test_support.h"
#include "ui/menu_bar.h"
#include "ui/queued_input.h"
#include "ui/toolkit.h"
#include "ui/window.h"

namespace sondrel::e2e {

void CopyProgram(const std::filesystem::path& app) {
    namespace fs = std::filesystem;
    fs::create_directories(app);
    fs::copy_file(test::BinaryDir() / "sondrel", app / "sondrel");
    fs::copy(test::BinaryDir() / "skins", app / "skins", fs::copy_options::recursive);
    fs::copy_file(test::BinaryDir() / "modfont.png", app / "modfont.png");
}

Gorb_Rect MainScreenControl(uint16_t id) {
    QueuedInput input;
    Toolkit toolkit(input);
    const PatternViewWidgets widgets =
        BuildMainScreen(toolkit, kScreenWidth, kScreenHeight, DropDownMenuBar::kBarHeight);
    const Gorb_Rect& window = widgets.mainWindow->Rect();
    for (const auto& widget : widgets.mainWindow->Widgets())
        if (widget->Id() == id)
            return {window.x + widget->Rect().x, window.y + widget->Rect().y, widget->Rect().w, widget->Rect().h};
    return {};
}

bool ChooseFileMenu(XSession& x, unsigned long window, const std::string& text) {
    DropDownMenuBar bar(MainMenuTitles({}), kScreenWidth);
    const Gorb_Rect title = bar.TitleRect(0);
    bar.Press({title.x + title.w / 2, title.y + title.h / 2});
    const auto& entries = bar.Titles()[0].entries;
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const MenuEntry& entry) { return entry.text == text; });
    if (found == entries.end()) return false;
    const Gorb_Rect entry = bar.EntryRect(0, static_cast<int>(found - entries.begin()));
    const std::string id = std::to_string(window);
    return x.Xdotool("mousemove --sync --window " + id + " " + std::to_string(title.x + title.w / 2) + " " +
                     std::to_string(title.h / 2) + " click 1 mousemove --sync --window " + id + " " +
                     std::to_string(entry.x + 10) + " " + std::to_string(entry.y + entry.h / 2) + " click 1");
}

}  // namespace sondrel::e2e
