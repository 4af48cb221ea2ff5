#include "files/basic/basic_listing.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

#include "model/exception.h"

namespace sondrel {

namespace {

constexpr size_t kMaxProgramBytes = 4 * 1024 * 1024;
constexpr int kMaxLineNumber = 65529;
constexpr uint8_t kEndOfFile = 0x1A;  // ^Z ends ASCII listings

// Keywords of the one-byte tokens 0x81..0xF4; empty where no keyword is assigned.
constexpr const char* kKeywords[] = {
    "END",     "FOR",    "NEXT",   "DATA",   "INPUT",  "DIM",    "READ",   "LET",       // 81
    "GOTO",    "RUN",    "IF",     "RESTORE", "GOSUB", "RETURN", "REM",    "STOP",      // 89
    "PRINT",   "CLEAR",  "LIST",   "NEW",    "ON",     "WAIT",   "DEF",    "POKE",      // 91
    "CONT",    "",       "",       "OUT",    "LPRINT", "LLIST",  "",       "WIDTH",     // 99
    "ELSE",    "TRON",   "TROFF",  "SWAP",   "ERASE",  "EDIT",   "ERROR",  "RESUME",    // A1
    "DELETE",  "AUTO",   "RENUM",  "DEFSTR", "DEFINT", "DEFSNG", "DEFDBL", "LINE",      // A9
    "WHILE",   "WEND",   "CALL",   "",       "",       "",       "WRITE",  "OPTION",    // B1
    "RANDOMIZE", "OPEN", "CLOSE",  "LOAD",   "MERGE",  "SAVE",   "COLOR",  "CLS",       // B9
    "MOTOR",   "BSAVE",  "BLOAD",  "SOUND",  "BEEP",   "PSET",   "PRESET", "SCREEN",    // C1
    "KEY",     "LOCATE", "",       "TO",     "THEN",   "TAB(",   "STEP",   "USR",       // C9
    "FN",      "SPC(",   "NOT",    "ERL",    "ERR",    "STRING$", "USING", "INSTR",     // D1
    "'",       "VARPTR", "CSRLIN", "POINT",  "OFF",    "INKEY$", "",       "",          // D9
    "",        "",       "",       "",       "",       ">",      "=",      "<",         // E1
    "+",       "-",      "*",      "/",      "^",      "AND",    "OR",     "XOR",       // E9
    "EQV",     "IMP",    "MOD",    "\\",                                                // F1
};

// Two-byte tokens: a prefix byte and a code from 0x81 on.
constexpr const char* kKeywordsFD[] = {"CVI", "CVS", "CVD", "MKI$", "MKS$", "MKD$", "", "", "", "", "EXTERR"};
constexpr const char* kKeywordsFE[] = {
    "FILES", "FIELD",  "SYSTEM",  "NAME",  "LSET",    "RSET",  "KILL",    "PUT",   "GET",  "RESET",
    "COMMON", "CHAIN", "DATE$",   "TIME$", "PAINT",   "COM",   "CIRCLE",  "DRAW",  "PLAY", "TIMER",
    "ERDEV", "IOCTL",  "CHDIR",   "MKDIR", "RMDIR",   "SHELL", "ENVIRON", "VIEW",  "WINDOW", "PMAP",
    "PALETTE", "LCOPY", "CALLS",  "",      "",        "NOISE", "PCOPY",   "TERM",  "LOCK", "UNLOCK"};
constexpr const char* kKeywordsFF[] = {
    "LEFT$", "RIGHT$", "MID$", "SGN",  "INT",   "ABS",    "SQR",  "RND",  "SIN",  "LOG",  "EXP",
    "COS",   "TAN",    "ATN",  "FRE",  "INP",   "POS",    "LEN",  "STR$", "VAL",  "ASC",  "CHR$",
    "PEEK",  "SPACE$", "OCT$", "HEX$", "LPOS",  "CINT",   "CSNG", "CDBL", "FIX",  "PEN",  "STICK",
    "STRIG", "EOF",    "LOC",  "LOF"};

constexpr uint8_t kTokenRem = 0x8F;
constexpr uint8_t kTokenData = 0x84;
constexpr uint8_t kTokenElse = 0xA1;
constexpr uint8_t kTokenApostrophe = 0xD9;

template <size_t N>
const char* Lookup(const char* const (&table)[N], uint8_t code) {
    if (code < 0x81 || static_cast<size_t>(code - 0x81) >= N) return "";
    return table[code - 0x81];
}

// Microsoft Binary Format: exponent in the last byte (bias 128, fraction 0.1xxx),
// sign in the top bit of the byte before it, mantissa little-endian below.
double FromMbf(const uint8_t* bytes, int size) {
    int exponent = bytes[size - 1];
    if (exponent == 0) return 0.0;
    double mantissa = 0.0;
    for (int i = 0; i < size - 1; ++i) {
        uint8_t b = bytes[i];
        if (i == size - 2) b |= 0x80;  // the hidden leading bit
        mantissa = mantissa / 256.0 + b;
    }
    mantissa /= 256.0;  // now in 0.5 .. 1
    double value = std::ldexp(mantissa, exponent - 128);
    return (bytes[size - 2] & 0x80) ? -value : value;
}

std::string FormatNumber(double value, int digits) {
    char text[40];
    std::snprintf(text, sizeof text, "%.*G", digits, value);
    return text;
}

void AppendKeyword(std::string& out, const char* keyword) {
    if (!*keyword) {
        out += ' ';  // unassigned token: keep the words around it apart
        return;
    }
    bool word = (keyword[0] >= 'A' && keyword[0] <= 'Z');
    if (word && !out.empty() && out.back() != ' ') out += ' ';
    out += keyword;
    if (word) out += ' ';
}

bool IsTextByte(uint8_t b) { return b >= 0x20 || b == '\t' || b == '\n' || b == '\r' || b == '\f'; }

std::vector<BasicLine> ReadTokenized(const std::vector<uint8_t>& bytes) {
    std::vector<BasicLine> lines;
    size_t pos = 1;
    int lastNumber = -1;
    for (;;) {
        if (pos + 2 > bytes.size()) throw ParseException("ReadBasicProgram(): Program ends without its end mark");
        if (bytes[pos] == 0 && bytes[pos + 1] == 0) break;
        if (pos + 4 > bytes.size()) throw ParseException("ReadBasicProgram(): Line header cut short");
        int number = bytes[pos + 2] | (bytes[pos + 3] << 8);
        if (number <= lastNumber || number > kMaxLineNumber)
            throw ParseException("ReadBasicProgram(): Line numbers out of order");
        lastNumber = number;
        pos += 4;
        size_t end = pos;
        // The line runs to its zero byte; numbers may hold zero bytes, so step over them.
        while (end < bytes.size() && bytes[end] != 0) {
            uint8_t b = bytes[end];
            if (b == '"') {
                for (++end; end < bytes.size() && bytes[end] != 0 && bytes[end] != '"';) ++end;
                if (end < bytes.size() && bytes[end] == '"') ++end;
                continue;
            }
            if (b == kTokenRem || b == kTokenApostrophe) {
                while (end < bytes.size() && bytes[end] != 0) ++end;
                break;
            }
            switch (b) {
                case 0x0B: case 0x0C: case 0x0D: case 0x0E: case 0x1C: end += 3; break;
                case 0x0F: case 0xFD: case 0xFE: case 0xFF: end += 2; break;
                case 0x1D: end += 5; break;
                case 0x1F: end += 9; break;
                default: end += 1; break;
            }
        }
        if (end >= bytes.size()) throw ParseException("ReadBasicProgram(): Line without its end");
        if (end - pos > 255) throw ParseException("ReadBasicProgram(): Line too long");
        lines.push_back({number, DetokenizeBasicLine(bytes.data() + pos, end - pos)});
        pos = end + 1;
    }
    return lines;
}

std::vector<BasicLine> ReadAscii(const std::vector<uint8_t>& bytes) {
    size_t size = std::find(bytes.begin(), bytes.end(), kEndOfFile) - bytes.begin();
    for (size_t i = 0; i < size; ++i) {
        if (!IsTextByte(bytes[i])) throw ParseException("ReadBasicProgram(): Not a text file");
    }
    std::vector<BasicLine> lines;
    bool allNumbered = true;
    size_t pos = 0;
    while (pos < size) {
        size_t end = pos;
        while (end < size && bytes[end] != '\n' && bytes[end] != '\r') ++end;
        std::string text(bytes.begin() + static_cast<long>(pos), bytes.begin() + static_cast<long>(end));
        pos = end;
        if (pos < size && bytes[pos] == '\r') ++pos;
        if (pos < size && bytes[pos] == '\n') ++pos;

        size_t i = text.find_first_not_of(" \t\f");
        if (i == std::string::npos) continue;
        BasicLine line;
        if (text[i] >= '0' && text[i] <= '9') {
            long number = 0;
            while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
                number = number * 10 + (text[i++] - '0');
                if (number > kMaxLineNumber) throw ParseException("ReadBasicProgram(): Line number too large");
            }
            line.number = static_cast<int>(number);
        } else {
            allNumbered = false;
        }
        i = std::min(text.size(), text.find_first_not_of(" \t\f", i));
        line.text = text.substr(i);
        lines.push_back(std::move(line));
    }
    if (lines.empty()) throw ParseException("ReadBasicProgram(): No program lines");
    if (allNumbered) {
        // Loading an ASCII program files its lines by number; a repeated number replaces the line.
        std::map<int, std::string> byNumber;
        for (auto& line : lines) byNumber[line.number] = std::move(line.text);
        lines.clear();
        for (auto& [number, text] : byNumber) lines.push_back({number, std::move(text)});
    }
    return lines;
}

}  // namespace

