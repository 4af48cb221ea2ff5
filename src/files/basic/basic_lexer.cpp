#include "files/basic/basic_lexer.h"

#include <cctype>
#include <cmath>
#include <cstring>
#include <set>

namespace sondrel {

namespace {

const std::set<std::string>& Keywords() {
    static const std::set<std::string> words = {
        "ABS", "AND", "ASC", "ATN", "AUTO", "BEEP", "BLOAD", "BSAVE", "CALL", "CALLS", "CDBL", "CHAIN",
        "CHDIR", "CHR$", "CINT", "CIRCLE", "CLEAR", "CLOSE", "CLS", "COLOR", "COM", "COMMON", "CONT", "COS",
        "CSNG", "CSRLIN", "CVD", "CVI", "CVS", "DATA", "DATE$", "DEF", "DEFDBL", "DEFINT", "DEFSNG", "DEFSTR",
        "DELETE", "DIM", "DRAW", "EDIT", "ELSE", "ELSEIF", "END", "ENVIRON", "EOF", "EQV", "ERASE", "ERDEV",
        "ERL", "ERR", "ERROR", "EXP", "EXTERR", "FIELD", "FILES", "FIX", "FN", "FOR", "FRE", "GET", "GOSUB",
        "GOTO", "HEX$", "IF", "IMP", "INKEY$", "INP", "INPUT", "INSTR", "INT", "IOCTL", "KEY", "KILL", "LCOPY",
        "LEFT$", "LEN", "LET", "LINE", "LIST", "LLIST", "LOAD", "LOC", "LOCATE", "LOCK", "LOF", "LOG", "LPOS",
        "LPRINT", "LSET", "MERGE", "MID$", "MKD$", "MKDIR", "MKI$", "MKS$", "MOD", "MOTOR", "NAME", "NEW",
        "NEXT", "NOISE", "NOT", "OCT$", "OFF", "ON", "OPEN", "OPTION", "OR", "OUT", "PAINT", "PALETTE", "PCOPY",
        "PEEK", "PEN", "PLAY", "PMAP", "POINT", "POKE", "POS", "PRESET", "PRINT", "PSET", "PUT", "RANDOMIZE",
        "READ", "REM", "RENUM", "RESET", "RESTORE", "RESUME", "RETURN", "RIGHT$", "RMDIR", "RND", "RSET", "RUN",
        "SAVE", "SCREEN", "SGN", "SHELL", "SIN", "SOUND", "SPACE$", "SPC", "SQR", "STEP", "STICK", "STOP",
        "STR$", "STRIG", "STRING$", "SWAP", "SYSTEM", "TAB", "TAN", "TERM", "THEN", "TIME$", "TIMER", "TO",
        "TROFF", "TRON", "UNLOCK", "USING", "USR", "VAL", "VARPTR", "VARPTR$", "VIEW", "WAIT", "WEND", "WHILE",
        "WIDTH", "WINDOW", "WRITE", "XOR"};
    return words;
}

// Keywords that may be run together with what follows them at the start of a statement.
constexpr const char* kStatementWords[] = {
    "BEEP", "CHAIN", "CLS", "COLOR", "DATA", "DEF", "DIM", "ELSE", "END", "FOR", "GOSUB", "GOTO", "IF", "INPUT",
    "LET", "LOCATE", "NEXT", "NOISE", "ON", "PLAY", "POKE", "PRINT", "READ", "REM", "RETURN", "RUN", "SCREEN",
    "SOUND", "STOP", "WIDTH"};
// Keywords that may be run together with what follows them after a value.
constexpr const char* kClauseWords[] = {"AND", "ELSE", "EQV", "GOSUB", "GOTO", "IMP", "MOD", "OR", "STEP", "THEN",
                                        "TO", "XOR"};

bool IsNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '.'; }
bool IsSigil(char c) { return c == '$' || c == '%' || c == '!' || c == '#'; }

template <size_t N>
size_t LongestPrefix(const char* const (&words)[N], const std::string& run) {
    size_t best = 0;
    for (const char* word : words) {
        size_t length = std::strlen(word);
        if (length < run.size() && length > best && run.compare(0, length, word) == 0) best = length;
    }
    return best;
}

class Lexer {
public:
    explicit Lexer(const std::string& text) : text_(text) {}

    std::vector<BasicToken> Run() {
        while (pos_ < text_.size()) {
            char c = text_[pos_];
            if (c == ' ' || c == '\t' || c == '\f') {
                ++pos_;
            } else if (c == '\'') {
                break;
            } else if (c == '"') {
                size_t end = text_.find('"', pos_ + 1);
                if (end == std::string::npos) end = text_.size();
                Push(BasicTokenKind::String, text_.substr(pos_ + 1, end - pos_ - 1));
                pos_ = std::min(end + 1, text_.size());
            } else if (std::isdigit(static_cast<unsigned char>(c)) ||
                       (c == '.' && pos_ + 1 < text_.size() && std::isdigit(static_cast<unsigned char>(text_[pos_ + 1])))) {
                Decimal();
            } else if (c == '&') {
                Based();
            } else if (std::isalpha(static_cast<unsigned char>(c))) {
                if (!Word()) break;
            } else {
                Symbol();
            }
        }
        tokens_.push_back({});
        return std::move(tokens_);
    }

private:
    void Push(BasicTokenKind kind, std::string text, double number = 0.0) {
        tokens_.push_back({kind, std::move(text), number});
    }

    bool AtStatementStart() const {
        if (tokens_.empty()) return true;
        const BasicToken& last = tokens_.back();
        return last.IsSymbol(":") || last.IsKeyword("THEN") || last.IsKeyword("ELSE");
    }

