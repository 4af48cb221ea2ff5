#include "files/import/midi_import.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "files/general_midi.h"
#include "files/import/importers.h"
#include "files/import/midi_file_reader.h"
#include "model/exception.h"
#include "model/notes.h"
#include "model/storable_text.h"

namespace sondrel {

namespace {

constexpr int kMidiChannels = 16;
constexpr int kDrumChannel = 9;               // MIDI channel 10
constexpr int kSongLines = kPatterns * kMaxLines;  // everything after this is cut
constexpr size_t kLargestFile = 16u << 20;
constexpr uint32_t kDefaultTempo = 500000;    // microseconds per quarter note: 120 beats per minute
constexpr uint8_t kOneTickPerLine = 8;        // speed in eighths of a tick
constexpr uint8_t kControllerVolume = 7, kControllerExpression = 11, kControllerAllSoundOff = 120,
                  kControllerResetAll = 121, kControllerAllNotesOff = 123;

using Wide = unsigned __int128;

std::vector<uint8_t> ReadWholeStream(FILE* file) {
    std::vector<uint8_t> bytes;
    uint8_t buffer[65536];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        if (bytes.size() + got > kLargestFile) throw ParseException("ImportMidi(): File too large");
        bytes.insert(bytes.end(), buffer, buffer + got);
    }
    if (std::ferror(file)) throw FileIOException("ImportMidi(): Can't read the file");
    return bytes;
}

// All tracks' events in one time order: by tick, then by track, then as they stand in the track.
std::vector<const MidiEvent*> MergeTracks(const MidiFile& file) {
    std::vector<const MidiEvent*> merged;
    for (const MidiTrack& track : file.tracks)
        for (const MidiEvent& event : track.events) merged.push_back(&event);
    std::stable_sort(merged.begin(), merged.end(),
                     [](const MidiEvent* a, const MidiEvent* b) { return a->tick < b->tick; });
    return merged;
}

bool IsNoteOn(const MidiEvent& e) { return e.Kind() == 0x90 && e.data2 > 0; }
bool IsNoteOff(const MidiEvent& e) { return e.Kind() == 0x80 || (e.Kind() == 0x90 && e.data2 == 0); }

uint32_t TempoOf(const MidiFile& file, const MidiEvent& e) {
    const std::string& data = file.DataOf(e);
    if (data.size() != 3) return 0;
    auto byte = [&](int i) { return uint32_t{static_cast<uint8_t>(data[i])}; };
    return byte(0) << 16 | byte(1) << 8 | byte(2);
}

// Maps file ticks to output lines. Times are kept exact, as microseconds times
// a fixed denominator, so rounding each onset to its line never drifts.
// Ticks must be asked for in non-decreasing order.
class TimeMap {
public:
    TimeMap(const MidiFile& file, int ticksPerSecond, int linesPerBeat)
        : file_(file), rate_(ticksPerSecond), linesPerBeat_(linesPerBeat) {
        if (file.smpte) {
            // 29 stands for 29.97 frames per second (drop-frame).
            frameRateNumerator_ = file.framesPerSecond == 29 ? 30000 : file.framesPerSecond;
            frameRateDenominator_ = file.framesPerSecond == 29 ? 1001 : 1;
            denominator_ = Wide(frameRateNumerator_) * file.ticksPerFrame;
        } else {
            denominator_ = file.ticksPerQuarter;
        }
    }

    void SetTempo(uint64_t tick, uint32_t microsecondsPerQuarter) {
        if (file_.smpte) return;  // absolute time: tempo changes only matter for beats
        segmentStart_ = Time(tick);
        segmentTick_ = tick;
        tempo_ = microsecondsPerQuarter;
    }
    uint32_t Tempo() const { return file_.smpte ? kDefaultTempo : tempo_; }

    int LineAt(uint64_t tick) const {
        if (linesPerBeat_ > 0 && !file_.smpte) return Rounded(Wide(tick) * linesPerBeat_, Wide(file_.ticksPerQuarter));
        if (linesPerBeat_ > 0) return Rounded(Time(tick) * linesPerBeat_, denominator_ * kDefaultTempo);
        return Rounded(Time(tick) * rate_, denominator_ * 1000000u);
    }

