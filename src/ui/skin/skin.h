#pragma once
// A loaded skin as plain data: the pieces of the skin picture that widgets are
// drawn from, the colour areas, fonts, icons, configuration values and themes,
// each looked up by its key. A failed lookup throws ParseException naming the
// missing key.

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/gorb.h"
#include "ui/skin/skin_names.h"

namespace sondrel {

struct SkinBorders {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
};

// A colour area: a stretchable piece of the picture. The key is the entry's
// prefix (B, H, V or S) followed by its name.
struct SkinColourArea {
    std::string key;
    Gorb_Rect rect;
    SkinBorders borders;
    int innerWidth = 0;   // rect.w less the left and right borders
    int innerHeight = 0;  // rect.h less the top and bottom borders
    int hvr = 0;
    int num = 1;
    bool defined = false;
};

// An item: a colour area with extension values and animation settings.
struct SkinItem : SkinColourArea {
    std::array<int, 4> ext{};
    std::array<int, 2> anim{1, 255};
};

struct SkinFont {
    std::string name;
    std::string fileName;  // in the skin's "fonts" directory
    int size = 12;
    int embolden = 0;
    bool mono = false;
    bool defined = false;
    int line = 0;  // where its entry stands in the skin file, for messages
};

enum class SkinIconType { Single, Multi };  // one image, or several side by side

struct SkinIcon {
    std::string name;
    Gorb_Rect rect;
    SkinIconType type = SkinIconType::Single;
};

struct SkinConfig {
    std::string name;
    std::map<std::string, int, std::less<>> values;  // every attribute of its name
    bool defined = false;

    // Throws InternalException for an attribute the name doesn't have.
    int Value(std::string_view attribute) const;
};

struct Theme {
    std::string name;
    std::string author;
    std::array<uint32_t, kThemeColourCount> colours{};  // ARGB, by ThemeColour

    uint32_t Colour(ThemeColour colour) const { return colours[static_cast<int>(colour)]; }
};

struct Skin {
    std::string name;
    std::string author;
    std::string picture;  // file name in the skin directory
    std::map<std::string, SkinItem, std::less<>> items;
    std::map<std::string, SkinColourArea, std::less<>> colourAreas;
    std::map<std::string, SkinFont, std::less<>> fonts;
    std::map<std::string, SkinIcon, std::less<>> icons;
    std::map<std::string, SkinConfig, std::less<>> configs;
    std::vector<Theme> themes;  // in the order the skin includes them
    std::size_t activeTheme = 0;

    const SkinItem& Item(std::string_view key) const;
    const SkinColourArea& ColourArea(std::string_view key) const;
    const SkinFont& Font(std::string_view name) const;
    const SkinIcon& Icon(std::string_view name) const;
    const SkinConfig& Config(std::string_view name) const;
    // The active theme's colour by index; 0 when the skin has no theme.
    uint32_t Colour(int index) const;
    uint32_t Colour(ThemeColour colour) const { return Colour(static_cast<int>(colour)); }
};

// The message of a lookup that failed: the message, and on the next line the
// detail with the key in place of its "%s" (no detail when it is empty).
std::string SkinLookupMessage(std::string_view message, std::string_view detail, std::string_view key);

// Throws the lookup failure for the configuration name.
[[noreturn]] void ThrowConfigNotFound(std::string_view name);

}  // namespace sondrel
