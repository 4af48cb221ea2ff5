#include "ui/widget_gallery.h"

#include <cmath>
#include <string>
#include <utility>

#include "ui/painter.h"
#include "ui/skin/skin_library.h"
#include "ui/toolkit.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/check_button.h"
#include "ui/widgets/frame.h"
#include "ui/widgets/gauge.h"
#include "ui/widgets/image.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/menu_button.h"
#include "ui/widgets/progress_bar.h"
#include "ui/widgets/scroll_bar.h"
#include "ui/widgets/select_box.h"
#include "ui/widgets/select_button.h"
#include "ui/widgets/slider.h"
#include "ui/widgets/space_bar.h"
#include "ui/widgets/speed_button.h"
#include "ui/widgets/text_field.h"
#include "ui/widgets/text_line.h"
#include "ui/window.h"

namespace sondrel {

namespace {

// Three columns of frames below the window's title bar.
constexpr int kColumnWidth = 256;
constexpr int kColumnX[] = {8, 272, 536};
constexpr int kInset = 12;     // from a frame's sides to its widgets
constexpr int kLabelRoom = 20; // from a frame's top to its first widget
constexpr int kRow = 26;       // between rows of buttons

class GalleryBuilder {
public:
    GalleryBuilder(Window& window, const SkinLibrary* skin) : window_(window), skin_(skin) {}

    void Build() {
        // The spacers sit top left, where the open menus hang in the gallery picture.
        Spacers({kColumnX[0], 24, kColumnWidth, 100});
        Buttons({kColumnX[0], 132, kColumnWidth, 150});
        Boxes({kColumnX[0], 290, kColumnWidth, 104});
        Gauges({kColumnX[0], 402, kColumnWidth, 142});
        Ranges({kColumnX[1], 24, kColumnWidth, 262});
        Entries({kColumnX[1], 294, kColumnWidth, 100});
        TextFields({kColumnX[1], 402, kColumnWidth, 170});
        List({kColumnX[2], 24, kColumnWidth, 262});
        Picture({kColumnX[2], 294, kColumnWidth, 278});
    }

private:
    uint16_t Next() { return nextId_++; }
    // A labelled frame; the point where its widgets start.
    Point Group(const Gorb_Rect& rect, std::string label) {
        window_.Emplace<Frame>(Next(), rect, std::move(label));
        return {rect.x + kInset, rect.y + kLabelRoom};
    }
    template <class W, class... Args>
    W& Add(bool enabled, Args&&... args) {
        W& widget = window_.Emplace<W>(Next(), std::forward<Args>(args)...);
        widget.SetEnabled(enabled);
        return widget;
    }
    // For the kinds whose constructors take their kind or axis before the id.
    template <class W, class First>
    W& AddWith(First first, bool enabled, const Gorb_Rect& rect) {
        W& widget = window_.Emplace<W>(first, Next(), rect);
        widget.SetEnabled(enabled);
        return widget;
    }

    void Buttons(const Gorb_Rect& frame) {
        const Point at = Group(frame, "Buttons");
        const char* pushTexts[] = {"OK", "Cancel", "Disabled"};
        for (int i = 0; i < 3; ++i) Add<PushButton>(i != 2, Gorb_Rect{at.x + i * 78, at.y, 72, 22}, pushTexts[i]);

        // Up to five of the skin's icons; plain faces when it has none.
        std::vector<std::string> icons;
        if (skin_ != nullptr && skin_->HasSkin())
            for (const auto& [name, icon] : skin_->Current().icons)
                if (icons.size() < 5) icons.push_back(name);
        if (icons.empty()) icons = {"play", "stop", "record", "up", "down"};
        for (size_t i = 0; i < icons.size(); ++i)
            Add<SpeedButton>(i + 1 < icons.size(), Gorb_Rect{at.x + static_cast<int>(i) * 28, at.y + kRow, 24, 22},
                             icons[i]);

        const char* checkTexts[] = {"Mute", "Solo", "Locked"};
        for (int i = 0; i < 3; ++i)
            Add<CheckButton>(i != 2, Gorb_Rect{at.x + i * 78, at.y + 2 * kRow, 72, 22}, checkTexts[i]).SetOn(i != 0);
        const char* selectTexts[] = {"Tone", "Noise", "Both"};
        for (uint32_t i = 0; i < 3; ++i)
            Add<SelectButton>(i != 2, Gorb_Rect{at.x + static_cast<int>(i) * 78, at.y + 3 * kRow, 72, 22},
                              selectTexts[i], 0, i)
                .SetOn(i == 1);
        // A lone button left held down shows the pushed face.
        Add<SelectButton>(true, Gorb_Rect{at.x + 5 * 28 + 8, at.y + kRow, 84, 22}, "Chosen", 2, 0).SetOn(true);
    }

