#pragma once
// The small configurable tokenizer behind every text file the program parses
// (preferences, skins, themes), with a parser layer of expecting ("Parse",
// "Match") and trying ("Is") operations on top. It works on a whole file held
// in memory and hands out tokens on demand. Every failure throws a
// ParseException whose message names the operation that failed; after one,
// the tokenizer is only usable again through RestorePosition.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sondrel {

enum class TokenKind : uint8_t {
    Empty = 0,
    Name = 1,
    String = 2,
    Integer = 3,
    Float = 4,
    Special = 5,
    Keyword = 6,
    LineEnd = 7,
    FileEnd = 8,
};

struct Token {
    TokenKind kind = TokenKind::Empty;
    char character = 0;   // Special: the character
    std::string text;     // Name, String, Keyword: the characters
    // One 32-bit field: the integer for Integer, the bits of the float for
    // Float, the keyword's number for Keyword, 0 otherwise.
    int32_t value = 0;
    // Integer, and the whole-number part of Float: the digits stood for more
    // than value holds, and it is held
    // at the top of its range: 2147483647 for a decimal number, all 32 bits
    // set for a hexadecimal one (which gives bit patterns such as colours).
    bool clamped = false;

    int32_t IntValue() const { return value; }
    float FloatValue() const;
};

struct TokenizerKeyword {
    std::string name;
    int32_t number = 0;
};

class Tokenizer {
public:
    // Read position, line counter and whether the file end token went out.
    struct Position {
        std::size_t offset = 0;
        int line = 1;
        bool fileEndDelivered = false;
    };

    Tokenizer();

    // Default character tables and switches, no keyword table. The text stays.
    void Reset();
    // Reset, then take a copy of the text and start at its beginning.
    void Open(const char* text, std::size_t size);
    void Open(std::string_view text) { Open(text.data(), text.size()); }

    void SetLineEndTokens(bool on) { lineEndTokens_ = on; }
    void SetXmlComments(bool on) { xmlComments_ = on; }
    void SetStrings(bool on) { strings_ = on; }
    void SetHexNumbers(bool on) { hexNumbers_ = on; }
    void AddLineCommentCharacter(char c) { lineComment_[Byte(c)] = true; }
    // An empty table switches keywords off.
    void SetKeywordTable(const std::vector<TokenizerKeyword>& keywords);

    void GetNextToken(Token& token);

    Position SavePosition() const { return {offset_, line_, fileEndDelivered_}; }
    void RestorePosition(const Position& position);
    int Line() const { return line_; }
    // The line of the last token read, or of the one whose reading failed; a
    // line end token belongs to the line it ends. Restoring a position leaves
    // it, so after a failed try it still points at what did not fit.
    int TokenLine() const { return tokenLine_; }

    // The token as it appears in messages.
    static std::string Describe(const Token& token);

    // Expecting operations: read one token, throw unless it fits.
    std::string ParseString();
    std::string ParseName();
    int32_t ParseNumber();
    // An integer converts, a float fails, any other token gives its value
    // field read as a float.
    float ParseFloat();
    char ParseSpecial();
    void MatchName(std::string_view name);
    void MatchSpecial(char c);
    void MatchLineEnd();
    void MatchFileEnd();

    // Trying operations: true and the reads are kept, or false and the
    // position is as before.
    bool IsName(std::string_view name);
    bool IsSpecial(char c);
    bool IsLineEnd();
    bool IsFileEnd();
    bool IsTagOpen(std::string_view name);   // "<" name
    bool IsTagClose(std::string_view name);  // "<" "/" name ">"
    bool IsTagEnd();                         // "/" ">"

    // key = "text"
    std::string ReadKeyString(std::string_view key);
    // key = "name1,name2,...": count names between double quotes.
    std::vector<std::string> ReadKeyNameList(std::string_view key, int count);

private:
    static std::size_t Byte(char c) { return static_cast<unsigned char>(c); }
    bool AtEnd() const { return offset_ >= text_.size(); }
    bool EndsWord(char c) const;
    bool SkipXmlComment();
    void ReadString(Token& token);
    void ReadNumber(char first, Token& token);
    void ReadName(Token& token);  // its first character is already read
    Token Next();
    // Reads tokens while each one passes its check; on the first that does
    // not, the position is restored and false returned.
    template <typename... Checks>
    bool TrySequence(Checks... checks);

    std::array<bool, 256> special_{};
    std::array<bool, 256> lineComment_{};
    std::array<bool, 256> whitespace_{};
    bool lineEndTokens_ = true;
    bool xmlComments_ = false;
    bool strings_ = true;
    bool hexNumbers_ = false;
    std::unordered_map<std::string, int32_t> keywords_;

    std::string text_;
    std::size_t offset_ = 0;
    int line_ = 1;
    int tokenLine_ = 1;
    bool fileEndDelivered_ = false;
};

}  // namespace sondrel
