#include "ui/skin/skin_reader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "model/exception.h"
#include "ui/skin/skin_files.h"
#include "ui/skin/theme_reader.h"
#include "ui/tokenizer.h"

namespace sondrel {

namespace {

// An entry kind: its tag, the key prefix it gives names, and which of the
// left, right, top and bottom borders its "brd" attribute lists.
struct EntryKind {
    const char* tag;
    char prefix;
    std::array<bool, 4> borders;
};

constexpr EntryKind kItemKinds[] = {{"item", 'B', {true, true, true, true}},
                                    {"hitem", 'H', {true, true, false, false}},
                                    {"vitem", 'V', {false, false, true, true}},
                                    {"sitem", 'S', {false, false, false, false}}};
constexpr EntryKind kColourKinds[] = {{"col", 'B', {true, true, true, true}},
                                      {"hcol", 'H', {true, true, false, false}},
                                      {"vcol", 'V', {false, false, true, true}},
                                      {"scol", 'S', {false, false, false, false}}};

Gorb_Rect ToRect(const std::vector<int>& v) { return {v[0], v[1], v[2], v[3]}; }

class SkinParser {
public:
    SkinParser(const std::filesystem::path& directory, std::string_view text) : directory_(directory) {
        tokenizer_.Open(text);
        tokenizer_.SetLineEndTokens(false);
        tokenizer_.SetXmlComments(true);
    }

    SkinFile Read() {
        SkinFile file;
        ReadHeader(file);
        while (ReadEntry(file.skin)) {
        }
        if (!tokenizer_.IsTagClose("skin")) throw ParseException("Parse error in skin file");
        return file;
    }

private:
    void ReadHeader(SkinFile& file) {
        tokenizer_.MatchSpecial('<');
        tokenizer_.MatchName("skin");
        file.skin.name = tokenizer_.ReadKeyString("name");
        file.skin.author = tokenizer_.ReadKeyString("author");
        file.skin.picture = tokenizer_.ReadKeyString("picture");
        tokenizer_.MatchSpecial('>');
        file.picture = Gorb_CreateSurface(directory_ / file.skin.picture);
        file.picture->Convert(kGorbFormatRgb565, kGorbConvertColourKey, 0xFFFF00FF);
    }

    // One entry of any kind; false when none stands next.
    bool ReadEntry(Skin& skin) {
        for (const EntryKind& kind : kItemKinds) {
            if (!tokenizer_.IsTagOpen(kind.tag)) continue;
            SkinItem item;
            const bool oldName = ReadArea(kind, item);
            if (auto ext = OptionalNumbers("ext", 4)) std::copy(ext->begin(), ext->end(), item.ext.begin());
            if (auto anim = OptionalNumbers("anim", 2)) item.anim = {(*anim)[0], (*anim)[1]};
            ReadNumAndEnd(item);
            Store(skin.items, std::move(item), oldName);
            return true;
        }
        for (const EntryKind& kind : kColourKinds) {
            if (!tokenizer_.IsTagOpen(kind.tag)) continue;
            SkinColourArea area;
            const bool oldName = ReadArea(kind, area);
            ReadNumAndEnd(area);
            Store(skin.colourAreas, std::move(area), oldName);
            return true;
        }
        if (tokenizer_.IsTagOpen("font")) {
            ReadFont(skin);
        } else if (tokenizer_.IsTagOpen("icon")) {
            ReadIcon(skin);
        } else if (tokenizer_.IsTagOpen("include_themes")) {
            const std::string name = tokenizer_.ReadKeyString("name");
            MatchTagEnd();
            for (Theme& theme : ReadThemeFile(directory_ / "themes" / name)) {
                skin.themes.push_back(std::move(theme));
            }
        } else if (tokenizer_.IsTagOpen("cfg")) {
            ReadConfig(skin);
        } else {
            return false;
        }
        return true;
    }

    // An entry under a name in the older spelling gives way to one the skin
    // writes as the type table does, wherever the two stand.
    template <typename Map, typename Area>
    static void Store(Map& map, Area area, bool oldName) {
        const std::string key = area.key;
        if (oldName)
            map.try_emplace(key, std::move(area));
        else
            map[key] = std::move(area);
    }

