#pragma once
// The machine that runs a BASIC program for its music: the program's lines,
// where it stands, its variables, loops and subroutines, and the sounds made
// so far. Statements and control flow run in basic_interpreter.cpp, the
// expression evaluator in basic_expressions.cpp; nothing else includes this.

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "files/basic/basic_interpreter.h"
#include "files/basic/basic_lexer.h"
#include "files/basic/basic_music_macro.h"

namespace sondrel::basic_detail {

inline constexpr int kToneVoices = 3;

struct Value {
    bool text = false;
    double number = 0.0;
    std::string string;
};
using Maybe = std::optional<Value>;  // nothing: a value that cannot be known

// A statement that BASIC would refuse; the rest of it is skipped.
struct StatementError {};
// The program has ended (or must end).
struct ProgramEnd {};

inline bool IsStringName(const std::string& name) { return !name.empty() && name.back() == '$'; }

class Interpreter {
public:
    Interpreter(const std::vector<BasicLine>& program, const BasicRunLimits& limits);
    BasicRunResult Run();

private:
    class Voice;  // called by the music strings of each voice

    struct Line {
        int number;
        std::vector<BasicToken> tokens;
    };
    struct Position {
        size_t line = 0;
        size_t token = 0;
        bool operator==(const Position&) const = default;
    };
    struct ForFrame {
        std::string variable;
        double end = 0.0;
        double step = 0.0;
        Position body;
        bool once = false;  // bounds not known: the body runs once
    };
    struct GosubFrame {
        Position back;
        size_t forDepth;
    };

    // Reading the program.
    void Step();
    const BasicToken& Peek() const;
    void Advance();
    const BasicToken& Take();
    bool AcceptSymbol(const char* symbol);
    bool AcceptKeyword(const char* keyword);
    void ExpectSymbol(const char* symbol);
    bool AtStatementEnd() const;
    void ExpectStatementEnd();
    void MoveTo(Position position);
    void SkipStatement();
    void SkipToLineEnd();
    bool Uncertain() const;

    // Statements.
    void ExecuteStatement();
    void Recover(Position start, bool isIf);
    void Statement();
    void Finish();
    void Forget();
    void Assignment();
    void Store(const std::string& name, Maybe value);
    void MidAssignment();
    void Swap();

    // Variables.
    Maybe Variable(const std::string& name) const;
    Maybe Stored(const std::string& name) const;
    void SetVariable(const std::string& name, Maybe value);
    size_t StateSignature() const;

    // Sounds.
    double ChannelStart(int channel);
    void AddSound(int channel, double seconds, double soundingSeconds, double frequency, uint8_t noiseSource,
                  int volume, BasicSoundKind kind);
    void AddRest(int channel, double seconds);
    void StatementPlayed();
    bool SoundSwitch();
    void Play();
    std::vector<std::optional<double>> NumberArguments(size_t most);
    void Sound();
    void Noise();
    void Beep();

    // Control flow.
    int LineNumberArgument();
    void JumpToLine(int number, bool chosen);
    bool Chosen() const;
    void Goto();
    void CallSubroutine(int number, Position back);
    void Gosub();
    void Return();
    void On();
    Position BodyStart(Position after) const;
    void For();
    void SkipPastNext(const std::string& variable);
    void Next();
    bool FindElse();
    bool IsBlockIf(const Line& line) const;
    void SkipBlock(bool toElse);
    void If();

    // Expressions, evaluated in basic_expressions.cpp.
    Maybe Expression();
    Maybe Binary(int level);
    Maybe Not();
    Maybe Relational();
    Maybe Additive();
    Maybe WholeNumbers(bool modulo);
    Maybe Product();
    Maybe Negation();
    Maybe Power();
    std::vector<Maybe> Arguments();
    Maybe Primary();
    Maybe Charged(Maybe value);
    Maybe Function(const std::string& name);

    static constexpr size_t kNoLine = static_cast<size_t>(-1);

    BasicRunLimits limits_;
    std::vector<Line> lines_;
    std::map<int, size_t> index_;
    std::vector<bool> visited_;
    Position pc_;
    size_t uncertainLine_ = kNoLine;       // the line of an IF whose condition is not known
    size_t knownConditionLine_ = kNoLine;  // the line of an IF whose condition was evaluated
    long steps_ = 0;

    std::map<std::string, Value> variables_;
    std::set<std::string> unknown_;
    std::vector<ForFrame> forStack_;
    std::vector<GosubFrame> gosubStack_;
    std::set<std::pair<size_t, size_t>> loopStates_;
    std::set<int> skipped_;
    size_t variablesHash_ = 0;
    bool tryElseIf_ = false;  // a skipped block IF arrived at an ELSEIF
    int nesting_ = 0;         // of expressions being evaluated

    std::array<MusicVoiceState, kToneVoices> voiceStates_{};
    std::array<double, 4> clocks_{};  // where each channel's queue ends
    double programTime_ = 0.0;        // how far the program has waited
    bool background_ = false;

    BasicRunResult result_;
};

}  // namespace sondrel::basic_detail
