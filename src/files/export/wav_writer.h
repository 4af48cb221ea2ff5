#pragma once
// Writes 16-bit PCM WAV files; the header's sizes are filled in on Close.

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "files/safe_file_writer.h"

namespace sondrel {

// The file appears only when Close succeeds: until then it is written beside
// its place, and a writer destroyed unclosed leaves nothing behind.
class WavWriter {
public:
    WavWriter() = default;
    ~WavWriter();
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    // Throws FileIOException when the file can't be created.
    void Open(const std::string& path, uint32_t sampleRate, uint16_t channels);
    void Write(const int16_t* samples, size_t count);
    // Completes the header; throws FileIOException when the data did not reach the disk.
    void Close();
    // Closes several writers so that either all their files appear or none
    // does (and files they would replace stay as they were).
    static void CloseAll(const std::vector<WavWriter*>& writers);

    uint64_t FramesWritten() const { return dataBytes_ / (2u * channels_); }

private:
    void WriteHeader();

    std::unique_ptr<SafeFileWriter> output_;
    std::FILE* file_ = nullptr;
    uint32_t sampleRate_ = 44100;
    uint16_t channels_ = 2;
    uint64_t dataBytes_ = 0;
};

}  // namespace sondrel