    // name, rect, brd and hvr: what items and colour areas share. True when
    // the name was written in the older spelling of the type table's names.
    bool ReadArea(const EntryKind& kind, SkinColourArea& area) {
        const std::string name = tokenizer_.ReadKeyString("name");
        const std::string tableName = TableItemName(name);
        area.key = kind.prefix + tableName;
        area.rect = ToRect(Numbers("rect", 4));
        const int count = static_cast<int>(std::count(kind.borders.begin(), kind.borders.end(), true));
        if (count > 0) {
            if (auto brd = OptionalNumbers("brd", count)) {
                int* sides[] = {&area.borders.left, &area.borders.right, &area.borders.top, &area.borders.bottom};
                auto value = brd->begin();
                for (std::size_t side = 0; side < 4; ++side) {
                    if (kind.borders[side]) *sides[side] = *value++;
                }
            }
        }
        area.innerWidth = area.rect.w - area.borders.left - area.borders.right;
        area.innerHeight = area.rect.h - area.borders.top - area.borders.bottom;
        if (auto hvr = OptionalNumbers("hvr", 1)) area.hvr = (*hvr)[0];
        area.defined = true;
        return tableName != name;
    }

    void ReadNumAndEnd(SkinColourArea& area) {
        if (auto num = OptionalNumbers("num", 1)) area.num = (*num)[0];
        MatchTagEnd();
    }

    void ReadFont(Skin& skin) {
        SkinFont font;
        font.line = tokenizer_.TokenLine();
        font.name = tokenizer_.ReadKeyString("name");
        font.fileName = tokenizer_.ReadKeyString("filename");
        if (auto size = OptionalNumbers("size", 1)) font.size = (*size)[0];
        if (auto embolden = OptionalNumbers("embolden", 1)) font.embolden = (*embolden)[0];
        if (auto mono = OptionalNumbers("mono", 1)) font.mono = (*mono)[0] != 0;
        MatchTagEnd();
        font.defined = true;
        skin.fonts[font.name] = font;
    }

    void ReadIcon(Skin& skin) {
        SkinIcon icon;
        icon.name = tokenizer_.ReadKeyString("name");
        icon.rect = ToRect(Numbers("rect", 4));
        const std::string type = tokenizer_.ReadKeyString("ctype");
        if (type == "single") {
            icon.type = SkinIconType::Single;
        } else if (type == "multi") {
            icon.type = SkinIconType::Multi;
        } else {
            throw ParseException("Icon ctype must be single or multi: " + type);
        }
        MatchTagEnd();
        skin.icons[icon.name] = icon;
    }

    // name, then the attributes of that name in their order, then ">".
    void ReadConfig(Skin& skin) {
        SkinConfig config;
        config.name = tokenizer_.ReadKeyString("name");
        const SkinConfigName* known = FindSkinConfigName(config.name);
        if (!known) ThrowConfigNotFound(config.name);
        for (const SkinConfigAttribute& attribute : known->attributes) {
            const auto value = OptionalNumbers(attribute.name, 1);
            config.values[std::string(attribute.name)] = value ? (*value)[0] : attribute.defaultValue;
        }
        tokenizer_.MatchSpecial('>');
        config.defined = true;
        skin.configs[config.name] = config;
    }

    void MatchTagEnd() {
        tokenizer_.MatchSpecial('/');
        tokenizer_.MatchSpecial('>');
    }

    // key="n1,n2,...": with quoted strings off, so the quotes and commas come
    // as special characters and each number as an integer (a "-" before one
    // makes it negative).
    std::vector<int> Numbers(std::string_view key, int count) {
        tokenizer_.MatchName(key);
        return NumberList(count);
    }

    std::optional<std::vector<int>> OptionalNumbers(std::string_view key, int count) {
        if (!tokenizer_.IsName(key)) return std::nullopt;
        return NumberList(count);
    }

    // What follows the key: ="n1,n2,...".
    std::vector<int> NumberList(int count) {
        tokenizer_.MatchSpecial('=');
        tokenizer_.SetStrings(false);
        tokenizer_.MatchSpecial('"');
        std::vector<int> values;
        for (int i = 0; i < count; ++i) {
            if (i > 0) tokenizer_.MatchSpecial(',');
            const bool negative = tokenizer_.IsSpecial('-');
            const int value = tokenizer_.ParseNumber();
            values.push_back(negative ? -value : value);
        }
        tokenizer_.MatchSpecial('"');
        tokenizer_.SetStrings(true);
        return values;
    }

public:
    int Line() const { return tokenizer_.TokenLine(); }

private:
    std::filesystem::path directory_;
    Tokenizer tokenizer_;
};

}  // namespace

SkinFile ReadSkinFile(const std::filesystem::path& directory, const std::string& fileName) {
    const std::filesystem::path path = directory / fileName;
    SkinParser parser(directory, ReadSkinText(path));
    try {
        return parser.Read();
    } catch (const Exception&) {
        RethrowInFile(path, parser.Line());
    }
}

}  // namespace sondrel
