#pragma once
// The PNG writer the drawing tools share: 8-bit RGBA, every row unfiltered,
// the whole image in one deflated IDAT chunk.

#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace sondrel::tools {

inline void PutBigEndian(std::vector<uint8_t>& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(value >> shift));
}

inline void PutChunk(std::vector<uint8_t>& out, const char type[4], const std::vector<uint8_t>& data) {
    PutBigEndian(out, static_cast<uint32_t>(data.size()));
    const size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    PutBigEndian(out, static_cast<uint32_t>(crc32(0, out.data() + start, static_cast<uInt>(out.size() - start))));
}

// rgba holds width * height pixels, row by row; false when zlib fails.
inline bool EncodePng(int width, int height, const std::vector<uint8_t>& rgba, std::vector<uint8_t>& png) {
    std::vector<uint8_t> rows;
    const size_t stride = static_cast<size_t>(width) * 4;
    for (int row = 0; row < height; ++row) {
        rows.push_back(0);
        rows.insert(rows.end(), rgba.begin() + row * stride, rgba.begin() + (row + 1) * stride);
    }
    uLongf packedSize = compressBound(static_cast<uLong>(rows.size()));
    std::vector<uint8_t> packed(packedSize);
    if (compress2(packed.data(), &packedSize, rows.data(), static_cast<uLong>(rows.size()), 9) != Z_OK) return false;
    packed.resize(packedSize);

    std::vector<uint8_t> header;
    PutBigEndian(header, static_cast<uint32_t>(width));
    PutBigEndian(header, static_cast<uint32_t>(height));
    header.insert(header.end(), {8, 6, 0, 0, 0});  // depth, RGBA, deflate, no filter choice, no interlace

    png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    PutChunk(png, "IHDR", header);
    PutChunk(png, "IDAT", packed);
    PutChunk(png, "IEND", {});
    return true;
}

// The bytes into a new file; false when it can't be written completely.
inline bool WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::FILE* out = std::fopen(path.c_str(), "wb");
    bool written = out && std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
    if (out && std::fclose(out) != 0) written = false;
    return written;
}

}  // namespace sondrel::tools
