#include "ui/tokenizer.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "model/exception.h"

namespace sondrel {
namespace {

// Every token of the text up to and including the file end token.
std::vector<Token> TokensOf(Tokenizer& tokenizer) {
    std::vector<Token> tokens;
    do {
        tokens.emplace_back();
        tokenizer.GetNextToken(tokens.back());
    } while (tokens.back().kind != TokenKind::FileEnd);
    return tokens;
}

// A compact picture of the tokens: N:name S:string I:int F:float C:char K:keyword, "\n", "$" end.
std::string Shape(const std::vector<Token>& tokens) {
    std::string out;
    for (const Token& t : tokens) {
        if (!out.empty()) out += ' ';
        switch (t.kind) {
            case TokenKind::Name: out += "N:" + t.text; break;
            case TokenKind::String: out += "S:" + t.text; break;
            case TokenKind::Integer: out += "I:" + std::to_string(t.value); break;
            case TokenKind::Float: out += "F:" + std::to_string(t.FloatValue()); break;
            case TokenKind::Special: out += std::string("C:") + t.character; break;
            case TokenKind::Keyword: out += "K:" + t.text + "=" + std::to_string(t.value); break;
            case TokenKind::LineEnd: out += "\\n"; break;
            default: out += "$"; break;
        }
    }
    return out;
}

std::string ShapeOf(const std::string& text, const std::function<void(Tokenizer&)>& setup = {}) {
    Tokenizer tokenizer;
    tokenizer.Open(text);
    if (setup) setup(tokenizer);
    return Shape(TokensOf(tokenizer));
}

std::string FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const ParseException& e) {
        return e.Message();
    }
    return "no failure";
}

std::string TokenizeFailure(const std::string& text, const std::function<void(Tokenizer&)>& setup = {}) {
    return FailureOf([&] { ShapeOf(text, setup); });
}

void HexOn(Tokenizer& t) { t.SetHexNumbers(true); }
void SemicolonComments(Tokenizer& t) { t.AddLineCommentCharacter(';'); }
void XmlComments(Tokenizer& t) { t.SetXmlComments(true); }

TEST(TokenizerNumbers, DecimalsFractionsSignsAndHexadecimal) {
    EXPECT_EQ(ShapeOf("0 42 2147483647"), "I:0 I:42 I:2147483647 $");
    // Fraction digits beyond the fifth are dropped.
    EXPECT_EQ(ShapeOf("12.345678 .5 5. 0.000019"), "F:12.345670 F:0.500000 F:5.000000 F:0.000010 $");
    // Signs are special characters of their own.
    EXPECT_EQ(ShapeOf("-5 +3 4-2 12)\r\n7"), "C:- I:5 C:+ I:3 I:4 C:- I:2 I:12 C:) \\n I:7 $");
    EXPECT_EQ(ShapeOf("0x1F 0X1f $ff $FFFFFFFF $ 0x", HexOn), "I:31 I:31 I:255 I:-1 I:0 I:0 $");
    // Without hexadecimal numbers "$" starts a name.
    EXPECT_EQ(ShapeOf("$ff"), "N:$ff $");
}

TEST(TokenizerNumbers, TooLargeNumbersAreHeldAtTheTopOfTheirRangeAndSaySo) {
    const auto clampedFlags = [](const std::string& text, bool hex) {
        Tokenizer tokenizer;
        tokenizer.Open(text);
        tokenizer.SetHexNumbers(hex);
        std::string flags;
        for (const Token& t : TokensOf(tokenizer))
            if (t.kind != TokenKind::FileEnd) flags += t.clamped ? '!' : '.';
        return flags;
    };
    const char* const decimal = "2147483647 2147483648 4294967296 99999999999999999999999999999";
    EXPECT_EQ(ShapeOf(decimal), "I:2147483647 I:2147483647 I:2147483647 I:2147483647 $");
    EXPECT_EQ(clampedFlags(decimal, false), ".!!!");
    // Hexadecimal numbers keep all 32 bits as a pattern and are held beyond them.
    const char* const hex = "$FFFFFFFF $100000000 0xFFFFFFFFFFFFFFFFFFFF $80000000";
    EXPECT_EQ(ShapeOf(hex, HexOn), "I:-1 I:-1 I:-1 I:-2147483648 $");
    EXPECT_EQ(clampedFlags(hex, true), ".!!.");
    EXPECT_EQ(ShapeOf("99999999999999999999.5"), "F:2147483648.000000 $");
}

