#include "app/preferences.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>

#include "files/safe_file_writer.h"
#include "model/exception.h"
#include "ui/tokenizer.h"

namespace sondrel {

namespace {

// Full paths are recorded only when shorter than this.
constexpr std::size_t kMaxFullPath = 1024;

ConfigEntry ValueEntry(std::string name, int type, ConfigEntry::Binding bound) {
    ConfigEntry entry;
    entry.name = std::move(name);
    entry.type = type;
    entry.bound = bound;
    return entry;
}

std::vector<std::string> SplitOptions(std::string_view options) {
    std::vector<std::string> names;
    std::size_t start = 0;
    for (;;) {
        const std::size_t bar = options.find('|', start);
        names.emplace_back(options.substr(start, bar - start));
        if (bar == std::string_view::npos) return names;
        start = bar + 1;
    }
}

// Numbers of every kind (booleans as 0 or 1) go through these two.
void StoreNumber(const ConfigEntry& entry, int32_t value) {
    if (auto* b = std::get_if<bool*>(&entry.bound)) **b = value != 0;
    if (auto* i = std::get_if<int32_t*>(&entry.bound)) **i = value;
    if (auto* u = std::get_if<uint8_t*>(&entry.bound)) **u = static_cast<uint8_t>(value);
}

int32_t StoredNumber(const ConfigEntry& entry) {
    if (auto* b = std::get_if<bool*>(&entry.bound)) return **b ? 1 : 0;
    if (auto* i = std::get_if<int32_t*>(&entry.bound)) return **i;
    if (auto* u = std::get_if<uint8_t*>(&entry.bound)) return **u;
    return entry.defaultNumber;
}

std::string StoredText(const ConfigEntry& entry) {
    if (auto* s = std::get_if<std::string*>(&entry.bound)) return **s;
    return entry.defaultText;
}

void ApplyListDefaults(const std::vector<ConfigEntry>& list) {
    for (const auto& entry : list) {
        if (entry.type == kConfigSection) {
            ApplyListDefaults(entry.children);
        } else if (auto* s = std::get_if<std::string*>(&entry.bound)) {
            **s = entry.defaultText;
        } else {
            StoreNumber(entry, entry.defaultNumber);
        }
    }
}

bool AllDefault(const std::vector<ConfigEntry>& list) {
    return std::all_of(list.begin(), list.end(), [](const ConfigEntry& entry) {
        if (entry.type == kConfigSection) return AllDefault(entry.children);
        if (std::holds_alternative<std::string*>(entry.bound)) return StoredText(entry) == entry.defaultText;
        return StoredNumber(entry) == entry.defaultNumber;
    });
}

// ---- Reading ----

bool IsSpecial(const Token& token, char c) { return token.kind == TokenKind::Special && token.character == c; }

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

// A token as the messages show what was found.
std::string Found(const Token& token) {
    switch (token.kind) {
        case TokenKind::Name: return Quoted(token.text);
        case TokenKind::String: return Quoted(token.text) + " in double quotes";
        case TokenKind::Integer: return Quoted(std::to_string(token.value));
        case TokenKind::Float: return "a number with a fraction";
        case TokenKind::Special: return Quoted(std::string(1, token.character));
        default: break;
    }
    return "the end of the file";
}

// Reads the file's entries into the schema's variables. Every failure throws
// ParseException "line N: what was wrong", N being the line where the
// reading stopped.
class Reader {
public:
    explicit Reader(std::string_view text) {
        tokenizer_.Open(text);
        tokenizer_.SetLineEndTokens(false);
        tokenizer_.AddLineCommentCharacter(';');
    }

    // The root runs to the file end.
    void ReadRoot(const std::vector<ConfigEntry>& root) {
        for (Token token = Next(); token.kind != TokenKind::FileEnd; token = Next()) {
            if (IsSpecial(token, '}')) Fail("\"}\" without a section to close");
            ReadEntry(token, root, nullptr);
        }
    }

private:
    [[noreturn]] void Fail(const std::string& what) const { FailAt(tokenizer_.TokenLine(), what); }
    [[noreturn]] static void FailAt(int line, const std::string& what) {
        throw ParseException("line " + std::to_string(line) + ": " + what);
    }

    // The tokenizer's own failures, in the words of this file.
    Token Next() {
        Token token;
        try {
            tokenizer_.GetNextToken(token);
        } catch (const ParseException& error) {
            const std::string operation = error.Message();
            if (operation.starts_with("ReadStringToken()")) Fail("text in double quotes must end on its own line");
            if (operation.starts_with("ReadNumberToken()")) Fail("a number must be only digits");
            Fail(operation);
        }
        return token;
    }

