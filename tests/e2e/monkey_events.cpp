#include "e2e/monkey_events.h"

#include <array>
#include <random>
#include <vector>

#include "edit/main_menu.h"
#include "screens/main_screen.h"
#include "ui/menu_bar.h"

namespace sondrel::e2e {
namespace {

// Where the menus are: each title's middle and the middle of the left part
// of each of its entries (three recent modules under "File"). Submenus are
// reached with the keys, as their place depends on the font.
struct MenuPlaces {
    std::vector<Point> titles;
    std::vector<std::vector<Point>> entries;
    Point load, saveAs;  // under "File"
};

const MenuPlaces& Menus() {
    static const MenuPlaces places = [] {
        MenuPlaces found;
        DropDownMenuBar bar(MainMenuTitles({"a.sdrltk", "b.sdrltk", "c.sdrltk"}), kScreenWidth);
        for (int title = 0; title < static_cast<int>(bar.Titles().size()); ++title) {
            const Gorb_Rect rect = bar.TitleRect(title);
            const Point middle{rect.x + rect.w / 2, rect.h / 2};
            found.titles.push_back(middle);
            bar.Close();
            bar.Press(middle);
            std::vector<Point> entries;
            for (int entry = 0; entry < static_cast<int>(bar.Titles()[title].entries.size()); ++entry) {
                const Gorb_Rect place = bar.EntryRect(0, entry);
                entries.push_back({place.x + 12, place.y + place.h / 2});
                const int command = bar.Titles()[title].entries[entry].command;
                if (command == kMenuLoadModule) found.load = entries.back();
                if (command == kMenuSaveModuleAs) found.saveAs = entries.back();
            }
            found.entries.push_back(std::move(entries));
        }
        return found;
    }();
    return places;
}

constexpr std::array kKeys = {
    "a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m", "n", "o", "p", "q", "r", "s",
    "t", "u", "v", "w", "x", "y", "z", "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "F1",
    "F2", "F3", "F4", "F5", "F6", "F7", "F8", "F9", "F10", "F11", "F12", "Return", "Escape", "Tab",
    "Delete", "BackSpace", "Up", "Down", "Left", "Right", "Home", "End", "Prior", "Next", "Insert",
    "space", "minus", "equal", "bracketleft", "bracketright", "semicolon", "apostrophe", "comma",
    "period", "slash", "backslash", "grave", "KP_Add", "KP_Subtract", "KP_Enter"};

// Ctrl with any of these saves the module.
constexpr std::array kSaveKeys = {"s", "b", "n", "m", "comma", "period", "slash"};

// Names for the file requester: existing ones (to be overwritten, loaded,
// or entered as folders), ways out of the folder, and new ones.
constexpr std::array kKnownNames = {"demo", "demo.sdrltk", "skins", "..", "/", "readme.txt", "m1", "m2", "song"};

class BatchWriter {
public:
    BatchWriter(uint64_t seed, int batch, unsigned long window)
        : random_(seed * 0x9E3779B97F4A7C15ull ^ static_cast<uint64_t>(batch) * 0xBF58476D1CE4E5B9ull),
          window_(std::to_string(window)) {}

