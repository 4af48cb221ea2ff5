#include "files/export/wav_writer.h"

#include <bit>
#include <cerrno>
#include <cstring>

#include "files/safe_file_writer.h"
#include "model/exception.h"

namespace sondrel {

namespace {

void PutLe(unsigned char* at, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) at[i] = static_cast<unsigned char>(value >> (8 * i));
}

constexpr uint64_t kMaxDataBytes = 0xFFFFFFFFull - 36;

}  // namespace

WavWriter::~WavWriter() = default;

void WavWriter::Open(const std::string& path, uint32_t sampleRate, uint16_t channels) {
    if (file_) throw FileIOException("WavWriter::Open(): A file is already open");
    output_ = std::make_unique<SafeFileWriter>(path);
    file_ = output_->Stream();
    sampleRate_ = sampleRate;
    channels_ = channels;
    dataBytes_ = 0;
    WriteHeader();
}

void WavWriter::WriteHeader() {
    unsigned char header[44];
    const uint32_t data = static_cast<uint32_t>(dataBytes_ > kMaxDataBytes ? kMaxDataBytes : dataBytes_);
    std::memcpy(header, "RIFF", 4);
    PutLe(header + 4, 36 + data, 4);
    std::memcpy(header + 8, "WAVEfmt ", 8);
    PutLe(header + 16, 16, 4);
    PutLe(header + 20, 1, 2);  // PCM
    PutLe(header + 22, channels_, 2);
    PutLe(header + 24, sampleRate_, 4);
    PutLe(header + 28, sampleRate_ * channels_ * 2, 4);
    PutLe(header + 32, channels_ * 2u, 2);
    PutLe(header + 34, 16, 2);
    std::memcpy(header + 36, "data", 4);
    PutLe(header + 40, data, 4);
    if (std::fseek(file_, 0, SEEK_SET) != 0 || std::fwrite(header, 1, sizeof header, file_) != sizeof header)
        throw FileIOException(SystemErrorText(errno));
}

void WavWriter::Write(const int16_t* samples, size_t count) {
    if constexpr (std::endian::native == std::endian::little) {
        // The samples are already in the file's byte order: one write for the whole block.
        if (std::fwrite(samples, 2, count, file_) != count)
            throw FileIOException(SystemErrorText(errno));
        dataBytes_ += 2 * count;
        return;
    }
    unsigned char bytes[4096];
    while (count > 0) {
        const size_t chunk = count < sizeof bytes / 2 ? count : sizeof bytes / 2;
        for (size_t i = 0; i < chunk; ++i) PutLe(bytes + 2 * i, static_cast<uint16_t>(samples[i]), 2);
        if (std::fwrite(bytes, 2, chunk, file_) != chunk)
            throw FileIOException(SystemErrorText(errno));
        dataBytes_ += 2 * chunk;
        samples += chunk;
        count -= chunk;
    }
}

void WavWriter::Close() {
    if (!output_) return;
    WriteHeader();
    file_ = nullptr;
    const std::unique_ptr<SafeFileWriter> output = std::move(output_);
    output->Commit();
}

void WavWriter::CloseAll(const std::vector<WavWriter*>& writers) {
    std::vector<std::unique_ptr<SafeFileWriter>> outputs;
    std::vector<SafeFileWriter*> pending;
    for (WavWriter* writer : writers) {
        if (!writer->output_) continue;
        writer->WriteHeader();
        writer->file_ = nullptr;
        outputs.push_back(std::move(writer->output_));
        pending.push_back(outputs.back().get());
    }
    SafeFileWriter::CommitAll(pending);
}

}  // namespace sondrel