    void ReadEntry(const Token& key, const std::vector<ConfigEntry>& list, const ConfigEntry* section) {
        if (key.kind != TokenKind::Name) Fail("expected a key, found " + Found(key));
        const auto entry = std::find_if(list.begin(), list.end(),
                                        [&](const ConfigEntry& e) { return e.name == key.text; });
        if (entry == list.end()) {
            Fail("unknown key " + Quoted(key.text) + (section ? " in " + Quoted(section->name) : ""));
        }
        if (entry->type == kConfigSection) {
            ReadSection(*entry);
            return;
        }
        if (!IsSpecial(Next(), '=')) Fail("expected \"=\" after " + Quoted(entry->name));
        ReadValue(*entry);
    }

    // A section runs to its closing brace.
    void ReadSection(const ConfigEntry& section) {
        const int opened = tokenizer_.TokenLine();
        if (!IsSpecial(Next(), '{')) Fail("expected \"{\" after " + Quoted(section.name));
        for (Token token = Next(); !IsSpecial(token, '}'); token = Next()) {
            if (token.kind == TokenKind::FileEnd) FailAt(opened, Quoted(section.name) + " is missing its closing \"}\"");
            ReadEntry(token, section.children, &section);
        }
    }

    void ReadValue(const ConfigEntry& entry) {
        switch (entry.type) {
            case kConfigBoolean: {
                const Token word = Next();
                if (word.kind != TokenKind::Name || (word.text != "true" && word.text != "false")) {
                    Fail(Quoted(entry.name) + " must be true or false, not " + Found(word));
                }
                StoreNumber(entry, word.text == "true");
                return;
            }
            case kConfigInteger:
                StoreNumber(entry, ReadNumber(entry, INT32_MIN, INT32_MAX));
                return;
            case kConfigByte: StoreNumber(entry, ReadNumber(entry, 0, 255)); return;
            case kConfigRangedByte: StoreNumber(entry, ReadNumber(entry, entry.minimum, entry.maximum)); return;
            case kConfigString: {
                Token text = Next();
                if (text.kind != TokenKind::String) {
                    Fail(Quoted(entry.name) + " must be text in double quotes, not " + Found(text));
                }
                if (auto* s = std::get_if<std::string*>(&entry.bound)) **s = std::move(text.text);
                return;
            }
            default: break;
        }
        const Token word = Next();
        const auto options = SplitOptions(entry.options);
        const auto found = word.kind == TokenKind::Name ? std::find(options.begin(), options.end(), word.text)
                                                        : options.end();
        if (found == options.end()) {
            std::string names;
            for (const auto& option : options) names += (names.empty() ? "" : ", ") + option;
            Fail(Quoted(entry.name) + " must be one of " + names + ", not " + Found(word));
        }
        StoreNumber(entry, static_cast<int32_t>(found - options.begin()));
    }

    // A whole number held within low..high. A minus sign reaches us as a
    // special character of its own, and a number too large for a token
    // lies beyond either end.
    int32_t ReadNumber(const ConfigEntry& entry, int32_t low, int32_t high) {
        Token token = Next();
        const bool negative = IsSpecial(token, '-');
        if (negative) token = Next();
        if (token.kind != TokenKind::Integer) Fail(Quoted(entry.name) + " must be a whole number, not " + Found(token));
        if (token.clamped) return negative ? low : high;
        const int64_t value = negative ? -int64_t{token.value} : token.value;
        return static_cast<int32_t>(std::clamp<int64_t>(value, low, high));
    }

