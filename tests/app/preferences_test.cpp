#include "app/preferences.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

#include "model/exception.h"
#include "test_support.h"

namespace sondrel {
namespace {

using test::ScratchDir;

const char* const kDefaultFile =
    ";\n"
    "; Sondrel V1.00 configuration\n"
    "; \n"
    "; This file is rewritten completly every time you quit Sondrel.\n"
    "; If you want to reset an entry to its default, simply delete it.\n"
    "; You can also delete the whole file to reset everything.\n"
    ";\n"
    "appeareance {\n"
    "\tfullscreen = false\n"
    "\tskin       = \"default.skin\"\n"
    "\ttheme      = \"default\"\n"
    "}\n"
    "sound_output {\n"
    "\tvolume = 50\n"
    "}\n"
    "midi_in {\n"
    "\tmidi_in_enable    = false\n"
    "\tmidi_in_device_id = 0\n"
    "}\n"
    "editing {\n"
    "\twrap_volume        = false\n"
    "\tpaste_delete_notes = true\n"
    "}\n"
    "files_and_directories {\n"
    "\tlast_module_dir = \"\"\n"
    "\tlast_export_dir = \"\"\n"
    "\tlast_module1    = \"\"\n"
    "\tlast_module2    = \"\"\n"
    "\tlast_module3    = \"\"\n"
    "\tlast_module4    = \"\"\n"
    "\tlast_module5    = \"\"\n"
    "\tlast_module6    = \"\"\n"
    "\tlast_module7    = \"\"\n"
    "\tlast_module8    = \"\"\n"
    "\tlast_module9    = \"\"\n"
    "\tlast_module10   = \"\"\n"
    "}\n";

std::string FileText(const std::filesystem::path& path) {
    const auto bytes = test::ReadBytes(path);
    return std::string(bytes.begin(), bytes.end());
}

void WriteText(const std::filesystem::path& path, const std::string& text) {
    test::WriteBytes(path, std::vector<unsigned char>(text.begin(), text.end()));
}

// Every bound value away from its default.
Preferences Changed() {
    return {.fullscreen = true, .skin = "dark.skin", .theme = "night sky", .volume = 7, .midiInEnable = true,
            .midiInDeviceId = 200,
            .editing = {.wrapVolume = true, .pasteDeleteNotes = false, .undoWithCtrlZ = true, .typeDigits = true},
            .lastModuleDir = "/m",
            .lastExportDir = "/e", .lastModules = {"/m/a.sdrltk", "", "/m/c d.sdrltk", "", "", "", "", "", "", "/z"},
            .windowScale = 3};
}

// The written form covers every bound value, so equal texts mean equal settings.
std::string TextOf(Preferences prefs) { return MakePreferencesConfig(prefs).Text(); }

TEST(PreferencesFile, MissingFileGivesDefaultsInTheExactLayoutChangedValuesRoundTripQuotesDoNot) {
    ScratchDir dir;
    Preferences prefs = Changed();
    Config config = MakePreferencesConfig(prefs);
    config.Load(dir / "absent.prefs");
    EXPECT_TRUE(config.loaded);
    config.Write(dir / "sondrel.prefs");
    EXPECT_EQ(FileText(dir / "sondrel.prefs"), kDefaultFile);
    EXPECT_EQ(TextOf(Preferences{}), kDefaultFile);
    // The later "keys" section comes only once one of its options is on.
    Preferences digits{};
    digits.editing.typeDigits = true;
    EXPECT_EQ(TextOf(digits), std::string(kDefaultFile) +
                                  "keys {\n\tundo_with_ctrl_z        = false\n\ttype_values_with_digits = true\n}\n");

    // So does the "window" section once a scale was picked, and it loads back.
    const std::string scaled = std::string(kDefaultFile) + "window {\n\twindow_scale = 2\n}\n";
    EXPECT_EQ(TextOf({.windowScale = 2}), scaled);
    config.LoadText(scaled);
    EXPECT_EQ(prefs.windowScale, 2);
    config.LoadText("window { window_scale = 9 }");
    EXPECT_EQ(prefs.windowScale, 4);
    config.LoadText(kDefaultFile);  // a file from before: no scale yet, the desktop picks
    EXPECT_EQ(prefs.windowScale, 0);
    EXPECT_EQ(TextOf(prefs), kDefaultFile);

    Preferences written = Changed();
    MakePreferencesConfig(written).Write(dir / "sondrel.prefs");
    config.Load(dir / "sondrel.prefs");
    EXPECT_TRUE(config.loaded);
    EXPECT_EQ(TextOf(prefs), TextOf(written));
    EXPECT_THROW(config.Write(dir / "missing" / "sondrel.prefs"), FileIOException);

    // Quotes in strings are written as they are, and such a file can't be read back.
    prefs.skin = "say \"hi\"";
    config.Write(dir / "sondrel.prefs");
    EXPECT_NE(FileText(dir / "sondrel.prefs").find("\tskin       = \"say \"hi\"\"\n"), std::string::npos);
    EXPECT_THROW(config.Load(dir / "sondrel.prefs"), ParseException);
    EXPECT_FALSE(config.loaded);
}

TEST(PreferencesFile, PartialFilesKeepTheOtherDefaultsAndNumbersAreClamped) {
    ScratchDir dir;
    WriteText(dir / "sondrel.prefs", "sound_output { volume = 70 }");
    Preferences prefs = Changed();
    Config config = MakePreferencesConfig(prefs);
    config.Load(dir / "sondrel.prefs");
    EXPECT_TRUE(config.loaded);
    EXPECT_EQ(TextOf(prefs), TextOf({.volume = 70}));

    // Any order, comments, and a section given twice.
    config.LoadText(
        "; my settings\n"
        "editing { paste_delete_notes = false wrap_volume = true } ; trailing\r\n"
        "appeareance { theme = \"x;y\" }\n"
        "appeareance { fullscreen = true }\n");
    EXPECT_EQ(TextOf(prefs),
              TextOf({.fullscreen = true, .theme = "x;y", .editing = {.wrapVolume = true, .pasteDeleteNotes = false}}));

    config.LoadText("sound_output { volume = 250 } midi_in { midi_in_device_id = 300 }");
    EXPECT_EQ(prefs.volume, 100);
    EXPECT_EQ(prefs.midiInDeviceId, 255);
    config.LoadText("sound_output { volume = -5 } midi_in { midi_in_device_id = -1 }");
    EXPECT_EQ(prefs.volume, 0);
    EXPECT_EQ(prefs.midiInDeviceId, 0);
    config.LoadText("sound_output { volume = 99999999999999999999999 }");
    EXPECT_EQ(prefs.volume, 100);
}

TEST(PreferencesFile, MalformedFilesSayWhereAndWhatAndStayUnloaded) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"appeareance { fullscreen = yes }", "line 1: \"fullscreen\" must be true or false, not \"yes\""},
        {"appeareance {\n\tfullscreen = 1 }", "line 2: \"fullscreen\" must be true or false, not \"1\""},
        {"appeareance {\n\tcolour = \"red\"\n}", "line 2: unknown key \"colour\" in \"appeareance\""},
        {"volume = 5", "line 1: unknown key \"volume\""},
        {"; settings\nsound_output {\n\tvolume 5 }", "line 3: expected \"=\" after \"volume\""},
        {"sound_output volume = 5 }", "line 1: expected \"{\" after \"sound_output\""},
        {"sound_output { = 5 }", "line 1: expected a key, found \"=\""},
        {"sound_output { volume = 5 }\n}", "line 2: \"}\" without a section to close"},
        // The line where the section opened, not where the file ends.
        {"\nsound_output {\n\tvolume = 5\n\n", "line 2: \"sound_output\" is missing its closing \"}\""},
        {"sound_output { volume = \"5\" }", "line 1: \"volume\" must be a whole number, not \"5\" in double quotes"},
        {"sound_output { volume = 5.5 }", "line 1: \"volume\" must be a whole number, not a number with a fraction"},
        {"sound_output { volume = - }", "line 1: \"volume\" must be a whole number, not \"}\""},
        {"sound_output { volume = 12ab }", "line 1: a number must be only digits"},
        {"appeareance { skin = default }", "line 1: \"skin\" must be text in double quotes, not \"default\""},
        {"appeareance {\n\tskin = \"open }\n}", "line 2: text in double quotes must end on its own line"},
    };
    for (const auto& c : cases) {
        Preferences prefs;
        Config config = MakePreferencesConfig(prefs);
        config.loaded = true;
        try {
            config.LoadText(c.text);
            ADD_FAILURE() << c.text << ": loaded";
        } catch (const ParseException& e) {
            EXPECT_EQ(e.Message(), c.message) << c.text;
        }
        EXPECT_FALSE(config.loaded) << c.text;
    }

    // From a file, the message begins with its full path, even when named relatively.
    ScratchDir dir;
    WriteText(dir / "sondrel.prefs", "sound_output {\n\tvolum = 5\n}\n");
    const auto saved = std::filesystem::current_path();
    std::filesystem::current_path(dir.Path());
    Preferences prefs;
    Config config = MakePreferencesConfig(prefs);
    std::string message;
    try {
        config.Load("./sondrel.prefs");
    } catch (const ParseException& e) {
        message = e.Message();
    }
    std::filesystem::current_path(saved);
    EXPECT_EQ(message, (std::filesystem::absolute(dir.Path()) / "sondrel.prefs").lexically_normal().string() +
                           ", line 2: unknown key \"volum\" in \"sound_output\"");
    // A file that opens but can't be read.
    try {
        config.Load(dir.Path());
        ADD_FAILURE() << "a directory loaded";
    } catch (const FileIOException& e) {
        EXPECT_EQ(e.Message().rfind(dir.Path().string() + ": the file can't be read (", 0), 0u) << e.Message();
    }
    EXPECT_FALSE(config.loaded);
}