TEST(TokenizerText, TokenLineIsWhereTheLastTokenOrTheFailureStands) {
    Tokenizer tokenizer;
    tokenizer.Open("a\n\n  b ;c\n\nd\n");
    tokenizer.AddLineCommentCharacter(';');
    // a, its line end, the empty line's, b, the empty line's (the comment took
    // its own line end), d, its line end, the file end
    const int expected[] = {1, 1, 2, 3, 4, 5, 5, 6};
    for (int line : expected) {
        Token token;
        tokenizer.GetNextToken(token);
        EXPECT_EQ(tokenizer.TokenLine(), line) << Tokenizer::Describe(token);
    }
    // A failed try leaves it at the token that did not fit.
    tokenizer.Open("x\n\ny");
    tokenizer.SetLineEndTokens(false);
    tokenizer.MatchName("x");
    EXPECT_FALSE(tokenizer.IsName("z"));
    EXPECT_EQ(tokenizer.TokenLine(), 3);
    tokenizer.Open("1\n\"open\n");
    tokenizer.ParseNumber();
    EXPECT_EQ(FailureOf([&] {
                  tokenizer.MatchLineEnd();
                  tokenizer.ParseString();
              }),
              "ReadStringToken(): End of line reached");
    EXPECT_EQ(tokenizer.TokenLine(), 2);
}

TEST(TokenizerText, Failures) {
    const char* const number = "ReadNumberToken(): Failed";
    EXPECT_EQ(TokenizeFailure("12ab"), number);
    EXPECT_EQ(TokenizeFailure("1.2.3"), number);
    EXPECT_EQ(TokenizeFailure("0x1F"), number);
    EXPECT_EQ(TokenizeFailure("1a", HexOn), number);
    EXPECT_EQ(TokenizeFailure("00x1", HexOn), number);  // "x" only right after a leading 0
    EXPECT_EQ(TokenizeFailure("5;x", SemicolonComments), number);  // a comment character does not end it
    EXPECT_EQ(TokenizeFailure("\"abc\ndef\""), "ReadStringToken(): End of line reached");
    EXPECT_EQ(TokenizeFailure("\"abc\r"), "ReadStringToken(): End of line reached");
    EXPECT_EQ(TokenizeFailure("\"abc"), "ReadStringToken(): End of file reached");
    EXPECT_EQ(TokenizeFailure("<!-- open", XmlComments), "PassUntilXMLCommentEnd(): File end reached");
    EXPECT_EQ(TokenizeFailure("<!-->", XmlComments), "PassUntilXMLCommentEnd(): File end reached");
}

TEST(TokenizerText, NamesKeywordsAndStrings) {
    EXPECT_EQ(ShapeOf("a.b a-b x1 _q$"), "N:a.b N:a C:- N:b N:x1 N:_q$ $");
    EXPECT_EQ(ShapeOf("key=\"va lue\"{}"), "N:key C:= S:va lue C:{ C:} $");
    // No escapes: a backslash is an ordinary character.
    EXPECT_EQ(ShapeOf("\"a\\\" b"), "S:a\\ N:b $");
    EXPECT_EQ(ShapeOf("\"ab\"", [](Tokenizer& t) { t.SetStrings(false); }), "C:\" N:ab C:\" $");
    EXPECT_EQ(ShapeOf("red green redx",
                      [](Tokenizer& t) { t.SetKeywordTable({{"red", 3}, {"green", 7}}); }),
              "K:red=3 K:green=7 N:redx $");
}