std::string DetokenizeBasicLine(const uint8_t* data, size_t size) {
    std::string out;
    size_t i = 0;
    auto need = [&](size_t n) {
        if (i + n > size) throw ParseException("DetokenizeBasicLine(): Number cut short");
    };
    while (i < size) {
        uint8_t b = data[i++];
        if (b == '"') {
            out += '"';
            while (i < size && data[i] != '"') out += static_cast<char>(data[i++]);
            if (i < size) out += static_cast<char>(data[i++]);
        } else if (b == ':' && i < size && data[i] == kTokenElse) {
            ++i;  // ELSE is stored as ":ELSE"
            AppendKeyword(out, "ELSE");
        } else if (b == ':' && i + 1 < size && data[i] == kTokenRem && data[i + 1] == kTokenApostrophe) {
            out += '\'';  // the apostrophe comment is stored as ":REM'"
            out.append(reinterpret_cast<const char*>(data + i + 2), size - i - 2);
            i = size;
        } else if (b == kTokenRem || b == kTokenApostrophe) {
            AppendKeyword(out, b == kTokenRem ? "REM" : "'");
            out.append(reinterpret_cast<const char*>(data + i), size - i);
            i = size;
        } else if (b == kTokenData) {
            AppendKeyword(out, "DATA");
            bool quoted = false;
            while (i < size && (quoted || data[i] != ':')) {
                if (data[i] == '"') quoted = !quoted;
                out += static_cast<char>(data[i++]);
            }
        } else if (b >= 0x11 && b <= 0x1B) {
            out += std::to_string(b - 0x11);
        } else if (b == 0x0F) {
            need(1);
            out += std::to_string(data[i++]);
        } else if (b == 0x0B || b == 0x0C || b == 0x0D || b == 0x0E || b == 0x1C) {
            need(2);
            unsigned value = data[i] | (data[i + 1] << 8);
            i += 2;
            char text[16];
            if (b == 0x0B) std::snprintf(text, sizeof text, "&O%o", value);
            else if (b == 0x0C) std::snprintf(text, sizeof text, "&H%X", value);
            else if (b == 0x1C) std::snprintf(text, sizeof text, "%d", static_cast<int16_t>(value));
            else std::snprintf(text, sizeof text, "%u", b == 0x0E ? value : 0u);
            out += text;
        } else if (b == 0x1D) {
            need(4);
            out += FormatNumber(FromMbf(data + i, 4), 7);
            i += 4;
        } else if (b == 0x1F) {
            need(8);
            out += FormatNumber(FromMbf(data + i, 8), 16);
            i += 8;
        } else if (b == 0xFD || b == 0xFE || b == 0xFF) {
            need(1);
            uint8_t code = data[i++];
            AppendKeyword(out, b == 0xFD ? Lookup(kKeywordsFD, code)
                               : b == 0xFE ? Lookup(kKeywordsFE, code)
                                           : Lookup(kKeywordsFF, code));
        } else if (b >= 0x81) {
            AppendKeyword(out, Lookup(kKeywords, b));
        } else if (b >= 0x20 || b == '\t') {
            out += static_cast<char>(b);
        } else {
            out += ' ';  // a control byte that no saved program holds
        }
    }
    return out;
}

std::vector<BasicLine> ReadBasicProgram(const std::vector<uint8_t>& bytes) {
    if (bytes.empty()) throw ParseException("ReadBasicProgram(): Empty file");
    if (bytes.size() > kMaxProgramBytes) throw ParseException("ReadBasicProgram(): File too large");
    if (bytes[0] == kProtectedBasicMarker) throw ParseException("ReadBasicProgram(): Protected program");
    if (bytes[0] == kTokenizedBasicMarker) return ReadTokenized(bytes);
    return ReadAscii(bytes);
}

}  // namespace sondrel
