#include "files/import/midi_file_reader.h"

#include <cstring>
#include <utility>

#include "model/exception.h"

namespace sondrel {

namespace {

[[noreturn]] void Fail(const std::string& what) { throw ParseException("ReadMidiFile(): " + what); }

// Reads big-endian numbers, variable-length quantities and byte runs from a
// span of the file, refusing to step past its end.
class ByteCursor {
public:
    ByteCursor(const uint8_t* begin, size_t size) : data_(begin), size_(size) {}

    bool AtEnd() const { return position_ >= size_; }
    size_t Left() const { return size_ - position_; }
    const uint8_t* Here() const { return data_ + position_; }

    uint8_t Byte() {
        if (AtEnd()) Fail("Unexpected end of data");
        return data_[position_++];
    }
    uint8_t Peek() const {
        if (AtEnd()) Fail("Unexpected end of data");
        return data_[position_];
    }
    uint32_t BigEndian(int bytes) {
        uint32_t value = 0;
        for (int i = 0; i < bytes; ++i) value = value << 8 | Byte();
        return value;
    }
    // At most four bytes of seven bits each.
    uint32_t VariableLength() {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            uint8_t b = Byte();
            value = value << 7 | (b & 0x7F);
            if (!(b & 0x80)) return value;
        }
        Fail("Variable-length number too long");
    }
    void Skip(size_t count) {
        if (count > Left()) Fail("Chunk runs past the end of the file");
        position_ += count;
    }
    std::string Text(size_t count) {
        const uint8_t* start = Here();
        Skip(count);
        return std::string(reinterpret_cast<const char*>(start), count);
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t position_ = 0;
};

uint8_t DataByte(ByteCursor& cursor) {
    uint8_t b = cursor.Byte();
    if (b & 0x80) Fail("Status byte where a data byte belongs");
    return b;
}

// Messages 0xC0 (program change) and 0xD0 (channel pressure) carry one data byte.
int DataBytesOf(uint8_t status) {
    uint8_t kind = status & 0xF0;
    return kind == 0xC0 || kind == 0xD0 ? 1 : 2;
}

bool Wanted(uint8_t metaType) {
    return metaType == kMetaText || metaType == kMetaCopyright || metaType == kMetaTrackName ||
           metaType == kMetaEndOfTrack || metaType == kMetaTempo;
}

MidiTrack ReadTrack(ByteCursor cursor, std::vector<std::string>& metaData) {
    MidiTrack track;
    uint64_t tick = 0;
    uint8_t runningStatus = 0;
    while (!cursor.AtEnd()) {
        tick += cursor.VariableLength();
        MidiEvent event;
        event.tick = tick;
        uint8_t first = cursor.Peek();
        if (first & 0x80) {
            cursor.Byte();
            event.status = first;
        } else if (runningStatus) {
            event.status = runningStatus;
        } else {
            Fail("Data byte without a status");
        }

        if (event.IsChannelMessage()) {
            runningStatus = event.status;
            event.data1 = DataByte(cursor);
            if (DataBytesOf(event.status) == 2) event.data2 = DataByte(cursor);
        } else if (event.status == 0xFF) {
            event.data1 = DataByte(cursor);
            std::string data = cursor.Text(cursor.VariableLength());
            if (!Wanted(event.data1)) continue;
            event.data = static_cast<uint32_t>(metaData.size());
            metaData.push_back(std::move(data));
        } else if (event.status == 0xF0 || event.status == 0xF7) {
            // System exclusive: nothing in it matters for the import.
            cursor.Skip(cursor.VariableLength());
        } else {
            Fail("System message in a track");
        }

        if (event.IsMeta(kMetaEndOfTrack)) break;
        if (event.IsChannelMessage() || event.status == 0xFF) track.events.push_back(event);
    }
    return track;
}

}  // namespace

MidiFile ReadMidiFile(const std::vector<uint8_t>& bytes) {
    ByteCursor cursor(bytes.data(), bytes.size());
    if (bytes.size() < 14 || std::memcmp(bytes.data(), "MThd", 4) != 0) Fail("No MIDI header");
    cursor.Skip(4);
    uint32_t headerLength = cursor.BigEndian(4);
    if (headerLength < 6) Fail("Header too short");
    MidiFile file;
    file.format = static_cast<int>(cursor.BigEndian(2));
    uint32_t trackCount = cursor.BigEndian(2);
    uint32_t division = cursor.BigEndian(2);
    cursor.Skip(headerLength - 6);

    if (file.format == 2) Fail("Format 2 (independent sequences) is not supported");
    if (file.format > 2) Fail("Unknown format");
    if (trackCount == 0) Fail("No tracks");
    if (file.format == 0 && trackCount != 1) Fail("Format 0 with more than one track");
    if (division & 0x8000) {
        file.smpte = true;
        file.framesPerSecond = 256 - static_cast<int>(division >> 8);
        file.ticksPerFrame = static_cast<int>(division & 0xFF);
        int fps = file.framesPerSecond;
        if (fps != 24 && fps != 25 && fps != 29 && fps != 30) Fail("Unknown SMPTE frame rate");
        if (file.ticksPerFrame == 0) Fail("Zero ticks per frame");
    } else {
        file.ticksPerQuarter = static_cast<int>(division);
        if (file.ticksPerQuarter == 0) Fail("Zero ticks per quarter note");
    }

    while (file.tracks.size() < trackCount) {
        if (cursor.Left() < 8) Fail("Fewer tracks than the header declares");
        bool isTrack = std::memcmp(cursor.Here(), "MTrk", 4) == 0;
        cursor.Skip(4);
        uint32_t length = cursor.BigEndian(4);
        const uint8_t* start = cursor.Here();
        cursor.Skip(length);
        if (isTrack) file.tracks.push_back(ReadTrack(ByteCursor(start, length), file.metaData));
    }
    return file;
}

}  // namespace sondrel
