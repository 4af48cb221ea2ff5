// make-skin: draws the default skin's picture by code and writes it with the
// skin file that maps its pieces and the theme file with its colours. The
// results are committed below data/skins/.
//
// usage: make-skin DIR   (writes DIR/default.png, DIR/default.skin and
//                         DIR/themes/default.theme)
//
// Every piece is declared once, with its entry kind, name, size, borders and
// the function that draws it; the pieces are packed into rows and the skin
// file is written from the same list, so rectangles and picture always agree.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "png_writer.h"

namespace {

using Rgb = uint32_t;  // 0xRRGGBB

// Magenta is the skin's transparent colour.
constexpr Rgb kKey = 0xFF00FF;

// The palette: deep blue-grey surfaces, the icon's teal as the accent.
constexpr Rgb kBackground = 0x1C2433;
constexpr Rgb kBody = 0x232C3D;
constexpr Rgb kOutline = 0x0E131C;
constexpr Rgb kFace = 0x2E3A50;
constexpr Rgb kFaceHover = 0x37465F;
constexpr Rgb kFacePressed = 0x202938;
constexpr Rgb kFaceDisabled = 0x262D3A;
constexpr Rgb kLight = 0x4A5A75;
constexpr Rgb kLightDisabled = 0x323B4C;
constexpr Rgb kDark = 0x151B26;
constexpr Rgb kWell = 0x141A25;
constexpr Rgb kWellDisabled = 0x1B212C;
constexpr Rgb kAccent = 0x8FD0C4;
constexpr Rgb kAccentDim = 0x4F8F86;
constexpr Rgb kAccentDeep = 0x2F6F68;
constexpr Rgb kSelectionInactive = 0x3A465C;
constexpr Rgb kText = 0xD8DEE9;
constexpr Rgb kTextDim = 0x5D6A80;
constexpr Rgb kTitleActive = 0x285058;
constexpr Rgb kTitleInactive = 0x2A3344;
constexpr Rgb kListLine = 0x18202D;
constexpr Rgb kListLine2 = 0x1C2433;

struct Box {
    int x, y, w, h;
    Box Inset(int d) const { return {x + d, y + d, w - 2 * d, h - 2 * d}; }
};

class Canvas {
public:
    Canvas(int width, int height) : width_(width), height_(height), pixels_(static_cast<size_t>(width) * height, kKey) {}

    void Set(int x, int y, Rgb c) {
        if (x >= 0 && y >= 0 && x < width_ && y < height_) pixels_[static_cast<size_t>(y) * width_ + x] = c;
    }
    void Fill(Box b, Rgb c) {
        for (int y = b.y; y < b.y + b.h; ++y)
            for (int x = b.x; x < b.x + b.w; ++x) Set(x, y, c);
    }
    void HLine(int x, int y, int w, Rgb c) { Fill({x, y, w, 1}, c); }
    void VLine(int x, int y, int h, Rgb c) { Fill({x, y, 1, h}, c); }
    void Outline(Box b, Rgb c) {
        HLine(b.x, b.y, b.w, c);
        HLine(b.x, b.y + b.h - 1, b.w, c);
        VLine(b.x, b.y, b.h, c);
        VLine(b.x + b.w - 1, b.y, b.h, c);
    }
    // First colour on the top row and left column, second on the others.
    void Bevel(Box b, Rgb topLeft, Rgb bottomRight) {
        HLine(b.x, b.y, b.w, topLeft);
        VLine(b.x, b.y, b.h, topLeft);
        HLine(b.x, b.y + b.h - 1, b.w, bottomRight);
        VLine(b.x + b.w - 1, b.y, b.h, bottomRight);
    }
    // Rows of a glyph: '#' sets the colour, anything else is left alone.
    void Glyph(int x, int y, const std::vector<std::string>& rows, Rgb c) {
        for (size_t r = 0; r < rows.size(); ++r)
            for (size_t i = 0; i < rows[r].size(); ++i)
                if (rows[r][i] == '#') Set(x + static_cast<int>(i), y + static_cast<int>(r), c);
    }
    // A glyph centred in b.
    void GlyphIn(Box b, const std::vector<std::string>& rows, Rgb c) {
        const int w = static_cast<int>(rows.front().size()), h = static_cast<int>(rows.size());
        Glyph(b.x + (b.w - w) / 2, b.y + (b.h - h) / 2, rows, c);
    }
    // A disc centred in b; pixels whose centre lies within radius.
    void Disc(Box b, float radius, Rgb c) {
        const float cx = b.x + b.w / 2.0f, cy = b.y + b.h / 2.0f;
        for (int y = b.y; y < b.y + b.h; ++y)
            for (int x = b.x; x < b.x + b.w; ++x)
                if (std::hypot(x + 0.5f - cx, y + 0.5f - cy) <= radius) Set(x, y, c);
    }

