#pragma once
// Writer for files made of tagged blocks (see iff_parser.h). Blocks may nest;
// EndBlock closes the most recently started one. A block started without a
// size gets its size filled in, little-endian, when it is ended.

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sondrel {

class IFFWriter {
public:
    IFFWriter() = default;
    IFFWriter(const IFFWriter&) = delete;
    IFFWriter& operator=(const IFFWriter&) = delete;
    // Closes a file the writer opened itself; a handed-over stream stays open.
    ~IFFWriter();

    // Opens the path for binary writing; the writer owns the file.
    void Create(const std::string& path);
    // Writes into a stream that stays the caller's, from its current position.
    void Attach(FILE* file);
    void Close();

    // Pads with one zero byte to an even position.
    void Align();
    void WriteData(const void* buffer, uint32_t count);
    // A length prefix (one byte below 128, else the low 16 bits, low byte
    // first) and the characters without a terminator.
    void WriteString(std::string_view text);

    void StartBlock(std::string_view id);
    // The size is written now and the block is not patched when it ends.
    void StartBlock(std::string_view id, uint32_t size);
    void EndBlock();

    uint32_t Position() const { return position_; }
    int32_t Length() const { return length_; }

private:
    void Advanced();
    void WriteBlockHeader(std::string_view id, uint32_t size, bool sizeGiven);

    FILE* file_ = nullptr;
    bool ownsFile_ = false;
    int32_t length_ = 0;
    uint32_t position_ = 0;
    // (start, end) of every open block; end is 0 when the size is filled in at the end.
    std::vector<std::pair<uint32_t, uint32_t>> blocks_;
};

// Why IFFParser::ReadString would not give back a text as WriteString writes
// it, or an empty string when it would. The reader ends a text at the digit
// "0" and takes a first length byte up to 127 as the whole length; the prefix
// holds 16 bits.
std::string WhyStringWontReadBack(std::string_view text);

}  // namespace sondrel
