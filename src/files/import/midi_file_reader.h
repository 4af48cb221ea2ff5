#pragma once
// Standard MIDI file reader: the header, the tracks and their events, with
// absolute times in the file's own ticks. Formats 0 and 1 are read; format 2
// and anything malformed are refused with ParseException.

#include <cstdint>
#include <string>
#include <vector>

namespace sondrel {

// Meta event types the importer looks at.
enum MidiMetaType : uint8_t {
    kMetaText = 0x01,
    kMetaCopyright = 0x02,
    kMetaTrackName = 0x03,
    kMetaEndOfTrack = 0x2F,
    kMetaTempo = 0x51,
};

// Channel messages and the meta events listed above; the rest is skipped.
struct MidiEvent {
    uint64_t tick = 0;   // absolute time in file ticks
    uint8_t status = 0;  // 0x80..0xEF channel message, 0xFF meta event
    uint8_t data1 = 0;   // channel messages: first data byte; meta events: the meta type
    uint8_t data2 = 0;   // channel messages: second data byte (0 for one-byte messages)
    uint32_t data = 0;   // meta events: index of their data in MidiFile::metaData

    bool IsChannelMessage() const { return status >= 0x80 && status < 0xF0; }
    bool IsMeta(uint8_t type) const { return status == 0xFF && data1 == type; }
    uint8_t Kind() const { return status & 0xF0; }     // 0x80 note off, 0x90 note on, ...
    uint8_t Channel() const { return status & 0x0F; }  // 0..15 for MIDI channels 1..16
};

struct MidiTrack {
    std::vector<MidiEvent> events;  // in file order, so ticks never decrease
};

struct MidiFile {
    int format = 0;
    // Time division: either ticks per quarter note, or SMPTE frames per second
    // (24, 25, 29 for 29.97 drop-frame, 30) with ticks per frame.
    bool smpte = false;
    int ticksPerQuarter = 0;
    int framesPerSecond = 0;
    int ticksPerFrame = 0;
    std::vector<MidiTrack> tracks;
    std::vector<std::string> metaData;

    const std::string& DataOf(const MidiEvent& meta) const { return metaData.at(meta.data); }
};

// Parses a whole file held in memory. Unknown chunks are skipped; running
// status carries on across meta and system-exclusive events.
MidiFile ReadMidiFile(const std::vector<uint8_t>& bytes);

}  // namespace sondrel