TEST(TokenizerText, LineEndsLineCommentsAndXmlComments) {
    EXPECT_EQ(ShapeOf("a\nb\r\n"), "N:a \\n N:b \\n $");
    EXPECT_EQ(ShapeOf("a\nb\r\n", [](Tokenizer& t) { t.SetLineEndTokens(false); }), "N:a N:b $");
    // The comment eats a bare line feed, but only the CR of a CR LF.
    EXPECT_EQ(ShapeOf("a ;note\nb", SemicolonComments), "N:a N:b $");
    EXPECT_EQ(ShapeOf("a ;note\r\nb", SemicolonComments), "N:a \\n N:b $");
    EXPECT_EQ(ShapeOf(";only", SemicolonComments), "$");
    // A comment character inside a name or string is part of it.
    EXPECT_EQ(ShapeOf("ab;c \";x\"", SemicolonComments), "N:ab;c S:;x $");
    EXPECT_EQ(ShapeOf("a<!-- x\n<b> -->b", XmlComments), "N:a N:b $");
    EXPECT_EQ(ShapeOf("<a <!-", XmlComments), "C:< N:a C:< N:! C:- $");
    EXPECT_EQ(ShapeOf("<!--x-->"), "C:< N:! C:- C:- N:x C:- C:- C:> $");
}

TEST(TokenizerText, NothingAfterTheFileEndAndOpenStartsAfresh) {
    Tokenizer tokenizer;
    tokenizer.Open("x");
    TokensOf(tokenizer);
    Token token;
    EXPECT_EQ(FailureOf([&] { tokenizer.GetNextToken(token); }), "GetNextToken(): File end passed");
    tokenizer.SetHexNumbers(true);
    tokenizer.SetStrings(false);
    tokenizer.AddLineCommentCharacter('#');
    tokenizer.SetKeywordTable({{"k", 1}});
    tokenizer.Open("$1 \"s\" k #\n");
    EXPECT_EQ(Shape(TokensOf(tokenizer)), "N:$1 S:s N:k N:# \\n $");
}

TEST(TokenizerDescribe, EveryKind) {
    Tokenizer tokenizer;
    tokenizer.Open("name \"str\" 7 2.5 { red\n");
    tokenizer.SetKeywordTable({{"red", 1}});
    std::vector<std::string> described;
    for (const Token& t : TokensOf(tokenizer)) described.push_back(Tokenizer::Describe(t));
    EXPECT_EQ(described, (std::vector<std::string>{"name", "str", "Float", "2.500000", "{", "Keyword",
                                                   "[Line end token]", "[File end token]"}));
    EXPECT_EQ(Tokenizer::Describe(Token{}), "[Empty token]");
}