    // The speed, in eighths of a tick per line, at which lines of a quantised
    // score last as long as the file's beats; at least one tick per line.
    uint8_t Speed() const {
        Wide eighths = Wide(Tempo()) * rate_ * 8;
        Wide perLine = Wide(linesPerBeat_) * 1000000u;
        int speed = Rounded(eighths, perLine);
        return static_cast<uint8_t>(std::clamp<int>(speed, kOneTickPerLine, 255));
    }

private:
    // Microseconds times denominator_.
    Wide Time(uint64_t tick) const {
        if (file_.smpte) return Wide(tick) * 1000000u * frameRateDenominator_;
        return segmentStart_ + Wide(tick - segmentTick_) * tempo_;
    }
    static int Rounded(Wide numerator, Wide denominator) {
        Wide line = (numerator * 2 + denominator) / (denominator * 2);
        return line > Wide(kSongLines) ? kSongLines : static_cast<int>(line);
    }

    const MidiFile& file_;
    int rate_;
    int linesPerBeat_;
    Wide denominator_ = 1;
    uint32_t frameRateNumerator_ = 1, frameRateDenominator_ = 1;
    Wide segmentStart_ = 0;
    uint64_t segmentTick_ = 0;
    uint32_t tempo_ = kDefaultTempo;
};

// Writes cells into the module's patterns 0, 1, 2, ..., 256 lines each,
// creating them as they are reached. Lines beyond the last pattern are dropped.
class LineWriter {
public:
    explicit LineWriter(Module& module) : module_(module) {}

    // Nothing for lines beyond the last pattern, but the song then fills all of them.
    PatternLine* At(int line) {
        if (line >= kSongLines) lastLine_ = kSongLines - 1;
        if (line < 0 || line >= kSongLines) return nullptr;
        EnsurePatterns(line / kMaxLines + 1);
        lastLine_ = std::max(lastLine_, line);
        return &module_.patterns[line / kMaxLines].lines[line % kMaxLines];
    }

    int LastLine() const { return lastLine_; }

    // Ends the song after the last line written, with the pattern list 0, 1, 2, ...
    void Finish() {
        const int songLines = lastLine_ + 1;
        int count = (songLines + kMaxLines - 1) / kMaxLines;
        EnsurePatterns(count);
        for (int p = 0; p < count; ++p) {
            module_.patterns[p].length = kMaxLines;
            module_.patternList[p] = static_cast<uint8_t>(p);
        }
        module_.patterns[count - 1].length = static_cast<uint16_t>(songLines - (count - 1) * kMaxLines);
        module_.patternListLength = static_cast<uint16_t>(count);
        module_.repeatPosition = 0;
    }

private:
    void EnsurePatterns(int count) {
        for (; created_ < count; ++created_) module_.CreatePattern(created_);
    }

    Module& module_;
    int created_ = 0;
    int lastLine_ = 0;
};

// A note held on a chip channel.
struct HeldNote {
    uint32_t id = 0;
    uint8_t midiChannel = 0;
    uint8_t key = 0;
    uint8_t velocity = 0;
    uint8_t note = kNoteEmpty;  // the tracker note it plays
    uint8_t instrument = 0;
    uint8_t volume = 0;
};

// One chip channel's notes as they are pressed and released, turned into
// cells line by line. The newest held note sounds; a note sounds for at least
// one line; when the sounding note ends, the newest note still held takes
// over, or "VO" 0 silences the channel when none is.
class ChannelLane {
public:
    ChannelLane(LineWriter& writer, int channel) : writer_(writer), channel_(channel) {}

    void NoteOn(int line, const HeldNote& note) {
        MoveTo(line);
        Release(note.midiChannel, note.key);  // a key struck again replaces its earlier press
        held_.push_back(note);
        // A note with this many newer ones held over it would hardly ever sound again.
        if (held_.size() > kMostHeld) held_.erase(held_.begin());
        started_ = note;
    }

    void NoteOff(int line, uint8_t midiChannel, uint8_t key) {
        MoveTo(line);
        Release(midiChannel, key);
    }

    void AllNotesOff(int line, uint8_t midiChannel) {
        MoveTo(line);
        std::erase_if(held_, [&](const HeldNote& n) { return n.midiChannel == midiChannel; });
    }

    // The MIDI channel's loudness changed: held notes take their new volume,
    // and the sounding one is given it with "VO".
    template <typename VolumeOf>
    void VolumeChanged(int line, uint8_t midiChannel, VolumeOf volumeOf) {
        MoveTo(line);
        for (HeldNote& n : held_)
            if (n.midiChannel == midiChannel) n.volume = volumeOf(n.velocity);
        if (started_ && started_->midiChannel == midiChannel) started_->volume = volumeOf(started_->velocity);
        volumeChanged_ = true;
    }

