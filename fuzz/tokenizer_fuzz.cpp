// Feeds arbitrary bytes to the tokenizer and walks every token. The first
// byte picks the switches. Besides crashes, it checks that reading a token
// again from a restored position gives the same token, and that nothing can
// be read past the file end token.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "model/exception.h"
#include "ui/tokenizer.h"

namespace {

bool SameToken(const sondrel::Token& a, const sondrel::Token& b) {
    return a.kind == b.kind && a.character == b.character && a.text == b.text && a.value == b.value &&
           a.clamped == b.clamped;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint8_t switches = data[0];
    sondrel::Tokenizer tokenizer;
    tokenizer.Open(reinterpret_cast<const char*>(data + 1), size - 1);
    tokenizer.SetLineEndTokens(switches & 1);
    tokenizer.SetXmlComments(switches & 2);
    tokenizer.SetStrings(switches & 4);
    tokenizer.SetHexNumbers(switches & 8);
    if (switches & 16) tokenizer.AddLineCommentCharacter(';');
    if (switches & 32) tokenizer.AddLineCommentCharacter('#');
    if (switches & 64) tokenizer.SetKeywordTable({{"red", 1}, {"green", 2}, {"theme", 3}});
    try {
        sondrel::Token token;
        do {
            const auto before = tokenizer.SavePosition();
            tokenizer.GetNextToken(token);
            (void)sondrel::Tokenizer::Describe(token);
            const auto after = tokenizer.SavePosition();
            tokenizer.RestorePosition(before);
            sondrel::Token again;
            tokenizer.GetNextToken(again);
            if (!SameToken(token, again)) std::abort();
            const auto afterAgain = tokenizer.SavePosition();
            if (afterAgain.offset != after.offset || afterAgain.line != after.line) std::abort();
        } while (token.kind != sondrel::TokenKind::FileEnd);
    } catch (const sondrel::Exception&) {
        return 0;
    }
    try {
        sondrel::Token token;
        tokenizer.GetNextToken(token);
    } catch (const sondrel::ParseException&) {
        return 0;
    }
    std::abort();  // a token was delivered after the file end
}
