#pragma once
// Splits a line of BASIC into tokens: numbers, string literals, names,
// keywords and symbols. Comments (REM, ') end the line; DATA statements are
// dropped. Keywords run together with names as GW-BASIC allows
// ("FORI=1TO9", "PLAYA$") are split where a statement or clause begins.

#include <cstdint>
#include <string>
#include <vector>

namespace sondrel {

enum class BasicTokenKind : uint8_t { End, Number, String, Name, Keyword, Symbol };

struct BasicToken {
    BasicTokenKind kind = BasicTokenKind::End;
    std::string text;     // upper case for names and keywords; the contents of a string literal
    double number = 0.0;  // for numbers

    bool Is(BasicTokenKind k, const char* t) const { return kind == k && text == t; }
    bool IsKeyword(const char* t) const { return Is(BasicTokenKind::Keyword, t); }
    bool IsSymbol(const char* t) const { return Is(BasicTokenKind::Symbol, t); }
};

// The line's tokens, always ending with an End token.
std::vector<BasicToken> TokenizeBasicLine(const std::string& text);

}  // namespace sondrel