    void Finish() {
        Resolve();
        if (SoundingReleased()) {
            ++line_;
            Resolve();
        }
    }

private:
    void MoveTo(int line) {
        if (line <= line_) return;
        Resolve();
        if (line_ + 1 < line && SoundingReleased()) {
            ++line_;
            Resolve();
        }
        line_ = line;
    }

    const HeldNote* Held(uint32_t id) const {
        for (const HeldNote& n : held_)
            if (n.id == id) return &n;
        return nullptr;
    }
    bool SoundingReleased() const { return sounding_ && !Held(sounding_->id); }

    void Release(uint8_t midiChannel, uint8_t key) {
        auto it = std::find_if(held_.begin(), held_.end(),
                               [&](const HeldNote& n) { return n.midiChannel == midiChannel && n.key == key; });
        if (it != held_.end()) held_.erase(it);
    }

    // Decides what the current line gets, once all its events are in.
    void Resolve() {
        bool volumeChanged = std::exchange(volumeChanged_, false);
        if (started_) {
            WriteNote(*started_);
            started_.reset();
        } else if (SoundingReleased()) {
            if (held_.empty()) {
                WriteVolume(0);
                sounding_.reset();
            } else if (held_.back().note == sounding_->note && held_.back().instrument == sounding_->instrument) {
                // The same pitch goes on from another key: no need to strike it again.
                sounding_ = held_.back();
                if (sounding_->volume != writtenVolume_) WriteVolume(sounding_->volume);
            } else {
                WriteNote(held_.back());
            }
        } else if (sounding_ && volumeChanged) {
            uint8_t volume = Held(sounding_->id)->volume;
            if (volume != writtenVolume_) WriteVolume(volume);
        }
    }

    void WriteNote(const HeldNote& note) {
        sounding_ = note;
        writtenVolume_ = note.volume;
        if (PatternLine* cell = writer_.At(line_)) {
            cell->note[channel_] = note.note;
            cell->detune[channel_] = 0;
            cell->instrument[channel_] = note.instrument;
            cell->volume[channel_] = note.volume;
            cell->channelCommand[channel_] = kChannelCommandNone;
        }
    }

    void WriteVolume(uint8_t volume) {
        writtenVolume_ = volume;
        if (PatternLine* cell = writer_.At(line_)) {
            cell->channelCommand[channel_] = kChannelCommandVO;
            cell->channelParam[channel_] = volume;
        }
    }

    static constexpr size_t kMostHeld = 64;