TEST(PreferencesFile, NumbersOfEveryKindAreHeldWithinTheirRangeHoweverLarge) {
    int32_t integer = 1;
    uint8_t byte = 1;
    uint8_t ranged = 1;
    Config config({ConfigEntry::Integer("integer", 0, &integer), ConfigEntry::Byte("byte", 0, &byte),
                   ConfigEntry::RangedByte("ranged", 50, 10, 100, &ranged)},
                  {});
    const struct {
        const char* number;
        int32_t integer;
        int byte, ranged;
    } cases[] = {
        {"99999999999999999999999", INT32_MAX, 255, 100},
        {"-99999999999999999999999", INT32_MIN, 0, 10},
        {"4294967296", INT32_MAX, 255, 100},  // 2 to the 32nd: all low bits clear
        {"2147483648", INT32_MAX, 255, 100},
        {"-2147483648", INT32_MIN, 0, 10},
        {"-2147483647", -2147483647, 0, 10},
        {"2147483647", INT32_MAX, 255, 100},
        {"256", 256, 255, 100},
        {"101", 101, 101, 100},
        {"7", 7, 7, 10},
    };
    for (const auto& c : cases) {
        const std::string n = c.number;
        config.LoadText("integer = " + n + " byte = " + n + " ranged = " + n);
        EXPECT_EQ(integer, c.integer) << n;
        EXPECT_EQ(byte, c.byte) << n;
        EXPECT_EQ(ranged, c.ranged) << n;
    }
}

