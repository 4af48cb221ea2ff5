#pragma once
// Reader for files made of tagged blocks: a 4-character identifier, a 4-byte
// size and the block's data, each block starting on an even file position.
//
// The parser never opens or closes the stream and keeps its own count of the
// position. It reads the size field as a big-endian number while the writer
// stores it little-endian; the module loader never skips or checks a block's
// size, so this difference is harmless there and existing files depend on it.

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace sondrel {

struct BlockHeader {
    std::array<char, 4> id{};
    uint32_t size = 0;
};

class IFFParser {
public:
    // Takes a stream opened for binary reading; its length is measured and the
    // position is the stream's current one.
    void Open(FILE* file);
    // Forgets the stream; it is not closed.
    void Close();

    // Reads exactly count bytes or throws FileIOException.
    void ReadNextBytes(void* buffer, uint32_t count);
    void ReadData(void* buffer, uint32_t count) { ReadNextBytes(buffer, count); }
    // False, reading nothing, when the bytes are not all there.
    bool TryReadNextBytes(void* buffer, uint32_t count);

    // Skips the padding byte in front of the block and reads its header.
    BlockHeader ReadBlockHeader();
    // The header, or nothing with the position unchanged.
    std::optional<BlockHeader> TryReadBlockHeader();

    // Reads a block header that must carry this identifier; returns its size.
    uint32_t MatchBlockStart(std::string_view id);
    // Also requires the size to be the expected one.
    void MatchBlockStart(std::string_view id, uint32_t expectedSize);
    // The block's size, or nothing with the position unchanged.
    std::optional<uint32_t> TryMatchBlockStart(std::string_view id);
    bool TryMatchBlockStart(std::string_view id, uint32_t expectedSize);

    // The next bytes must equal the expected ones.
    void MatchData(const void* expected, uint32_t count);
    // A count from -255 to 0 matches at once without reading.
    bool TryMatchData(const void* expected, int32_t count);

    // A length-prefixed string. Reading stops at the first digit "0", which is
    // dropped together with the rest of the string's bytes: they stay in the
    // stream and are read as whatever follows.
    void ReadString(std::string& target);

    // Skips the next block as a whole; returns whether the file end is reached.
    bool OverparseNextBlock();
    // Throws unless the whole file has been read.
    void MatchFileEnd();

    uint32_t Position() const { return position_; }
    uint32_t Length() const { return length_; }
    bool AtEnd() const { return atEnd_; }
    // Seeks back to a position taken from Position(). The end flag is left as
    // it stands.
    void RestorePosition(uint32_t position);

private:
    void Advance(uint32_t count);
    bool SameId(const BlockHeader& header, std::string_view id) const;

    FILE* file_ = nullptr;
    uint32_t length_ = 0;
    uint32_t position_ = 0;
    bool atEnd_ = true;
    bool error_ = false;
};

}  // namespace sondrel
