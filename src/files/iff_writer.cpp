#include "files/iff_writer.h"

#include <algorithm>
#include <cerrno>

#include "files/file_stream.h"
#include "files/safe_file_writer.h"
#include "model/exception.h"

namespace sondrel {

namespace {

constexpr size_t kInitialBlockRoom = 512;

void StoreLittleEndian32(uint8_t* out, uint32_t value) {
    for (int i = 0; i < 4; ++i) out[i] = static_cast<uint8_t>(value >> (8 * i));
}

// The failure, and on a second line the reason the stream gave.
[[noreturn]] void ThrowWriteFailure(const char* what = "IFFWriter::WriteData(): Can't write data") {
    std::string message = what;
    if (errno != 0) message += "\n" + SystemErrorText(errno);
    throw FileIOException(message);
}

}  // namespace

IFFWriter::~IFFWriter() {
    if (ownsFile_ && file_) std::fclose(file_);
}

void IFFWriter::Create(const std::string& path) {
    file_ = std::fopen(path.c_str(), "wb");
    if (!file_) throw FileIOException("IFFWriter::Create(): Can't open file");
    ownsFile_ = true;
    length_ = 0;
    position_ = 0;
}

void IFFWriter::Attach(FILE* file) {
    file_ = file;
    ownsFile_ = false;
    length_ = static_cast<int32_t>(StreamLength(file));
    position_ = static_cast<uint32_t>(std::max(std::ftell(file), 0L));
}

void IFFWriter::Close() {
    if (ownsFile_ && file_) std::fclose(file_);
    ownsFile_ = false;
    file_ = nullptr;
    blocks_.clear();
    blocks_.shrink_to_fit();
}

void IFFWriter::Advanced() { length_ = std::max(length_, static_cast<int32_t>(position_)); }

void IFFWriter::Align() {
    if (!(position_ & 1)) return;
    const uint8_t zero = 0;
    WriteData(&zero, 1);
}

void IFFWriter::WriteData(const void* buffer, uint32_t count) {
    errno = 0;
    if (count > 0 && std::fwrite(buffer, 1, count, file_) < count) ThrowWriteFailure();
    position_ += count;
    Advanced();
}

void IFFWriter::WriteString(std::string_view text) {
    auto length = static_cast<uint16_t>(text.size());
    uint8_t prefix[2] = {static_cast<uint8_t>(length & 0xFF), static_cast<uint8_t>(length >> 8)};
    const size_t prefixSize = text.size() < 128 ? 1 : 2;
    errno = 0;
    if (std::fwrite(prefix, 1, prefixSize, file_) != prefixSize ||
        std::fwrite(text.data(), 1, text.size(), file_) != text.size())
        ThrowWriteFailure("IFFWriter::WriteData(): Can't write string data");
    position_ += static_cast<uint32_t>(prefixSize + text.size());
    Advanced();
}

std::string WhyStringWontReadBack(std::string_view text) {
    if (text.find('0') != std::string_view::npos) return "it holds the digit 0";
    const size_t length = text.size();
    if (length < 128 || (length <= 0xFFFF && (length & 0xFF) >= 128)) return {};
    return "a text of " + std::to_string(length) + " characters does not load back";
}

void IFFWriter::WriteBlockHeader(std::string_view id, uint32_t size, bool sizeGiven) {
    if (id.size() != 4) throw InternalException("IFFWriter::StartBlock(): Bad identifier");
    Align();
    uint8_t header[8];
    std::copy(id.begin(), id.end(), header);
    StoreLittleEndian32(header + 4, size);
    if (blocks_.capacity() == 0) blocks_.reserve(kInitialBlockRoom);
    uint32_t start = position_;
    WriteData(header, sizeof header);
    blocks_.emplace_back(start, sizeGiven ? start + size + 8 : 0);
}

void IFFWriter::StartBlock(std::string_view id) { WriteBlockHeader(id, 0, false); }

void IFFWriter::StartBlock(std::string_view id, uint32_t size) { WriteBlockHeader(id, size, true); }

void IFFWriter::EndBlock() {
    if (blocks_.empty()) throw InternalException("IFFWriter::EndBlock(): No open block");
    auto [start, end] = blocks_.back();
    blocks_.pop_back();
    if (end != 0) return;
    uint8_t size[4];
    StoreLittleEndian32(size, position_ - start - 8);
    errno = 0;
    if (std::fseek(file_, static_cast<long>(start + 4), SEEK_SET) != 0 ||
        std::fwrite(size, 1, sizeof size, file_) != sizeof size ||
        std::fseek(file_, static_cast<long>(position_), SEEK_SET) != 0)
        ThrowWriteFailure();
}

}  // namespace sondrel
