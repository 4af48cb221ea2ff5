#pragma once
// The names the toolkit and its skins agree on, in one place: the colours of
// a theme (the keyword table of theme files), the configuration entries a
// skin may set with their numeric attributes, and the keys every skin must
// define for the widgets to draw.
//
// Item and colour area names read <TYPE>[_<PART>][2][_<STATE>], behind the
// prefix their entry kind gives them (B item or col, H hitem or hcol, V vitem
// or vcol, S sitem or scol). TYPE is the widget kind's type name (WINDOW,
// MENU, GT_BUTTON, GT_HSCRBAR, ...), PART a piece of it (ARROW, GRIP, BAR, LINE, CUR, ...), and "2" the second
// of a pair: the right or lower scroll arrow, the other colour of alternating
// list lines. The state suffixes:
//   _P pressed: the mouse button is held on it
//   _D disabled: it takes no input
//   _R rollover: the mouse is over it
//   _S selected: the chosen entry of a menu or list
//   _I inactive: its window does not have the focus
//   _T ticked: a check box, select box or toggle button that is on
//   _F focused: it takes the keyboard input
// A ticked look may carry a further state (GT_CHECKBOX_T_D).

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "ui/tokenizer.h"

namespace sondrel {

// Indexes into a theme's colour table; kThemeColourNames holds their names
// in the same order.
enum class ThemeColour : int {
    Background,
    WindowBody,
    WindowBorder,
    TitleActive,
    TitleInactive,
    TitleText,
    Text,
    TextDisabled,
    TextSelected,
    TextHighlight,
    Selection,
    SelectionInactive,
    Hover,
    FocusRing,
    BevelLight,
    BevelDark,
    ListLineOdd,
    ListLineEven,
    PatternBackground,
    PatternNote,
    PatternInstrument,
    PatternVolume,
    PatternCommand,
    PatternCursor,
    PatternPlayingLine,
    PatternTactLine,
    PatternBeatLine,
    MeterLow,
    MeterHigh,
    Count
};

constexpr int kThemeColourCount = static_cast<int>(ThemeColour::Count);

inline constexpr std::array<std::string_view, kThemeColourCount> kThemeColourNames = {
    "background",      "window_body",       "window_border",     "title_active",     "title_inactive",
    "title_text",      "text",              "text_disabled",     "text_selected",    "text_highlight",
    "selection",       "selection_inactive", "hover",            "focus_ring",       "bevel_light",
    "bevel_dark",      "list_line_odd",     "list_line_even",    "pattern_background", "pattern_note",
    "pattern_instrument", "pattern_volume", "pattern_command",   "pattern_cursor",   "pattern_playing_line",
    "pattern_tact_line", "pattern_beat_line", "meter_low",       "meter_high",
};

// The colour names as a tokenizer keyword table, each numbered by its index.
std::vector<TokenizerKeyword> ThemeColourKeywords();

// A configuration entry's numeric attribute and the value it has when the
// skin leaves it out.
struct SkinConfigAttribute {
    std::string_view name;
    int defaultValue = 0;
};

struct SkinConfigName {
    std::string_view name;
    std::vector<SkinConfigAttribute> attributes;  // in the order a skin writes them
};

// Every configuration name the toolkit knows; null when name is not one.
const std::vector<SkinConfigName>& SkinConfigNames();
const SkinConfigName* FindSkinConfigName(std::string_view name);

// The keys a skin must define. Items and colour areas by their full key
// (prefix and name), fonts, icons and configuration entries by name.
struct SkinRequirements {
    std::vector<std::string> items;
    std::vector<std::string> colourAreas;
    std::vector<std::string> fonts;
    std::vector<std::string> icons;
    std::vector<std::string> configs;
};

// The icons the program shows on its speed buttons and in its file lists.
inline constexpr std::string_view kIconPlay = "play";
inline constexpr std::string_view kIconStop = "stop";
inline constexpr std::string_view kIconPatternPlay = "pattern_play";
inline constexpr std::string_view kIconCursorPlay = "cursor_play";
inline constexpr std::string_view kIconArrowUp = "arrow_up";
inline constexpr std::string_view kIconArrowDown = "arrow_down";
inline constexpr std::string_view kIconArrowLeft = "arrow_left";
inline constexpr std::string_view kIconArrowRight = "arrow_right";
inline constexpr std::string_view kIconPlus = "plus";
inline constexpr std::string_view kIconMinus = "minus";
inline constexpr std::string_view kIconFolder = "folder";
inline constexpr std::string_view kIconParentFolder = "parent_folder";
inline constexpr std::string_view kIconFile = "file";
inline constexpr std::string_view kIconDrive = "drive";

// What the toolkit's widgets look up.
const SkinRequirements& RequiredSkinKeys();

// The skin's widget type names ("WINDOW", "MENU", "GT_BUTTON" ... "GT_VSPACE_BAR")
// in the order of its type table; the toolkit numbers its widget kinds the
// same way.
constexpr int kSkinWidgetTypeCount = 26;
const std::array<std::string_view, kSkinWidgetTypeCount>& SkinWidgetTypeNames();

// An item or colour name as the type table spells it. Older skins wrote the
// window and menu kinds with the GT_ prefix the other kinds have
// (GT_WINDOW, GT_MENU_BAR); such a name comes back as the table's (WINDOW,
// MENU_BAR), every other name as it is.
std::string TableItemName(std::string_view name);

}  // namespace sondrel