    Tokenizer tokenizer_;
};

// ---- Writing ----

std::string Indentation(int depth) { return std::string(static_cast<std::size_t>(std::max(depth, 0)), '\t'); }

std::string Padding(const std::string& name, std::size_t width) {
    return std::string(width - name.size() + 1, ' ');
}

std::string FormatValue(const ConfigEntry& entry) {
    switch (entry.type) {
        case kConfigBoolean: return StoredNumber(entry) ? "= true\n" : "= false\n";
        case kConfigInteger:
        case kConfigByte:
        case kConfigRangedByte: return "= " + std::to_string(StoredNumber(entry)) + "\n";
        // Written as it is: a value holding a double quote can't be read back.
        case kConfigString: return "= \"" + StoredText(entry) + "\"\n";
        default: break;
    }
    const auto options = SplitOptions(entry.options);
    const int32_t index = StoredNumber(entry);
    const bool inside = index >= 0 && static_cast<std::size_t>(index) < options.size();
    return "= " + (inside ? options[static_cast<std::size_t>(index)] : options.back()) + "\n";
}

// The root list is written at depth -1 without a name; a section at the
// depth of its parent's entries.
void WriteList(std::string& out, const std::string* sectionName, const std::vector<ConfigEntry>& list,
               const std::vector<std::string>& comments, int depth) {
    const std::string inner = Indentation(depth + 1);
    if (sectionName) out += Indentation(depth) + *sectionName + " {\n";
    std::size_t width = 0;
    for (const auto& entry : list) width = std::max(width, entry.name.size());
    const bool entryComments = std::any_of(list.begin(), list.end(),
                                           [](const ConfigEntry& e) { return !e.comments.empty(); });
    if (!comments.empty() || entryComments) out += inner + ";\n";
    if (!comments.empty()) {
        for (const auto& line : comments) out += inner + "; " + line + "\n";
        out += inner + ";\n";
    }
    if (entryComments) {
        for (const auto& entry : list) {
            if (entry.comments.empty()) continue;
            out += inner + "; " + entry.name + ":" + Padding(entry.name, width) + entry.comments.front() + "\n";
        }
        out += inner + ";\n";
    }
    for (const auto& entry : list) {
        if (entry.type == kConfigSection) {
            if (entry.onlyWhenChanged && AllDefault(entry.children)) continue;
            WriteList(out, &entry.name, entry.children, entry.comments, depth + 1);
        } else {
            out += inner + entry.name + Padding(entry.name, width) + FormatValue(entry);
        }
    }
    if (sectionName) out += Indentation(depth) + "}\n";
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// A quoted string is read up to the next double quote and must not run
// over a line end, so those characters can't be written into one.
bool FitsQuotedString(std::string_view text) { return text.find_first_of("\"\n\r") == std::string_view::npos; }

bool RecordPath(std::string& entry, const std::filesystem::path& path) {
    std::string full = FullPreferencePath(path);
    if (full.empty()) return false;
    entry = std::move(full);
    return true;
}

}  // namespace

ConfigEntry ConfigEntry::Section(std::string name, std::vector<ConfigEntry> children,
                                 std::vector<std::string> comments) {
    ConfigEntry entry = ValueEntry(std::move(name), kConfigSection, {});
    entry.children = std::move(children);
    entry.comments = std::move(comments);
    return entry;
}

ConfigEntry ConfigEntry::Boolean(std::string name, bool defaultValue, bool* variable) {
    ConfigEntry entry = ValueEntry(std::move(name), kConfigBoolean, variable);
    entry.defaultNumber = defaultValue ? 1 : 0;
    return entry;
}

ConfigEntry ConfigEntry::Integer(std::string name, int32_t defaultValue, int32_t* variable) {
    ConfigEntry entry = ValueEntry(std::move(name), kConfigInteger, variable);
    entry.defaultNumber = defaultValue;
    return entry;
}

ConfigEntry ConfigEntry::Byte(std::string name, uint8_t defaultValue, uint8_t* variable) {
    ConfigEntry entry = ValueEntry(std::move(name), kConfigByte, variable);
    entry.defaultNumber = defaultValue;
    return entry;
}

ConfigEntry ConfigEntry::RangedByte(std::string name, uint8_t defaultValue, uint8_t minimum,
                                    uint8_t maximum, uint8_t* variable) {
    ConfigEntry entry = ValueEntry(std::move(name), kConfigRangedByte, variable);
    entry.defaultNumber = defaultValue;
    entry.minimum = minimum;
    entry.maximum = maximum;
    return entry;
}

ConfigEntry ConfigEntry::String(std::string name, std::string defaultValue, std::string* variable) {
    ConfigEntry entry = ValueEntry(std::move(name), kConfigString, variable);
    entry.defaultText = std::move(defaultValue);
    return entry;
}

ConfigEntry ConfigEntry::Enumeration(std::string name, std::string options, int32_t defaultIndex,
                                     int32_t* variable) {
    ConfigEntry entry = ValueEntry(std::move(name), kConfigEnumeration, variable);
    entry.options = std::move(options);
    entry.defaultNumber = defaultIndex;
    return entry;
}

Config::Config(std::vector<ConfigEntry> root, std::vector<std::string> header)
    : root_(std::move(root)), header_(std::move(header)) {}

void Config::ApplyDefaults() { ApplyListDefaults(root_); }

void Config::Load(const std::filesystem::path& path) {
    loaded = false;
    ApplyDefaults();
    File file(std::fopen(path.string().c_str(), "rb"));
    if (!file) {
        loaded = true;  // no file yet: the defaults stand
        return;
    }
    // Messages name the file in full, as the user would look for it.
    std::error_code error;
    const std::string shown = std::filesystem::absolute(path, error).lexically_normal().string();
    std::string text;
    char buffer[4096];
    std::size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) text.append(buffer, count);
    if (std::ferror(file.get())) {
        throw FileIOException(shown + ": the file can't be read (" + std::strerror(errno) + ")");
    }
    try {
        LoadText(text);
    } catch (const ParseException& failure) {
        throw ParseException(shown + ", " + failure.Message());
    }
}

void Config::LoadText(std::string_view text) {
    loaded = false;
    ApplyDefaults();
    Reader(text).ReadRoot(root_);
    loaded = true;
}

std::string Config::Text() const {
    std::string out;
    WriteList(out, nullptr, root_, header_, -1);
    return out;
}

void Config::Write(const std::filesystem::path& path) const {
    // Through a temporary file: a full disk keeps the settings that were there.
    const std::string text = Text();
    ReplaceFileContents(path, text.data(), text.size());
}

std::vector<ConfigEntry> PreferencesSchema(Preferences& prefs) {
    std::vector<ConfigEntry> files{
        ConfigEntry::String("last_module_dir", "", &prefs.lastModuleDir),
        ConfigEntry::String("last_export_dir", "", &prefs.lastExportDir),
    };
    for (int i = 0; i < kRecentModules; ++i) {
        files.push_back(ConfigEntry::String("last_module" + std::to_string(i + 1), "",
                                            &prefs.lastModules[static_cast<std::size_t>(i)]));
    }
    return {
        ConfigEntry::Section("appeareance",
                             {
                                 ConfigEntry::Boolean("fullscreen", false, &prefs.fullscreen),
                                 ConfigEntry::String("skin", "default.skin", &prefs.skin),
                                 ConfigEntry::String("theme", "default", &prefs.theme),
                             }),
        ConfigEntry::Section("sound_output",
                             {ConfigEntry::RangedByte("volume", 50, 0, 100, &prefs.volume)}),
        ConfigEntry::Section("midi_in",
                             {
                                 ConfigEntry::Boolean("midi_in_enable", false, &prefs.midiInEnable),
                                 ConfigEntry::Byte("midi_in_device_id", 0, &prefs.midiInDeviceId),
                             }),
        ConfigEntry::Section("editing",
                             {
                                 ConfigEntry::Boolean("wrap_volume", false, &prefs.editing.wrapVolume),
                                 ConfigEntry::Boolean("paste_delete_notes", true, &prefs.editing.pasteDeleteNotes),
                             }),
        ConfigEntry::Section("files_and_directories", std::move(files)),
        // Later additions: after the sections above, and written only when
        // something in them is set, so a file of someone who never touched
        // them stays line for line what it always was.
        ConfigEntry::Section("keys",
                             {
                                 ConfigEntry::Boolean("undo_with_ctrl_z", false, &prefs.editing.undoWithCtrlZ),
                                 ConfigEntry::Boolean("type_values_with_digits", false, &prefs.editing.typeDigits),
                             })
            .OnlyWhenChanged(),
        ConfigEntry::Section("window", {ConfigEntry::RangedByte("window_scale", 0, 0, 4, &prefs.windowScale)})
            .OnlyWhenChanged(),
    };
}

std::vector<std::string> PreferencesHeader() {
    return {
        "Sondrel V1.00 configuration",
        "",
        "This file is rewritten completly every time you quit Sondrel.",
        "If you want to reset an entry to its default, simply delete it.",
        "You can also delete the whole file to reset everything.",
    };
}

Config MakePreferencesConfig(Preferences& prefs) {
    return Config(PreferencesSchema(prefs), PreferencesHeader());
}

void LoadPreferences(Config& config, Preferences& prefs, const std::filesystem::path& path) {
    config.Load(path);
    // An entry without a full form stays as the file had it.
    RecordModuleDirectory(prefs, prefs.lastModuleDir);
    RecordExportDirectory(prefs, prefs.lastExportDir);
}

std::string FullPreferencePath(const std::filesystem::path& path) {
    if (path.empty()) return {};
    // Made absolute first: a relative path none of whose parts exist would
    // otherwise stay relative.
    std::error_code error;
    std::filesystem::path full = std::filesystem::absolute(path, error);
    if (!error) full = std::filesystem::weakly_canonical(full, error);
    if (error) return {};
    // The part that doesn't exist yet keeps a trailing separator it was given.
    if (!full.has_filename() && full.has_relative_path()) full = full.parent_path();
    std::string text = full.string();
    if (text.size() >= kMaxFullPath || !FitsQuotedString(text)) return {};
    return text;
}

bool RecordModuleDirectory(Preferences& prefs, const std::filesystem::path& directory) {
    return RecordPath(prefs.lastModuleDir, directory);
}

bool RecordExportDirectory(Preferences& prefs, const std::filesystem::path& directory) {
    return RecordPath(prefs.lastExportDir, directory);
}

bool RecordRecentModule(Preferences& prefs, const std::filesystem::path& module) {
    std::string full = FullPreferencePath(module);
    if (full.empty()) return false;
    auto& recent = prefs.lastModules;
    auto slot = std::find(recent.begin(), recent.end(), full);
    if (slot == recent.end()) slot = recent.end() - 1;
    std::rotate(recent.begin(), slot, slot + 1);
    recent.front() = std::move(full);
    return true;
}

}  // namespace sondrel
