#include "files/export/midi_export.h"

#include <cstdio>

#include "files/safe_file_writer.h"
#include "files/export/song_stepper.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {

namespace {

constexpr uint16_t kTracks = 5;
constexpr uint16_t kTicksPerQuarter = 64;
constexpr uint32_t kTicksPerFrame = 8;
// 64 ticks a quarter note at 133333 microseconds: 8 ticks last a sixtieth of a second.
constexpr uint32_t kTempo = 133333;
constexpr uint8_t kVelocity = 127;
constexpr uint8_t kVolumeController = 7;

// Loudness of the chip's volume levels 0..15, scaled so that 15 gives 127.
constexpr std::array<int, 16> kLevels = {0,    330,  440,  550,  660,  825,  990,  1320,
                                         1650, 1980, 2475, 3080, 3850, 4840, 5940, 7590};

class Track {
public:
    // "MTrk" and a length that Finish patches.
    Track() : bytes_{'M', 'T', 'r', 'k', 0, 0, 0, 0} {}

    void Meta(uint32_t delta, uint8_t type, const std::string& text) {
        AppendVariableLength(bytes_, delta);
        Bytes({0xFF, type});
        AppendVariableLength(bytes_, static_cast<uint32_t>(text.size()));
        Text(text);
    }
    void Tempo(uint32_t delta, uint32_t microsecondsPerQuarter) {
        AppendVariableLength(bytes_, delta);
        Bytes({0xFF, 0x51, 0x03, static_cast<uint8_t>(microsecondsPerQuarter >> 16),
               static_cast<uint8_t>(microsecondsPerQuarter >> 8), static_cast<uint8_t>(microsecondsPerQuarter)});
    }
    // A channel event with its full status byte.
    void Event(uint32_t delta, uint8_t status, std::initializer_list<uint8_t> data) {
        AppendVariableLength(bytes_, delta);
        bytes_.push_back(status);
        Bytes(data);
    }
    void EndOfTrack(uint32_t delta) {
        AppendVariableLength(bytes_, delta);
        Bytes({0xFF, 0x2F, 0x00});
    }

    // Patches the length and hands the finished chunk over.
    const std::vector<uint8_t>& Finish() {
        const uint32_t length = static_cast<uint32_t>(bytes_.size() - 8);
        for (int i = 0; i < 4; ++i) bytes_[4 + i] = static_cast<uint8_t>(length >> (24 - 8 * i));
        return bytes_;
    }

private:
    void Bytes(std::initializer_list<uint8_t> values) { bytes_.insert(bytes_.end(), values); }
    void Text(const std::string& text) { bytes_.insert(bytes_.end(), text.begin(), text.end()); }
    void Long(uint32_t value) {
        Bytes({static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
               static_cast<uint8_t>(value)});
    }