TEST(PreferencesFile, RecordedPathsAreFullAlwaysLoadBackAndKeepTheRecentListInOrder) {
    namespace fs = std::filesystem;
    ScratchDir dir;
    const fs::path root = fs::canonical(dir.Path());
    fs::create_directories(root / "songs" / "old");
    const fs::path odd = root / "say \"hi\"";
    fs::create_directories(odd);
    fs::create_directory_symlink(odd, root / "link");

    Preferences prefs;
    EXPECT_TRUE(RecordModuleDirectory(prefs, root / "songs" / "old" / ".." / "."));
    EXPECT_TRUE(RecordExportDirectory(prefs, root / "songs" / "old" / ""));
    EXPECT_TRUE(RecordRecentModule(prefs, root / "songs" / "." / "a.sdrltk"));
    // Paths the file's quoted strings can't carry, or too long: the previous values stay.
    EXPECT_FALSE(RecordExportDirectory(prefs, odd));
    EXPECT_FALSE(RecordModuleDirectory(prefs, root / "link"));
    EXPECT_FALSE(RecordRecentModule(prefs, odd / "b.sdrltk"));
    EXPECT_FALSE(RecordRecentModule(prefs, root / "two\nlines.sdrltk"));
    EXPECT_FALSE(RecordModuleDirectory(prefs, root / std::string(1024, 'x')));
    MakePreferencesConfig(prefs).Write(dir / "sondrel.prefs");

    Preferences loaded;
    Config config = MakePreferencesConfig(loaded);
    LoadPreferences(config, loaded, dir / "sondrel.prefs");
    EXPECT_TRUE(config.loaded);
    EXPECT_EQ(loaded.lastModuleDir, (root / "songs").string());
    EXPECT_EQ(loaded.lastExportDir, (root / "songs" / "old").string());
    EXPECT_EQ(loaded.lastModules[0], (root / "songs" / "a.sdrltk").string());
    EXPECT_EQ(loaded.lastModules[1], "");

    // The loader resolves directories against the current directory and
    // leaves one whose full form couldn't be written back as the file had it.
    WriteText(dir / "sondrel.prefs", "files_and_directories { last_module_dir = \"songs\" last_export_dir = \"" +
                                         (root / "link").string() + "\" last_module1 = \"a.sdrltk\" }");
    LoadPreferences(config, loaded, dir / "sondrel.prefs");
    EXPECT_EQ(loaded.lastModuleDir, (fs::current_path() / "songs").string());
    EXPECT_EQ(loaded.lastExportDir, (root / "link").string());
    EXPECT_EQ(loaded.lastModules[0], "a.sdrltk");

    // Newest first, at most ten, and a module already listed moves to the front.
    const auto song = [&](int n) { return (root / "gone" / std::to_string(n)).string(); };
    Preferences recent;
    for (int i = 1; i <= 11; ++i) RecordRecentModule(recent, song(i));
    RecordRecentModule(recent, root / "gone" / "5" / ".." / "7");
    const std::array<std::string, kRecentModules> expected{song(7), song(11), song(10), song(9), song(8),
                                                           song(6), song(5),  song(4),  song(3), song(2)};
    EXPECT_EQ(recent.lastModules, expected);
}

