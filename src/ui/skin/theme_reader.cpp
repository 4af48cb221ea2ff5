#include "ui/skin/theme_reader.h"

#include <algorithm>

#include "model/exception.h"
#include "ui/skin/skin_files.h"
#include "ui/tokenizer.h"

namespace sondrel {

namespace {

uint32_t Channel(uint32_t argb, int shift) { return (argb >> shift) & 0xFF; }

// Adds delta to each of red, green and blue, kept within 0..255; alpha stays.
uint32_t Shift(uint32_t argb, int delta) {
    uint32_t result = argb & 0xFF000000u;
    for (int shift : {16, 8, 0}) {
        const int value = std::clamp(static_cast<int>(Channel(argb, shift)) + delta, 0, 255);
        result |= static_cast<uint32_t>(value) << shift;
    }
    return result;
}

class ThemeParser {
public:
    explicit ThemeParser(std::string_view text) {
        tokenizer_.Open(text);
        tokenizer_.AddLineCommentCharacter(';');
        tokenizer_.SetHexNumbers(true);
        tokenizer_.SetKeywordTable(ThemeColourKeywords());
    }

    int Line() const { return tokenizer_.TokenLine(); }

    std::vector<Theme> ReadAll() {
        std::vector<Theme> themes;
        for (SkipEmptyLines(); !tokenizer_.IsFileEnd(); SkipEmptyLines()) themes.push_back(ReadTheme());
        return themes;
    }

private:
    void SkipEmptyLines() {
        while (tokenizer_.IsLineEnd()) {
        }
    }

    // "key {" and its line end.
    void OpenBlock(std::string_view key) {
        SkipEmptyLines();
        tokenizer_.MatchName(key);
        tokenizer_.MatchSpecial('{');
        tokenizer_.MatchLineEnd();
    }

    // "}" and the line end after it.
    void CloseBlock() {
        SkipEmptyLines();
        tokenizer_.MatchSpecial('}');
        EndLine();
    }

    // A line end, or nothing when the text ends here (the file end token is
    // left for the caller).
    void EndLine() {
        const Tokenizer::Position start = tokenizer_.SavePosition();
        if (tokenizer_.IsFileEnd()) {
            tokenizer_.RestorePosition(start);
            return;
        }
        tokenizer_.MatchLineEnd();
    }

    std::string ReadKeyLine(std::string_view key) {
        SkipEmptyLines();
        std::string value = tokenizer_.ReadKeyString(key);
        tokenizer_.MatchLineEnd();
        return value;
    }

    Theme ReadTheme() {
        Theme theme;
        OpenBlock("theme");
        theme.name = ReadKeyLine("name");
        theme.author = ReadKeyLine("author");
        OpenBlock("colors");
        for (SkipEmptyLines(); !tokenizer_.IsSpecial('}'); SkipEmptyLines()) {
            const int index = ParseColourName();
            tokenizer_.MatchSpecial('=');
            theme.colours[static_cast<std::size_t>(index)] = ParseColourValue(theme);
            EndLine();
        }
        EndLine();
        CloseBlock();
        return theme;
    }

    int ParseColourName() {
        Token token;
        tokenizer_.GetNextToken(token);
        if (token.kind != TokenKind::Keyword) {
            throw ParseException("ReadTheme(): Unknown colour name " + Tokenizer::Describe(token));
        }
        return token.value;
    }

    // copy(c), lighten(c,n), darken(c,n), alphaset(c,n) or an ARGB number.
    uint32_t ParseColourValue(const Theme& theme) {
        if (tokenizer_.IsName("copy")) return ParseArguments(theme, false).first;
        if (tokenizer_.IsName("lighten")) {
            const auto [colour, amount] = ParseArguments(theme, true);
            return Shift(colour, amount);
        }
        if (tokenizer_.IsName("darken")) {
            const auto [colour, amount] = ParseArguments(theme, true);
            return Shift(colour, -amount);
        }
        if (tokenizer_.IsName("alphaset")) {
            const auto [colour, alpha] = ParseArguments(theme, true);
            return (colour & 0x00FFFFFFu) | static_cast<uint32_t>(std::clamp(alpha, 0, 255)) << 24;
        }
        return static_cast<uint32_t>(tokenizer_.ParseNumber());
    }

    // "(" colour ")" or "(" colour "," integer ")".
    std::pair<uint32_t, int> ParseArguments(const Theme& theme, bool withAmount) {
        tokenizer_.MatchSpecial('(');
        const uint32_t colour = theme.colours[static_cast<std::size_t>(ParseColourName())];
        int amount = 0;
        if (withAmount) {
            tokenizer_.MatchSpecial(',');
            amount = tokenizer_.ParseNumber();
        }
        tokenizer_.MatchSpecial(')');
        return {colour, amount};
    }

    Tokenizer tokenizer_;
};

}  // namespace

std::vector<Theme> ReadThemes(std::string_view text) { return ThemeParser(text).ReadAll(); }

std::vector<Theme> ReadThemeFile(const std::filesystem::path& path) {
    ThemeParser parser(ReadSkinText(path));
    try {
        return parser.ReadAll();
    } catch (const Exception&) {
        RethrowInFile(path, parser.Line());
    }
}

}  // namespace sondrel