    std::vector<uint8_t> Rgba() const {
        std::vector<uint8_t> out;
        out.reserve(pixels_.size() * 4);
        for (Rgb c : pixels_) out.insert(out.end(), {uint8_t(c >> 16), uint8_t(c >> 8), uint8_t(c), 255});
        return out;
    }

private:
    int width_, height_;
    std::vector<Rgb> pixels_;
};

// ---- The looks ----

enum class State { Normal, Hover, Pressed, Disabled, Focused, On };

// A push button: dark outline, 1-pixel bevel, flat face. Pressed and "on"
// looks are sunken; the focused one has an accent outline; "on" carries an
// accent bar along the bottom.
void Button(Canvas& c, Box b, State s) {
    Rgb outline = kOutline, light = kLight, dark = kDark, face = kFace;
    switch (s) {
    case State::Normal: break;
    case State::Hover: face = kFaceHover, outline = kAccentDim; break;
    case State::Pressed: face = kFacePressed, light = kDark, dark = kFace; break;
    case State::On: face = kFacePressed, light = kDark, dark = kFace; break;
    case State::Disabled: face = kFaceDisabled, light = kLightDisabled, dark = kFaceDisabled, outline = kDark; break;
    case State::Focused: outline = kAccent; break;
    }
    c.Outline(b, outline);
    c.Bevel(b.Inset(1), light, dark);
    c.Fill(b.Inset(2), face);
    if (s == State::On) c.HLine(b.x + 3, b.y + b.h - 4, b.w - 6, kAccent);
}

Rgb GlyphColour(State s) {
    switch (s) {
    case State::Disabled: return kTextDim;
    case State::Hover:
    case State::Pressed: return kAccent;
    default: return kText;
    }
}

// A sunken well: text entries, lists, gauges and scroll troughs.
void Well(Canvas& c, Box b, State s) {
    c.Outline(b, s == State::Focused ? kAccent : s == State::Disabled ? kLightDisabled : kLight);
    c.Fill(b.Inset(1), s == State::Disabled ? kWellDisabled : kWell);
    if (s != State::Disabled) c.Bevel(b.Inset(1), kOutline, kWell);
}

// A groove around a transparent middle: frames and pictures.
void Groove(Canvas& c, Box b, int width) {
    for (int i = 0; i < width; ++i) c.Bevel(b.Inset(i), i == 0 ? kDark : kLight, i == 0 ? kLight : kDark);
}

// A bar filled with the accent, lighter along the top.
void AccentBar(Canvas& c, Box b) {
    c.Fill(b, kAccentDim);
    c.HLine(b.x, b.y, b.w, kAccent);
    c.Outline(b, kAccentDeep);
}

const std::vector<std::string> kArrowLeft = {"...#", "..##", ".###", "####", ".###", "..##", "...#"};
const std::vector<std::string> kArrowRight = {"#...", "##..", "###.", "####", "###.", "##..", "#..."};
const std::vector<std::string> kArrowUp = {"...#...", "..###..", ".#####.", "#######"};
const std::vector<std::string> kArrowDown = {"#######", ".#####.", "..###..", "...#..."};
const std::vector<std::string> kCheck = {"......##", ".....##.", "#...##..", "##.##...", ".###....", "..#....."};
const std::vector<std::string> kCross = {"##....##", ".##..##.", "..####..", "...##...",
                                         "..####..", ".##..##.", "##....##"};
const std::vector<std::string> kSquare = {"########", "########", "#......#", "#......#",
                                          "#......#", "#......#", "########"};
const std::vector<std::string> kPlus = {"..#..", "..#..", "#####", "..#..", "..#.."};
const std::vector<std::string> kMinus = {"#####"};

// ---- Icons ----
// 12 x 12 pictures for speed buttons and file lists: '#' in the light text
// colour, 'o' in the accent, 'x' in the outline colour, each light pixel with
// a dark shadow one pixel down and right so it stands off the button face.

const std::vector<std::string> kIconPlay = {"#.....", "##....", "###...", "####..", "#####.", "######",
                                            "#####.", "####..", "###...", "##....", "#....."};
const std::vector<std::string> kIconStop = {"#########", "#########", "#########", "#########", "#########",
                                            "#########", "#########", "#########", "#########"};
const std::vector<std::string> kIconPatternPlay = {"oooo..#....", "......##...", "oooo..###..",
                                                   "......####.", "oooo..#####", "......####.",
                                                   "oooo..###..", "......##...", "oooo..#...."};
const std::vector<std::string> kIconCursorPlay = {"oo.........", "oo.#.......", "oo.##......", "oo.###.....",
                                                  "oo.####....", "oo.#####...", "oo.####....", "oo.###.....",
                                                  "oo.##......", "oo.#.......", "oo........."};
const std::vector<std::string> kIconArrowUp = {"....##....", "...####...", "..######..", ".########.",
                                               "##########", "....##....", "....##....", "....##....",
                                               "....##....", "....##...."};
const std::vector<std::string> kIconPlus = {"....##....", "....##....", "....##....", "....##....", "##########",
                                            "##########", "....##....", "....##....", "....##....", "....##...."};
const std::vector<std::string> kIconMinus = {"##########", "##########"};
const std::vector<std::string> kIconFolder = {".####......", "#oooo#####.", "#ooooooooo#", "###########",
                                              "#ooooooooo#", "#ooooooooo#", "#ooooooooo#", "#ooooooooo#",
                                              "#ooooooooo#", "###########"};
const std::vector<std::string> kIconParentFolder = {".####......", "#oooo#####.", "#ooooooooo#", "###########",
                                                    "#ooooxoooo#", "#oooxxxooo#", "#ooxxxxxoo#", "#ooooxoooo#",
                                                    "#ooooxoooo#", "###########"};
const std::vector<std::string> kIconFile = {"######...", "#....##..", "#....#.#.", "#....####", "#.......#",
                                            "#.ooooo.#", "#.......#", "#.ooooo.#", "#.......#", "#.ooo...#",
                                            "#########"};
const std::vector<std::string> kIconDrive = {".#########.", "#.........#", "#.........#", "###########",
                                             "#.........#", "#.ooo...o.#", "#.........#", ".#########."};

// The glyph turned a quarter clockwise.
std::vector<std::string> TurnClockwise(const std::vector<std::string>& rows) {
    std::vector<std::string> out(rows.front().size(), std::string(rows.size(), '.'));
    for (size_t r = 0; r < rows.size(); ++r)
        for (size_t i = 0; i < rows[r].size(); ++i) out[i][rows.size() - 1 - r] = rows[r][i];
    return out;
}

void Icon(Canvas& c, Box b, const std::vector<std::string>& rows) {
    const int w = static_cast<int>(rows.front().size()), h = static_cast<int>(rows.size());
    // Centred in the box less the shadow's pixel.
    const int x = b.x + (b.w - 1 - w) / 2, y = b.y + (b.h - 1 - h) / 2;
    std::vector<std::string> shadow = rows;
    for (std::string& row : shadow)
        for (char& ch : row) ch = ch == '.' ? '.' : '#';
    c.Glyph(x + 1, y + 1, shadow, kOutline);
    for (const auto& [mark, colour] : {std::pair{'#', kText}, std::pair{'o', kAccent}, std::pair{'x', kOutline}}) {
        std::vector<std::string> layer = rows;
        for (std::string& row : layer)
            for (char& ch : row) ch = ch == mark ? '#' : '.';
        c.Glyph(x, y, layer, colour);
    }
}

void ArrowButton(Canvas& c, Box b, State s, const std::vector<std::string>& arrow) {
    Button(c, b, s);
    c.GlyphIn(s == State::Pressed ? Box{b.x + 1, b.y + 1, b.w, b.h} : b, arrow, GlyphColour(s));
}

void CheckBox(Canvas& c, Box b, State s, bool checked) {
    Well(c, b, s == State::Disabled ? State::Disabled : State::Normal);
    if (s == State::Hover) c.Outline(b, kAccentDim);
    if (checked) c.GlyphIn(b.Inset(1), kCheck, s == State::Disabled ? kTextDim : kAccent);
}

void SelectBox(Canvas& c, Box b, State s, bool selected) {
    const bool disabled = s == State::Disabled;
    c.Disc(b, b.w / 2.0f, disabled ? kLightDisabled : s == State::Hover ? kAccentDim : kLight);
    c.Disc(b, b.w / 2.0f - 1.0f, disabled ? kWellDisabled : kWell);
    if (selected) c.Disc(b, b.w / 2.0f - 3.5f, disabled ? kTextDim : kAccent);
}

// A button with a menu arrow in its right border.
void MenuButton(Canvas& c, Box b, State s) {
    Button(c, b, s);
    c.GlyphIn({b.x + b.w - 11, b.y, 8, b.h}, kArrowDown, GlyphColour(s));
}

void Slider(Canvas& c, Box b, bool horizontal) {
    const Box groove = horizontal ? Box{b.x, b.y + b.h / 2 - 2, b.w, 4} : Box{b.x + b.w / 2 - 2, b.y, 4, b.h};
    c.Fill(groove, kWell);
    c.Outline(groove, kLight);
}

void SliderGrip(Canvas& c, Box b, State s, bool horizontal) {
    Button(c, b, s);
    const Rgb mark = s == State::Disabled ? kTextDim : kAccent;
    if (horizontal) c.VLine(b.x + b.w / 2, b.y + 3, b.h - 6, mark);
    else c.HLine(b.x + 3, b.y + b.h / 2, b.w - 6, mark);
}

// Three short ridges in a corner, for dragging a window's size.
void ResizeGrip(Canvas& c, Box b) {
    for (int i = 0; i < 3; ++i) {
        for (int d = 0; d <= 2 + 3 * i; ++d) {
            c.Set(b.x + b.w - 1 - d, b.y + b.h - 3 - 3 * i + d, kLight);
            c.Set(b.x + b.w - 1 - d, b.y + b.h - 2 - 3 * i + d, kDark);
        }
    }
}

void TitleBar(Canvas& c, Box b, bool active) {
    const Rgb face = active ? kTitleActive : kTitleInactive;
    c.Fill(b, face);
    c.HLine(b.x, b.y, b.w, active ? kAccentDim : kLight);
    c.HLine(b.x, b.y + b.h - 1, b.w, kOutline);
    if (active) c.HLine(b.x, b.y + 1, b.w, 0x2F5E66);
}

// A horizontal or vertical groove in the middle of the piece.
void Separator(Canvas& c, Box b, bool horizontal, Rgb face) {
    c.Fill(b, face);
    if (horizontal) {
        c.HLine(b.x, b.y + b.h / 2 - 1, b.w, kDark);
        c.HLine(b.x, b.y + b.h / 2, b.w, kLight);
    } else {
        c.VLine(b.x + b.w / 2 - 1, b.y, b.h, kDark);
        c.VLine(b.x + b.w / 2, b.y, b.h, kLight);
    }
}

// ---- The pieces ----

struct Piece {
    const char* tag;   // item, hitem, vitem, sitem, col, hcol, vcol, scol or icon
    std::string name;  // without the prefix the tag gives it
    int w, h;
    std::string brd;   // the borders as written, empty for none
    std::function<void(Canvas&, Box)> draw;
    Box at{};
};

// The state suffixes, in the order the pieces list them.
struct Look {
    const char* suffix;
    State state;
};
constexpr Look kClickLooks[] = {
    {"", State::Normal}, {"_R", State::Hover}, {"_P", State::Pressed}, {"_D", State::Disabled}};

void AddButtonLooks(std::vector<Piece>& pieces, const std::string& name, int w, int h, const std::string& brd,
                    const std::function<void(Canvas&, Box, State)>& look, bool focus, bool toggles) {
    for (const Look& l : kClickLooks) {
        pieces.push_back({"item", name + l.suffix, w, h, brd, [=](Canvas& c, Box b) { look(c, b, l.state); }});
    }
    if (focus) pieces.push_back({"item", name + "_F", w, h, brd, [=](Canvas& c, Box b) { look(c, b, State::Focused); }});
    if (toggles) pieces.push_back({"item", name + "_T", w, h, brd, [=](Canvas& c, Box b) { look(c, b, State::On); }});
}

std::vector<Piece> Pieces() {
    std::vector<Piece> p;
    const auto button = [](Canvas& c, Box b, State s) { Button(c, b, s); };
    AddButtonLooks(p, "GT_BUTTON", 24, 20, "3,3,3,3", button, true, false);
    AddButtonLooks(p, "GT_MBUTTON", 32, 20, "3,12,3,3", MenuButton, true, false);
    AddButtonLooks(p, "GT_SPEEDBUTTON", 20, 20, "3,3,3,3", button, false, false);
    AddButtonLooks(p, "GT_CHECKBUTTON", 24, 20, "3,3,3,4", button, true, true);
    AddButtonLooks(p, "GT_SELECTBUTTON", 24, 20, "3,3,3,4", button, true, true);
    const auto close = [](Canvas& c, Box b, State s) { ArrowButton(c, b, s, kCross); };
    const auto maximize = [](Canvas& c, Box b, State s) { ArrowButton(c, b, s, kSquare); };
    AddButtonLooks(p, "GT_WINDOW_CLOSE", 16, 16, "", close, false, false);
    AddButtonLooks(p, "GT_WINDOW_MAXIMIZE", 16, 16, "", maximize, false, false);

    // Check and select boxes: unticked and ticked, each normal, hover and disabled.
    for (bool on : {false, true}) {
        for (const Look& l : kClickLooks) {
            if (l.state == State::Pressed) continue;
            const std::string suffix = std::string(on ? "_T" : "") + l.suffix;
            p.push_back({"item", "GT_CHECKBOX" + suffix, 13, 13, "",
                         [=](Canvas& c, Box b) { CheckBox(c, b, l.state, on); }});
            p.push_back({"item", "GT_SELECTBOX" + suffix, 13, 13, "",
                         [=](Canvas& c, Box b) { SelectBox(c, b, l.state, on); }});
        }
    }

    // Windows and menus.
    p.push_back({"item", "WINDOW", 24, 24, "3,3,3,3", [](Canvas& c, Box b) {
                     c.Outline(b, kOutline);
                     c.Bevel(b.Inset(1), kLight, kDark);
                     c.Fill(b.Inset(2), kBody);
                 }});
    p.push_back({"hitem", "WINDOW_TITLE", 24, 20, "3,3", [](Canvas& c, Box b) { TitleBar(c, b, true); }});
    p.push_back({"hitem", "WINDOW_TITLE_I", 24, 20, "3,3", [](Canvas& c, Box b) { TitleBar(c, b, false); }});
    p.push_back({"item", "GT_WINDOW_RESIZE", 12, 12, "", ResizeGrip});
    p.push_back({"item", "MENU", 24, 24, "2,2,2,2", [](Canvas& c, Box b) {
                     c.Outline(b, kOutline);
                     c.Fill(b.Inset(1), kFace);
                     c.Bevel(b.Inset(1), kLight, kDark);
                 }});
    p.push_back({"hitem", "MENU_BAR", 24, 20, "1,1", [](Canvas& c, Box b) {
                     c.Fill(b, kBody);
                     c.HLine(b.x, b.y + b.h - 1, b.w, kOutline);
                 }});
    p.push_back({"hitem", "MENU_BAR_ENTRY_S", 24, 20, "2,2", [](Canvas& c, Box b) {
                     c.Fill(b, kAccentDeep);
                     c.HLine(b.x, b.y + b.h - 2, b.w, kAccent);
                 }});
    p.push_back({"hitem", "MENU_ENTRY_S", 24, 18, "2,2", [](Canvas& c, Box b) {
                     c.Fill(b, kAccentDeep);
                     c.VLine(b.x, b.y, b.h, kAccent);
                 }});
    p.push_back({"hitem", "MENU_SEPARATOR", 24, 6, "2,2", [](Canvas& c, Box b) { Separator(c, b, true, kFace); }});
    p.push_back({"sitem", "MENU_CHECK", 10, 10, "", [](Canvas& c, Box b) { c.GlyphIn(b, kCheck, kAccent); }});
    p.push_back({"sitem", "MENU_CHECK_D", 10, 10, "", [](Canvas& c, Box b) { c.GlyphIn(b, kCheck, kTextDim); }});
    p.push_back({"sitem", "MENU_ARROW", 6, 10, "", [](Canvas& c, Box b) { c.GlyphIn(b, kArrowRight, kText); }});
    p.push_back({"sitem", "MENU_ARROW_S", 6, 10, "", [](Canvas& c, Box b) { c.GlyphIn(b, kArrowRight, kAccent); }});

    // Frames, pictures and spacers.
    p.push_back({"item", "GT_FRAME", 12, 12, "2,2,2,2", [](Canvas& c, Box b) { Groove(c, b, 2); }});
    p.push_back({"item", "GT_IMAGE", 12, 12, "1,1,1,1", [](Canvas& c, Box b) { c.Outline(b, kDark); }});
    p.push_back({"item", "GT_HSPACE_BAR", 24, 6, "2,2,2,2", [](Canvas& c, Box b) { Separator(c, b, true, kBody); }});
    p.push_back({"item", "GT_VSPACE_BAR", 6, 24, "2,2,2,2", [](Canvas& c, Box b) { Separator(c, b, false, kBody); }});
    p.push_back({"item", "GT_HSPACE_BAR_R", 24, 6, "2,2,2,2",
                 [](Canvas& c, Box b) { Separator(c, b, true, kFaceHover); }});
    p.push_back({"item", "GT_VSPACE_BAR_R", 6, 24, "2,2,2,2",
                 [](Canvas& c, Box b) { Separator(c, b, false, kFaceHover); }});

    // Gauges and the progress bar: a well and the bar that fills it.
    const auto well = [](Canvas& c, Box b) { Well(c, b, State::Normal); };
    p.push_back({"item", "GT_HGAUGE", 24, 10, "2,2,2,2", well});
    p.push_back({"hitem", "GT_HGAUGE_BAR", 12, 6, "1,1", AccentBar});
    p.push_back({"item", "GT_VGAUGE", 10, 24, "2,2,2,2", well});
    p.push_back({"vitem", "GT_VGAUGE_BAR", 6, 12, "1,1", AccentBar});
    p.push_back({"item", "GT_PROGRESSBAR", 24, 14, "2,2,2,2", well});
    p.push_back({"hitem", "GT_PROGRESSBAR_BAR", 12, 10, "1,1", AccentBar});

    // Scroll bars: the trough, both arrows and the grip.
    for (bool horizontal : {true, false}) {
        const std::string kind = horizontal ? "GT_HSCRBAR" : "GT_VSCRBAR";
        p.push_back({"item", kind, horizontal ? 24 : 14, horizontal ? 14 : 24, "1,1,1,1", well});
        for (const Look& l : kClickLooks) {
            if (l.state == State::Hover) continue;
            const auto& first = horizontal ? kArrowLeft : kArrowUp;
            const auto& second = horizontal ? kArrowRight : kArrowDown;
            p.push_back({"sitem", kind + "_ARROW" + l.suffix, 14, 14, "",
                         [=](Canvas& c, Box b) { ArrowButton(c, b, l.state, first); }});
            p.push_back({"sitem", kind + "_ARROW2" + l.suffix, 14, 14, "",
                         [=](Canvas& c, Box b) { ArrowButton(c, b, l.state, second); }});
        }
        for (const Look& l : kClickLooks) {
            if (l.state == State::Disabled) continue;
            p.push_back({horizontal ? "hitem" : "vitem", kind + "_GRIP" + l.suffix, horizontal ? 20 : 14,
                         horizontal ? 14 : 20, "4,4", [=](Canvas& c, Box b) { Button(c, b, l.state); }});
        }
    }

    // Sliders: the track and the grip.
    for (bool horizontal : {true, false}) {
        const std::string kind = horizontal ? "GT_HSLIDER" : "GT_VSLIDER";
        p.push_back({"item", kind, horizontal ? 24 : 14, horizontal ? 14 : 24, horizontal ? "3,3,5,5" : "5,5,3,3",
                     [=](Canvas& c, Box b) { Slider(c, b, horizontal); }});
        for (const Look& l : kClickLooks) {
            p.push_back({"sitem", kind + "_GRIP" + l.suffix, horizontal ? 10 : 14, horizontal ? 14 : 10, "",
                         [=](Canvas& c, Box b) { SliderGrip(c, b, l.state, horizontal); }});
        }
    }

    // Text entries: the field, its cursor and selection, the number steppers.
    for (const char* kind : {"GT_TEXTLINE", "GT_TEXTFIELD"}) {
        for (const Look& l : {Look{"", State::Normal}, Look{"_F", State::Focused}, Look{"_D", State::Disabled}}) {
            p.push_back({"item", std::string(kind) + l.suffix, 24, 20, "3,3,3,3",
                         [=](Canvas& c, Box b) { Well(c, b, l.state); }});
        }
        p.push_back({"scol", std::string(kind) + "_CUR", 1, 14, "", [](Canvas& c, Box b) { c.Fill(b, kAccent); }});
        p.push_back({"col", std::string(kind) + "_SEL", 8, 8, "", [](Canvas& c, Box b) { c.Fill(b, kAccentDeep); }});
    }
    for (const Look& l : {Look{"", State::Normal}, Look{"_P", State::Pressed}, Look{"_D", State::Disabled}}) {
        p.push_back({"sitem", std::string("GT_TEXTLINE_PLUS") + l.suffix, 12, 10, "",
                     [=](Canvas& c, Box b) { ArrowButton(c, b, l.state, kPlus); }});
        p.push_back({"sitem", std::string("GT_TEXTLINE_MINUS") + l.suffix, 12, 10, "",
                     [=](Canvas& c, Box b) { ArrowButton(c, b, l.state, kMinus); }});
    }

    // Lists: the well, line colours and column headers.
    p.push_back({"item", "GT_LIST", 24, 24, "2,2,2,2", well});
    p.push_back({"item", "GT_LIST_F", 24, 24, "2,2,2,2", [](Canvas& c, Box b) { Well(c, b, State::Focused); }});
    const std::pair<const char*, Rgb> lines[] = {{"GT_LIST_LINE", kListLine},
                                                 {"GT_LIST_LINE2", kListLine2},
                                                 {"GT_LIST_LINE_SEL", kAccentDeep},
                                                 {"GT_LIST_LINE_SEL_I", kSelectionInactive}};
    for (const auto& [name, colour] : lines)
        p.push_back({"col", name, 8, 8, "", [colour](Canvas& c, Box b) { c.Fill(b, colour); }});
    for (const Look& l : {Look{"", State::Normal}, Look{"_R", State::Hover}, Look{"_P", State::Pressed}}) {
        p.push_back({"hitem", std::string("GT_LIST_COLUMN") + l.suffix, 24, 16, "3,3",
                     [=](Canvas& c, Box b) { Button(c, b, l.state); }});
    }

    // Icons, by the names the program asks for them.
    const auto right = TurnClockwise(kIconArrowUp);
    const auto down = TurnClockwise(right);
    const std::pair<const char*, std::vector<std::string>> icons[] = {
        {"play", kIconPlay},
        {"stop", kIconStop},
        {"pattern_play", kIconPatternPlay},
        {"cursor_play", kIconCursorPlay},
        {"arrow_up", kIconArrowUp},
        {"arrow_right", right},
        {"arrow_down", down},
        {"arrow_left", TurnClockwise(down)},
        {"plus", kIconPlus},
        {"minus", kIconMinus},
        {"folder", kIconFolder},
        {"parent_folder", kIconParentFolder},
        {"file", kIconFile},
        {"drive", kIconDrive},
    };
    for (const auto& [name, rows] : icons)
        p.push_back({"icon", name, 12, 12, "", [rows](Canvas& c, Box b) { Icon(c, b, rows); }});
    return p;
}

// Packs the pieces into rows of the given width, 2 pixels apart; the picture's height.
int Pack(std::vector<Piece>& pieces, int width) {
    constexpr int kGap = 2;
    int x = kGap, y = kGap, rowHeight = 0;
    for (Piece& piece : pieces) {
        if (x + piece.w + kGap > width) x = kGap, y += rowHeight + kGap, rowHeight = 0;
        piece.at = {x, y, piece.w, piece.h};
        x += piece.w + kGap;
        rowHeight = std::max(rowHeight, piece.h);
    }
    return y + rowHeight + kGap;
}

std::string SkinText(const std::vector<Piece>& pieces) {
    std::string text = "<skin name=\"Sondrel\" author=\"Sondrel\" picture=\"default.png\">\n"
                       "<!-- Drawn and written by make-skin (tools/make_skin.cpp): run \"make skin\" to rebuild. -->\n";
    for (const Piece& p : pieces) {
        text += "<" + std::string(p.tag) + " name=\"" + p.name + "\" rect=\"" + std::to_string(p.at.x) + "," +
                std::to_string(p.at.y) + "," + std::to_string(p.at.w) + "," + std::to_string(p.at.h) + "\"";
        if (!p.brd.empty()) text += " brd=\"" + p.brd + "\"";
        if (p.tag == std::string("icon")) text += " ctype=\"single\"";
        text += " />\n";
    }
    text += R"(<font name="default" filename="DejaVuSans.ttf" size="12" />
<font name="bold" filename="DejaVuSans.ttf" size="12" embolden="1" />
<font name="small" filename="DejaVuSans.ttf" size="11" />
<font name="pattern" filename="DejaVuSansMono.ttf" size="12" mono="1" />
<include_themes name="default.theme" />
<cfg name="window_title" height="20" text_x="6" text_y="3">
<cfg name="window_body" padding="4">
<cfg name="menu_bar" height="20" text_x="8" text_y="3" spacing="12">
<cfg name="list_line" height="16" text_x="3" text_y="1">
<cfg name="text_entry" pad_x="3" pad_y="2" cursor_width="1">
<cfg name="button_text" offset_x="0" offset_y="0" pressed_shift="1">
<cfg name="scroll_bar" size="14" grip_min="10">
</skin>
)";
    return text;
}

