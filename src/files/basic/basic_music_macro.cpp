#include "files/basic/basic_music_macro.h"

#include <cctype>
#include <cmath>

namespace sondrel {

namespace {

constexpr int kMaxSubstringDepth = 16;
constexpr int kMiddleCOctave = 3;
constexpr int kMiddleC = 60;

// Semitone of each letter A..G within its octave (which begins with C).
constexpr int kLetterSemitone[7] = {9, 11, 0, 2, 4, 5, 7};

class MacroRunner {
public:
    MacroRunner(MusicVoiceState& state, MusicMacroHost& host) : state_(state), host_(host) {}

    void Run(const std::string& text, int depth) {
        if (depth > kMaxSubstringDepth) Fail("substrings nested too deeply");
        Cursor cursor{text, 0};
        bool separated = false;
        while (SkipBlanks(cursor)) {
            host_.Step();
            char c = Upper(cursor.text[cursor.pos++]);
            if (c == ';') {
                // One ';' may follow a command; two in a row are refused.
                if (separated) Fail("';' without a command before it");
                separated = true;
                continue;
            }
            separated = false;
            switch (c) {
                case 'A': case 'B': case 'C': case 'D': case 'E': case 'F': case 'G':
                    Letter(cursor, c);
                    break;
                case 'N': {
                    int n = Number(cursor, 0, 84);
                    double seconds = NoteSeconds(state_.length, state_.lengthDots + Dots(cursor));
                    if (n == 0) host_.Rest(seconds);
                    else Emit(kMiddleC + (n - 1) - 12 * kMiddleCOctave, seconds);
                    break;
                }
                case 'P': {
                    int length = Number(cursor, 0, 64);
                    int dots = Dots(cursor);
                    if (length == 0 && dots > 0) Fail("a pause of no length can't be dotted");
                    if (length > 0) host_.Rest(NoteSeconds(length, dots));
                    break;
                }
                case 'O': state_.octave = Number(cursor, 0, 6); break;
                case '>': if (state_.octave < 6) ++state_.octave; break;
                case '<': if (state_.octave > 0) --state_.octave; break;
                case 'L':
                    state_.length = Number(cursor, 1, 64);
                    state_.lengthDots = Dots(cursor);
                    break;
                case 'T': state_.tempo = Number(cursor, 32, 255); break;
                case 'V': state_.volume = Number(cursor, 0, 15); break;
                case 'M': Mode(cursor); break;
                case 'X': {
                    std::string name = VariableName(cursor);
                    std::optional<std::string> sub = host_.StringVariable(name);
                    if (!sub) Fail("substring " + name + " is not known");
                    Run(*sub, depth + 1);
                    break;
                }
                default:
                    Fail(std::string("unknown command '") + c + "'");
            }
        }
    }

private:
    struct Cursor {
        const std::string& text;
        size_t pos;
    };

    static char Upper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }
    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }
    [[noreturn]] static void Fail(const std::string& what) { throw MusicMacroError("PLAY: " + what); }

    // Moves past blanks; false at the end of the string.
    static bool SkipBlanks(Cursor& cursor) {
        while (cursor.pos < cursor.text.size() && (cursor.text[cursor.pos] == ' ' || cursor.text[cursor.pos] == '\t'))
            ++cursor.pos;
        return cursor.pos < cursor.text.size();
    }

    static bool Next(Cursor& cursor, char wanted) {
        if (!SkipBlanks(cursor) || Upper(cursor.text[cursor.pos]) != wanted) return false;
        ++cursor.pos;
        return true;
    }

    // A name as BASIC spells it, ended by ';'.
    static std::string VariableName(Cursor& cursor) {
        SkipBlanks(cursor);
        std::string name;
        const std::string& t = cursor.text;
        if (cursor.pos >= t.size() || !std::isalpha(static_cast<unsigned char>(t[cursor.pos])))
            Fail("a variable name is missing");
        while (cursor.pos < t.size() &&
               (std::isalnum(static_cast<unsigned char>(t[cursor.pos])) || t[cursor.pos] == '.'))
            name += Upper(t[cursor.pos++]);
        if (cursor.pos < t.size() && (t[cursor.pos] == '$' || t[cursor.pos] == '%' || t[cursor.pos] == '!' ||
                                      t[cursor.pos] == '#'))
            name += t[cursor.pos++];
        if (!Next(cursor, ';')) Fail("';' must follow the variable " + name);
        return name;
    }

