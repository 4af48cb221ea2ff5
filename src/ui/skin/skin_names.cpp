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
        "GT_WINDOW",       "GT_MENU",         "GT_BUTTON",      "GT_MBUTTON",     "GT_WINDOW_CLOSE",
        "GT_WINDOW_MAXIMIZE", "GT_WINDOW_RESIZE", "GT_SPEEDBUTTON", "GT_CHECKBOX",  "GT_SELECTBOX",
        "GT_CHECKBUTTON",  "GT_SELECTBUTTON", "GT_FRAME",       "GT_HGAUGE",      "GT_VGAUGE",
        "GT_PROGRESSBAR",  "GT_HSCRBAR",      "GT_VSCRBAR",     "GT_HSLIDER",     "GT_VSLIDER",
        "GT_TEXTLINE",     "GT_TEXTFIELD",    "GT_LIST",        "GT_IMAGE",       "GT_HSPACE_BAR",
        "GT_VSPACE_BAR",
    };
    return kNames;
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
        "HGT_WINDOW_TITLE",    "HGT_WINDOW_TITLE_I",  "HGT_MENU_BAR",       "HGT_MENU_ENTRY_S",
        "HGT_MENU_SEPARATOR",  "SGT_MENU_CHECK",      "SGT_MENU_ARROW",     "HGT_HGAUGE_BAR",
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