    void Boxes(const Gorb_Rect& frame) {
        const Point at = Group(frame, "Check and select boxes");
        const char* checkTexts[] = {"Loop song", "Fade out", "Locked on", "Locked off"};
        for (int i = 0; i < 4; ++i)
            Add<CheckBox>(i < 2, Gorb_Rect{at.x, at.y + i * 20, 110, 16}, checkTexts[i]).SetOn(i % 2 == 0);
        const char* selectTexts[] = {"NTSC", "PAL", "Custom", "Held"};
        for (uint32_t i = 0; i < 4; ++i)
            Add<SelectBox>(i < 2 || i == 3, Gorb_Rect{at.x + 120, at.y + static_cast<int>(i) * 20, 110, 16},
                           selectTexts[i], 1, i)
                .SetOn(i == 0);
    }

    void Gauges(const Gorb_Rect& frame) {
        const Point at = Group(frame, "Gauges and progress");
        const int values[] = {30, 75};
        for (int i = 0; i < 2; ++i)
            AddWith<Gauge>(WidgetKind::HGauge, false, Gorb_Rect{at.x, at.y + i * 20, 180, 12}).SetValue(values[i]);
        for (int i = 0; i < 2; ++i)
            AddWith<Gauge>(WidgetKind::VGauge, false, Gorb_Rect{at.x + 196 + i * 22, at.y, 14, 110})
                .SetValue(values[1 - i]);
        const int progress[] = {42, 100};
        for (int i = 0; i < 2; ++i)
            Add<ProgressBar>(false, Gorb_Rect{at.x, at.y + 44 + i * 26, 180, 18}).SetValue(progress[i]);
    }

    void Spacers(const Gorb_Rect& frame) {
        const Point at = Group(frame, "Spacers");
        AddWith<SpaceBar>(WidgetKind::HSpaceBar, false, Gorb_Rect{at.x, at.y + 14, 180, 6});
        AddWith<SpaceBar>(WidgetKind::HSpaceBar, false, Gorb_Rect{at.x, at.y + 52, 180, 6});
        AddWith<SpaceBar>(WidgetKind::VSpaceBar, false, Gorb_Rect{at.x + 200, at.y, 6, 70});
    }

    void Ranges(const Gorb_Rect& frame) {
        const Point at = Group(frame, "Scroll bars and sliders");
        for (int i = 0; i < 2; ++i) {
            auto& bar = AddWith<ScrollBar>(false, i == 0, Gorb_Rect{at.x, at.y + i * 24, 180, 16});
            bar.SetTotal(100, 25);
            bar.SetValue(30 + 40 * i);
        }
        for (int i = 0; i < 2; ++i) {
            auto& bar = AddWith<ScrollBar>(true, true, Gorb_Rect{at.x + 196 + i * 22, at.y, 16, 230});
            bar.SetTotal(64, i == 0 ? 16 : 48);
            bar.SetValue(i == 0 ? 40 : 0);
        }
        for (int i = 0; i < 3; ++i) {
            auto& slider = AddWith<Slider>(false, i != 2, Gorb_Rect{at.x, at.y + 56 + i * 24, 180, 16});
            slider.SetRange(0, 15);
            slider.SetValue(4 + 5 * i);
        }
        for (int i = 0; i < 3; ++i) {
            auto& slider = AddWith<Slider>(true, i != 2, Gorb_Rect{at.x + 20 + i * 30, at.y + 134, 16, 96});
            slider.SetRange(0, 15);
            slider.SetValue(15 - 6 * i);
        }
    }

    void Entries(const Gorb_Rect& frame) {
        const Point at = Group(frame, "One-line entries");
        Add<TextLine>(true, Gorb_Rect{at.x, at.y, 230, 20}).SetText("Morning on the coast");
        Add<TextLine>(false, Gorb_Rect{at.x, at.y + 26, 230, 20}).SetText("Read only");
        for (int i = 0; i < 2; ++i) {
            auto& number = Add<TextLine>(i == 0, Gorb_Rect{at.x + i * 120, at.y + 52, 100, 20}, 3);
            number.SetNumeric(0, 255);
            number.SetNumber(i == 0 ? 125 : 6);
        }
    }

    void TextFields(const Gorb_Rect& frame) {
        const Point at = Group(frame, "Text field and menu buttons");
        Add<TextField>(true, Gorb_Rect{at.x, at.y, 230, 90})
            .SetText("A text of several lines:\nthe song's notes,\nwho wrote it\nand when,\nand more lines\nthan fit.");
        Add<MenuButton>(true, Gorb_Rect{at.x, at.y + 100, 110, 22}, "Square\nNoise\nPeriodic", 1);
        Add<MenuButton>(false, Gorb_Rect{at.x + 120, at.y + 100, 110, 22}, "Locked", 0);
    }