    // An argument: digits or "=name;". Nothing when neither follows.
    std::optional<int> OptionalNumber(Cursor& cursor) {
        if (!SkipBlanks(cursor)) return std::nullopt;
        const std::string& t = cursor.text;
        if (t[cursor.pos] == '=') {
            ++cursor.pos;
            std::string name = VariableName(cursor);
            std::optional<double> value = host_.NumberVariable(name);
            if (!value) Fail("the value of " + name + " is not known");
            if (!(std::fabs(*value) < 1e6)) Fail("the value of " + name + " is out of range");
            return static_cast<int>(std::lround(*value));
        }
        if (!IsDigit(t[cursor.pos])) return std::nullopt;
        long value = 0;
        while (cursor.pos < t.size() && IsDigit(t[cursor.pos])) {
            value = value * 10 + (t[cursor.pos++] - '0');
            if (value > 1000000) value = 1000000;
        }
        return static_cast<int>(value);
    }

    int Number(Cursor& cursor, int low, int high) {
        std::optional<int> value = OptionalNumber(cursor);
        if (!value) Fail("a number is missing");
        if (*value < low || *value > high) Fail("a number is out of range");
        return *value;
    }

    static int Dots(Cursor& cursor) {
        int dots = 0;
        while (Next(cursor, '.')) ++dots;
        return dots;
    }

    double NoteSeconds(int length, int dots) const {
        // A note of length L is 4/L quarter notes; each dot makes it half as long again.
        double seconds = 240.0 / (static_cast<double>(length) * state_.tempo);
        for (int i = 0; i < dots && i < 64; ++i) seconds *= 1.5;
        return seconds;
    }

    void Emit(int midiNote, double seconds) {
        host_.Note({midiNote, seconds, state_.articulation, state_.volume});
    }

    void Letter(Cursor& cursor, char letter) {
        int semitone = kLetterSemitone[letter - 'A'];
        int shift = 0;
        if (Next(cursor, '#') || Next(cursor, '+')) shift = 1;
        else if (Next(cursor, '-')) shift = -1;
        // Only the black keys can be reached with a sharp or a flat: no E#, B#, C- or F-.
        bool whiteKeyAbove = letter == 'E' || letter == 'B';
        bool whiteKeyBelow = letter == 'C' || letter == 'F';
        if ((shift > 0 && whiteKeyAbove) || (shift < 0 && whiteKeyBelow)) Fail("no such sharp or flat");
        std::optional<int> length = OptionalNumber(cursor);
        if (length && (*length < 1 || *length > 64)) Fail("a note length is out of range");
        int dots = Dots(cursor);
        double seconds = length ? NoteSeconds(*length, dots) : NoteSeconds(state_.length, state_.lengthDots + dots);
        Emit(kMiddleC + 12 * (state_.octave - kMiddleCOctave) + semitone + shift, seconds);
    }

    void Mode(Cursor& cursor) {
        if (!SkipBlanks(cursor)) Fail("M without its mode");
        switch (Upper(cursor.text[cursor.pos++])) {
            case 'N': state_.articulation = Articulation::Normal; break;
            case 'L': state_.articulation = Articulation::Legato; break;
            case 'S': state_.articulation = Articulation::Staccato; break;
            case 'F': host_.SetBackground(false); break;
            case 'B': host_.SetBackground(true); break;
            default: Fail("unknown mode");
        }
    }

    MusicVoiceState& state_;
    MusicMacroHost& host_;
};

}  // namespace

double SoundingFraction(Articulation articulation) {
    switch (articulation) {
        case Articulation::Staccato: return 0.75;
        case Articulation::Legato: return 1.0;
        case Articulation::Normal: break;
    }
    return 0.875;
}

void RunMusicMacro(const std::string& text, MusicVoiceState& state, MusicMacroHost& host) {
    MacroRunner(state, host).Run(text, 0);
}

}  // namespace sondrel
