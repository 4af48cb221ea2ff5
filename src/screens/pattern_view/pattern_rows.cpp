#include "screens/pattern_view/pattern_rows.h"

#include <cstdlib>

#include "model/notes.h"
#include "screens/pattern_view/pattern_view.h"

namespace sondrel {

namespace {

// The column layout every row is written over.
constexpr std::string_view kRowTemplate =
    "123&&D#1&+64&I00&V00&PV abc&&D#1&+64&I00&V00&PV abc&&D#1&+64&I00&V00&PV abc&&D#1&+64&I00&V00&PV abc&&SP31.9";
static_assert(kRowTemplate.size() == kRowTextLength);

char Digit(int value) { return static_cast<char>('0' + value % 10); }

// Two upper-case hexadecimal digits.
void PutHex(std::string& text, int at, int value) {
    constexpr char kHexDigits[] = "0123456789ABCDEF";
    text[at] = kHexDigits[(value >> 4) & 15];
    text[at + 1] = kHexDigits[value & 15];
}

// Two characters: the tens digit or a blank, then the units digit.
void PutTwoDigits(std::string& text, int at, int value) {
    text[at] = value >= 10 ? Digit(value / 10) : ' ';
    text[at + 1] = Digit(value);
}

void Put(std::string& text, int at, std::string_view part) { text.replace(at, part.size(), part); }

// A detune of -5 reads "-5 ", of 12 "+12"; none is three blanks.
void PutDetune(std::string& text, int at, int detune) {
    if (detune == 0) {
        Put(text, at, "   ");
        return;
    }
    const int magnitude = std::abs(detune);
    text[at] = detune < 0 ? '-' : '+';
    if (magnitude >= 10) {
        text[at + 1] = Digit(magnitude / 10);
        text[at + 2] = Digit(magnitude);
    } else {
        text[at + 1] = Digit(magnitude);
        text[at + 2] = ' ';
    }
}

// Speed in eighths of a tick, as ticks with one decimal: 0 "  .0", 79 " 9.9", 80 "10.0".
void PutSpeed(std::string& text, int at, int speed) {
    const int ticks = speed / 8;
    text[at] = speed >= 80 ? Digit(ticks / 10) : ' ';
    text[at + 1] = speed >= 8 ? Digit(ticks) : ' ';
    text[at + 2] = '.';
    text[at + 3] = Digit(speed % 8 * 9 / 7);
}

void PutCommand(std::string& text, const PatternLine& cells) {
    switch (cells.command) {
        case kCommandNone:
            Put(text, kCommandField, "      ");
            break;
        case kCommandSP:
            Put(text, kCommandField, "SP");
            PutSpeed(text, kCommandField + 2, cells.commandParam);
            break;
        case kCommandST:
            Put(text, kCommandField, "ST  ");
            PutHex(text, kCommandField + 4, cells.commandParam);
            break;
        default:
            Put(text, kCommandField, "??    ");
            break;
    }
}

// A note the channel cannot play is dimmed; empty cells and "Nul" never are.
bool NoteDimmed(uint8_t note, int channel) {
    if (note == kNoteEmpty || note == kNoteNull) return false;
    if (channel == kNoiseChannel) return note < kFirstNoiseNote || note > kLastNoiseNote;
    return note < kFirstPlayableTone || note > kLastPlayableTone;
}

void PutChannel(RowText& row, const PatternLine& cells, int channel) {
    std::string& text = row.text;
    const int base = kChannelBlockChars * channel;
    const uint8_t note = cells.note[channel];
    const NoteKind kind = KindOfNote(note);

    Put(text, base + kNoteField, NoteName(note));
    if (kind == NoteKind::Tone || kind == NoteKind::Null) {
        PutDetune(text, base + kDetuneField, cells.detune[channel]);
    } else {
        Put(text, base + kDetuneField, "   ");
    }
    if (kind == NoteKind::Empty) {
        Put(text, base + kInstrumentField, "---");
        Put(text, base + kVolumeField, "---");
    } else if (kind == NoteKind::Invalid) {
        Put(text, base + kInstrumentField, "   ");
        Put(text, base + kVolumeField, "   ");
    } else {
        PutTwoDigits(text, base + kInstrumentField + 1, cells.instrument[channel]);
        PutTwoDigits(text, base + kVolumeField + 1, cells.volume[channel]);
    }

    const uint8_t command = cells.channelCommand[channel];
    const uint8_t param = cells.channelParam[channel];
    Put(text, base + kChannelCommandField, ChannelCommandText(command));
    if (command == kChannelCommandNone) {
        Put(text, base + kChannelParamField, "---");
    } else if (ChannelParamIsHex(command)) {
        text[base + kChannelParamField] = ' ';
        PutHex(text, base + kChannelParamField + 1, param);
    } else {
        text[base + kChannelParamField] = ' ';
        PutTwoDigits(text, base + kChannelParamField + 1, param);
    }

    // Note, detune, instrument and volume fields; then the channel command
    // field, which only the noise channel dims, for the commands it ignores
    // ("PV" and the effects on pitch: the noise has none of its own).
    if (NoteDimmed(note, channel)) {
        for (int i = base + kNoteField; i < base + kChannelCommandField - 1; ++i) row.colours[i] = kRowDimmed;
    }
    if (channel == kNoiseChannel && !ChannelCommandActsOnNoise(command)) {
        for (int i = base + kChannelCommandField; i < base + kChannelParamField + 3; ++i) row.colours[i] = kRowDimmed;
    }
}

}  // namespace

RowText PatternRowText(const PatternLine& cells, int line) {
    RowText row{std::string(kRowTemplate), {}};
    row.text[0] = line >= 100 ? Digit(line / 100) : ' ';
    row.text[1] = line >= 10 ? Digit(line / 10) : ' ';
    row.text[2] = Digit(line);
    for (int channel = 0; channel < kChannels; ++channel) PutChannel(row, cells, channel);
    PutCommand(row.text, cells);
    return row;
}

RowText BlankRowText() { return {std::string(kRowTextLength, ' '), {}}; }

int TextPixelX(std::string_view text, int position) {
    int x = 0;
    for (int i = 0; i < position && i < static_cast<int>(text.size()); ++i) {
        x += text[i] == kRowGap ? kRowGapWidth : kGlyphCellWidth;
    }
    return x;
}

int TextPixelWidth(std::string_view text) { return TextPixelX(text, static_cast<int>(text.size())); }

int RowPixelX(int position) { return TextPixelX(kRowTemplate, position); }

PixelSpan CursorColumnSpan(int column) {
    int first = kCommandField;
    int end = kRowTextLength;
    if (column < kGridLastColumn) {
        const int base = kChannelBlockChars * (column / 3);
        constexpr int kFirst[3] = {kNoteField, kInstrumentField, kChannelCommandField};
        constexpr int kEnd[3] = {kDetuneField + 3, kVolumeField + 3, kChannelParamField + 3};
        first = base + kFirst[column % 3];
        end = base + kEnd[column % 3];
    }
    constexpr int kHalfGap = kRowGapWidth / 2;
    const int x = RowPixelX(first) - kHalfGap;
    return {x, RowPixelX(end) + kHalfGap - x};
}

}  // namespace sondrel