TEST(TokenizerParser, ExpectingOperations) {
    Tokenizer tokenizer;
    tokenizer.Open("\"s\" n 12 { key = \n");
    EXPECT_EQ(tokenizer.ParseString(), "s");
    EXPECT_EQ(tokenizer.ParseName(), "n");
    EXPECT_EQ(tokenizer.ParseNumber(), 12);
    EXPECT_EQ(tokenizer.ParseSpecial(), '{');
    tokenizer.MatchName("key");
    tokenizer.MatchSpecial('=');
    tokenizer.MatchLineEnd();
    tokenizer.MatchFileEnd();

    struct Case { const char* text; std::function<void(Tokenizer&)> operation; const char* message; };
    const std::vector<Case> cases{
        {"name", [](Tokenizer& t) { t.ParseString(); }, "ParseString(): Failed"},
        {"\"s\"", [](Tokenizer& t) { t.ParseName(); }, "ParseName(): Failed"},
        {"1.5", [](Tokenizer& t) { t.ParseNumber(); }, "ParseNumber(): Failed"},
        {"1.5", [](Tokenizer& t) { t.ParseFloat(); }, "ParseFloat(): Failed"},
        {"x", [](Tokenizer& t) { t.ParseSpecial(); }, "ParseSpecial(): Failed"},
        {"other", [](Tokenizer& t) { t.MatchName("name"); }, "MatchName(): Failed"},
        {"{", [](Tokenizer& t) { t.MatchSpecial('}'); }, "MatchSpecial(): Failed"},
        {"x\n", [](Tokenizer& t) { t.MatchLineEnd(); }, "MatchLineEnd(): Failed"},
        {"\n", [](Tokenizer& t) { t.MatchFileEnd(); }, "MatchFileEnd(): Failed"},
    };
    for (const Case& c : cases) {
        tokenizer.Open(c.text);
        EXPECT_EQ(FailureOf([&] { c.operation(tokenizer); }), c.message) << c.text;
    }

    tokenizer.Open("3 name red");
    tokenizer.SetKeywordTable({{"red", 0x3f800000}});
    EXPECT_EQ(tokenizer.ParseFloat(), 3.0f);
    // Anything that is neither integer nor float gives its value field as a float.
    EXPECT_EQ(tokenizer.ParseFloat(), 0.0f);
    EXPECT_EQ(tokenizer.ParseFloat(), 1.0f);
}

TEST(TokenizerParser, TryingOperationsRestoreOnMismatch) {
    Tokenizer tokenizer;
    tokenizer.Open("a { \n <skin > </skin x </skin> / >");
    EXPECT_FALSE(tokenizer.IsName("b") || tokenizer.IsSpecial('{') || tokenizer.IsLineEnd() ||
                 tokenizer.IsFileEnd());
    EXPECT_TRUE(tokenizer.IsName("a"));
    EXPECT_FALSE(tokenizer.IsSpecial('}'));
    EXPECT_TRUE(tokenizer.IsSpecial('{') && tokenizer.IsLineEnd());
    EXPECT_FALSE(tokenizer.IsTagOpen("font") || tokenizer.IsTagClose("skin"));
    EXPECT_TRUE(tokenizer.IsTagOpen("skin"));
    EXPECT_FALSE(tokenizer.IsTagEnd());
    tokenizer.MatchSpecial('>');
    // Fails on its last token, after three matched.
    EXPECT_FALSE(tokenizer.IsTagClose("skin"));
    EXPECT_EQ(tokenizer.ParseSpecial(), '<');
    EXPECT_EQ(tokenizer.ParseSpecial(), '/');
    tokenizer.MatchName("skin");
    tokenizer.MatchName("x");
    EXPECT_TRUE(tokenizer.IsTagClose("skin") && tokenizer.IsTagEnd() && tokenizer.IsFileEnd());
    // After the file end token nothing more can be tried.
    EXPECT_EQ(FailureOf([&] { tokenizer.IsFileEnd(); }), "GetNextToken(): File end passed");
}

TEST(TokenizerParser, KeyReaders) {
    Tokenizer tokenizer;
    tokenizer.Open("name = \"Plain\" order = \"one,two,three\" after = \"s\" empty = \"\"");
    EXPECT_EQ(tokenizer.ReadKeyString("name"), "Plain");
    EXPECT_EQ(tokenizer.ReadKeyNameList("order", 3), (std::vector<std::string>{"one", "two", "three"}));
    // Quoted strings are back on after the list.
    EXPECT_EQ(tokenizer.ReadKeyString("after"), "s");
    EXPECT_TRUE(tokenizer.ReadKeyNameList("empty", 0).empty());

    tokenizer.Open("order = \"one,two\" x = \"y\"");
    EXPECT_EQ(FailureOf([&] { tokenizer.ReadKeyNameList("order", 3); }), "MatchSpecial(): Failed");
    tokenizer.Open("other = \"x\"");
    EXPECT_EQ(FailureOf([&] { tokenizer.ReadKeyString("name"); }), "MatchName(): Failed");
}

}  // namespace
}  // namespace sondrel
