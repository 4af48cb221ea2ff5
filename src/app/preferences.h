#pragma once
// The preferences file "sondrel.prefs": a static schema of sections and typed
// entries, each bound to a variable and carrying its default. The one schema
// drives resetting to defaults, reading and writing, so a new setting is one
// more schema row.

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "edit/edit_options.h"

namespace sondrel {

constexpr int kRecentModules = 10;

// The values the schema binds to.
struct Preferences {
    bool fullscreen = false;
    std::string skin = "default.skin";
    std::string theme = "default";
    uint8_t volume = 50;
    bool midiInEnable = false;
    uint8_t midiInDeviceId = 0;
    EditOptions editing{};  // the command dispatcher works on these in place
    std::string lastModuleDir{};
    std::string lastExportDir{};
    std::array<std::string, kRecentModules> lastModules{};  // newest first
    // The window's scale, 1 to 4; 0 until the first start picks the largest
    // that fits the desktop, which is kept from then on.
    uint8_t windowScale = 0;
};

enum ConfigType : int {
    kConfigSection = 0,
    kConfigBoolean = 1,
    kConfigInteger = 2,       // 32-bit
    kConfigByte = 3,          // 0..255
    kConfigRangedByte = 4,    // minimum..maximum
    kConfigString = 5,
    kConfigEnumeration = 256, // a word out of options, stored as its index
};

// One schema row. Build rows with the named constructors below.
struct ConfigEntry {
    using Binding = std::variant<std::monostate, bool*, int32_t*, uint8_t*, std::string*>;

    std::string name;             // the key, or the section name
    int type = kConfigSection;
    std::vector<ConfigEntry> children;  // sections only
    int32_t defaultNumber = 0;    // boolean, integer, byte, enumeration index
    std::string defaultText;      // string
    int32_t minimum = 0;          // ranged byte
    int32_t maximum = 255;
    std::string options;          // enumeration: option names separated by "|"
    Binding bound;
    std::vector<std::string> comments;
    bool onlyWhenChanged = false;  // sections: left out of the file while all of it is at its defaults

    ConfigEntry OnlyWhenChanged() && {
        onlyWhenChanged = true;
        return std::move(*this);
    }

    static ConfigEntry Section(std::string name, std::vector<ConfigEntry> children,
                               std::vector<std::string> comments = {});
    static ConfigEntry Boolean(std::string name, bool defaultValue, bool* variable);
    static ConfigEntry Integer(std::string name, int32_t defaultValue, int32_t* variable);
    static ConfigEntry Byte(std::string name, uint8_t defaultValue, uint8_t* variable);
    static ConfigEntry RangedByte(std::string name, uint8_t defaultValue, uint8_t minimum,
                                  uint8_t maximum, uint8_t* variable);
    static ConfigEntry String(std::string name, std::string defaultValue, std::string* variable);
    static ConfigEntry Enumeration(std::string name, std::string options, int32_t defaultIndex,
                                   int32_t* variable);
};

class Config {
public:
    Config(std::vector<ConfigEntry> root, std::vector<std::string> header);

    // Sets every bound variable to its default, then reads the file. A file
    // that can't be opened leaves the defaults; a malformed one throws
    // ParseException "FULL PATH, line N: what was wrong", one that can't be
    // read FileIOException "FULL PATH: ...". Numbers beyond an entry's range
    // are held at its nearest end. `loaded` is true only when no exception
    // was thrown.
    void Load(const std::filesystem::path& path);
    // The same for text already in memory; its messages begin at "line N".
    void LoadText(std::string_view text);
    // Throws FileIOException when the file can't be written.
    void Write(const std::filesystem::path& path) const;
    std::string Text() const;
    void ApplyDefaults();

    const std::vector<ConfigEntry>& Root() const { return root_; }
    const std::vector<std::string>& Header() const { return header_; }

    bool loaded = false;

private:
    std::vector<ConfigEntry> root_;
    std::vector<std::string> header_;
};

// The shipped schema and header, bound to prefs, which must outlive them.
std::vector<ConfigEntry> PreferencesSchema(Preferences& prefs);
std::vector<std::string> PreferencesHeader();
Config MakePreferencesConfig(Preferences& prefs);

// Loads the preferences file and then turns the two directory entries into
// their full form (see FullPreferencePath), resolved against the current
// directory; an entry whose full form can't be recorded is left as it is.
void LoadPreferences(Config& config, Preferences& prefs, const std::filesystem::path& path);

// The form in which paths are recorded: absolute, without "." or ".." parts
// or a trailing separator, symbolic links resolved as far as the path
// exists. Empty when the path can't be resolved, when the result is 1024
// characters or longer, or when the file's quoted strings can't carry it (a
// double quote or a line break), so that a recorded path always loads back.
std::string FullPreferencePath(const std::filesystem::path& path);

// What the editor records after its file requesters. Each stores the full
// form and answers true, or answers false and keeps the previous value when
// the path has no full form.
bool RecordModuleDirectory(Preferences& prefs, const std::filesystem::path& directory);
bool RecordExportDirectory(Preferences& prefs, const std::filesystem::path& directory);
// Puts the module first in the recent list; an entry already there moves up
// to the front, otherwise the oldest drops off the end.
bool RecordRecentModule(Preferences& prefs, const std::filesystem::path& module);

}  // namespace sondrel