    std::vector<uint8_t> bytes_;
};

void Append(std::vector<uint8_t>& out, const std::vector<uint8_t>& bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

std::vector<uint8_t> HeaderChunk() {
    return {'M', 'T', 'h', 'd', 0, 0, 0, 6,
            0, 1,  // format 1
            0, kTracks, static_cast<uint8_t>(kTicksPerQuarter >> 8), static_cast<uint8_t>(kTicksPerQuarter & 0xFF)};
}

std::vector<uint8_t> ConductorTrack(const Module& module) {
    Track track;
    track.Meta(0, 0x01, "Name: " + module.title);
    track.Meta(0, 0x01, "Author: " + module.author);
    track.Meta(0, 0x01, "Notes: " + module.notes);
    track.Tempo(0, kTempo);
    track.EndOfTrack(0);
    return track.Finish();
}

// Noise notes sound as three fixed pitches by rate; the two notes that follow
// tone channel 2 keep their established values, which lie outside 0..127.
uint8_t NoiseMidiNote(uint8_t note) {
    switch ((note - kFirstNoiseNote) & 3) {
        case 0:
            return 93;
        case 1:
            return 81;
        case 2:
            return 69;
        default:
            return static_cast<uint8_t>(note - 24);
    }
}

uint8_t ProgramFor(const MidiExportOptions& options, int channel, const ChannelFrame& frame) {
    const int instrument = frame.instrument & (kInstruments - 1);
    if (channel < kToneChannels) return options.programs[MidiExportOptions::kToneRows + instrument];
    const int type = (frame.note - kFirstNoiseNote) / 4;  // 0 periodic, 1 white
    return options.programs[MidiExportOptions::kPeriodicNoiseRows + MidiExportOptions::kRowsPerType * type +
                            instrument];
}

std::vector<uint8_t> ChannelTrack(const MidiExportOptions& options, SongStepper& stepper, int channel) {
    Track track;
    char name[16];
    std::snprintf(name, sizeof name, "Channel %d", channel);
    track.Meta(0, 0x03, name);

    const auto c = static_cast<uint8_t>(channel);
    const auto noteOff = [&](uint32_t delta, uint8_t note) { track.Event(delta, 0x80 | c, {note, kVelocity}); };

    stepper.Restart();
    bool noteOn = false;
    uint8_t lastNote = 0;
    int lastProgram = -1;
    int lastVolume = -1;
    uint32_t delta = 0;
    do {
        stepper.Step();
        const ChannelFrame frame = stepper.Channel(channel);
        if (frame.triggered) {
            if (noteOn) {
                noteOff(delta, lastNote);
                delta = 0;
                noteOn = false;
            }
            if (frame.notePresent) {
                const uint8_t program = ProgramFor(options, channel, frame);
                if (program != lastProgram) {
                    track.Event(0, 0xC0 | c, {program});
                    lastProgram = program;
                }
                lastNote = channel < kToneChannels ? stepper.MidiNote(channel) : NoiseMidiNote(frame.note);
                track.Event(delta, 0x90 | c, {lastNote, kVelocity});
                delta = 0;
                noteOn = true;
            }
        } else if (noteOn && channel < kToneChannels && frame.sounding) {
            // An arpeggio step or a slide past the middle between two notes:
            // the nearest note takes over.
            const uint8_t now = stepper.MidiNote(channel);
            if (now != lastNote) {
                noteOff(delta, lastNote);
                track.Event(0, 0x90 | c, {now, kVelocity});
                lastNote = now;
                delta = 0;
            }
        }
        if (!frame.sounding && noteOn) {
            noteOff(delta, lastNote);
            delta = 0;
            noteOn = false;
        }
        if (noteOn) {
            const auto volume = static_cast<uint8_t>(kLevels[frame.level & 15] * 127 / kLevels[15]);
            if (volume != lastVolume) {
                track.Event(delta, 0xB0 | c, {kVolumeController, volume});
                lastVolume = volume;
                delta = 0;
            }
        }
        delta += kTicksPerFrame;
    } while (!stepper.Ended());
    if (noteOn) {
        noteOff(delta, lastNote);
        delta = 0;
    }
    track.EndOfTrack(delta);
    return track.Finish();
}

}  // namespace

void MidiExportOptions::Reset() {
    for (int i = 0; i < kRowsPerType; ++i) {
        programs[kToneRows + i] = kToneDefault;
        programs[kPeriodicNoiseRows + i] = kPeriodicNoiseDefault;
        programs[kWhiteNoiseRows + i] = kWhiteNoiseDefault;
    }
}

void AppendVariableLength(std::vector<uint8_t>& out, uint32_t value) {
    uint8_t groups[5];
    int count = 0;
    do {
        groups[count++] = static_cast<uint8_t>(value & 0x7F);
        value >>= 7;
    } while (value != 0);
    while (count > 1) out.push_back(static_cast<uint8_t>(groups[--count] | 0x80));
    out.push_back(groups[0]);
}

std::vector<uint8_t> BuildMidi(const MidiExportOptions& options, Module& module) {
    std::vector<uint8_t> out = HeaderChunk();
    Append(out, ConductorTrack(module));
    SongStepper stepper(module);
    for (int channel = 0; channel < kChannels; ++channel) Append(out, ChannelTrack(options, stepper, channel));
    return out;
}

void WriteMidiFile(const MidiExportOptions& options, Module& module, const std::string& path) {
    const std::vector<uint8_t> bytes = BuildMidi(options, module);
    ReplaceFileContents(path, bytes.data(), bytes.size());
}

bool ExportMidi(MidiExportOptions& options, Module& module, const std::string& path, MidiExportDialog& dialog) {
    if (!dialog.EditMidiExportOptions(options)) return false;
    WriteMidiFile(options, module, path);
    return true;
}

}  // namespace sondrel
