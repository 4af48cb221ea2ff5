#pragma once
// The music macro language of BASIC's PLAY statement: notes A-G with sharps,
// flats, lengths and dots, N, P, O, <, >, L, T, MN/ML/MS, MF/MB, V and X,
// with "=variable;" arguments. Each voice keeps its own state between strings.

#include <optional>
#include <stdexcept>
#include <string>

namespace sondrel {

enum class Articulation { Normal, Staccato, Legato };

// The part of a note's length that sounds: 7/8, 3/4 or all of it.
double SoundingFraction(Articulation articulation);

struct MusicVoiceState {
    int octave = 4;          // 0..6; octave 3 begins with middle C
    int length = 4;          // the default note length, 1..64 (4 = a quarter)
    int lengthDots = 0;      // dots given with L, applied to notes without a length
    int tempo = 120;         // quarter notes per minute, 32..255
    int volume = 15;         // 0..15
    Articulation articulation = Articulation::Normal;
};

struct MusicNote {
    int midiNote = 0;        // 60 is middle C
    double seconds = 0.0;    // the note's whole length
    Articulation articulation = Articulation::Normal;
    int volume = 15;
};

// What running a string needs from the program around it.
class MusicMacroHost {
public:
    virtual ~MusicMacroHost() = default;
    virtual void Note(const MusicNote& note) = 0;
    virtual void Rest(double seconds) = 0;
    virtual void SetBackground(bool background) = 0;
    // A variable's value for "=name;" and "Xname;"; nothing when it is not known.
    virtual std::optional<double> NumberVariable(const std::string& name) = 0;
    virtual std::optional<std::string> StringVariable(const std::string& name) = 0;
    // Called once per command, so that the caller can bound the work.
    virtual void Step() = 0;
};

// A string that BASIC would refuse ("Illegal function call" and the like).
// Everything before the fault has already been played.
class MusicMacroError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Plays one string on a voice. Throws MusicMacroError at the first fault.
void RunMusicMacro(const std::string& text, MusicVoiceState& state, MusicMacroHost& host);

}  // namespace sondrel