// The generic parts that the shipped schema does not use: integers,
// enumerations and comment lines.
TEST(ConfigSchema, IntegersEnumerationsAndComments) {
    int32_t offset = 0;
    int32_t mode = 0;
    bool flag = true;
    ConfigEntry offsetEntry = ConfigEntry::Integer("offset", -3, &offset);
    offsetEntry.comments = {"Shift in lines", "only the first line is written"};
    Config config({ConfigEntry::Section("general",
                                        {offsetEntry, ConfigEntry::Enumeration("mode", "off|soft|loud", 1, &mode),
                                         ConfigEntry::Boolean("flag", false, &flag)},
                                        {"General things"})},
                  {});
    config.ApplyDefaults();
    EXPECT_EQ(config.Text(),
              ";\n"
              "; general: General things\n"
              ";\n"
              "general {\n"
              "\t;\n"
              "\t; General things\n"
              "\t;\n"
              "\t; offset: Shift in lines\n"
              "\t;\n"
              "\toffset = -3\n"
              "\tmode   = soft\n"
              "\tflag   = false\n"
              "}\n");

    config.LoadText("general { mode = loud offset = -20 }");
    EXPECT_EQ(offset, -20);
    EXPECT_EQ(mode, 2);
    EXPECT_THROW(config.LoadText("general { mode = max }"), ParseException);
    EXPECT_THROW(config.LoadText("general { mode = \"off\" }"), ParseException);

    // An index beyond the options is written as the last option.
    mode = 9;
    EXPECT_NE(config.Text().find("\tmode   = loud\n"), std::string::npos);
}

}  // namespace
}  // namespace sondrel