    LineWriter& writer_;
    int channel_;
    int line_ = 0;
    std::vector<HeldNote> held_;          // oldest first
    std::optional<HeldNote> started_;     // the newest note struck on line_
    std::optional<HeldNote> sounding_;    // what the cells written so far leave sounding
    uint8_t writtenVolume_ = 0;
    bool volumeChanged_ = false;
};

// Velocity, channel volume and expression each scale the level by
// 40 log10(value / 127) dB, as General MIDI sound sets do; a chip volume step
// is 2 dB. A note that sounds at all keeps at least volume 1.
uint8_t NoteVolume(int velocity, int channelVolume, int expression) {
    double product = double(velocity) * channelVolume * expression / (127.0 * 127.0 * 127.0);
    if (product <= 0) return 1;
    long volume = std::lround(15.0 + 20.0 * std::log10(product));
    return static_cast<uint8_t>(std::clamp(volume, 1L, 15L));
}

// A key on a tone channel: the same note number (an octave up with the 2x
// divider, whose tones sound an octave lower), moved by octaves into the
// range the tone channels play.
uint8_t ToneNote(int key, uint8_t divider) {
    int note = key + (divider == kDivider2x ? 12 : 0);
    while (note < kFirstPlayableTone) note += 12;
    while (note > kLastPlayableTone) note -= 12;
    return static_cast<uint8_t>(note);
}

constexpr uint8_t kPeriodicHigh = 247, kPeriodicMiddle = 248, kPeriodicLow = 249;
constexpr uint8_t kWhiteHigh = 251, kWhiteMiddle = 252, kWhiteLow = 253;

// Any key but a drum on the noise channel: white noise by register.
uint8_t RegisterNoise(int key) {
    if (key < 48) return kWhiteLow;
    if (key < 72) return kWhiteMiddle;
    return kWhiteHigh;
}

// General MIDI drum keys 27..87 by sound: K kicks and surdos (periodic noise,
// low), T toms (white, low), S snares, claps and scrapers (white, middle),
// D hand drums (periodic, middle), B bells, blocks and whistles (periodic,
// high), C hi-hats, cymbals, shakers and clicks (white, high).
constexpr int kFirstDrumKey = 27;
constexpr char kDrumSounds[] = "CCCCCCCC" "KKSSSS" "TCTCTCTTCT" "CCCCCBCSC" "DDDDDDD" "BBCCBB" "SSBBB" "DDBB" "CCCBKK";

uint8_t DrumNoise(int key) {
    const int index = key - kFirstDrumKey;
    if (index < 0 || index >= int(sizeof kDrumSounds) - 1) return RegisterNoise(key);
    switch (kDrumSounds[index]) {
        case 'K': return kPeriodicLow;
        case 'T': return kWhiteLow;
        case 'S': return kWhiteMiddle;
        case 'D': return kPeriodicMiddle;
        case 'B': return kPeriodicHigh;
        default: return kWhiteHigh;
    }
}

// Printable characters only, without surrounding blanks.
std::string Printable(const std::string& text) {
    std::string kept;
    for (char c : text) {
        auto b = static_cast<unsigned char>(c);
        if (b >= 32 && b < 127) kept.push_back(c);
        else if (b == '\n' || b == '\r' || b == '\t') kept.push_back(' ');
    }
    size_t first = kept.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return kept.substr(first, kept.find_last_not_of(' ') - first + 1);
}

std::string FileStem(const std::string& path) {
    size_t slash = path.find_last_of("/\\");
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

// What the file holds, gathered before the options are asked for.
struct MidiSurvey {
    std::array<bool, kMidiChannels> hasNotes{};
    std::array<int, kMidiChannels> programAtFirstNote{};
    std::vector<int> channelsByFirstNote;
    std::string title;
    std::string notes;
};

MidiSurvey Survey(const MidiFile& file, const std::vector<const MidiEvent*>& merged) {
    MidiSurvey survey;
    std::array<int, kMidiChannels> program{};
    for (const MidiEvent* e : merged) {
        if (e->Kind() == 0xC0) program[e->Channel()] = e->data1;
        if (e->IsChannelMessage() && IsNoteOn(*e) && !survey.hasNotes[e->Channel()]) {
            survey.hasNotes[e->Channel()] = true;
            survey.programAtFirstNote[e->Channel()] = program[e->Channel()];
            survey.channelsByFirstNote.push_back(e->Channel());
        }
        if (e->IsMeta(kMetaText) || e->IsMeta(kMetaCopyright)) {
            std::string text = Printable(file.DataOf(*e));
            // Only whole texts go into the notes, as many as a module file holds.
            if (text.empty() || survey.notes.size() + text.size() + 1 > kLongestStorableText) continue;
            if (!survey.notes.empty()) survey.notes += '\n';
            survey.notes += text;
        }
    }
    for (const MidiEvent& e : file.tracks.front().events) {
        if (e.IsMeta(kMetaTrackName)) {
            survey.title = Printable(file.DataOf(e));
            break;
        }
    }
    return survey;
}

MidiImportOptions Propose(const MidiSurvey& survey) {
    MidiImportOptions proposal;
    proposal.chip = {kDivider1x, kChipNtsc};
    int nextTone = 0;
    for (int ch : survey.channelsByFirstNote) {
        MidiChannelChoice& choice = proposal.channels[ch];
        choice.hasNotes = choice.enable = true;
        if (ch != kDrumChannel) choice.chipChannel = static_cast<uint8_t>(nextTone++ % kToneChannels);
    }
    proposal.channels[kDrumChannel].chipChannel = kNoiseChannel;
    int instrument = 0;
    for (MidiChannelChoice& choice : proposal.channels)
        if (choice.enable) choice.instrument = static_cast<uint8_t>(std::min(instrument++, kInstruments - 1));
    return proposal;
}

void CheckOptions(MidiImportOptions& options) {
    RequireChipSettings(options.chip, "ImportMidi");
    for (MidiChannelChoice& choice : options.channels) {
        choice.chipChannel = static_cast<uint8_t>(std::min<int>(choice.chipChannel, kChannels - 1));
        choice.instrument = static_cast<uint8_t>(std::min<int>(choice.instrument, kInstruments - 1));
    }
    options.linesPerBeat = std::clamp(options.linesPerBeat, 0, 960);
}

// An instrument is named after the program that the first MIDI channel to
// play it has when its first note starts.
void NameInstruments(Module& module, const MidiSurvey& survey, const MidiImportOptions& options) {
    std::array<bool, kInstruments> named{};
    for (int ch = 0; ch < kMidiChannels; ++ch) {
        const MidiChannelChoice& choice = options.channels[ch];
        if (!choice.enable || !survey.hasNotes[ch] || named[choice.instrument]) continue;
        named[choice.instrument] = true;
        const int program = survey.programAtFirstNote[ch] & 127;
        module.instruments[choice.instrument].name =
            ch == kDrumChannel ? "Drum kit" : Printable(GeneralMidiProgramNames()[program]);
    }
}

// Plays the merged events into the module's patterns.
void WriteSong(Module& module, const MidiFile& file, const std::vector<const MidiEvent*>& merged,
               const MidiImportOptions& options) {
    LineWriter writer(module);
    TimeMap time(file, module.TicksPerSecond(), options.linesPerBeat);
    std::vector<ChannelLane> lanes;
    for (int c = 0; c < kChannels; ++c) lanes.emplace_back(writer, c);

    std::map<int, uint8_t> speeds;  // quantised scores: the speed from each line on
    if (options.linesPerBeat > 0) speeds[0] = time.Speed();
    std::array<int, kMidiChannels> channelVolume, expression;
    channelVolume.fill(100);
    expression.fill(127);
    uint32_t nextId = 0;

    for (const MidiEvent* e : merged) {
        if (e->IsMeta(kMetaTempo)) {
            if (uint32_t tempo = TempoOf(file, *e)) {
                time.SetTempo(e->tick, tempo);
                if (options.linesPerBeat > 0) speeds[time.LineAt(e->tick)] = time.Speed();
            }
            continue;
        }
        if (!e->IsChannelMessage()) continue;
        const uint8_t ch = e->Channel();
        const MidiChannelChoice& choice = options.channels[ch];
        if (!choice.enable) continue;
        ChannelLane& lane = lanes[choice.chipChannel];
        const int line = time.LineAt(e->tick);
        auto volumeOf = [&](int velocity) { return NoteVolume(velocity, channelVolume[ch], expression[ch]); };

        if (IsNoteOn(*e)) {
            HeldNote note{.id = nextId++, .midiChannel = ch, .key = e->data1, .velocity = e->data2,
                          .instrument = choice.instrument, .volume = volumeOf(e->data2)};
            if (choice.chipChannel != kNoiseChannel) note.note = ToneNote(e->data1, module.frequencyDivider);
            else note.note = ch == kDrumChannel ? DrumNoise(e->data1) : RegisterNoise(e->data1);
            lane.NoteOn(line, note);
        } else if (IsNoteOff(*e)) {
            lane.NoteOff(line, ch, e->data1);
        } else if (e->Kind() == 0xB0) {
            const uint8_t controller = e->data1;
            if (controller == kControllerVolume) channelVolume[ch] = e->data2;
            else if (controller == kControllerExpression) expression[ch] = e->data2;
            else if (controller == kControllerResetAll) expression[ch] = 127;
            if (controller == kControllerVolume || controller == kControllerExpression ||
                controller == kControllerResetAll)
                lane.VolumeChanged(line, ch, volumeOf);
            if (controller == kControllerAllSoundOff || controller == kControllerAllNotesOff)
                lane.AllNotesOff(line, ch);
        }
    }

    // The song ends with the last note's release; silence after it in the file is left out.
    for (ChannelLane& lane : lanes) lane.Finish();

    const uint8_t firstSpeed = speeds.empty() ? kOneTickPerLine : speeds.begin()->second;
    module.initialSpeed = firstSpeed;
    writer.At(0)->command = kCommandSP;
    writer.At(0)->commandParam = firstSpeed;
    uint8_t current = firstSpeed;
    for (const auto& [line, speed] : speeds) {
        if (line > writer.LastLine()) break;  // tempo changes after the last note are of no use
        if (speed == current) continue;
        if (PatternLine* cell = writer.At(line)) {
            cell->command = kCommandSP;
            cell->commandParam = speed;
        }
        current = speed;
    }
    writer.Finish();
}

}  // namespace

bool ImportMidi(Module& module, FILE* file, const std::string& path, ImportOptionsProvider& provider) {
    const MidiFile midi = ReadMidiFile(ReadWholeStream(file));
    const std::vector<const MidiEvent*> merged = MergeTracks(midi);
    const MidiSurvey survey = Survey(midi, merged);

    std::optional<MidiImportOptions> chosen = provider.ChooseMidiOptions(Propose(survey));
    if (!chosen) return false;
    MidiImportOptions options = *chosen;
    CheckOptions(options);

    module.NewModule(options.chip);
    module.title = survey.title.empty() ? Printable(FileStem(path)) : survey.title;
    module.notes = survey.notes;
    NameInstruments(module, survey, options);
    WriteSong(module, midi, merged, options);
    return true;
}

}  // namespace sondrel
