#pragma once
// Reading a BASIC program file into lines of plain text: ASCII listings
// (numbered or not) and GW-BASIC's tokenized save format, whose keyword and
// number tokens are spelled out again.

#include <cstdint>
#include <string>
#include <vector>

namespace sondrel {

struct BasicLine {
    int number = -1;   // -1 for an unnumbered line
    std::string text;  // the statements, keywords spelled out
};

// The first byte of a tokenized program, and of a protected (encrypted) one.
constexpr uint8_t kTokenizedBasicMarker = 0xFF;
constexpr uint8_t kProtectedBasicMarker = 0xFE;

// Lines in program order: numbered ASCII programs are sorted by number (a
// later duplicate replaces an earlier one), as the interpreter would load
// them. Throws ParseException for protected programs, broken tokenized
// programs and files that are not text.
std::vector<BasicLine> ReadBasicProgram(const std::vector<uint8_t>& bytes);

// One tokenized line's contents (without link and number), spelled out.
std::string DetokenizeBasicLine(const uint8_t* data, size_t size);

}  // namespace sondrel
