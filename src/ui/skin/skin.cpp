#include "ui/skin/skin.h"

#include "model/exception.h"

namespace sondrel {

namespace {

template <typename Map>
const typename Map::mapped_type& Find(const Map& map, std::string_view key, std::string_view message,
                                      std::string_view detail = {}) {
    const auto found = map.find(key);
    if (found == map.end()) throw ParseException(SkinLookupMessage(message, detail, key));
    return found->second;
}

}  // namespace

std::string SkinLookupMessage(std::string_view message, std::string_view detail, std::string_view key) {
    std::string text(message);
    if (detail.empty()) return text;
    std::string filled(detail);
    if (const auto at = filled.find("%s"); at != std::string::npos) filled.replace(at, 2, key);
    return text + "\n" + filled;
}

void ThrowConfigNotFound(std::string_view name) {
    throw ParseException(SkinLookupMessage("Config name not found", "cfg.name: %s\n", name));
}

int SkinConfig::Value(std::string_view attribute) const {
    const auto found = values.find(attribute);
    if (found == values.end()) {
        throw InternalException("SkinConfig::Value(): " + name + " has no " + std::string(attribute));
    }
    return found->second;
}

const SkinItem& Skin::Item(std::string_view key) const {
    return Find(items, key, "Skin item name not found", "skit_data_.name: %s");
}

const SkinColourArea& Skin::ColourArea(std::string_view key) const {
    return Find(colourAreas, key, "Skin col name not found", "scol_data_.name: %s");
}

const SkinFont& Skin::Font(std::string_view name) const { return Find(fonts, name, "Font name not found"); }

const SkinIcon& Skin::Icon(std::string_view name) const { return Find(icons, name, "Icon name not found"); }

const SkinConfig& Skin::Config(std::string_view name) const {
    const auto found = configs.find(name);
    if (found == configs.end()) ThrowConfigNotFound(name);
    return found->second;
}

uint32_t Skin::Colour(int index) const {
    if (activeTheme >= themes.size() || index < 0 || index >= kThemeColourCount) return 0;
    return themes[activeTheme].colours[static_cast<std::size_t>(index)];
}

}  // namespace sondrel
