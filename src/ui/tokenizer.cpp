#include "ui/tokenizer.h"

#include <algorithm>
#include <bit>

#include "model/exception.h"

namespace sondrel {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int HexDigit(char c) {
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

[[noreturn]] void Fail(const char* message) { throw ParseException(message); }

}  // namespace

float Token::FloatValue() const { return std::bit_cast<float>(value); }

Tokenizer::Tokenizer() { Reset(); }

void Tokenizer::Reset() {
    special_.fill(false);
    lineComment_.fill(false);
    whitespace_.fill(false);
    for (char c : std::string_view("\"&()*+,-/:<=>^{|}")) special_[Byte(c)] = true;
    for (char c : std::string_view(" \t\n\r")) whitespace_[Byte(c)] = true;
    lineEndTokens_ = true;
    xmlComments_ = false;
    strings_ = true;
    hexNumbers_ = false;
    keywords_.clear();
}

void Tokenizer::Open(const char* text, std::size_t size) {
    Reset();
    text_.assign(text, size);
    offset_ = 0;
    line_ = 1;
    tokenLine_ = 1;
    fileEndDelivered_ = false;
}

void Tokenizer::SetKeywordTable(const std::vector<TokenizerKeyword>& keywords) {
    keywords_.clear();
    for (const auto& keyword : keywords) keywords_.emplace(keyword.name, keyword.number);
}

void Tokenizer::RestorePosition(const Position& position) {
    offset_ = std::min(position.offset, text_.size());
    line_ = position.line;
    fileEndDelivered_ = position.fileEndDelivered;
}

bool Tokenizer::EndsWord(char c) const {
    return c == '\n' || c == '\r' || special_[Byte(c)] || whitespace_[Byte(c)];
}

void Tokenizer::GetNextToken(Token& token) {
    if (fileEndDelivered_) Fail("GetNextToken(): File end passed");
    token = Token{};
    for (;;) {
        tokenLine_ = line_;
        if (AtEnd()) {
            token.kind = TokenKind::FileEnd;
            fileEndDelivered_ = true;
            return;
        }
        const char c = text_[offset_++];
        if (xmlComments_ && c == '<' && SkipXmlComment()) continue;
        if (c == '.' && !AtEnd() && IsDigit(text_[offset_])) {
            ReadNumber(c, token);
            return;
        }
        if (c == '\n') {
            ++line_;
            if (lineEndTokens_) {
                token.kind = TokenKind::LineEnd;
                return;
            }
            continue;
        }
        if (lineComment_[Byte(c)]) {
            // The comment takes its line end with it: after a comment, a bare
            // line feed gives no line end token, while CR LF still gives one.
            while (!AtEnd()) {
                const char skipped = text_[offset_++];
                if (skipped == '\n') ++line_;
                if (skipped == '\n' || skipped == '\r') break;
            }
            continue;
        }
        if (c == '"' && strings_) {
            ReadString(token);
            return;
        }
        if (special_[Byte(c)]) {
            token.kind = TokenKind::Special;
            token.character = c;
            return;
        }
        if ((c == '$' && hexNumbers_) || IsDigit(c)) {
            ReadNumber(c, token);
            return;
        }
        if (whitespace_[Byte(c)]) continue;
        ReadName(token);
        return;
    }
}

// Called with the read position just after "<". Skips "!-- ... -->" and
// answers true, or answers false with the position untouched.
bool Tokenizer::SkipXmlComment() {
    if (text_.size() - offset_ < 3 || text_.compare(offset_, 3, "!--") != 0) return false;
    const std::size_t end = text_.find("-->", offset_ + 3);
    if (end == std::string::npos) Fail("PassUntilXMLCommentEnd(): File end reached");
    line_ += static_cast<int>(std::count(text_.begin() + static_cast<std::ptrdiff_t>(offset_),
                                         text_.begin() + static_cast<std::ptrdiff_t>(end), '\n'));
    offset_ = end + 3;
    return true;
}

// No escapes: everything up to the closing quote is the text.
void Tokenizer::ReadString(Token& token) {
    const std::size_t start = offset_;
    for (;;) {
        if (AtEnd()) Fail("ReadStringToken(): End of file reached");
        const char c = text_[offset_++];
        if (c == '"') break;
        if (c == '\n' || c == '\r') Fail("ReadStringToken(): End of line reached");
    }
    token.kind = TokenKind::String;
    token.text = text_.substr(start, offset_ - 1 - start);
}

// The first character is a digit, "$" (hexadecimal) or "." (a float whose
// whole-number part is zero). A whole number beyond what the token holds is
// held at the top of its range (see Token::clamped). Only five fraction digits
// count; later ones are read and dropped.
void Tokenizer::ReadNumber(char first, Token& token) {
    // Digits stop adding once the value is past every range it is held to,
    // so it can't wrap around.
    constexpr uint64_t kPastEveryRange = uint64_t{1} << 33;
    const std::size_t start = offset_ - 1;
    bool hex = first == '$';
    bool isFloat = first == '.';
    uint64_t value = IsDigit(first) ? static_cast<uint64_t>(first - '0') : 0;
    uint32_t fraction = 0;
    uint32_t divisor = 1;
    const auto addDigit = [&](uint64_t base, int digit) {
        value = std::min(value * base + static_cast<uint64_t>(digit), kPastEveryRange);
    };
    while (!AtEnd()) {
        const char c = text_[offset_];
        if (EndsWord(c)) break;
        ++offset_;
        const bool second = offset_ - start == 2;
        if (IsDigit(c)) {
            if (hex) {
                addDigit(16, c - '0');
            } else if (isFloat) {
                if (divisor < 100000) {
                    fraction = fraction * 10 + static_cast<uint32_t>(c - '0');
                    divisor *= 10;
                }
            } else {
                addDigit(10, c - '0');
            }
        } else if (hex && HexDigit(c) >= 0) {
            addDigit(16, HexDigit(c));
        } else if (c == '.' && !hex && !isFloat) {
            isFloat = true;
            fraction = 0;
            divisor = 1;
        } else if ((c == 'x' || c == 'X') && second && first == '0' && hexNumbers_) {
            hex = true;
        } else {
            Fail("ReadNumberToken(): Failed");
        }
    }
    const uint64_t top = hex ? UINT32_MAX : INT32_MAX;
    token.clamped = value > top;
    const auto held = static_cast<uint32_t>(std::min(value, top));
    if (isFloat) {
        const float number = static_cast<float>(fraction) / static_cast<float>(divisor) + static_cast<float>(held);
        token.kind = TokenKind::Float;
        token.value = std::bit_cast<int32_t>(number);
    } else {
        token.kind = TokenKind::Integer;
        token.value = static_cast<int32_t>(held);
    }
}

// A "." or a digit inside a name belongs to the name.
void Tokenizer::ReadName(Token& token) {
    const std::size_t start = offset_ - 1;
    while (!AtEnd() && !EndsWord(text_[offset_])) ++offset_;
    token.text = text_.substr(start, offset_ - start);
    const auto keyword = keywords_.find(token.text);
    if (keyword != keywords_.end()) {
        token.kind = TokenKind::Keyword;
        token.value = keyword->second;
    } else {
        token.kind = TokenKind::Name;
    }
}

std::string Tokenizer::Describe(const Token& token) {
    switch (token.kind) {
        case TokenKind::Empty: return "[Empty token]";
        case TokenKind::Name:
        case TokenKind::String: return token.text;
        // Integers are described with this word on purpose.
        case TokenKind::Integer: return "Float";
        case TokenKind::Float: return std::to_string(token.FloatValue());
        case TokenKind::Special: return std::string(1, token.character);
        case TokenKind::Keyword: return "Keyword";
        case TokenKind::LineEnd: return "[Line end token]";
        case TokenKind::FileEnd: return "[File end token]";
    }
    return "[Empty token]";
}

Token Tokenizer::Next() {
    Token token;
    GetNextToken(token);
    return token;
}

namespace {

Token Expect(Token token, TokenKind kind, const char* failure) {
    if (token.kind != kind) Fail(failure);
    return token;
}

}  // namespace

std::string Tokenizer::ParseString() {
    return Expect(Next(), TokenKind::String, "ParseString(): Failed").text;
}

std::string Tokenizer::ParseName() {
    return Expect(Next(), TokenKind::Name, "ParseName(): Failed").text;
}

int32_t Tokenizer::ParseNumber() {
    return Expect(Next(), TokenKind::Integer, "ParseNumber(): Failed").value;
}

float Tokenizer::ParseFloat() {
    const Token token = Next();
    if (token.kind == TokenKind::Integer) return static_cast<float>(token.value);
    if (token.kind == TokenKind::Float) Fail("ParseFloat(): Failed");
    return token.FloatValue();
}

char Tokenizer::ParseSpecial() {
    return Expect(Next(), TokenKind::Special, "ParseSpecial(): Failed").character;
}

void Tokenizer::MatchName(std::string_view name) {
    if (Expect(Next(), TokenKind::Name, "MatchName(): Failed").text != name) Fail("MatchName(): Failed");
}

void Tokenizer::MatchSpecial(char c) {
    if (Expect(Next(), TokenKind::Special, "MatchSpecial(): Failed").character != c) {
        Fail("MatchSpecial(): Failed");
    }
}

void Tokenizer::MatchLineEnd() { Expect(Next(), TokenKind::LineEnd, "MatchLineEnd(): Failed"); }

void Tokenizer::MatchFileEnd() { Expect(Next(), TokenKind::FileEnd, "MatchFileEnd(): Failed"); }

namespace {

auto NameIs(std::string_view name) {
    return [name](const Token& token) { return token.kind == TokenKind::Name && token.text == name; };
}

auto SpecialIs(char c) {
    return [c](const Token& token) { return token.kind == TokenKind::Special && token.character == c; };
}

auto KindIs(TokenKind kind) {
    return [kind](const Token& token) { return token.kind == kind; };
}

}  // namespace

template <typename... Checks>
bool Tokenizer::TrySequence(Checks... checks) {
    const Position saved = SavePosition();
    Token token;
    const bool matched = ((GetNextToken(token), checks(token)) && ...);
    if (!matched) RestorePosition(saved);
    return matched;
}

bool Tokenizer::IsName(std::string_view name) { return TrySequence(NameIs(name)); }
bool Tokenizer::IsSpecial(char c) { return TrySequence(SpecialIs(c)); }
bool Tokenizer::IsLineEnd() { return TrySequence(KindIs(TokenKind::LineEnd)); }
bool Tokenizer::IsFileEnd() { return TrySequence(KindIs(TokenKind::FileEnd)); }

bool Tokenizer::IsTagOpen(std::string_view name) { return TrySequence(SpecialIs('<'), NameIs(name)); }

bool Tokenizer::IsTagClose(std::string_view name) {
    return TrySequence(SpecialIs('<'), SpecialIs('/'), NameIs(name), SpecialIs('>'));
}

bool Tokenizer::IsTagEnd() { return TrySequence(SpecialIs('/'), SpecialIs('>')); }

std::string Tokenizer::ReadKeyString(std::string_view key) {
    MatchName(key);
    MatchSpecial('=');
    return ParseString();
}

std::vector<std::string> Tokenizer::ReadKeyNameList(std::string_view key, int count) {
    MatchName(key);
    MatchSpecial('=');
    // The double quotes and commas must arrive as special characters.
    struct StringsOff {
        Tokenizer& tokenizer;
        explicit StringsOff(Tokenizer& t) : tokenizer(t) { tokenizer.SetStrings(false); }
        ~StringsOff() { tokenizer.SetStrings(true); }
    } stringsOff(*this);
    std::vector<std::string> names;
    MatchSpecial('"');
    for (int i = 0; i < count; ++i) {
        if (i > 0) MatchSpecial(',');
        names.push_back(ParseName());
    }
    MatchSpecial('"');
    return names;
}

}  // namespace sondrel