    bool AfterValue() const {
        if (tokens_.empty()) return false;
        const BasicToken& last = tokens_.back();
        return last.kind == BasicTokenKind::Number || last.kind == BasicTokenKind::String ||
               last.kind == BasicTokenKind::Name || last.IsSymbol(")");
    }

    void Decimal() {
        size_t start = pos_;
        while (pos_ < text_.size() && std::isdigit(static_cast<unsigned char>(text_[pos_]))) ++pos_;
        if (pos_ < text_.size() && text_[pos_] == '.') {
            ++pos_;
            while (pos_ < text_.size() && std::isdigit(static_cast<unsigned char>(text_[pos_]))) ++pos_;
        }
        std::string digits = text_.substr(start, pos_ - start);
        if (pos_ < text_.size() && (std::toupper(static_cast<unsigned char>(text_[pos_])) == 'E' ||
                                    std::toupper(static_cast<unsigned char>(text_[pos_])) == 'D')) {
            size_t p = pos_ + 1;
            if (p < text_.size() && (text_[p] == '+' || text_[p] == '-')) ++p;
            if (p < text_.size() && std::isdigit(static_cast<unsigned char>(text_[p]))) {
                std::string exponent(1, 'E');
                exponent.append(text_, pos_ + 1, p - pos_ - 1);
                pos_ = p;
                while (pos_ < text_.size() && std::isdigit(static_cast<unsigned char>(text_[pos_])))
                    exponent += text_[pos_++];
                digits += exponent;
            }
        }
        if (pos_ < text_.size() && (text_[pos_] == '!' || text_[pos_] == '#' || text_[pos_] == '%')) ++pos_;
        double value = std::strtod(digits.c_str(), nullptr);
        if (!std::isfinite(value)) value = 0.0;
        Push(BasicTokenKind::Number, digits, value);
    }

    // &H1F, &O17 or &17.
    void Based() {
        ++pos_;
        int base = 8;
        if (pos_ < text_.size() && std::toupper(static_cast<unsigned char>(text_[pos_])) == 'H') base = 16, ++pos_;
        else if (pos_ < text_.size() && std::toupper(static_cast<unsigned char>(text_[pos_])) == 'O') ++pos_;
        double value = 0.0;
        while (pos_ < text_.size()) {
            int digit = std::isdigit(static_cast<unsigned char>(text_[pos_])) ? text_[pos_] - '0'
                        : base == 16 && std::isxdigit(static_cast<unsigned char>(text_[pos_]))
                            ? std::toupper(static_cast<unsigned char>(text_[pos_])) - 'A' + 10
                            : -1;
            if (digit < 0 || digit >= base) break;
            value = value * base + digit;
            ++pos_;
        }
        if (value > 65535) value = 65535;
        if (value > 32767) value -= 65536;  // a 16-bit integer
        Push(BasicTokenKind::Number, "&", value);
    }

    // A name or keyword. False when the rest of the line is a comment.
    bool Word() {
        size_t start = pos_;
        std::string run;
        while (pos_ < text_.size() && IsNameChar(text_[pos_]))
            run += static_cast<char>(std::toupper(static_cast<unsigned char>(text_[pos_++])));
        bool sigil = pos_ < text_.size() && IsSigil(text_[pos_]);
        std::string full = sigil ? run + text_[pos_] : run;

        std::string keyword;
        if (Keywords().count(full)) {
            keyword = full;
        } else if (Keywords().count(run)) {
            keyword = run;  // as in PRINT#1: the sign belongs to what follows
        } else {
            size_t prefix = 0;
            if (AtStatementStart()) {
                prefix = LongestPrefix(kStatementWords, run);
                size_t after = pos_ + (sigil ? 1 : 0);
                while (after < text_.size() && text_[after] == ' ') ++after;
                bool assigned = after < text_.size() && text_[after] == '=';
                std::string taken = run.substr(0, prefix);
                if (assigned && taken != "FOR" && taken != "IF" && taken != "LET") prefix = 0;
            } else if (AfterValue()) {
                prefix = LongestPrefix(kClauseWords, run);
            }
            if (prefix) keyword = run.substr(0, prefix);
        }

        if (keyword.empty()) {
            if (sigil) ++pos_;
            if (!sigil || full.back() == '!') full = run + '!';  // A and A! are the same variable
            Push(BasicTokenKind::Name, full);
            return true;
        }
        pos_ = start + keyword.size();
        if (keyword == "REM") return false;
        if (keyword == "DATA") {
            SkipData();
            return true;
        }
        Push(BasicTokenKind::Keyword, keyword);
        return true;
    }

    void SkipData() {
        bool quoted = false;
        while (pos_ < text_.size() && (quoted || text_[pos_] != ':')) {
            if (text_[pos_] == '"') quoted = !quoted;
            ++pos_;
        }
    }

    void Symbol() {
        char c = text_[pos_++];
        std::string symbol(1, c);
        if ((c == '<' || c == '>' || c == '=') && pos_ < text_.size()) {
            char d = text_[pos_];
            if ((c == '<' && (d == '=' || d == '>')) || (c == '>' && (d == '=' || d == '<')) ||
                (c == '=' && (d == '<' || d == '>'))) {
                ++pos_;
                if (c == '=') std::swap(c, d);
                symbol = (c == '>' && d == '<') ? "<>" : std::string{c, d};
            }
        }
        Push(BasicTokenKind::Symbol, symbol);
    }

    const std::string& text_;
    size_t pos_ = 0;
    std::vector<BasicToken> tokens_;
};

}  // namespace

std::vector<BasicToken> TokenizeBasicLine(const std::string& text) { return Lexer(text).Run(); }

}  // namespace sondrel