    void List(const Gorb_Rect& frame) {
        const Point at = Group(frame, "List with columns");
        auto& list = Add<ListBox>(true, Gorb_Rect{at.x, at.y, 232, 230});
        list.SetColumns({{28, "%02X", "#"}, {140, "%s", "Instrument"}, {56, "%d", "Vol"}});
        const char* names[] = {"Lead square", "Soft bass", "Hi-hat", "Snare", "Arpeggio", "Echo lead", "Kick"};
        std::vector<ListLine> lines;
        for (int i = 0; i < 24; ++i)
            lines.push_back({static_cast<long long>(i), std::string(names[i % 7]), static_cast<long long>(15 - i % 16)});
        list.SetLines(std::move(lines));
        list.SetLineHeight(16);
        list.Select(3);
    }

    void Picture(const Gorb_Rect& frame) {
        const Point at = Group(frame, "Image with selection");
        auto& image = Add<Image>(true, Gorb_Rect{at.x, at.y, 232, 246});
        DrawWave(image.Surface());
        image.SetSelection({40, 30, 90, 120}, 96);
        image.SetMarker({150, 60, 60, 100}, MarkerStyle::Dotted);
    }

    // A dark grid with a square wave and a sine across it, as a waveform view would show.
    static void DrawWave(Gorb_Surface& surface) {
        const int w = surface.Width();
        const int h = surface.Height();
        Gorb_Pixels pixels = surface.Lock();
        for (int y = 0; y < h; ++y) {
            uint16_t* row = pixels.Row(y);
            for (int x = 0; x < w; ++x) row[x] = Rgb565(x % 24 == 0 || y % 24 == 0 ? 0x1C2A38 : 0x0C141C);
        }
        for (int x = 0; x < w; ++x) {
            const int square = (x / 29) % 2 ? h / 4 : h / 4 + 40;
            const int sine = h * 2 / 3 + static_cast<int>(30 * std::sin(x * 0.08));
            pixels.Row(square)[x] = Rgb565(0x60E0A0);
            pixels.Row(sine)[x] = Rgb565(0xF0C040);
            pixels.Row(sine + 1)[x] = Rgb565(0xF0C040);
        }
        surface.Unlock();
    }

    Window& window_;
    const SkinLibrary* skin_;
    uint16_t nextId_ = 1;
};

MenuEntry Entry(std::string text, int command, std::string shortcut = {}) {
    MenuEntry entry;
    entry.text = std::move(text);
    entry.command = command;
    entry.shortcut = std::move(shortcut);
    return entry;
}

MenuEntry Disabled(MenuEntry entry) {
    entry.enabled = false;
    return entry;
}

MenuEntry Checked(MenuEntry entry) {
    entry.checked = true;
    return entry;
}

}  // namespace

void BuildWidgetGallery(Window& window, const SkinLibrary* skin) { GalleryBuilder(window, skin).Build(); }

std::vector<MenuTitle> WidgetGalleryMenus() {
    MenuEntry zoom = Entry("Zoom", -1);
    zoom.submenu = {Entry("Smaller", 31), Checked(Entry("Normal", 32)), Entry("Larger", 33)};
    return {
        {"File", {Entry("New", 1, "Ctrl+N"), Entry("Open...", 2, "Ctrl+O"), Entry("Save", 3, "Ctrl+S"),
                  Disabled(Entry("Save as VGM...", 4)), MenuSeparator(), Entry("Quit", 5, "Ctrl+Q")}},
        {"View", {Checked(Entry("Pattern", 21, "F2")), Disabled(Checked(Entry("Full screen", 24, "F11"))),
                  MenuSeparator(), zoom}},
        {"Edit", {Disabled(Entry("Undo", 11, "Ctrl+Z")), Entry("Cut", 12, "Ctrl+X"), Entry("Copy", 13, "Ctrl+C"),
                  Entry("Paste", 14, "Ctrl+V")}},
        {"Help", {Entry("Keys", 41, "F1"), Entry("About", 42)}},
    };
}

GalleryScreen::GalleryScreen(Toolkit& toolkit, Gorb_Surface& screen, const SkinLibrary& skin)
    : menus_(WidgetGalleryMenus(), screen.Width(), &skin.Font("default")) {
    toolkit.SetMenuBar(&menus_);
    toolkit.Init(screen, &skin);
    window_ = toolkit.OpenWindow(1, {0, DropDownMenuBar::kBarHeight, kGalleryWidth, kGalleryHeight},
                                 kWindowNotDraggable, "Widget gallery");
    BuildWidgetGallery(*window_, &skin);
}

void GalleryScreen::OpenShowcaseMenu(bool submenu) {
    const Gorb_Rect title = menus_.TitleRect(kGalleryShowcaseMenu);
    menus_.Press({title.x + title.w / 2, title.y + title.h / 2});
    if (!submenu) return;
    const int last = static_cast<int>(menus_.Titles()[kGalleryShowcaseMenu].entries.size()) - 1;
    const Gorb_Rect entry = menus_.EntryRect(0, last);
    menus_.Follow({entry.x + entry.w / 2, entry.y + entry.h / 2});
}

}  // namespace sondrel
