#include "ui/skin/skin_names.h"

#include <algorithm>
#include <iterator>

namespace sondrel {

std::vector<TokenizerKeyword> ThemeColourKeywords() {
    std::vector<TokenizerKeyword> keywords;
    for (int i = 0; i < kThemeColourCount; ++i) keywords.push_back({std::string(kThemeColourNames[i]), i});
    return keywords;
}

const std::vector<SkinConfigName>& SkinConfigNames() {
    static const std::vector<SkinConfigName> names = {
        {"window_title", {{"height", 20}, {"text_x", 6}, {"text_y", 3}}},
        {"window_body", {{"padding", 4}}},
        {"menu_bar", {{"height", 20}, {"text_x", 8}, {"text_y", 3}, {"spacing", 12}}},
        {"list_line", {{"height", 16}, {"text_x", 3}, {"text_y", 1}}},
        {"text_entry", {{"pad_x", 3}, {"pad_y", 2}, {"cursor_width", 1}}},
        {"button_text", {{"offset_x", 0}, {"offset_y", 0}, {"pressed_shift", 1}}},
        {"scroll_bar", {{"size", 14}, {"grip_min", 10}}},
    };
    return names;
}

const SkinConfigName* FindSkinConfigName(std::string_view name) {
    const auto& names = SkinConfigNames();
    const auto found = std::find_if(names.begin(), names.end(), [&](const auto& n) { return n.name == name; });
    return found == names.end() ? nullptr : &*found;
}

const std::array<std::string_view, kSkinWidgetTypeCount>& SkinWidgetTypeNames() {
    static constexpr std::array<std::string_view, kSkinWidgetTypeCount> kNames = {
        "WINDOW",          "MENU",            "GT_BUTTON",      "GT_MBUTTON",     "GT_WINDOW_CLOSE",
        "GT_WINDOW_MAXIMIZE", "GT_WINDOW_RESIZE", "GT_SPEEDBUTTON", "GT_CHECKBOX",  "GT_SELECTBOX",
        "GT_CHECKBUTTON",  "GT_SELECTBUTTON", "GT_FRAME",       "GT_HGAUGE",      "GT_VGAUGE",
        "GT_PROGRESSBAR",  "GT_HSCRBAR",      "GT_VSCRBAR",     "GT_HSLIDER",     "GT_VSLIDER",
        "GT_TEXTLINE",     "GT_TEXTFIELD",    "GT_LIST",        "GT_IMAGE",       "GT_HSPACE_BAR",
        "GT_VSPACE_BAR",
    };
    return kNames;
}

namespace {

// Whether name begins with the type name as a whole: the name ends there or
// goes on with a part ("_TITLE") or a variant digit.
bool BeginsWithType(std::string_view name, std::string_view type) {
    if (!name.starts_with(type)) return false;
    if (name.size() == type.size()) return true;
    const char next = name[type.size()];
    return next == '_' || (next >= '0' && next <= '9');
}

}  // namespace

std::string TableItemName(std::string_view name) {
    constexpr std::string_view kOldPrefix = "GT_";
    if (!name.starts_with(kOldPrefix)) return std::string(name);
    // The longest type name the item's name begins with, in either spelling,
    // so that GT_WINDOW_CLOSE stays the close box and GT_WINDOW_TITLE becomes
    // WINDOW_TITLE.
    std::size_t longest = 0;
    bool old = false;
    for (std::string_view type : SkinWidgetTypeNames()) {
        const bool prefixed = type.starts_with(kOldPrefix);
        const std::string spelled = prefixed ? std::string(type) : std::string(kOldPrefix) + std::string(type);
        if (spelled.size() > longest && BeginsWithType(name, spelled)) {
            longest = spelled.size();
            old = !prefixed;
        }
    }
    return old ? std::string(name.substr(kOldPrefix.size())) : std::string(name);
}

namespace {

// The basic look of each widget kind, the pressed, disabled and rollover
// looks of the ones that are clicked, and the parts without which a kind
// can't be drawn.
SkinRequirements MakeRequirements() {
    SkinRequirements required;
    const char* const clicked[] = {"GT_BUTTON",      "GT_MBUTTON",     "GT_WINDOW_CLOSE", "GT_WINDOW_MAXIMIZE",
                                   "GT_SPEEDBUTTON", "GT_CHECKBUTTON", "GT_SELECTBUTTON"};
    for (std::string_view kind : SkinWidgetTypeNames()) required.items.push_back("B" + std::string(kind));
    for (const char* kind : clicked) {
        required.items.push_back(std::string("B") + kind + "_P");
        required.items.push_back(std::string("B") + kind + "_D");
        required.items.push_back(std::string("B") + kind + "_R");
    }
    const char* const parts[] = {
        "BGT_CHECKBOX_T",      "BGT_SELECTBOX_T",     "BGT_CHECKBUTTON_T",  "BGT_SELECTBUTTON_T",
        "HWINDOW_TITLE",       "HWINDOW_TITLE_I",     "HMENU_BAR",          "HMENU_ENTRY_S",
        "HMENU_SEPARATOR",     "SMENU_CHECK",         "SMENU_ARROW",        "HGT_HGAUGE_BAR",
        "VGT_VGAUGE_BAR",      "HGT_PROGRESSBAR_BAR", "SGT_HSCRBAR_ARROW",  "SGT_HSCRBAR_ARROW2",
        "HGT_HSCRBAR_GRIP",    "SGT_VSCRBAR_ARROW",   "SGT_VSCRBAR_ARROW2", "VGT_VSCRBAR_GRIP",
        "SGT_HSLIDER_GRIP",    "SGT_VSLIDER_GRIP",    "HGT_LIST_COLUMN",
    };
    required.items.insert(required.items.end(), std::begin(parts), std::end(parts));
    required.colourAreas = {"BGT_LIST_LINE", "BGT_LIST_LINE2", "BGT_LIST_LINE_SEL", "SGT_TEXTLINE_CUR",
                            "BGT_TEXTLINE_SEL"};
    required.fonts = {"default", "pattern"};
    for (std::string_view icon : {kIconPlay, kIconStop, kIconPatternPlay, kIconCursorPlay, kIconArrowUp, kIconArrowDown,
                                  kIconArrowLeft, kIconArrowRight, kIconPlus, kIconMinus, kIconFolder,
                                  kIconParentFolder, kIconFile, kIconDrive}) {
        required.icons.emplace_back(icon);
    }
    for (const auto& config : SkinConfigNames()) required.configs.emplace_back(config.name);
    return required;
}

}  // namespace

const SkinRequirements& RequiredSkinKeys() {
    static const SkinRequirements required = MakeRequirements();
    return required;
}

}  // namespace sondrel