    int Roll(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    bool Chance(int percent) { return Roll(100) < percent; }
    template <typename List>
    const char* Pick(const List& list) {
        return list[static_cast<size_t>(Roll(static_cast<int>(list.size())))];
    }

    void Key(const std::string& combination) {
        if (keys_.empty()) keys_ = " key --delay 30";
        keys_ += " " + combination;
        ++batch_.events;
    }
    void Move(Point at) {
        Command("mousemove --window " + window_ + " " + std::to_string(at.x) + " " + std::to_string(at.y));
        ++batch_.events;
    }
    void Click(int button, int times = 1) {
        Command("click --repeat " + std::to_string(times) + " --delay 60 " + std::to_string(button));
        batch_.events += times;
        Pause();
    }
    void Press(int button) {
        Command("mousedown " + std::to_string(button));
        ++batch_.events;
    }
    void Release(int button) {
        Command("mouseup " + std::to_string(button));
        ++batch_.events;
    }
    // As keys: xdotool's "type" would take the rest of the batch as its text.
    void Type(const std::string& text) {
        for (char c : text) Key(c == '.' ? "period" : c == '/' ? "slash" : std::string(1, c));
    }
    // Three frames of the program.
    void Pause() { Command("sleep 0.05"); }
    void CloseWindow() { batch_.closeWindow = true; }

    Point Anywhere() { return {Roll(kScreenWidth), Roll(kScreenHeight)}; }
    // Where dialogs and requesters open, in the middle of the screen.
    Point Middle() { return {150 + Roll(kScreenWidth - 300), 100 + Roll(kScreenHeight - 200)}; }

    MonkeyBatch Finish() {
        Command("");
        return batch_;
    }

private:
    void Command(const std::string& command) {
        batch_.xdotool += keys_;
        keys_.clear();
        if (!command.empty()) batch_.xdotool += " " + command;
    }

    std::mt19937_64 random_;
    std::string window_;
    std::string keys_;
    MonkeyBatch batch_;
};

// Any key, plain or with Ctrl, Shift or both.
void AnyKey(BatchWriter& out) {
    static constexpr std::array kModifiers = {"", "", "", "", "", "ctrl+", "ctrl+", "shift+", "shift+", "ctrl+shift+"};
    out.Key(std::string(out.Pick(kModifiers)) + out.Pick(kKeys));
}

void SaveKey(BatchWriter& out) { out.Key(std::string("ctrl+") + out.Pick(kSaveKeys)); }

// Opens a menu and chooses an entry with a click, by dragging to it with the
// button held, or with the cursor keys (into the submenus too).
void ChooseFromMenu(BatchWriter& out) {
    const MenuPlaces& menus = Menus();
    const int title = out.Roll(static_cast<int>(menus.titles.size()));
    const std::vector<Point>& entries = menus.entries[static_cast<size_t>(title)];
    const Point entry = entries[static_cast<size_t>(out.Roll(static_cast<int>(entries.size())))];
    out.Move(menus.titles[static_cast<size_t>(title)]);
    switch (out.Roll(4)) {
        case 0:
            out.Press(1);
            out.Pause();
            out.Move(entry);
            out.Pause();
            out.Release(1);
            break;
        case 1: {
            out.Click(1);
            for (int step = out.Roll(8); step > 0; --step) out.Key(out.Chance(80) ? "Down" : "Up");
            if (out.Chance(50)) out.Key("Right");
            for (int step = out.Roll(4); step > 0; --step) out.Key("Down");
            out.Key(out.Chance(80) ? "Return" : out.Chance(50) ? "Escape" : "Left");
            break;
        }
        default:
            out.Click(1);
            out.Move(entry);
            out.Click(1);
            break;
    }
    out.Pause();
}

// A menu left open while keys (the save keys among them) or a click come.
void KeysOverOpenMenu(BatchWriter& out) {
    const MenuPlaces& menus = Menus();
    out.Move(menus.titles[static_cast<size_t>(out.Roll(static_cast<int>(menus.titles.size())))]);
    out.Click(1);
    if (out.Chance(50)) SaveKey(out);
    else AnyKey(out);
    if (out.Chance(30)) {
        out.Move(out.Anywhere());
        out.Click(1);
    }
}

void TypeName(BatchWriter& out) {
    std::string name;
    if (out.Chance(40)) {
        name = out.Pick(kKnownNames);
    } else {
        static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
        for (int length = 1 + out.Roll(8); length > 0; --length) name += kLetters[out.Roll(sizeof kLetters - 1)];
    }
    if (out.Chance(30)) out.Key("ctrl+a");
    out.Type(name);
    out.Key(out.Chance(75) ? "Return" : out.Chance(50) ? "Tab" : "Escape");
}

// File > "Save module as..." or "Load module...", then a name typed into
// the requester, perhaps after a click on a line of its list.
void ThroughRequester(BatchWriter& out) {
    const MenuPlaces& menus = Menus();
    out.Move(menus.titles[0]);
    out.Click(1);
    out.Move(out.Chance(60) ? menus.saveAs : menus.load);
    out.Click(1);
    out.Pause();
    if (out.Chance(30)) {
        // The requester's list fills most of the middle of the screen.
        out.Move({kScreenWidth / 4 + 10 + out.Roll(kScreenWidth / 2 - 20),
                  kScreenHeight / 6 + 30 + out.Roll(kScreenHeight / 2)});
        out.Click(1, out.Chance(50) ? 2 : 1);
    }
    TypeName(out);
}

// What ends a dialog: its keys, or a click where its buttons are.
void AnswerDialog(BatchWriter& out) {
    switch (out.Roll(4)) {
        case 0: out.Key("Escape"); break;
        case 1: out.Key("Return"); break;
        case 2:
            out.Key("Tab");
            out.Key(out.Chance(50) ? "space" : "Return");
            break;
        default:
            // The message boxes' buttons stand under their text, the
            // requesters' and dialogs' along their bottom edge.
            out.Move({kScreenWidth / 2 - 110 + out.Roll(220), kScreenHeight / 2 + out.Roll(kScreenHeight / 2 - 40)});
            out.Click(1);
            break;
    }
}

void ClickSomewhere(BatchWriter& out) {
    out.Move(out.Chance(40) ? out.Middle() : out.Anywhere());
    const int button = out.Chance(85) ? 1 : out.Chance(50) ? 3 : 2;
    out.Click(button, out.Chance(15) ? 2 : 1);
}

void Drag(BatchWriter& out) {
    out.Move(out.Chance(40) ? out.Middle() : out.Anywhere());
    out.Press(1);
    for (int step = 1 + out.Roll(4); step > 0; --step) {
        out.Pause();
        out.Move(out.Anywhere());
    }
    out.Release(1);
}

void TurnWheel(BatchWriter& out) {
    out.Move(out.Anywhere());
    out.Click(out.Chance(50) ? 4 : 5, 1 + out.Roll(5));
}

}  // namespace

MonkeyBatch MakeMonkeyBatch(uint64_t seed, int batch, unsigned long window) {
    BatchWriter out(seed, batch, window);
    // Per hundred: what a step of the batch does.
    struct Weighted {
        int weight;
        void (*step)(BatchWriter&);
    };
    static constexpr Weighted kSteps[] = {
        {27, AnyKey}, {15, ChooseFromMenu}, {12, ClickSomewhere}, {10, AnswerDialog}, {6, TypeName},
        {6, Drag},    {6, TurnWheel},       {6, SaveKey},         {5, KeysOverOpenMenu}, {7, ThroughRequester},
    };
    static_assert([] {
        int sum = 0;
        for (const Weighted& step : kSteps) sum += step.weight;
        return sum == 100;
    }());
    for (int steps = 12 + out.Roll(10); steps > 0; --steps) {
        int roll = out.Roll(100);
        for (const Weighted& step : kSteps) {
            if (roll < step.weight) {
                step.step(out);
                break;
            }
            roll -= step.weight;
        }
    }
    if (out.Chance(2)) out.CloseWindow();
    return out.Finish();
}

}  // namespace sondrel::e2e
