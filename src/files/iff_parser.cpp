#include "files/iff_parser.h"

#include <algorithm>
#include <cstring>

#include "files/file_stream.h"
#include "model/exception.h"

namespace sondrel {

namespace {

constexpr uint32_t kChunkSize = 256;

// The identifier as stored, then the size read most significant byte first.
BlockHeader DecodeHeader(const uint8_t (&raw)[8]) {
    BlockHeader header;
    std::memcpy(header.id.data(), raw, 4);
    header.size = (uint32_t{raw[4]} << 24) | (uint32_t{raw[5]} << 16) | (uint32_t{raw[6]} << 8) | raw[7];
    return header;
}

}  // namespace

void IFFParser::Open(FILE* file) {
    file_ = file;
    length_ = static_cast<uint32_t>(StreamLength(file));
    long here = std::ftell(file);
    position_ = here < 0 ? 0 : static_cast<uint32_t>(here);
    error_ = false;
    atEnd_ = position_ >= length_;
}

void IFFParser::Close() { file_ = nullptr; }

void IFFParser::Advance(uint32_t count) {
    position_ += count;
    if (position_ >= length_) atEnd_ = true;
}

void IFFParser::ReadNextBytes(void* buffer, uint32_t count) {
    if (std::fread(buffer, 1, count, file_) < count) {
        throw FileIOException("IFFParser::ReadNextBytes(): Failed");
    }
    Advance(count);
}

bool IFFParser::TryReadNextBytes(void* buffer, uint32_t count) {
    if (atEnd_ || uint64_t{position_} + count > length_) return false;
    if (std::fread(buffer, 1, count, file_) < count) throw FileIOException("");
    Advance(count);
    return true;
}

BlockHeader IFFParser::ReadBlockHeader() {
    if (atEnd_) throw ParseException("");
    if (position_ & 1) {
        uint8_t padding;
        ReadNextBytes(&padding, 1);
    }
    uint8_t raw[8];
    ReadNextBytes(raw, sizeof raw);
    return DecodeHeader(raw);
}

std::optional<BlockHeader> IFFParser::TryReadBlockHeader() {
    if (atEnd_) return std::nullopt;
    uint32_t start = position_;
    uint8_t raw[8];
    bool ok = true;
    if (position_ & 1) ok = TryReadNextBytes(raw, 1);
    if (ok) ok = TryReadNextBytes(raw, sizeof raw);
    if (!ok) {
        RestorePosition(start);
        return std::nullopt;
    }
    return DecodeHeader(raw);
}

bool IFFParser::SameId(const BlockHeader& header, std::string_view id) const {
    return id.size() == header.id.size() && std::memcmp(header.id.data(), id.data(), id.size()) == 0;
}

uint32_t IFFParser::MatchBlockStart(std::string_view id) {
    BlockHeader header = ReadBlockHeader();
    if (!SameId(header, id)) throw ParseException("IFFParser::MatchBlockStart(): Failed");
    return header.size;
}

void IFFParser::MatchBlockStart(std::string_view id, uint32_t expectedSize) {
    if (MatchBlockStart(id) != expectedSize) throw ParseException("IFFParser::MatchBlockStart(): Failed");
}

std::optional<uint32_t> IFFParser::TryMatchBlockStart(std::string_view id) {
    uint32_t start = position_;
    std::optional<BlockHeader> header = TryReadBlockHeader();
    if (header && SameId(*header, id)) return header->size;
    RestorePosition(start);
    return std::nullopt;
}

bool IFFParser::TryMatchBlockStart(std::string_view id, uint32_t expectedSize) {
    uint32_t start = position_;
    std::optional<uint32_t> size = TryMatchBlockStart(id);
    if (size && *size == expectedSize) return true;
    RestorePosition(start);
    return false;
}

void IFFParser::MatchData(const void* expected, uint32_t count) {
    const auto* want = static_cast<const uint8_t*>(expected);
    uint8_t chunk[kChunkSize];
    while (count > 0) {
        uint32_t n = std::min(count, kChunkSize);
        ReadNextBytes(chunk, n);
        if (std::memcmp(chunk, want, n) != 0) throw ParseException("IFFParser::MatchData(): Failed");
        want += n;
        count -= n;
    }
}

bool IFFParser::TryMatchData(const void* expected, int32_t count) {
    if (count > -static_cast<int32_t>(kChunkSize) && count <= 0) return true;
    if (atEnd_) return false;
    uint32_t start = position_;
    const auto* want = static_cast<const uint8_t*>(expected);
    uint8_t chunk[kChunkSize];
    for (int32_t left = count; left > 0;) {
        uint32_t n = std::min(static_cast<uint32_t>(left), kChunkSize);
        if (!TryReadNextBytes(chunk, n) || std::memcmp(chunk, want, n) != 0) {
            RestorePosition(start);
            return false;
        }
        want += n;
        left -= static_cast<int32_t>(n);
    }
    return true;
}

void IFFParser::ReadString(std::string& target) {
    target.clear();
    uint8_t low;
    ReadNextBytes(&low, 1);
    uint32_t length = low;
    if (low > 127) {
        uint8_t high;
        ReadNextBytes(&high, 1);
        length = uint32_t{high} * 256 + low;
    }
    for (uint32_t i = 0; i < length; ++i) {
        char c;
        ReadNextBytes(&c, 1);
        if (c == '0') break;
        target.push_back(c);
    }
}

bool IFFParser::OverparseNextBlock() {
    BlockHeader header = ReadBlockHeader();
    uint64_t next = uint64_t{position_} + header.size;
    if (next > length_) throw ParseException("IFFParser::OverparseNextBlock(): Failed");
    RestorePosition(static_cast<uint32_t>(next));
    atEnd_ = position_ >= length_;
    return atEnd_;
}

void IFFParser::MatchFileEnd() {
    if (error_ || !atEnd_) throw ParseException("IFFParser::MatchFileEnd(): Failed");
}

void IFFParser::RestorePosition(uint32_t position) {
    std::fseek(file_, static_cast<long>(position), SEEK_SET);
    position_ = position;
}

}  // namespace sondrel