std::string Argb(Rgb c) {
    char text[16];
    std::snprintf(text, sizeof text, "$FF%06X", c);
    return text;
}

std::string ThemeText() {
    const std::pair<const char*, std::string> colours[] = {
        {"background", Argb(kBackground)},
        {"window_body", Argb(kBody)},
        {"window_border", Argb(kOutline)},
        {"title_active", Argb(kTitleActive)},
        {"title_inactive", Argb(kTitleInactive)},
        {"title_text", Argb(kText)},
        {"text", Argb(kText)},
        {"text_disabled", Argb(kTextDim)},
        {"text_selected", "$FFFFFFFF"},
        {"text_highlight", Argb(kAccent)},
        {"selection", Argb(kAccentDeep)},
        {"selection_inactive", Argb(kSelectionInactive)},
        {"hover", "alphaset(text, $20)"},
        {"focus_ring", Argb(kAccent)},
        {"bevel_light", Argb(kLight)},
        {"bevel_dark", Argb(kDark)},
        {"list_line_odd", Argb(kListLine)},
        {"list_line_even", Argb(kListLine2)},
        {"pattern_background", Argb(0x161C28)},
        {"pattern_note", Argb(0xE3E8F0)},
        {"pattern_instrument", Argb(0x8FB4E0)},
        {"pattern_volume", Argb(0xA8D08F)},
        {"pattern_command", Argb(0xE0B07A)},
        {"pattern_cursor", "alphaset(text_highlight, $60)"},
        {"pattern_playing_line", Argb(0x2A3F4A)},
        {"pattern_tact_line", "lighten(pattern_background, 16)"},
        {"pattern_beat_line", "lighten(pattern_background, 8)"},
        {"meter_low", Argb(kAccent)},
        {"meter_high", Argb(0xE07A6E)},
    };
    std::string text = "; Written by make-skin (tools/make_skin.cpp): run \"make skin\" to rebuild.\n"
                       "theme {\nname = \"Sondrel Night\"\nauthor = \"Sondrel\"\ncolors {\n";
    for (const auto& [name, value] : colours) text += std::string(name) + " = " + value + "\n";
    return text + "}\n}\n";
}

bool WriteText(const std::filesystem::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    return static_cast<bool>(out.flush());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-skin DIR   (writes default.png, default.skin and themes/default.theme)\n");
        return 2;
    }
    const std::filesystem::path dir = argv[1];
    std::error_code error;
    std::filesystem::create_directories(dir / "themes", error);

    constexpr int kWidth = 256;
    std::vector<Piece> pieces = Pieces();
    Canvas canvas(kWidth, Pack(pieces, kWidth));
    for (const Piece& piece : pieces) piece.draw(canvas, piece.at);

    std::vector<uint8_t> png;
    const int height = Pack(pieces, kWidth);
    if (!sondrel::tools::EncodePng(kWidth, height, canvas.Rgba(), png)) {
        std::fprintf(stderr, "make-skin: couldn't compress the picture\n");
        return 1;
    }
    if (!sondrel::tools::WriteFileBytes((dir / "default.png").string(), png) ||
        !WriteText(dir / "default.skin", SkinText(pieces)) ||
        !WriteText(dir / "themes" / "default.theme", ThemeText())) {
        std::fprintf(stderr, "make-skin: couldn't write into %s\n", argv[1]);
        return 1;
    }
    return 0;
}
